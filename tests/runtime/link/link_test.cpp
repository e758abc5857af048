// SPDX-License-Identifier: MIT
// The link over a scripted transport: neither sockets nor time. That it works over TCP is at the end.
#include "runtime/link/link.h"
#include "runtime/link/scripted_link.h"
#include "simulator/simulated_controller.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QThread>

#include <thread>

namespace
{

using namespace plc;
using testing::ElementsAre;

const int longTimeoutMs = 5000;
const int timeoutMs = 100;

const QByteArray readRegister5 = QByteArray::fromHex("000000000006010300050001");
const QByteArray readSixRegisters = QByteArray::fromHex("000000000006010300050006");
const QByteArray register5Is1234 = QByteArray::fromHex("0000000000050103021234");
const char* const firstReply = "0001 0000 0005 01 03 02 1234";
const char* const secondReply = "0002 0000 0005 01 03 02 1234";

class LinkTest : public testing::Test
{
protected:
    LinkExchange ask(const QByteArray& request = readRegister5) { return link.exchange(request, true); }

    /// \return what the link makes of a request whose frame the controller takes like this
    LinkExchange askWhile(const Script& script, const QByteArray& request = readRegister5)
    {
        controller.onFrame(script);
        return ask(request);
    }

    ScriptedLink scripted{timeoutMs};
    Link& link = scripted.link;
    VirtualTime& time = scripted.time;
    ScriptedTransport& controller = scripted.controller();
};

TEST_F(LinkTest, ExchangesOneRequestAndItsReply)
{
    const LinkExchange exchange = askWhile(Script().after(7).send(firstReply));
    EXPECT_TRUE(exchange.sent);
    EXPECT_EQ(exchange.sentFrame, QByteArray::fromHex("000100000006010300050001"));
    EXPECT_THAT(controller.sent(), ElementsAre(exchange.sentFrame));
    EXPECT_EQ(exchange.reply, register5Is1234);
    EXPECT_EQ(exchange.replyMicroseconds, 7000);
    EXPECT_EQ(exchange.durationMs, 7);
    EXPECT_TRUE(link.state().connected);
    EXPECT_EQ(link.state().connects, 1);
    EXPECT_TRUE(controller.isOpen());
    link.close();
    EXPECT_FALSE(link.state().connected);
    EXPECT_FALSE(controller.isOpen());
}

TEST_F(LinkTest, SilenceLastsTheTimeOut)
{
    const LinkExchange exchange = ask();
    EXPECT_EQ(time.elapsedMs(), timeoutMs);
    EXPECT_EQ(exchange.durationMs, timeoutMs);
    EXPECT_TRUE(exchange.sent);
    EXPECT_TRUE(exchange.reply.isEmpty());
    EXPECT_TRUE(link.state().connected) << "silence of one station is no reason to drop the connection";
}

TEST_F(LinkTest, AReplyInTheLastMillisecondCounts)
{
    EXPECT_EQ(askWhile(Script().after(timeoutMs).send(firstReply)).reply, register5Is1234);
}

TEST_F(LinkTest, AReplyBehindTheTimeOutIsDroppedByTheNextExchange)
{
    EXPECT_TRUE(askWhile(Script().after(timeoutMs + 1).send(firstReply)).reply.isEmpty());
    EXPECT_EQ(askWhile(Script().after(2).send(secondReply)).reply, register5Is1234);
    EXPECT_EQ(link.state().dropped.late, 1);
}

TEST_F(LinkTest, ABroadcastIsSentAndNotWaitedFor)
{
    const LinkExchange exchange = link.exchange(QByteArray::fromHex("000000000006000600050001"), false);
    EXPECT_TRUE(exchange.sent);
    EXPECT_TRUE(exchange.reply.isEmpty());
    EXPECT_EQ(time.elapsedMs(), 0);
}

TEST_F(LinkTest, WithoutConnectionAnExchangeLastsItsTimeOutAndIsNotSent)
{
    controller.refuseConnections(true);
    const LinkExchange exchange = ask();
    EXPECT_EQ(time.elapsedMs(), timeoutMs);
    EXPECT_FALSE(exchange.sent);
    EXPECT_TRUE(exchange.reply.isEmpty());
    EXPECT_FALSE(link.state().connected);
    EXPECT_EQ(link.state().lastError, QStringLiteral("refused by the script"));
}

TEST_F(LinkTest, AttemptsToConnectComeInGrowingPauses)
{
    controller.refuseConnections(true);
    while (time.elapsedMs() < 20000)
        ask();
    EXPECT_THAT(controller.attempts(), ElementsAre(0, 100, 300, 700, 1500, 3100, 6300, 11300, 16300));
}

TEST_F(LinkTest, AttemptsToConnectComeWhenTheirPauseIsOverAndNoLater)
{
    controller.refuseConnections(true);
    ask();
    time.sleep(7);
    ask();
    time.sleep(6);
    ask();
    EXPECT_THAT(controller.attempts(), ElementsAre(0, 100, 300));
}

TEST_F(LinkTest, APauseCountsFromTheEndOfTheAttempt)
{
    controller.refuseConnections(true);
    controller.setConnectMs(250);
    while (controller.attempts().size() < 3)
        ask();
    EXPECT_THAT(controller.attempts(), ElementsAre(0, 350, 800));
}

TEST_F(LinkTest, ConnectionThatTheControllerClosesComesBack)
{
    askWhile(Script().send(firstReply));
    controller.play(Script().close());
    time.sleep(5);
    EXPECT_EQ(askWhile(Script().send(secondReply)).reply, register5Is1234);
    EXPECT_EQ(link.state().connects, 2);
    EXPECT_EQ(link.state().lastError, QStringLiteral("the controller closed the connection"));
}

TEST_F(LinkTest, AConnectionThatClosesDuringAnExchangeEndsItEarly)
{
    const LinkExchange exchange = askWhile(Script().after(30).close());
    EXPECT_TRUE(exchange.sent);
    EXPECT_TRUE(exchange.reply.isEmpty());
    EXPECT_EQ(time.elapsedMs(), 30);
    EXPECT_FALSE(link.state().connected);
}

TEST_F(LinkTest, EachReconnectAfterAGoodReplyIsMadeAtOnce)
{
    for (int number = 1; number <= 8; ++number) {
        const QByteArray reply = QByteArray("000") + QByteArray::number(number) + " 0000 0005 01 03 02 1234";
        EXPECT_EQ(askWhile(Script().send(reply.constData())).reply, register5Is1234);
        controller.play(Script().close());
        time.sleep(5);
    }
    EXPECT_EQ(controller.attempts().size(), 8u);
    EXPECT_EQ(time.elapsedMs(), 8 * 5);
}

TEST_F(LinkTest, ControllerThatClosesEveryConnectionIsNotStormed)
{
    while (controller.attempts().size() < 5)
        askWhile(Script().close());
    EXPECT_THAT(controller.attempts(), ElementsAre(0, 100, 300, 700, 1500));
}

TEST_F(LinkTest, TellsAConnectionThatWasClosedAtOnceFromOneThatHadAnswered)
{
    EXPECT_FALSE(askWhile(Script().close()).answeredBefore);
    EXPECT_TRUE(link.state().closedAtOnce);
    askWhile(Script().send(secondReply));
    const LinkExchange exchange = askWhile(Script().close());
    EXPECT_TRUE(exchange.closed);
    EXPECT_TRUE(exchange.answeredBefore);
    EXPECT_FALSE(link.state().closedAtOnce);
}

TEST_F(LinkTest, ARequestIsNotPutOnAConnectionThatWasClosedRightBehindTheAnswer)
{
    askWhile(Script().send(firstReply).close());
    EXPECT_EQ(askWhile(Script().send(secondReply)).reply, register5Is1234);
    EXPECT_EQ(controller.sent().size(), 2u);
}

TEST_F(LinkTest, ControllersKnownToCloseAfterEachReplyAreGivenTimeForIt)
{
    askWhile(Script().send(firstReply).close());
    askWhile(Script().send(secondReply).after(5).close());
    EXPECT_EQ(askWhile(Script().send("0003 0000 0005 01 03 02 1234")).reply, register5Is1234);
    EXPECT_EQ(link.state().connects, 3);
    EXPECT_EQ(time.elapsedMs(), 5);
}

TEST_F(LinkTest, ControllersThatCloseWithoutAnAnswerAreNotKnownToCloseAfterEach)
{
    askWhile(Script().close());
    askWhile(Script().send(secondReply));
    time.sleep(5);
    const qint64 before = time.elapsedMs();
    EXPECT_EQ(askWhile(Script().send("0003 0000 0005 01 03 02 1234")).reply, register5Is1234);
    EXPECT_EQ(time.elapsedMs(), before);
}

TEST_F(LinkTest, AConnectionThatIsDroppedHereIsNoHabitOfTheController)
{
    askWhile(Script().send(firstReply));
    time.sleep(5);
    askWhile(Script().send("0002 0000 0005 01 03")); // half a reply
    askWhile(Script().send("0003 0000 0005 01 03 02 1234"));
    time.sleep(5);
    const qint64 before = time.elapsedMs();
    EXPECT_EQ(askWhile(Script().send("0004 0000 0005 01 03 02 1234")).reply, register5Is1234);
    EXPECT_EQ(time.elapsedMs(), before);
}

TEST_F(LinkTest, ControllersKnownToCloseAfterEachReplyAreGivenNoTimeBeforeTheFirst)
{
    askWhile(Script().send(firstReply).close());
    EXPECT_TRUE(ask().reply.isEmpty());
    const qint64 before = time.elapsedMs();
    EXPECT_EQ(askWhile(Script().send("0003 0000 0005 01 03 02 1234")).reply, register5Is1234);
    EXPECT_EQ(time.elapsedMs(), before);
}

TEST_F(LinkTest, ControllersThatKeepTheirConnectionAreGivenNoTimeToCloseIt)
{
    askWhile(Script().send(firstReply));
    time.sleep(5);
    askWhile(Script().send(secondReply));
    time.sleep(5);
    askWhile(Script().send("0003 0000 0005 01 03 02 1234"));
    EXPECT_EQ(time.elapsedMs(), 10);
}

TEST_F(LinkTest, StopEndsAnExchangeWithinASlice)
{
    const LinkExchange exchange = askWhile(Script().after(10).act([this] { link.stop(); }));
    EXPECT_TRUE(exchange.reply.isEmpty());
    EXPECT_LE(time.elapsedMs(), 20);
}

TEST_F(LinkTest, StopEndsWhatTheTransportWaitsFor)
{
    EXPECT_FALSE(controller.isStopped());
    link.stop();
    EXPECT_TRUE(controller.isStopped());
}

TEST_F(LinkTest, StopLetsNoConnectionBeAwaited)
{
    controller.refuseConnections(true);
    link.stop();
    EXPECT_FALSE(ask().sent);
    EXPECT_EQ(time.elapsedMs(), 0);
}

TEST_F(LinkTest, PutsTogetherAReplyThatComesInPieces)
{
    const LinkExchange exchange =
        askWhile(Script().send("0001 0000 00").after(20).send("05 01 03 02 12").after(20).send("34"));
    EXPECT_EQ(exchange.reply, register5Is1234);
    EXPECT_EQ(exchange.durationMs, 40);
}

TEST_F(LinkTest, AReplyThatIsKeptIsNotTheRoomOfTheNext)
{
    const LinkExchange kept = askWhile(Script().send("0001 0000 0005 01 03 02 9999"));
    EXPECT_EQ(askWhile(Script().send(secondReply)).reply, register5Is1234);
    EXPECT_EQ(kept.reply, QByteArray::fromHex("0000000000050103029999"));
}

TEST_F(LinkTest, TakesARefusalForAnAnswer)
{
    EXPECT_EQ(askWhile(Script().send("0001 0000 0003 01 83 02")).reply,
              QByteArray::fromHex("000000000003018302"));
}

TEST_F(LinkTest, TakesTheReplyThatComesAloneBehindOneThatWasDropped)
{
    const LinkExchange exchange =
        askWhile(Script().send("0001 0000 0005 02 03 02 9999").after(5).send(firstReply));
    EXPECT_EQ(exchange.reply, register5Is1234);
    EXPECT_EQ(exchange.dropped.size(), 1u);
    EXPECT_TRUE(link.state().connected);
}

TEST_F(LinkTest, DropsASecondReplyThatComesAlone)
{
    askWhile(Script().send(firstReply).after(1).send(firstReply));
    EXPECT_EQ(askWhile(Script().after(5).send(secondReply)).reply, register5Is1234);
    EXPECT_EQ(link.state().dropped.doubled, 1);
}

TEST_F(LinkTest, ABeginningLeftFromBeforeIsPartOfWhatComesNext)
{
    askWhile(Script().send("0001 0000 0005 01 03 02 1234 FFFF 0000 0005 01"));
    const LinkExchange exchange = askWhile(Script().send("03 02 9999 0002 0000 0005 01 03 02 1234"));
    EXPECT_EQ(exchange.reply, register5Is1234);
    EXPECT_EQ(link.state().dropped.late, 1);
}

TEST_F(LinkTest, AReplyWithBytesBehindItIsTakenAndTheBytesWait)
{
    EXPECT_EQ(askWhile(Script().send("0001 0000 0005 01 03 02 1234 00")).reply, register5Is1234);
    EXPECT_EQ(askWhile(Script().send("02 0000 0005 01 03 02 1234")).reply, register5Is1234);
}

TEST_F(LinkTest, AReplyThatNeedNotBeJudgedCountsAsAnAnswerOfItsConnection)
{
    askWhile(Script().send(firstReply));
    EXPECT_TRUE(askWhile(Script().close()).answeredBefore);
}

TEST_F(LinkTest, DropsRepliesThatDoNotMatchAndTakesTheOneThatDoes)
{
    const LinkExchange exchange = askWhile(Script().send("FFFF 0000 0005 01 03 02 9999"
                                                         "0001 0000 0005 02 03 02 9999"
                                                         "0001 0000 0005 01 03 02 1234"));
    EXPECT_EQ(exchange.reply, register5Is1234);
    EXPECT_EQ(exchange.dropped.size(), 2u);
    EXPECT_EQ(link.state().dropped.late, 1);
    EXPECT_EQ(link.state().dropped.wrongUnit, 1);
}

TEST_F(LinkTest, ReplyOfTheExchangeBeforeIsNotTakenForThisOne)
{
    askWhile(Script().send("0001 0000 0005 01 03 02 9999"
                           "0001 0000 0005 01 03 02 9999"));
    EXPECT_EQ(askWhile(Script().send(secondReply)).reply, register5Is1234);
    EXPECT_EQ(link.state().dropped.doubled, 1);
}

TEST_F(LinkTest, HalfAReplyAtTheTimeOutCostsTheConnection)
{
    const LinkExchange exchange = askWhile(Script().send("0001 0000 0005 01 03"));
    EXPECT_TRUE(exchange.sent);
    EXPECT_TRUE(exchange.reply.isEmpty());
    EXPECT_FALSE(link.state().connected);
    EXPECT_EQ(link.state().untrusted, 1);
}

TEST_F(LinkTest, HalfAReplyOnOneConnectionIsNotFilledUpOnTheNext)
{
    askWhile(Script().send("0001 0000 0005 01 03"));
    EXPECT_EQ(askWhile(Script().send(secondReply)).reply, register5Is1234);
}

TEST_F(LinkTest, GarbageCostsTheConnectionAtOnce)
{
    const LinkExchange exchange = askWhile(Script().after(1).send("48545450 2F312E31 20343030"));
    EXPECT_TRUE(exchange.reply.isEmpty());
    EXPECT_EQ(time.elapsedMs(), 1);
    EXPECT_FALSE(link.state().connected);
    EXPECT_EQ(link.state().untrusted, 1);
}

TEST_F(LinkTest, FloodOfOtherRepliesCostsTheConnectionAtOnce)
{
    const QByteArray flood = QByteArray("0009 0000 0003 01 83 0A").repeated(1000);
    const LinkExchange exchange = askWhile(Script().after(1).send(flood.constData()));
    EXPECT_TRUE(exchange.reply.isEmpty());
    EXPECT_EQ(exchange.dropped.size(), 128u);
    EXPECT_EQ(time.elapsedMs(), 1);
    EXPECT_EQ(link.state().untrusted, 1);
}

/// The first request is not answered in time.
class LinkOwedAReply : public LinkTest
{
protected:
    LinkOwedAReply() { ask(); }
};

TEST_F(LinkOwedAReply, DoesNotTakeALateReplyForTheRestOfOneThatWasCut)
{
    const LinkExchange exchange = askWhile(Script().send("0002 0000 0005 01 03 02"
                                                         "0001 0000 0005 01 03 02 9999"));
    EXPECT_TRUE(exchange.reply.isEmpty()) << exchange.reply.toHex().constData();
    EXPECT_FALSE(link.state().connected);
    EXPECT_EQ(link.state().untrusted, 1);
}

TEST_F(LinkOwedAReply, DoesNotTakeALateReplyThatJustFillsUpOneThatWasCut)
{
    const LinkExchange exchange = askWhile(Script().send("0002 0000 000F 01 03 0C 12"
                                                         "0001 0000 0005 01 03 02 9999"),
                                           readSixRegisters);
    EXPECT_TRUE(exchange.reply.isEmpty()) << exchange.reply.toHex().constData();
    EXPECT_EQ(link.state().untrusted, 1);
}

TEST_F(LinkOwedAReply, DropsTheLateReplyThatComesAloneAndTakesTheAnswer)
{
    const LinkExchange exchange =
        askWhile(Script().send("0001 0000 0005 01 03 02 9999").after(5).send(secondReply));
    EXPECT_EQ(exchange.reply, register5Is1234);
    EXPECT_EQ(link.state().dropped.late, 1);
}

TEST_F(LinkOwedAReply, TakesAReplyThatComesWithTheLateOne)
{
    const LinkExchange exchange = askWhile(Script().send("0002 0000 0005 01 03 02 1234"
                                                         "0001 0000 0005 01 03 02 9999"));
    EXPECT_EQ(exchange.reply, register5Is1234);
    EXPECT_TRUE(link.state().connected);
}

TEST_F(LinkOwedAReply, IsOwedNothingOnANewConnection)
{
    controller.play(Script().close());
    time.sleep(5);
    const LinkExchange exchange = askWhile(Script().send("0002 0000 000F 01 03 0C 12"
                                                         "0001 0000 0005 01 03 02 9999"),
                                           readSixRegisters);
    EXPECT_FALSE(exchange.reply.isEmpty()) << "nothing of the old connection can be inside";
}

const QString loopback = QStringLiteral("127.0.0.1");

class LinkOverTcp : public testing::Test
{
protected:
    simulator::SimulatedController controller;
};

TEST_F(LinkOverTcp, ExchangesOneRequestAndItsReply)
{
    controller.start();
    controller.memory().setHoldingRegister(1, 5, 0x1234);
    Link link(loopback, controller.port(), longTimeoutMs);
    EXPECT_EQ(link.exchange(readRegister5, true).reply, register5Is1234);
    EXPECT_TRUE(link.state().connected);
    link.close();
    EXPECT_FALSE(link.state().connected);
}

TEST_F(LinkOverTcp, ConnectionThatTheControllerClosesComesBack)
{
    controller.start();
    Link link(loopback, controller.port(), longTimeoutMs);
    EXPECT_FALSE(link.exchange(readRegister5, true).reply.isEmpty());
    controller.stop();
    controller.start();
    LinkExchange exchange;
    for (int attempt = 0; attempt < 10 && exchange.reply.isEmpty(); ++attempt)
        exchange = link.exchange(readRegister5, true);
    EXPECT_FALSE(exchange.reply.isEmpty());
    EXPECT_EQ(link.state().connects, 2);
    link.close();
}

TEST_F(LinkOverTcp, StopByAnotherThreadEndsAnExchangeEarly)
{
    const int patienceMs = 20000;
    controller.setSilent(1, true);
    controller.start();
    Link link(loopback, controller.port(), 10 * patienceMs);
    QElapsedTimer clock;
    clock.start();
    std::thread stopper([&] {
        while (controller.requests() == 0)
            QThread::msleep(1);
        link.stop();
    });
    EXPECT_TRUE(link.exchange(readRegister5, true).reply.isEmpty());
    EXPECT_LT(clock.elapsed(), patienceMs);
    stopper.join();
    link.close();
}

} // namespace
