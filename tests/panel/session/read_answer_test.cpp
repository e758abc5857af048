// SPDX-License-Identifier: MIT
// What the end of a read says about the elements that it asked for.

#include "panel/session/read_answer.h"

#include "runtime/modbus/reply_failure.h"
#include "runtime/modbus/reply_fault.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

const int wrongLength = 71;

ReadOutcome failed(const Failure& failure)
{
    ReadOutcome outcome;
    outcome.failure = failure;
    return outcome;
}

ReadOutcome answeredWith(const char* hex)
{
    const QByteArray read = QByteArray::fromHex("000000000006010300050001");
    const QByteArray reply = QByteArray::fromHex(hex);
    return failed(replyFailure(wrongLength, replyFault(read, reply), reply, 300));
}

TEST(CheckAnswer, IsARefusalOnlyForAnExceptionAboutTheRequest)
{
    const auto kind = [](const char* hex) { return answerOf(answeredWith(hex)).kind; };
    EXPECT_EQ(kind("000000000003018301"), ReadAnswer::Refused);
    EXPECT_EQ(kind("000000000003018302"), ReadAnswer::Refused);
    EXPECT_EQ(kind("000000000003018303"), ReadAnswer::Refused);
    EXPECT_EQ(kind("000000000003018304"), ReadAnswer::Refused);
    EXPECT_EQ(kind("000000000003018305"), ReadAnswer::Unanswered);
    EXPECT_EQ(kind("000000000003018306"), ReadAnswer::Unanswered);
    EXPECT_EQ(kind("00000000000301830A"), ReadAnswer::Unanswered);
    EXPECT_EQ(kind("00000000000301830B"), ReadAnswer::Unanswered);
}

TEST(CheckAnswer, IsNoneForNoReplyAndForOneOfTheWrongLength)
{
    EXPECT_EQ(answerOf(answeredWith("")).kind, ReadAnswer::Unanswered);
    EXPECT_EQ(answerOf(answeredWith("00000000000501030200")).kind, ReadAnswer::Unanswered);
}

TEST(CheckAnswer, TellsACutCableFromASilentController)
{
    const Failure failure(FailureKind::NotConnected, QStringLiteral("no connection"));
    EXPECT_EQ(answerOf(failed(failure)).kind, ReadAnswer::NotConnected);
    EXPECT_EQ(answerOf(failed(failure)).words, QLatin1String("no connection"));
}

TEST(CheckAnswer, GivesValuesThatCame)
{
    EXPECT_EQ(answerOf(ReadOutcome()).kind, ReadAnswer::Given);
}

} // namespace
