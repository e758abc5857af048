// SPDX-License-Identifier: MIT
#include "varlist/read_list.h"

#include "cyclic_variables.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <climits>
#include <initializer_list>
#include <random>
#include <vector>

using testing::ElementsAre;

namespace
{

class Grouping : public DriverTest
{
protected:
    static QList<RW_VAR> ListOf(std::initializer_list<BlockRead> entries)
    {
        QList<RW_VAR> list;
        for (const BlockRead& entry : entries)
            list.append(Variable(entry.area, entry.address, entry.count, entry.station));
        return list;
    }

    static int Merge(std::initializer_list<BlockRead> entries, int limit)
    {
        QList<RW_VAR> list = ListOf(entries);
        return WordVarReCreat(&list, limit, PLC_driver.readList.size());
    }

    /// A list of these addresses; each entry's count is its place.
    static QList<RW_VAR> Unsorted(const std::vector<int>& addresses)
    {
        QList<RW_VAR> list;
        for (int address : addresses)
            list.append(Variable(9, address, list.size()));
        return list;
    }

    static std::vector<int> Addresses(const QList<RW_VAR>& list)
    {
        std::vector<int> addresses;
        for (const RW_VAR& var : list)
            addresses.push_back(var.address);
        return addresses;
    }

    static std::vector<int> OldPlaces(const QList<RW_VAR>& list)
    {
        std::vector<int> places;
        for (const RW_VAR& var : list)
            places.push_back(var.count);
        return places;
    }

    /// Where the records are in memory, slot by slot.
    static std::vector<const RW_VAR*> Records(const QList<RW_VAR>& list)
    {
        std::vector<const RW_VAR*> records;
        for (int i = 0; i < list.size(); ++i)
            records.push_back(&list.at(i));
        return records;
    }

    /// Sorts and checks all that sorting promises, for a list of these addresses.
    static void ExpectSorted(const std::vector<int>& addresses)
    {
        QList<RW_VAR> list = Unsorted(addresses);
        const std::vector<const RW_VAR*> before = Records(list);

        Bubble_Sort(&list);

        const std::vector<const RW_VAR*> after = Records(list);
        ASSERT_EQ(before.size(), after.size());
        for (std::size_t i = 0; i < after.size(); ++i) {
            const RW_VAR& var = *after[i];
            ASSERT_EQ(before[static_cast<std::size_t>(var.count)], after[i])
                << "a record was moved or copied";
            ASSERT_EQ(addresses[static_cast<std::size_t>(var.count)], var.address);
            if (i == 0)
                continue;
            ASSERT_LE(after[i - 1]->address, var.address);
            if (after[i - 1]->address == var.address) {
                ASSERT_LT(after[i - 1]->count, var.count) << "equal addresses changed places";
            }
        }
    }
};

class Splitting : public Grouping
{
};

class Sorting : public Grouping
{
};

class Merging : public Grouping
{
};

} // namespace

// WhetherGroup

TEST_F(Splitting, ACountWithinTheLimitIsAppendedUnchanged)
{
    for (int count : {10, 9, 1, 0, -4, INT_MIN}) {
        SCOPED_TRACE(count);
        RW_VAR var = Variable(9, 5, 77);
        QList<RW_VAR> list;

        WhetherGroup(count, 10, &var, &list);

        EXPECT_THAT(BlockReadsOf(list), ElementsAre(BlockRead{9, 5, 77}));
        EXPECT_EQ(5, var.address);
        EXPECT_EQ(77, var.count);
    }
}

TEST_F(Splitting, TheLastOfManyPiecesHoldsTheRest)
{
    RW_VAR var = Variable(9, 5, 25);
    QList<RW_VAR> list;

    WhetherGroup(25, 10, &var, &list);

    EXPECT_THAT(BlockReadsOf(list),
                ElementsAre(BlockRead{9, 5, 10}, BlockRead{9, 15, 10}, BlockRead{9, 25, 5}));
}

TEST_F(Splitting, WholePiecesLeaveNoRest)
{
    RW_VAR var = Variable(9, 5, 20);
    QList<RW_VAR> list;

    WhetherGroup(20, 10, &var, &list);

    EXPECT_THAT(BlockReadsOf(list), ElementsAre(BlockRead{9, 5, 10}, BlockRead{9, 15, 10}));
}

TEST_F(Splitting, LeavesItsVariableHoldingTheLastPiece)
{
    RW_VAR withRest = Variable(9, 5, 25);
    RW_VAR withoutRest = Variable(9, 5, 20);
    QList<RW_VAR> list;

    WhetherGroup(25, 10, &withRest, &list);
    EXPECT_EQ(25, withRest.address);
    EXPECT_EQ(5, withRest.count);

    WhetherGroup(20, 10, &withoutRest, &list);
    EXPECT_EQ(15, withoutRest.address);
    EXPECT_EQ(10, withoutRest.count);
}

TEST_F(Splitting, AppendsBehindWhatTheListHolds)
{
    RW_VAR var = Variable(9, 5, 11);
    QList<RW_VAR> list = ListOf({{2, 1, 1}});

    WhetherGroup(11, 10, &var, &list);

    EXPECT_THAT(BlockReadsOf(list),
                ElementsAre(BlockRead{2, 1, 1}, BlockRead{9, 5, 10}, BlockRead{9, 15, 1}));
}

TEST_F(Splitting, EveryPieceCarriesTheOtherFields)
{
    RW_VAR var = Variable(9, 5, 11);
    var.hostKey = 3;
    var.name = "name";
    var.name2 = "text";
    var.data = fromHex("01 02");
    QList<RW_VAR> list;

    WhetherGroup(11, 10, &var, &list);

    ASSERT_EQ(2, list.size());
    for (const RW_VAR& piece : list) {
        EXPECT_EQ(3, piece.hostKey);
        EXPECT_EQ("name", piece.name);
        EXPECT_EQ("text", piece.name2);
        EXPECT_EQ("01 02", toHex(piece.data));
    }
}

TEST_F(Splitting, WithNoLimitNothingIsSplit)
{
    for (int limit : {0, -1, INT_MIN}) {
        SCOPED_TRACE(limit);
        RW_VAR var = Variable(9, 5, 1000);
        QList<RW_VAR> list;

        WhetherGroup(1000, limit, &var, &list);

        EXPECT_THAT(BlockReadsOf(list), ElementsAre(BlockRead{9, 5, 1000}));
    }
}

TEST_F(Splitting, WithNoLimitCountsOf0AndBelowAreKept)
{
    for (int count : {0, -4, INT_MIN}) {
        for (int limit : {0, -10, INT_MIN}) {
            SCOPED_TRACE(testing::Message() << "count " << count << " limit " << limit);
            RW_VAR var = Variable(9, 5, count);
            QList<RW_VAR> list;

            WhetherGroup(count, limit, &var, &list);

            EXPECT_THAT(BlockReadsOf(list), ElementsAre(BlockRead{9, 5, count}));
        }
    }
}

// Bubble_Sort

TEST_F(Sorting, ShortListsStay)
{
    ExpectSorted({});
    ExpectSorted({5});
}

TEST_F(Sorting, AddressesAscend)
{
    QList<RW_VAR> list = Unsorted({30, 10, 20, 0});

    Bubble_Sort(&list);

    EXPECT_THAT(Addresses(list), ElementsAre(0, 10, 20, 30));
    EXPECT_THAT(OldPlaces(list), ElementsAre(3, 1, 2, 0));
}

TEST_F(Sorting, AddressesAreSigned)
{
    QList<RW_VAR> list = Unsorted({0, INT_MAX, -1, INT_MIN, 1});

    Bubble_Sort(&list);

    EXPECT_THAT(Addresses(list), ElementsAre(INT_MIN, -1, 0, 1, INT_MAX));
}

TEST_F(Sorting, EqualAddressesKeepTheirOrder)
{
    QList<RW_VAR> list = Unsorted({7, 3, 7, 3, 7, 3});

    Bubble_Sort(&list);

    EXPECT_THAT(Addresses(list), ElementsAre(3, 3, 3, 7, 7, 7));
    EXPECT_THAT(OldPlaces(list), ElementsAre(1, 3, 5, 0, 2, 4));
}

TEST_F(Sorting, OnlyTheAddressCounts)
{
    QList<RW_VAR> list = ListOf({{12, 4, 9, 8}, {2, 4, 1, 1}, {9, 3, 5, 9}});

    Bubble_Sort(&list);

    EXPECT_THAT(BlockReadsOf(list),
                ElementsAre(BlockRead{9, 3, 5, 9}, BlockRead{12, 4, 9, 8}, BlockRead{2, 4, 1, 1}));
}

TEST_F(Sorting, SlotsAreExchangedAndNoRecordIsCopied)
{
    QList<RW_VAR> list = Unsorted({30, 10, 20, 10});
    const std::vector<const RW_VAR*> before = Records(list);

    Bubble_Sort(&list);

    EXPECT_THAT(Records(list), ElementsAre(before[1], before[3], before[2], before[0]));
}

TEST_F(Sorting, EveryOrderOfSixAddressesWithEqualOnes)
{
    std::vector<int> addresses = {-1, 0, 0, 4, 4, 9};
    do
        ASSERT_NO_FATAL_FAILURE(ExpectSorted(addresses));
    while (std::next_permutation(addresses.begin(), addresses.end()));
}

TEST_F(Sorting, ACopyOfTheListKeepsItsOrder)
{
    QList<RW_VAR> list = Unsorted({30, 10, 20});
    const QList<RW_VAR> copy = list;

    Bubble_Sort(&list);

    EXPECT_THAT(Addresses(list), ElementsAre(10, 20, 30));
    EXPECT_THAT(Addresses(copy), ElementsAre(30, 10, 20));
}

TEST_F(Sorting, FiftyThousandSortedEntries)
{
    std::vector<int> addresses;
    for (int i = 0; i < 50000; ++i)
        addresses.push_back(i);
    ExpectSorted(addresses);
}

TEST_F(Sorting, FiftyThousandReversedEntries)
{
    std::vector<int> addresses;
    for (int i = 50000; i > 0; --i)
        addresses.push_back(i);
    ExpectSorted(addresses);
}

TEST_F(Sorting, FiftyThousandRandomEntries)
{
    std::mt19937 random(50000);
    std::vector<int> dense;
    std::vector<int> sparse;
    for (int i = 0; i < 50000; ++i) {
        dense.push_back(static_cast<int>(random() % 5000));
        sparse.push_back(static_cast<int>(random()));
    }
    ExpectSorted(dense);
    ExpectSorted(sparse);
}

TEST_F(Sorting, FiftyThousandEqualEntries)
{
    ExpectSorted(std::vector<int>(50000, 4));
}

// WordVarReCreat

TEST_F(Merging, AnEmptyListLeavesTheReadsAndTheirNumber)
{
    Merge({{9, 0, 1}}, 10);

    EXPECT_EQ(1, Merge({}, 10));
    EXPECT_THAT(BlockReads(), ElementsAre(BlockRead{9, 0, 1}));
}

TEST_F(Merging, TheResultIsTheNewNumberOfReads)
{
    EXPECT_EQ(2, Merge({{9, 0, 2}, {9, 5, 2}, {9, 12, 1}}, 10));
    EXPECT_EQ(3, Merge({{9, 0, 1}}, 10));
    EXPECT_EQ(3, PLC_driver.readList.size());
}

TEST_F(Merging, AListNeverGrowsABlockOfTheListBeforeIt)
{
    Merge({{9, 0, 1}}, 10);
    Merge({{9, 1, 1}, {9, 2, 1}}, 10);

    EXPECT_THAT(BlockReads(), ElementsAre(BlockRead{9, 0, 1}, BlockRead{9, 1, 2}));
}

TEST_F(Merging, AListNeverDropsItsFirstEntry)
{
    Merge({{9, 0, 10}}, 10);
    Merge({{9, 3, 1}}, 10);

    EXPECT_THAT(BlockReads(), ElementsAre(BlockRead{9, 0, 10}, BlockRead{9, 3, 1}));
}

TEST_F(Merging, AnEntryThatOpensABlockIsNeverSplit)
{
    EXPECT_EQ(2, Merge({{9, 0, 25}, {9, 30, 40}}, 10));

    EXPECT_THAT(BlockReads(), ElementsAre(BlockRead{9, 0, 25}, BlockRead{9, 30, 40}));
}

TEST_F(Merging, ABlockLongerThanTheLimitDropsWhatLiesInside)
{
    Merge({{9, 0, 25}, {9, 3, 22}, {9, 24, 1}}, 10);

    EXPECT_THAT(BlockReads(), ElementsAre(BlockRead{9, 0, 25}));
}

TEST_F(Merging, ADroppedEntryDoesNotMoveTheOpenBlock)
{
    Merge({{9, 0, 6}, {9, 4, 1}, {9, 9, 1}, {9, 10, 1}}, 10);

    EXPECT_THAT(BlockReads(), ElementsAre(BlockRead{9, 0, 10}, BlockRead{9, 10, 1}));
}

TEST_F(Merging, TheLimitIsTheCallersWhateverTheArea)
{
    Merge({{2, 0, 1}, {2, 3, 1}}, 3);
    Merge({{9, 0, 1}, {9, 79, 1}}, 80);

    EXPECT_THAT(BlockReads(), ElementsAre(BlockRead{2, 0, 1}, BlockRead{2, 3, 1}, BlockRead{9, 0, 80}));
}

TEST_F(Merging, AGrownBlockChangesNothingButItsCount)
{
    QList<RW_VAR> list = ListOf({{9, 4, 1, 2}, {12, 6, 3, 7}});
    list[0].hostKey = 3;
    list[0].name = "first";
    list[0].data = fromHex("01");
    list[1].name = "second";

    WordVarReCreat(&list, 10, 0);

    ASSERT_THAT(BlockReads(), ElementsAre(BlockRead{9, 4, 5, 2}));
    EXPECT_EQ(3, PLC_driver.readList.at(0).hostKey);
    EXPECT_EQ("first", PLC_driver.readList.at(0).name);
    EXPECT_EQ("01", toHex(PLC_driver.readList.at(0).data));
}

TEST_F(Merging, TheMergedListStaysAsItIs)
{
    QList<RW_VAR> list = ListOf({{9, 0, 2}, {9, 5, 2}});

    WordVarReCreat(&list, 10, 0);

    EXPECT_THAT(BlockReadsOf(list), ElementsAre(BlockRead{9, 0, 2}, BlockRead{9, 5, 2}));
}

TEST_F(Merging, WithNoLimitEveryEntryOpensABlockUnlessItLiesInsideTheOneBefore)
{
    for (int limit : {0, -1, INT_MIN}) {
        SCOPED_TRACE(limit);
        PLC_driver.readList.clear();
        EXPECT_EQ(3, Merge({{9, 0, 4}, {9, 1, 3}, {9, 2, 3}, {9, 5, 1}}, limit));
        EXPECT_THAT(BlockReads(), ElementsAre(BlockRead{9, 0, 4}, BlockRead{9, 2, 3}, BlockRead{9, 5, 1}));
    }
}

TEST_F(Merging, SpansWiderThan32BitsAreNotMerged)
{
    Merge({{9, INT_MIN, 1}, {9, INT_MAX, 1}}, INT_MAX);

    EXPECT_THAT(BlockReads(), ElementsAre(BlockRead{9, INT_MIN, 1}, BlockRead{9, INT_MAX, 1}));
}

TEST_F(Merging, TakesNoLock)
{
    QMutexLocker held(&PLC_driver.listMutex);

    EXPECT_EQ(1, Merge({{9, 0, 1}}, 10));
}
