// SPDX-License-Identifier: MIT
#include "frames/address_map.h"

#include "driver/plcdriver.h"

namespace
{

// clang-format off
// Row = area code. Area 0 is read but never written; area 8 is written bit by bit through the registers
// that area 9 serves as words, and never read.
const Area areas[PLC_AREA_COUNT] = {
    // base, whether it is written, kind, buffer, base and origin of the text, function that reads
    {0xF800, false, Area::Bit       , 0,  8,    0, FC_READ_COILS            }, // 0
    {0xFC00, true,  Area::Bit       , 1,  8,    0, FC_READ_COILS            }, // 1
    {0x0000, true,  Area::Bit       , 2, 10,    0, FC_READ_COILS            }, // 2
    {0x2400, true,  Area::Bit       , 3, 10,    0, FC_READ_COILS            }, // 3
    {0xE000, true,  Area::Bit       , 4, 10,    0, FC_READ_COILS            }, // 4
    {0xF000, true,  Area::Bit       , 5, 10,    0, FC_READ_COILS            }, // 5
    {0xF400, true,  Area::Bit       , 6, 10,    0, FC_READ_COILS            }, // 6
    {0x1F40, true,  Area::Bit       , 7, 10, 8000, FC_READ_COILS            }, // 7
    {0x0000, true,  Area::BitOfWord , 0, 10,    0, FC_NONE                  }, // 8
    {0x0000, true,  Area::Word      , 0, 10,    0, FC_READ_HOLDING_REGISTERS}, // 9
    {0x3000, true,  Area::Word      , 4, 10,    0, FC_READ_HOLDING_REGISTERS}, // 10
    {0x2400, true,  Area::Word      , 1, 10,    0, FC_READ_HOLDING_REGISTERS}, // 11
    {0xF000, true,  Area::Word      , 2, 10,    0, FC_READ_HOLDING_REGISTERS}, // 12
    {0xF400, true,  Area::Word      , 3, 10,    0, FC_READ_HOLDING_REGISTERS}, // 13
    {0xF700, true,  Area::DoubleWord, 0, 10,  200, FC_READ_HOLDING_REGISTERS}, // 14
};
// clang-format on

} // namespace

const Area* FindArea(int area)
{
    return area >= 0 && area < PLC_AREA_COUNT ? &areas[area] : nullptr;
}

bool IsBitArea(int area)
{
    const Area* row = FindArea(area);
    return row && row->kind == Area::Bit;
}

unsigned int getPlcAdd(int area)
{
    const Area* row = FindArea(area);
    return row ? row->base : 0;
}
