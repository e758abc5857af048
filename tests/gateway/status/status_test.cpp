// SPDX-License-Identifier: MIT
#include "gateway/status/status_command.h"
#include "gateway/status/status_socket.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <memory>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace plc
{

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class StatusTest : public testing::Test
{
protected:
    QString folder(const char* name)
    {
        EXPECT_TRUE(QDir(m_root.path()).mkpath(QLatin1String(name)));
        return m_root.filePath(QLatin1String(name));
    }

    std::unique_ptr<StatusServer> serve(const char* name)
    {
        auto server = std::make_unique<StatusServer>();
        EXPECT_EQ(QString(), server->open(folder(name)));
        return server;
    }

    StatusReport statusOf(const QStringList& who, bool isJson = false)
    {
        return plc::statusOf(who, isJson, m_root.path());
    }

    QTemporaryDir m_root;
};

TEST_F(StatusTest, IsWhatWasShownLast)
{
    const auto server = serve("line1");
    server->show({{QStringLiteral("waiting"), 5}});
    server->show({{QStringLiteral("waiting"), 7}});
    const StatusAnswer answer = askStatus(folder("line1"));
    EXPECT_EQ(QString(), answer.error);
    EXPECT_EQ(7, answer.status.value(QStringLiteral("waiting")).toInt());
}

TEST_F(StatusTest, IsToldForPeopleInTheirWords)
{
    const auto server = serve("line1");
    server->show({{QStringLiteral("waiting"), 7},
                  {QStringLiteral("controllerState"), QStringLiteral("connected")},
                  {QStringLiteral("lastReplyAt"), 1000.0},
                  {QStringLiteral("oldestMs"), 1500},
                  {QStringLiteral("spoolProblem"), QString()},
                  {QStringLiteral("roundTripMs"), 0.122090909},
                  {QStringLiteral("requests"), 12345678},
                  {QStringLiteral("more"), true}});
    const std::string text = statusOf({QStringLiteral("line1")}).text.toStdString();
    EXPECT_EQ("line1\n"
              "  controller is         connected\n"
              "  last good reply       1970-01-01T00:00:01.000Z\n"
              "  reply takes (ms)      0.1221\n"
              "  requests              12345678\n"
              "  values that wait      7\n"
              "  oldest has waited     1.5 s\n"
              "  more                  yes\n",
              text);
}

TEST_F(StatusTest, IsToldForScriptsAsJson)
{
    const auto server = serve("line1");
    server->show({{QStringLiteral("waiting"), 7}});
    EXPECT_EQ("{\"name\":\"line1\",\"waiting\":7}\n",
              statusOf({QStringLiteral("line1")}, true).text.toStdString());
}

TEST_F(StatusTest, OfAllThatRunIsToldWhenNoneIsNamed)
{
    const auto first = serve("line1");
    const auto second = serve("line2");
    folder("stopped");
    const StatusReport report = statusOf({});
    EXPECT_THAT(report.text.toStdString(), HasSubstr("line1\n"));
    EXPECT_THAT(report.text.toStdString(), HasSubstr("line2\n"));
    EXPECT_THAT(report.errors, IsEmpty());
}

TEST_F(StatusTest, OfAFolderIsFoundByItsPath)
{
    const auto server = serve("line1");
    server->show({{QStringLiteral("waiting"), 7}});
    EXPECT_THAT(statusOf({folder("line1") + QLatin1Char('/')}).text.toStdString(),
                HasSubstr("line1\n  values that"));
}

TEST_F(StatusTest, OfNobodyIsSaidToBeThat)
{
    const QStringList none = statusOf({}).errors;
    ASSERT_EQ(1, none.size());
    EXPECT_THAT(none.at(0).toStdString(), HasSubstr("no gateway is running in"));
    folder("line1");
    const QStringList named = statusOf({QStringLiteral("line1")}).errors;
    ASSERT_EQ(1, named.size());
    EXPECT_THAT(named.at(0).toStdString(), HasSubstr("line1: no gateway is running there"));
}

TEST_F(StatusTest, SocketIsGoneWithTheGatewayAndReplacedAfterAKill)
{
    const QString socket = statusSocket(folder("line1"));
    auto server = serve("line1");
    EXPECT_TRUE(QFileInfo::exists(socket));
    server.reset();
    EXPECT_FALSE(QFileInfo::exists(socket));
    QFile left(socket);
    ASSERT_TRUE(left.open(QIODevice::WriteOnly));
    server = serve("line1");
    EXPECT_EQ(QString(), askStatus(folder("line1")).error);
}

TEST_F(StatusTest, SomebodyWhoDoesNotListenKeepsNobody)
{
    const auto server = serve("line1");
    const QByteArray path = QFile::encodeName(statusSocket(folder("line1")));
    std::vector<int> silent;
    for (int i = 0; i < 10; ++i) {
        silent.push_back(socket(AF_UNIX, SOCK_STREAM, 0));
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, path.constData(), sizeof address.sun_path);
        ASSERT_EQ(0, connect(silent.back(), reinterpret_cast<const sockaddr*>(&address), sizeof address));
    }
    EXPECT_EQ(QString(), askStatus(folder("line1")).error);
    for (const int descriptor : silent)
        close(descriptor);
}

TEST_F(StatusTest, PathThatIsTooLongIsSaidToBe)
{
    StatusServer server;
    EXPECT_THAT(server.open(QLatin1Char('/') + QString(200, QLatin1Char('x'))).toStdString(),
                HasSubstr("too long for a socket"));
}

TEST_F(StatusTest, FolderThatIsNotThereIsNamed)
{
    StatusServer server;
    EXPECT_THAT(server.open(m_root.filePath(QStringLiteral("none"))).toStdString(),
                HasSubstr("/none/status"));
}

TEST_F(StatusTest, TextsOfTheGatewayCannotMoveTheCursor)
{
    const auto server = serve("line1");
    server->show({{QStringLiteral("controllerState"), QStringLiteral("a\x1b[2Jb")}});
    EXPECT_FALSE(statusOf({QStringLiteral("line1")}).text.contains(QLatin1Char('\x1b')));
}

} // namespace

} // namespace plc
