// SPDX-License-Identifier: MIT
#include "runtime/cycle/exchange_record.h"
#include "support/runtime_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QThread>

#include <atomic>

namespace
{

using namespace plc;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using RuntimeTest = RuntimeFixture;

TEST_F(RuntimeTest, WritesReachTheControllerInEveryAreaThatCanBeWritten)
{
    startRuntime();
    for (int area = 1; area <= 14; ++area) {
        const WriteOutcome outcome = write(variable(area, 40, 20), testValues(area, 20));
        EXPECT_TRUE(outcome.confirmed) << area << ": " << reasonOf(outcome);
        EXPECT_EQ(outcome.requestsConfirmed, outcome.requests);
        for (int index = 0; index < 20; ++index)
            EXPECT_EQ(inController(*controller, area, 40 + index), testValue(area, index))
                << area << ' ' << index;
    }
}

TEST_F(RuntimeTest, ReadsGiveWhatTheControllerHasInEveryArea)
{
    startRuntime();
    for (int area = 0; area <= 14; ++area) {
        for (int index = 0; index < 20; ++index)
            putIntoController(*controller, area, 40 + index, testValue(area, index));
        const ReadOutcome outcome = read(variable(area, 40, 20));
        EXPECT_TRUE(outcome.done) << area << ": " << reasonOf(outcome);
        EXPECT_EQ(outcome.values, testValues(area, 20)) << area;
    }
}

TEST_F(RuntimeTest, LongVariablesAreWrittenAndReadInSeveralRequests)
{
    startRuntime();
    for (const int area : {9, 14, 2, 8}) {
        const int count = area >= 9 ? 300 : 40;
        const WriteOutcome written = write(variable(area, 100, count), testValues(area, count));
        EXPECT_TRUE(written.confirmed) << reasonOf(written);
        EXPECT_GT(written.requests, 1);
        EXPECT_EQ(read(variable(area, 100, count)).values, testValues(area, count)) << area;
    }
    EXPECT_EQ(read(variable(3, 0, 2500)).values.size(), 2500u);
}

TEST_F(RuntimeTest, OneDoubleWordIsOneDoubleWord)
{
    startRuntime();
    putIntoController(*controller, 14, 8, 0x11111111);
    EXPECT_TRUE(write(variable(14, 7), {0x12345678}).confirmed);
    EXPECT_EQ(inController(*controller, 14, 7), 0x12345678u);
    EXPECT_EQ(inController(*controller, 14, 8), 0x11111111u);
    EXPECT_THAT(read(variable(14, 7)).values, ElementsAre(0x12345678u));
}

TEST_F(RuntimeTest, BitInWordLeavesTheOtherBitsAlone)
{
    startRuntime();
    putIntoController(*controller, 9, 10, 0xA5A5);
    EXPECT_TRUE(write(variable(8, 163), {1}).confirmed);
    EXPECT_EQ(inController(*controller, 9, 10), 0xA5ADu);
    EXPECT_TRUE(write(variable(8, 160), {0}).confirmed);
    EXPECT_EQ(inController(*controller, 9, 10), 0xA5ACu);
}

TEST_F(RuntimeTest, RefusalByTheControllerIsToldInWords)
{
    simulator::Settings refusing;
    refusing.refused = {{500, 510}};
    useController(refusing);
    settings.retryLimit = 1;
    startRuntime();
    const WriteOutcome written = write(variable(9, 505), {1});
    EXPECT_FALSE(written.confirmed);
    EXPECT_EQ(written.failure.code, 71);
    EXPECT_THAT(reasonOf(written), HasSubstr("exception 2, illegal data address"));
    const ReadOutcome outcome = read(variable(9, 505));
    EXPECT_FALSE(outcome.done);
    EXPECT_THAT(outcome.values, IsEmpty());
    EXPECT_THAT(reasonOf(outcome), HasSubstr("exception 2, illegal data address"));
}

TEST_F(RuntimeTest, WhatCannotBeAskedIsRefusedAtOnce)
{
    startRuntime();
    const auto written = runtime->write(variable(0, 0), {1});
    EXPECT_TRUE(written.done());
    EXPECT_FALSE(written.get().confirmed);
    EXPECT_THAT(reasonOf(written.get()), HasSubstr("can only be read"));
    EXPECT_EQ(written.get().requests, 0);
    EXPECT_EQ(written.get().requestsConfirmed, 0);
    const auto readAgain = runtime->read(variable(9, 65534, 2));
    EXPECT_TRUE(readAgain.done());
    EXPECT_FALSE(readAgain.get().done);
    EXPECT_EQ(controller->requests(), 0u);
}

TEST_F(RuntimeTest, MoreWritesThanTheDriverQueuesAreAllConfirmed)
{
    startRuntime();
    const int bits = 1500;
    const WriteOutcome outcome = write(variable(2, 0, bits), testValues(2, bits));
    EXPECT_TRUE(outcome.confirmed) << reasonOf(outcome);
    EXPECT_EQ(outcome.requestsConfirmed, bits);
    for (int bit = 0; bit < bits; ++bit)
        ASSERT_EQ(inController(*controller, 2, bit), testValue(2, bit)) << bit;
}

TEST_F(RuntimeTest, SilentControllerFailsTheWriteAndThoseBehindIt)
{
    controller->setSilent(1, true);
    settings.timeoutMs = 50;
    settings.retryLimit = 1;
    startRuntime();
    std::vector<Pending<WriteOutcome>> writes;
    for (int element = 0; element < 3; ++element)
        writes.push_back(runtime->write(variable(9, element), {7}));
    for (const auto& pending : writes) {
        ASSERT_TRUE(pending.wait(patienceMs));
        EXPECT_FALSE(pending.get().confirmed);
        EXPECT_EQ(pending.get().failure.code, 41);
    }
    EXPECT_THAT(reasonOf(writes[0].get()), HasSubstr("no reply within 50 ms"));
    EXPECT_THAT(reasonOf(writes[2].get()), HasSubstr("given up unsent with another request"));
    controller->setSilent(1, false);
    EXPECT_TRUE(eventually([&] { return write(variable(9, 0), {8}).confirmed; }));
}

TEST_F(RuntimeTest, SilentStationFailsOnlyItsOwnWrites)
{
    controller->setSilent(2, true);
    settings.multiStation = true;
    settings.timeoutMs = 100;
    settings.retryLimit = 0;
    startRuntime();
    const auto silent = runtime->write(variable(9, 0, 1, 2), {7});
    const auto other = runtime->write(variable(9, 0, 1, 3), {7});
    const auto behind = runtime->write(variable(9, 1, 1, 2), {7});
    ASSERT_TRUE(silent.wait(patienceMs) && other.wait(patienceMs) && behind.wait(patienceMs));
    EXPECT_FALSE(silent.get().confirmed);
    EXPECT_FALSE(behind.get().confirmed);
    EXPECT_TRUE(other.get().confirmed) << reasonOf(other.get());
    EXPECT_EQ(inController(*controller, 9, 0, 3), 7u);
}

TEST_F(RuntimeTest, NewerWriteReplacesOneThatWaits)
{
    controller->setSilent(1, true);
    settings.timeoutMs = 400;
    startRuntime();
    const auto head = runtime->write(variable(9, 0), {1});
    const auto older = runtime->write(variable(9, 1), {2});
    const auto newer = runtime->write(variable(9, 1), {3});
    ASSERT_TRUE(older.wait(patienceMs));
    EXPECT_THAT(reasonOf(older.get()), HasSubstr("replaced by a newer write"));
    controller->setSilent(1, false);
    ASSERT_TRUE(newer.wait(patienceMs) && head.wait(patienceMs));
    EXPECT_TRUE(newer.get().confirmed);
    EXPECT_EQ(inController(*controller, 9, 1), 3u);
}

TEST_F(RuntimeTest, NewerWriteIsNotUndoneByAnOlderOneOfMoreElements)
{
    controller->setSilent(1, true);
    settings.timeoutMs = 300;
    startRuntime();
    std::vector<Pending<WriteOutcome>> writes = {
        runtime->write(variable(9, 9), {1}),
        runtime->write(variable(9, 1), {2}),
        runtime->write(variable(9, 1, 2), {5, 6}),
        runtime->write(variable(9, 1), {7}),
    };
    controller->setSilent(1, false);
    for (const auto& pending : writes)
        ASSERT_TRUE(pending.wait(patienceMs));
    EXPECT_TRUE(writes.back().get().confirmed);
    EXPECT_EQ(inController(*controller, 9, 1), 7u);
    EXPECT_EQ(inController(*controller, 9, 2), 6u);
}

TEST_F(RuntimeTest, BroadcastReachesEveryStation)
{
    settings.multiStation = true;
    startRuntime();
    EXPECT_TRUE(write(variable(9, 5, 1, 1), {1}).confirmed);
    EXPECT_TRUE(write(variable(9, 5, 1, 2), {1}).confirmed);
    const WriteOutcome outcome = write(variable(9, 5, 1, 0), {77});
    EXPECT_TRUE(outcome.confirmed);
    EXPECT_TRUE(outcome.broadcast);
    EXPECT_TRUE(eventually([&] {
        return inController(*controller, 9, 5, 1) == 77 && inController(*controller, 9, 5, 2) == 77;
    }));
}

TEST_F(RuntimeTest, BroadcastThatCouldNotBeSentFails)
{
    controller->stop();
    settings.multiStation = true;
    settings.timeoutMs = 30;
    startRuntime();
    const WriteOutcome outcome = write(variable(9, 5, 1, 0), {77});
    EXPECT_FALSE(outcome.confirmed);
    EXPECT_THAT(reasonOf(outcome), HasSubstr("no connection to 127.0.0.1"));
}

TEST_F(RuntimeTest, WithoutConnectionWritesFailAndTheLinkComesBack)
{
    settings.port = controller->port();
    controller->stop();
    settings.timeoutMs = 30;
    settings.retryLimit = 1;
    startRuntime();
    const WriteOutcome failed = write(variable(9, 5), {1});
    EXPECT_FALSE(failed.confirmed);
    EXPECT_THAT(reasonOf(failed), HasSubstr("no connection to 127.0.0.1"));
    EXPECT_FALSE(runtime->linkState().connected);
    controller->start();
    EXPECT_TRUE(eventually([&] { return write(variable(9, 5), {2}).confirmed; }));
    EXPECT_TRUE(runtime->linkState().connected);
}

TEST_F(RuntimeTest, SwitchedOffStationRefusesAndComesBack)
{
    startRuntime();
    runtime->setStation(1, false);
    const WriteOutcome written = write(variable(9, 5), {1});
    EXPECT_FALSE(written.confirmed);
    EXPECT_THAT(reasonOf(written), HasSubstr("station 1 is switched off"));
    const ReadOutcome outcome = read(variable(9, 5));
    EXPECT_FALSE(outcome.done);
    EXPECT_THAT(reasonOf(outcome), HasSubstr("station 1 is switched off"));
    runtime->setStation(1, true);
    EXPECT_TRUE(write(variable(9, 5), {2}).confirmed);
    EXPECT_THAT(read(variable(9, 5)).values, ElementsAre(2u));
}

TEST_F(RuntimeTest, WritesAndReadsThatWaitFailWhenTheirStationIsSwitchedOff)
{
    controller->setSilent(2, true);
    settings.multiStation = true;
    settings.timeoutMs = 300;
    startRuntime();
    const auto inFlight = runtime->write(variable(9, 0, 1, 2), {1});
    const auto waitingWrite = runtime->write(variable(9, 0, 1, 3), {1});
    const auto waitingRead = runtime->read(variable(9, 0, 1, 3));
    runtime->setStation(3, false);
    ASSERT_TRUE(inFlight.wait(patienceMs) && waitingWrite.wait(patienceMs) && waitingRead.wait(patienceMs));
    EXPECT_THAT(reasonOf(waitingWrite.get()), HasSubstr("switched off"));
    EXPECT_THAT(reasonOf(waitingRead.get()), HasSubstr("switched off"));
    EXPECT_EQ(inController(*controller, 9, 0, 3), 0u);
}

TEST_F(RuntimeTest, WritesPassWhileEveryCyclicStationIsOff)
{
    settings.multiStation = true;
    makeRuntime();
    const int index = runtime->addCyclic(variable(9, 0, 1, 2));
    runtime->start();
    ASSERT_TRUE(becomes(index, ValueState::Fresh));
    runtime->setStation(2, false);
    // The driver lets five writes pass before it wants a cyclic read.
    std::vector<Pending<WriteOutcome>> writes;
    for (int element = 0; element < 30; ++element)
        writes.push_back(runtime->write(variable(9, element, 1, 3), {1}));
    for (const auto& pending : writes) {
        ASSERT_TRUE(pending.wait(patienceMs));
        EXPECT_TRUE(pending.get().confirmed) << reasonOf(pending.get());
    }
    EXPECT_EQ(runtime->value(index).state, ValueState::StationOff);
}

TEST_F(RuntimeTest, OneShotReadsAreNotLostWithAnotherThatFails)
{
    simulator::Settings refusing;
    refusing.refused = {{500, 510}};
    useController(refusing);
    settings.retryLimit = 0;
    startRuntime();
    putIntoController(*controller, 9, 7, 1234);
    std::vector<Pending<ReadOutcome>> good;
    const auto bad = runtime->read(variable(9, 505));
    for (int count = 0; count < 20; ++count)
        good.push_back(runtime->read(variable(9, 7)));
    for (const auto& pending : good) {
        ASSERT_TRUE(pending.wait(patienceMs));
        EXPECT_THAT(pending.get().values, ElementsAre(1234u)) << reasonOf(pending.get());
    }
    ASSERT_TRUE(bad.wait(patienceMs));
    EXPECT_FALSE(bad.get().done);
}

TEST_F(RuntimeTest, CyclicVariablesFollowTheController)
{
    makeRuntime();
    std::vector<int> indexes;
    for (int area = 0; area <= 14; ++area)
        indexes.push_back(runtime->addCyclic(variable(area, 200, 5)));
    EXPECT_EQ(runtime->value(indexes[0]).state, ValueState::NeverRead);
    runtime->start();
    for (int area = 0; area <= 14; ++area) {
        if (area == 8)
            continue; // the same words as area 9
        for (int index = 0; index < 5; ++index)
            putIntoController(*controller, area, 200 + index, testValue(area, index));
    }
    for (int area = 0; area <= 14; ++area) {
        const int index = indexes[static_cast<std::size_t>(area)];
        if (area == 8) {
            EXPECT_TRUE(becomes(index, ValueState::Fresh));
            continue;
        }
        EXPECT_TRUE(eventually([&] {
            const CyclicValue value = runtime->value(index);
            return value.state == ValueState::Fresh && value.values == testValues(area, 5);
        })) << area;
    }
}

TEST_F(RuntimeTest, CyclicBitsInWordsAreThoseOfTheWords)
{
    putIntoController(*controller, 9, 10, 0x8421);
    makeRuntime();
    const int index = runtime->addCyclic(variable(8, 160, 16));
    runtime->start();
    ASSERT_TRUE(becomes(index, ValueState::Fresh));
    EXPECT_THAT(runtime->value(index).values,
                ElementsAre(1u, 0u, 0u, 0u, 0u, 1u, 0u, 0u, 0u, 0u, 1u, 0u, 0u, 0u, 0u, 1u));
}

/// Padding of the last byte of a reply must not show as the value of the bits behind.
class NeighbouringBits : public RuntimeTest, public testing::WithParamInterface<bool>
{
};

TEST_P(NeighbouringBits, KeepTheirOwnValues)
{
    settings.multiStation = GetParam();
    for (int bit = 0; bit < 40; ++bit)
        putIntoController(*controller, 2, bit, 1);
    makeRuntime();
    const int before = runtime->addCyclic(variable(2, 0, 10));
    const int next = runtime->addCyclic(variable(2, 10));
    const int further = runtime->addCyclic(variable(2, 12));
    runtime->start();
    for (const int index : {before, next, further})
        ASSERT_TRUE(becomes(index, ValueState::Fresh));
    for (int turn = 0; turn < 300; ++turn) {
        ASSERT_THAT(runtime->value(before).values, Each(1u));
        ASSERT_THAT(runtime->value(next).values, Each(1u));
        ASSERT_THAT(runtime->value(further).values, Each(1u));
        if (turn % 50 == 0) {
            ASSERT_THAT(read(variable(2, 3, 7)).values, Each(1u));
        }
        QThread::usleep(500);
    }
}

TEST_P(NeighbouringBits, KeepTheirOwnValuesInLongRunsOfArea7)
{
    settings.multiStation = GetParam();
    settings.maxBlockCount = 63;
    for (int bit = 8000; bit < 8600; ++bit)
        putIntoController(*controller, 7, bit, 1);
    makeRuntime();
    const int before = runtime->addCyclic(variable(7, 8000, 10));
    const int longRun = runtime->addCyclic(variable(7, 8020, 500));
    runtime->start();
    ASSERT_TRUE(becomes(before, ValueState::Fresh));
    ASSERT_TRUE(becomes(longRun, ValueState::Fresh));
    for (int turn = 0; turn < 300; ++turn) {
        ASSERT_THAT(runtime->value(longRun).values, Each(1u));
        QThread::usleep(500);
    }
}

INSTANTIATE_TEST_SUITE_P(Modes, NeighbouringBits, testing::Bool(), [](const auto& mode) {
    return std::string(mode.param ? "SeveralStations" : "OneStation");
});

TEST_F(RuntimeTest, ValueThatCannotBeReadAnyMoreSaysWhy)
{
    settings.timeoutMs = 50;
    settings.retryLimit = 1;
    makeRuntime();
    const int index = runtime->addCyclic(variable(9, 0));
    runtime->start();
    ASSERT_TRUE(becomes(index, ValueState::Fresh));
    controller->setSilent(1, true);
    ASSERT_TRUE(becomes(index, ValueState::Failed));
    EXPECT_EQ(runtime->value(index).failure.code, 41) << "no reply; blocks have no key of their own";
    EXPECT_THAT(reasonOf(runtime->value(index)), HasSubstr("no reply within 50 ms"));
    controller->setSilent(1, false);
    EXPECT_TRUE(becomes(index, ValueState::Fresh));
}

TEST_F(RuntimeTest, ValueThatIsNotRefreshedLooksStale)
{
    settings.staleAfterMs = 100;
    settings.timeoutMs = 1000;
    settings.retryLimit = 1000;
    makeRuntime();
    const int index = runtime->addCyclic(variable(9, 0));
    runtime->start();
    ASSERT_TRUE(becomes(index, ValueState::Fresh));
    controller->setSilent(1, true);
    EXPECT_TRUE(becomes(index, ValueState::Stale));
    EXPECT_GT(runtime->value(index).ageMs, 100);
}

TEST_F(RuntimeTest, ValueOfAFailedWriteIsNotShownAsTheControllersOwn)
{
    settings.timeoutMs = 100;
    settings.retryLimit = 0;
    settings.staleAfterMs = 3600000;
    putIntoController(*controller, 9, 0, 1);
    makeRuntime();
    const int index = runtime->addCyclic(variable(9, 0));
    runtime->start();
    ASSERT_TRUE(becomes(index, ValueState::Fresh));
    controller->setSilent(1, true);
    EXPECT_FALSE(write(variable(9, 0), {2}).confirmed);
    const CyclicValue value = runtime->value(index);
    EXPECT_TRUE(value.state == ValueState::Unconfirmed || value.state == ValueState::Failed)
        << valueStateWord(value.state).toStdString();
    controller->setSilent(1, false);
    ASSERT_TRUE(becomes(index, ValueState::Fresh));
    EXPECT_THAT(runtime->value(index).values, ElementsAre(1u));
}

TEST_F(RuntimeTest, ValueThatIsBeingWrittenIsUnconfirmed)
{
    settings.pollMs = 3600000;
    settings.staleAfterMs = 3600000;
    settings.timeoutMs = 60000;
    makeRuntime();
    const int written = runtime->addCyclic(variable(9, 0));
    const int another = runtime->addCyclic(variable(9, 1));
    runtime->start();
    ASSERT_TRUE(becomes(another, ValueState::Fresh));
    controller->setSilent(1, true);
    runtime->write(variable(9, 0), {2});
    EXPECT_EQ(runtime->value(written).state, ValueState::Unconfirmed);
    EXPECT_EQ(runtime->value(another).state, ValueState::Fresh);
    std::vector<CyclicValue> both(2);
    runtime->values(0, &both);
    EXPECT_EQ(both[0].state, ValueState::Unconfirmed);
    EXPECT_EQ(both[1].state, ValueState::Fresh);
}

TEST_F(RuntimeTest, WrittenValueShowsAtOnceAndDoesNotFlipBack)
{
    makeRuntime();
    const int index = runtime->addCyclic(variable(9, 0));
    runtime->start();
    ASSERT_TRUE(becomes(index, ValueState::Fresh));
    for (quint32 value = 1; value < 50; ++value) {
        ASSERT_TRUE(write(variable(9, 0), {value}).confirmed);
        ASSERT_THAT(runtime->value(index).values, ElementsAre(value));
    }
}

TEST_F(RuntimeTest, ConfirmedValueThatTheDriverDidNotTakeOverIsNotShownAsFreshBefore)
{
    settings.multiStation = true;
    settings.timeoutMs = 300;
    settings.retryLimit = 0;
    settings.pollMs = 3600000;
    settings.staleAfterMs = 3600000;
    controller->setSilent(2, true);
    makeRuntime();
    const int index = runtime->addCyclic(variable(9, 0, 1, 3));
    std::vector<CyclicValue> shown;
    runtime->setObserver([&](const ExchangeRecord& record) {
        if (record.request.station == 3 && record.request.count == 1 && record.frame.at(7) == 6)
            shown.push_back(runtime->value(index));
    });
    runtime->start();
    ASSERT_TRUE(becomes(index, ValueState::Fresh));
    // The failure of the first write keeps the driver from taking over the value of the second.
    const auto failing = runtime->write(variable(9, 0, 1, 2), {1});
    const auto confirmed = runtime->write(variable(9, 0, 1, 3), {77});
    ASSERT_TRUE(failing.wait(patienceMs) && confirmed.wait(patienceMs));
    EXPECT_TRUE(confirmed.get().confirmed) << reasonOf(confirmed.get());
    runtime->stop();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_TRUE(shown[0].state != ValueState::Fresh || shown[0].values == std::vector<quint32>{77})
        << shown[0].values.at(0);
}

TEST_F(RuntimeTest, SwitchingAnotherStationOffRefreshesNothingAndOnDoesAtOnce)
{
    settings.pollMs = 3600000;
    settings.multiStation = true;
    makeRuntime();
    const int index = runtime->addCyclic(variable(9, 0));
    runtime->start();
    ASSERT_TRUE(becomes(index, ValueState::Fresh));
    const unsigned long requests = controller->requests();
    runtime->setStation(7, false);
    ASSERT_TRUE(read(variable(9, 1)).done); // by then a refresh would have begun
    EXPECT_EQ(controller->requests(), requests + 1);
    runtime->setStation(7, true);
    EXPECT_TRUE(eventually([&] { return controller->requests() == requests + 2; }));
}

TEST_F(RuntimeTest, RefreshesThatMayFollowAtOnceDo)
{
    makeRuntime();
    const int index = runtime->addCyclic(variable(9, 0));
    runtime->start();
    ASSERT_TRUE(becomes(index, ValueState::Fresh));
    const unsigned long requests = controller->requests();
    QElapsedTimer clock;
    clock.start();
    ASSERT_TRUE(eventually([&] { return controller->requests() >= requests + 40; }));
    EXPECT_LT(clock.elapsed(), 40 * 50) << "the sleep of a thread that has nothing to do";
}

TEST_F(RuntimeTest, ThreadSleepsWhenThereIsNothingToDo)
{
    startRuntime();
    ASSERT_TRUE(write(variable(9, 5), {1}).confirmed);
    QThread::msleep(5);
    const quint32 before = runtime->rounds();
    QThread::msleep(60);
    EXPECT_LT(runtime->rounds() - before, 10u);
    EXPECT_EQ(runtime->statistics().passes, 0) << "there is nothing to refresh";
}

TEST_F(RuntimeTest, CommunicationThreadGoesRoundWithEachRequest)
{
    startRuntime();
    const quint32 before = runtime->rounds();
    for (int request = 0; request < 3; ++request)
        ASSERT_TRUE(write(variable(9, 5), {1}).confirmed);
    EXPECT_GE(runtime->rounds() - before, 2u);
}

TEST_F(RuntimeTest, EveryExchangeIsShownToTheObserver)
{
    makeRuntime();
    std::mutex mutex;
    std::vector<ExchangeRecord> seen;
    runtime->setObserver([&](const ExchangeRecord& record) {
        std::lock_guard<std::mutex> lock(mutex);
        seen.push_back(record);
    });
    runtime->start();
    ASSERT_TRUE(write(variable(9, 5), {0x1234}).confirmed);
    ASSERT_TRUE(read(variable(9, 5)).done);
    runtime->stop();
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].frame, QByteArray::fromHex("000000000006010600051234"));
    EXPECT_EQ(seen[0].exchange.sentFrame, QByteArray::fromHex("000100000006010600051234"));
    EXPECT_EQ(seen[0].exchange.reply, seen[0].frame);
    EXPECT_EQ(seen[0].result, PLC_DONE);
    EXPECT_EQ(seen[1].frame, QByteArray::fromHex("000000000006010300050001"));
    EXPECT_EQ(seen[1].exchange.reply, QByteArray::fromHex("0000000000050103021234"));
    EXPECT_EQ(seen[1].request.area, 9);
}

TEST_F(RuntimeTest, StoppingEndsWhateverWaits)
{
    controller->setSilent(1, true);
    settings.timeoutMs = 60000;
    startRuntime();
    const auto inFlight = runtime->write(variable(9, 0), {1});
    const auto waiting = runtime->write(variable(9, 1), {1});
    const auto reading = runtime->read(variable(9, 1));
    ASSERT_TRUE(eventually([&] { return controller->requests() > 0; }));
    runtime->stop();
    EXPECT_TRUE(inFlight.done() && waiting.done() && reading.done());
    EXPECT_THAT(reasonOf(waiting.get()), HasSubstr("the panel was stopped"));
    EXPECT_THAT(reasonOf(reading.get()), HasSubstr("the panel was stopped"));
    const auto late = runtime->write(variable(9, 0), {1});
    EXPECT_THAT(reasonOf(late.get()), HasSubstr("not running"));
}

TEST_F(RuntimeTest, StatisticsCountWhatEnded)
{
    simulator::Settings refusing;
    refusing.refused = {{500, 510}};
    useController(refusing);
    settings.retryLimit = 2;
    settings.maxBlockCount = 100;
    startRuntime();
    write(variable(9, 0, 300), testValues(9, 300));
    write(variable(9, 505), {1});
    read(variable(9, 0));
    const Statistics statistics = runtime->statistics();
    EXPECT_EQ(statistics.writesConfirmed, 1);
    EXPECT_EQ(statistics.writesFailed, 1);
    EXPECT_EQ(statistics.readsDone, 1);
    EXPECT_EQ(statistics.writesWaiting, 0);
    EXPECT_EQ(statistics.retried, 2);
    EXPECT_EQ(statistics.failed, 1);
    EXPECT_EQ(statistics.good, 4);
    EXPECT_EQ(statistics.exchanges, 7);
}

TEST_F(RuntimeTest, NextRuntimeStartsWithACleanDriver)
{
    putIntoController(*controller, 9, 3, 42);
    makeRuntime();
    const int index = runtime->addCyclic(variable(9, 3));
    runtime->start();
    ASSERT_TRUE(becomes(index, ValueState::Fresh));
    runtime.reset();
    startRuntime();
    // With its answer the controller has also counted what the first runtime sent just before its end.
    ASSERT_TRUE(write(variable(9, 4), {1}).confirmed);
    const unsigned long requests = controller->requests();
    ASSERT_TRUE(write(variable(9, 4), {2}).confirmed);
    QThread::msleep(50);
    EXPECT_EQ(controller->requests(), requests + 1) << "the old cyclic variable is still read";
}

std::string startError(Runtime& runtime)
{
    try {
        runtime.start();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "no error";
}

TEST_F(RuntimeTest, OnlyOneRuntimeUsesTheDriverAtATime)
{
    startRuntime();
    Runtime second(settings);
    EXPECT_THAT(startError(second), HasSubstr("another runtime uses the driver"));
    EXPECT_TRUE(write(variable(9, 4), {1}).confirmed);
}

TEST_F(RuntimeTest, StartSaysWhatIsWrongWithTheSettings)
{
    settings.driverPath = QStringLiteral("/nowhere/libplcdriver.so");
    makeRuntime();
    EXPECT_THAT(startError(*runtime), HasSubstr("/nowhere/libplcdriver.so"));
    settings.station = 256;
    makeRuntime();
    EXPECT_THAT(startError(*runtime), HasSubstr("station: 256 is outside 0..255"));
    settings.driverPath.clear();
    makeRuntime();
    EXPECT_THAT(startError(*runtime), HasSubstr("give the path of libplcdriver.so"));
}

TEST_F(RuntimeTest, ValuesAreThoseOfVariablesThatThereAre)
{
    makeRuntime();
    std::vector<CyclicValue> none;
    EXPECT_NO_THROW(runtime->values(0, &none));
    std::vector<CyclicValue> two(2);
    runtime->addCyclic(variable(9, 0));
    EXPECT_THROW(runtime->values(0, &two), std::runtime_error);
    EXPECT_THROW(runtime->values(-1, &two), std::runtime_error);
    runtime->addCyclic(variable(9, 1));
    EXPECT_NO_THROW(runtime->values(0, &two));
    EXPECT_EQ(two[1].state, ValueState::NeverRead);
    EXPECT_EQ(two[1].values, std::vector<quint32>{0});
}

TEST_F(RuntimeTest, CyclicVariableThatCannotBeReadIsRefused)
{
    makeRuntime();
    EXPECT_THROW(runtime->addCyclic(variable(15, 0)), std::runtime_error);
    EXPECT_THROW(runtime->addCyclic(variable(9, 0, 1, 2)), std::runtime_error);
    EXPECT_THROW(runtime->value(0), std::runtime_error);
}

} // namespace
