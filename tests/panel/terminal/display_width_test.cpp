// SPDX-License-Identifier: MIT
// How many columns texts take in a terminal.

#include "panel/terminal/display_width.h"
#include "panel/terminal/wrapped_text.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

const QString wide = QStringLiteral("\u6E29\u5EA6"); // two characters of two columns
const QString marked = QStringLiteral("Cafe\u0301"); // the mark stands above the e

TEST(DisplayWidth, CountsColumnsAndNotCharacters)
{
    EXPECT_EQ(columnsOf(QStringLiteral("pump 1")), 6);
    EXPECT_EQ(columnsOf(QStringLiteral("\u00D6l")), 2);
    EXPECT_EQ(columnsOf(wide), 4);
    EXPECT_EQ(columnsOf(marked), 4);
    EXPECT_EQ(columnsOf(QString()), 0);
}

TEST(DisplayWidth, CutsNoCharacterInHalves)
{
    EXPECT_EQ(leftColumns(wide, 3), wide.left(1));
    EXPECT_EQ(leftColumns(wide, 4), wide);
    EXPECT_EQ(leftColumns(wide, 1), QString());
    EXPECT_EQ(leftColumns(marked, 4), marked) << "the mark belongs to the last letter";
    EXPECT_EQ(leftColumns(marked, 3), QStringLiteral("Caf"));
}

TEST(DisplayWidth, FillsUpWithSpaces)
{
    EXPECT_EQ(padded(wide, 6), wide + QStringLiteral("  "));
    EXPECT_EQ(padded(wide, 3), wide);
}

TEST(DisplayWidth, ChopsWideTextIntoLinesThatFit)
{
    EXPECT_EQ(chopped(wide, 2), QStringList({wide.left(1), wide.mid(1)}));
    EXPECT_EQ(chopped(wide, 1), QStringList({wide.left(1), wide.mid(1)})) << "narrower than a character";
    EXPECT_EQ(chopped(QString(), 5), QStringList(QString()));
}

} // namespace
