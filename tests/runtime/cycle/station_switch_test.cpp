// SPDX-License-Identifier: MIT
// Stations that are switched off and on while requests wait for them.
#include "support/runtime_fixture.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

const int silentStation = 2;
const int switchedStation = 3;
const int queued = 20; // more than the driver sends in a row

class StationSwitch : public RuntimeFixture
{
protected:
    StationSwitch()
    {
        settings.multiStation = true;
        settings.timeoutMs = 300;
        settings.retryLimit = 0;
    }

    /// The communication thread waits for a reply that never comes, so what is queued now waits in the driver.
    void keepTheThreadBusy()
    {
        controller->setSilent(silentStation, true);
        startRuntime();
        m_busy = runtime->write(variable(9, 0, 1, silentStation), {1});
        ASSERT_TRUE(eventually([&] { return controller->requests() > 0; }));
    }

    Pending<WriteOutcome> m_busy;
};

TEST_F(StationSwitch, WritesThatWaitedWhenTheirStationWasSwitchedOffDoNotGoOutWhenItIsOnAgain)
{
    keepTheThreadBusy();
    std::vector<Pending<WriteOutcome>> before;
    for (int element = 0; element < queued; ++element)
        before.push_back(runtime->write(variable(9, element, 1, switchedStation), {7}));
    runtime->setStation(switchedStation, false);
    runtime->setStation(switchedStation, true);
    EXPECT_TRUE(write(variable(9, 100, 1, switchedStation), {8}).confirmed);
    for (const auto& pending : before) {
        ASSERT_TRUE(pending.wait(patienceMs));
        EXPECT_EQ(pending.get().failure.kind, FailureKind::Discarded);
    }
    for (int element = 0; element < queued; ++element)
        EXPECT_EQ(inController(*controller, 9, element, switchedStation), 0u);
    EXPECT_EQ(inController(*controller, 9, 100, switchedStation), 8u);
}

TEST_F(StationSwitch, ReadsThatWaitedFailAndThoseAfterItsReturnAreDone)
{
    keepTheThreadBusy();
    std::vector<Pending<ReadOutcome>> before;
    for (int element = 0; element < 5; ++element)
        before.push_back(runtime->read(variable(9, element, 1, switchedStation)));
    runtime->setStation(switchedStation, false);
    runtime->setStation(switchedStation, true);
    EXPECT_TRUE(read(variable(9, 100, 1, switchedStation)).done);
    for (const auto& pending : before) {
        ASSERT_TRUE(pending.wait(patienceMs));
        EXPECT_EQ(pending.get().failure.kind, FailureKind::Discarded);
    }
}

TEST_F(StationSwitch, WritesToOthersGoOutMeanwhile)
{
    keepTheThreadBusy();
    const auto lost = runtime->write(variable(9, 0, 1, switchedStation), {7});
    runtime->setStation(switchedStation, false);
    runtime->setStation(switchedStation, true);
    const auto other = runtime->write(variable(9, 0, 1, 1), {9});
    ASSERT_TRUE(other.wait(patienceMs));
    EXPECT_TRUE(other.get().confirmed) << reasonOf(other.get());
    EXPECT_FALSE(lost.get().confirmed);
}

TEST_F(StationSwitch, OneThatIsSwitchedOffAgainStaysOff)
{
    keepTheThreadBusy();
    const auto lost = runtime->write(variable(9, 0, 1, switchedStation), {7});
    runtime->setStation(switchedStation, false);
    runtime->setStation(switchedStation, true);
    runtime->setStation(switchedStation, false);
    const auto refused = runtime->write(variable(9, 1, 1, switchedStation), {7});
    ASSERT_TRUE(lost.wait(patienceMs) && refused.wait(patienceMs));
    EXPECT_EQ(refused.get().failure.kind, FailureKind::StationOff);
    runtime->setStation(switchedStation, true);
    EXPECT_TRUE(write(variable(9, 2, 1, switchedStation), {8}).confirmed);
    EXPECT_EQ(inController(*controller, 9, 0, switchedStation), 0u);
}

TEST_F(StationSwitch, OthersAreRefreshedWithoutTheLastOneThereIs)
{
    makeRuntime();
    runtime->addCyclic(variable(9, 0, 1, switchedStation));
    runtime->start();
    for (const int station : {0, 255})
        runtime->setStation(station, false);
    const long passes = runtime->statistics().passes;
    EXPECT_TRUE(eventually([&] { return runtime->statistics().passes > passes + 2; }));
}

TEST_F(StationSwitch, ReportsTellWhatWaitsByKindAndStation)
{
    keepTheThreadBusy();
    const auto waiting = [&](int station) {
        for (const StationReport& report : runtime->stations()) {
            if (report.station == station)
                return std::make_pair(report.writesWaiting, report.readsWaiting);
        }
        return std::make_pair(-1, -1);
    };
    const auto first = runtime->write(variable(9, 0, 1, switchedStation), {7});
    const auto second = runtime->write(variable(2, 0, 2, switchedStation), {1, 1});
    const auto third = runtime->read(variable(9, 0, 1, 5));
    EXPECT_EQ(waiting(switchedStation), std::make_pair(3, 0)) << "bits are written one by one";
    EXPECT_EQ(waiting(silentStation), std::make_pair(1, 0));
    EXPECT_EQ(waiting(5), std::make_pair(0, 1));
    ASSERT_TRUE(first.wait(patienceMs) && second.wait(patienceMs) && third.wait(patienceMs));
    EXPECT_EQ(waiting(switchedStation), std::make_pair(0, 0));
    EXPECT_EQ(waiting(5), std::make_pair(0, 0));
}

} // namespace
