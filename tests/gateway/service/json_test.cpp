// SPDX-License-Identifier: MIT
// The gateway as a program, with a real broker: what a subscriber gets as JSON.

#include "gateway/service/plant_fixture.h"

#include <QDateTime>

#include <csignal>

namespace
{

using test::GatewayRun;
using test::Heard;
using test::SubscriberRun;

class JsonGateway : public test::PlantFixture
{
protected:
    static std::function<bool(const Heard&)> holds(const char* topic, const char* text)
    {
        return [=](const Heard& one) {
            return one.topic == topic && one.payload.find(text) != std::string::npos;
        };
    }
};

TEST_F(JsonGateway, PublishesEachValueWithItsTimeAndUnit)
{
    setRegister(102, 215);
    SubscriberRun subscriber(broker, QStringLiteral("p/#"));
    const qint64 begin = QDateTime::currentMSecsSinceEpoch();
    GatewayRun gateway(json());
    ASSERT_TRUE(subscriber.hears(holds("p/temperature", "\"value\":21.5")));
    const QJsonObject told = subscriber.objects("p/temperature").at(0);
    EXPECT_EQ(told["unit"], QStringLiteral("°C"));
    EXPECT_EQ(told["quality"], QStringLiteral("good"));
    EXPECT_GE(told["at"].toDouble(), static_cast<double>(begin));
    EXPECT_LE(told["at"].toDouble(), static_cast<double>(QDateTime::currentMSecsSinceEpoch()));
    EXPECT_TRUE(subscriber.hears(holds("p/$state", "\"online\":true")));
}

TEST_F(JsonGateway, RetainsTheLastValueWithQos1)
{
    setRegister(100, 7);
    GatewayRun gateway(json());
    {
        SubscriberRun first(broker, QStringLiteral("p/count"));
        ASSERT_TRUE(first.hears(holds("p/count", "\"value\":7")));
    }
    SubscriberRun later(broker, QStringLiteral("p/count"));
    ASSERT_TRUE(later.hears([](const Heard& one) { return one.retained && one.qos == 1; }));
}

TEST_F(JsonGateway, PublishesOnlyWhatChanges)
{
    SubscriberRun subscriber(broker, QStringLiteral("p/+"));
    GatewayRun gateway(json());
    for (int value = 1; value <= 5; ++value) {
        setRegister(100, value);
        ASSERT_TRUE(subscriber.hears(holds("p/count", ("\"value\":" + std::to_string(value) + ",").c_str())));
    }
    EXPECT_EQ(subscriber.objects("p/temperature").size(), 1u);
}

TEST_F(JsonGateway, PublishesAgainAfterTheIntervalWithTheTimeOfTheLastReply)
{
    SubscriberRun subscriber(broker, QStringLiteral("p/count"));
    GatewayRun gateway(json({QStringLiteral("--republish"), QStringLiteral("1")}));
    ASSERT_TRUE(test::eventually([&] { return subscriber.objects("p/count").size() >= 2; }));
    const auto told = subscriber.objects("p/count");
    EXPECT_EQ(told[0]["value"], told[1]["value"]);
    EXPECT_GE(told[1]["at"].toDouble() - told[0]["at"].toDouble(), 900);
}

TEST_F(JsonGateway, LetsNoValueOfALostControllerLookGood)
{
    setRegister(100, 7);
    SubscriberRun subscriber(broker, QStringLiteral("p/#"));
    GatewayRun gateway(json({QStringLiteral("--republish"), QStringLiteral("1")}));
    ASSERT_TRUE(subscriber.hears(holds("p/count", "\"value\":7")));
    controller.stop();
    const qint64 lost = QDateTime::currentMSecsSinceEpoch();
    for (const char* topic : {"p/count", "p/temperature", "p/set point"})
        ASSERT_TRUE(subscriber.hears(holds(topic, "\"quality\":\"stale\""))) << topic;
    ASSERT_TRUE(subscriber.hears(holds("p/$state", "\"controllerConnected\":false")));
    EXPECT_LE(subscriber.objects("p/count").back()["at"].toDouble(), static_cast<double>(lost));
    controller.start();
    ASSERT_TRUE(test::eventually(
        [&] { return subscriber.objects("p/temperature").back()["quality"] == QStringLiteral("good"); }));
    for (const QJsonObject& told : subscriber.objects("p/count"))
        EXPECT_EQ(told["value"], 7);
}

TEST_F(JsonGateway, TellsWhenItNeverReachedTheController)
{
    controller.stop();
    SubscriberRun subscriber(broker, QStringLiteral("p/#"));
    GatewayRun gateway(json());
    ASSERT_TRUE(subscriber.hears(holds("p/count", "{\"value\":null,\"at\":null,\"quality\":\"bad\"")));
}

TEST_F(JsonGateway, WritesWhatTheListAllowsAndTellsHowItEnded)
{
    SubscriberRun subscriber(broker, QStringLiteral("p/#"));
    GatewayRun gateway(json({QStringLiteral("--allow-writes")}));
    ASSERT_TRUE(subscriber.hears(holds("p/set point", "\"value\":0")));
    publish(broker, "p/set point/set", "{\"value\":42,\"id\":\"a1\"}");
    ASSERT_TRUE(subscriber.hears(holds("p/set point/result", "\"result\":\"confirmed\"")));
    EXPECT_EQ(subscriber.objects("p/set point/result").at(0)["id"], QStringLiteral("a1"));
    ASSERT_TRUE(subscriber.hears(holds("p/set point", "\"value\":42")));
    EXPECT_TRUE(gateway.says("write p/set point/set = 42: confirmed"));

    publish(broker, "p/set point/set", "{\"value\":101,\"id\":\"a2\"}");
    publish(broker, "p/count/set", "5");
    publish(broker, "p/set point/set", "{\"value\":");
    publish(broker, "p/nothing/set", "1");
    ASSERT_TRUE(subscriber.hears(holds("p/set point/result", "outside its limits")));
    ASSERT_TRUE(subscriber.hears(holds("p/count/result", "does not say rw")));
    ASSERT_TRUE(subscriber.hears(holds("p/set point/result", "no JSON")));
    EXPECT_TRUE(gateway.says("write p/nothing/set: not sent"));
    EXPECT_EQ(controller.memory().holdingRegister(1, 200), 42);
    EXPECT_EQ(controller.memory().holdingRegister(1, 100), 0);
}

TEST_F(JsonGateway, TellsTheExceptionOfARefusedWrite)
{
    useList("name,area,address,type,access\ncount,9,100,uint16,\nbad,9,200,uint16,rw\n");
    SubscriberRun subscriber(broker, QStringLiteral("p/#"));
    GatewayRun gateway(json({QStringLiteral("--allow-writes")}));
    ASSERT_TRUE(subscriber.hears(holds("p/bad", "\"value\":0")));
    simulator::FaultSettings faults;
    faults.exception = 1;
    controller.setFaults(faults);
    // A read that was refused right before it ends a write with it: then it never went out, and is asked for again.
    QJsonObject told;
    for (std::size_t tries = 0; tries < 20 && told["result"] != QStringLiteral("refused"); ++tries) {
        publish(broker, "p/bad/set", "1");
        ASSERT_TRUE(test::eventually([&] { return subscriber.objects("p/bad/result").size() == tries + 1; }));
        told = subscriber.objects("p/bad/result").back();
    }
    EXPECT_EQ(told["result"], QStringLiteral("refused"));
    EXPECT_EQ(told["exception"], 4);
}

TEST_F(JsonGateway, TakesNoRetainedRequest)
{
    publish(broker, "p/set point/set", "42", true);
    SubscriberRun subscriber(broker, QStringLiteral("p/+/result"));
    GatewayRun gateway(json({QStringLiteral("--allow-writes")}));
    ASSERT_TRUE(subscriber.hears(holds("p/set point/result", "a retained message is no request")));
    EXPECT_EQ(controller.memory().holdingRegister(1, 200), 0);
}

TEST_F(JsonGateway, LooksAtNoLongMessage)
{
    SubscriberRun subscriber(broker, QStringLiteral("p/#"));
    GatewayRun gateway(json({QStringLiteral("--allow-writes")}));
    ASSERT_TRUE(subscriber.hears(holds("p/set point", "\"value\":0")));
    publish(broker, "p/set point/set", QByteArray(70000, '1'));
    EXPECT_TRUE(gateway.says("a message of 70000 bytes is not looked at"));
}

TEST_F(JsonGateway, SaysGoodbye)
{
    SubscriberRun subscriber(broker, QStringLiteral("p/#"));
    GatewayRun gateway(json());
    ASSERT_TRUE(subscriber.hears(holds("p/$state", "\"online\":true")));
    EXPECT_EQ(gateway.endBy(SIGTERM), 0);
    EXPECT_TRUE(subscriber.hears(holds("p/$state", "{\"online\":false,\"reason\":\"stopped\"}")));
}

TEST_F(JsonGateway, LeavesItsWillWhenItIsKilled)
{
    SubscriberRun subscriber(broker, QStringLiteral("p/#"));
    GatewayRun gateway(json());
    ASSERT_TRUE(subscriber.hears(holds("p/$state", "\"online\":true")));
    gateway.endBy(SIGKILL);
    EXPECT_TRUE(subscriber.hears(holds("p/$state", "\"reason\":\"connection lost\"")));
}

} // namespace
