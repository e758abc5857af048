/// \file
/// \brief Result codes and Modbus exceptions in words.
#ifndef RUNTIME_MODBUS_RETURN_CODE_WORDS_H
#define RUNTIME_MODBUS_RETURN_CODE_WORDS_H

#include "runtime/export.h"

#include <QByteArray>
#include <QString>

namespace plc
{

/// \return a PLC_RESULT code of the driver in words, e.g. "no reply" for 41..52
PLCRUNTIME_API QString resultWords(int code);

/// \return true for the two codes of success
PLCRUNTIME_API bool isSuccess(int code);

/// \return a Modbus exception code in words, e.g. "illegal data address" for 2
PLCRUNTIME_API QString exceptionWords(int code);

} // namespace plc

#endif
