#include "frames/address_map.h"

namespace
{

// clang-format off
// Row = area code. Area 0 is read but never written; area 8 is written bit by bit through the registers
// that area 9 serves as words, and never read.
const Area areas[AREA_COUNT] = {
    // base, kind, buffer, base and origin of the text, functions: read, write one, write many
    {0xF800, Area::Bit       , 0,  8,    0, FC_READ_COILS            , FC_NONE                    , FC_NONE                    }, // 0
    {0xFC00, Area::Bit       , 1,  8,    0, FC_READ_COILS            , FC_WRITE_SINGLE_COIL       , FC_NONE                    }, // 1
    {0x0000, Area::Bit       , 2, 10,    0, FC_READ_COILS            , FC_WRITE_SINGLE_COIL       , FC_NONE                    }, // 2
    {0x2400, Area::Bit       , 3, 10,    0, FC_READ_COILS            , FC_WRITE_SINGLE_COIL       , FC_NONE                    }, // 3
    {0xE000, Area::Bit       , 4, 10,    0, FC_READ_COILS            , FC_WRITE_SINGLE_COIL       , FC_NONE                    }, // 4
    {0xF000, Area::Bit       , 5, 10,    0, FC_READ_COILS            , FC_WRITE_SINGLE_COIL       , FC_NONE                    }, // 5
    {0xF400, Area::Bit       , 6, 10,    0, FC_READ_COILS            , FC_WRITE_SINGLE_COIL       , FC_NONE                    }, // 6
    {0x1F40, Area::Bit       , 7, 10, 8000, FC_READ_COILS            , FC_WRITE_SINGLE_COIL       , FC_NONE                    }, // 7
    {0x0000, Area::BitOfWord , 0, 10,    0, FC_NONE                  , FC_WRITE_SINGLE_REGISTER   , FC_NONE                    }, // 8
    {0x0000, Area::Word      , 0, 10,    0, FC_READ_HOLDING_REGISTERS, FC_WRITE_SINGLE_REGISTER   , FC_WRITE_MULTIPLE_REGISTERS}, // 9
    {0x3000, Area::Word      , 4, 10,    0, FC_READ_HOLDING_REGISTERS, FC_WRITE_SINGLE_REGISTER   , FC_WRITE_MULTIPLE_REGISTERS}, // 10
    {0x2400, Area::Word      , 1, 10,    0, FC_READ_HOLDING_REGISTERS, FC_WRITE_SINGLE_REGISTER   , FC_WRITE_MULTIPLE_REGISTERS}, // 11
    {0xF000, Area::Word      , 2, 10,    0, FC_READ_HOLDING_REGISTERS, FC_WRITE_SINGLE_REGISTER   , FC_WRITE_MULTIPLE_REGISTERS}, // 12
    {0xF400, Area::Word      , 3, 10,    0, FC_READ_HOLDING_REGISTERS, FC_WRITE_SINGLE_REGISTER   , FC_WRITE_MULTIPLE_REGISTERS}, // 13
    {0xF700, Area::DoubleWord, 0, 10,  200, FC_READ_HOLDING_REGISTERS, FC_WRITE_MULTIPLE_REGISTERS, FC_WRITE_MULTIPLE_REGISTERS}, // 14
};
// clang-format on

} // namespace

const Area* FindArea(int area)
{
    return area >= 0 && area < AREA_COUNT ? &areas[area] : nullptr;
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
