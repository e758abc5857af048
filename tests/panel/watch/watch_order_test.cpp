// SPDX-License-Identifier: MIT
#include "panel/watch/watch_order.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using namespace plc;
using testing::HasSubstr;

WatchOrder order(const char* line)
{
    return parseWatchOrder(QLatin1String(line));
}

TEST(ParseWatchOrder, SwitchesStationsOffAndOn)
{
    for (const char* line : {"o3", "-3", " O 3 ", "-03"}) {
        EXPECT_EQ(order(line).kind, WatchOrder::SwitchOff) << line;
        EXPECT_EQ(order(line).station, 3) << line;
    }
    for (const char* line : {"i255", "+255", "I255"}) {
        EXPECT_EQ(order(line).kind, WatchOrder::SwitchOn) << line;
        EXPECT_EQ(order(line).station, 255) << line;
    }
    EXPECT_EQ(order("o0").station, 0);
}

TEST(ParseWatchOrder, EndsAndDoesNothing)
{
    EXPECT_EQ(order("q").kind, WatchOrder::End);
    EXPECT_EQ(order(" Q ").kind, WatchOrder::End);
    EXPECT_EQ(order("").kind, WatchOrder::Nothing);
    EXPECT_EQ(order("  ").kind, WatchOrder::Nothing);
}

TEST(ParseWatchOrder, SaysWhatIsWrongAndWhatIsExpected)
{
    for (const char* line :
         {"o", "o256", "o-3", "o+3", "--3", "x3", "3", "quit", "o3i3", "o99999999999", "i 3 4"}) {
        EXPECT_EQ(order(line).kind, WatchOrder::Wrong) << line;
        EXPECT_THAT(order(line).error.toStdString(), HasSubstr('"' + std::string(line) + '"'));
        EXPECT_THAT(order(line).error.toStdString(), HasSubstr("o3 switches station 3 off"));
    }
}

/// \return the lines that the keys make, each with a bar behind it, and what is left
std::string typed(const char* keys)
{
    TypedLine line;
    QString lines;
    for (const char* key = keys; *key != '\0'; ++key) {
        if (line.press(*key))
            lines += line.take() + QLatin1Char('|');
    }
    return (lines + line.text()).toStdString();
}

TEST(TypedLine, EndsWithEnter)
{
    EXPECT_EQ(typed("o3\ri4\n\no"), "o3|i4||o");
}

TEST(TypedLine, IsEdited)
{
    EXPECT_EQ(typed("o4\x7f"
                    "3\n"),
              "o3|");
    EXPECT_EQ(typed("\b\bo4\b\b\bi3\n"), "i3|");
    EXPECT_EQ(typed("o44\x15i3\n"), "i3|");
}

TEST(TypedLine, IgnoresOtherKeysAndEndlessOnes)
{
    EXPECT_EQ(typed("\x1b\x01o\xC3\xA4"
                    "3\n"),
              "o3|");
    EXPECT_EQ(typed(std::string(1000, 'x').c_str()), std::string(20, 'x'));
}

} // namespace
