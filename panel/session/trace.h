// SPDX-License-Identifier: MIT
/// \file
/// \brief Every frame and reply in hex, with its meaning in words.
#ifndef PANEL_SESSION_TRACE_H
#define PANEL_SESSION_TRACE_H

#include "runtime/cycle/runtime.h"

#include <QDateTime>
#include <QString>

namespace plc
{

/// \param endedAt when the exchange was over, UTC; the text shows when it began
/// \return one line for the frame as it went out, one for each reply that was dropped, and one for the reply
///         or its absence with what the driver made of it; each ends with a line feed
QString traceText(const ExchangeRecord& record, const QDateTime& endedAt);

/// \return an observer that prints traceText() on standard error
ExchangeObserver traceToStandardError();

} // namespace plc

#endif
