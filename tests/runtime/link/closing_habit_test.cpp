// SPDX-License-Identifier: MIT
#include "runtime/link/closing_habit.h"

#include <gtest/gtest.h>

namespace
{

TEST(ClosingHabit, IsNotWaitedForAtFirst)
{
    plc::ClosingHabit habit;
    EXPECT_EQ(habit.waitMs(0), 0);
    EXPECT_EQ(habit.waitMs(1), 0);
}

TEST(ClosingHabit, IsWaitedForBehindAnAnswerOnceItIsKnown)
{
    plc::ClosingHabit habit;
    habit.closed(1);
    EXPECT_EQ(habit.waitMs(0), 0);
    EXPECT_GT(habit.waitMs(1), 0);
}

TEST(ClosingHabit, IsForgottenWhenTheConnectionAnswersAgain)
{
    plc::ClosingHabit habit;
    habit.closed(1);
    EXPECT_EQ(habit.waitMs(2), 0);
    EXPECT_EQ(habit.waitMs(1), 0);
}

TEST(ClosingHabit, IsNoneWhereAConnectionAnsweredMoreThanOnce)
{
    plc::ClosingHabit habit;
    habit.closed(1);
    habit.closed(7);
    EXPECT_EQ(habit.waitMs(1), 0);
}

} // namespace
