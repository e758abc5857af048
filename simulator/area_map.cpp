// SPDX-License-Identifier: MIT
#include "simulator/area_map.h"

#include <iterator>

namespace simulator
{

namespace
{

constexpr int areaElements = 65535;

// Row = area code.
constexpr MappedArea areas[] = {
    {0xF800, MappedArea::Bit},        // 0
    {0xFC00, MappedArea::Bit},        // 1
    {0x0000, MappedArea::Bit},        // 2
    {0x2400, MappedArea::Bit},        // 3
    {0xE000, MappedArea::Bit},        // 4
    {0xF000, MappedArea::Bit},        // 5
    {0xF400, MappedArea::Bit},        // 6
    {0x1F40, MappedArea::Bit},        // 7
    {0x0000, MappedArea::BitOfWord},  // 8
    {0x0000, MappedArea::Word},       // 9
    {0x3000, MappedArea::Word},       // 10
    {0x2400, MappedArea::Word},       // 11
    {0xF000, MappedArea::Word},       // 12
    {0xF400, MappedArea::Word},       // 13
    {0xF700, MappedArea::DoubleWord}, // 14
};

} // namespace

const MappedArea* findArea(int code)
{
    return code >= 0 && code < static_cast<int>(std::size(areas)) ? &areas[code] : nullptr;
}

int elementsOf(const MappedArea& area)
{
    return area.kind == MappedArea::BitOfWord ? areaElements * wordBits : areaElements;
}

int placeOf(const MappedArea& area, int element)
{
    int offset = element;
    if (area.kind == MappedArea::BitOfWord)
        offset = element / wordBits;
    else if (area.kind == MappedArea::DoubleWord)
        offset = 2 * element;
    return (area.base + offset) & 0xFFFF;
}

std::size_t valueSize(const MappedArea& area, int count)
{
    const std::size_t elements = static_cast<std::size_t>(count);
    if (area.kind == MappedArea::Word)
        return 2 * elements;
    return area.kind == MappedArea::DoubleWord ? 4 * elements : elements;
}

} // namespace simulator
