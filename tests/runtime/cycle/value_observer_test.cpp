// SPDX-License-Identifier: MIT
// Who is told of a cyclic variable when it shows something else, and only then.
#include "support/runtime_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDateTime>

#include <atomic>
#include <map>
#include <mutex>

namespace
{

using namespace plc;
using testing::ElementsAre;

class ValueObserverTest : public RuntimeFixture
{
protected:
    ~ValueObserverTest() override { runtime.reset(); } // its observer uses what goes before it

    /// Refreshes one word, and notes what is told of it.
    void start()
    {
        makeRuntime();
        m_index = runtime->addCyclic(variable(9, 5));
        runtime->setValueObserver([this](int index, const CyclicValue& value) {
            std::lock_guard<std::mutex> lock(m_mutex);
            EXPECT_EQ(index, m_index);
            m_told.push_back(value);
        });
        runtime->start();
    }

    std::vector<CyclicValue> told()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_told;
    }

    bool isTold(ValueState state, quint32 value)
    {
        return eventually([&] {
            const std::vector<CyclicValue> values = told();
            return !values.empty() && values.back().state == state &&
                   values.back().values == std::vector<quint32>{value};
        });
    }

    std::mutex m_mutex;
    std::vector<CyclicValue> m_told;
    int m_index = -1;
};

TEST_F(ValueObserverTest, IsToldOfTheFirstAnswerOnceAndWhenItCame)
{
    putIntoController(*controller, 9, 5, 4711);
    const qint64 begin = QDateTime::currentMSecsSinceEpoch();
    start();
    ASSERT_TRUE(isTold(ValueState::Fresh, 4711));
    const unsigned long requests = controller->requests();
    ASSERT_TRUE(eventually([&] { return controller->requests() >= requests + 20; }));
    ASSERT_EQ(told().size(), 1u) << "an answer with the same value is no change";
    EXPECT_GE(told()[0].readAtMs, begin - 1);
    EXPECT_LE(told()[0].readAtMs, QDateTime::currentMSecsSinceEpoch());
}

TEST_F(ValueObserverTest, IsToldOfEachNewValue)
{
    start();
    for (const quint32 value : {1u, 2u, 3u}) {
        putIntoController(*controller, 9, 5, value);
        EXPECT_TRUE(isTold(ValueState::Fresh, value));
    }
}

TEST_F(ValueObserverTest, IsToldOfAFailureWithItsReasonAndOfTheReturn)
{
    settings.timeoutMs = 100;
    settings.retryLimit = 0;
    putIntoController(*controller, 9, 5, 4711);
    start();
    ASSERT_TRUE(isTold(ValueState::Fresh, 4711));
    controller->setSilent(1, true);
    ASSERT_TRUE(isTold(ValueState::Failed, 4711));
    EXPECT_EQ(told().back().failure.kind, FailureKind::NoReply);
    controller->setSilent(1, false);
    EXPECT_TRUE(isTold(ValueState::Fresh, 4711));
}

TEST_F(ValueObserverTest, IsToldWhenAValueIsStaleAlthoughNothingHasFailed)
{
    settings.staleAfterMs = 100;
    settings.pollMs = 60000;
    start();
    ASSERT_TRUE(isTold(ValueState::Fresh, 0));
    EXPECT_TRUE(isTold(ValueState::Stale, 0));
}

TEST_F(ValueObserverTest, IsToldThatAStationWasSwitchedOffAndOn)
{
    start();
    ASSERT_TRUE(isTold(ValueState::Fresh, 0));
    runtime->setStation(1, false);
    EXPECT_TRUE(isTold(ValueState::StationOff, 0));
    runtime->setStation(1, true);
    EXPECT_TRUE(isTold(ValueState::Fresh, 0));
}

TEST_F(ValueObserverTest, IsToldTheOwnValueOfEachStationAndArea)
{
    settings.multiStation = true;
    putIntoController(*controller, 9, 5, 11, 1);
    putIntoController(*controller, 9, 6, 12, 1);
    putIntoController(*controller, 9, 5, 21, 2);
    putIntoController(*controller, 9, 6, 22, 2);
    putIntoController(*controller, 10, 7, 37, 2);
    putIntoController(*controller, 10, 3, 33, 2);
    makeRuntime();
    std::map<int, std::vector<quint32>> shown;
    for (const int station : {1, 2}) {
        for (const int element : {5, 6})
            runtime->addCyclic(variable(9, element, 1, station));
    }
    for (const int element : {7, 3})
        runtime->addCyclic(variable(10, element, 1, 2));
    runtime->setValueObserver([&](int index, const CyclicValue& value) {
        std::lock_guard<std::mutex> lock(m_mutex);
        shown[index] = value.values;
    });
    runtime->start();
    using Words = std::vector<quint32>;
    EXPECT_TRUE(eventually([&] {
        std::lock_guard<std::mutex> lock(m_mutex);
        return shown ==
               std::map<int, Words>{{0, {11}}, {1, {12}}, {2, {21}}, {3, {22}}, {4, {37}}, {5, {33}}};
    }));
    runtime.reset();
}

TEST_F(ValueObserverTest, IsToldOfOneStationWhileAnotherIsWaitedFor)
{
    settings.multiStation = true;
    settings.timeoutMs = 60000;
    controller->setSilent(2, true);
    makeRuntime();
    runtime->addCyclic(variable(9, 5, 1, 1));
    runtime->addCyclic(variable(9, 5, 1, 2));
    std::atomic<bool> isTold{false};
    runtime->setValueObserver([&](int, const CyclicValue&) { isTold = true; });
    runtime->start();
    EXPECT_TRUE(eventually([&] { return isTold.load(); }));
    runtime.reset();
}

TEST_F(ValueObserverTest, IsToldOfAWriteThatIsConfirmed)
{
    settings.pollMs = 60000; // no read tells
    start();
    ASSERT_TRUE(isTold(ValueState::Fresh, 0));
    ASSERT_TRUE(write(variable(9, 5), {77}).confirmed);
    EXPECT_TRUE(isTold(ValueState::Fresh, 77));
}

TEST_F(ValueObserverTest, MayAskTheRuntime)
{
    makeRuntime();
    const int index = runtime->addCyclic(variable(9, 5));
    std::atomic<int> calls{0};
    runtime->setValueObserver([&](int, const CyclicValue& value) {
        EXPECT_EQ(runtime->value(index).values, value.values);
        if (calls++ == 0)
            runtime->write(variable(9, 5), {5});
    });
    runtime->start();
    EXPECT_TRUE(eventually([&] { return runtime->value(index).values == std::vector<quint32>{5}; }));
    EXPECT_TRUE(eventually([&] { return calls >= 2; }));
}

TEST_F(ValueObserverTest, TheCommunicationThreadGoesRoundAlsoBetweenTwoPasses)
{
    settings.pollMs = 3600000;
    start();
    ASSERT_TRUE(eventually([&] { return runtime->statistics().passes == 1; }));
    const quint32 before = runtime->rounds();
    EXPECT_TRUE(eventually([&] { return runtime->rounds() > before + 2; }));
}

} // namespace
