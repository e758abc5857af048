#include "runtime/link/link.h"
#include "simulator/simulated_controller.h"
#include "support/scripted_controller.h"

#include <gtest/gtest.h>

#include <QThread>

#include <functional>
#include <thread>

namespace
{

using namespace plc;

const int patienceMs = 20000;
const int longTimeoutMs = 5000;
const int shortTimeoutMs = 100;

const QString loopback = QStringLiteral("127.0.0.1");
const QByteArray readRegister5 = QByteArray::fromHex("000000000006010300050001");
const QByteArray register5Is1234 = QByteArray::fromHex("0000000000050103021234");

/// \return what \a link makes of one request while \a play answers it on another thread
LinkExchange exchangeWhile(Link& link, const std::function<void()>& play,
                           const QByteArray& request = readRegister5)
{
    std::thread player(play);
    const LinkExchange exchange = link.exchange(request, true);
    player.join();
    return exchange;
}

class LinkTest : public testing::Test
{
protected:
    LinkExchange ask(Link& link) { return link.exchange(readRegister5, true); }

    simulator::SimulatedController controller;
};

TEST_F(LinkTest, ExchangesOneRequestAndItsReply)
{
    controller.start();
    controller.memory().setHoldingRegister(1, 5, 0x1234);
    Link link(loopback, controller.port(), longTimeoutMs);
    const LinkExchange exchange = ask(link);
    EXPECT_TRUE(exchange.sent);
    EXPECT_EQ(exchange.sentFrame, QByteArray::fromHex("000100000006010300050001"));
    EXPECT_EQ(exchange.reply, register5Is1234);
    EXPECT_TRUE(link.state().connected);
    EXPECT_EQ(link.state().connects, 1);
    link.close();
    EXPECT_FALSE(link.state().connected);
}

TEST_F(LinkTest, SilenceLastsTheTimeOut)
{
    controller.setSilent(1, true);
    controller.start();
    Link link(loopback, controller.port(), shortTimeoutMs);
    QElapsedTimer clock;
    clock.start();
    const LinkExchange exchange = ask(link);
    EXPECT_GE(clock.elapsed(), shortTimeoutMs);
    EXPECT_TRUE(exchange.sent);
    EXPECT_TRUE(exchange.reply.isEmpty());
    EXPECT_TRUE(link.state().connected) << "silence of one station is no reason to drop the connection";
    link.close();
}

TEST_F(LinkTest, ABroadcastIsSentAndNotWaitedFor)
{
    controller.start();
    Link link(loopback, controller.port(), patienceMs);
    QElapsedTimer clock;
    clock.start();
    const LinkExchange exchange = link.exchange(QByteArray::fromHex("000000000006000600050001"), false);
    EXPECT_TRUE(exchange.sent);
    EXPECT_TRUE(exchange.reply.isEmpty());
    EXPECT_LT(clock.elapsed(), patienceMs);
    link.close();
}

TEST_F(LinkTest, WithoutConnectionAnExchangeLastsItsTimeOutAndIsNotSent)
{
    controller.start();
    controller.stop();
    Link link(loopback, controller.port(), shortTimeoutMs);
    QElapsedTimer clock;
    clock.start();
    const LinkExchange exchange = ask(link);
    EXPECT_GE(clock.elapsed(), shortTimeoutMs);
    EXPECT_FALSE(exchange.sent);
    EXPECT_TRUE(exchange.reply.isEmpty());
    EXPECT_FALSE(link.state().connected);
    EXPECT_FALSE(link.state().lastError.isEmpty());
    link.close();
}

TEST_F(LinkTest, ConnectionThatTheControllerClosesComesBack)
{
    controller.start();
    Link link(loopback, controller.port(), longTimeoutMs);
    EXPECT_FALSE(ask(link).reply.isEmpty());
    controller.stop();
    controller.start();
    LinkExchange exchange;
    for (int attempt = 0; attempt < 10 && exchange.reply.isEmpty(); ++attempt)
        exchange = ask(link);
    EXPECT_FALSE(exchange.reply.isEmpty());
    EXPECT_EQ(link.state().connects, 2);
    link.close();
}

TEST_F(LinkTest, EachReconnectAfterAGoodReplyIsMadeAtOnce)
{
    controller.start();
    Link link(loopback, controller.port(), longTimeoutMs);
    QElapsedTimer clock;
    clock.start();
    for (int round = 0; round < 8; ++round) {
        LinkExchange exchange;
        for (int attempt = 0; attempt < 10 && exchange.reply.isEmpty(); ++attempt)
            exchange = ask(link);
        EXPECT_FALSE(exchange.reply.isEmpty());
        controller.stop();
        controller.start();
    }
    // Pauses that went on growing would add up to more than 11 s.
    EXPECT_LT(clock.elapsed(), 6000);
    link.close();
}

TEST_F(LinkTest, StopEndsAnExchangeEarly)
{
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
    EXPECT_TRUE(ask(link).reply.isEmpty());
    EXPECT_LT(clock.elapsed(), patienceMs);
    stopper.join();
    link.close();
}

TEST(LinkStream, PutsTogetherAReplyThatComesInPieces)
{
    ScriptedController controller;
    Link link(loopback, controller.port(), longTimeoutMs);
    const LinkExchange exchange = exchangeWhile(link, [&] {
        controller.acceptAndReceive();
        controller.send("0001 0000 00");
        QThread::msleep(20);
        controller.send("05 01 03 02 12");
        QThread::msleep(20);
        controller.send("34");
    });
    EXPECT_EQ(exchange.reply, register5Is1234);
    link.close();
}

TEST(LinkStream, DropsRepliesThatDoNotMatchAndTakesTheOneThatDoes)
{
    ScriptedController controller;
    Link link(loopback, controller.port(), longTimeoutMs);
    const LinkExchange exchange = exchangeWhile(link, [&] {
        controller.acceptAndReceive();
        controller.send("FFFF 0000 0005 01 03 02 9999"
                        "0001 0000 0005 02 03 02 9999"
                        "0001 0000 0005 01 03 02 1234");
    });
    EXPECT_EQ(exchange.reply, register5Is1234);
    EXPECT_EQ(exchange.dropped.size(), 2u);
    EXPECT_EQ(link.state().dropped.late, 1);
    EXPECT_EQ(link.state().dropped.wrongUnit, 1);
    link.close();
}

TEST(LinkStream, ReplyOfTheExchangeBeforeIsNotTakenForThisOne)
{
    ScriptedController controller;
    Link link(loopback, controller.port(), longTimeoutMs);
    exchangeWhile(link, [&] {
        controller.acceptAndReceive();
        controller.send("0001 0000 0005 01 03 02 9999"
                        "0001 0000 0005 01 03 02 9999");
    });
    const LinkExchange exchange = exchangeWhile(link, [&] {
        controller.receive();
        controller.send("0002 0000 0005 01 03 02 1234");
    });
    EXPECT_EQ(exchange.reply, register5Is1234);
    EXPECT_EQ(link.state().dropped.doubled, 1);
    link.close();
}

TEST(LinkStream, HalfAReplyAtTheTimeOutCostsTheConnection)
{
    ScriptedController controller;
    Link link(loopback, controller.port(), shortTimeoutMs);
    const LinkExchange exchange = exchangeWhile(link, [&] {
        controller.acceptAndReceive();
        controller.send("0001 0000 0005 01 03");
    });
    EXPECT_TRUE(exchange.sent);
    EXPECT_TRUE(exchange.reply.isEmpty());
    EXPECT_FALSE(link.state().connected);
    EXPECT_EQ(link.state().untrusted, 1);
    link.close();
}

/// The first request is not answered in time.
class LinkOwedAReply : public testing::Test
{
protected:
    LinkOwedAReply()
    {
        exchangeWhile(link, [&] { controller.acceptAndReceive(); });
    }
    ~LinkOwedAReply() override { link.close(); }

    ScriptedController controller;
    Link link{loopback, controller.port(), shortTimeoutMs};
};

TEST_F(LinkOwedAReply, DoesNotTakeALateReplyForTheRestOfOneThatWasCut)
{
    const LinkExchange exchange = exchangeWhile(link, [&] {
        controller.receive();
        controller.send("0002 0000 0005 01 03 02"
                        "0001 0000 0005 01 03 02 9999");
    });
    EXPECT_TRUE(exchange.reply.isEmpty()) << exchange.reply.toHex().constData();
    EXPECT_FALSE(link.state().connected);
    EXPECT_EQ(link.state().untrusted, 1);
}

TEST_F(LinkOwedAReply, DoesNotTakeALateReplyThatJustFillsUpOneThatWasCut)
{
    const LinkExchange exchange = exchangeWhile(
        link,
        [&] {
            controller.receive();
            controller.send("0002 0000 000F 01 03 0C 12"
                            "0001 0000 0005 01 03 02 9999");
        },
        QByteArray::fromHex("000000000006010300050006"));
    EXPECT_TRUE(exchange.reply.isEmpty()) << exchange.reply.toHex().constData();
    EXPECT_EQ(link.state().untrusted, 1);
}

TEST_F(LinkOwedAReply, TakesAReplyThatComesWithTheLateOne)
{
    const LinkExchange exchange = exchangeWhile(link, [&] {
        controller.receive();
        controller.send("0002 0000 0005 01 03 02 1234"
                        "0001 0000 0005 01 03 02 9999");
    });
    EXPECT_EQ(exchange.reply, register5Is1234);
    EXPECT_TRUE(link.state().connected);
}

TEST(LinkStream, GarbageCostsTheConnectionAtOnce)
{
    ScriptedController controller;
    Link link(loopback, controller.port(), patienceMs);
    QElapsedTimer clock;
    clock.start();
    const LinkExchange exchange = exchangeWhile(link, [&] {
        controller.acceptAndReceive();
        controller.send("48545450 2F312E31 20343030");
    });
    EXPECT_TRUE(exchange.reply.isEmpty());
    EXPECT_LT(clock.elapsed(), patienceMs);
    EXPECT_FALSE(link.state().connected);
    EXPECT_EQ(link.state().untrusted, 1);
    link.close();
}

TEST(LinkStream, FloodOfOtherRepliesCostsTheConnectionAtOnce)
{
    ScriptedController controller;
    Link link(loopback, controller.port(), patienceMs);
    QElapsedTimer clock;
    clock.start();
    const LinkExchange exchange = exchangeWhile(link, [&] {
        controller.acceptAndReceive();
        controller.send(QByteArray("0009 0000 0003 01 83 0A").repeated(1000).constData());
    });
    EXPECT_TRUE(exchange.reply.isEmpty());
    EXPECT_EQ(exchange.dropped.size(), 128u);
    EXPECT_LT(clock.elapsed(), patienceMs);
    EXPECT_EQ(link.state().untrusted, 1);
    link.close();
}

TEST(LinkStream, ControllerThatClosesEveryConnectionIsNotStormed)
{
    ScriptedController controller;
    Link link(loopback, controller.port(), shortTimeoutMs);
    const int connections = 4;
    QElapsedTimer clock;
    clock.start();
    std::thread player([&] {
        for (int connection = 0; connection < connections; ++connection) {
            controller.acceptAndReceive();
            controller.close();
        }
    });
    while (link.state().connects < connections && clock.elapsed() < patienceMs)
        link.exchange(readRegister5, true);
    player.join();
    // Pauses of 0, 100, 200 and 400 ms.
    EXPECT_GE(clock.elapsed(), 700);
    link.close();
}

} // namespace
