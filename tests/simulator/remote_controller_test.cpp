// SPDX-License-Identifier: MIT
// The simulated controller with remote frames, through a socket.
#include "simulator/simulated_controller.h"

#include "simulator/remote_frames.h"

#include <gtest/gtest.h>

namespace
{

using simulator::Bytes;
using simulator::Fault;
using simulator::FaultSettings;
using simulator::SimulatedController;
using test::eventually;
using test::LoopbackClient;
using test::remoteRead;
using test::remoteWrite;
using test::toHex;

const char* const reply700 = "00 00 00 00 00 05 01 09 02 12 34";
const char* const remoteWriteReply = "00 00 00 00 00 06 01 09 02 BC 00 01";

simulator::Settings remoteSettings()
{
    simulator::Settings settings;
    settings.remote = true;
    return settings;
}

class RemoteControllerTest : public testing::Test
{
protected:
    RemoteControllerTest()
    {
        controller.memory().setHoldingRegister(1, 700, 0x1234);
        controller.start();
    }

    std::string exchange(LoopbackClient& client, const Bytes& request)
    {
        client.send(request);
        return client.receiveFrame();
    }

    void useFault(double FaultSettings::*probability)
    {
        FaultSettings faults;
        faults.*probability = 1;
        faults.lateMs = 30;
        controller.setFaults(faults);
    }

    /// Shows that nothing came in front of the reply to this read.
    void expectNothingBeforeTheNextReply(LoopbackClient& client)
    {
        controller.setFaults({});
        EXPECT_EQ(exchange(client, remoteRead(1, 9, 700, 1)), reply700);
    }

    SimulatedController controller{remoteSettings()};
    const Bytes read700 = remoteRead(1, 9, 700, 1);
    const Bytes write700 = remoteWrite(1, 9, 700, 1, {0x78, 0x56});
};

TEST_F(RemoteControllerTest, AnswersReadsAndWrites)
{
    LoopbackClient client(controller.port());
    EXPECT_EQ(exchange(client, read700), reply700);
    EXPECT_EQ(exchange(client, write700), remoteWriteReply);
    EXPECT_EQ(controller.memory().holdingRegister(1, 700), 0x5678);
    EXPECT_EQ(controller.requests(), 2u);
    EXPECT_EQ(controller.badFrames(), 0u);
}

TEST_F(RemoteControllerTest, TakesAWriteLongerThanItsLengthByteInPieces)
{
    LoopbackClient client(controller.port());
    const Bytes frame = remoteWrite(1, 9, 1000, 125, Bytes(250, 7));
    client.send(Bytes(frame.begin(), frame.begin() + 30));
    client.send(Bytes(frame.begin() + 30, frame.end()));
    EXPECT_EQ(client.receiveFrame(), "00 00 00 00 00 06 01 09 03 E8 00 7D");
    EXPECT_EQ(controller.memory().holdingRegister(1, 1124), 0x0707);
}

TEST_F(RemoteControllerTest, CountsABadSumAnswersNothingAndGoesOn)
{
    LoopbackClient client(controller.port());
    Bytes bad = write700;
    ++bad.back();
    client.send(bad);
    ASSERT_TRUE(eventually([&] { return controller.badFrames() == 1; }));
    EXPECT_EQ(controller.memory().holdingRegister(1, 700), 0x1234);
    EXPECT_EQ(exchange(client, read700), reply700);
    EXPECT_EQ(controller.requests(), 1u);
}

TEST_F(RemoteControllerTest, CountsABadLengthAnswersNothingAndGoesOn)
{
    LoopbackClient client(controller.port());
    Bytes bad = read700;
    ++bad[0];
    ++bad.back();
    client.send(bad);
    ASSERT_TRUE(eventually([&] { return controller.badFrames() == 1; }));
    EXPECT_EQ(exchange(client, read700), reply700);
    EXPECT_EQ(controller.requests(), 1u);
}

TEST_F(RemoteControllerTest, ExecutesABroadcastWithoutAnAnswer)
{
    LoopbackClient client(controller.port());
    client.send(remoteWrite(0, 9, 701, 1, {1, 0}));
    expectNothingBeforeTheNextReply(client);
    EXPECT_EQ(controller.memory().holdingRegister(1, 701), 1);
}

TEST_F(RemoteControllerTest, LeavesASilentUnitAlone)
{
    LoopbackClient client(controller.port());
    controller.memory().setHoldingRegister(2, 700, 1);
    controller.setSilent(2, true);
    client.send(remoteWrite(2, 9, 700, 1, {2, 0}));
    client.send(remoteWrite(0, 9, 700, 1, {0x34, 0x12}));
    expectNothingBeforeTheNextReply(client);
    EXPECT_EQ(controller.memory().holdingRegister(2, 700), 1);
}

TEST_F(RemoteControllerTest, SendsNoReplyButExecutes)
{
    LoopbackClient client(controller.port());
    useFault(&FaultSettings::noReply);
    client.send(remoteWrite(1, 9, 701, 1, {9, 0}));
    ASSERT_TRUE(eventually([&] { return controller.injected(Fault::NoReply) == 1; }));
    expectNothingBeforeTheNextReply(client);
    EXPECT_EQ(controller.memory().holdingRegister(1, 701), 9);
}

TEST_F(RemoteControllerTest, NeitherExecutesNorAnswersWhereModbusHasAnException)
{
    LoopbackClient client(controller.port());
    useFault(&FaultSettings::exception);
    client.send(remoteWrite(1, 9, 701, 1, {9, 0}));
    ASSERT_TRUE(eventually([&] { return controller.injected(Fault::Exception) == 1; }));
    expectNothingBeforeTheNextReply(client);
    EXPECT_EQ(controller.memory().holdingRegister(1, 701), 0);
}

TEST_F(RemoteControllerTest, SendsALateReplyBehindALaterOne)
{
    LoopbackClient client(controller.port());
    useFault(&FaultSettings::late);
    client.send(write700);
    ASSERT_TRUE(eventually([&] { return controller.injected(Fault::Late) == 1; }));
    controller.setFaults({});
    EXPECT_EQ(exchange(client, remoteRead(1, 9, 701, 1)), "00 00 00 00 00 05 01 09 02 00 00");
    EXPECT_EQ(client.receiveFrame(), remoteWriteReply);
}

TEST_F(RemoteControllerTest, SendsAReplyTwice)
{
    LoopbackClient client(controller.port());
    useFault(&FaultSettings::doubled);
    EXPECT_EQ(exchange(client, read700), reply700);
    EXPECT_EQ(client.receiveFrame(), reply700);
}

TEST_F(RemoteControllerTest, SendsAReplyByteByByte)
{
    LoopbackClient client(controller.port());
    useFault(&FaultSettings::split);
    EXPECT_EQ(exchange(client, read700), reply700);
}

TEST_F(RemoteControllerTest, GluesAReplyToTheNext)
{
    LoopbackClient client(controller.port());
    useFault(&FaultSettings::glued);
    client.send(write700);
    ASSERT_TRUE(eventually([&] { return controller.injected(Fault::Glued) == 1; }));
    controller.setFaults({});
    client.send(remoteRead(1, 9, 701, 1));
    EXPECT_EQ(client.receiveFrame(), remoteWriteReply);
    EXPECT_EQ(client.receiveFrame(), "00 00 00 00 00 05 01 09 02 00 00");
}

TEST_F(RemoteControllerTest, CutsAReply)
{
    LoopbackClient client(controller.port());
    useFault(&FaultSettings::cut);
    client.send(read700);
    client.stopSending();
    const std::string received = client.receiveUntilClosed();
    EXPECT_GE(received.size(), 2u);
    EXPECT_LT(received.size(), std::string(reply700).size());
    EXPECT_EQ(std::string(reply700).substr(0, received.size()), received);
}

TEST_F(RemoteControllerTest, GivesTwoBytesMoreInEveryAreaAndItsByteCountSaysSo)
{
    LoopbackClient client(controller.port());
    useFault(&FaultSettings::longer);
    EXPECT_EQ(exchange(client, read700).substr(0, 32), "00 00 00 00 00 07 01 09 04 12 34");
    EXPECT_EQ(exchange(client, remoteRead(1, 3, 0, 1)).substr(0, 29), "00 00 00 00 00 06 01 03 03 00");
}

// Area 3 has the number of a Modbus function that gives a byte count.
TEST_F(RemoteControllerTest, GivesTwoBytesMoreToAWriteWithoutChangingItsElement)
{
    LoopbackClient client(controller.port());
    useFault(&FaultSettings::longer);
    EXPECT_EQ(exchange(client, remoteWrite(1, 3, 0x0102, 1, {1})).substr(0, 35),
              "00 00 00 00 00 08 01 03 01 02 00 01");
}

TEST_F(RemoteControllerTest, AnswersFromTheWrongStation)
{
    LoopbackClient client(controller.port());
    useFault(&FaultSettings::wrongUnit);
    EXPECT_EQ(exchange(client, read700), "00 00 00 00 00 05 02 09 02 12 34");
}

TEST_F(RemoteControllerTest, ClosesTheConnection)
{
    LoopbackClient client(controller.port());
    useFault(&FaultSettings::close);
    client.send(read700);
    EXPECT_EQ(client.receiveUntilClosed(), "");
}

TEST_F(RemoteControllerTest, SendsNoPaddedExceptionAndDoesNotExecute)
{
    LoopbackClient client(controller.port());
    useFault(&FaultSettings::paddedException);
    client.send(remoteWrite(1, 9, 701, 1, {9, 0}));
    ASSERT_TRUE(eventually([&] { return controller.injected(Fault::PaddedException) == 1; }));
    expectNothingBeforeTheNextReply(client);
    EXPECT_EQ(controller.memory().holdingRegister(1, 701), 0);
}

TEST_F(RemoteControllerTest, EchoesAnotherElementOrAnotherCount)
{
    LoopbackClient client(controller.port());
    useFault(&FaultSettings::wrongEcho);
    const std::string reply = exchange(client, write700);
    EXPECT_TRUE(reply == "00 00 00 00 00 06 01 09 02 BD 00 01" ||
                reply == "00 00 00 00 00 06 01 09 02 BC 00 00")
        << reply;
    EXPECT_EQ(exchange(client, remoteRead(1, 9, 700, 1)), "00 00 00 00 00 05 01 09 02 56 78");
}

TEST_F(RemoteControllerTest, CountsOneByteMoreOrLessThanThereAre)
{
    LoopbackClient client(controller.port());
    useFault(&FaultSettings::wrongByteCount);
    EXPECT_EQ(exchange(client, write700), remoteWriteReply);
    const std::string reply = exchange(client, remoteRead(1, 9, 700, 1));
    EXPECT_TRUE(reply == "00 00 00 00 00 05 01 09 01 56 78" || reply == "00 00 00 00 00 05 01 09 03 56 78")
        << reply;
}

TEST_F(RemoteControllerTest, ClosesTheConnectionBehindAReply)
{
    LoopbackClient client(controller.port());
    useFault(&FaultSettings::closeAfterReply);
    client.send(write700);
    EXPECT_EQ(client.receiveUntilClosed(), remoteWriteReply);
}

} // namespace
