// SPDX-License-Identifier: MIT
#include "panel/watch/row_window.h"

#include <gtest/gtest.h>

namespace
{

using plc::RowWindow;

/// Of a hundred rows ten in sight.
RowWindow hundred(int selected = 0)
{
    RowWindow window;
    window.resize(100, 10);
    window.select(selected);
    return window;
}

TEST(RowWindow, ScrollsNoFurtherThanItsSelectionMakesIt)
{
    RowWindow window = hundred();
    window.step(9);
    EXPECT_EQ(window.first(), 0);
    window.step(1);
    EXPECT_EQ(window.first(), 1);
    EXPECT_EQ(window.end(), 11);
    window.step(-9);
    EXPECT_EQ(window.first(), 1);
    window.step(-1);
    EXPECT_EQ(window.first(), 0);
}

TEST(RowWindow, EndsAtBothEnds)
{
    RowWindow window = hundred();
    window.step(-5);
    EXPECT_EQ(window.selected(), 0);
    window.step(1 << 28);
    EXPECT_EQ(window.selected(), 99);
    EXPECT_EQ(window.first(), 90);
    EXPECT_EQ(window.end(), 100);
}

TEST(RowWindow, TurnsWholePages)
{
    RowWindow window = hundred(3);
    window.turn(1);
    EXPECT_EQ(window.first(), 10);
    EXPECT_EQ(window.selected(), 13);
    window.turn(-1);
    EXPECT_EQ(window.first(), 0);
    EXPECT_EQ(window.selected(), 3);
    window.turn(20);
    EXPECT_EQ(window.selected(), 99);
}

TEST(RowWindow, TheWheelTakesTheSelectionAlongWhenItMust)
{
    RowWindow window = hundred(5);
    window.scroll(3);
    EXPECT_EQ(window.first(), 3);
    EXPECT_EQ(window.selected(), 5);
    window.scroll(3);
    EXPECT_EQ(window.selected(), 6);
    window.scroll(-100);
    EXPECT_EQ(window.first(), 0);
    EXPECT_EQ(window.selected(), 6);
}

TEST(RowWindow, ARowThatMovesStaysWhereItIsOnTheScreen)
{
    RowWindow window = hundred(50);
    const int line = window.selected() - window.first();
    window.follow(20);
    EXPECT_EQ(window.selected(), 20);
    EXPECT_EQ(window.selected() - window.first(), line);
    window.follow(0);
    EXPECT_EQ(window.first(), 0);
}

TEST(RowWindow, KeepsTheSelectionInSightOfASmallerWindow)
{
    RowWindow window = hundred(9);
    window.resize(100, 3);
    EXPECT_EQ(window.first(), 7);
    window.resize(100, 200);
    EXPECT_EQ(window.first(), 0);
    EXPECT_EQ(window.end(), 100);
    window.resize(0, 10);
    EXPECT_EQ(window.selected(), 0);
    EXPECT_EQ(window.end(), 0);
}

} // namespace
