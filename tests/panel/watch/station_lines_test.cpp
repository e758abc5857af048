// SPDX-License-Identifier: MIT
#include "panel/watch/station_lines.h"

#include "runtime/modbus/reply_failure.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

StationReport report(int station, StationCondition condition, qint64 nextTryMs = -1, long failures = 0)
{
    StationReport report;
    report.station = station;
    report.condition = condition;
    report.nextTryMs = nextTryMs;
    report.failures = failures;
    if (condition == StationCondition::NotAnswering || condition == StationCondition::Pausing)
        report.failure = replyFailure(41, FailureKind::None, QByteArray(), 300);
    return report;
}

/// \return the texts, those of stations that are not in order with a mark
std::string lines(const std::vector<StationReport>& stations, int most = 0)
{
    std::string text = "\n";
    for (const StationLine& line : stationLines(stations, most))
        text += (line.good ? "  " : "! ") + line.text.toStdString() + '\n';
    return text;
}

const std::vector<StationReport> allKinds = {
    report(1, StationCondition::NotTried),         report(2, StationCondition::Answering),
    report(3, StationCondition::Answering, -1, 2), report(4, StationCondition::NotAnswering, -1, 1),
    report(5, StationCondition::Pausing, 3001, 7), report(6, StationCondition::SwitchedOff),
};

TEST(StationLines, TellHowEachStationLooks)
{
    EXPECT_EQ(lines(allKinds), R"(
  station 1: not tried yet
  station 2: answering
  station 3: answering, requests given up: 2
! station 4: not answering, requests given up: 1 (no reply within 300 ms)
! station 5: not answering, next try in 4 s, requests given up: 7 (no reply within 300 ms)
! station 6: switched off
)");
}

TEST(StationLines, CountTheGoodOnesWhereThereIsNoRoom)
{
    EXPECT_EQ(lines(allKinds, 5), R"(
! station 4: not answering, requests given up: 1 (no reply within 300 ms)
! station 5: not answering, next try in 4 s, requests given up: 7 (no reply within 300 ms)
! station 6: switched off
  3 of 6 stations answering or not tried yet
)");
    EXPECT_EQ(lines(allKinds, 6), lines(allKinds));
}

TEST(StationLines, AreNoNewsWhenOnlyTimeGoesOn)
{
    const StationReport before = report(5, StationCondition::Pausing, 3001, 7);
    EXPECT_TRUE(sameNews(before, report(5, StationCondition::Pausing, 2001, 8)));
    EXPECT_FALSE(sameNews(before, report(5, StationCondition::NotAnswering, -1, 7)));
    EXPECT_FALSE(sameNews(before, report(6, StationCondition::Pausing, 3001, 7)));
}

} // namespace
