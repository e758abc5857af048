// The link with remote frames, which carry no number.
#include "runtime/cycle/panel_fixture.h"
#include "runtime/link/link.h"
#include "support/scripted_controller.h"

#include <thread>

namespace
{

using namespace plc;

const int longTimeoutMs = 5000;
const int shortTimeoutMs = 100;
const std::size_t requestSize = 22;

const QString loopback = QStringLiteral("127.0.0.1");
const QByteArray readRegister5 = QByteArray::fromHex("16000000010009000000050001"
                                                     "0000000000000000"
                                                     "26");
const int replySize = 11;
const char* const register5Is1234 = "0000 0000 0005 01 09 02 1234";
const char* const register5Is9999 = "0000 0000 0005 01 09 02 9999";

class RemoteLink : public testing::Test
{
protected:
    LinkExchange ask() { return link->exchange(readRegister5, true, replySize); }

    LinkExchange askWhile(const std::function<void()>& play)
    {
        std::thread player(play);
        const LinkExchange exchange = ask();
        player.join();
        return exchange;
    }

    void connect(int timeoutMs)
    {
        link = std::make_unique<Link>(loopback, controller.port(), timeoutMs, FrameFormat::Remote);
    }

    void TearDown() override { link->close(); }

    ScriptedController controller;
    std::unique_ptr<Link> link;
};

TEST_F(RemoteLink, SendsTheFrameAsItIsAndGivesTheReplyAsItCame)
{
    connect(longTimeoutMs);
    const LinkExchange exchange = askWhile([&] {
        controller.acceptAndReceive(requestSize);
        controller.send(register5Is1234);
    });
    EXPECT_TRUE(exchange.remote);
    EXPECT_EQ(exchange.sentFrame, readRegister5);
    EXPECT_EQ(exchange.reply, QByteArray::fromHex(register5Is1234));
    EXPECT_TRUE(link->state().connected);
    EXPECT_EQ(link->state().untrusted, 0);
}

TEST_F(RemoteLink, KeepsTheConnectionFromAnswerToAnswer)
{
    connect(longTimeoutMs);
    askWhile([&] {
        controller.acceptAndReceive(requestSize);
        controller.send(register5Is9999);
    });
    const LinkExchange exchange = askWhile([&] {
        controller.receive(requestSize);
        controller.send(register5Is1234);
    });
    EXPECT_EQ(exchange.reply, QByteArray::fromHex(register5Is1234));
    EXPECT_EQ(link->state().connects, 1);
}

TEST_F(RemoteLink, SilenceCostsTheConnectionAndTheNextIsMadeAtOnce)
{
    connect(shortTimeoutMs);
    QElapsedTimer clock;
    clock.start();
    const int rounds = 10;
    for (int round = 0; round < rounds; ++round) {
        const LinkExchange exchange = askWhile([&] {
            controller.acceptAndReceive(requestSize);
            EXPECT_TRUE(controller.isClosedByTheOtherSide());
            controller.close();
        });
        EXPECT_TRUE(exchange.sent);
        EXPECT_TRUE(exchange.reply.isEmpty());
        EXPECT_FALSE(link->state().connected);
    }
    EXPECT_EQ(link->state().untrusted, rounds);
    EXPECT_EQ(link->state().connects, rounds);
    EXPECT_GE(clock.elapsed(), rounds * shortTimeoutMs);
    // Pauses that grew would add up to more than 25 s, and would leave requests unsent.
    EXPECT_LT(clock.elapsed(), 10000);
}

TEST_F(RemoteLink, LateReplyDoesNotAnswerTheNextRequest)
{
    connect(shortTimeoutMs);
    ScriptedController& late = controller;
    EXPECT_TRUE(askWhile([&] { late.acceptAndReceive(requestSize); }).reply.isEmpty());
    late.send(register5Is9999);
    late.close();
    const LinkExchange exchange = askWhile([&] {
        controller.acceptAndReceive(requestSize);
        controller.send(register5Is1234);
    });
    EXPECT_EQ(exchange.reply, QByteArray::fromHex(register5Is1234));
}

TEST_F(RemoteLink, ReplyThatComesTwiceCostsTheConnection)
{
    connect(longTimeoutMs);
    const LinkExchange first = askWhile([&] {
        controller.acceptAndReceive(requestSize);
        controller.send("0000 0000 0005 01 09 02 9999 0000 0000 0005 01 09 02 9999");
    });
    EXPECT_EQ(first.reply, QByteArray::fromHex(register5Is9999));
    controller.close();
    const LinkExchange second = askWhile([&] {
        controller.acceptAndReceive(requestSize);
        controller.send(register5Is1234);
    });
    EXPECT_EQ(second.reply, QByteArray::fromHex(register5Is1234));
    EXPECT_EQ(link->state().connects, 2);
    EXPECT_EQ(link->state().untrusted, 1);
}

TEST_F(RemoteLink, BytesBetweenTwoRequestsCostTheConnection)
{
    connect(longTimeoutMs);
    askWhile([&] {
        controller.acceptAndReceive(requestSize);
        controller.send(register5Is9999);
    });
    controller.send(register5Is9999);
    QThread::msleep(50); // until they are there; coming later is what the link cannot tell
    controller.close();
    const LinkExchange exchange = askWhile([&] {
        controller.acceptAndReceive(requestSize);
        controller.send(register5Is1234);
    });
    EXPECT_EQ(exchange.reply, QByteArray::fromHex(register5Is1234));
    EXPECT_EQ(link->state().untrusted, 1);
}

TEST_F(RemoteLink, RepliesThatDoNotFitAreDroppedAndCostTheConnection)
{
    connect(longTimeoutMs);
    const LinkExchange exchange = askWhile([&] {
        controller.acceptAndReceive(requestSize);
        controller.send("0000 0000 0005 02 09 02 9999"
                        "0000 0000 0005 01 0A 02 9999"
                        "0000 0000 0007 01 09 04 9999 9999"
                        "0000 0000 0005 01 09 02 1234");
    });
    EXPECT_EQ(exchange.reply, QByteArray::fromHex(register5Is1234));
    EXPECT_EQ(exchange.dropped.size(), 3u);
    EXPECT_EQ(link->state().dropped.wrongUnit, 1);
    EXPECT_EQ(link->state().dropped.wrongPlace, 2);
    EXPECT_FALSE(link->state().connected);
}

TEST_F(RemoteLink, ReplyInPiecesIsPutTogether)
{
    connect(longTimeoutMs);
    const LinkExchange exchange = askWhile([&] {
        controller.acceptAndReceive(requestSize);
        controller.send("0000 0000 00");
        QThread::msleep(20);
        controller.send("05 01 09 02 12");
        QThread::msleep(20);
        controller.send("34");
    });
    EXPECT_EQ(exchange.reply, QByteArray::fromHex(register5Is1234));
    EXPECT_TRUE(link->state().connected);
}

TEST_F(RemoteLink, ControllerThatSendsGarbageIsNotStormed)
{
    connect(longTimeoutMs);
    const int connections = 4;
    QElapsedTimer clock;
    clock.start();
    std::thread player([&] {
        for (int connection = 0; connection < connections; ++connection) {
            controller.acceptAndReceive(requestSize);
            controller.send("48545450 2F312E31 20343030");
            controller.isClosedByTheOtherSide();
            controller.close();
        }
    });
    while (link->state().connects < connections && clock.elapsed() < patienceMs)
        ask();
    player.join();
    // Pauses of 0, 100, 200 and 400 ms.
    EXPECT_GE(clock.elapsed(), 700);
}

TEST_F(RemoteLink, BroadcastIsNotWaitedForAndKeepsTheConnection)
{
    connect(longTimeoutMs);
    std::thread player([&] { controller.acceptAndReceive(24); });
    const LinkExchange exchange = link->exchange(
        QByteArray::fromHex("18 00 00 00 00 00 09 00 00 00 05 00 01 00 00 00 00 00 00 00 00 34 12 6D"),
        false);
    player.join();
    EXPECT_TRUE(exchange.sent);
    EXPECT_TRUE(link->state().connected);
}

} // namespace
