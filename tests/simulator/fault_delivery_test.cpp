// SPDX-License-Identifier: MIT
// Each fault as a client on loopback meets it.

#include "simulator/simulated_controller.h"

#include "simulator/loopback_client.h"

#include <gmock/gmock.h>

#include <chrono>
#include <stdexcept>

namespace
{

using simulator::Fault;
using simulator::FaultKind;
using simulator::faultList;
using simulator::FaultSettings;
using simulator::Settings;
using simulator::SimulatedController;
using test::eventually;
using test::LoopbackClient;

const char* const write1 = "00 01 00 00 00 06 01 06 00 05 12 34"; // the reply to a write is the same
const char* const write2 = "00 02 00 00 00 06 01 06 00 06 56 78";

constexpr int never = 600000; // ms, far longer than any test

class FaultDelivery : public testing::Test
{
protected:
    void SetUp() override { controller.start(); }

    void always(double FaultSettings::*fault, int lateMs = never)
    {
        FaultSettings settings;
        settings.*fault = 1;
        settings.lateMs = lateMs;
        controller.setFaults(settings);
    }

    /// Sends a request and waits until the fault has hit its reply.
    void sendInto(Fault fault, LoopbackClient& client, const std::string& request)
    {
        const unsigned long before = controller.injected(fault);
        client.send(request);
        EXPECT_TRUE(eventually([&] { return controller.injected(fault) > before; }));
    }

    SimulatedController controller;
};

TEST_F(FaultDelivery, NoReplySendsNothing)
{
    LoopbackClient client(controller.port());
    always(&FaultSettings::noReply);
    sendInto(Fault::NoReply, client, write1);
    controller.setFaults({});
    EXPECT_EQ(client.exchange(write2), write2);
}

TEST_F(FaultDelivery, LateComesNoSoonerThanItsTime)
{
    LoopbackClient client(controller.port());
    always(&FaultSettings::late, 100);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(client.exchange(write1), write1);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(100));
}

bool startsWith(Fault first, Fault second, const FaultSettings& settings)
{
    simulator::FaultPlan plan(settings);
    simulator::FaultPlan::Position position;
    return plan.draw(position).fault == first && plan.draw(position).fault == second;
}

// Both requests arrive in one piece, so that only a pause of 700 ms inside the controller could turn the
// order round.
TEST_F(FaultDelivery, LateLetsTheNextReplyPass)
{
    FaultSettings settings;
    settings.late = 0.5;
    settings.lateMs = 700;
    while (!startsWith(Fault::Late, Fault::None, settings))
        ++settings.seed;
    controller.setFaults(settings);
    LoopbackClient client(controller.port());
    client.send(std::string(write1) + " " + write2);
    EXPECT_EQ(client.receiveFrame(), write2);
    EXPECT_EQ(client.receiveFrame(), write1);
}

TEST_F(FaultDelivery, LateDoesNotHoldUpAnotherConnection)
{
    LoopbackClient client(controller.port());
    always(&FaultSettings::late);
    sendInto(Fault::Late, client, write1);
    controller.setFaults({});
    LoopbackClient other(controller.port());
    EXPECT_EQ(other.exchange(write2), write2);
    EXPECT_EQ(client.bytesWaiting(), 0u);
}

TEST_F(FaultDelivery, LateRepliesDoNotDelayTheStop)
{
    LoopbackClient client(controller.port());
    always(&FaultSettings::late);
    sendInto(Fault::Late, client, write1);
    controller.stop();
    EXPECT_EQ(client.receiveUntilClosed(), "");
}

TEST_F(FaultDelivery, LateReachesAClientThatStoppedSending)
{
    LoopbackClient client(controller.port());
    always(&FaultSettings::late, 50);
    client.send(write1);
    client.stopSending();
    EXPECT_EQ(client.receiveUntilClosed(), write1);
}

TEST_F(FaultDelivery, DoubledComesTwice)
{
    LoopbackClient client(controller.port());
    always(&FaultSettings::doubled);
    EXPECT_EQ(client.exchange(write1), write1);
    EXPECT_EQ(client.receiveFrame(), write1);
}

TEST_F(FaultDelivery, SplitArrivesWholeAndInOrder)
{
    LoopbackClient client(controller.port());
    always(&FaultSettings::split);
    client.send(std::string(write1) + " " + write2);
    EXPECT_EQ(client.receiveFrame(), write1);
    EXPECT_EQ(client.receiveFrame(), write2);
}

TEST_F(FaultDelivery, GluedIsHeldUntilTheNextReply)
{
    LoopbackClient client(controller.port());
    always(&FaultSettings::glued);
    sendInto(Fault::Glued, client, write1);
    EXPECT_EQ(client.bytesWaiting(), 0u);
    client.send(write2);
    EXPECT_EQ(client.receiveFrame(), write1);
    EXPECT_EQ(client.receiveFrame(), write2);
}

TEST_F(FaultDelivery, GluedComesAloneWhenNoOtherFollows)
{
    LoopbackClient client(controller.port());
    always(&FaultSettings::glued, 20);
    EXPECT_EQ(client.exchange(write1), write1);
}

TEST_F(FaultDelivery, CutSendsFewerBytesThanTheHeaderSays)
{
    LoopbackClient client(controller.port());
    always(&FaultSettings::cut);
    sendInto(Fault::Cut, client, write1);
    client.stopSending();
    const std::string received = client.receiveUntilClosed();
    EXPECT_THAT(write1, testing::StartsWith(received));
    EXPECT_GE(received.size(), 2u);
    EXPECT_LT(received.size(), std::string(write1).size());
}

TEST_F(FaultDelivery, LongerIsAWholeFrameWithMoreThanWasAsked)
{
    LoopbackClient client(controller.port());
    always(&FaultSettings::longer);
    const std::string reply = client.exchange("00 03 00 00 00 06 01 03 00 05 00 01");
    EXPECT_THAT(reply, testing::StartsWith("00 03 00 00 00 07 01 03 04 00 00 "));
    EXPECT_EQ(test::fromHex(reply).size(), 13u);
    controller.setFaults({});
    EXPECT_EQ(client.exchange(write2), write2);
}

TEST_F(FaultDelivery, WrongUnitAnswersForTheNextUnit)
{
    LoopbackClient client(controller.port());
    always(&FaultSettings::wrongUnit);
    EXPECT_EQ(client.exchange(write1), "00 01 00 00 00 06 02 06 00 05 12 34");
}

TEST_F(FaultDelivery, ExceptionRefusesAndDoesNotExecute)
{
    LoopbackClient client(controller.port());
    always(&FaultSettings::exception);
    EXPECT_EQ(client.exchange(write1), "00 01 00 00 00 03 01 86 04");
    EXPECT_EQ(controller.memory().holdingRegister(1, 5), 0);
}

TEST_F(FaultDelivery, CloseEndsTheConnectionInsteadOfTheReply)
{
    LoopbackClient client(controller.port());
    EXPECT_EQ(client.exchange(write1), write1);
    always(&FaultSettings::close);
    client.send(write2);
    EXPECT_EQ(client.receiveUntilClosed(), "");
    controller.setFaults({});
    LoopbackClient again(controller.port());
    EXPECT_EQ(again.exchange(write2), write2);
}

TEST_F(FaultDelivery, CloseComesAfterTheReplyToTheRequestBefore)
{
    FaultSettings settings;
    settings.close = 0.5;
    while (!startsWith(Fault::None, Fault::Close, settings))
        ++settings.seed;
    controller.setFaults(settings);
    LoopbackClient client(controller.port());
    client.send(std::string(write1) + " " + write2);
    EXPECT_EQ(client.receiveUntilClosed(), write1);
}

TEST_F(FaultDelivery, PaddedExceptionIsAsLongAsTheReplyAndDoesNotExecute)
{
    LoopbackClient client(controller.port());
    always(&FaultSettings::paddedException);
    for (const char* request : {write1, "00 01 00 00 00 0B 01 10 00 05 00 02 04 00 01 FF FE"}) {
        const test::Bytes reply = test::fromHex(client.exchange(request));
        ASSERT_EQ(reply.size(), 12u);
        EXPECT_EQ(simulator::get16(reply, simulator::lengthOffset), 6);
        EXPECT_EQ(reply[7], 0x80 | test::fromHex(request)[7]);
        EXPECT_EQ(reply[8], 4);
    }
    EXPECT_EQ(controller.memory().holdingRegister(1, 5), 0);
    EXPECT_EQ(test::fromHex(client.exchange("00 01 00 00 00 06 01 03 00 05 00 0A")).size(), 9u + 20);
    EXPECT_EQ(test::fromHex(client.exchange("00 01 00 00 00 06 01 01 00 05 00 0A")).size(), 9u + 2);
}

TEST_F(FaultDelivery, WrongEchoHitsWritesAndLeavesReadsAlone)
{
    LoopbackClient client(controller.port());
    always(&FaultSettings::wrongEcho);
    const std::string reply = client.exchange(write1);
    EXPECT_TRUE(reply == "00 01 00 00 00 06 01 06 00 04 12 34" ||
                reply == "00 01 00 00 00 06 01 06 00 05 12 35")
        << reply;
    EXPECT_EQ(client.exchange("00 03 00 00 00 06 01 03 00 05 00 01"), "00 03 00 00 00 05 01 03 02 12 34");
    EXPECT_EQ(controller.injected(Fault::WrongEcho), 1u);
    EXPECT_EQ(controller.injected(Fault::None), 1u);
}

TEST_F(FaultDelivery, WrongByteCountHitsReadsAndLeavesWritesAlone)
{
    LoopbackClient client(controller.port());
    always(&FaultSettings::wrongByteCount);
    EXPECT_EQ(client.exchange(write1), write1);
    const std::string reply = client.exchange("00 03 00 00 00 06 01 03 00 05 00 01");
    EXPECT_TRUE(reply == "00 03 00 00 00 05 01 03 01 12 34" || reply == "00 03 00 00 00 05 01 03 03 12 34")
        << reply;
    EXPECT_EQ(controller.injected(Fault::WrongByteCount), 1u);
}

TEST_F(FaultDelivery, WrongLengthSendsAsManyBytesAsWithoutIt)
{
    LoopbackClient client(controller.port());
    always(&FaultSettings::wrongLength);
    client.send(write1);
    client.stopSending();
    const std::string received = client.receiveUntilClosed();
    EXPECT_TRUE(received == "00 01 00 00 00 05 01 06 00 05 12 34" ||
                received == "00 01 00 00 00 07 01 06 00 05 12 34")
        << received;
}

TEST_F(FaultDelivery, CloseAfterReplySendsTheReplyAndNothingMore)
{
    always(&FaultSettings::closeAfterReply);
    for (int i = 0; i < 3; ++i) {
        LoopbackClient client(controller.port());
        client.send(std::string(write1) + " " + write2);
        EXPECT_EQ(client.receiveUntilClosed(), write1);
    }
    EXPECT_EQ(controller.requests(), 3u);
}

TEST_F(FaultDelivery, CloseAfterReplyDoesNotWaitForLateReplies)
{
    FaultSettings settings;
    settings.late = 0.5;
    settings.closeAfterReply = 0.5;
    settings.lateMs = never;
    while (!startsWith(Fault::Late, Fault::CloseAfterReply, settings))
        ++settings.seed;
    controller.setFaults(settings);
    LoopbackClient client(controller.port());
    client.send(std::string(write1) + " " + write2);
    EXPECT_EQ(client.receiveUntilClosed(), write2);
}

TEST_F(FaultDelivery, DelayComesNoSoonerThanItsShortestTimeAndKeepsTheOrder)
{
    FaultSettings settings;
    settings.delay = 0.5;
    settings.delayFromMs = 60;
    settings.delayToMs = 80;
    while (!startsWith(Fault::Delay, Fault::None, settings))
        ++settings.seed;
    controller.setFaults(settings);
    LoopbackClient client(controller.port());
    const auto start = std::chrono::steady_clock::now();
    client.send(std::string(write1) + " " + write2);
    EXPECT_EQ(client.receiveFrame(), write1);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(60));
    EXPECT_EQ(client.receiveFrame(), write2);
}

TEST(Delay, HoldsEveryReplyOfEveryConnection)
{
    Settings settings;
    settings.delayMs = 50;
    SimulatedController controller(settings);
    controller.start();
    LoopbackClient client(controller.port());
    LoopbackClient other(controller.port());
    const auto start = std::chrono::steady_clock::now();
    client.send(std::string(write1) + " " + write2);
    other.send(write2);
    EXPECT_EQ(client.receiveFrame(), write1);
    EXPECT_EQ(client.receiveFrame(), write2);
    EXPECT_EQ(other.receiveFrame(), write2);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50));
}

TEST(Delay, MustNotBeNegative)
{
    Settings settings;
    settings.delayMs = -1;
    EXPECT_THROW(SimulatedController{settings}, std::invalid_argument);
}

TEST_F(FaultDelivery, EveryFaultButTheExceptionsExecutesTheRequest)
{
    for (const FaultKind& kind : faultList()) {
        const bool hits = simulator::canHit(kind.fault, simulator::ReplyKind::ToWrite);
        if (!hits || !simulator::isExecuted(kind.fault))
            continue;
        controller.memory().setHoldingRegister(1, 5, 0);
        LoopbackClient client(controller.port());
        always(kind.probability);
        sendInto(kind.fault, client, write1);
        EXPECT_EQ(controller.memory().holdingRegister(1, 5), 0x1234) << kind.name;
    }
}

TEST_F(FaultDelivery, CountsEachFault)
{
    LoopbackClient client(controller.port());
    always(&FaultSettings::wrongUnit);
    client.exchange(write1);
    client.exchange(write1);
    controller.setFaults({});
    client.exchange(write1);
    EXPECT_EQ(controller.injected(Fault::WrongUnit), 2u);
    EXPECT_EQ(controller.injected(Fault::None), 1u);
    EXPECT_EQ(controller.injected(Fault::Cut), 0u);
}

TEST_F(FaultDelivery, NeverHitsBroadcastsAndSilentUnits)
{
    always(&FaultSettings::close);
    controller.setSilent(9, true);
    LoopbackClient client(controller.port());
    client.send("00 01 00 00 00 06 00 06 00 05 12 34 00 01 00 00 00 06 09 06 00 05 12 34");
    EXPECT_TRUE(eventually([&] { return controller.requests() == 2; }));
    controller.setFaults({});
    EXPECT_EQ(client.exchange(write1), write1);
    EXPECT_EQ(controller.injected(Fault::Close), 0u);
}

TEST_F(FaultDelivery, KeepsItsFaultsWhenNewOnesAreRefused)
{
    always(&FaultSettings::wrongUnit);
    FaultSettings wrong;
    wrong.late = 7;
    EXPECT_THROW(controller.setFaults(wrong), std::invalid_argument);
    LoopbackClient client(controller.port());
    EXPECT_EQ(client.exchange(write1), "00 01 00 00 00 06 02 06 00 05 12 34");
}

/// The faults that hit 60 writes on one connection.
std::vector<Fault> faultsOfAConnection(unsigned seed)
{
    std::vector<Fault> faults;
    Settings settings;
    for (const auto fault : {&FaultSettings::noReply, &FaultSettings::doubled, &FaultSettings::split,
                             &FaultSettings::cut, &FaultSettings::longer, &FaultSettings::exception})
        settings.faults.*fault = 0.15;
    settings.faults.seed = seed;
    settings.trace = [&faults](const simulator::TraceEntry& entry) {
        if (entry.isReply)
            faults.push_back(entry.fault);
    };
    SimulatedController controller(settings);
    controller.start();
    LoopbackClient client(controller.port());
    for (int i = 0; i < 60; ++i)
        client.send(write1);
    EXPECT_TRUE(eventually([&] { return controller.requests() == 60; }));
    controller.stop();
    return faults;
}

TEST(FaultSequence, IsTheSameForTheSameSeedAndRequests)
{
    const std::vector<Fault> faults = faultsOfAConnection(5);
    EXPECT_EQ(faults.size(), 60u);
    EXPECT_EQ(faultsOfAConnection(5), faults);
}

TEST(FaultSequence, IsAnotherForAnotherSeed)
{
    EXPECT_NE(faultsOfAConnection(5), faultsOfAConnection(6));
}

} // namespace
