// SPDX-License-Identifier: MIT
// Failures in words: here, and nowhere else, they are made.

#include "runtime/modbus/failure_words.h"

#include "runtime/modbus/reply_failure.h"
#include "runtime/modbus/reply_fault.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

const int noReply = 41;
const int wrongLength = 71;

std::string ofWrite(const Failure& failure)
{
    WriteOutcome outcome;
    outcome.failure = failure;
    return failureWords(outcome).toStdString();
}

std::string ofRead(const Failure& failure)
{
    ReadOutcome outcome;
    outcome.failure = failure;
    return failureWords(outcome).toStdString();
}

/// What a read of one register failed of.
Failure repliedWith(int code, const char* hex)
{
    const QByteArray read = QByteArray::fromHex("000000000006010300050001");
    const QByteArray reply = QByteArray::fromHex(hex);
    return replyFailure(code, replyFault(read, reply), reply, 300);
}

Failure purgedWith(Failure other)
{
    other.cause = other.kind;
    other.kind = FailureKind::Purged;
    return other;
}

TEST(FailureWords, AreNoneForWhatHasNotFailed)
{
    EXPECT_EQ(ofWrite(Failure()), "");
    EXPECT_EQ(ofRead(Failure()), "");
}

TEST(FailureWords, SayWhatTheLastTryBrought)
{
    EXPECT_EQ(ofRead(repliedWith(noReply, "")), "no reply within 300 ms");
    EXPECT_EQ(ofRead(repliedWith(wrongLength, "000000000003018302")),
              "the controller refused it: exception 2, illegal data address");
    EXPECT_EQ(ofRead(repliedWith(wrongLength, "00000000000501030200")), "the reply has the wrong length");
    EXPECT_EQ(ofRead(connectionFailure(noReply, noConnectionWords(QStringLiteral("plc"), 502,
                                                                  QStringLiteral("Connection refused")))),
              "no connection to plc:502 (Connection refused)");
}

TEST(FailureWords, OfARequestThatFellWithAnotherGiveTheOthersReason)
{
    const Failure failure = purgedWith(replyFailure(noReply, FailureKind::None, QByteArray(), 50));
    EXPECT_EQ(ofWrite(failure), "given up unsent with another request that failed: no reply within 50 ms");
    EXPECT_EQ(ofRead(failure), "given up unread with another request that failed: no reply within 50 ms");
}

TEST(FailureWords, TellWritesFromReads)
{
    EXPECT_EQ(ofWrite(Failure(FailureKind::Discarded)), "its station was switched off before it was sent");
    EXPECT_EQ(ofRead(Failure(FailureKind::Discarded)), "its station was switched off before it was read");
    EXPECT_EQ(ofWrite(Failure(FailureKind::Stopped)),
              "the panel was stopped before it was confirmed; it may have been sent");
    EXPECT_EQ(ofRead(Failure(FailureKind::Stopped)), "the panel was stopped before it was read");
    EXPECT_EQ(ofWrite(Failure(FailureKind::NotTaken, QStringLiteral("9:1"))),
              "the driver takes no write to 9:1");
    EXPECT_EQ(ofRead(Failure(FailureKind::NotTaken, QStringLiteral("9:1"))),
              "the driver takes no read of 9:1");
    EXPECT_EQ(ofWrite(Failure(FailureKind::OutOfStep)),
              "the driver's list of writes is not what it must be; nothing is known about this write");
    EXPECT_EQ(ofRead(Failure(FailureKind::OutOfStep)),
              "the driver's list of one-shot reads is not what it must be");
}

TEST(FailureWords, ArePlainForTheRest)
{
    Failure off(FailureKind::StationOff);
    off.station = 3;
    EXPECT_EQ(ofWrite(off), "station 3 is switched off");
    EXPECT_EQ(ofWrite(Failure(FailureKind::Invalid, QStringLiteral("area 0 can only be read"))),
              "area 0 can only be read");
    EXPECT_EQ(ofWrite(Failure(FailureKind::NotRunning)), "the panel is not running");
    EXPECT_EQ(ofRead(Failure(FailureKind::NotTried)), "not tried, because the controller cannot be reached");
    EXPECT_EQ(ofWrite(Failure(FailureKind::Replaced)), "replaced by a newer write before it was sent");
    EXPECT_EQ(ofRead(Failure(FailureKind::NotReported)), "the driver did not report the end of this read");
}

TEST(FailureText, GivesTheResultCodeWhereThereIsOne)
{
    EXPECT_EQ(failureText(repliedWith(noReply, "")),
              QLatin1String("no reply within 300 ms (return code 41)"));
    EXPECT_EQ(failureText(Failure(FailureKind::NotRunning)), QLatin1String("the panel is not running"));
}

} // namespace
