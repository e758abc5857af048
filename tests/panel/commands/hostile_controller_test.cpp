// SPDX-License-Identifier: MIT
// Controllers that answer wrongly: the panel takes nothing for an answer that is none, and says what it saw.

#include "panel/plcpanel_run.h"
#include "support/hostile_server.h"

#include <gmock/gmock.h>

#include <QElapsedTimer>
#include <QTemporaryFile>

namespace
{

using test::Answer;
using test::HostileServer;
using test::paddedException;
using test::plcpanel;
using test::rightReply;
using test::RunResult;
using test::withByte;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

const HostileServer::Script right = [](const QByteArray& request, int) {
    return Answer{rightReply(request)};
};

/// Runs one command against it, with two tries for each request.
RunResult run(const HostileServer& server, const QString& text)
{
    return plcpanel(text.split(QLatin1Char(' ')) +
                    QStringList{QStringLiteral("--controller"), server.controller(),
                                QStringLiteral("--retries"), QStringLiteral("1")});
}

/// Answers every request with the right reply, changed.
HostileServer::Script changed(const std::function<QByteArray(const QByteArray& reply)>& change)
{
    return [change](const QByteArray& request, int) { return Answer{change(rightReply(request))}; };
}

/// Refuses everything with exception 2, in as many bytes as the right reply has.
const HostileServer::Script paddedRefusal = [](const QByteArray& request, int) {
    return Answer{paddedException(request, 2)};
};

const char refusedWords[] = "the controller refused it: exception 2, illegal data address";

QString largeWrite(int words)
{
    return QStringLiteral("write 9:100=") + QStringLiteral("7,").repeated(words - 1) + QLatin1Char('7');
}

bool isWrite(const QByteArray& request)
{
    return request.at(7) > 4;
}

TEST(HostileController, RightRepliesAreTaken)
{
    HostileServer server(right);
    EXPECT_EQ(run(server, QStringLiteral("write 9:100=1 9:102=2,3 1:5=1 8:10.3=1 14:207=9")).status, 0);
    EXPECT_EQ(run(server, QStringLiteral("read 9:100 1:5x9 14:207")).status, 0);
}

TEST(HostileController, ARefusalAsLongAsTheAnswerConfirmsNoWrite)
{
    HostileServer server(paddedRefusal);
    for (const char* text : {"9:100=1", "9:100=1,2", "1:5=1", "14:207=9", "8:10.3=1"}) {
        const RunResult ended = run(server, QStringLiteral("write ") + QString::fromLatin1(text));
        EXPECT_EQ(ended.status, 1) << text;
        EXPECT_THAT(ended.out, Not(HasSubstr("confirmed"))) << text;
        EXPECT_THAT(ended.errors, HasSubstr(refusedWords)) << text;
    }
}

TEST(HostileController, ARefusalOfTheSecondHalfOfABitWriteIsOne)
{
    HostileServer server([](const QByteArray& request, int) {
        const QByteArray reply = rightReply(request);
        return Answer{isWrite(request) ? paddedException(request, 2) : reply};
    });
    const RunResult ended = run(server, QStringLiteral("write 8:10.3=1"));
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.errors, HasSubstr(refusedWords));
}

TEST(HostileController, ARefusalAsLongAsTheAnswerBringsNoValues)
{
    HostileServer server(paddedRefusal);
    for (const char* text : {"9:100", "9:100x20", "1:5x9", "14:207", "8:10.3"}) {
        const RunResult ended = run(server, QStringLiteral("read ") + QString::fromLatin1(text));
        EXPECT_EQ(ended.status, 1) << text;
        EXPECT_EQ(ended.out, "") << text;
        EXPECT_THAT(ended.errors, HasSubstr(refusedWords)) << text;
    }
}

TEST(HostileController, ARefusalAsLongAsTheAnswerIsNeverShownFresh)
{
    HostileServer server(paddedRefusal);
    const RunResult ended = run(server, QStringLiteral("watch 9:100 --once"));
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.out, AllOf(Not(HasSubstr("fresh")), HasSubstr("exception 2")));
}

TEST(HostileController, ARefusalAsLongAsTheAnswerIsARefusalForTheCheck)
{
    HostileServer server(paddedRefusal);
    const RunResult ended = run(server, QStringLiteral("check 9:100 1:5x9"));
    EXPECT_EQ(ended.status, 3);
    EXPECT_THAT(ended.out, AllOf(HasSubstr("exception 2"), HasSubstr(" 0 can be read")));
}

TEST(HostileController, ThatIsBusyIsNotCalledSilentByTheCheck)
{
    HostileServer server(
        [](const QByteArray& request, int) { return Answer{test::exceptionReply(request, 6)}; });
    const RunResult ended = run(server, QStringLiteral("check 9:100 9:300 9:500"));
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.out, HasSubstr("exception 6, server device busy: 9:100\n"));
    EXPECT_THAT(
        ended.out,
        HasSubstr("station 1 gave no usable answer for the 2 blocks before and is asked no further: 9:500"));
}

TEST(HostileController, AnEchoOfAnotherAddressConfirmsNoWrite)
{
    HostileServer server(
        changed([](const QByteArray& reply) { return withByte(reply, 9, reply.at(9) ^ 1); }));
    for (const char* text : {"9:100=1", "9:100=1,2", "1:5=1", "14:207=9"}) {
        const RunResult ended = run(server, QStringLiteral("write ") + QString::fromLatin1(text));
        EXPECT_EQ(ended.status, 1) << text;
        EXPECT_THAT(ended.errors, HasSubstr("the controller echoed another address")) << text;
    }
}

TEST(HostileController, AnEchoOfAnotherValueConfirmsNoWrite)
{
    HostileServer server(
        changed([](const QByteArray& reply) { return withByte(reply, 10, reply.at(10) ^ 1); }));
    for (const char* text : {"9:100=1", "1:5=1", "1:5=0"}) {
        const RunResult ended = run(server, QStringLiteral("write ") + QString::fromLatin1(text));
        EXPECT_EQ(ended.status, 1) << text;
        EXPECT_THAT(ended.errors, HasSubstr("the controller echoed another value")) << text;
    }
}

TEST(HostileController, AnEchoOfAnotherQuantityConfirmsNoWrite)
{
    HostileServer server(
        changed([](const QByteArray& reply) { return withByte(reply, 11, reply.at(11) - 1); }));
    const RunResult ended = run(server, QStringLiteral("write 9:100=1,2"));
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.errors, HasSubstr("the controller echoed another number of registers"));
}

TEST(HostileController, ABitInAWordIsConfirmedByTheEchoOfTheWordThatWasSent)
{
    HostileServer server([](const QByteArray& request, int) {
        const QByteArray reply = rightReply(request);
        return Answer{isWrite(request) ? withByte(reply, 10, 0xEE) : reply};
    });
    const RunResult ended = run(server, QStringLiteral("write 8:10.3=1"));
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.errors, HasSubstr("the controller echoed another value"));
}

TEST(HostileController, AReadWhoseByteCountIsNotThatOfTheQuantityIsNotFiled)
{
    HostileServer server(
        changed([](const QByteArray& reply) { return withByte(reply, 8, reply.at(8) - 1); }));
    for (const char* text : {"read 9:100", "read 1:5x9", "watch 9:100x5 --once"}) {
        const RunResult ended = run(server, QString::fromLatin1(text));
        EXPECT_EQ(ended.status, 1) << text;
        EXPECT_THAT(ended.out + ended.errors, HasSubstr("another number of bytes than what was asked for"))
            << text;
    }
}

TEST(HostileController, AWrongEchoIsTriedAgain)
{
    HostileServer server([](const QByteArray& request, int index) {
        const QByteArray reply = rightReply(request);
        return Answer{index == 0 ? withByte(reply, 10, 0x77) : reply};
    });
    EXPECT_EQ(run(server, QStringLiteral("write 9:100=1")).status, 0);
    EXPECT_EQ(server.seen().size(), 2U);
}

TEST(HostileController, ThatAnswersAsAnotherUnitIsNamed)
{
    HostileServer server(changed([](const QByteArray& reply) { return withByte(reply, 6, 255); }));
    const RunResult ended = run(server, QStringLiteral("read 9:100"));
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.errors, HasSubstr("unit 255 answered: try --station 255"));
}

TEST(HostileController, ThatAnswersAnotherFunctionIsNamed)
{
    HostileServer server(changed([](const QByteArray& reply) { return withByte(reply, 7, 4); }));
    EXPECT_THAT(run(server, QStringLiteral("read 9:100")).errors, HasSubstr("replies to function 4 came"));
}

TEST(HostileController, ThatDoesNotRepeatTheNumberIsNamed)
{
    HostileServer server(
        changed([](const QByteArray& reply) { return withByte(withByte(reply, 0, 0), 1, 0); }));
    EXPECT_THAT(run(server, QStringLiteral("read 9:100")).errors,
                HasSubstr("replies came with transaction number 0"));
}

TEST(HostileController, ThatSpeaksAnotherProtocolIsNamed)
{
    HostileServer server([](const QByteArray&, int) { return Answer{"HTTP/1.1 400 Bad Request\r\n\r\n"}; });
    EXPECT_THAT(run(server, QStringLiteral("read 9:100")).errors, HasSubstr("no reply of the protocol"));
}

TEST(HostileController, ThatClosesEveryConnectionIsNotSaidToBeSlow)
{
    HostileServer server{HostileServer::Script()};
    for (const char* text : {"read 9:100", "write 9:100=1", "watch 9:100 --once", "check 9:100"}) {
        const RunResult ended = run(server, QString::fromLatin1(text));
        EXPECT_NE(ended.status, 0) << text;
        EXPECT_THAT(ended.out + ended.errors,
                    AllOf(HasSubstr("closed the connection at once: another master may hold its only one"),
                          Not(HasSubstr("no reply within"))))
            << text;
    }
}

TEST(HostileController, ThatClosesEveryConnectionIsNotStormed)
{
    HostileServer server{HostileServer::Script()};
    run(server, QStringLiteral("read 9:100x500 --retries 3"));
    EXPECT_GT(server.connections(), 1);
    EXPECT_LE(server.connections(), 6);
}

/// Answers, and closes after each reply.
const HostileServer::Script closing = [](const QByteArray& request, int) {
    return Answer{rightReply(request), true};
};

TEST(HostileController, ThatClosesAfterEachReplyCostsNoMoreThanOneTry)
{
    HostileServer server(closing);
    EXPECT_EQ(run(server, QStringLiteral("read 9:100x1000")).status, 0);
    EXPECT_EQ(run(server, largeWrite(1000)).status, 0);
}

TEST(HostileController, ALargeRequestToNobodyEndsWithTheTriesOfTheFirst)
{
    const QString nobody = HostileServer(right).controller(); // not there any more
    for (const QString& text :
         {QStringLiteral("read 9:100x9000"), largeWrite(9000), QStringLiteral("check 9:100x9000"),
          QStringLiteral("watch 9:100x9000 --once")}) {
        QElapsedTimer clock;
        clock.start();
        const RunResult ended =
            plcpanel(text.split(QLatin1Char(' ')) +
                     QStringList{QStringLiteral("--controller"), nobody, QStringLiteral("--timeout"),
                                 QStringLiteral("200"), QStringLiteral("--retries"), QStringLiteral("2")});
        EXPECT_NE(ended.status, 0) << text.left(20).toStdString();
        EXPECT_LT(clock.elapsed(), 3000) << text.left(20).toStdString();
        EXPECT_THAT(ended.errors, HasSubstr("cannot be reached")) << text.left(20).toStdString();
    }
}

} // namespace
