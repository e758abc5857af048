// SPDX-License-Identifier: MIT
#include "panel/watch/row_order.h"

#include <gmock/gmock.h>

namespace
{

using namespace plc;
using testing::ElementsAre;

TEST(RowOrder, GoesRound)
{
    EXPECT_EQ(nextOrder(RowOrder::List), RowOrder::Name);
    EXPECT_EQ(nextOrder(RowOrder::Name), RowOrder::Trouble);
    EXPECT_EQ(nextOrder(RowOrder::Trouble), RowOrder::Change);
    EXPECT_EQ(nextOrder(RowOrder::Change), RowOrder::List);
}

TEST(RowOrder, ByNameTakesNumbersByTheirValueAndLettersOfAnyCase)
{
    const QStringList names = {QStringLiteral("Drive 10"), QStringLiteral("drive 9"), QStringLiteral("alarm"),
                               QStringLiteral("Drive 009"), QStringLiteral("Alarm 2 b")};
    EXPECT_THAT(rowsByName(names), ElementsAre(2, 4, 1, 3, 0));
    EXPECT_TRUE(isNameBefore(QStringLiteral("a2"), QStringLiteral("A10")));
    EXPECT_FALSE(isNameBefore(QStringLiteral("A10"), QStringLiteral("a2")));
}

TEST(RowOrder, ByStateHasTroubleFirstAndTheListsOrderWithin)
{
    EXPECT_THAT(rowsByState(RowOrder::Trouble, {{6, -1}, {3, -1}, {6, -1}, {0, -1}, {3, -1}}, 0),
                ElementsAre(3, 1, 4, 0, 2));
}

TEST(RowOrder, ByChangeHasTheLastFirst)
{
    EXPECT_THAT(rowsByState(RowOrder::Change, {{0, 1000}, {0, -1}, {0, 3000}, {0, 2000}}, 90000),
                ElementsAre(2, 3, 0, 1));
}

TEST(RowOrder, WhatChangesAllTheTimeStaysInTheListsOrder)
{
    EXPECT_THAT(rowsByState(RowOrder::Change, {{0, 9000}, {0, 9500}, {0, 5000}, {0, 9200}}, 10000),
                ElementsAre(0, 1, 3, 2));
}

TEST(RowOrder, AChangeIsMarkedForTwoSeconds)
{
    EXPECT_TRUE(isJustChanged(5000, 6999));
    EXPECT_FALSE(isJustChanged(5000, 7000));
    EXPECT_FALSE(isJustChanged(-1, 0));
}

TEST(Trouble, IsRankedByHowLittleIsKnown)
{
    const auto rank = [](ValueState state, bool outside = false) {
        CyclicValue value;
        value.state = state;
        return troubleOf(value, outside);
    };
    EXPECT_LT(rank(ValueState::Failed), rank(ValueState::NeverRead));
    EXPECT_LT(rank(ValueState::NeverRead), rank(ValueState::StationOff));
    EXPECT_LT(rank(ValueState::StationOff), rank(ValueState::Stale));
    EXPECT_LT(rank(ValueState::Stale), rank(ValueState::Unconfirmed));
    EXPECT_LT(rank(ValueState::Unconfirmed), rank(ValueState::Fresh, true));
    EXPECT_LT(rank(ValueState::Fresh, true), rank(ValueState::Fresh));
    CyclicValue neverAnswered;
    neverAnswered.failure = Failure(FailureKind::NoReply);
    EXPECT_EQ(troubleOf(neverAnswered, false), rank(ValueState::Failed));
}

} // namespace
