// SPDX-License-Identifier: MIT
#include "image/element_run.h"

#include <gtest/gtest.h>

#include <climits>

namespace
{

struct RunRow {
    const char* what;
    int address, count;
    int skipped, start, length;
};

} // namespace

TEST(ExistingElements, CutsTheRunOnBothSides)
{
    const RunRow rows[] = {
        {"inside", 10, 5, 0, 10, 5},
        {"the whole area", 0, 65535, 0, 0, 65535},
        {"the last element", 65534, 1, 0, 65534, 1},
        {"over the end", 65530, 10, 0, 65530, 5},
        {"over the start", -3, 10, 3, 0, 7},
        {"only the first element", -9, 10, 9, 0, 1},
        {"over both ends", -5, INT_MAX, 5, 0, 65535},
        {"without end", 65534, INT_MAX, 0, 65534, 1},
    };
    for (const RunRow& row : rows) {
        SCOPED_TRACE(row.what);
        const ElementRun run = ExistingElements(row.address, row.count, 65535);
        EXPECT_EQ(row.skipped, run.skipped);
        EXPECT_EQ(row.start, run.start);
        EXPECT_EQ(row.length, run.count);
    }
}

TEST(ExistingElements, IsEmptyWhereNoElementExists)
{
    const RunRow rows[] = {
        {"behind the last element", 65535, 1, 0, 0, 0},
        {"ends before the first", -10, 10, 0, 0, 0},
        {"far behind", INT_MAX, INT_MAX, 0, 0, 0},
        {"far before", INT_MIN, 1, 0, 0, 0},
        {"far before, as long as can be", INT_MIN, INT_MAX, 0, 0, 0},
        {"no count", 0, 0, 0, 0, 0},
        {"negative count", 10, -1, 0, 0, 0},
        {"most negative count", INT_MIN, INT_MIN, 0, 0, 0},
        {"most negative count from the far end", INT_MAX, INT_MIN, 0, 0, 0},
    };
    for (const RunRow& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(0, ExistingElements(row.address, row.count, 65535).count);
    }
}

TEST(ExistingElements, IsEmptyForAnAreaWithoutElements)
{
    EXPECT_EQ(0, ExistingElements(0, 1, 0).count);
    EXPECT_EQ(0, ExistingElements(-1, 5, 0).count);
}

TEST(ElementExists, HoldsFromTheFirstToTheLast)
{
    EXPECT_TRUE(ElementExists(0, 0, 65535));
    EXPECT_TRUE(ElementExists(65534, 0, 65535));
    EXPECT_TRUE(ElementExists(65530, 4, 65535));
    EXPECT_TRUE(ElementExists(-5, 5, 65535));
}

TEST(ElementExists, FailsOutside)
{
    EXPECT_FALSE(ElementExists(65535, 0, 65535));
    EXPECT_FALSE(ElementExists(65530, 5, 65535));
    EXPECT_FALSE(ElementExists(-1, 0, 65535));
    EXPECT_FALSE(ElementExists(0, 0, 0));
}

TEST(ElementExists, SumsThatLeave32BitsExistNowhere)
{
    EXPECT_FALSE(ElementExists(INT_MAX, INT_MAX, 65535));
    EXPECT_FALSE(ElementExists(INT_MAX, 1, 65535));
    EXPECT_FALSE(ElementExists(INT_MIN, INT_MIN, 65535)); // would wrap to element 0
    EXPECT_FALSE(ElementExists(INT_MIN, INT_MAX, 65535));
}
