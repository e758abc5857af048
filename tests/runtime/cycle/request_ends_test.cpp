// SPDX-License-Identifier: MIT
// Every way in which a write or a read can end, each told exactly once: in its Pending and to whoever asked to be told.
#include "support/runtime_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

namespace
{

using namespace plc;

const int refusedAddress = 400;
const int silentStation = 2;

class RequestEnds : public RuntimeFixture
{
protected:
    RequestEnds()
    {
        simulator::Settings refusing;
        refusing.refused = {{refusedAddress, refusedAddress}};
        useController(refusing);
        settings.timeoutMs = 200;
        settings.retryLimit = 0;
        settings.stationPauseMs = 0;
    }

    ~RequestEnds() override { runtime.reset(); } // what it tells is kept in what goes before it

    Pending<WriteOutcome> writeTold(const Variable& where, const std::vector<quint32>& values = {1})
    {
        return runtime->write(where, values, [this](const WriteOutcome& outcome) { note(outcome.failure); });
    }

    Pending<ReadOutcome> readTold(const Variable& where)
    {
        return runtime->read(where, [this](const ReadOutcome& outcome) { note(outcome.failure); });
    }

    void note(const Failure& failure)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_told.push_back(failure.kind);
        m_thread = std::this_thread::get_id();
    }

    std::vector<FailureKind> told()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_told;
    }

    /// \return true when so many requests were told of, and no more
    bool isTold(std::size_t requests)
    {
        eventually([&] { return told().size() >= requests; });
        return told().size() == requests;
    }

    /// \return the kind by which a request ended, when whoever asked was told the same, once
    template <class Outcome>
    FailureKind endOf(const Pending<Outcome>& pending)
    {
        if (!pending.wait(patienceMs)) {
            ADD_FAILURE() << "it never ends";
            return FailureKind::OutOfStep;
        }
        const FailureKind kind = pending.get().failure.kind;
        const auto tellings = [&] {
            const std::vector<FailureKind> kinds = told();
            return std::count(kinds.begin(), kinds.end(), kind);
        };
        EXPECT_TRUE(eventually([&] { return tellings() > 0; })) << "nobody was told";
        return kind;
    }

    /// While it lasts the thread waits for a silent station, and what is queued waits too.
    void keepTheThreadBusy()
    {
        settings.multiStation = true;
        controller->setSilent(silentStation, true);
        startRuntime();
        m_busy = runtime->write(variable(9, 0, 1, silentStation), {1});
        ASSERT_TRUE(eventually([&] { return controller->requests() > 0; }));
    }

    std::mutex m_mutex;
    std::vector<FailureKind> m_told;
    std::thread::id m_thread;
    Pending<WriteOutcome> m_busy;
};

TEST_F(RequestEnds, AnsweredIsNoFailureAndToldOnTheRuntimesThread)
{
    startRuntime();
    EXPECT_EQ(endOf(writeTold(variable(9, 0))), FailureKind::None);
    EXPECT_EQ(endOf(readTold(variable(9, 0))), FailureKind::None);
    EXPECT_TRUE(isTold(2));
    EXPECT_NE(m_thread, std::this_thread::get_id());
}

TEST_F(RequestEnds, ImpossibleIsToldAtOnceOnTheCallersThread)
{
    startRuntime();
    EXPECT_EQ(endOf(writeTold(variable(9, 0), {65536})), FailureKind::Invalid);
    EXPECT_EQ(endOf(readTold(variable(9, 65535, 2))), FailureKind::Invalid);
    EXPECT_EQ(m_thread, std::this_thread::get_id());
    EXPECT_TRUE(isTold(2));
}

TEST_F(RequestEnds, BeforeTheStartAndAfterTheStopIsNotRunning)
{
    makeRuntime();
    EXPECT_EQ(endOf(writeTold(variable(9, 0))), FailureKind::NotRunning);
    runtime->start();
    runtime->stop();
    EXPECT_EQ(endOf(readTold(variable(9, 0))), FailureKind::NotRunning);
    EXPECT_TRUE(isTold(2));
}

TEST_F(RequestEnds, RefusedByTheControllerIsAnException)
{
    startRuntime();
    EXPECT_EQ(endOf(writeTold(variable(9, refusedAddress))), FailureKind::Exception);
    EXPECT_EQ(endOf(readTold(variable(9, refusedAddress))), FailureKind::Exception);
    EXPECT_TRUE(isTold(2));
}

TEST_F(RequestEnds, SilenceIsNoReplyAndPurgesTheWritesThatWait)
{
    controller->setSilent(1, true);
    startRuntime();
    const auto first = writeTold(variable(9, 0));
    ASSERT_TRUE(eventually([&] { return controller->requests() > 0; }));
    const auto second = writeTold(variable(9, 1));
    EXPECT_EQ(endOf(first), FailureKind::NoReply);
    EXPECT_EQ(endOf(second), FailureKind::Purged);
    EXPECT_EQ(second.get().failure.cause, FailureKind::NoReply);
    EXPECT_EQ(endOf(readTold(variable(9, 0))), FailureKind::NoReply);
    EXPECT_TRUE(isTold(3));
}

TEST_F(RequestEnds, NobodyThereIsNotConnected)
{
    controller->stop();
    startRuntime();
    EXPECT_EQ(endOf(writeTold(variable(9, 0))), FailureKind::NotConnected);
    EXPECT_EQ(endOf(readTold(variable(9, 0))), FailureKind::NotConnected);
    EXPECT_TRUE(isTold(2));
}

TEST_F(RequestEnds, ReplyOfTheWrongLengthIsABadReply)
{
    simulator::Settings spoiling;
    spoiling.faults.longer = 1;
    useController(spoiling);
    settings.timeoutMs = 200;
    startRuntime();
    EXPECT_EQ(endOf(readTold(variable(9, 0))), FailureKind::BadReply);
    EXPECT_TRUE(isTold(1));
}

TEST_F(RequestEnds, NewerWriteToTheSameElementsReplacesOneThatWaits)
{
    keepTheThreadBusy();
    const auto head = writeTold(variable(9, 8, 1, 1));
    const auto older = writeTold(variable(9, 9, 1, 1), {1});
    const auto newer = writeTold(variable(9, 9, 1, 1), {2});
    EXPECT_EQ(endOf(older), FailureKind::Replaced);
    EXPECT_EQ(endOf(newer), FailureKind::None);
    EXPECT_EQ(endOf(head), FailureKind::None);
    EXPECT_TRUE(isTold(3));
}

TEST_F(RequestEnds, StationThatIsSwitchedOffDiscardsAndRefuses)
{
    keepTheThreadBusy();
    const auto waiting = writeTold(variable(9, 0, 1, 3));
    const auto reading = readTold(variable(9, 0, 1, 4));
    runtime->setStation(3, false);
    runtime->setStation(4, false);
    EXPECT_EQ(endOf(writeTold(variable(9, 0, 1, 3))), FailureKind::StationOff);
    EXPECT_EQ(endOf(readTold(variable(9, 0, 1, 4))), FailureKind::StationOff);
    EXPECT_EQ(endOf(waiting), FailureKind::Discarded);
    EXPECT_EQ(endOf(reading), FailureKind::Discarded);
    EXPECT_TRUE(isTold(4));
}

TEST_F(RequestEnds, StoppingTellsOnTheThreadThatStops)
{
    settings.timeoutMs = 60000;
    controller->setSilent(1, true);
    startRuntime();
    const auto writing = writeTold(variable(9, 0));
    const auto reading = readTold(variable(9, 0));
    ASSERT_TRUE(eventually([&] { return controller->requests() > 0; }));
    runtime->stop();
    EXPECT_EQ(writing.get().failure.kind, FailureKind::Stopped);
    EXPECT_EQ(reading.get().failure.kind, FailureKind::Stopped);
    EXPECT_EQ(told().size(), 2u) << "before stop() returns";
    EXPECT_EQ(m_thread, std::this_thread::get_id());
}

TEST_F(RequestEnds, WhoIsToldMayAskForMore)
{
    startRuntime();
    Pending<ReadOutcome> next;
    std::atomic<bool> asked{false};
    runtime->write(variable(9, 0), {4711}, [&](const WriteOutcome&) {
        next = runtime->read(variable(9, 0));
        asked = true;
    });
    ASSERT_TRUE(eventually([&] { return asked.load(); }));
    EXPECT_EQ(next.get().values, std::vector<quint32>{4711});
}

} // namespace
