// SPDX-License-Identifier: MIT
// What a reply has against it that its length does not show.

#include "runtime/modbus/reply_fault.h"

#include <gtest/gtest.h>

namespace
{

using plc::FailureKind;

FailureKind fault(const char* request, const char* reply)
{
    return plc::replyFault(QByteArray::fromHex(request), QByteArray::fromHex(reply));
}

const char readTwoRegisters[] = "0007 0000 0006 01 03 0005 0002";
const char readNineCoils[] = "0007 0000 0006 01 01 0005 0009";
const char coilOn[] = "0007 0000 0006 01 05 0005 FF00";
const char oneRegister[] = "0007 0000 0006 01 06 0005 1234";
const char twoRegisters[] = "0007 0000 000B 01 10 0005 0002 04 1234 5678";

TEST(ReplyFault, IsNoneWhereTheReplyIsAsItShouldBe)
{
    EXPECT_EQ(fault(readTwoRegisters, "0000 0000 0007 01 03 04 0001 0002"), FailureKind::None);
    EXPECT_EQ(fault(readNineCoils, "0000 0000 0005 01 01 02 FF01"), FailureKind::None);
    EXPECT_EQ(fault(coilOn, "0000 0000 0006 01 05 0005 FF00"), FailureKind::None);
    EXPECT_EQ(fault(oneRegister, "0000 0000 0006 01 06 0005 1234"), FailureKind::None);
    EXPECT_EQ(fault(twoRegisters, "0000 0000 0006 01 10 0005 0002"), FailureKind::None);
}

TEST(ReplyFault, IsARefusalAtAnyLength)
{
    EXPECT_EQ(fault(oneRegister, "0000 0000 0003 01 86 02"), FailureKind::Exception);
    EXPECT_EQ(fault(oneRegister, "0000 0000 0006 01 86 02 051234"), FailureKind::Exception);
    EXPECT_EQ(fault(readTwoRegisters, "0000 0000 0007 01 83 04 0001 0002"), FailureKind::Exception);
    EXPECT_EQ(fault(readTwoRegisters, "0000 0000 0002 01 83"), FailureKind::Exception);
}

TEST(ReplyFault, IsAnotherAddress)
{
    EXPECT_EQ(fault(coilOn, "0000 0000 0006 01 05 0006 FF00"), FailureKind::OtherAddress);
    EXPECT_EQ(fault(oneRegister, "0000 0000 0006 01 06 0105 1234"), FailureKind::OtherAddress);
    EXPECT_EQ(fault(twoRegisters, "0000 0000 0006 01 10 0004 0002"), FailureKind::OtherAddress);
}

TEST(ReplyFault, IsAnotherValueOrQuantity)
{
    EXPECT_EQ(fault(coilOn, "0000 0000 0006 01 05 0005 0000"), FailureKind::OtherValue);
    EXPECT_EQ(fault(oneRegister, "0000 0000 0006 01 06 0005 3412"), FailureKind::OtherValue);
    EXPECT_EQ(fault(twoRegisters, "0000 0000 0006 01 10 0005 0001"), FailureKind::OtherQuantity);
}

TEST(ReplyFault, IsAnotherByteCount)
{
    EXPECT_EQ(fault(readTwoRegisters, "0000 0000 0007 01 03 02 0001 0002"), FailureKind::OtherByteCount);
    EXPECT_EQ(fault(readNineCoils, "0000 0000 0005 01 01 01 FF01"), FailureKind::OtherByteCount);
}

TEST(ReplyFault, CountsAByteForEachEightCoilsThatWereBegun)
{
    EXPECT_EQ(fault("0007 0000 0006 01 01 0005 0001", "0000 0000 0004 01 01 00 01"),
              FailureKind::OtherByteCount);
    EXPECT_EQ(fault("0007 0000 0006 01 01 0005 0007", "0000 0000 0004 01 01 00 01"),
              FailureKind::OtherByteCount);
    EXPECT_EQ(fault("0007 0000 0006 01 01 0005 0008", "0000 0000 0004 01 01 00 01"),
              FailureKind::OtherByteCount);
    EXPECT_EQ(fault("0007 0000 0006 01 01 0005 0010", "0000 0000 0005 01 01 01 FF01"),
              FailureKind::OtherByteCount);
}

TEST(ReplyFault, IsLeftToTheDriverWhereTheLengthShowsIt)
{
    EXPECT_EQ(fault(readTwoRegisters, ""), FailureKind::None);
    EXPECT_EQ(fault(readTwoRegisters, "0000 0000 0005 01 03 02 0001"), FailureKind::None);
    EXPECT_EQ(fault(oneRegister, "0000 0000 0004 01 06 0009"), FailureKind::None);
}

TEST(ReplyFault, OfARemoteReadIsAnotherByteCount)
{
    const QByteArray read = QByteArray::fromHex("16 01 00 00 01 0009 00000064 0002 00000000 00000000 87");
    const auto remoteFault = [&](const char* reply) {
        return plc::remoteReplyFault(read, QByteArray::fromHex(reply));
    };
    EXPECT_EQ(remoteFault("0000 0000 0007 01 09 04 1234 0007"), FailureKind::None);
    EXPECT_EQ(remoteFault("0000 0000 0007 01 09 02 1234 0007"), FailureKind::OtherByteCount);
    EXPECT_EQ(remoteFault("0000 0000 0003 01 09 04"), FailureKind::OtherByteCount);
    EXPECT_EQ(remoteFault("0000 0000 0003 01 09 00"), FailureKind::None);
}

TEST(ReplyFault, HasWordsUnlessItIsARefusal)
{
    EXPECT_EQ(plc::replyFaultWords(FailureKind::OtherAddress),
              QLatin1String("the controller echoed another address than the one written to"));
    EXPECT_EQ(plc::replyFaultWords(FailureKind::OtherValue),
              QLatin1String("the controller echoed another value than the one written"));
    EXPECT_EQ(plc::replyFaultWords(FailureKind::OtherQuantity),
              QLatin1String("the controller echoed another number of registers than was written"));
    EXPECT_EQ(plc::replyFaultWords(FailureKind::OtherByteCount),
              QLatin1String("the controller announced another number of bytes than what was asked for"));
    EXPECT_EQ(plc::replyFaultWords(FailureKind::Exception), QString());
}

} // namespace
