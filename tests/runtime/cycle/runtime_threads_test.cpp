// SPDX-License-Identifier: MIT
// The runtime as screens use it: many threads at once while the communication thread runs.
#include "support/runtime_fixture.h"

#include <gtest/gtest.h>

#include <QThread>

#include <atomic>
#include <set>
#include <thread>

namespace
{

using namespace plc;

const int writers = 3;
const int elementsOfEach = 7;
const int stations = 3;

/// What an element may hold: the last confirmed value, and those of later writes that may have been sent.
struct Expected {
    std::set<quint32> values = {0};

    void ended(const WriteOutcome& outcome, quint32 value)
    {
        if (outcome.confirmed)
            values.clear();
        values.insert(value);
    }
};

class RuntimeThreads : public RuntimeFixture
{
protected:
    RuntimeThreads()
    {
        settings.multiStation = true;
        settings.timeoutMs = 40;
        settings.retryLimit = 1;
        settings.pollMs = 0;
        for (int station = 1; station <= stations; ++station)
            putIntoController(*controller, 10, 0, 4711, station);
        makeRuntime();
        for (int station = 1; station <= stations; ++station)
            m_cyclic.push_back(runtime->addCyclic(variable(10, 0, 1, station)));
        runtime->start();
    }

    static int stationOf(int turn) { return 1 + turn % stations; }

    /// Writes to elements of its own, a few at a time, and keeps account of them.
    void writeManyTimes(int writer)
    {
        std::map<std::pair<int, int>, Expected> account;
        for (int turn = 0; turn < m_writesOfEach; turn += elementsOfEach) {
            std::vector<Pending<WriteOutcome>> pending;
            for (int element = 0; element < elementsOfEach; ++element)
                pending.push_back(runtime->write(place(writer, turn, element), {valueOf(turn, element)}));
            for (int element = 0; element < elementsOfEach; ++element) {
                const auto& outcome = pending[static_cast<std::size_t>(element)];
                if (!outcome.wait(patienceMs)) {
                    ADD_FAILURE() << "a write was lost";
                    return;
                }
                account[{stationOf(turn), element}].ended(outcome.get(), valueOf(turn, element));
                ++(outcome.get().confirmed ? m_confirmed : m_failed);
            }
        }
        compare(writer, account);
    }

    static Variable place(int writer, int turn, int element)
    {
        return variable(9, 100 * (writer + 1) + element, 1, stationOf(turn));
    }

    static quint32 valueOf(int turn, int element) { return static_cast<quint32>(1 + turn * 10 + element); }

    void compare(int writer, const std::map<std::pair<int, int>, Expected>& account)
    {
        for (const auto& entry : account) {
            const int station = entry.first.first;
            const int element = 100 * (writer + 1) + entry.first.second;
            EXPECT_EQ(entry.second.values.count(inController(*controller, 9, element, station)), 1u)
                << station << ' ' << element;
        }
    }

    void readUntilDone()
    {
        for (int turn = 0; !m_done; ++turn) {
            const auto pending = runtime->read(variable(10, 0, 1, stationOf(turn)));
            if (!pending.wait(patienceMs)) {
                ADD_FAILURE() << "a read was lost";
                return;
            }
            if (pending.get().done) {
                EXPECT_EQ(pending.get().values, std::vector<quint32>{4711});
            }
            ++m_reads;
        }
    }

    void lookUntilDone()
    {
        while (!m_done) {
            for (const int index : m_cyclic) {
                const CyclicValue value = runtime->value(index);
                if (value.state != ValueState::NeverRead) {
                    EXPECT_EQ(value.values, std::vector<quint32>{4711});
                }
            }
            runtime->linkState();
            runtime->statistics();
            QThread::usleep(200);
        }
    }

    void switchUntilDone()
    {
        for (int turn = 0; !m_done; ++turn) {
            runtime->setStation(stationOf(turn), false);
            QThread::msleep(1);
            runtime->setStation(stationOf(turn), true);
            QThread::msleep(2);
        }
    }

    void runAllThreads()
    {
        std::vector<std::thread> others;
        others.emplace_back([this] { readUntilDone(); });
        others.emplace_back([this] { lookUntilDone(); });
        others.emplace_back([this] { switchUntilDone(); });
        std::vector<std::thread> writing;
        for (int writer = 0; writer < writers; ++writer)
            writing.emplace_back([this, writer] { writeManyTimes(writer); });
        for (std::thread& thread : writing)
            thread.join();
        m_done = true;
        for (std::thread& thread : others)
            thread.join();
    }

    int m_writesOfEach = 1400;
    std::vector<int> m_cyclic;
    std::atomic<bool> m_done{false};
    std::atomic<long> m_confirmed{0};
    std::atomic<long> m_failed{0};
    std::atomic<long> m_reads{0};
};

TEST_F(RuntimeThreads, LoseNoWrite)
{
    runAllThreads();
    const Statistics statistics = runtime->statistics();
    EXPECT_EQ(statistics.writesConfirmed, m_confirmed);
    EXPECT_EQ(statistics.writesFailed, m_failed);
    EXPECT_EQ(statistics.readsDone + statistics.readsFailed, m_reads);
    EXPECT_EQ(statistics.writesWaiting, 0);
    EXPECT_GT(m_confirmed, 0);
    RecordProperty("confirmed", std::to_string(m_confirmed));
    RecordProperty("failed", std::to_string(m_failed));
}

TEST_F(RuntimeThreads, LoseNoWriteWithAControllerThatMisbehaves)
{
    simulator::FaultSettings faults;
    for (const simulator::FaultKind& kind : simulator::faultList())
        faults.*kind.probability = 0.01;
    faults.lateMs = 60;
    controller->setFaults(faults);
    m_writesOfEach = 210;
    runAllThreads();
    const Statistics statistics = runtime->statistics();
    EXPECT_EQ(statistics.writesConfirmed, m_confirmed);
    EXPECT_EQ(statistics.writesFailed, m_failed);
    EXPECT_EQ(statistics.writesWaiting, 0);
}

} // namespace
