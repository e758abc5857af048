// SPDX-License-Identifier: MIT
#include "runtime/link/modbus_matcher.h"

#include "support/hex.h"

#include <gtest/gtest.h>

namespace
{

using test::fromHex;

using plc::DropReason;
using plc::ModbusMatcher;

const QByteArray readRegister = fromHex("0000 0000 0006 01 03 0005 0001");

/// Why the matcher drops \a reply, in words; empty when it passes it on.
QString dropped(ModbusMatcher& matcher, QByteArray reply)
{
    DropReason reason = DropReason::Late;
    return matcher.accept(&reply, &reason) ? QString() : plc::dropReasonWords(reason);
}

/// A reply to the first request that came alone.
bool isAcceptedAlone(ModbusMatcher& matcher, QByteArray reply = fromHex("0001 0000 0005 01 03 02 1234"))
{
    return matcher.acceptAlone(&reply);
}

TEST(ModbusMatcher, AReplyThatCameAloneIsAcceptedOnceWithNumberZero)
{
    ModbusMatcher matcher;
    matcher.prepare(readRegister);
    QByteArray reply = fromHex("0001 0000 0005 01 03 02 1234");
    EXPECT_TRUE(matcher.acceptAlone(&reply));
    EXPECT_EQ(reply, fromHex("0000 0000 0005 01 03 02 1234"));
    EXPECT_FALSE(isAcceptedAlone(matcher));
}

TEST(ModbusMatcher, AnotherReplyThatCameAloneIsLeftAsItIs)
{
    for (const char* const hex :
         {"0002 0000 0005 01 03 02 1234", "0001 0000 0005 02 03 02 1234", "0001 0000 0005 01 04 02 1234"}) {
        ModbusMatcher matcher;
        matcher.prepare(readRegister);
        QByteArray reply = fromHex(hex);
        EXPECT_FALSE(matcher.acceptAlone(&reply));
        EXPECT_EQ(reply, fromHex(hex));
        EXPECT_TRUE(isAcceptedAlone(matcher)) << "it is still waited for";
    }
}

TEST(ModbusMatcher, WhileAReplyIsOwedNoneIsAcceptedAsAlone)
{
    ModbusMatcher matcher;
    matcher.gaveUp(fromHex("0009 0000 0006 01 03 0005 0001"));
    matcher.prepare(readRegister);
    EXPECT_FALSE(isAcceptedAlone(matcher)) << "it may have been put together of two";
    matcher.connectedAnew();
    EXPECT_TRUE(isAcceptedAlone(matcher));
}

TEST(ModbusMatcher, ASecondReplyToARequestThatWentOutWithoutANumberIsDropped)
{
    ModbusMatcher matcher;
    matcher.expect(readRegister, 0);
    EXPECT_EQ(dropped(matcher, fromHex("0000 0000 0005 01 03 02 1234")), QString());
    EXPECT_EQ(dropped(matcher, fromHex("0000 0000 0005 01 03 02 1234")), dropReasonWords(DropReason::Late));
}

TEST(ModbusMatcher, NumbersEachFrameAndLeavesTheRestAsItIs)
{
    ModbusMatcher matcher;
    EXPECT_EQ(matcher.prepare(readRegister), fromHex("0001 0000 0006 01 03 0005 0001"));
    EXPECT_EQ(matcher.prepare(readRegister), fromHex("0002 0000 0006 01 03 0005 0001"));
}

TEST(ModbusMatcher, LeavesAFrameAloneThatIsStillHeld)
{
    ModbusMatcher matcher;
    const QByteArray first = matcher.prepare(readRegister);
    matcher.prepare(fromHex("0000 0000 0006 01 01 0000 0008"));
    EXPECT_EQ(first, fromHex("0001 0000 0006 01 03 0005 0001"));
}

TEST(ModbusMatcher, MatchesNothingBeforeTheFirstRequest)
{
    ModbusMatcher matcher;
    EXPECT_NE(dropped(matcher, fromHex("0000 0000 0005 00 00 02 1234")), QString());
}

TEST(ModbusMatcher, WritesTheHighByteOfANumberFirst)
{
    ModbusMatcher matcher;
    QByteArray frame;
    for (int sent = 0; sent < 0x0102; ++sent)
        frame = matcher.prepare(readRegister);
    EXPECT_EQ(frame, fromHex("0102 0000 0006 01 03 0005 0001"));
    EXPECT_EQ(dropped(matcher, fromHex("0102 0000 0005 01 03 02 1234")), QString());
}

TEST(ModbusMatcher, NeverUsesNumberZero)
{
    ModbusMatcher matcher;
    for (int sent = 0; sent < 0xFFFF; ++sent)
        matcher.prepare(readRegister);
    EXPECT_EQ(matcher.prepare(readRegister).left(2), fromHex("0001"));
}

TEST(ModbusMatcher, PassesTheMatchingReplyOnWithNumberZero)
{
    ModbusMatcher matcher;
    matcher.prepare(readRegister);
    QByteArray reply = fromHex("0001 0000 0005 01 03 02 1234");
    DropReason reason = DropReason::Late;
    EXPECT_TRUE(matcher.accept(&reply, &reason));
    EXPECT_EQ(reply, fromHex("0000 0000 0005 01 03 02 1234"));
}

TEST(ModbusMatcher, PassesAnExceptionToTheFunctionOn)
{
    ModbusMatcher matcher;
    matcher.prepare(readRegister);
    EXPECT_EQ(dropped(matcher, fromHex("0001 0000 0003 01 83 02")), QString());
}

TEST(ModbusMatcher, DropsTheReplyToAnEarlierRequestAsLate)
{
    ModbusMatcher matcher;
    matcher.prepare(readRegister);
    matcher.prepare(readRegister);
    EXPECT_EQ(dropped(matcher, fromHex("0001 0000 0005 01 03 02 9999")), dropReasonWords(DropReason::Late));
    EXPECT_EQ(dropped(matcher, fromHex("0002 0000 0005 01 03 02 1234")), QString());
}

TEST(ModbusMatcher, DropsAReplyBeforeTheOneThatWasTakenAsLate)
{
    ModbusMatcher matcher;
    matcher.prepare(readRegister);
    matcher.prepare(readRegister);
    EXPECT_EQ(dropped(matcher, fromHex("0002 0000 0005 01 03 02 1234")), QString());
    EXPECT_EQ(dropped(matcher, fromHex("0001 0000 0005 01 03 02 9999")), dropReasonWords(DropReason::Late));
    matcher.prepare(readRegister);
    EXPECT_EQ(dropped(matcher, fromHex("0001 0000 0005 01 03 02 9999")), dropReasonWords(DropReason::Late));
    EXPECT_EQ(dropped(matcher, fromHex("0002 0000 0005 01 03 02 9999")),
              dropReasonWords(DropReason::Doubled));
}

TEST(ModbusMatcher, DropsASecondReplyAsDoubled)
{
    ModbusMatcher matcher;
    matcher.prepare(readRegister);
    EXPECT_EQ(dropped(matcher, fromHex("0001 0000 0005 01 03 02 1234")), QString());
    EXPECT_EQ(dropped(matcher, fromHex("0001 0000 0005 01 03 02 1234")),
              dropReasonWords(DropReason::Doubled));
    matcher.prepare(readRegister);
    EXPECT_EQ(dropped(matcher, fromHex("0001 0000 0005 01 03 02 1234")),
              dropReasonWords(DropReason::Doubled));
}

TEST(ModbusMatcher, TakesTheReplyToANumberThatComesRoundUnanswered)
{
    ModbusMatcher matcher;
    matcher.prepare(readRegister);
    EXPECT_EQ(dropped(matcher, fromHex("0001 0000 0005 01 03 02 1234")), QString());
    for (int unanswered = 1; unanswered < 0xFFFF; ++unanswered)
        matcher.prepare(readRegister);
    ASSERT_EQ(matcher.prepare(readRegister).left(2), fromHex("0001"));
    EXPECT_EQ(dropped(matcher, fromHex("0001 0000 0005 01 03 02 1234")), QString());
}

TEST(ModbusMatcher, DropsTheReplyOfAnotherUnit)
{
    ModbusMatcher matcher;
    matcher.prepare(readRegister);
    EXPECT_EQ(dropped(matcher, fromHex("0001 0000 0005 02 03 02 1234")),
              dropReasonWords(DropReason::WrongUnit));
    EXPECT_EQ(dropped(matcher, fromHex("0001 0000 0005 01 03 02 1234")), QString());
}

TEST(ModbusMatcher, DropsTheReplyToAnotherFunction)
{
    ModbusMatcher matcher;
    matcher.prepare(readRegister);
    EXPECT_EQ(dropped(matcher, fromHex("0001 0000 0005 01 01 02 1234")),
              dropReasonWords(DropReason::WrongFunction));
}

TEST(ModbusMatcher, DropsAReplyThatDoesNotEchoTheNumber)
{
    ModbusMatcher matcher;
    EXPECT_EQ(dropped(matcher, fromHex("0000 0000 0005 01 03 02 1234")), dropReasonWords(DropReason::Late));
    matcher.prepare(readRegister);
    EXPECT_EQ(dropped(matcher, fromHex("0000 0000 0005 01 03 02 1234")), dropReasonWords(DropReason::Late));
}

TEST(DropCounts, CountsEachReasonByItself)
{
    plc::DropCounts counts;
    counts.count(DropReason::Late);
    counts.count(DropReason::Doubled);
    counts.count(DropReason::Doubled);
    counts.count(DropReason::WrongUnit);
    counts.count(DropReason::WrongFunction);
    EXPECT_EQ(counts.late, 1);
    EXPECT_EQ(counts.doubled, 2);
    EXPECT_EQ(counts.wrongUnit, 1);
    EXPECT_EQ(counts.wrongFunction, 1);
    EXPECT_EQ(counts.total(), 5);
}

} // namespace
