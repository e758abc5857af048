// SPDX-License-Identifier: MIT
#include "runtime/modbus/return_codes.h"

#include "driver/plcdriver.h"

namespace plc
{

bool isSuccess(int code)
{
    return code == PLC_DONE || code == PLC_REMOTE_DONE;
}

} // namespace plc
