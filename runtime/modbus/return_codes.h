// SPDX-License-Identifier: MIT
/// \file
/// \brief Result codes of the driver.
#ifndef RUNTIME_MODBUS_RETURN_CODES_H
#define RUNTIME_MODBUS_RETURN_CODES_H

#include "runtime/export.h"

namespace plc
{

/// \return true for the two codes of success
PLCRUNTIME_API bool isSuccess(int code);

} // namespace plc

#endif
