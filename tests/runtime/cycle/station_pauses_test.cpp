// SPDX-License-Identifier: MIT
#include "runtime/cycle/station_pauses.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using namespace plc;
using testing::ElementsAre;
using testing::IsEmpty;

const int tries = 4;
const Failure why(FailureKind::NoReply);

/// All tries of one request stay unanswered. \return true when a pause begins
bool loseRequest(StationPauses& pauses, int station, qint64 now, int triesMade = tries)
{
    for (int count = 0; count < triesMade; ++count)
        pauses.tried(station, TryEnd::NoAnswer);
    return pauses.givenUp(station, why, now);
}

StationReport reportOf(const StationPauses& pauses, int station, qint64 now)
{
    for (const StationReport& report : pauses.reports(now)) {
        if (report.station == station)
            return report;
    }
    return StationReport();
}

TEST(StationPauses, BeginWithARequestThatIsGivenUpUnanswered)
{
    StationPauses pauses(1000, tries);
    EXPECT_TRUE(loseRequest(pauses, 3, 5000));
    EXPECT_TRUE(pauses.isPausing(3));
    EXPECT_FALSE(pauses.isPausing(4));
}

TEST(StationPauses, EndByThemselvesAndAreToldOnce)
{
    StationPauses pauses(1000, tries);
    loseRequest(pauses, 3, 5000);
    EXPECT_THAT(pauses.over(5999), IsEmpty());
    EXPECT_TRUE(pauses.isPausing(3));
    EXPECT_THAT(pauses.over(6000), ElementsAre(3));
    EXPECT_FALSE(pauses.isPausing(3));
    EXPECT_THAT(pauses.over(6000), IsEmpty());
}

TEST(StationPauses, LastAsLongWhereMillisecondsLeaveTheirBits)
{
    for (const qint64 wrap : {qint64(1) << 31, qint64(1) << 32}) {
        StationPauses pauses(1000, tries);
        loseRequest(pauses, 3, wrap - 500);
        EXPECT_EQ(reportOf(pauses, 3, wrap - 500).nextTryMs, 1000);
        EXPECT_THAT(pauses.over(wrap + 499), IsEmpty());
        EXPECT_EQ(reportOf(pauses, 3, wrap + 400).nextTryMs, 100);
        EXPECT_THAT(pauses.over(wrap + 500), ElementsAre(3));
    }
}

TEST(StationPauses, AreOverAfterTheMachineWasSuspended)
{
    StationPauses pauses(1000, tries);
    loseRequest(pauses, 3, 5000);
    loseRequest(pauses, 4, 5000);
    EXPECT_THAT(pauses.over(5000 + qint64(50) * 24 * 3600 * 1000), ElementsAre(3, 4));
}

TEST(StationPauses, DoubleUpToHalfAMinute)
{
    StationPauses pauses(1000, tries);
    qint64 now = 0;
    for (const int expected : {1000, 2000, 4000, 8000, 16000, 30000, 30000}) {
        EXPECT_TRUE(loseRequest(pauses, 3, now));
        EXPECT_EQ(reportOf(pauses, 3, now).nextTryMs, expected);
        EXPECT_THAT(pauses.over(now + expected - 1), IsEmpty());
        now += expected;
        EXPECT_THAT(pauses.over(now), ElementsAre(3));
    }
}

TEST(StationPauses, GrowForEachStationOnItsOwn)
{
    StationPauses pauses(1000, tries);
    loseRequest(pauses, 3, 0);
    pauses.over(1000);
    loseRequest(pauses, 3, 1000);
    loseRequest(pauses, 4, 1000);
    EXPECT_EQ(reportOf(pauses, 3, 1000).nextTryMs, 2000);
    EXPECT_EQ(reportOf(pauses, 4, 1000).nextTryMs, 1000);
    EXPECT_THAT(pauses.over(3000), ElementsAre(3, 4));
}

TEST(StationPauses, AreShortAgainAfterAnAnswer)
{
    StationPauses pauses(1000, tries);
    loseRequest(pauses, 3, 0);
    pauses.over(1000);
    loseRequest(pauses, 3, 1000);
    pauses.over(3000);
    pauses.tried(3, TryEnd::Answered);
    loseRequest(pauses, 3, 4000);
    EXPECT_EQ(reportOf(pauses, 3, 4000).nextTryMs, 1000);
}

TEST(StationPauses, AnAnswerEndsAPauseThatHasBegun)
{
    StationPauses pauses(1000, tries);
    loseRequest(pauses, 3, 0);
    pauses.tried(3, TryEnd::Answered);
    EXPECT_FALSE(pauses.isPausing(3));
}

TEST(StationPauses, OfOthersGoOnWhenAStationIsForgottenThatWasNeverTried)
{
    StationPauses pauses(1000, tries);
    pauses.forget(4);
    EXPECT_THAT(pauses.reports(0), IsEmpty());
    loseRequest(pauses, 3, 0);
    pauses.forget(4);
    EXPECT_TRUE(pauses.isPausing(3));
    EXPECT_TRUE(pauses.anyPausing());
    EXPECT_EQ(pauses.reports(0).size(), 1u);
}

TEST(StationPauses, DoNotHitAStationWhoseRequestHadFewerTriesThanItsDue)
{
    StationPauses pauses(1000, tries);
    pauses.tried(3, TryEnd::Answered);
    EXPECT_FALSE(loseRequest(pauses, 3, 0, 1)) << "the other tries were used up by other stations";
    EXPECT_FALSE(pauses.isPausing(3));
    pauses.tried(3, TryEnd::Answered);
    EXPECT_FALSE(loseRequest(pauses, 3, 0, tries - 1));
}

TEST(StationPauses, HitADeadStationWithTheRequestThatMakesItsTriesUp)
{
    StationPauses pauses(1000, tries);
    EXPECT_FALSE(loseRequest(pauses, 3, 0, 1));
    EXPECT_FALSE(loseRequest(pauses, 3, 0, 2));
    EXPECT_TRUE(loseRequest(pauses, 3, 0, 1));
}

TEST(StationPauses, BeginAgainWithTheFirstRequestAfterThem)
{
    StationPauses pauses(1000, tries);
    loseRequest(pauses, 3, 0);
    pauses.over(1000);
    EXPECT_TRUE(loseRequest(pauses, 3, 1000, 1)) << "it has not answered since";
}

TEST(StationPauses, DoNotHitAStationThatRefuses)
{
    StationPauses pauses(1000, tries);
    for (int count = 0; count < 2 * tries; ++count)
        pauses.tried(3, TryEnd::Answered);
    EXPECT_FALSE(pauses.givenUp(3, Failure(FailureKind::Exception), 0));
    const StationReport report = reportOf(pauses, 3, 0);
    EXPECT_EQ(report.condition, StationCondition::Answering);
    EXPECT_EQ(report.failures, 1);
    EXPECT_FALSE(hasFailed(report.failure));
}

TEST(StationPauses, DoNotHitAStationThatWasNotAsked)
{
    StationPauses pauses(1000, tries);
    for (int count = 0; count < 2 * tries; ++count)
        pauses.tried(3, TryEnd::NotSent);
    EXPECT_FALSE(pauses.givenUp(3, Failure(FailureKind::NotConnected), 0));
    EXPECT_EQ(reportOf(pauses, 3, 0).condition, StationCondition::NotAnswering);
}

TEST(StationPauses, EndEarlyForSomebodyWhoWantsAnAnswerAndGrowIfNoneComes)
{
    StationPauses pauses(1000, tries);
    loseRequest(pauses, 3, 0);
    EXPECT_TRUE(pauses.end(3));
    EXPECT_FALSE(pauses.isPausing(3));
    EXPECT_FALSE(pauses.end(3));
    EXPECT_FALSE(pauses.end(4));
    EXPECT_THAT(pauses.over(1000), IsEmpty());
    EXPECT_TRUE(loseRequest(pauses, 3, 500));
    EXPECT_EQ(reportOf(pauses, 3, 500).nextTryMs, 2000);
}

TEST(StationPauses, AreForgottenWithTheStationsTries)
{
    StationPauses pauses(1000, tries);
    loseRequest(pauses, 3, 0);
    pauses.forget(3);
    EXPECT_FALSE(pauses.isPausing(3));
    EXPECT_FALSE(loseRequest(pauses, 3, 500, 1));
    EXPECT_TRUE(loseRequest(pauses, 3, 500, tries - 1));
    EXPECT_EQ(reportOf(pauses, 3, 500).nextTryMs, 1000);
}

TEST(StationPauses, CanBeSwitchedOff)
{
    StationPauses pauses(0, tries);
    EXPECT_FALSE(loseRequest(pauses, 3, 0));
    EXPECT_FALSE(loseRequest(pauses, 3, 0));
    EXPECT_EQ(reportOf(pauses, 3, 0).condition, StationCondition::NotAnswering);
}

TEST(StationPauses, ReportSaysHowAStationLooks)
{
    StationPauses pauses(1000, tries);
    EXPECT_THAT(pauses.reports(0), IsEmpty());
    pauses.tried(3, TryEnd::NoAnswer);
    EXPECT_EQ(reportOf(pauses, 3, 0).condition, StationCondition::NotTried);
    pauses.tried(3, TryEnd::Answered);
    EXPECT_EQ(reportOf(pauses, 3, 0).condition, StationCondition::Answering);
    loseRequest(pauses, 3, 100);
    StationReport report = reportOf(pauses, 3, 400);
    EXPECT_EQ(report.condition, StationCondition::Pausing);
    EXPECT_EQ(report.nextTryMs, 700);
    EXPECT_EQ(report.failure, why);
    EXPECT_EQ(report.answers, 1);
    EXPECT_EQ(report.failures, 1);
    pauses.over(1100);
    report = reportOf(pauses, 3, 1100);
    EXPECT_EQ(report.condition, StationCondition::NotAnswering);
    EXPECT_EQ(report.nextTryMs, -1);
}

} // namespace
