// SPDX-License-Identifier: MIT
#include "runtime/cycle/stations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace
{

using namespace plc;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

const int on = 1;
const int off = 0;
const Failure why(FailureKind::NoReply);

std::vector<std::pair<int, int>> told; // the driver, of which station

void noteStation(int station, int isServed)
{
    told.emplace_back(station, isServed);
}

class StationsTest : public testing::Test
{
protected:
    StationsTest()
    {
        told.clear();
        calls.EnCommStation = noteStation;
    }

    static Settings severalStations()
    {
        Settings settings;
        settings.multiStation = true;
        settings.retryLimit = 0;
        settings.stationPauseMs = 30000;
        return settings;
    }

    /// A request stays unanswered, and what waits for the station is given up.
    void loseRequest(int station)
    {
        stations.tried(station, TryEnd::NoAnswer);
        EXPECT_TRUE(stations.givenUp(station, why));
        stations.leaveAlone(station);
    }

    StationCondition conditionOf(int station) const
    {
        for (const StationReport& report : stations.reports({})) {
            if (report.station == station)
                return report.condition;
        }
        return StationCondition::NotTried;
    }

    DriverCalls calls;
    Stations stations{calls, severalStations()};
};

TEST_F(StationsTest, ASwitchIsToldToTheDriver)
{
    stations.turn(3, false);
    stations.turn(3, true);
    EXPECT_THAT(told, ElementsAre(Pair(3, off), Pair(3, on)));
    EXPECT_THAT(stations.off(), IsEmpty());
}

TEST_F(StationsTest, AStationThatDoesNotAnswerIsLeftAlone)
{
    loseRequest(3);
    EXPECT_THAT(told, ElementsAre(Pair(3, off)));
    EXPECT_EQ(conditionOf(3), StationCondition::Pausing);
    stations.endPauses();
    EXPECT_EQ(told.size(), 1u) << "the pause is not over yet";
}

TEST_F(StationsTest, AWishForAnAnswerEndsThePause)
{
    loseRequest(3);
    stations.wake(3);
    stations.wake(3);
    EXPECT_THAT(told, ElementsAre(Pair(3, off), Pair(3, on)));
}

TEST_F(StationsTest, AWishForAnAnswerDoesNotSwitchOn)
{
    loseRequest(3);
    stations.turn(3, false);
    told.clear();
    stations.wake(3);
    EXPECT_THAT(told, IsEmpty());
    EXPECT_EQ(conditionOf(3), StationCondition::SwitchedOff);
}

TEST_F(StationsTest, SwitchingOnEndsThePause)
{
    loseRequest(3);
    told.clear();
    stations.turn(3, true);
    EXPECT_THAT(told, ElementsAre(Pair(3, on)));
    EXPECT_EQ(conditionOf(3), StationCondition::NotAnswering);
}

TEST_F(StationsTest, ReportsWhatIsNamedTriedOrSwitchedByNumber)
{
    stations.turn(9, false);
    stations.tried(5, TryEnd::Answered);
    std::vector<std::pair<int, StationCondition>> reported;
    for (const StationReport& report : stations.reports({7, 5}))
        reported.emplace_back(report.station, report.condition);
    EXPECT_THAT(reported,
                ElementsAre(Pair(5, StationCondition::Answering), Pair(7, StationCondition::NotTried),
                            Pair(9, StationCondition::SwitchedOff)));
}

} // namespace
