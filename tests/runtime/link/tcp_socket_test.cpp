// SPDX-License-Identifier: MIT
#include "runtime/link/tcp_socket.h"
#include "support/scripted_controller.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>

#include <cerrno>
#include <chrono>
#include <future>
#include <list>
#include <memory>
#include <thread>

namespace
{

using plc::TcpSocket;

const int patienceMs = 5000;
const int shortMs = 50;
const int moreThanBuffersHold = 64 << 20;

const QString loopback = QStringLiteral("127.0.0.1");

class TcpSocketTest : public testing::Test
{
protected:
    /// Both ends of a connection; one byte goes over it.
    void connectBoth()
    {
        ASSERT_TRUE(socket.connect(patienceMs));
        ASSERT_TRUE(socket.send("?", patienceMs));
        controller.acceptAndReceive(1);
    }

    QByteArray receiveWithin(int timeoutMs)
    {
        QByteArray bytes;
        socket.receive(timeoutMs, &bytes);
        return bytes;
    }

    /// \return what comes, which may take more than one wait
    QByteArray receiveSomething()
    {
        QElapsedTimer clock;
        clock.start();
        QByteArray bytes;
        while (bytes.isEmpty() && socket.isOpen() && clock.elapsed() < patienceMs)
            bytes = receiveWithin(patienceMs);
        return bytes;
    }

    ScriptedController controller;
    TcpSocket socket{loopback, controller.port()};
};

TEST_F(TcpSocketTest, NoListenerIsRefusedInTheSystemsWords)
{
    const int port = ScriptedController().port(); // closed again
    TcpSocket nobodys(loopback, port);
    EXPECT_FALSE(nobodys.connect(patienceMs));
    EXPECT_FALSE(nobodys.isOpen());
    EXPECT_EQ(nobodys.errorString(), QStringLiteral("Connection refused"));
}

TEST_F(TcpSocketTest, WithoutAConnectionItHasNoEnds)
{
    EXPECT_TRUE(socket.ownEnd().address.isEmpty());
    EXPECT_EQ(socket.ownEnd().port, 0);
    EXPECT_EQ(socket.otherEnd().port, 0);
    connectBoth();
    EXPECT_EQ(socket.ownEnd().address, loopback);
    EXPECT_GT(socket.ownEnd().port, 0);
    EXPECT_EQ(socket.otherEnd().port, controller.port());
}

TEST_F(TcpSocketTest, WithoutAConnectionNothingComesAndNothingGoes)
{
    QByteArray bytes = "old";
    socket.receive(patienceMs, &bytes);
    EXPECT_TRUE(bytes.isEmpty());
    EXPECT_FALSE(socket.send("?", patienceMs));
    EXPECT_FALSE(socket.isOpen());
}

TEST_F(TcpSocketTest, ANameIsLookedUp)
{
    TcpSocket named(QStringLiteral("the.controller"), controller.port(), [](const std::string& host) {
        EXPECT_EQ(host, "the.controller");
        return plc::NameLookup::Answer{{"127.0.0.1"}, {}};
    });
    EXPECT_TRUE(named.connect(patienceMs));
}

TEST_F(TcpSocketTest, ASilentNameServerIsWaitedForNoLongerThanTheTimeOut)
{
    auto silent = std::make_shared<std::promise<void>>();
    TcpSocket named(QStringLiteral("the.controller"), 502,
                    [released = silent->get_future().share()](const std::string&) {
                        released.wait();
                        return plc::NameLookup::Answer();
                    });
    QElapsedTimer clock;
    clock.start();
    EXPECT_FALSE(named.connect(shortMs));
    EXPECT_LT(clock.elapsed(), patienceMs);
    EXPECT_EQ(named.errorString(), QStringLiteral("no name server has answered"));
    silent->set_value();
}

TEST_F(TcpSocketTest, AHostThatHasNoAddressIsAnError)
{
    TcpSocket nowhere(QStringLiteral("no.such.host.invalid"), 502);
    EXPECT_FALSE(nowhere.connect(patienceMs));
    EXPECT_FALSE(nowhere.isOpen());
    EXPECT_FALSE(nowhere.errorString().isEmpty());
}

TEST_F(TcpSocketTest, AHostMayBeAName)
{
    TcpSocket named(QStringLiteral("localhost"), controller.port());
    EXPECT_TRUE(named.connect(patienceMs));
    EXPECT_EQ(named.target().address, QStringLiteral("localhost"));
    EXPECT_EQ(named.otherEnd().address, loopback);
}

TEST_F(TcpSocketTest, AHostThatDoesNotAnswerIsGivenUpInTime)
{
    std::list<TcpSocket> waiting; // until there are more than the listener lets wait
    bool connected = true;
    while (connected && waiting.size() < 16) {
        waiting.emplace_back(loopback, controller.port());
        connected = waiting.back().connect(shortMs);
    }
    ASSERT_FALSE(connected);
    const TcpSocket* const last = &waiting.back();
    EXPECT_EQ(last->errorString(), QStringLiteral("Connection timed out"));
}

TEST_F(TcpSocketTest, ASendThatTheOtherSideDoesNotReadIsGivenUpInTime)
{
    connectBoth();
    EXPECT_FALSE(socket.send(QByteArray(moreThanBuffersHold, '?'), shortMs));
    EXPECT_FALSE(socket.isOpen());
    EXPECT_EQ(socket.errorString(), QStringLiteral("Connection timed out"));
}

TEST_F(TcpSocketTest, ASendToAClosedConnectionFails)
{
    connectBoth();
    controller.send("01");
    controller.close();
    while (socket.isOpen() && socket.send("?", patienceMs)) {
    }
    EXPECT_FALSE(socket.isOpen());
    EXPECT_FALSE(socket.send("?", patienceMs));
}

TEST_F(TcpSocketTest, ReceivesWhatCame)
{
    connectBoth();
    controller.send("01 02 03");
    EXPECT_EQ(receiveSomething(), QByteArray::fromHex("010203"));
    EXPECT_TRUE(socket.isOpen());
}

TEST_F(TcpSocketTest, WhatSomebodyHoldsOfTheLastBytesStaysAsItIs)
{
    connectBoth();
    QByteArray bytes = "old";
    const QByteArray held = bytes;
    controller.send("01 02 03");
    while (bytes == held || bytes.isEmpty())
        socket.receive(patienceMs, &bytes);
    EXPECT_EQ(bytes, QByteArray::fromHex("010203"));
    EXPECT_EQ(held, QByteArray("old"));
}

TEST_F(TcpSocketTest, WhereNothingCameTheLastBytesAreGone)
{
    connectBoth();
    QByteArray bytes = "old";
    socket.receive(shortMs, &bytes);
    EXPECT_TRUE(bytes.isEmpty());
}

TEST_F(TcpSocketTest, WithoutAWaitOnlyWhatIsThereCounts)
{
    connectBoth();
    EXPECT_TRUE(receiveWithin(0).isEmpty());
    EXPECT_TRUE(socket.isOpen());
}

TEST_F(TcpSocketTest, ASilentOtherSideClosesNothing)
{
    connectBoth();
    QElapsedTimer clock;
    clock.start();
    EXPECT_TRUE(receiveWithin(shortMs).isEmpty());
    EXPECT_LT(clock.elapsed(), patienceMs);
    EXPECT_TRUE(socket.isOpen());
}

TEST_F(TcpSocketTest, AShortWaitLastsItsTime)
{
    connectBoth();
    QElapsedTimer clock;
    clock.start();
    EXPECT_TRUE(receiveWithin(10).isEmpty());
    EXPECT_GE(clock.elapsed(), 10);
}

TEST_F(TcpSocketTest, TheShortestWaitBehindALongOneIsShort)
{
    connectBoth();
    controller.send("01");
    receiveSomething(); // would wait for long
    QElapsedTimer clock;
    clock.start();
    EXPECT_TRUE(receiveWithin(1).isEmpty());
    EXPECT_LT(clock.elapsed(), patienceMs);
}

TEST_F(TcpSocketTest, AShortWaitBehindALongOneIsShort)
{
    connectBoth();
    controller.send("01");
    receiveSomething(); // would wait for long
    QElapsedTimer clock;
    clock.start();
    EXPECT_TRUE(receiveWithin(shortMs).isEmpty());
    EXPECT_LT(clock.elapsed(), patienceMs);
}

TEST_F(TcpSocketTest, AWaitOfASecondBehindAShortOneIsLonger)
{
    connectBoth();
    EXPECT_TRUE(receiveWithin(1).isEmpty());
    const auto answer = std::async(std::launch::async, [this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(shortMs));
        controller.send("01");
    });
    EXPECT_EQ(receiveWithin(1000), QByteArray::fromHex("01"));
}

TEST_F(TcpSocketTest, ClosesWhenTheOtherSideHas)
{
    connectBoth();
    controller.close();
    errno = 0;
    EXPECT_TRUE(receiveSomething().isEmpty());
    EXPECT_FALSE(socket.isOpen());
    EXPECT_EQ(socket.errorString(), QStringLiteral("the other side has closed the connection"));
}

TEST_F(TcpSocketTest, SaysThatTheOtherSideHasResetTheConnection)
{
    connectBoth();
    controller.reset();
    EXPECT_TRUE(receiveSomething().isEmpty());
    EXPECT_FALSE(socket.isOpen());
    EXPECT_EQ(socket.errorString(), QStringLiteral("Connection reset by peer"));
}

TEST_F(TcpSocketTest, ALookFindsThatTheOtherSideHasClosed)
{
    connectBoth();
    controller.close();
    QElapsedTimer clock;
    clock.start();
    while (socket.isOpen() && clock.elapsed() < patienceMs)
        EXPECT_TRUE(receiveWithin(0).isEmpty());
    EXPECT_FALSE(socket.isOpen());
}

TEST_F(TcpSocketTest, WhatCameBeforeTheEndIsNotLost)
{
    connectBoth();
    controller.send("0A");
    controller.close();
    EXPECT_EQ(receiveSomething(), QByteArray(1, '\x0A'));
    EXPECT_TRUE(receiveSomething().isEmpty());
    EXPECT_FALSE(socket.isOpen());
}

TEST_F(TcpSocketTest, ConnectingAgainLeavesTheOldConnection)
{
    connectBoth();
    ASSERT_TRUE(socket.connect(patienceMs));
    EXPECT_TRUE(controller.isClosedByTheOtherSide());
}

} // namespace
