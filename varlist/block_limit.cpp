#include "varlist/block_limit.h"

#include "driver/modbus_rtu_master.h"
#include "frames/address_map.h"
#include "image/element_run.h"

#include <algorithm>
#include <limits>

int WordLimit()
{
    return PLC_driver.comInfo->maxBlockCount;
}

int BitLimit()
{
    const long long most = std::numeric_limits<int>::max();
    return static_cast<int>(std::min(8LL * std::max(WordLimit(), 0), most));
}

int BlockLimit(int area)
{
    return IsBitArea(area) ? BitLimit() : WordLimit();
}

int ServableCount(int area, int count, CountUse use)
{
    int most = AREA_ELEMENTS;
    if (area == AREA_BIT_OF_WORD)
        most = AREA_BITS_OF_WORDS;
    if (area == AREA_DWORD && use == COUNT_OF_READ)
        most = AREA_ELEMENTS + 1;
    if (area == AREA_DWORD && use == COUNT_OF_QUEUED_WRITE)
        most = 2 * AREA_ELEMENTS;
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
    const int bits = (address & (WORD_BITS - 1)) + count;
    return bits > 0 ? (bits + WORD_BITS - 1) / WORD_BITS : bits / WORD_BITS; // rounded up
}
