// SPDX-License-Identifier: MIT
#include "runtime/cycle/round_trips.h"

#include <gtest/gtest.h>

namespace
{

using plc::RoundTrips;

TEST(RoundTrips, AreNoneBeforeTheFirst)
{
    const RoundTrips none;
    EXPECT_EQ(none.count(), 0);
    EXPECT_EQ(none.shortest(), 0);
    EXPECT_EQ(none.longest(), 0);
    EXPECT_EQ(none.mean(), 0.0);
}

TEST(RoundTrips, AreToldByTheShortestTheLongestAndTheMean)
{
    RoundTrips trips;
    for (const qint64 microseconds : {300, 100, 800})
        trips.add(microseconds);
    EXPECT_EQ(trips.count(), 3);
    EXPECT_EQ(trips.shortest(), 100);
    EXPECT_EQ(trips.longest(), 800);
    EXPECT_EQ(trips.mean(), 400.0);
}

TEST(RoundTrips, LieInTheBinOfTheFirstLimitThatIsAboveThem)
{
    RoundTrips trips;
    for (const qint64 microseconds : {0, 999, 1000, 1999, 2000, 999999, 1000000, 60000000})
        trips.add(microseconds);
    EXPECT_EQ(trips.inBin(0), 2) << "below 1 ms";
    EXPECT_EQ(trips.inBin(1), 2) << "below 2 ms";
    EXPECT_EQ(trips.inBin(2), 1) << "below 5 ms";
    EXPECT_EQ(trips.inBin(9), 1) << "below 1 s";
    EXPECT_EQ(trips.inBin(10), 2) << "the rest";
}

TEST(RoundTrips, AreCountedInStepsOfOneTwoAndFive)
{
    std::size_t bin = 0;
    for (const qint64 limitMs : {1, 2, 5, 10, 20, 50, 100, 200, 500, 1000}) {
        RoundTrips trips;
        trips.add(limitMs * 1000 - 1);
        trips.add(limitMs * 1000);
        EXPECT_EQ(trips.inBin(bin), 1) << limitMs;
        EXPECT_EQ(trips.inBin(++bin), 1) << limitMs;
    }
}

TEST(RoundTrips, OfSeveralAreThoseOfAll)
{
    RoundTrips some;
    some.add(300);
    some.add(5000);
    RoundTrips others;
    others.add(100);
    others.add(2600);
    RoundTrips all;
    all.add(RoundTrips()); // there are none
    all.add(some);
    EXPECT_EQ(all.shortest(), 300);
    all.add(others);
    all.add(RoundTrips());
    EXPECT_EQ(all.count(), 4);
    EXPECT_EQ(all.shortest(), 100);
    EXPECT_EQ(all.longest(), 5000);
    EXPECT_EQ(all.mean(), 2000.0);
    EXPECT_EQ(all.inBin(0), 2);
    EXPECT_EQ(all.inBin(2), 1);
    EXPECT_EQ(all.inBin(3), 1);
}

} // namespace
