// SPDX-License-Identifier: MIT
#include "frames/address_map.h"

#include <gtest/gtest.h>

#include <climits>

TEST(GetPlcAdd, GivesTheModbusBaseOfEachArea)
{
    const unsigned int bases[15] = {0xF800, 0xFC00, 0x0000, 0x2400, 0xE000, 0xF000, 0xF400, 0x1F40,
                                    0x0000, 0x0000, 0x3000, 0x2400, 0xF000, 0xF400, 0xF700};
    for (int area = 0; area < 15; ++area) {
        SCOPED_TRACE(area);
        EXPECT_EQ(bases[area], getPlcAdd(area));
    }
}

TEST(GetPlcAdd, IsZeroForCodesThatAreNoArea)
{
    for (int area : {15, 16, 255, 65536, INT_MAX, -1, -15, INT_MIN}) {
        SCOPED_TRACE(area);
        EXPECT_EQ(0u, getPlcAdd(area));
    }
}

TEST(FindArea, IsNullForCodesThatAreNoArea)
{
    for (int area : {15, 16, 65536, INT_MAX, -1, INT_MIN}) {
        SCOPED_TRACE(area);
        EXPECT_EQ(nullptr, FindArea(area));
    }
}

TEST(FindArea, RowsSayKindAndHowTheyAreReadAndWritten)
{
    struct Row {
        int area;
        Area::Kind kind;
        int read;
        bool written;
    };
    const Row rows[] = {
        {0, Area::Bit, 1, false},  {1, Area::Bit, 1, true},   {2, Area::Bit, 1, true},
        {3, Area::Bit, 1, true},   {4, Area::Bit, 1, true},   {5, Area::Bit, 1, true},
        {6, Area::Bit, 1, true},   {7, Area::Bit, 1, true},   {8, Area::BitOfWord, 0, true},
        {9, Area::Word, 3, true},  {10, Area::Word, 3, true}, {11, Area::Word, 3, true},
        {12, Area::Word, 3, true}, {13, Area::Word, 3, true}, {14, Area::DoubleWord, 3, true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.area);
        const Area* area = FindArea(row.area);
        ASSERT_NE(nullptr, area);
        EXPECT_EQ(row.kind, area->kind);
        EXPECT_EQ(row.read, area->read);
        EXPECT_EQ(row.written, area->written);
    }
}

TEST(FindArea, BothWordViewsOfTheFirstRegistersShareOneBuffer)
{
    ASSERT_NE(nullptr, FindArea(8));
    ASSERT_NE(nullptr, FindArea(9));
    EXPECT_EQ(FindArea(8)->buffer, FindArea(9)->buffer);
}

TEST(IsBitArea, HoldsForAreas0To7Only)
{
    for (int area = 0; area <= 7; ++area)
        EXPECT_TRUE(IsBitArea(area)) << area;
    for (int area : {-1, 8, 9, 14, 15, INT_MAX, INT_MIN})
        EXPECT_FALSE(IsBitArea(area)) << area;
}
