// SPDX-License-Identifier: MIT
// Trends drawn with characters, and samples as lines.

#include "history/log_files.h"
#include "panel/history/sample_lines.h"
#include "panel/history/terminal_plot.h"

#include <gmock/gmock.h>

#include <limits>

namespace
{

using plc::PlotSize;
using plc::SampleState;
using plc::Series;
using plc::TrendPiece;
using test::noon;

const Series speed{QStringLiteral("speed"), QStringLiteral("m/min"), QStringLiteral("int16"), 1};

std::string plot(const std::vector<TrendPiece>& trend, const PlotSize& size)
{
    qputenv("TZ", "UTC");
    return plotLines(speed, {noon, noon + 3600000}, trend, size).join(QLatin1Char('\n')).toStdString();
}

TrendPiece piece(double low, double high)
{
    return {low, high, false};
}

const TrendPiece gap{std::nullopt, std::nullopt, true};

TEST(TerminalPlot, DrawsAColumnForEachPieceAndNothingInAGap)
{
    std::vector<TrendPiece> trend(28, piece(0, 0));
    trend[3] = piece(0, 8);
    for (std::size_t at = 10; at < 20; ++at)
        trend[at] = gap;
    for (std::size_t at = 20; at < 28; ++at)
        trend[at] = piece(4, 4);
    EXPECT_EQ("speed, m/min\n"
              "         8 +   *                        \n"
              "           |   *                        \n"
              "         4 +   *                ********\n"
              "           |   *                        \n"
              "         0 +**********                  \n"
              "           ++--------------------------+\n"
              "            12:00:00            13:00:00",
              plot(trend, {40, 5, false}));
}

TEST(TerminalPlot, HasEightDotsInACharacterOfBraille)
{
    std::vector<TrendPiece> trend(56, gap);
    trend[0] = piece(0, 0);
    trend[1] = piece(7, 7);
    trend[55] = piece(0, 7);
    trend[0].gap = trend[1].gap = true;
    EXPECT_EQ("speed, m/min\n"
              "         7 ┤⠈                          ⢸\n"
              "         0 ┤⡀                          ⢸\n"
              "           └┬──────────────────────────┬\n"
              "            12:00:00            13:00:00",
              plot(trend, {40, 2, true}));
}

TEST(TerminalPlot, HasRoomAboveAndBelowAValueThatNeverChanges)
{
    EXPECT_EQ("speed, m/min\n"
              "4000000002 +                            \n"
              "4000000001 +****************************\n"
              "4000000000 +                            \n"
              "           ++--------------------------+\n"
              "            12:00:00            13:00:00",
              plot(std::vector<TrendPiece>(28, piece(4000000001, 4000000001)), {40, 3, false}));
}

TEST(TerminalPlot, CopesWithTheLargestNumbersAndWithNone)
{
    const double most = std::numeric_limits<double>::max();
    const double none = std::numeric_limits<double>::infinity();
    EXPECT_THAT(plot({piece(-most, -most), piece(most, most), piece(none, none)}, {40, 3, false}),
                testing::HasSubstr("1.798e+308 + *"));
}

TEST(TerminalPlot, SaysThatThereIsNothingToDraw)
{
    EXPECT_EQ("speed, m/min\n  no number was read in this time", plot({gap, gap}, {40, 3, false}));
}

TEST(SampleLines, HaveTheValueInItsUnitOrTheState)
{
    qputenv("TZ", "UTC");
    EXPECT_EQ("2026-11-22T12:00:00.000+00:00  speed    12.5 m/min\n",
              sampleLine(speed, noon, SampleState::Fresh, QStringLiteral("12.5"), 7).toStdString());
    EXPECT_EQ("2026-11-22T12:00:00.000+00:00  speed  (failed)\n",
              sampleLine(speed, noon, SampleState::Failed, QString(), 5).toStdString());
}

TEST(SampleLines, HaveNothingThatATerminalWouldActOn)
{
    qputenv("TZ", "UTC");
    const Series evil{QStringLiteral("\x1b[31m"), QStringLiteral("\a"), QStringLiteral("int16"), 1};
    EXPECT_EQ("2026-11-22T12:00:00.000+00:00  .[31m  1. .\n",
              sampleLine(evil, noon, SampleState::Fresh, QStringLiteral("1\x1b"), 5).toStdString());
    EXPECT_EQ(".[31m, .", plotLines(evil, {noon, noon + 1}, {}, {40, 3, false}).first().toStdString());
}

TEST(SampleLines, AreObjectsWithNumbersForPrograms)
{
    qputenv("TZ", "UTC");
    EXPECT_EQ("{\"name\":\"speed\",\"state\":\"fresh\",\"text\":\"12.50\",\"time\":\"2026-11-22T12:00:00.000+"
              "00:00\","
              "\"type\":\"int16\",\"unit\":\"m/min\",\"value\":12.5}\n",
              sampleJson(speed, noon, SampleState::Fresh, QStringLiteral("12.50")).toStdString());
    const Series recipe{QStringLiteral("recipe"), QString(), QStringLiteral("text"), -1};
    EXPECT_EQ(
        "{\"name\":\"recipe\",\"state\":\"fresh\",\"text\":\"12\",\"time\":\"2026-11-22T12:00:00.000+00:00\","
        "\"type\":\"text\",\"value\":\"12\"}\n",
        sampleJson(recipe, noon, SampleState::Fresh, QStringLiteral("12")).toStdString());
}

} // namespace
