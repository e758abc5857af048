// SPDX-License-Identifier: MIT
/// \file
/// \brief Why something failed, in words.
#ifndef RUNTIME_MODBUS_FAILURE_WORDS_H
#define RUNTIME_MODBUS_FAILURE_WORDS_H

#include "runtime/export.h"
#include "runtime/model/failure.h"
#include "runtime/model/outcome.h"

#include <QString>

namespace plc
{

/// \return why a write, or a read, failed; empty when it did not
PLCRUNTIME_API QString failureWords(const WriteOutcome& outcome);
PLCRUNTIME_API QString failureWords(const ReadOutcome& outcome);

/// \return the same of anything else that is read, such as a cyclic value or a station
PLCRUNTIME_API QString failureWords(const Failure& failure);

/// \return failureWords(), with the driver's result code where there is one
PLCRUNTIME_API QString failureText(const WriteOutcome& outcome);
PLCRUNTIME_API QString failureText(const ReadOutcome& outcome);
PLCRUNTIME_API QString failureText(const Failure& failure);

/// \param error why there is no connection
PLCRUNTIME_API QString noConnectionWords(const QString& host, int port, const QString& error);

} // namespace plc

#endif
