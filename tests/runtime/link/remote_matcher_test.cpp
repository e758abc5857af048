// SPDX-License-Identifier: MIT
#include "runtime/link/remote_matcher.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

const QByteArray readWords = QByteArray::fromHex("16000000010009000000640002000000000000000086");
const QByteArray writeWord = QByteArray::fromHex("180001000100090000006400010000000000000000"
                                                 "3412ce");

const QByteArray wordsReply = QByteArray::fromHex("00000000000701090412340007");
const QByteArray writeReply = QByteArray::fromHex("000000000006010900640001");

/// \return the reason why a reply does not fit; nothing when it does
std::optional<DropReason> objection(RemoteMatcher* matcher, QByteArray reply)
{
    DropReason reason = DropReason::Late;
    return matcher->accept(&reply, &reason) ? std::nullopt : std::make_optional(reason);
}

std::optional<DropReason> objectionToRead(const char* hex)
{
    RemoteMatcher matcher;
    matcher.expect(readWords, 13);
    return objection(&matcher, QByteArray::fromHex(hex));
}

std::optional<DropReason> objectionToWrite(const char* hex)
{
    RemoteMatcher matcher;
    matcher.expect(writeWord, 12);
    return objection(&matcher, QByteArray::fromHex(hex));
}

} // namespace

TEST(RemoteMatcher, TakesTheReplyToARead)
{
    EXPECT_EQ(objectionToRead("00000000000701090412340007"), std::nullopt);
}

TEST(RemoteMatcher, TakesTheReplyToAWrite)
{
    EXPECT_EQ(objectionToWrite("000000000006010900640001"), std::nullopt);
}

TEST(RemoteMatcher, RefusesAnotherStation)
{
    EXPECT_EQ(objectionToRead("00000000000702090412340007"), DropReason::WrongUnit);
    EXPECT_EQ(objectionToRead("00000000000700090412340007"), DropReason::WrongUnit);
}

TEST(RemoteMatcher, RefusesAnotherArea)
{
    EXPECT_EQ(objectionToRead("000000000007010a0412340007"), DropReason::WrongArea);
    EXPECT_EQ(objectionToRead("00000000000701080412340007"), DropReason::WrongArea);
}

TEST(RemoteMatcher, RefusesAnotherSize)
{
    EXPECT_EQ(objectionToRead("0000000000050109021234"), DropReason::WrongSize);
    EXPECT_EQ(objectionToRead("000000000009010906123400070001"), DropReason::WrongSize);
}

TEST(RemoteMatcher, RefusesTheConfirmationOfAnotherWrite)
{
    EXPECT_EQ(objectionToWrite("000000000006010900650001"), DropReason::WrongElements);
    EXPECT_EQ(objectionToWrite("000000000006010900630001"), DropReason::WrongElements);
    EXPECT_EQ(objectionToWrite("000000000006010900640002"), DropReason::WrongElements);
    EXPECT_EQ(objectionToWrite("000000000006010900640000"), DropReason::WrongElements);
}

TEST(RemoteMatcher, TakesOneReplyForEachRequest)
{
    RemoteMatcher matcher;
    matcher.expect(readWords, 13);
    EXPECT_EQ(objection(&matcher, wordsReply), std::nullopt);
    EXPECT_EQ(objection(&matcher, wordsReply), DropReason::Doubled);
    matcher.expect(writeWord, 12);
    EXPECT_EQ(objection(&matcher, writeReply), std::nullopt);
}

TEST(RemoteMatcher, TakesNothingWithoutARequest)
{
    RemoteMatcher matcher;
    EXPECT_EQ(objection(&matcher, wordsReply), DropReason::Doubled);
}
