// SPDX-License-Identifier: MIT
// The link with remote frames, which carry no number.
#include "runtime/link/scripted_link.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using namespace plc;
using testing::ElementsAre;

const int timeoutMs = 100;

const QByteArray readRegister5 = QByteArray::fromHex("16000000010009000000050001"
                                                     "0000000000000000"
                                                     "26");
const int replySize = 11;
const char* const register5Is1234 = "0000 0000 0005 01 09 02 1234";
const char* const register5Is9999 = "0000 0000 0005 01 09 02 9999";

class RemoteLink : public testing::Test
{
protected:
    LinkExchange ask() { return link.exchange(readRegister5, true, replySize); }

    /// \return what the link makes of a request whose frame the controller takes like this
    LinkExchange askWhile(const Script& script)
    {
        controller.onFrame(script);
        return ask();
    }

    ScriptedLink scripted{timeoutMs, FrameFormat::Remote};
    Link& link = scripted.link;
    VirtualTime& time = scripted.time;
    ScriptedTransport& controller = scripted.controller();
};

TEST_F(RemoteLink, SendsTheFrameAsItIsAndGivesTheReplyAsItCame)
{
    const LinkExchange exchange = askWhile(Script().send(register5Is1234));
    EXPECT_EQ(exchange.format, FrameFormat::Remote);
    EXPECT_EQ(exchange.sentFrame, readRegister5);
    EXPECT_THAT(controller.sent(), ElementsAre(readRegister5));
    EXPECT_EQ(exchange.reply, QByteArray::fromHex(register5Is1234));
    EXPECT_TRUE(link.state().connected);
    EXPECT_EQ(link.state().untrusted, 0);
}

TEST_F(RemoteLink, KeepsTheConnectionFromAnswerToAnswer)
{
    askWhile(Script().send(register5Is9999));
    EXPECT_EQ(askWhile(Script().send(register5Is1234)).reply, QByteArray::fromHex(register5Is1234));
    EXPECT_EQ(link.state().connects, 1);
}

TEST_F(RemoteLink, SilenceCostsTheConnectionAndTheNextIsMadeAtOnce)
{
    const int rounds = 10;
    for (int round = 0; round < rounds; ++round) {
        const LinkExchange exchange = ask();
        EXPECT_TRUE(exchange.sent);
        EXPECT_TRUE(exchange.reply.isEmpty());
        EXPECT_FALSE(link.state().connected);
    }
    EXPECT_EQ(link.state().untrusted, rounds);
    EXPECT_EQ(link.state().connects, rounds);
    EXPECT_EQ(time.elapsedMs(), rounds * timeoutMs) << "no pause between connections";
}

TEST_F(RemoteLink, LateReplyDoesNotAnswerTheNextRequest)
{
    EXPECT_TRUE(askWhile(Script().after(timeoutMs + 1).send(register5Is9999)).reply.isEmpty());
    const LinkExchange exchange = askWhile(Script().after(5).send(register5Is1234));
    EXPECT_EQ(exchange.reply, QByteArray::fromHex(register5Is1234));
    EXPECT_EQ(link.state().connects, 2);
}

TEST_F(RemoteLink, ReplyThatComesTwiceCostsTheConnection)
{
    const LinkExchange first =
        askWhile(Script().send("0000 0000 0005 01 09 02 9999 0000 0000 0005 01 09 02 9999"));
    EXPECT_EQ(first.reply, QByteArray::fromHex(register5Is9999));
    const LinkExchange second = askWhile(Script().send(register5Is1234));
    EXPECT_EQ(second.reply, QByteArray::fromHex(register5Is1234));
    EXPECT_EQ(link.state().connects, 2);
    EXPECT_EQ(link.state().untrusted, 1);
}

TEST_F(RemoteLink, BytesBetweenTwoRequestsCostTheConnection)
{
    askWhile(Script().send(register5Is9999));
    controller.play(Script().send(register5Is9999));
    time.sleep(1);
    const LinkExchange exchange = askWhile(Script().send(register5Is1234));
    EXPECT_EQ(exchange.reply, QByteArray::fromHex(register5Is1234));
    EXPECT_EQ(link.state().untrusted, 1);
    EXPECT_EQ(link.state().connects, 2);
}

TEST_F(RemoteLink, RepliesThatDoNotFitAreDroppedAndCostTheConnection)
{
    const LinkExchange exchange = askWhile(Script().send("0000 0000 0005 02 09 02 9999"
                                                         "0000 0000 0005 01 0A 02 9999"
                                                         "0000 0000 0007 01 09 04 9999 9999"
                                                         "0000 0000 0005 01 09 02 1234"));
    EXPECT_EQ(exchange.reply, QByteArray::fromHex(register5Is1234));
    EXPECT_EQ(exchange.dropped.size(), 3u);
    EXPECT_EQ(link.state().dropped.wrongUnit, 1);
    EXPECT_EQ(link.state().dropped.wrongPlace, 2);
    EXPECT_FALSE(link.state().connected);
}

TEST_F(RemoteLink, ReplyInPiecesIsPutTogether)
{
    const LinkExchange exchange =
        askWhile(Script().send("0000 0000 00").after(20).send("05 01 09 02 12").after(20).send("34"));
    EXPECT_EQ(exchange.reply, QByteArray::fromHex(register5Is1234));
    EXPECT_TRUE(link.state().connected);
}

TEST_F(RemoteLink, HalfAReplyCostsTheConnectionOnce)
{
    EXPECT_TRUE(askWhile(Script().send("0000 0000 0005 01 09")).reply.isEmpty());
    EXPECT_EQ(link.state().untrusted, 1);
    EXPECT_EQ(link.state().lastError, QStringLiteral("the stream of replies was out of step"));
}

TEST_F(RemoteLink, ControllerThatSendsGarbageIsNotStormed)
{
    while (controller.attempts().size() < 5)
        askWhile(Script().send("48545450 2F312E31 20343030"));
    EXPECT_THAT(controller.attempts(), ElementsAre(0, 100, 300, 700, 1500));
}

TEST_F(RemoteLink, BroadcastIsNotWaitedForAndKeepsTheConnection)
{
    const LinkExchange exchange = link.exchange(
        QByteArray::fromHex("18 00 00 00 00 00 09 00 00 00 05 00 01 00 00 00 00 00 00 00 00 34 12 6D"),
        false);
    EXPECT_TRUE(exchange.sent);
    EXPECT_TRUE(link.state().connected);
    EXPECT_EQ(time.elapsedMs(), 0);
}

} // namespace
