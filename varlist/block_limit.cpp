// SPDX-License-Identifier: MIT
#include "varlist/block_limit.h"

#include "driver/modbus_rtu_master.h"
#include "frames/address_map.h"

#include <algorithm>
#include <limits>

int WordLimit()
{
    return PLC_driver.comInfo->maxBlockCount;
}

int BitLimit()
{
    const long long most = std::numeric_limits<int>::max();
    return static_cast<int>(
        std::min(static_cast<long long>(PLC_BITS_PER_BLOCK_WORD) * std::max(WordLimit(), 0), most));
}

int BlockLimit(int area)
{
    return IsBitArea(area) ? BitLimit() : WordLimit();
}
