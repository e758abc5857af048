// SPDX-License-Identifier: MIT
// What a pass over the cyclic variables costs, counted from its requests.

#include "runtime/cycle/pass_counter.h"

#include <gtest/gtest.h>

namespace
{

using plc::PassCounter;

TEST(PassCounter, KnowsNothingBeforeTheFirstPassIsOver)
{
    PassCounter counter;
    counter.frame();
    counter.request(9, 10, 0);
    EXPECT_EQ(counter.last().requests, 0);
    EXPECT_EQ(counter.last().registers, 0);
    EXPECT_EQ(counter.perSecond(1000000), 0.0);
}

TEST(PassCounter, CountsRegistersAndBitsApart)
{
    PassCounter counter;
    counter.request(9, 10, 3);
    counter.request(11, 5, 0);
    counter.request(2, 40, 8);
    counter.endPass(1000);
    EXPECT_EQ(counter.last().requests, 3);
    EXPECT_EQ(counter.last().registers, 15);
    EXPECT_EQ(counter.last().registersUnused, 3);
    EXPECT_EQ(counter.last().bits, 40);
    EXPECT_EQ(counter.last().bitsUnused, 8);
}

TEST(PassCounter, CountsPassesASecondWhereMicrosecondsLeaveTheirBits)
{
    for (const qint64 wrap : {qint64(1) << 31, qint64(1) << 32, (qint64(1) << 32) * 1000}) {
        PassCounter counter;
        for (int pass = -2; pass <= 2; ++pass)
            counter.endPass(wrap + pass * 100000);
        EXPECT_NEAR(counter.perSecond(wrap + 250000), 10.0, 0.01) << wrap;
    }
}

TEST(PassCounter, CountsADoubleWordAsTwoRegisters)
{
    PassCounter counter;
    counter.request(14, 10, 4);
    counter.endPass(1000);
    EXPECT_EQ(counter.last().registers, 20);
    EXPECT_EQ(counter.last().registersUnused, 8);
}

TEST(PassCounter, CountsFramesThatWereTriedAgain)
{
    PassCounter counter;
    counter.frame();
    counter.frame();
    counter.request(9, 1, 0);
    counter.endPass(1000);
    EXPECT_EQ(counter.last().frames, 2);
    EXPECT_EQ(counter.last().requests, 1);
}

TEST(PassCounter, BeginsEachPassAtZero)
{
    PassCounter counter;
    counter.frame();
    counter.request(9, 10, 3);
    counter.endPass(1000);
    counter.frame();
    counter.request(9, 2, 0);
    counter.endPass(2000);
    EXPECT_EQ(counter.last().frames, 1);
    EXPECT_EQ(counter.last().registers, 2);
    EXPECT_EQ(counter.last().registersUnused, 0);
}

TEST(PassCounter, KnowsTheRateFromTheSecondPassOn)
{
    PassCounter counter;
    counter.endPass(5000000); // the first may have waited for a connection
    EXPECT_EQ(counter.perSecond(5000000), 0.0);
    counter.endPass(5250000);
    EXPECT_DOUBLE_EQ(counter.perSecond(5250000), 4.0);
    EXPECT_DOUBLE_EQ(counter.perSecond(5700000), 4.0) << "not late yet";
}

TEST(PassCounter, LetsTheRateFallWhileAPassIsLate)
{
    PassCounter counter;
    counter.endPass(1000000);
    counter.endPass(2000000);
    EXPECT_DOUBLE_EQ(counter.perSecond(11000000), 0.1);
}

TEST(PassCounter, TakesAPassForLateThatLastsMoreThanThreeOfThem)
{
    PassCounter counter;
    for (const qint64 end : {1000000, 2000000, 3000000})
        counter.endPass(end);
    EXPECT_DOUBLE_EQ(counter.perSecond(6000000), 1.0);
    EXPECT_DOUBLE_EQ(counter.perSecond(7000000), 2.0 / 6);
}

TEST(PassCounter, GoesByTheLastTenPasses)
{
    PassCounter counter;
    counter.endPass(0);
    for (int pass = 1; pass <= 10; ++pass)
        counter.endPass(1000000 + pass * 100000);
    EXPECT_DOUBLE_EQ(counter.perSecond(2000000), 5.0) << "the long one counts";
    counter.endPass(2100000);
    EXPECT_DOUBLE_EQ(counter.perSecond(2100000), 10.0) << "it does no longer";
}

TEST(PassCounter, FollowsARateThatChanges)
{
    PassCounter counter;
    qint64 now = 0;
    for (int pass = 0; pass < 20; ++pass)
        counter.endPass(now += 1000000);
    EXPECT_DOUBLE_EQ(counter.perSecond(now), 1.0);
    for (int pass = 0; pass < 10; ++pass)
        counter.endPass(now += 100000);
    EXPECT_DOUBLE_EQ(counter.perSecond(now), 10.0);
}

TEST(PassCounter, GivesNoRateWhenNoTimeWentBy)
{
    PassCounter counter;
    counter.endPass(1000);
    counter.endPass(1000);
    EXPECT_EQ(counter.perSecond(1000), 0.0);
}

} // namespace
