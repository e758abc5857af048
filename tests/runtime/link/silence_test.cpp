// SPDX-License-Identifier: MIT
// What came in place of a reply.

#include "runtime/link/silence.h"

#include "runtime/modbus/failure_words.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

const int noReply = 41;
const QByteArray sent = QByteArray::fromHex("0005 0000 0006 01 03 0005 0001");

std::string words(const LinkExchange& exchange)
{
    return failureWords(silenceFailure(noReply, exchange, 300)).toStdString();
}

std::string wordsOfDropped(const char* reply, DropReason reason)
{
    LinkExchange exchange;
    exchange.sentFrame = sent;
    exchange.dropped = {{QByteArray::fromHex(reply), reason}};
    return words(exchange);
}

TEST(Silence, IsAllThereIsToSayWhereNothingCame)
{
    EXPECT_EQ(words(LinkExchange()), "no reply within 300 ms");
}

TEST(Silence, NamesTheUnitThatAnswered)
{
    EXPECT_EQ(wordsOfDropped("0005 0000 0005 FF 03 02 1234", DropReason::WrongUnit),
              "no reply within 300 ms; unit 255 answered: try --station 255");
}

TEST(Silence, DoesNotSendAnybodyToTheStationOfTheBroadcast)
{
    EXPECT_EQ(
        wordsOfDropped("0005 0000 0005 00 03 02 1234", DropReason::WrongUnit),
        "no reply within 300 ms; unit 0 answered, which is none: a gateway or controller has to repeat that "
        "of the request");
}

TEST(Silence, NamesTheFunctionThatWasAnsweredAlsoByARefusal)
{
    EXPECT_EQ(wordsOfDropped("0005 0000 0003 01 84 02", DropReason::WrongFunction),
              "no reply within 300 ms; replies to function 4 came, which was not asked for");
}

TEST(Silence, TellsALateReplyFromOneWithANumberThatWasNotUsed)
{
    EXPECT_EQ(wordsOfDropped("0004 0000 0005 01 03 02 1234", DropReason::Late),
              "no reply within 300 ms; replies came later: try a longer --timeout");
    EXPECT_EQ(silenceFailure(noReply, {}, 300).kind, FailureKind::NoReply);
    for (const char* reply : {"0000 0000 0005 01 03 02 1234", "0009 0000 0005 01 03 02 1234"})
        EXPECT_NE(wordsOfDropped(reply, DropReason::Late).find("with transaction number"), std::string::npos)
            << reply;
}

TEST(Silence, OfAClosedConnectionIsNone)
{
    LinkExchange exchange;
    exchange.closed = true;
    EXPECT_EQ(words(exchange),
              "the controller closed the connection at once: another master may hold its only one");
    exchange.answeredBefore = true;
    EXPECT_EQ(words(exchange), "the controller closed the connection instead of answering");
}

TEST(Silence, ThatWasNotWaitedForToTheEndNamesNoTime)
{
    LinkExchange exchange;
    exchange.sentFrame = sent;
    exchange.dropped = {{QByteArray::fromHex("0000 0000 0005 01 03 02 1234"), DropReason::Late}};
    exchange.outOfStep = true; // too many strange replies came
    EXPECT_EQ(words(exchange).find("no reply; replies came with transaction number 0"), 0u)
        << words(exchange);
}

TEST(Silence, OfAnotherProtocolIsNone)
{
    LinkExchange exchange;
    exchange.outOfStep = true;
    EXPECT_EQ(words(exchange),
              "what came is no reply of the protocol; check the port (--controller HOST:PORT)");
}

} // namespace
