// SPDX-License-Identifier: MIT
// The panel and the simulated controller with remote frames.
#include "runtime/cycle/exchange_record.h"
#include "support/runtime_fixture.h"

#include "runtime/modbus/frame_fields.h"
#include "runtime/modbus/remote_fields.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <mutex>

namespace
{

using namespace plc;
using testing::HasSubstr;

class RuntimeRemote : public RuntimeFixture
{
protected:
    RuntimeRemote() { useRemoteController(); }
};

TEST_F(RuntimeRemote, WritesReachTheControllerInEveryAreaThatCanBeWritten)
{
    startRuntime();
    for (int area = 1; area <= 14; ++area) {
        const WriteOutcome outcome = write(variable(area, 40, 20), testValues(area, 20));
        EXPECT_TRUE(outcome.confirmed) << area << ": " << reasonOf(outcome);
        for (int index = 0; index < 20; ++index)
            EXPECT_EQ(inController(*controller, area, 40 + index), testValue(area, index))
                << area << ' ' << index;
    }
    EXPECT_EQ(controller->badFrames(), 0u);
}

TEST_F(RuntimeRemote, ReadsGiveWhatTheControllerHasInEveryArea)
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

// Frames of more than 255 bytes among them, whose length byte is not their length.
TEST_F(RuntimeRemote, LongVariablesAreWrittenAndRead)
{
    settings.maxBlockCount = 125;
    startRuntime();
    for (const int area : {9, 14, 2, 8}) {
        const int count = area >= 9 ? 300 : 40;
        const WriteOutcome written = write(variable(area, 100, count), testValues(area, count));
        EXPECT_TRUE(written.confirmed) << reasonOf(written);
        for (int index = 0; index < count; ++index)
            EXPECT_EQ(inController(*controller, area, 100 + index), testValue(area, index)) << area;
        EXPECT_EQ(read(variable(area, 100, count)).values, testValues(area, count)) << area;
    }
    EXPECT_EQ(controller->badFrames(), 0u);
}

TEST_F(RuntimeRemote, OneDoubleWordIsOneDoubleWord)
{
    startRuntime();
    for (int index = 0; index < 3; ++index)
        putIntoController(*controller, 14, 100 + index, 7);
    EXPECT_TRUE(write(variable(14, 101), {0x12345678}).confirmed);
    EXPECT_EQ(inController(*controller, 14, 100), 7u);
    EXPECT_EQ(inController(*controller, 14, 101), 0x12345678u);
    EXPECT_EQ(inController(*controller, 14, 102), 7u);
    EXPECT_EQ(read(variable(14, 101)).values, std::vector<quint32>{0x12345678});
}

TEST_F(RuntimeRemote, BitInAWordIsOneFrameAndLeavesTheOtherBitsAlone)
{
    putIntoController(*controller, 9, 10, 0xFF00);
    startRuntime();
    EXPECT_TRUE(write(variable(8, 163), {1}).confirmed);
    EXPECT_TRUE(write(variable(8, 175), {0}).confirmed);
    EXPECT_EQ(inController(*controller, 9, 10), 0x7F08u);
    EXPECT_EQ(controller->requests(), 2u);
}

TEST_F(RuntimeRemote, CyclicVariablesFollowTheControllerInEveryArea)
{
    makeRuntime();
    std::vector<int> indexes;
    for (int area = 0; area <= 14; ++area)
        indexes.push_back(runtime->addCyclic(variable(area, 200, 5)));
    runtime->start();
    for (const int offset : {0, 7, 14}) {
        for (int area = 0; area <= 14; ++area)
            for (int index = 0; index < 5; ++index)
                putIntoController(*controller, area, 200 + index, testValue(area, index + offset));
        for (int area = 0; area <= 14; ++area) {
            const std::vector<quint32> all = testValues(area, 5 + offset);
            const std::vector<quint32> wanted(all.begin() + offset, all.end());
            EXPECT_TRUE(eventually([&] {
                const CyclicValue value = runtime->value(indexes[static_cast<std::size_t>(area)]);
                return value.state == ValueState::Fresh && value.values == wanted;
            })) << area;
        }
    }
}

/// Every request for double words that goes out, by first element.
class DoubleWordCounts : public RuntimeRemote
{
protected:
    void watch()
    {
        runtime->setObserver([this](const ExchangeRecord& record) {
            const QByteArray& frame = record.frame;
            if (wordAt(frame, remoteAreaOffset) != 14)
                return;
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_counts[wordAt(frame, remoteElementOffset + 2)].insert(wordAt(frame, remoteCountOffset));
        });
    }

    std::map<int, std::set<int>> counts()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_counts;
    }

private:
    std::mutex m_mutex;
    std::map<int, std::set<int>> m_counts;
};

TEST_F(DoubleWordCounts, StayAsTheyAreFromPassToPass)
{
    makeRuntime();
    watch();
    const int first = runtime->addCyclic(variable(14, 0, 3));
    runtime->addCyclic(variable(14, 2, 2));
    for (int index = 0; index < 4; ++index)
        putIntoController(*controller, 14, index, testValue(14, index));
    runtime->start();
    EXPECT_TRUE(eventually([&] { return runtime->statistics().passes > 20; }));
    const std::set<int> two = {2};
    const std::map<int, std::set<int>> wanted = {{0, two}, {1, two}, {2, two}, {3, two}};
    EXPECT_EQ(counts(), wanted);
    EXPECT_EQ(runtime->value(first).values, testValues(14, 3));
    runtime->stop();
}

TEST_F(RuntimeRemote, StationsHaveValuesOfTheirOwn)
{
    settings.multiStation = true;
    makeRuntime();
    std::vector<int> indexes;
    for (int station = 1; station <= 8; ++station)
        for (const int area : {2, 9, 14}) {
            putIntoController(*controller, area, 50, static_cast<quint32>(station % 2 + (area > 2 ? 100 : 0)),
                              station);
            indexes.push_back(runtime->addCyclic(variable(area, 50, 1, station)));
        }
    runtime->start();
    for (int station = 1; station <= 8; ++station) {
        EXPECT_TRUE(write(variable(14, 60, 1, station), {static_cast<quint32>(0x10000 * station)}).confirmed);
        EXPECT_EQ(inController(*controller, 14, 60, station), static_cast<quint32>(0x10000 * station));
    }
    std::size_t at = 0;
    for (int station = 1; station <= 8; ++station)
        for (const int area : {2, 9, 14}) {
            ASSERT_TRUE(becomes(indexes[at], ValueState::Fresh));
            EXPECT_EQ(runtime->value(indexes[at++]).values.at(0),
                      static_cast<quint32>(station % 2 + (area > 2 ? 100 : 0)));
        }
}

TEST_F(RuntimeRemote, SilentStationDoesNotSpoilTheValuesOfTheOthers)
{
    settings.multiStation = true;
    settings.timeoutMs = 50;
    settings.retryLimit = 1;
    for (int station = 1; station <= 3; ++station)
        putIntoController(*controller, 9, 50, static_cast<quint32>(station), station);
    controller->setSilent(2, true);
    makeRuntime();
    std::vector<int> indexes;
    for (int station = 1; station <= 3; ++station)
        indexes.push_back(runtime->addCyclic(variable(9, 50, 1, station)));
    runtime->start();
    EXPECT_TRUE(becomes(indexes[0], ValueState::Fresh));
    EXPECT_TRUE(becomes(indexes[2], ValueState::Fresh));
    EXPECT_FALSE(write(variable(9, 51, 1, 2), {1}).confirmed);
    EXPECT_EQ(runtime->value(indexes[0]).values.at(0), 1u);
    EXPECT_EQ(runtime->value(indexes[2]).values.at(0), 3u);
    controller->setSilent(2, false);
    EXPECT_TRUE(becomes(indexes[1], ValueState::Fresh));
    EXPECT_EQ(runtime->value(indexes[1]).values.at(0), 2u);
}

TEST_F(RuntimeRemote, BroadcastReachesEveryStationBitsInWordsIncluded)
{
    settings.multiStation = true;
    startRuntime();
    for (const int station : {1, 2})
        EXPECT_TRUE(write(variable(9, 5, 1, station), {1}).confirmed);
    EXPECT_TRUE(write(variable(9, 6, 1, 0), {77}).confirmed);
    EXPECT_TRUE(write(variable(8, 5 * 16 + 4, 1, 0), {1}).confirmed);
    EXPECT_TRUE(eventually([&] {
        return inController(*controller, 9, 6, 1) == 77 && inController(*controller, 9, 6, 2) == 77 &&
               inController(*controller, 9, 5, 1) == 17 && inController(*controller, 9, 5, 2) == 17;
    }));
}

TEST_F(RuntimeRemote, RefusedAddressIsNotAnsweredAndSaysSo)
{
    simulator::Settings remote;
    remote.remote = true;
    remote.refused = {{100, 199}};
    useController(remote);
    settings.timeoutMs = 50;
    settings.retryLimit = 1;
    startRuntime();
    const ReadOutcome refused = read(variable(9, 100));
    EXPECT_FALSE(refused.done);
    EXPECT_THAT(reasonOf(refused), HasSubstr("no reply within 50 ms"));
    EXPECT_TRUE(read(variable(9, 200)).done);
}

} // namespace
