// SPDX-License-Identifier: MIT
#include "runtime/modbus/dialect.h"

#include "support/hex.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;
using test::fromHex;

const Dialect& modbusTcp = dialectOf(FrameFormat::ModbusTcp);
const Dialect& remote = dialectOf(FrameFormat::Remote);

const QByteArray read = fromHex("0007 0000 0006 03 03 0005 0001");
const QByteArray remoteRead = fromHex("16 000000 03 0009 00000005 0001 0000000000000000 28");

TEST(Dialect, SaysWhatARequestAsksForInItsOwnWay)
{
    EXPECT_EQ(modbusTcp.requestWords(read), QStringLiteral("unit 3: read 1 register from 5"));
    EXPECT_EQ(remote.requestWords(remoteRead), QStringLiteral("station 3: read 9:5"));
}

TEST(Dialect, SaysWhatAReplySaysInItsOwnWay)
{
    EXPECT_EQ(modbusTcp.replyWords(read, fromHex("0007 0000 0005 03 03 02 1234")),
              QStringLiteral("unit 3: registers 4660"));
    EXPECT_EQ(remote.replyWords(remoteRead, fromHex("0000 0000 0005 03 09 02 1234")),
              QStringLiteral("station 3: 4660"));
}

TEST(Dialect, KnowsTheStationOfARequest)
{
    EXPECT_EQ(modbusTcp.stationOf(read), 3);
    EXPECT_EQ(remote.stationOf(remoteRead), 3);
}

TEST(Dialect, ModbusTcpFramesAreTheSameButForTheNumber)
{
    EXPECT_TRUE(modbusTcp.hasNumbers());
    EXPECT_EQ(modbusTcp.withoutNumber(read),
              modbusTcp.withoutNumber(fromHex("0008 0000 0006 03 03 0005 0001")));
    EXPECT_EQ(modbusTcp.withNumberOf(read, fromHex("0000 0000 0005 03 03 02 1234")),
              fromHex("0007 0000 0005 03 03 02 1234"));
}

TEST(Dialect, RemoteFramesAreWhollyThemselves)
{
    EXPECT_FALSE(remote.hasNumbers());
    EXPECT_EQ(remote.withoutNumber(remoteRead), remoteRead);
    const QByteArray reply = fromHex("0000 0000 0005 03 09 02 1234");
    EXPECT_EQ(remote.withNumberOf(remoteRead, reply), reply);
}

TEST(Dialect, AReplyThatHoldsNoNumberGetsNone)
{
    EXPECT_EQ(modbusTcp.withNumberOf(read, fromHex("00")), fromHex("00"));
    EXPECT_EQ(modbusTcp.withNumberOf(QByteArray(), fromHex("0000 0000")), fromHex("0000 0000"));
}

} // namespace
