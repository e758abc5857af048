// SPDX-License-Identifier: MIT
// What a refresh costs, as a person and as a program reads it.

#include "panel/watch/watch_json.h"
#include "panel/watch/watch_statistics.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

Statistics someStatistics()
{
    Statistics statistics;
    statistics.exchanges = 520;
    statistics.passes = 12;
    statistics.passesPerSecond = 8.5;
    statistics.lastPass.requests = 23;
    statistics.lastPass.frames = 25;
    statistics.lastPass.registers = 1600;
    statistics.lastPass.registersUnused = 200;
    statistics.lastPass.bits = 480;
    statistics.lastPass.bitsUnused = 0;
    statistics.retried = 7;
    statistics.failed = 3;
    statistics.failuresByCode = {{41, 2}, {71, 1}};
    return statistics;
}

std::string text(const Statistics& statistics, int columns = 0)
{
    return '\n' + statisticsLines(statistics, columns).join(QLatin1Char('\n')).toStdString() + '\n';
}

TEST(StatisticsLines, TellRefreshesReadsAndFailures)
{
    EXPECT_EQ(text(someStatistics()), R"(
REFRESHES  12, 8.5 a second; the last took 23 requests in 25 frames
READ       1600 registers (12.5 % of them for no variable), 480 bits (0.0 % of them for no variable)
TROUBLE    7 retries, 3 failures: 2 x no reply (return code 41), 1 x the reply has the wrong length (return code 71)
)");
}

TEST(StatisticsLines, SayThatThereAreNoRefreshesNow)
{
    Statistics statistics = someStatistics();
    statistics.passesPerSecond = 0;
    EXPECT_NE(text(statistics).find("12, none a second now; the last took"), std::string::npos);
}

TEST(StatisticsLines, SayThatNoRefreshIsComplete)
{
    EXPECT_EQ(text(Statistics()), R"(
REFRESHES  none is complete yet
TROUBLE    0 retries, 0 failures
)");
}

TEST(StatisticsLines, GiveASingleRefreshNoRate)
{
    Statistics statistics;
    statistics.passes = 1;
    statistics.lastPass.requests = 1;
    statistics.lastPass.frames = 1;
    statistics.lastPass.registers = 4;
    EXPECT_EQ(text(statistics), R"(
REFRESHES  1; the last took 1 request in 1 frame
READ       4 registers (0.0 % of them for no variable), 0 bits
TROUBLE    0 retries, 0 failures
)");
}

TEST(StatisticsLines, AreBrokenInANarrowWindow)
{
    EXPECT_EQ(text(someStatistics(), 50), R"(
REFRESHES  12, 8.5 a second; the last took 23
           requests in 25 frames
READ       1600 registers (12.5 % of them for no
           variable), 480 bits (0.0 % of them for
           no variable)
TROUBLE    7 retries, 3 failures: 2 x no reply
           (return code 41), 1 x the reply has the
           wrong length (return code 71)
)");
}

TEST(StatisticsLines, ShowHowLongRepliesTookAsBars)
{
    Statistics statistics;
    RoundTrips& trips = statistics.stations[1].roundTrips;
    for (int reply = 0; reply < 90; ++reply)
        trips.add(300);
    for (int reply = 0; reply < 10; ++reply)
        trips.add(7600);
    EXPECT_EQ(text(statistics), R"(
REFRESHES  none is complete yet
TROUBLE    0 retries, 0 failures
ANSWERS    100 replies in 0.30 to 7.60 ms, 1.03 ms on average
           below 1 ms            90  ######################
           1 to 2 ms              0  )"
                                "\n"
                                R"(           2 to 5 ms              0  )"
                                "\n"
                                R"(           5 to 10 ms            10  ###
)");
}

TEST(StatisticsLines, TellSeveralStationsApart)
{
    Statistics statistics;
    statistics.stations[1].roundTrips.add(300);
    statistics.stations[255].retried = 3;
    statistics.stations[255].failuresByCode = {{41, 1}};
    EXPECT_EQ(text(statistics), R"(
REFRESHES  none is complete yet
TROUBLE    0 retries, 0 failures
ANSWERS    1 reply in 0.30 to 0.30 ms, 0.30 ms on average
           below 1 ms             1  ########################
STATIONS   1: 1 reply in 0.30 to 0.30 ms, 0.30 ms on average (1 below 1 ms); 0 retries, 0 failures
           255: 0 replies; 3 retries, 1 failure: 1 x no reply (return code 41)
)");
}

TEST(RoundTrips, CountATimeAtALimitInTheBinAbove)
{
    RoundTrips trips;
    trips.add(999);
    trips.add(1000);
    trips.add(999999);
    trips.add(1000000);
    EXPECT_EQ(trips.inBin(0), 1);
    EXPECT_EQ(trips.inBin(1), 1);
    EXPECT_EQ(trips.inBin(9), 1);
    EXPECT_EQ(trips.inBin(10), 1);
}

TEST(RoundTrips, KnowShortestLongestAndMeanOfAllAddedUp)
{
    RoundTrips slow;
    slow.add(5000);
    RoundTrips all;
    all.add(1000);
    all.add(slow);
    all.add(RoundTrips());
    EXPECT_EQ(all.count(), 2);
    EXPECT_EQ(all.shortest(), 1000);
    EXPECT_EQ(all.longest(), 5000);
    EXPECT_EQ(all.mean(), 3000.0);
    EXPECT_EQ(all.inBin(1), 1);
    EXPECT_EQ(all.inBin(3), 1);
}

TEST(StatisticsJson, HoldsRoundTripsRetriesAndFailuresOfEachStation)
{
    Statistics statistics;
    statistics.stations[3].roundTrips.add(1500);
    statistics.stations[3].retried = 2;
    statistics.stations[3].failuresByCode = {{41, 1}};
    const std::string json =
        statisticsJson(statistics, QDateTime::fromMSecsSinceEpoch(0, Qt::UTC)).toStdString();
    EXPECT_NE(json.find(R"("stations":[{"failures":[{"code":41,"count":1,"words":"no reply"}],"retries":2,)"
                        R"("roundTrips":{"bins":[{"belowMs":1,"count":0},{"belowMs":2,"count":1},)"),
              std::string::npos)
        << json;
    EXPECT_NE(json.find(R"("count":1,"longestMs":1.5,"meanMs":1.5,"shortestMs":1.5},"station":3}])"),
              std::string::npos)
        << json;
}

TEST(StatisticsJson, HoldsTheSame)
{
    EXPECT_EQ(statisticsJson(someStatistics(), QDateTime::fromMSecsSinceEpoch(0, Qt::UTC)).toStdString(),
              R"({"statistics":{"failed":3,"failures":[)"
              R"({"code":41,"count":2,"words":"no reply"},)"
              R"({"code":71,"count":1,"words":"the reply has the wrong length"}],)"
              R"("frames":520,"lastRefresh":{"bits":480,"bitsUnused":0,"frames":25,"registers":1600,)"
              R"("registersUnused":200,"requests":23},"refreshes":12,"refreshesPerSecond":8.5,"retries":7,)"
              R"("stations":[]},)"
              R"("time":"1970-01-01T00:00:00.000Z"})");
}

} // namespace
