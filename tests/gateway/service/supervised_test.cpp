// SPDX-License-Identifier: MIT
// The gateway as a program: what systemd and plcgateway --status are told of it, and one of several for a list.

#include "gateway/service/plant_fixture.h"
#include "gateway/system/manager_socket.h"

#include <gmock/gmock.h>

#include <QJsonDocument>

#include <algorithm>
#include <csignal>

namespace
{

using test::GatewayRun;
using test::Heard;
using test::SubscriberRun;
using testing::HasSubstr;

class SupervisedGateway : public test::PlantFixture
{
protected:
    std::string statusOf(const QStringList& more)
    {
        GatewayRun asking(QStringList{QStringLiteral("--status")} + more);
        m_exitStatus = asking.end();
        return asking.messages();
    }

    QString state() const { return folder.filePath(QStringLiteral("state")); }

    int m_exitStatus = -1;
};

TEST_F(SupervisedGateway, SaysHowItIsToWhoeverAsks)
{
    GatewayRun gateway(json());
    ASSERT_TRUE(gateway.says("connected to the broker"));
    QJsonObject status;
    ASSERT_TRUE(test::eventually([&] {
        const std::string text = statusOf({state(), QStringLiteral("--json")});
        status = QJsonDocument::fromJson(QByteArray::fromStdString(text)).object();
        return status["lastReplyAt"].toDouble() > 0 && status["brokerState"] == QStringLiteral("connected");
    }));
    EXPECT_EQ(0, m_exitStatus);
    EXPECT_THAT(statusOf({state()}), HasSubstr("controller is         connected"));
    EXPECT_EQ(QStringLiteral("connected"), status["controllerState"].toString());
    EXPECT_EQ(broker.address(), status["broker"].toString());
    EXPECT_GT(status["requests"].toDouble(), 0);
    EXPECT_EQ(0, status["dropped"].toDouble());
}

TEST_F(SupervisedGateway, IsSaidNotToRunWhenItDoesNot)
{
    EXPECT_THAT(statusOf({folder.path()}), HasSubstr("no gateway is running there"));
    EXPECT_EQ(1, m_exitStatus);
}

TEST_F(SupervisedGateway, SaysThatItsListLetsNothingBeWritten)
{
    useList("name,area,address,type\ncount,9,100,uint16\n");
    GatewayRun gateway(json({QStringLiteral("--allow-writes")}));
    EXPECT_TRUE(gateway.says("allow-writes has no effect: no variable of"));
}

TEST_F(SupervisedGateway, TellsSystemdThatItIsReadyAndLives)
{
    const QByteArray path = folder.filePath(QStringLiteral("notify")).toUtf8();
    const test::ManagerSocket manager(path);
    qputenv("NOTIFY_SOCKET", path);
    qputenv("WATCHDOG_USEC", "400000");
    GatewayRun gateway(json());
    qunsetenv("NOTIFY_SOCKET");
    qunsetenv("WATCHDOG_USEC");
    std::vector<std::string> heard;
    const auto count = [&](const char* message) {
        const std::vector<std::string> more = manager.heard();
        heard.insert(heard.end(), more.begin(), more.end());
        return std::count(heard.begin(), heard.end(), message);
    };
    EXPECT_TRUE(test::eventually([&] { return count("READY=1") == 1; }));
    EXPECT_TRUE(test::eventually([&] { return count("WATCHDOG=1") >= 3; }));
    EXPECT_TRUE(test::eventually(
        [&] { return count("STATUS=controller connected; broker connected; 0 values wait") >= 1; }));
    EXPECT_EQ(0, gateway.endBy(SIGTERM));
    EXPECT_EQ(1, count("STOPPING=1"));
}

TEST_F(SupervisedGateway, SharesAListWithAnother)
{
    const auto ofPart = [&](const char* part, const char* stateOfPart) {
        QStringList words = json({QStringLiteral("--part"), QLatin1String(part)});
        words[words.indexOf(state())] = folder.filePath(QLatin1String(stateOfPart));
        words[words.indexOf(QStringLiteral("p"))] = QStringLiteral("p/") + QLatin1String(stateOfPart);
        return words;
    };
    useList("name,area,address,type\nnear,9,100,uint16\nfar,9,500,uint16\n");
    SubscriberRun subscriber(broker, QStringLiteral("p/+/+"));
    GatewayRun first(ofPart("1/2", "a"));
    GatewayRun second(ofPart("2/2", "b"));
    EXPECT_TRUE(subscriber.hears([](const Heard& one) { return one.topic == "p/a/near"; }));
    EXPECT_TRUE(subscriber.hears([](const Heard& one) { return one.topic == "p/b/far"; }));
    for (const Heard& one : subscriber.heard()) {
        EXPECT_NE("p/a/far", one.topic);
        EXPECT_NE("p/b/near", one.topic);
    }
}

TEST_F(SupervisedGateway, RefusesAPartOfNothing)
{
    useList("name,area,address,type\nnear,9,100,uint16\n");
    GatewayRun gateway(json({QStringLiteral("--part"), QStringLiteral("2/2")}));
    EXPECT_EQ(1, gateway.end());
    EXPECT_THAT(gateway.messages(), HasSubstr("this part is empty"));
}

} // namespace
