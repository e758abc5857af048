// SPDX-License-Identifier: MIT
// A runtime that is stopped and one that is started after it, while somebody else keeps the driver loaded: then the
// driver keeps what it was left with.
#include "runtime/cycle/exchange_record.h"
#include "runtime/host/driver_library.h"
#include "support/runtime_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using namespace plc;
using testing::ElementsAre;

class Restart : public RuntimeFixture, public testing::WithParamInterface<bool>
{
protected:
    Restart() : m_library(QString::fromUtf8(builtDriver()))
    {
        settings.multiStation = GetParam();
        settings.timeoutMs = 3000;
        next.start();
    }

    /// Leaves a frame in flight, writes and reads in the driver's lists, and variables that were read.
    void runAndStop()
    {
        putIntoController(*controller, 9, 5, 4711);
        makeRuntime();
        const int index = runtime->addCyclic(variable(9, 5));
        runtime->start();
        ASSERT_TRUE(becomes(index, ValueState::Fresh));
        controller->setSilent(1, true);
        const unsigned long before = controller->requests();
        ASSERT_TRUE(eventually([&] { return controller->requests() > before; }));
        for (int element = 0; element < 20; ++element)
            left.push_back(runtime->write(variable(9, element), {7}));
        for (int element = 30; element < 40; ++element)
            leftReads.push_back(runtime->read(variable(9, element)));
        runtime->setStation(1, false);
        runtime->stop();
        EXPECT_THAT(runtime->value(index).values, ElementsAre(4711u)) << "as it was in the end";
    }

    /// \return a runtime to be started, with another controller
    std::unique_ptr<Runtime> another() const
    {
        Settings others = settings;
        others.port = next.port();
        return std::make_unique<Runtime>(others);
    }

    const DriverLibrary m_library;
    simulator::SimulatedController next;
    std::vector<Pending<WriteOutcome>> left;
    std::vector<Pending<ReadOutcome>> leftReads;
};

TEST_P(Restart, WhateverWaitedHasEndedWhenItIsStopped)
{
    runAndStop();
    for (const auto& pending : left) {
        ASSERT_TRUE(pending.done());
        EXPECT_EQ(pending.get().failure.kind, FailureKind::Stopped);
    }
    for (const auto& pending : leftReads) {
        ASSERT_TRUE(pending.done());
        EXPECT_EQ(pending.get().failure.kind, FailureKind::Stopped);
    }
}

TEST_P(Restart, NothingIsLeftInTheDriver)
{
    runAndStop();
    const DriverCalls& calls = m_library.calls();
    COMINFO info = {};
    calls.SetComInfo(&info);
    RW_VAR nothing = {};
    EXPECT_EQ(calls.AddListWriteVar(nullptr, 0), 0);
    EXPECT_EQ(calls.AddListOnceReadVar(&nothing, 0), 0);
    EXPECT_EQ(calls.AddListReadVar(nullptr), 0);
    EXPECT_EQ(calls.ComCommunication(), nullptr);
    calls.SetComInfo(nullptr);
}

TEST_P(Restart, NothingOfTheOldOneGoesToTheNextController)
{
    runAndStop();
    const auto second = another();
    std::vector<int> elements;
    second->setObserver(
        [&elements](const ExchangeRecord& record) { elements.push_back(record.request.address); });
    const int index = second->addCyclic(variable(10, 50));
    second->start();
    EXPECT_TRUE(eventually([&] { return second->value(index).state == ValueState::Fresh; }));
    EXPECT_TRUE(second->write(variable(10, 51), {8}).get().confirmed) << "every station is on again";
    second->stop();
    EXPECT_THAT(elements, testing::Each(testing::AnyOf(50, 51)));
    for (int element = 0; element < 40; ++element)
        EXPECT_EQ(inController(next, 9, element), 0u) << element;
}

TEST_P(Restart, NoOldValueShowsBeforeTheNextControllerHasAnswered)
{
    runAndStop();
    next.setSilent(1, true);
    const auto second = another();
    const int index = second->addCyclic(variable(9, 5));
    second->start();
    ASSERT_TRUE(eventually([&] { return next.requests() > 0; }));
    EXPECT_EQ(second->value(index).state, ValueState::NeverRead);
    EXPECT_THAT(second->value(index).values, ElementsAre(0u));
    next.setSilent(1, false);
    EXPECT_TRUE(eventually([&] { return second->value(index).state == ValueState::Fresh; }));
    EXPECT_THAT(second->value(index).values, ElementsAre(0u));
}

TEST_P(Restart, WhatIsStoppedRefusesEverything)
{
    runAndStop();
    EXPECT_EQ(runtime->write(variable(9, 0), {1}).get().failure.kind, FailureKind::NotRunning);
    EXPECT_EQ(runtime->read(variable(9, 0)).get().failure.kind, FailureKind::NotRunning);
    EXPECT_THROW(runtime->setStation(1, false), std::runtime_error);
    EXPECT_THROW(runtime->start(), std::runtime_error);
}

INSTANTIATE_TEST_SUITE_P(, Restart, testing::Bool(), [](const auto& parameter) {
    return parameter.param ? "SeveralStations" : "OneStation";
});

} // namespace
