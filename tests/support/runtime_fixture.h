// SPDX-License-Identifier: MIT
/// \file
/// \brief A runtime and a simulated controller.
#ifndef TESTS_SUPPORT_RUNTIME_FIXTURE_H
#define TESTS_SUPPORT_RUNTIME_FIXTURE_H

#include "runtime/cycle/runtime.h"
#include "runtime/modbus/failure_words.h"
#include "simulator/simulated_controller.h"
#include "support/built_files.h"
#include "support/controller_values.h"
#include "support/waiting.h"

#include <gtest/gtest.h>

#include <memory>

using test::eventually;
using test::patienceMs;

/// \return why something failed, in words; empty when it did not
template <class Outcome>
std::string reasonOf(const Outcome& outcome)
{
    return plc::failureWords(outcome).toStdString();
}

inline std::string reasonOf(const plc::CyclicValue& value)
{
    return plc::failureWords(value.failure).toStdString();
}

inline std::string reasonOf(const plc::StationReport& report)
{
    return plc::failureWords(report.failure).toStdString();
}

inline plc::Variable variable(int area, int element, int count = 1, int station = -1)
{
    plc::Variable result;
    result.area = area;
    result.element = element;
    result.count = count;
    result.station = station;
    return result;
}

/// \return a value that tells element \a index of an area from its neighbours, and its halves apart
inline quint32 testValue(int area, int index)
{
    if (area <= 8)
        return index % 3 == 0 ? 1 : 0;
    const quint32 value = 0x89AB0001u + static_cast<quint32>(index) * 0x10003u;
    return area == 14 ? value : value & 0xFFFF;
}

/// \return testValue() of the first \a count elements
inline std::vector<quint32> testValues(int area, int count)
{
    std::vector<quint32> values;
    for (int index = 0; index < count; ++index)
        values.push_back(testValue(area, index));
    return values;
}

/// Starts a controller; the runtime is started by the test, after it has changed the settings.
class RuntimeFixture : public testing::Test
{
protected:
    RuntimeFixture() { useController({}); }

    void useController(const simulator::Settings& controllerSettings)
    {
        controller = std::make_unique<simulator::SimulatedController>(controllerSettings);
        controller->start();
        settings.driverPath = QString::fromUtf8(builtDriver());
        settings.port = controller->port();
        settings.station = 1;
        settings.pollMs = 1;
        // Only tests about missing replies shorten it; a busy machine may take its time.
        settings.timeoutMs = 3000;
    }

    /// Both sides speak remote frames.
    void useRemoteController()
    {
        simulator::Settings remote;
        remote.remote = true;
        useController(remote);
        settings.remoteMode = true;
    }

    void makeRuntime() { runtime = std::make_unique<plc::Runtime>(settings); }

    void startRuntime()
    {
        makeRuntime();
        runtime->start();
    }

    plc::WriteOutcome write(const plc::Variable& where, const std::vector<quint32>& values)
    {
        const auto pending = runtime->write(where, values);
        EXPECT_TRUE(pending.wait(patienceMs)) << "the write never ends";
        return pending.done() ? pending.get() : plc::WriteOutcome();
    }

    plc::ReadOutcome read(const plc::Variable& where)
    {
        const auto pending = runtime->read(where);
        EXPECT_TRUE(pending.wait(patienceMs)) << "the read never ends";
        return pending.done() ? pending.get() : plc::ReadOutcome();
    }

    bool becomes(int index, plc::ValueState state)
    {
        return eventually([&] { return runtime->value(index).state == state; });
    }

    plc::Settings settings;
    std::unique_ptr<simulator::SimulatedController> controller;
    std::unique_ptr<plc::Runtime> runtime;
};

#endif
