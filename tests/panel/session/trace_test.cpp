// SPDX-License-Identifier: MIT
// Frames and replies as --trace shows them, without the times of day.

#include "panel/session/trace.h"

#include "runtime/cycle/exchange_record.h"
#include "support/hex.h"

#include <QDateTime>

#include <gtest/gtest.h>

namespace
{

using test::fromHex;

using namespace plc;

const QDateTime endedAt(QDate(2024, 5, 6), QTime(7, 8, 9, 13), Qt::UTC);

ExchangeRecord readOfOneRegister()
{
    ExchangeRecord record;
    record.durationMs = 3;
    record.frame = fromHex("00 00 00 00 00 06 01 03 00 64 00 01");
    record.exchange.sent = true;
    record.exchange.sentFrame = fromHex("00 2A 00 00 00 06 01 03 00 64 00 01");
    record.exchange.reply = fromHex("00 00 00 00 00 05 01 03 02 04 D2");
    record.result = PLC_DONE;
    return record;
}

TEST(TraceText, ShowsFrameAndReplyWithTheNumberTheyTravelledWith)
{
    EXPECT_EQ(traceText(readOfOneRegister(), endedAt).toStdString(),
              "07:08:09.010 -> 00 2A 00 00 00 06 01 03 00 64 00 01  unit 1: read 1 register from 100\n"
              "             <- 00 2A 00 00 00 05 01 03 02 04 D2  unit 1: registers 1234 (3 ms: done)\n");
}

TEST(TraceText, ShowsThatNoReplyCame)
{
    ExchangeRecord record = readOfOneRegister();
    record.exchange.reply.clear();
    record.result = PLC_RETRYING;
    record.durationMs = 300;
    EXPECT_TRUE(
        traceText(record, endedAt)
            .endsWith(QStringLiteral("             <- no reply (300 ms: failed, to be tried again)\n")));
}

TEST(TraceText, ShowsTheReturnCodeOfARequestThatIsGivenUp)
{
    ExchangeRecord record = readOfOneRegister();
    record.exchange.reply = fromHex("00 00 00 00 00 03 01 83 02");
    record.result = 71;
    EXPECT_TRUE(traceText(record, endedAt)
                    .endsWith(QStringLiteral(
                        "             <- 00 2A 00 00 00 03 01 83 02  unit 1: refused, exception 2: illegal "
                        "data address "
                        "(3 ms: given up with return code 71, the reply has the wrong length)\n")));
}

TEST(TraceText, ShowsAFrameThatCouldNotBeSent)
{
    ExchangeRecord record = readOfOneRegister();
    record.exchange = LinkExchange();
    record.result = 41;
    EXPECT_TRUE(traceText(record, endedAt)
                    .startsWith(QStringLiteral("07:08:09.010 -- 00 00 00 00 00 06 01 03 00 64 00 01  "
                                               "unit 1: read 1 register from 100 (not sent: no "
                                               "connection)\n")));
}

TEST(TraceText, ShowsRepliesThatWereDropped)
{
    ExchangeRecord record = readOfOneRegister();
    record.exchange.dropped.push_back({fromHex("00 29 00 00 00 05 01 03 02 00 01"), DropReason::Late});
    EXPECT_TRUE(traceText(record, endedAt)
                    .contains(QStringLiteral("<- 00 29 00 00 00 05 01 03 02 00 01  dropped: ")));
}

TEST(TraceText, ABroadcastExpectsNoReply)
{
    ExchangeRecord record = readOfOneRegister();
    record.frame = record.exchange.sentFrame = fromHex("00 00 00 00 00 06 00 06 00 64 00 01");
    record.exchange.reply.clear();
    record.replyExpected = false;
    EXPECT_TRUE(
        traceText(record, endedAt).endsWith(QStringLiteral("<- no reply is expected (3 ms: done)\n")));
}

TEST(Trace, ShowsRemoteFramesInWordsAndPutsNoNumberIntoTheReply)
{
    ExchangeRecord record;
    record.frame = record.exchange.sentFrame =
        QByteArray::fromHex("16 00 00 00 01 00 09 00 00 00 64 00 02 00 00 00 00 00 00 00 00 86");
    record.exchange.format = FrameFormat::Remote;
    record.exchange.sent = true;
    record.exchange.reply = QByteArray::fromHex("00 00 00 00 00 07 01 09 04 12 34 00 07");
    record.result = 1;
    const std::string text = traceText(record, endedAt).toStdString();
    EXPECT_NE(text.find("86  station 1: read 9:100x2\n"), std::string::npos) << text;
    EXPECT_NE(text.find("<- 00 00 00 00 00 07 01 09 04 12 34 00 07  station 1: 4660 7 "), std::string::npos)
        << text;
}

} // namespace
