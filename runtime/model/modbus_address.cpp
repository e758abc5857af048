#include "runtime/model/modbus_address.h"

#include "runtime/model/area_table.h"

namespace plc
{

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

} // namespace plc
