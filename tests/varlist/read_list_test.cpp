// SPDX-License-Identifier: MIT
#include "varlist/read_list.h"

#include "cyclic_variables.h"

#include <gmock/gmock.h>

#include <chrono>
#include <climits>
#include <future>
#include <initializer_list>

using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

// Limits of the fixture's blocks.
enum { MOST_WORDS = 10, MOST_BITS = 80 };

class ReadListTest : public DriverTest
{
protected:
    void SetUp() override
    {
        DriverTest::SetUp();
        info.maxBlockCount = MOST_WORDS;
    }

    static int Rebuild(std::initializer_list<HOST_VAR> variables)
    {
        QList<HOST_VAR> list(variables);
        return ReCreatReadVarList(&list);
    }

    static std::vector<BlockRead> BlockReadsFor(std::initializer_list<HOST_VAR> variables)
    {
        Rebuild(variables);
        return BlockReads();
    }

    static std::vector<std::string> Names()
    {
        std::vector<std::string> names;
        for (const RW_VAR& var : PLC_driver.readList)
            names.push_back(var.name.toStdString());
        return names;
    }

    static int ElementsRead()
    {
        int elements = 0;
        for (const RW_VAR& var : PLC_driver.readList)
            elements += var.count;
        return elements;
    }
};

class SingleStationReadList : public ReadListTest
{
};

class MultiStationReadList : public ReadListTest
{
protected:
    void SetUp() override
    {
        ReadListTest::SetUp();
        info.multiStation = 1;
    }
};

// The parameter is COMINFO::multiStation.
class ReadListInBothModes : public ReadListTest, public testing::WithParamInterface<int>
{
protected:
    void SetUp() override
    {
        ReadListTest::SetUp();
        info.multiStation = GetParam();
    }

    static BlockRead Read(int area, int address, int count)
    {
        return {area, address, count, GetParam() ? int(STATION_OF_VARIABLE) : int(DEFAULT_STATION)};
    }
};

INSTANTIATE_TEST_SUITE_P(Modes, ReadListInBothModes, testing::Values(0, 1, 2, -1));

QString Text(int number)
{
    return QString::number(number);
}

// The text of element 0 and of elements shortly after it, in the areas that count plainly from there.
QString ElementText(int area, int element)
{
    if (area <= 1)
        return QString::number(element, 8);
    return Text(element + (area == 7 ? 8000 : 0) + (area == 14 ? 200 : 0));
}

} // namespace

// Merging.

TEST_P(ReadListInBothModes, NeighboursWithinTheLimitShareOneRead)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "0", 2), Cyclic(9, "5", 2), Cyclic(9, "12", 1)}),
                ElementsAre(Read(9, 0, 7), Read(9, 12, 1)));
}

TEST_P(ReadListInBothModes, AVariableInsideTheOpenBlockAddsNothing)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "0", 4), Cyclic(9, "2", 1)}), ElementsAre(Read(9, 0, 4)));
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "0", 4), Cyclic(9, "2", 2)}), ElementsAre(Read(9, 0, 4)));
}

TEST_P(ReadListInBothModes, EqualVariablesAreReadOnce)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(12, "7", 3), Cyclic(12, "7", 3), Cyclic(12, "7", 3)}),
                ElementsAre(Read(12, 7, 3)));
}

TEST_P(ReadListInBothModes, AVariableReachingPastTheBlockGrowsIt)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "0", 4), Cyclic(9, "2", 5)}), ElementsAre(Read(9, 0, 7)));
}

TEST_P(ReadListInBothModes, AVariableInsideAGrownBlockAddsNothing)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "0", 2), Cyclic(9, "2", 5), Cyclic(9, "3", 1)}),
                ElementsAre(Read(9, 0, 7)));
}

TEST_P(ReadListInBothModes, AVariableThatWouldOutgrowTheBlockOpensItsOwnEvenWhenTheyOverlap)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "0", 8), Cyclic(9, "6", 5)}),
                ElementsAre(Read(9, 0, 8), Read(9, 6, 5)));
}

TEST_P(ReadListInBothModes, TheSpanIsMeasuredFromTheBlockThatIsOpen)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "0", 1), Cyclic(9, "20", 1), Cyclic(9, "25", 5)}),
                ElementsAre(Read(9, 0, 1), Read(9, 20, 10)));
}

TEST_P(ReadListInBothModes, VariablesMayComeInAnyOrder)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "12", 1), Cyclic(9, "5", 2), Cyclic(9, "0", 2)}),
                ElementsAre(Read(9, 0, 7), Read(9, 12, 1)));
}

TEST_P(ReadListInBothModes, AGapIsReadAlongUpToExactlyTheLimit)
{
    for (int area = 0; area <= 14; ++area) {
        if (area == 8)
            continue;
        SCOPED_TRACE(area);
        const int limit = area < 8 ? MOST_BITS : MOST_WORDS;
        const HOST_VAR first = Cyclic(area, ElementText(area, 0), 1);

        EXPECT_THAT(BlockReadsFor({first, Cyclic(area, ElementText(area, limit - 1), 1)}),
                    ElementsAre(Read(area, 0, limit)));
        EXPECT_THAT(BlockReadsFor({first, Cyclic(area, ElementText(area, limit), 1)}),
                    ElementsAre(Read(area, 0, 1), Read(area, limit, 1)));
    }
}

TEST_P(ReadListInBothModes, AGrownBlockKeepsTheNamesOfItsFirstVariable)
{
    Rebuild({Cyclic(9, "15", 2, 5, "later"), Cyclic(9, "+10", 2, 5, "first")});

    ASSERT_EQ(1, PLC_driver.readList.size());
    EXPECT_EQ(7, PLC_driver.readList.at(0).count);
    EXPECT_EQ("first", PLC_driver.readList.at(0).name);
    EXPECT_EQ("+10", PLC_driver.readList.at(0).name2);
}

TEST_F(SingleStationReadList, OfVariablesAtOneAddressTheFirstGivesTheName)
{
    Rebuild({Cyclic(9, "3", 2, 5, "first"), Cyclic(9, "3", 4, 5, "second"), Cyclic(9, "3", 1, 5, "third")});

    EXPECT_THAT(BlockReads(), ElementsAre(BlockRead{9, 3, 4}));
    EXPECT_THAT(Names(), ElementsAre("first"));
}

TEST_F(MultiStationReadList, OfVariablesAtOneAddressTheLastGivesTheName)
{
    Rebuild({Cyclic(9, "3", 4, 5, "first"), Cyclic(9, "3", 1, 5, "second"), Cyclic(9, "3", 2, 5, "third")});

    EXPECT_THAT(BlockReads(), ElementsAre(BlockRead{9, 3, 4, 5}));
    EXPECT_THAT(Names(), ElementsAre("third"));
}

// The order at one address also decides what is read: a short variable met first joins the block before it,
// met second it lies inside the long one.
TEST_F(MultiStationReadList, OfVariablesAtOneAddressTheLastIsMergedFirst)
{
    const HOST_VAR before = Cyclic(9, "0", 1);
    const HOST_VAR small = Cyclic(9, "4", 1, 5, "small");
    const HOST_VAR large = Cyclic(9, "4", 8, 5, "large");

    EXPECT_THAT(BlockReadsFor({before, small, large}),
                ElementsAre(BlockRead{9, 0, 1, 5}, BlockRead{9, 4, 8, 5}));
    EXPECT_THAT(BlockReadsFor({before, large, small}),
                ElementsAre(BlockRead{9, 0, 5, 5}, BlockRead{9, 4, 8, 5}));
}

TEST_F(SingleStationReadList, OfVariablesAtOneAddressTheFirstIsMergedFirst)
{
    const HOST_VAR before = Cyclic(9, "0", 1);
    const HOST_VAR small = Cyclic(9, "4", 1, 5, "small");
    const HOST_VAR large = Cyclic(9, "4", 8, 5, "large");

    EXPECT_THAT(BlockReadsFor({before, small, large}), ElementsAre(BlockRead{9, 0, 5}, BlockRead{9, 4, 8}));
    EXPECT_THAT(BlockReadsFor({before, large, small}), ElementsAre(BlockRead{9, 0, 1}, BlockRead{9, 4, 8}));
}

// Splitting.

TEST_P(ReadListInBothModes, ALongWordVariableIsSplitAndItsPiecesStayApart)
{
    for (int area : {9, 10, 11, 12, 13, 14}) {
        SCOPED_TRACE(area);
        EXPECT_THAT(BlockReadsFor({Cyclic(area, ElementText(area, 3), 25)}),
                    ElementsAre(Read(area, 3, 10), Read(area, 13, 10), Read(area, 23, 5)));
    }
}

TEST_P(ReadListInBothModes, ALongBitVariableIsSplitAtEightTimesAsMany)
{
    for (int area = 0; area <= 7; ++area) {
        SCOPED_TRACE(area);
        EXPECT_THAT(BlockReadsFor({Cyclic(area, ElementText(area, 3), 165)}),
                    ElementsAre(Read(area, 3, 80), Read(area, 83, 80), Read(area, 163, 5)));
    }
}

TEST_P(ReadListInBothModes, AVariableOfWholeBlocksHasNoRest)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "0", 10)}), ElementsAre(Read(9, 0, 10)));
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "0", 20)}), ElementsAre(Read(9, 0, 10), Read(9, 10, 10)));
    EXPECT_THAT(BlockReadsFor({Cyclic(2, "0", 160)}), ElementsAre(Read(2, 0, 80), Read(2, 80, 80)));
}

TEST_P(ReadListInBothModes, OneElementTooManyIsAPieceOfOne)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "0", 11)}), ElementsAre(Read(9, 0, 10), Read(9, 10, 1)));
    EXPECT_THAT(BlockReadsFor({Cyclic(2, "0", 81)}), ElementsAre(Read(2, 0, 80), Read(2, 80, 1)));
}

TEST_P(ReadListInBothModes, TheLastPieceIsMergedWithItsNeighbour)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "0", 25), Cyclic(9, "25", 5)}),
                ElementsAre(Read(9, 0, 10), Read(9, 10, 10), Read(9, 20, 10)));
}

TEST_P(ReadListInBothModes, PiecesKeepTheNamesOfTheirVariable)
{
    Rebuild({Cyclic(9, "0", 25, 5, "long")});

    EXPECT_THAT(Names(), ElementsAre("long", "long", "long"));
    EXPECT_EQ("0", PLC_driver.readList.at(2).name2);
}

// Area 7: pieces of words, blocks of bits. A piece can join the block before it where the whole cannot.

TEST_F(SingleStationReadList, Area7IsSplitByWordsAndMergedByBits)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(7, "8000", 5), Cyclic(7, "8005", 80)}),
                ElementsAre(BlockRead{7, 0, 75}, BlockRead{7, 75, 10}));
}

TEST_F(SingleStationReadList, TheOtherBitAreasAreSplitAndMergedByBits)
{
    for (int area = 0; area <= 6; ++area) {
        SCOPED_TRACE(area);
        EXPECT_THAT(
            BlockReadsFor({Cyclic(area, ElementText(area, 0), 5), Cyclic(area, ElementText(area, 5), 80)}),
            ElementsAre(BlockRead{area, 0, 5}, BlockRead{area, 5, 80}));
    }
}

TEST_F(MultiStationReadList, Area7IsSplitAndMergedByBits)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(7, "8000", 5), Cyclic(7, "8005", 80)}),
                ElementsAre(BlockRead{7, 0, 5, 5}, BlockRead{7, 5, 80, 5}));
}

TEST_F(SingleStationReadList, Area7BlocksGrowToTheLimitOfBits)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(7, "8000", 100)}),
                ElementsAre(BlockRead{7, 0, 80}, BlockRead{7, 80, 20}));
}

// Area 8: bits inside words become the words that they span.

TEST_P(ReadListInBothModes, BitsInsideWordsBecomeTheWordsTheySpan)
{
    const struct {
        const char* text;
        int bits;
        BlockRead read;
    } rows[] = {{"3.14", 4, Read(9, 3, 2)},   {"0.0", 1, Read(9, 0, 1)},     {"0.0", 16, Read(9, 0, 1)},
                {"0.0", 17, Read(9, 0, 2)},   {"0.15", 1, Read(9, 0, 1)},    {"0.15", 2, Read(9, 0, 2)},
                {"0.15", 17, Read(9, 0, 2)},  {"0.15", 18, Read(9, 0, 3)},   {"10.20", 1, Read(9, 11, 1)},
                {"2.0", 160, Read(9, 2, 10)}, {"100.1", 15, Read(9, 100, 1)}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.text << ", " << row.bits << " bits");
        EXPECT_THAT(BlockReadsFor({Cyclic(8, row.text, row.bits)}), ElementsAre(row.read));
        EXPECT_EQ(row.text, PLC_driver.readList.at(0).name2);
    }
}

TEST_P(ReadListInBothModes, BitsInsideWordsAreMergedByTheLimitOfWords)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(8, "0.0", 1), Cyclic(8, "9.15", 1)}), ElementsAre(Read(9, 0, 10)));
    EXPECT_THAT(BlockReadsFor({Cyclic(8, "0.0", 1), Cyclic(8, "10.0", 1)}),
                ElementsAre(Read(9, 0, 1), Read(9, 10, 1)));
}

TEST_P(ReadListInBothModes, BitsInsideWordsAndWordsShareReads)
{
    Rebuild({Cyclic(9, "4", 2, 5, "words"), Cyclic(8, "2.3", 1, 5, "bit"), Cyclic(8, "5.0", 8, 5, "inside")});

    EXPECT_THAT(BlockReads(), ElementsAre(Read(9, 2, 4)));
    EXPECT_THAT(Names(), ElementsAre("bit"));
}

TEST_F(SingleStationReadList, BitsInsideWordsAreSplitByTheLimitOfBits)
{
    // 25 and 80 words are one read each, longer than the limit of words; 81 words are two.
    EXPECT_THAT(BlockReadsFor({Cyclic(8, "0.0", 25 * 16)}), ElementsAre(BlockRead{9, 0, 25}));
    EXPECT_THAT(BlockReadsFor({Cyclic(8, "0.0", 80 * 16)}), ElementsAre(BlockRead{9, 0, 80}));
    EXPECT_THAT(BlockReadsFor({Cyclic(8, "0.0", 80 * 16 + 1)}),
                ElementsAre(BlockRead{9, 0, 80}, BlockRead{9, 80, 1}));
}

TEST_F(MultiStationReadList, BitsInsideWordsAreSplitByTheLimitOfWords)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(8, "0.0", 25 * 16)}),
                ElementsAre(BlockRead{9, 0, 10, 5}, BlockRead{9, 10, 10, 5}, BlockRead{9, 20, 5, 5}));
}

TEST_F(SingleStationReadList, AReadLongerThanTheLimitSwallowsWhatLiesInsideAndNeverGrows)
{
    const HOST_VAR bits = Cyclic(8, "0.0", 25 * 16);

    EXPECT_THAT(BlockReadsFor({bits, Cyclic(9, "20", 5)}), ElementsAre(BlockRead{9, 0, 25}));
    EXPECT_THAT(BlockReadsFor({bits, Cyclic(9, "24", 2)}),
                ElementsAre(BlockRead{9, 0, 25}, BlockRead{9, 24, 2}));
    EXPECT_THAT(BlockReadsFor({bits, Cyclic(9, "25", 1)}),
                ElementsAre(BlockRead{9, 0, 25}, BlockRead{9, 25, 1}));
}

// Order of the reads.

TEST_F(SingleStationReadList, AreasComeInTheirFixedOrder)
{
    const auto reads =
        BlockReadsFor({Cyclic(14, "200", 1), Cyclic(13, "0", 1), Cyclic(12, "0", 1), Cyclic(11, "0", 1),
                       Cyclic(10, "0", 1), Cyclic(9, "100", 1), Cyclic(8, "50.0", 1), Cyclic(9, "0", 1),
                       Cyclic(7, "8000", 1), Cyclic(6, "0", 1), Cyclic(5, "0", 1), Cyclic(4, "0", 1),
                       Cyclic(3, "0", 1), Cyclic(2, "0", 1), Cyclic(1, "0", 1), Cyclic(0, "0", 1)});

    EXPECT_THAT(reads,
                ElementsAre(BlockRead{0, 0, 1}, BlockRead{1, 0, 1}, BlockRead{2, 0, 1}, BlockRead{3, 0, 1},
                            BlockRead{4, 0, 1}, BlockRead{5, 0, 1}, BlockRead{6, 0, 1}, BlockRead{7, 0, 1},
                            BlockRead{9, 0, 1}, BlockRead{9, 50, 1}, BlockRead{9, 100, 1},
                            BlockRead{11, 0, 1}, BlockRead{12, 0, 1}, BlockRead{13, 0, 1},
                            BlockRead{10, 0, 1}, BlockRead{14, 0, 1}));
}

TEST_F(MultiStationReadList, KeysComeInOrderOfFirstAppearanceAndAddressesAscendWithin)
{
    const auto reads = BlockReadsFor({Cyclic(12, "40", 1, 2), Cyclic(2, "7", 1, 9), Cyclic(9, "0", 1, 2),
                                      Cyclic(12, "20", 1, 2), Cyclic(2, "6", 1, 1), Cyclic(8, "30.0", 1, 2)});

    EXPECT_THAT(reads, ElementsAre(BlockRead{12, 20, 1, 2}, BlockRead{12, 40, 1, 2}, BlockRead{2, 7, 1, 9},
                                   BlockRead{9, 0, 1, 2}, BlockRead{9, 30, 1, 2}, BlockRead{2, 6, 1, 1}));
}

TEST_F(MultiStationReadList, ASkippedVariableClaimsNoPlaceInTheOrder)
{
    const auto reads = BlockReadsFor(
        {Cyclic(9, "0", 0, 2), Cyclic(9, "no number", 1, 2), Cyclic(9, "4", 1, 1), Cyclic(9, "5", 1, 2)});

    EXPECT_THAT(reads, ElementsAre(BlockRead{9, 4, 1, 1}, BlockRead{9, 5, 1, 2}));
}

// Stations.

TEST_F(SingleStationReadList, EveryVariableGetsTheDefaultStation)
{
    info.defaultStation = 300; // wider than the variable's byte

    EXPECT_THAT(BlockReadsFor({Cyclic(9, "0", 1, 7), Cyclic(9, "1", 1, 8), Cyclic(2, "0", 1, 0)}),
                ElementsAre(BlockRead{2, 0, 1, 300}, BlockRead{9, 0, 2, 300}));
}

TEST_F(MultiStationReadList, TheSameAddressOfTwoStationsIsReadFromEach)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "3", 1, 1), Cyclic(9, "3", 1, 2)}),
                ElementsAre(BlockRead{9, 3, 1, 1}, BlockRead{9, 3, 1, 2}));
}

TEST_F(MultiStationReadList, StationsAreUnsignedBytes)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "3", 1, 128), Cyclic(9, "3", 1, 254), Cyclic(9, "3", 1, 0)}),
                ElementsAre(BlockRead{9, 3, 1, 128}, BlockRead{9, 3, 1, 254}, BlockRead{9, 3, 1, 0}));
}

// Station 255 of an area and station 0 of the next are one key.

TEST_F(MultiStationReadList, Station255IsMergedWithStation0OfTheNextArea)
{
    Rebuild({Cyclic(4, "5", 2, 0, "next"), Cyclic(3, "1", 1, 255, "own")});

    EXPECT_THAT(BlockReads(), ElementsAre(BlockRead{3, 1, 6, 255}));
    EXPECT_THAT(Names(), ElementsAre("own"));
}

TEST_F(MultiStationReadList, OfOneKeyTheLowerAddressNamesAreaAndStation)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(11, "6", 1, 255), Cyclic(12, "2", 1, 0)}),
                ElementsAre(BlockRead{12, 2, 5, 0}));
}

TEST_F(MultiStationReadList, AVariableInsideABlockOfItsKeyIsLostEvenFromAnotherArea)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(3, "0", 4, 255), Cyclic(4, "2", 1, 0)}),
                ElementsAre(BlockRead{3, 0, 4, 255}));
}

TEST_F(MultiStationReadList, AtOneAddressTheLastVariableOfASharedKeyWins)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(3, "0", 1, 255), Cyclic(4, "0", 1, 0)}),
                ElementsAre(BlockRead{4, 0, 1, 0}));
    EXPECT_THAT(BlockReadsFor({Cyclic(4, "0", 1, 0), Cyclic(3, "0", 1, 255)}),
                ElementsAre(BlockRead{3, 0, 1, 255}));
}

TEST_F(MultiStationReadList, ASharedKeyHasOnePlaceInTheOrderAndTheAreasMixInside)
{
    const auto reads = BlockReadsFor(
        {Cyclic(4, "200", 1, 0), Cyclic(2, "0", 1, 1), Cyclic(3, "0", 1, 255), Cyclic(3, "400", 1, 255)});

    EXPECT_THAT(reads, ElementsAre(BlockRead{3, 0, 1, 255}, BlockRead{4, 200, 1, 0},
                                   BlockRead{3, 400, 1, 255}, BlockRead{2, 0, 1, 1}));
}

TEST_F(MultiStationReadList, ASharedKeyOfBitAreasIsMergedByTheLimitOfBits)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(6, "0", 1, 255), Cyclic(7, "8079", 1, 0)}),
                ElementsAre(BlockRead{6, 0, 80, 255}));
    EXPECT_THAT(BlockReadsFor({Cyclic(6, "0", 1, 255), Cyclic(7, "8080", 1, 0)}),
                ElementsAre(BlockRead{6, 0, 1, 255}, BlockRead{7, 80, 1, 0}));
}

TEST_F(MultiStationReadList, ASharedKeyOfWordAreasIsMergedByTheLimitOfWords)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(13, "0", 1, 255), Cyclic(14, "209", 1, 0)}),
                ElementsAre(BlockRead{13, 0, 10, 255}));
    EXPECT_THAT(BlockReadsFor({Cyclic(13, "0", 1, 255), Cyclic(14, "210", 1, 0)}),
                ElementsAre(BlockRead{13, 0, 1, 255}, BlockRead{14, 10, 1, 0}));
}

TEST_F(MultiStationReadList, BitsInsideWordsTakeTheKeyOfTheirWords)
{
    // Station 255 of area 7 would meet station 0 of area 8, but bits inside words are words by then.
    EXPECT_THAT(BlockReadsFor({Cyclic(7, "8000", 1, 255), Cyclic(8, "0.0", 1, 0)}),
                ElementsAre(BlockRead{7, 0, 1, 255}, BlockRead{9, 0, 1, 0}));
    // So station 255 of area 8 meets station 0 of area 10.
    EXPECT_THAT(BlockReadsFor({Cyclic(8, "0.0", 1, 255), Cyclic(10, "4", 1, 0)}),
                ElementsAre(BlockRead{9, 0, 5, 255}));
    EXPECT_THAT(BlockReadsFor({Cyclic(8, "0.0", 1, 255), Cyclic(9, "4", 1, 0)}),
                ElementsAre(BlockRead{9, 0, 1, 255}, BlockRead{9, 4, 1, 0}));
}

TEST_F(MultiStationReadList, Station254DoesNotShareItsKey)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(3, "0", 4, 254), Cyclic(4, "2", 1, 0)}),
                ElementsAre(BlockRead{3, 0, 4, 254}, BlockRead{4, 2, 1, 0}));
}

// Variables that are left out.

TEST_P(ReadListInBothModes, TextsThatNameNoElementAreSkipped)
{
    const struct {
        int area;
        const char* text;
    } rows[] = {{0, "8"},    {1, ""},      {2, "x"},   {6, "1F"},   {7, "7999"},        {8, "3"},
                {8, "3."},   {8, "3.1.2"}, {9, "-5"},  {9, "1.0"},  {10, "2147483648"}, {13, " "},
                {14, "199"}, {8, "-1.2"},  {8, "x.1"}, {2, "0x10"}, {8, "134217728.0"}, {12, "1,0"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << "area " << row.area << " text '" << row.text << "'");
        Rebuild({Cyclic(11, "1", 1, 5, "before"), Cyclic(row.area, row.text, 1, 5, "wrong"),
                 Cyclic(11, "2", 1, 5, "after")});
        EXPECT_THAT(BlockReads(), ElementsAre(Read(11, 1, 2)));
    }
}

TEST_P(ReadListInBothModes, AListOfSkippedVariablesLeavesNoReadsAndStartsANewPass)
{
    info.cycleDone = 1;
    PLC_driver.readReplyCount = 4;
    AddListReadVar(&PLC_driver.retVar);

    EXPECT_EQ(0, Rebuild({Cyclic(9, "x", 1)}));
    EXPECT_THAT(BlockReads(), IsEmpty());
    EXPECT_EQ(0, info.cycleDone);
    EXPECT_EQ(0, PLC_driver.readReplyCount);
}

TEST_F(SingleStationReadList, AreasAbove14AreSkipped)
{
    for (int area : {15, 127, 128, 255}) {
        SCOPED_TRACE(area);
        EXPECT_THAT(BlockReadsFor({Cyclic(area, "0", 1), Cyclic(9, "1", 1)}),
                    ElementsAre(BlockRead{9, 1, 1}));
    }
}

TEST_F(MultiStationReadList, AreasAbove14AreReadFromElement0WhateverTheirText)
{
    for (int area : {15, 127, 128, 255}) {
        SCOPED_TRACE(area);
        EXPECT_THAT(BlockReadsFor({Cyclic(area, "no number", 3, 4)}), ElementsAre(BlockRead{area, 0, 3, 4}));
        EXPECT_THAT(BlockReadsFor({Cyclic(area, "70", 3, 4)}), ElementsAre(BlockRead{area, 0, 3, 4}));
    }
}

TEST_F(MultiStationReadList, AreasAbove14AreSplitAndMergedByTheLimitOfWords)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(15, "", 25, 4), Cyclic(15, "", 3, 4)}),
                ElementsAre(BlockRead{15, 0, 10, 4}, BlockRead{15, 10, 10, 4}, BlockRead{15, 20, 5, 4}));
    EXPECT_THAT(BlockReadsFor({Cyclic(14, "205", 5, 255), Cyclic(15, "", 3, 0)}),
                ElementsAre(BlockRead{15, 0, 10, 0}));
    EXPECT_THAT(BlockReadsFor({Cyclic(14, "205", 6, 255), Cyclic(15, "", 3, 0)}),
                ElementsAre(BlockRead{15, 0, 3, 0}, BlockRead{14, 5, 6, 255}));
}

// Counts.

TEST_F(SingleStationReadList, CountsOf0AndBelowAreKept)
{
    for (int count : {0, -1, -3, INT_MIN}) {
        SCOPED_TRACE(count);
        EXPECT_THAT(BlockReadsFor({Cyclic(9, "5", count)}), ElementsAre(BlockRead{9, 5, count}));
        EXPECT_THAT(BlockReadsFor({Cyclic(7, "8005", count)}), ElementsAre(BlockRead{7, 5, count}));
        EXPECT_THAT(BlockReadsFor({Cyclic(14, "205", count)}), ElementsAre(BlockRead{14, 5, count}));
    }
}

TEST_F(SingleStationReadList, ACountOf0IsMergedLikeAnyOther)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "0", 1), Cyclic(9, "9", 0)}), ElementsAre(BlockRead{9, 0, 9}));
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "0", 4), Cyclic(9, "2", 0)}), ElementsAre(BlockRead{9, 0, 4}));
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "0", 1), Cyclic(9, "11", 0)}),
                ElementsAre(BlockRead{9, 0, 1}, BlockRead{9, 11, 0}));
}

TEST_F(SingleStationReadList, ANegativeCountBehindABlockPullsItsEndBack)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "0", 4), Cyclic(9, "6", -4)}), ElementsAre(BlockRead{9, 0, 2}));
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "0", 4), Cyclic(9, "3", -4)}), ElementsAre(BlockRead{9, 0, 4}));
}

TEST_F(SingleStationReadList, CountsOf0AndBelowOfBitsInsideWordsAreRoundedUpToWords)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(8, "3.0", 0)}), ElementsAre(BlockRead{9, 3, 0}));
    EXPECT_THAT(BlockReadsFor({Cyclic(8, "3.14", 0)}), ElementsAre(BlockRead{9, 3, 1}));
    EXPECT_THAT(BlockReadsFor({Cyclic(8, "3.14", -14)}), ElementsAre(BlockRead{9, 3, 0}));
    EXPECT_THAT(BlockReadsFor({Cyclic(8, "3.1", -20)}), ElementsAre(BlockRead{9, 3, -1}));
    EXPECT_THAT(BlockReadsFor({Cyclic(8, "3.0", -16)}), ElementsAre(BlockRead{9, 3, -1}));
}

TEST_F(MultiStationReadList, CountsOf0AndBelowAreSkipped)
{
    for (int count : {0, -1, -3, -1000, INT_MIN}) {
        SCOPED_TRACE(count);
        EXPECT_EQ(0, Rebuild({Cyclic(9, "5", count), Cyclic(2, "5", count), Cyclic(8, "3.0", count),
                              Cyclic(14, "205", count), Cyclic(15, "", count)}));
        EXPECT_THAT(BlockReads(), IsEmpty());
    }
}

TEST_F(MultiStationReadList, CountsOf0AndBelowOfBitsInsideWordsAreReadWhileTheySpanAWord)
{
    for (int limit : {10, 1, 0, -3}) {
        SCOPED_TRACE(limit);
        info.maxBlockCount = limit;
        EXPECT_THAT(BlockReadsFor({Cyclic(8, "3.5", 0)}), ElementsAre(BlockRead{9, 3, 1, 5}));
        EXPECT_THAT(BlockReadsFor({Cyclic(8, "3.14", -13)}), ElementsAre(BlockRead{9, 3, 1, 5}));
        EXPECT_THAT(BlockReadsFor({Cyclic(8, "3.14", -14)}), IsEmpty());
        EXPECT_THAT(BlockReadsFor({Cyclic(8, "3.1", -20)}), IsEmpty());
        EXPECT_THAT(BlockReadsFor({Cyclic(8, "3.15", INT_MIN)}), IsEmpty());
    }
}

TEST_P(ReadListInBothModes, RunawayCountsAreCutToWhatTheAreaCanServe)
{
    info.maxBlockCount = 100;
    const struct {
        int area;
        int elements;
        int reads;
        int last;
    } rows[] = {{2, 65535, 82, 735},  {7, 65535, 82, 735},  {9, 65535, 656, 35},
                {10, 65535, 656, 35}, {13, 65535, 656, 35}, {14, 65536, 656, 36}};
    for (const auto& row : rows) {
        for (int count : {row.elements, row.elements + 1, INT_MAX}) {
            SCOPED_TRACE(testing::Message() << "area " << row.area << " count " << count);
            Rebuild({Cyclic(row.area, ElementText(row.area, 0), count)});
            ASSERT_EQ(row.reads, PLC_driver.readList.size());
            EXPECT_EQ(row.elements, ElementsRead());
            EXPECT_EQ(row.last, PLC_driver.readList.last().count);
        }
    }
}

TEST_P(ReadListInBothModes, ACountThatTheAreaCanJustServeIsNotCut)
{
    info.maxBlockCount = INT_MAX;
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "3", 65534)}), ElementsAre(Read(9, 3, 65534)));
    EXPECT_THAT(BlockReadsFor({Cyclic(14, "200", 65536)}), ElementsAre(Read(14, 0, 65536)));
    EXPECT_THAT(BlockReadsFor({Cyclic(8, "0.0", 16 * 65535)}), ElementsAre(Read(9, 0, 65535)));
}

TEST_F(SingleStationReadList, RunawayCountsOfBitsInsideWordsAreCutToAllWords)
{
    info.maxBlockCount = 100;
    for (int count : {16 * 65535, 16 * 65535 + 1, INT_MAX}) {
        SCOPED_TRACE(count);
        Rebuild({Cyclic(8, "0.0", count)});
        ASSERT_EQ(82, PLC_driver.readList.size()); // pieces of 800 words
        EXPECT_EQ(65535, ElementsRead());
    }
}

TEST_F(MultiStationReadList, RunawayCountsOfBitsInsideWordsAreCutToAllWords)
{
    info.maxBlockCount = 100;
    for (int count : {16 * 65535, 16 * 65535 + 1, INT_MAX}) {
        SCOPED_TRACE(count);
        EXPECT_EQ(656, Rebuild({Cyclic(8, "0.0", count)}));
        EXPECT_EQ(65535, ElementsRead());
    }
}

TEST_F(MultiStationReadList, RunawayCountsOfAreasAbove14AreCutToo)
{
    EXPECT_EQ(6554, Rebuild({Cyclic(200, "", INT_MAX)}));
    EXPECT_EQ(65535, ElementsRead());
}

TEST_P(ReadListInBothModes, ManyRunawayCountsInOneAreaStayOneArea)
{
    Rebuild({Cyclic(9, "0", INT_MAX), Cyclic(9, "0", INT_MAX), Cyclic(9, "0", INT_MAX)});

    EXPECT_EQ(6554, PLC_driver.readList.size());
    EXPECT_EQ(65535, ElementsRead());
}

// Block limits that limit nothing, or everything.

TEST_P(ReadListInBothModes, WithNoBlockLimitNothingIsSplitOrMerged)
{
    for (int limit : {0, -1, -10, INT_MIN}) {
        SCOPED_TRACE(limit);
        info.maxBlockCount = limit;
        EXPECT_THAT(BlockReadsFor({Cyclic(9, "0", 2000), Cyclic(9, "2000", 3), Cyclic(9, "2010", 1)}),
                    ElementsAre(Read(9, 0, 2000), Read(9, 2000, 3), Read(9, 2010, 1)));
        EXPECT_THAT(BlockReadsFor({Cyclic(7, "8000", 2000), Cyclic(7, "10000", 3)}),
                    ElementsAre(Read(7, 0, 2000), Read(7, 2000, 3)));
        EXPECT_THAT(BlockReadsFor({Cyclic(8, "0.0", 1600), Cyclic(8, "100.0", 3)}),
                    ElementsAre(Read(9, 0, 100), Read(9, 100, 1)));
    }
}

TEST_P(ReadListInBothModes, WithNoBlockLimitAVariableInsideTheOneBeforeIsStillDropped)
{
    for (int limit : {0, -1, INT_MIN}) {
        SCOPED_TRACE(limit);
        info.maxBlockCount = limit;
        EXPECT_THAT(BlockReadsFor({Cyclic(9, "0", 4), Cyclic(9, "2", 2), Cyclic(9, "3", 2)}),
                    ElementsAre(Read(9, 0, 4), Read(9, 3, 2)));
    }
}

TEST_F(SingleStationReadList, WithNoBlockLimitCountsOf0AndBelowAreReadsOfTheirOwn)
{
    for (int limit : {0, -10, INT_MIN}) {
        SCOPED_TRACE(limit);
        info.maxBlockCount = limit;
        EXPECT_THAT(BlockReadsFor({Cyclic(9, "4", 0), Cyclic(9, "4", 0), Cyclic(9, "5", -2)}),
                    ElementsAre(BlockRead{9, 4, 0}, BlockRead{9, 4, 0}, BlockRead{9, 5, -2}));
    }
}

TEST_P(ReadListInBothModes, WithABlockLimitOf1EveryWordIsARead)
{
    info.maxBlockCount = 1;
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "0", 3), Cyclic(9, "1", 1)}),
                ElementsAre(Read(9, 0, 1), Read(9, 1, 1), Read(9, 2, 1)));
    EXPECT_THAT(BlockReadsFor({Cyclic(2, "0", 9)}), ElementsAre(Read(2, 0, 8), Read(2, 8, 1)));
}

TEST_P(ReadListInBothModes, TheLargestBlockLimitDoesNotOverflow)
{
    info.maxBlockCount = INT_MAX;
    for (int area : {2, 9}) {
        SCOPED_TRACE(area);
        const HOST_VAR first = Cyclic(area, "0", 1);
        EXPECT_THAT(BlockReadsFor({first, Cyclic(area, "2147483646", 1)}),
                    ElementsAre(Read(area, 0, INT_MAX)));
        EXPECT_THAT(BlockReadsFor({first, Cyclic(area, "2147483647", 1)}),
                    ElementsAre(Read(area, 0, 1), Read(area, INT_MAX, 1)));
    }
}

TEST_P(ReadListInBothModes, AddressesAtTheTopOf32BitsAreMergedWithoutOverflow)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "2147483640", 2), Cyclic(9, "2147483647", 1)}),
                ElementsAre(Read(9, 2147483640, 8)));
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "2147483640", 2), Cyclic(9, "2147483647", 4)}),
                ElementsAre(Read(9, 2147483640, 2), Read(9, 2147483647, 4)));
}

TEST_P(ReadListInBothModes, AVariableInsideABlockThatEndsAtTheTopOf32BitsAddsNothing)
{
    EXPECT_THAT(BlockReadsFor({Cyclic(9, "2147483640", 8), Cyclic(9, "2147483642", 1)}),
                ElementsAre(Read(9, 2147483640, 8)));
}

TEST_P(ReadListInBothModes, LaterSettingsHoldForTheNextRebuild)
{
    const HOST_VAR variable = Cyclic(9, "0", 25);
    Rebuild({variable});
    info.maxBlockCount = 20;

    EXPECT_THAT(BlockReadsFor({variable}), ElementsAre(Read(9, 0, 20), Read(9, 20, 5)));
}

// Fields that every request has in common.

TEST_P(ReadListInBothModes, EveryRequestCarriesTheSameIdentity)
{
    info.remoteMode = 77;
    info.localStation = 42;
    Rebuild({Cyclic(2, "1", 100, 5, "bits"), Cyclic(8, "3.14", 4, 5, "bits in words"),
             Cyclic(9, "50", 25, 5, "words"), Cyclic(14, "205", 2, 5, "double words")});

    ASSERT_EQ(7, PLC_driver.readList.size());
    for (const RW_VAR& var : PLC_driver.readList) {
        SCOPED_TRACE(var.name.toStdString());
        EXPECT_EQ(0, var.hostKey);
        EXPECT_EQ(-1, var.hostSubKey);
        EXPECT_EQ(0, var.accessFlag);
        EXPECT_EQ(77, var.spare3);
        EXPECT_EQ(42, var.stationGroup);
        EXPECT_EQ(0, var.result);
        EXPECT_EQ(0, var.storeSelector);
        EXPECT_EQ(0, var.spare13);
        EXPECT_TRUE(var.data.isEmpty());
    }
}

TEST_P(ReadListInBothModes, EachVariableBringsItsOwnNames)
{
    Rebuild({Cyclic(2, "1", 1, 5, "bit"), Cyclic(9, "050", 1, 5, "word"), Cyclic(9, "90", 1, 5)});

    EXPECT_THAT(Names(), ElementsAre("bit", "word", ""));
    EXPECT_EQ("1", PLC_driver.readList.at(0).name2);
    EXPECT_EQ("050", PLC_driver.readList.at(1).name2);
    EXPECT_EQ("90", PLC_driver.readList.at(2).name2);
}

TEST_P(ReadListInBothModes, TheVariablesOfTheRuntimeStayAsTheyAre)
{
    QList<HOST_VAR> list({Cyclic(9, "50", 25, 5, "b"), Cyclic(8, "3.14", 4, 6, "a")});
    const HOST_VAR* const first = &list.at(0);

    ReCreatReadVarList(&list);

    ASSERT_EQ(2, list.size());
    EXPECT_EQ(first, &list.at(0));
    EXPECT_EQ(25, list.at(0).count);
    EXPECT_EQ("50", list.at(0).address);
    EXPECT_EQ("b", list.at(0).name);
    EXPECT_EQ(8, list.at(1).area);
    EXPECT_EQ(6, list.at(1).station);
    EXPECT_EQ("3.14", list.at(1).address);
    EXPECT_EQ(4, list.at(1).count);
}

// Results.

TEST_F(SingleStationReadList, TheResultIsAlways0)
{
    EXPECT_EQ(0, Rebuild({Cyclic(9, "0", 1)}));
    EXPECT_EQ(0, Rebuild({Cyclic(9, "0", 25), Cyclic(2, "0", 1)}));
    EXPECT_EQ(4, PLC_driver.readList.size());
}

TEST_F(MultiStationReadList, TheResultIsTheNumberOfReads)
{
    EXPECT_EQ(1, Rebuild({Cyclic(9, "0", 1)}));
    EXPECT_EQ(5, Rebuild({Cyclic(9, "0", 25, 1), Cyclic(2, "0", 1, 1), Cyclic(9, "0", 1, 2)}));
    EXPECT_EQ(5, PLC_driver.readList.size());
}

// The old list, the other lists, and what the scheduler counts.

TEST_P(ReadListInBothModes, TheOldReadsAreGone)
{
    Rebuild({Cyclic(9, "0", 25), Cyclic(2, "0", 1)});

    EXPECT_THAT(BlockReadsFor({Cyclic(10, "4", 1)}), ElementsAre(Read(10, 4, 1)));
}

TEST_P(ReadListInBothModes, TheSchedulerStartsANewPass)
{
    info.cycleDone = 1;
    PLC_driver.readReplyCount = 4;

    Rebuild({Cyclic(9, "0", 1)});

    EXPECT_EQ(0, info.cycleDone);
    EXPECT_EQ(0, PLC_driver.readReplyCount);
}

TEST_P(ReadListInBothModes, AnEmptyListEmptiesTheReadsAndTouchesNothingElse)
{
    Rebuild({Cyclic(9, "0", 1)});
    info.cycleDone = 1;
    PLC_driver.readReplyCount = 4;

    EXPECT_EQ(0, Rebuild({}));
    EXPECT_THAT(BlockReads(), IsEmpty());
    EXPECT_EQ(1, info.cycleDone);
    EXPECT_EQ(4, PLC_driver.readReplyCount);
}

TEST_P(ReadListInBothModes, ANullListChangesNothing)
{
    Rebuild({Cyclic(9, "7", 1)});
    info.cycleDone = 1;
    PLC_driver.readReplyCount = 4;

    EXPECT_EQ(0, ReCreatReadVarList(nullptr));
    EXPECT_THAT(BlockReads(), ElementsAre(Read(9, 7, 1)));
    EXPECT_EQ(1, info.cycleDone);
    EXPECT_EQ(4, PLC_driver.readReplyCount);
}

TEST_P(ReadListInBothModes, WithNoSettingsBlockNothingChanges)
{
    Rebuild({Cyclic(9, "7", 1)});
    info.cycleDone = 1;
    PLC_driver.readReplyCount = 4;
    PLC_driver.comInfo = nullptr;

    EXPECT_EQ(0, Rebuild({Cyclic(9, "0", 1), Cyclic(2, "0", 1)}));
    EXPECT_EQ(0, Rebuild({}));
    EXPECT_EQ(0, ReCreatReadVarList(nullptr));
    EXPECT_THAT(BlockReads(), ElementsAre(Read(9, 7, 1)));
    EXPECT_EQ(1, info.cycleDone);
    EXPECT_EQ(4, PLC_driver.readReplyCount);
}

TEST_P(ReadListInBothModes, QueuedWritesAndOneShotReadsStay)
{
    RW_VAR write = Write(9, 5, 1, "34 12");
    RW_VAR once = Variable(9, 6, 1);
    AddListWriteVar(&write, 1);
    AddListOnceReadVar(&once, 1);

    Rebuild({Cyclic(9, "0", 1)});
    Rebuild({});

    EXPECT_THAT(BlockReadsOf(PLC_driver.writeList), ElementsAre(BlockRead{9, 5, 1}));
    EXPECT_THAT(BlockReadsOf(PLC_driver.onceReadList), ElementsAre(BlockRead{9, 6, 1}));
}

// The list lock.

TEST_P(ReadListInBothModes, EveryWayOutLeavesTheListLockFree)
{
    const auto lockIsFree = [] {
        const bool locked = PLC_driver.listMutex.tryLock();
        if (locked)
            PLC_driver.listMutex.unlock();
        return locked;
    };
    Rebuild({Cyclic(9, "0", 25)});
    EXPECT_TRUE(lockIsFree());
    Rebuild({});
    EXPECT_TRUE(lockIsFree());
    ReCreatReadVarList(nullptr);
    EXPECT_TRUE(lockIsFree());
    PLC_driver.comInfo = nullptr;
    Rebuild({Cyclic(9, "0", 25)});
    EXPECT_TRUE(lockIsFree());
}

TEST_P(ReadListInBothModes, ARebuildWaitsForTheListLockBeforeItTouchesTheList)
{
    Rebuild({Cyclic(9, "7", 1)});
    PLC_driver.listMutex.lock();
    std::future<int> rebuild = std::async(std::launch::async, [] { return Rebuild({Cyclic(9, "8", 1)}); });

    const bool waits = rebuild.wait_for(std::chrono::milliseconds(50)) == std::future_status::timeout;
    const std::vector<BlockRead> meanwhile = BlockReads();
    PLC_driver.listMutex.unlock();
    rebuild.get();

    EXPECT_TRUE(waits);
    EXPECT_THAT(meanwhile, ElementsAre(Read(9, 7, 1)));
    EXPECT_THAT(BlockReads(), ElementsAre(Read(9, 8, 1)));
}

// Sizes that a runtime really hands over; a test that hangs here is the failure.

TEST_P(ReadListInBothModes, FiftyThousandVariablesOfOneAreaInReverseOrderBecomeFullBlocks)
{
    QList<HOST_VAR> list;
    for (int i = 49999; i >= 0; --i)
        list.append(Cyclic(9, Text(i), 1));
    ReCreatReadVarList(&list);

    ASSERT_EQ(5000, PLC_driver.readList.size());
    for (int i = 0; i < 5000; ++i)
        ASSERT_EQ(Read(9, 10 * i, 10), BlockReadsOf(PLC_driver.readList.mid(i, 1)).at(0));
}
