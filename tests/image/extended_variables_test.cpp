// SPDX-License-Identifier: MIT
#include "image/extended_variables.h"

#include "driver/driver_fixture.h"

#include <climits>

class ExtendFindSameVarTest : public DriverTest
{
};

TEST_F(ExtendFindSameVarTest, FirstLookupAppendsAnEntryOfFourZeroBytes)
{
    EXPECT_EQ(0, ExtendFindSameVar(1, 9, 100));
    ASSERT_EQ(1, PLC_driver.extendList.size());
    const EXTENDVAR& entry = PLC_driver.extendList.at(0);
    EXPECT_EQ(1, entry.station);
    EXPECT_EQ(9, entry.area);
    EXPECT_EQ(100, entry.address);
    EXPECT_EQ("00 00 00 00", toHex(entry.value));
}

TEST_F(ExtendFindSameVarTest, SecondLookupFindsTheEntry)
{
    ExtendFindSameVar(1, 9, 100);
    EXPECT_EQ(0, ExtendFindSameVar(1, 9, 100));
    EXPECT_EQ(1, PLC_driver.extendList.size());
}

TEST_F(ExtendFindSameVarTest, EveryPartOfTheKeyCounts)
{
    ExtendFindSameVar(1, 9, 100);
    EXPECT_EQ(1, ExtendFindSameVar(2, 9, 100));
    EXPECT_EQ(2, ExtendFindSameVar(1, 10, 100));
    EXPECT_EQ(3, ExtendFindSameVar(1, 9, 101));
    EXPECT_EQ(4, PLC_driver.extendList.size());
}

TEST_F(ExtendFindSameVarTest, EntriesKeepTheirOrder)
{
    ExtendFindSameVar(2, 9, 5);
    ExtendFindSameVar(1, 9, 5);
    ExtendFindSameVar(3, 9, 5);
    EXPECT_EQ(1, ExtendFindSameVar(1, 9, 5));
    EXPECT_EQ(0, ExtendFindSameVar(2, 9, 5));
    EXPECT_EQ(2, ExtendFindSameVar(3, 9, 5));
}

TEST_F(ExtendFindSameVarTest, FirstOfTwoEqualEntriesWins)
{
    EXTENDVAR other = {1, 9, 1, fromHex("00 00")};
    EXTENDVAR same = {1, 9, 2, fromHex("00 00")};
    PLC_driver.extendList << other << same << same;
    EXPECT_EQ(1, ExtendFindSameVar(1, 9, 2));
    EXPECT_EQ(3, PLC_driver.extendList.size());
}

TEST_F(ExtendFindSameVarTest, AnyNumbersMakeAKey)
{
    EXPECT_EQ(0, ExtendFindSameVar(-1, INT_MIN, INT_MAX));
    EXPECT_EQ(0, ExtendFindSameVar(-1, INT_MIN, INT_MAX));
    EXPECT_EQ(1, ExtendFindSameVar(-1, INT_MIN, INT_MIN));
}

TEST_F(ExtendFindSameVarTest, FindingLeavesValuesAlone)
{
    EXTENDVAR entry = {1, 9, 2, fromHex("34 12")};
    PLC_driver.extendList << entry;
    ExtendFindSameVar(1, 9, 2);
    EXPECT_EQ("34 12", toHex(PLC_driver.extendList.at(0).value));
}

TEST_F(ExtendFindSameVarTest, FindingDoesNotCopyTheList)
{
    ExtendFindSameVar(1, 9, 1);
    ExtendFindSameVar(1, 9, 2);
    const QList<EXTENDVAR> shared = PLC_driver.extendList;
    ExtendFindSameVar(1, 9, 2);
    EXPECT_TRUE(shared.isSharedWith(PLC_driver.extendList));
}

TEST_F(ExtendFindSameVarTest, TakesNoLock)
{
    PLC_driver.imageMutex.lock(); // as its callers do
    EXPECT_EQ(0, ExtendFindSameVar(1, 9, 1));
    PLC_driver.imageMutex.unlock();
}
