// SPDX-License-Identifier: MIT
// Several stations on one link: each has values of its own, and one that is dead does not hold up the others.

#include "runtime/cycle/exchange_record.h"
#include "support/runtime_fixture.h"

#include <gmock/gmock.h>

#include <QThread>

#include <map>
#include <mutex>

namespace
{

using namespace plc;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const int stations = 8;
const int deadStation = 4;
const int first = 200; // element that the tests begin at
const int count = 5;

/// A value that differs from its neighbours' and from the same element's of other stations.
quint32 valueOf(int area, int element, int station, quint32 round = 0)
{
    const auto number = static_cast<quint32>(element) + 31u * static_cast<quint32>(station) + 7u * round;
    if (area <= 8)
        return (number * 0x9E3779B1u) >> 31;
    const quint32 value = number * 0x01010107u;
    return area == 14 ? value : value & 0xFFFF;
}

std::vector<quint32> valuesOf(int area, int station, quint32 round = 0)
{
    std::vector<quint32> values;
    for (int element = first; element < first + count; ++element)
        values.push_back(valueOf(area, element, station, round));
    return values;
}

class MultiStation : public RuntimeFixture
{
protected:
    MultiStation() { settings.multiStation = true; }
    ~MultiStation() override { runtime.reset(); } // its observer uses what goes before it

    void putValues(int area, int station, quint32 round = 0)
    {
        for (int element = first; element < first + count; ++element)
            putIntoController(*controller, area, element, valueOf(area, element, station, round), station);
    }

    std::vector<quint32> inMemory(int area, int station)
    {
        std::vector<quint32> values;
        for (int element = first; element < first + count; ++element)
            values.push_back(inController(*controller, area, element, station));
        return values;
    }

    /// Makes a runtime that refreshes the same elements of \a areas of every station, and counts frames.
    void makeCyclic(const std::vector<int>& areas)
    {
        makeRuntime();
        for (int station = 1; station <= stations; ++station) {
            for (const int area : areas)
                indexes[{station, area}] = runtime->addCyclic(variable(area, first, count, station));
        }
        runtime->setObserver([this](const ExchangeRecord& record) {
            std::lock_guard<std::mutex> lock(mutex);
            ++frames[record.request.station];
        });
    }

    long framesTo(int station)
    {
        std::lock_guard<std::mutex> lock(mutex);
        return frames[station];
    }

    CyclicValue shown(int area, int station) { return runtime->value(indexes.at({station, area})); }

    bool showsFresh(int area, int station, quint32 round = 0)
    {
        return eventually([&] {
            const CyclicValue value = shown(area, station);
            return value.state == ValueState::Fresh && value.values == valuesOf(area, station, round);
        });
    }

    bool showsFailed(int area, int station)
    {
        return eventually([&] { return shown(area, station).state == ValueState::Failed; });
    }

    StationReport report(int station)
    {
        for (const StationReport& report : runtime->stations()) {
            if (report.station == station)
                return report;
        }
        return StationReport();
    }

    bool looks(int station, StationCondition condition)
    {
        return eventually([&] { return report(station).condition == condition; });
    }

    /// Refreshes words of every station, one of which dies and pauses for \a pauseMs at first.
    void letOneDie(int pauseMs)
    {
        settings.timeoutMs = 100;
        settings.retryLimit = 1;
        settings.staleAfterMs = 3600000;
        settings.stationPauseMs = pauseMs;
        for (int station = 1; station <= stations; ++station)
            putValues(9, station);
        makeCyclic({9});
        runtime->start();
        for (int station = 1; station <= stations; ++station)
            ASSERT_TRUE(showsFresh(9, station)) << station;
        controller->setSilent(deadStation, true);
        ASSERT_TRUE(showsFailed(9, deadStation));
    }

    /// Waits until every living station was asked \a times more.
    bool othersGoOn(long times)
    {
        std::map<int, long> before;
        for (int station = 1; station <= stations; ++station)
            before[station] = framesTo(station);
        return eventually([&] {
            for (int station = 1; station <= stations; ++station) {
                if (station != deadStation && framesTo(station) < before[station] + times)
                    return false;
            }
            return true;
        });
    }

    std::map<std::pair<int, int>, int> indexes; // of cyclic variables by station and area
    std::mutex mutex;
    std::map<int, long> frames; // by station; mutex held
};

TEST_F(MultiStation, SameVariablesOfEightStationsShowEachItsOwnValues)
{
    const std::vector<int> areas = {0, 1, 2, 3, 4, 5, 6, 7, 9, 10, 11, 12, 13, 14};
    for (int station = 1; station <= stations; ++station) {
        for (const int area : areas)
            putValues(area, station);
    }
    makeCyclic(areas);
    runtime->start();
    for (int station = 1; station <= stations; ++station) {
        for (const int area : areas)
            EXPECT_TRUE(showsFresh(area, station)) << "area " << area << " of station " << station;
    }
}

TEST_F(MultiStation, BitsInWordsOfEightStationsShowEachItsOwnValues)
{
    for (int station = 1; station <= stations; ++station)
        putValues(8, station);
    makeCyclic({8});
    runtime->start();
    for (int station = 1; station <= stations; ++station)
        EXPECT_TRUE(showsFresh(8, station)) << station;
}

TEST_F(MultiStation, ValuesFollowEachStationsOwnMemory)
{
    makeCyclic({9, 14, 2});
    runtime->start();
    for (quint32 round = 1; round <= 5; ++round) {
        for (int station = 1; station <= stations; ++station) {
            for (const int area : {9, 14, 2})
                putValues(area, station, round);
        }
        for (int station = 1; station <= stations; ++station) {
            for (const int area : {9, 14, 2})
                EXPECT_TRUE(showsFresh(area, station, round)) << area << ' ' << station;
        }
    }
}

TEST_F(MultiStation, WritesReachTheirStationOnlyInEveryAreaThatCanBeWritten)
{
    startRuntime();
    for (int area = 1; area <= 14; ++area) {
        for (int station = 1; station <= stations; ++station) {
            const WriteOutcome outcome =
                write(variable(area, first, count, station), valuesOf(area, station));
            EXPECT_TRUE(outcome.confirmed) << area << ": " << reasonOf(outcome);
        }
        for (int station = 1; station <= stations; ++station)
            EXPECT_EQ(inMemory(area, station), valuesOf(area, station)) << area << ' ' << station;
    }
}

TEST_F(MultiStation, ReadsGiveWhatTheirStationHasInEveryArea)
{
    startRuntime();
    for (int area = 0; area <= 14; ++area) {
        for (int station = 1; station <= stations; ++station)
            putValues(area, station);
        for (int station = 1; station <= stations; ++station) {
            const ReadOutcome outcome = read(variable(area, first, count, station));
            EXPECT_EQ(outcome.values, valuesOf(area, station)) << area << ' ' << station;
        }
    }
}

TEST_F(MultiStation, BitInAWordLeavesTheOtherBitsAndStationsAlone)
{
    putIntoController(*controller, 9, 10, 0xA5A5, 2);
    putIntoController(*controller, 9, 10, 0x5A5A, 3);
    startRuntime();
    EXPECT_TRUE(write(variable(8, 163, 1, 2), {1}).confirmed);
    EXPECT_TRUE(write(variable(8, 161, 1, 3), {0}).confirmed);
    EXPECT_EQ(inController(*controller, 9, 10, 2), 0xA5ADu);
    EXPECT_EQ(inController(*controller, 9, 10, 3), 0x5A58u);
    EXPECT_THAT(read(variable(8, 160, 4, 2)).values, ElementsAre(1u, 0u, 1u, 1u));
}

TEST_F(MultiStation, StationsOfTheListAreReportedAndSoAreOthersThatWereAsked)
{
    makeCyclic({9});
    runtime->start();
    ASSERT_TRUE(write(variable(9, 0, 1, 77), {1}).confirmed);
    for (int station = 1; station <= stations; ++station)
        EXPECT_TRUE(looks(station, StationCondition::Answering)) << station;
    EXPECT_EQ(report(77).condition, StationCondition::Answering);
    EXPECT_EQ(report(77).answers, 1);
    EXPECT_EQ(runtime->stations().size(), 9u);
}

TEST_F(MultiStation, DeadOneFailsAndTheOthersStayRightWhileTheirMemoryChanges)
{
    letOneDie(20);
    for (quint32 round = 1; round <= 3; ++round) {
        for (int station = 1; station <= stations; ++station)
            putValues(9, station, round);
        for (int station = 1; station <= stations; ++station) {
            if (station != deadStation) {
                EXPECT_TRUE(showsFresh(9, station, round)) << station;
            }
        }
        const CyclicValue dead = shown(9, deadStation);
        EXPECT_EQ(dead.state, ValueState::Failed);
        EXPECT_EQ(dead.failure.code, 41);
        EXPECT_THAT(reasonOf(dead), HasSubstr("no reply within 100 ms"));
        EXPECT_EQ(dead.values, valuesOf(9, deadStation)) << "the last ones it answered";
    }
    controller->setSilent(deadStation, false);
    EXPECT_TRUE(showsFresh(9, deadStation, 3));
    EXPECT_TRUE(looks(deadStation, StationCondition::Answering));
}

TEST_F(MultiStation, DeadOneIsLeftAloneWhileItPauses)
{
    letOneDie(30000);
    EXPECT_EQ(report(deadStation).condition, StationCondition::Pausing);
    EXPECT_GT(report(deadStation).nextTryMs, 0);
    EXPECT_THAT(reasonOf(report(deadStation)), HasSubstr("no reply"));
    ASSERT_TRUE(othersGoOn(2)); // the observer was told of the last try
    const long before = framesTo(deadStation);
    EXPECT_TRUE(othersGoOn(50));
    EXPECT_EQ(framesTo(deadStation), before);
    EXPECT_EQ(shown(9, deadStation).state, ValueState::Failed);
}

TEST_F(MultiStation, EveryValueOfADeadOneHasFailedAfterTheFirstOfItsRequests)
{
    settings.timeoutMs = 100;
    settings.retryLimit = 1;
    settings.stationPauseMs = 30000;
    settings.staleAfterMs = 3600000;
    makeCyclic({2, 9, 14});
    runtime->start();
    for (const int area : {2, 9, 14})
        ASSERT_TRUE(eventually([&] { return shown(area, deadStation).state == ValueState::Fresh; }));
    controller->setSilent(deadStation, true);
    ASSERT_TRUE(looks(deadStation, StationCondition::Pausing));
    for (const int area : {2, 9, 14}) {
        EXPECT_EQ(shown(area, deadStation).state, ValueState::Failed);
        EXPECT_THAT(reasonOf(shown(area, deadStation)), HasSubstr("no reply"));
    }
}

TEST_F(MultiStation, DeadOneIsTriedInEveryPassWithoutPauses)
{
    letOneDie(0);
    const long before = framesTo(deadStation);
    EXPECT_TRUE(othersGoOn(3));
    EXPECT_GE(framesTo(deadStation), before + 2);
    EXPECT_EQ(report(deadStation).condition, StationCondition::NotAnswering);
}

TEST_F(MultiStation, WritesToTheLivingAreAllConfirmedAndThoseToTheDeadFail)
{
    letOneDie(20);
    std::vector<Pending<WriteOutcome>> living;
    std::vector<Pending<WriteOutcome>> dead;
    for (int element = 0; element < 10; ++element) {
        for (int station = 1; station <= stations; ++station) {
            const auto pending = runtime->write(variable(9, element, 1, station), {7});
            (station == deadStation ? dead : living).push_back(pending);
        }
    }
    for (const auto& pending : living) {
        ASSERT_TRUE(pending.wait(patienceMs));
        EXPECT_TRUE(pending.get().confirmed) << reasonOf(pending.get());
    }
    for (const auto& pending : dead) {
        ASSERT_TRUE(pending.wait(patienceMs));
        EXPECT_FALSE(pending.get().confirmed);
        EXPECT_EQ(pending.get().failure.code, 41);
        EXPECT_THAT(reasonOf(pending.get()), HasSubstr("no reply within 100 ms"));
    }
    for (int station = 1; station <= stations; ++station)
        EXPECT_EQ(inController(*controller, 9, 9, station), station == deadStation ? 0u : 7u);
}

TEST_F(MultiStation, ReadsOfTheLivingAreNotLostWithThoseOfTheDead)
{
    letOneDie(20);
    std::vector<Pending<ReadOutcome>> living;
    std::vector<Pending<ReadOutcome>> dead;
    for (int time = 0; time < 4; ++time) {
        dead.push_back(runtime->read(variable(9, first, count, deadStation)));
        living.push_back(runtime->read(variable(9, first, count, 1 + time % 3)));
    }
    for (std::size_t time = 0; time < living.size(); ++time) {
        ASSERT_TRUE(living[time].wait(patienceMs) && dead[time].wait(patienceMs));
        EXPECT_EQ(living[time].get().values, valuesOf(9, 1 + static_cast<int>(time) % 3));
        EXPECT_FALSE(dead[time].get().done);
        EXPECT_EQ(dead[time].get().failure.code, 41);
    }
}

TEST_F(MultiStation, WriteToAPausingOneIsTriedAtOnceAndFailsByItsOwn)
{
    letOneDie(30000);
    const long before = framesTo(deadStation);
    const WriteOutcome outcome = write(variable(9, 0, 1, deadStation), {7});
    EXPECT_FALSE(outcome.confirmed);
    EXPECT_EQ(reasonOf(outcome), "no reply within 100 ms");
    EXPECT_TRUE(eventually([&] { return framesTo(deadStation) == before + 2; })) << "a try and a retry";
    EXPECT_TRUE(looks(deadStation, StationCondition::Pausing));
}

TEST_F(MultiStation, WriteToAPausingOneThatIsBackIsConfirmedAndEndsThePause)
{
    letOneDie(30000);
    controller->setSilent(deadStation, false);
    EXPECT_TRUE(write(variable(9, 0, 1, deadStation), {7}).confirmed);
    EXPECT_EQ(inController(*controller, 9, 0, deadStation), 7u);
    EXPECT_TRUE(showsFresh(9, deadStation));
}

TEST_F(MultiStation, ReadOfAPausingOneThatIsBackIsDoneAndEndsThePause)
{
    letOneDie(30000);
    controller->setSilent(deadStation, false);
    EXPECT_EQ(read(variable(9, first, count, deadStation)).values, valuesOf(9, deadStation));
    EXPECT_TRUE(showsFresh(9, deadStation));
}

TEST_F(MultiStation, LongReadOfADeadOneFailsWithItsFirstRequest)
{
    letOneDie(30000);
    ASSERT_TRUE(othersGoOn(2)); // the observer was told of the last try
    const long before = framesTo(deadStation);
    const ReadOutcome outcome = read(variable(9, 0, 2000, deadStation));
    EXPECT_FALSE(outcome.done);
    EXPECT_EQ(reasonOf(outcome), "no reply within 100 ms");
    EXPECT_TRUE(othersGoOn(3));
    EXPECT_EQ(framesTo(deadStation), before + 2) << "one request of many, a try and a retry";
}

TEST_F(MultiStation, LongWriteToADeadOneFailsWithItsFirstRequest)
{
    letOneDie(30000);
    ASSERT_TRUE(othersGoOn(2)); // the observer was told of the last try
    const long before = framesTo(deadStation);
    // More requests than the driver's list holds.
    const std::vector<quint32> bits(1500, 1);
    const WriteOutcome outcome = write(variable(2, 0, 1500, deadStation), bits);
    EXPECT_FALSE(outcome.confirmed);
    EXPECT_EQ(outcome.requests, 1500);
    EXPECT_EQ(outcome.requestsConfirmed, 0);
    EXPECT_TRUE(othersGoOn(3));
    EXPECT_EQ(framesTo(deadStation), before + 2);
}

TEST_F(MultiStation, StationThatTheUserSwitchedOffStaysOffWhenItsPauseIsOver)
{
    letOneDie(300);
    runtime->setStation(deadStation, false);
    EXPECT_EQ(report(deadStation).condition, StationCondition::SwitchedOff);
    ASSERT_TRUE(othersGoOn(2)); // what was on its way to it is over
    controller->setSilent(deadStation, false);
    const long before = framesTo(deadStation);
    QThread::msleep(700); // longer than the pause and the next one
    EXPECT_TRUE(othersGoOn(2));
    EXPECT_EQ(framesTo(deadStation), before);
    EXPECT_EQ(shown(9, deadStation).state, ValueState::StationOff);
    EXPECT_THAT(reasonOf(write(variable(9, 0, 1, deadStation), {7})), HasSubstr("station 4 is switched off"));
}

TEST_F(MultiStation, StationThatTheUserSwitchesOnIsTriedAtOnce)
{
    letOneDie(30000);
    controller->setSilent(deadStation, false);
    runtime->setStation(deadStation, true);
    EXPECT_TRUE(showsFresh(9, deadStation));
}

TEST_F(MultiStation, OneThatIsSwitchedOffWhileItFailsGetsNoPauseThatSwitchesItOn)
{
    controller->setSilent(deadStation, true);
    settings.timeoutMs = 200;
    settings.retryLimit = 1;
    settings.stationPauseMs = 1;
    makeCyclic({9});
    runtime->start();
    ASSERT_TRUE(eventually([&] { return controller->requests() >= deadStation; }));
    runtime->setStation(deadStation, false);
    ASSERT_TRUE(othersGoOn(20)); // the request that was on its way has failed, its pause is over
    const long before = framesTo(deadStation);
    EXPECT_TRUE(othersGoOn(20));
    EXPECT_EQ(framesTo(deadStation), before);
}

TEST_F(MultiStation, RepliesLostHereAndThereBringNoPause)
{
    simulator::Settings losing;
    losing.faults.noReply = 0.1;
    useController(losing);
    settings.timeoutMs = 100;
    settings.retryLimit = 5; // six in a row are lost once in a million requests
    settings.stationPauseMs = 30000;
    makeCyclic({9});
    runtime->start();
    ASSERT_TRUE(eventually([&] { return runtime->statistics().retried >= 20; }));
    EXPECT_EQ(runtime->statistics().failed, 0) << "each request has its own tries";
    for (const StationReport& report : runtime->stations())
        EXPECT_NE(report.condition, StationCondition::Pausing) << report.station;
    EXPECT_TRUE(othersGoOn(2));
    EXPECT_GT(framesTo(deadStation), 0);
}

TEST_F(MultiStation, RefusalsBringNoPause)
{
    simulator::Settings refusing;
    refusing.refused = {{first, first}};
    useController(refusing);
    settings.retryLimit = 1;
    settings.stationPauseMs = 30000;
    makeCyclic({9});
    runtime->start();
    EXPECT_TRUE(eventually([&] { return shown(9, 1).failure.code == 71; }));
    EXPECT_TRUE(othersGoOn(5));
    EXPECT_EQ(report(1).condition, StationCondition::Answering);
    EXPECT_GT(report(1).failures, 0);
}

TEST_F(MultiStation, LostConnectionIsNoStationsFault)
{
    settings.timeoutMs = 50;
    settings.retryLimit = 3;
    settings.stationPauseMs = 30000;
    makeCyclic({9});
    runtime->start();
    for (int station = 1; station <= stations; ++station)
        ASSERT_TRUE(looks(station, StationCondition::Answering)) << station;
    controller->stop();
    for (int station = 1; station <= stations; ++station)
        EXPECT_TRUE(looks(station, StationCondition::NotAnswering)) << station;
    controller->start();
    for (int station = 1; station <= stations; ++station)
        EXPECT_TRUE(looks(station, StationCondition::Answering)) << station;
}

TEST_F(MultiStation, AllDeadCostNoTimeOfTheMachineAndComeBack)
{
    for (int station = 1; station <= stations; ++station)
        controller->setSilent(station, true);
    settings.timeoutMs = 20;
    settings.retryLimit = 0;
    settings.pollMs = 0;
    settings.stationPauseMs = 1000;
    makeCyclic({9});
    runtime->start();
    for (int station = 1; station <= stations; ++station)
        EXPECT_TRUE(looks(station, StationCondition::Pausing)) << station;
    const long passes = runtime->statistics().passes;
    QThread::msleep(300);
    EXPECT_LT(runtime->statistics().passes - passes, 20) << "it turns in circles";
    for (int station = 1; station <= stations; ++station)
        controller->setSilent(station, false);
    for (int station = 1; station <= stations; ++station)
        EXPECT_TRUE(looks(station, StationCondition::Answering)) << station;
}

TEST_F(MultiStation, SingleStationIsReportedAndNeverPauses)
{
    settings.multiStation = false;
    settings.timeoutMs = 50;
    settings.retryLimit = 0;
    settings.stationPauseMs = 30000;
    makeRuntime();
    const int index = runtime->addCyclic(variable(9, 0));
    runtime->start();
    EXPECT_TRUE(looks(1, StationCondition::Answering));
    controller->setSilent(1, true);
    ASSERT_TRUE(becomes(index, ValueState::Failed));
    EXPECT_EQ(report(1).condition, StationCondition::NotAnswering);
    controller->setSilent(1, false);
    EXPECT_TRUE(becomes(index, ValueState::Fresh));
}

} // namespace
