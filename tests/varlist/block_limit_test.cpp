// SPDX-License-Identifier: MIT
#include "varlist/block_limit.h"

#include "driver/driver_fixture.h"

#include <climits>

class BlockLimitTest : public DriverTest
{
};

TEST_F(BlockLimitTest, BitAreasAllowEightTimesAsManyElements)
{
    info.maxBlockCount = 100;
    for (int area = 0; area <= 7; ++area)
        EXPECT_EQ(800, BlockLimit(area)) << area;
    for (int area = 8; area <= 14; ++area)
        EXPECT_EQ(100, BlockLimit(area)) << area;
}

TEST_F(BlockLimitTest, AHugeBlockDoesNotOverflow)
{
    info.maxBlockCount = INT_MAX;
    EXPECT_EQ(INT_MAX, BlockLimit(2));
    EXPECT_EQ(INT_MAX, BlockLimit(9));
    info.maxBlockCount = 0x20000000; // eight times as much is 2^32
    EXPECT_EQ(INT_MAX, BlockLimit(2));
}

TEST_F(BlockLimitTest, ABlockOf0OrLessStaysWithoutLimit)
{
    for (int maxBlockCount : {0, -1, -100, INT_MIN, -0x20000000}) {
        SCOPED_TRACE(maxBlockCount);
        info.maxBlockCount = maxBlockCount;
        EXPECT_LE(BlockLimit(2), 0);
        EXPECT_LE(BlockLimit(9), 0);
    }
}
