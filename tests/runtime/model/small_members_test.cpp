// SPDX-License-Identifier: MIT
#include "runtime/model/small_members.h"

#include "runtime/model/variable_list.h"

#include <gtest/gtest.h>

#include <utility>

namespace
{

using namespace plc;

TEST(RareNumber, IsThereOrNot)
{
    const RareNumber none;
    EXPECT_FALSE(none);
    EXPECT_EQ(std::optional<double>(none), std::nullopt);
    RareNumber some = 2.5;
    const RareNumber copy = some;
    some = 7;
    ASSERT_TRUE(copy && some);
    EXPECT_EQ(*copy, 2.5);
    EXPECT_EQ(*some, 7);
    some = RareNumber();
    EXPECT_FALSE(some);
    EXPECT_TRUE(copy == std::optional<double>(2.5));
    EXPECT_FALSE(RareNumber(std::optional<double>()));
}

TEST(NumberOrUsual, IsTheUsualOneUntilItIsAnother)
{
    NumberOrUsual<1> scale;
    EXPECT_EQ(scale, 1);
    scale = 0.1;
    EXPECT_EQ(scale * 3, 0.1 * 3);
    scale = 1;
    EXPECT_EQ(scale, 1);
}

TEST(SmallText, IsTheTextThatItWasMadeOf)
{
    const QString words = QString::fromUtf8("\xC3\xA4 \xF0\x9F\x94\xA5");
    SmallText text = words;
    EXPECT_EQ(text.text(), words);
    EXPECT_EQ(text.utf8(), words.toUtf8());
    const SmallText copy = text;
    text = QStringLiteral("another");
    EXPECT_EQ(copy.text(), words);
    EXPECT_FALSE(copy == text);
    SmallText moved = std::move(text);
    EXPECT_EQ(moved, QStringLiteral("another"));
    moved = copy;
    EXPECT_EQ(moved, copy);
    EXPECT_TRUE(SmallText().isEmpty());
    EXPECT_TRUE(SmallText(QString()).isEmpty());
    EXPECT_EQ(SmallText().text(), QString());
}

TEST(ListedVariable, IsSmall)
{
    const std::size_t pointers = 8; // name, scale, offset, unit, min, max, deadband and comment
    EXPECT_EQ(sizeof(ListedVariable), pointers * sizeof(void*) + sizeof(Variable) + 3 * sizeof(int));
}

} // namespace
