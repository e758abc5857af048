// SPDX-License-Identifier: MIT
#include "runtime/model/clock.h"

#include <gtest/gtest.h>

namespace
{

using std::chrono::nanoseconds;

TEST(WholeUnits, LeaveTheRestOut)
{
    EXPECT_EQ(1, plc::wholeUnits(1999, 1000));
    EXPECT_EQ(0, plc::wholeUnits(999, 1000));
}

TEST(WholeUnits, AreRightOnBothSidesOf32Bits)
{
    EXPECT_EQ(4294967, plc::wholeUnits(4294967295, 1000));
    EXPECT_EQ(4294967, plc::wholeUnits(4294967296, 1000));
    EXPECT_EQ(86400000000, plc::wholeUnits(86400000000000, 1000));
}

TEST(WholeUnits, OfANegativeTimeAreNegative)
{
    EXPECT_EQ(-2, plc::wholeUnits(-2000, 1000));
}

TEST(MicrosecondsIn, AreAThousandNanosecondsEach)
{
    EXPECT_EQ(1500, plc::microsecondsIn(nanoseconds(1500000)));
}

} // namespace
