// SPDX-License-Identifier: MIT
#include "runtime/model/modbus_address.h"

#include "runtime/model/area_table.h"

#include <algorithm>

namespace plc
{

namespace
{

const int modbusAddresses = 65536; // of coils, and of registers

} // namespace

bool liesInCoils(int area)
{
    return kindOf(area) == ElementKind::Bit;
}

int modbusAddress(int area, int element)
{
    const bool isBitInWord = kindOf(area) == ElementKind::BitInWord;
    const int offset = isBitInWord ? element / bitsOfWord : element * placesOfElement(area);
    return (areaOf(area).modbusBase + offset) & 0xFFFF;
}

int modbusElements(int area)
{
    if (kindOf(area) == ElementKind::BitInWord)
        return modbusElements(wordArea) * bitsOfWord;
    return std::min(areaSize(area), (modbusAddresses - areaOf(area).modbusBase) / placesOfElement(area));
}

} // namespace plc
