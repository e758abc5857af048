// SPDX-License-Identifier: MIT
// The areas of the tools, against a list of its own: what the driver takes for them.

#include "runtime/model/area_table.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

struct Expected {
    ElementKind kind;
    int base; // of the address text
    int origin;
    int bytes;
    int places;
    int elements;
};

const Expected expected[] = {
    {ElementKind::Bit, 8, 0, 1, 1, 65535},           {ElementKind::Bit, 8, 0, 1, 1, 65535},
    {ElementKind::Bit, 10, 0, 1, 1, 65535},          {ElementKind::Bit, 10, 0, 1, 1, 65535},
    {ElementKind::Bit, 10, 0, 1, 1, 65535},          {ElementKind::Bit, 10, 0, 1, 1, 65535},
    {ElementKind::Bit, 10, 0, 1, 1, 65535},          {ElementKind::Bit, 10, 8000, 1, 1, 65535},
    {ElementKind::BitInWord, 10, 0, 1, 1, 1048560},  {ElementKind::Word, 10, 0, 2, 1, 65535},
    {ElementKind::Word, 10, 0, 2, 1, 65535},         {ElementKind::Word, 10, 0, 2, 1, 65535},
    {ElementKind::Word, 10, 0, 2, 1, 65535},         {ElementKind::Word, 10, 0, 2, 1, 65535},
    {ElementKind::DoubleWord, 10, 200, 4, 2, 65535},
};

TEST(AreaTable, SaysOfEachAreaWhatItHolds)
{
    ASSERT_EQ(areaCount(), 15);
    int area = 0;
    for (const Expected& row : expected) {
        EXPECT_EQ(kindOf(area), row.kind) << area;
        EXPECT_EQ(areaOf(area).numberBase, row.base) << area;
        EXPECT_EQ(areaOf(area).origin, row.origin) << area;
        EXPECT_EQ(bytesOfElement(area), row.bytes) << area;
        EXPECT_EQ(placesOfElement(area), row.places) << area;
        EXPECT_EQ(areaSize(area), row.elements) << area;
        ++area;
    }
}

TEST(AreaTable, OnlyAreaZeroCannotBeWritten)
{
    for (int area = 0; area < areaCount(); ++area)
        EXPECT_EQ(areaOf(area).isWritable, area != 0) << area;
}

TEST(AreaTable, OnlyAreaSevenIsCutLikeWords)
{
    for (int area = 0; area < areaCount(); ++area)
        EXPECT_EQ(areaOf(area).cut == BitCut::LikeWords, area == 7) << area;
}

TEST(AreaTable, TellsCodesOfAreasFromOthers)
{
    EXPECT_FALSE(isArea(-1));
    EXPECT_TRUE(isArea(0));
    EXPECT_TRUE(isArea(14));
    EXPECT_FALSE(isArea(15));
}

TEST(AreaTable, NamesTheAreasOfBitsInWordsAndOfTheirWords)
{
    EXPECT_EQ(kindOf(bitInWordArea), ElementKind::BitInWord);
    EXPECT_EQ(kindOf(wordArea), ElementKind::Word);
    EXPECT_EQ(areaOf(bitInWordArea).modbusBase, areaOf(wordArea).modbusBase);
}

} // namespace
