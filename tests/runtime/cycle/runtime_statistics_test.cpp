// SPDX-License-Identifier: MIT
// What the runtime counts of its passes over the cyclic variables.

#include "support/runtime_fixture.h"

#include "driver/plcdriver.h"

namespace
{

using plc::PassCost;

class RuntimeStatistics : public RuntimeFixture
{
protected:
    /// Refreshes the variables \a passes times.
    plc::Statistics after(long passes, const std::vector<plc::Variable>& variables)
    {
        makeRuntime();
        for (const plc::Variable& each : variables)
            runtime->addCyclic(each);
        runtime->start();
        EXPECT_TRUE(eventually([&] { return runtime->statistics().passes >= passes; }));
        return runtime->statistics();
    }
};

TEST_F(RuntimeStatistics, TellsWhatAPassReadsForNoVariable)
{
    // One block of 12 words with a gap of 9, one of 2 double words with none, one of 40 bits with a gap
    // of 30.
    const PassCost cost = after(2, {variable(9, 100, 2), variable(9, 111), variable(14, 5, 2),
                                    variable(3, 10, 5), variable(3, 45, 5)})
                              .lastPass;
    EXPECT_EQ(cost.registers, 12 + 4);
    EXPECT_EQ(cost.registersUnused, 9);
    EXPECT_EQ(cost.bits, 40);
    EXPECT_EQ(cost.bitsUnused, 30);
    EXPECT_EQ(cost.requests, 3);
    EXPECT_EQ(cost.frames, 3);
}

TEST_F(RuntimeStatistics, AreZeroBeforeTheFirstRequest)
{
    makeRuntime();
    const plc::Statistics none = runtime->statistics();
    EXPECT_EQ(none.exchanges, 0);
    EXPECT_EQ(none.good, 0);
    EXPECT_EQ(none.retried, 0);
    EXPECT_EQ(none.failed, 0);
    EXPECT_TRUE(none.failuresByCode.empty());
    EXPECT_TRUE(none.stations.empty());
    EXPECT_EQ(none.passes, 0);
    EXPECT_EQ(none.passesPerSecond, 0.0);
    EXPECT_EQ(none.lastPass.requests, 0);
    EXPECT_EQ(none.lastPass.frames, 0);
    EXPECT_EQ(none.lastPass.registers, 0);
    EXPECT_EQ(none.lastPass.registersUnused, 0);
    EXPECT_EQ(none.lastPass.bits, 0);
    EXPECT_EQ(none.lastPass.bitsUnused, 0);
    EXPECT_EQ(none.writesConfirmed, 0);
    EXPECT_EQ(none.writesFailed, 0);
    EXPECT_EQ(none.readsDone, 0);
    EXPECT_EQ(none.readsFailed, 0);
    EXPECT_EQ(none.readsQueuedAgain, 0);
    EXPECT_EQ(none.writesWaiting, 0);
    const plc::LinkState link = runtime->linkState();
    EXPECT_FALSE(link.connected);
    EXPECT_EQ(link.connects, 0);
    EXPECT_EQ(link.untrusted, 0);
    EXPECT_FALSE(link.closedAtOnce);
    EXPECT_EQ(link.dropped.total(), 0);
}

TEST_F(RuntimeStatistics, OfAStationWithoutRepliesHaveNoRoundTrips)
{
    controller->setSilent(1, true);
    settings.timeoutMs = 20;
    settings.retryLimit = 0;
    startRuntime();
    ASSERT_FALSE(read(variable(9, 0)).done);
    const plc::RoundTrips trips = runtime->statistics().stations.at(1).roundTrips;
    EXPECT_EQ(trips.count(), 0);
    EXPECT_EQ(trips.shortest(), 0);
    EXPECT_EQ(trips.longest(), 0);
    EXPECT_EQ(trips.mean(), 0.0);
}

TEST_F(RuntimeStatistics, CountsWhatVariablesShareOnce)
{
    const PassCost cost =
        after(2, {variable(9, 100, 10), variable(9, 102, 3), variable(9, 100), variable(8, 109 * 16, 32)})
            .lastPass;
    EXPECT_EQ(cost.requests, 1);
    EXPECT_EQ(cost.registers, 11);
    EXPECT_EQ(cost.registersUnused, 0);
}

TEST_F(RuntimeStatistics, CountsNoWritesAndOneShotReadsAmongThePasses)
{
    after(1, {variable(9, 100)});
    for (quint32 value = 0; value < 20; ++value) {
        ASSERT_TRUE(write(variable(9, 7), {value}).confirmed);
        ASSERT_TRUE(read(variable(9, 7)).done);
        EXPECT_EQ(runtime->statistics().lastPass.frames, 1);
    }
}

TEST_F(RuntimeStatistics, KnowsHowManyPassesASecondThereAre)
{
    settings.pollMs = 50;
    const double perSecond = after(10, {variable(9, 100)}).passesPerSecond;
    EXPECT_GT(perSecond, 0.0);
    EXPECT_LE(perSecond, 25.0) << "20 but for what the first took longer";
}

TEST_F(RuntimeStatistics, HaveARateThatFallsWhileAPassIsLate)
{
    settings.timeoutMs = 60000;
    const double before = after(4, {variable(9, 100)}).passesPerSecond;
    controller->setSilent(1, true);
    EXPECT_TRUE(eventually([&] { return runtime->statistics().passesPerSecond < before / 2; }));
}

TEST_F(RuntimeStatistics, HaveNoRateWithoutAConnection)
{
    settings.timeoutMs = 100;
    EXPECT_GT(after(10, {variable(9, 100)}).passesPerSecond, 0.0);
    controller->stop();
    EXPECT_TRUE(eventually([&] { return runtime->statistics().passesPerSecond == 0; }));
}

TEST_F(RuntimeStatistics, KeepsFailuresByTheirReturnCode)
{
    simulator::Settings refusing;
    refusing.refused = {{500, 509}};
    useController(refusing);
    settings.retryLimit = 2;
    const plc::Statistics statistics = after(3, {variable(9, 100), variable(9, 500)});
    const std::map<int, long> failures = statistics.failuresByCode;
    ASSERT_EQ(failures.size(), 1u);
    EXPECT_GT(failures.begin()->first, PLC_LOCAL_LENGTH); // an exception is shorter than what was asked for
    EXPECT_EQ(failures.begin()->second, statistics.failed);
    EXPECT_GE(statistics.failed, 3);
}

TEST_F(RuntimeStatistics, KeepsRoundTripsRetriesAndFailuresApartByStation)
{
    settings.multiStation = true;
    settings.stationPauseMs = 0;
    settings.timeoutMs = 50;
    settings.retryLimit = 1;
    controller->setSilent(7, true);
    const std::map<int, plc::StationStatistics> stations =
        after(3, {variable(9, 100), variable(9, 100, 1, 7)}).stations;
    ASSERT_EQ(stations.size(), 2u);
    EXPECT_GE(stations.at(1).roundTrips.count(), 3);
    EXPECT_GE(stations.at(7).retried, 3);
    EXPECT_EQ(stations.at(7).roundTrips.count(), 0);
    EXPECT_GE(stations.at(7).failuresByCode.at(41), 3);
}

TEST_F(RuntimeStatistics, CountsTheRetriesOfAPassAsFrames)
{
    simulator::Settings refusing;
    refusing.refused = {{500, 509}};
    useController(refusing);
    settings.retryLimit = 2;
    const PassCost cost = after(1, {variable(9, 100), variable(9, 500)}).lastPass;
    EXPECT_EQ(cost.requests, 2);
    EXPECT_EQ(cost.frames, 1 + 3);
}

} // namespace
