#include "frames/address_map.h"

#include "driver/plcdriver.h"

namespace
{

// clang-format off
// Row = area code. Area 0 is read but never written; area 8 is written bit by bit through the registers
// that area 9 serves as words, and never read.
const Area areas[PLC_AREA_COUNT] = {
    // base, kind, buffer, base and origin of the text, function that reads, whether it is written
    {0xF800, Area::Bit       , 0,  8,    0, FC_READ_COILS            , false}, // 0
    {0xFC00, Area::Bit       , 1,  8,    0, FC_READ_COILS            , true }, // 1
    {0x0000, Area::Bit       , 2, 10,    0, FC_READ_COILS            , true }, // 2
    {0x2400, Area::Bit       , 3, 10,    0, FC_READ_COILS            , true }, // 3
    {0xE000, Area::Bit       , 4, 10,    0, FC_READ_COILS            , true }, // 4
    {0xF000, Area::Bit       , 5, 10,    0, FC_READ_COILS            , true }, // 5
    {0xF400, Area::Bit       , 6, 10,    0, FC_READ_COILS            , true }, // 6
    {0x1F40, Area::Bit       , 7, 10, 8000, FC_READ_COILS            , true }, // 7
    {0x0000, Area::BitOfWord , 0, 10,    0, FC_NONE                  , true }, // 8
    {0x0000, Area::Word      , 0, 10,    0, FC_READ_HOLDING_REGISTERS, true }, // 9
    {0x3000, Area::Word      , 4, 10,    0, FC_READ_HOLDING_REGISTERS, true }, // 10
    {0x2400, Area::Word      , 1, 10,    0, FC_READ_HOLDING_REGISTERS, true }, // 11
    {0xF000, Area::Word      , 2, 10,    0, FC_READ_HOLDING_REGISTERS, true }, // 12
    {0xF400, Area::Word      , 3, 10,    0, FC_READ_HOLDING_REGISTERS, true }, // 13
    {0xF700, Area::DoubleWord, 0, 10,  200, FC_READ_HOLDING_REGISTERS, true }, // 14
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
