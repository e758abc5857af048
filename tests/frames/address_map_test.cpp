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

TEST(FindArea, RowsSayKindAndFunctionCodes)
{
    struct Row {
        int area;
        Area::Kind kind;
        int read, writeOne, writeMany;
    };
    const Row rows[] = {
        {0, Area::Bit, 1, 0, 0},    {1, Area::Bit, 1, 5, 0},    {2, Area::Bit, 1, 5, 0},
        {3, Area::Bit, 1, 5, 0},    {4, Area::Bit, 1, 5, 0},    {5, Area::Bit, 1, 5, 0},
        {6, Area::Bit, 1, 5, 0},    {7, Area::Bit, 1, 5, 0},    {9, Area::Word, 3, 6, 16},
        {10, Area::Word, 3, 6, 16}, {11, Area::Word, 3, 6, 16}, {12, Area::Word, 3, 6, 16},
        {13, Area::Word, 3, 6, 16},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.area);
        const Area* area = FindArea(row.area);
        ASSERT_NE(nullptr, area);
        EXPECT_EQ(row.kind, area->kind);
        EXPECT_EQ(row.read, area->read);
        EXPECT_EQ(row.writeOne, area->writeOne);
        EXPECT_EQ(row.writeMany, area->writeMany);
    }
}

TEST(FindArea, BitInsideAWordIsNeverRead)
{
    ASSERT_NE(nullptr, FindArea(8));
    EXPECT_EQ(Area::BitOfWord, FindArea(8)->kind);
    EXPECT_EQ(FC_NONE, FindArea(8)->read);
}

TEST(FindArea, DoubleWordsAreOnlyEverWrittenAsSeveralRegisters)
{
    ASSERT_NE(nullptr, FindArea(14));
    EXPECT_EQ(Area::DoubleWord, FindArea(14)->kind);
    EXPECT_EQ(FC_READ_HOLDING_REGISTERS, FindArea(14)->read);
    EXPECT_EQ(FC_WRITE_MULTIPLE_REGISTERS, FindArea(14)->writeMany);
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
