// What a refresh costs, as a person and as a program reads it.

#include "panel/watch_json.h"
#include "panel/watch_statistics.h"

#include <gtest/gtest.h>

namespace
{

using namespace panel;

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

TEST(StatisticsJson, HoldsTheSame)
{
    EXPECT_EQ(statisticsJson(someStatistics(), QDateTime::fromMSecsSinceEpoch(0, Qt::UTC)).toStdString(),
              R"({"statistics":{"failed":3,"failures":[)"
              R"({"code":41,"count":2,"words":"no reply"},)"
              R"({"code":71,"count":1,"words":"the reply has the wrong length"}],)"
              R"("frames":520,"lastRefresh":{"bits":480,"bitsUnused":0,"frames":25,"registers":1600,)"
              R"("registersUnused":200,"requests":23},"refreshes":12,"refreshesPerSecond":8.5,"retries":7},)"
              R"("time":"1970-01-01T00:00:00.000Z"})");
}

} // namespace
