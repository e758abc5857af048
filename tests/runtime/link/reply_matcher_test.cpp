#include "runtime/link/reply_matcher.h"

#include <gtest/gtest.h>

namespace
{

using plc::DropReason;
using plc::ReplyMatcher;

QByteArray hex(const char* text)
{
    return QByteArray::fromHex(text);
}

const QByteArray readRegister = hex("0000 0000 0006 01 03 0005 0001");

/// Why the matcher drops \a reply, in words; empty when it passes it on.
QString dropped(ReplyMatcher& matcher, QByteArray reply)
{
    DropReason reason = DropReason::Late;
    return matcher.accept(&reply, &reason) ? QString() : plc::dropReasonWords(reason);
}

TEST(ReplyMatcher, NumbersEachFrameAndLeavesTheRestAsItIs)
{
    ReplyMatcher matcher;
    EXPECT_EQ(matcher.number(readRegister), hex("0001 0000 0006 01 03 0005 0001"));
    EXPECT_EQ(matcher.number(readRegister), hex("0002 0000 0006 01 03 0005 0001"));
}

TEST(ReplyMatcher, NeverUsesNumberZero)
{
    ReplyMatcher matcher;
    for (int sent = 0; sent < 0xFFFF; ++sent)
        matcher.number(readRegister);
    EXPECT_EQ(matcher.number(readRegister).left(2), hex("0001"));
}

TEST(ReplyMatcher, PassesTheMatchingReplyOnWithNumberZero)
{
    ReplyMatcher matcher;
    matcher.number(readRegister);
    QByteArray reply = hex("0001 0000 0005 01 03 02 1234");
    DropReason reason = DropReason::Late;
    EXPECT_TRUE(matcher.accept(&reply, &reason));
    EXPECT_EQ(reply, hex("0000 0000 0005 01 03 02 1234"));
}

TEST(ReplyMatcher, PassesAnExceptionToTheFunctionOn)
{
    ReplyMatcher matcher;
    matcher.number(readRegister);
    EXPECT_EQ(dropped(matcher, hex("0001 0000 0003 01 83 02")), QString());
}

TEST(ReplyMatcher, DropsTheReplyToAnEarlierRequestAsLate)
{
    ReplyMatcher matcher;
    matcher.number(readRegister);
    matcher.number(readRegister);
    EXPECT_EQ(dropped(matcher, hex("0001 0000 0005 01 03 02 9999")), dropReasonWords(DropReason::Late));
    EXPECT_EQ(dropped(matcher, hex("0002 0000 0005 01 03 02 1234")), QString());
}

TEST(ReplyMatcher, DropsASecondReplyAsDoubled)
{
    ReplyMatcher matcher;
    matcher.number(readRegister);
    EXPECT_EQ(dropped(matcher, hex("0001 0000 0005 01 03 02 1234")), QString());
    EXPECT_EQ(dropped(matcher, hex("0001 0000 0005 01 03 02 1234")), dropReasonWords(DropReason::Doubled));
    matcher.number(readRegister);
    EXPECT_EQ(dropped(matcher, hex("0001 0000 0005 01 03 02 1234")), dropReasonWords(DropReason::Doubled));
}

TEST(ReplyMatcher, TakesTheReplyToANumberThatComesRoundUnanswered)
{
    ReplyMatcher matcher;
    matcher.number(readRegister);
    EXPECT_EQ(dropped(matcher, hex("0001 0000 0005 01 03 02 1234")), QString());
    for (int unanswered = 1; unanswered < 0xFFFF; ++unanswered)
        matcher.number(readRegister);
    ASSERT_EQ(matcher.number(readRegister).left(2), hex("0001"));
    EXPECT_EQ(dropped(matcher, hex("0001 0000 0005 01 03 02 1234")), QString());
}

TEST(ReplyMatcher, DropsTheReplyOfAnotherUnit)
{
    ReplyMatcher matcher;
    matcher.number(readRegister);
    EXPECT_EQ(dropped(matcher, hex("0001 0000 0005 02 03 02 1234")), dropReasonWords(DropReason::WrongUnit));
    EXPECT_EQ(dropped(matcher, hex("0001 0000 0005 01 03 02 1234")), QString());
}

TEST(ReplyMatcher, DropsTheReplyToAnotherFunction)
{
    ReplyMatcher matcher;
    matcher.number(readRegister);
    EXPECT_EQ(dropped(matcher, hex("0001 0000 0005 01 01 02 1234")),
              dropReasonWords(DropReason::WrongFunction));
    EXPECT_EQ(dropped(matcher, hex("0001 0000 0003 01 86 02")), dropReasonWords(DropReason::WrongFunction));
}

TEST(ReplyMatcher, DropsAReplyThatDoesNotEchoTheNumber)
{
    ReplyMatcher matcher;
    EXPECT_EQ(dropped(matcher, hex("0000 0000 0005 01 03 02 1234")), dropReasonWords(DropReason::Late));
    matcher.number(readRegister);
    EXPECT_EQ(dropped(matcher, hex("0000 0000 0005 01 03 02 1234")), dropReasonWords(DropReason::Late));
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
