// SPDX-License-Identifier: MIT
#include "varlist/pieces.h"

#include "driver/plcdriver.h"
#include "frames/address_map.h"

#include <algorithm>

int ServableCount(int area, int count, CountUse use)
{
    int most = PLC_AREA_ELEMENTS;
    if (area == AREA_BIT_OF_WORD)
        most = PLC_AREA8_BITS;
    if (area == AREA_DWORD && use == COUNT_OF_READ)
        most = PLC_AREA14_READ_COUNT_MAX;
    if (area == AREA_DWORD && use == COUNT_OF_QUEUED_WRITE)
        most = PLC_AREA14_QUEUED_COUNT_MAX;
    return std::min(count, most);
}

int Pieces::begin(int start, int i) const
{
    // i x size stays below the count that was cut; only the sum may leave 32 bits, and then wraps.
    return static_cast<int>(static_cast<unsigned int>(start) + static_cast<unsigned int>(i * size));
}

Pieces CutIntoPieces(int count, int limit)
{
    if (count < 1)
        return {0, 0, 0};
    if (limit < 1)
        return {1, count, count};
    const int whole = count / limit;
    const int rest = count - whole * limit;
    return rest == 0 ? Pieces{whole, limit, limit} : Pieces{whole + 1, limit, rest};
}

int WordsOfBits(int address, int count)
{
    const int bits = (address & (PLC_WORD_BITS - 1)) + count;
    return bits > 0 ? (bits + PLC_WORD_BITS - 1) / PLC_WORD_BITS : bits / PLC_WORD_BITS; // rounded up
}
