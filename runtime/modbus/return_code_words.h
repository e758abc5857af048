// SPDX-License-Identifier: MIT
/// \file
/// \brief Result codes of the driver in words.
#ifndef RUNTIME_MODBUS_RETURN_CODE_WORDS_H
#define RUNTIME_MODBUS_RETURN_CODE_WORDS_H

#include "runtime/export.h"

#include <QString>

namespace plc
{

/// \return a PLC_RESULT code of the driver in words, e.g. "no reply" for 41..52
PLCRUNTIME_API QString resultWords(int code);

} // namespace plc

#endif
