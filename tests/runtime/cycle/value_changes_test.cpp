// SPDX-License-Identifier: MIT
#include "runtime/cycle/value_changes.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

CyclicValue fresh(std::vector<quint32> values)
{
    CyclicValue value;
    value.state = ValueState::Fresh;
    value.values = std::move(values);
    return value;
}

CyclicValue failed(FailureKind kind)
{
    CyclicValue value = fresh({1});
    value.state = ValueState::Failed;
    value.failure = Failure(kind, QStringLiteral("why"));
    return value;
}

TEST(ValueChanges, AreOfValuesAndStateAndNotOfAges)
{
    ValueChanges changes;
    CyclicValue never;
    never.values = {0, 0};
    EXPECT_FALSE(changes.isNews(5, never));
    EXPECT_TRUE(changes.isNews(5, fresh({0, 0})));
    EXPECT_FALSE(changes.isNews(5, fresh({0, 0})));
    EXPECT_TRUE(changes.isNews(3, fresh({7})));
    EXPECT_TRUE(changes.isNews(5, fresh({0, 1})));
    CyclicValue old = fresh({0, 1});
    old.ageMs = 100;
    EXPECT_FALSE(changes.isNews(5, old));
    old.state = ValueState::Stale;
    EXPECT_TRUE(changes.isNews(5, old));
    EXPECT_FALSE(changes.isNews(3, fresh({7})));
}

TEST(ValueChanges, AreOfWhatFailed)
{
    ValueChanges changes;
    EXPECT_TRUE(changes.isNews(0, failed(FailureKind::NoReply)));
    EXPECT_TRUE(changes.isNews(1, failed(FailureKind::NoReply)));
    EXPECT_FALSE(changes.isNews(0, failed(FailureKind::NoReply)));
    EXPECT_TRUE(changes.isNews(0, failed(FailureKind::Closed)));
    EXPECT_FALSE(changes.isNews(1, failed(FailureKind::NoReply)));
    EXPECT_TRUE(changes.isNews(1, fresh({1})));
    EXPECT_FALSE(changes.isNews(1, fresh({1})));
    EXPECT_FALSE(changes.isNews(0, failed(FailureKind::Closed)));
    EXPECT_TRUE(changes.isNews(900, failed(FailureKind::Closed)));
}

} // namespace
