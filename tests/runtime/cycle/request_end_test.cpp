// SPDX-License-Identifier: MIT
// What a request failed of, by the way it left the driver's queue.

#include "runtime/cycle/request_end.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

Failure given()
{
    Failure failure(FailureKind::Exception);
    failure.code = 71;
    failure.exception = 2;
    return failure;
}

TEST(RequestEnd, OfOneThatIsDoneIsNoFailure)
{
    EXPECT_FALSE(hasFailed(failureOf(RequestEnd::Done, given())));
}

TEST(RequestEnd, OfTheOneThatWasGivenUpIsItsOwnFailure)
{
    EXPECT_EQ(failureOf(RequestEnd::Failed, given()), given());
}

TEST(RequestEnd, OfAPurgedOneKeepsWhatTheOtherFailedOf)
{
    const Failure failure = failureOf(RequestEnd::Purged, given());
    EXPECT_EQ(failure.kind, FailureKind::Purged);
    EXPECT_EQ(failure.cause, FailureKind::Exception);
    EXPECT_EQ(failure.exception, 2);
    EXPECT_EQ(failure.code, 71);
}

TEST(RequestEnd, HasAKindOfItsOwnForEachOtherWay)
{
    EXPECT_EQ(failureOf(RequestEnd::Discarded, Failure()).kind, FailureKind::Discarded);
    EXPECT_EQ(failureOf(RequestEnd::Replaced, Failure()).kind, FailureKind::Replaced);
    EXPECT_EQ(failureOf(RequestEnd::OutOfStep, Failure()).kind, FailureKind::OutOfStep);
}

TEST(RequestEnd, OfOneToAStationThatIsOffNamesTheStation)
{
    EXPECT_EQ(stationOff(7).kind, FailureKind::StationOff);
    EXPECT_EQ(stationOff(7).station, 7);
}

TEST(RequestEnd, OfOneThatWasNotTriedHasNoCodeAndNothingSeen)
{
    EXPECT_EQ(stationOff(7).code, 0);
    EXPECT_EQ(stationOff(7).exception, 0);
    EXPECT_EQ(stationOff(7).seen, -1);
    EXPECT_EQ(failureOf(RequestEnd::Discarded, Failure()).station, -1);
}

} // namespace
