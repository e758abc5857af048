// SPDX-License-Identifier: MIT
/// \file
/// \brief Modbus exceptions in words.
#ifndef RUNTIME_MODBUS_EXCEPTION_WORDS_H
#define RUNTIME_MODBUS_EXCEPTION_WORDS_H

#include "runtime/export.h"

#include <QString>

namespace plc
{

/// \return a Modbus exception code in words, e.g. "illegal data address" for 2
PLCRUNTIME_API QString exceptionWords(int code);

} // namespace plc

#endif
