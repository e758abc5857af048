// SPDX-License-Identifier: MIT
// The gateway as a program, with a real broker: what it sends as an edge node, told by tshark.

#include "gateway/service/plant_fixture.h"
#include "gateway/sparkplug/decoded.h"
#include "gateway/sparkplug/recording_proxy.h"

#include <gmock/gmock.h>

#include <QDateTime>

#include <algorithm>
#include <csignal>

namespace
{

using test::DecodedPacket;
using test::GatewayRun;
using test::Heard;
using test::RecordingProxy;
using test::SubscriberRun;
using testing::ElementsAre;
using testing::HasSubstr;

class SparkplugGateway : public test::PlantFixture
{
protected:
    void SetUp() override
    {
        if (!test::canDecode())
            GTEST_SKIP() << "tshark or its dissector of Sparkplug is missing";
        PlantFixture::SetUp();
        if (!IsSkipped())
            proxy = std::make_unique<RecordingProxy>(broker.port());
    }

    QStringList sparkplug(const QStringList& more = {}) const
    {
        QStringList all = arguments(QStringList{QStringLiteral("--format"), QStringLiteral("sparkplug"),
                                                QStringLiteral("--group"), QStringLiteral("g"),
                                                QStringLiteral("--node"), QStringLiteral("n")} +
                                    more);
        all[all.indexOf(QStringLiteral("--broker")) + 1] = QStringLiteral("127.0.0.1:%1").arg(proxy->port());
        return all;
    }

    static std::function<bool(const Heard&)> topic(const char* text)
    {
        return [=](const Heard& one) { return one.topic == text; };
    }

    /// \return what was sent, but for the status messages
    const std::vector<DecodedPacket>& sent()
    {
        const std::vector<QByteArray> packets = proxy->packets();
        if (packets.size() == m_looked)
            return m_sent;
        m_looked = packets.size();
        m_sent = test::decoded(packets);
        m_sent.erase(std::remove_if(m_sent.begin(), m_sent.end(),
                                    [](const DecodedPacket& packet) {
                                        return packet.topic.find("plcgateway/") != std::string::npos;
                                    }),
                     m_sent.end());
        return m_sent;
    }

    static std::vector<std::string> typesOf(const std::vector<DecodedPacket>& packets)
    {
        std::vector<std::string> types;
        for (const DecodedPacket& packet : packets) {
            if (!packet.type.empty())
                types.push_back(packet.type);
        }
        return types;
    }

    static std::vector<DecodedPacket> ofType(const std::vector<DecodedPacket>& packets, const char* type)
    {
        std::vector<DecodedPacket> result;
        for (const DecodedPacket& packet : packets) {
            if (packet.type == type)
                result.push_back(packet);
        }
        return result;
    }

    void expectSequence(const std::vector<DecodedPacket>& packets)
    {
        int expected = 0;
        for (const DecodedPacket& packet : packets) {
            if (packet.type.empty() || packet.type == "NDEATH")
                continue;
            if (packet.type == "NBIRTH")
                expected = 0;
            EXPECT_EQ(packet.fields.at("seq"), std::to_string(expected)) << packet.type;
            expected = (expected + 1) % 256;
        }
    }

    /// \return true when data with the value of an alias went out
    bool sends(const char* alias, const char* field, const char* value)
    {
        return test::eventually([&] {
            for (const DecodedPacket& packet : sent()) {
                if (packet.type == "DDATA" && packet.metric(alias)[field] == value)
                    return true;
            }
            return false;
        });
    }

    std::unique_ptr<RecordingProxy> proxy;

private:
    std::size_t m_looked = 0;
    std::vector<DecodedPacket> m_sent;
};

// A request for a birth: metric "Node Control/Rebirth", Boolean, true.
const QByteArray rebirthRequest =
    QByteArray::fromHex("121a0a144e6f646520436f6e74726f6c2f52656269727468200b7001");

TEST_F(SparkplugGateway, IsBornWithTheNumberOfItsWill)
{
    SubscriberRun subscriber(broker, QStringLiteral("spBv1.0/#"));
    GatewayRun gateway(sparkplug());
    ASSERT_TRUE(subscriber.hears(topic("spBv1.0/g/DBIRTH/n/station1")));
    gateway.endBy(SIGTERM);
    const auto packets = sent();
    ASSERT_GE(packets.size(), 4u);
    EXPECT_EQ(packets[0].kind, "Connect Command");
    for (const char* line : {"Will Topic: spBv1.0/g/NDEATH/n", "Will Message: 120b0a05626453657120045800",
                             "Clean Session Flag: Set", "QoS Level: At least once", "Will Retain: Not set"})
        EXPECT_THAT(packets[0].text, HasSubstr(line));
    EXPECT_EQ(packets[1].kind, "Subscribe Request");
    EXPECT_THAT(packets[1].text, HasSubstr("Topic: spBv1.0/g/NCMD/n"));
    EXPECT_THAT(packets[1].text, testing::Not(HasSubstr("DCMD"))); // nothing may be written
    const DecodedPacket& birth = packets[2];
    EXPECT_EQ(birth.type, "NBIRTH");
    EXPECT_EQ(birth.qos, "0");
    EXPECT_FALSE(birth.retained);
    EXPECT_EQ(birth.fields.at("seq"), "0");
    EXPECT_EQ(birth.metric("bdSeq")["long_value"], "0");
    EXPECT_EQ(birth.metric("bdSeq")["datatype"], "4");
    EXPECT_FALSE(birth.metric("bdSeq").has("alias"));
    EXPECT_EQ(birth.metric("Node Control/Rebirth")["boolean_value"], "false");
    EXPECT_FALSE(birth.metric("Node Control/Rebirth").has("alias"));
    EXPECT_TRUE(birth.metric("Spool/Waiting").has("alias"));
    expectSequence(packets);
}

TEST_F(SparkplugGateway, SaysGoodbyeWithItsDeath)
{
    SubscriberRun subscriber(broker, QStringLiteral("spBv1.0/#"));
    GatewayRun gateway(sparkplug());
    ASSERT_TRUE(subscriber.hears(topic("spBv1.0/g/DBIRTH/n/station1")));
    EXPECT_EQ(gateway.endBy(SIGTERM), 0);
    const auto packets = sent();
    ASSERT_GE(packets.size(), 2u);
    EXPECT_EQ(packets.back().kind, "Disconnect Req");
    const DecodedPacket& death = packets[packets.size() - 2];
    EXPECT_EQ(death.type, "NDEATH");
    EXPECT_EQ(death.fields.count("seq"), 0u);
    ASSERT_EQ(death.metrics.size(), 1u);
    EXPECT_EQ(death.metrics[0]["name"], "bdSeq");
}

TEST_F(SparkplugGateway, CountsItsBirthsOverARestart)
{
    SubscriberRun subscriber(broker, QStringLiteral("spBv1.0/#"));
    for (int run = 0; run < 2; ++run) {
        GatewayRun gateway(sparkplug());
        ASSERT_TRUE(test::eventually([&] { return ofType(sent(), "DBIRTH").size() > std::size_t(run); }));
        gateway.endBy(SIGKILL);
    }
    const auto births = ofType(sent(), "NBIRTH");
    ASSERT_EQ(births.size(), 2u);
    EXPECT_EQ(births[0].metric("bdSeq")["long_value"], "0");
    EXPECT_EQ(births[1].metric("bdSeq")["long_value"], "1");
}

TEST_F(SparkplugGateway, GivesEachMetricTypeValueTimeQualityAndUnit)
{
    useList("name,area,address,type,count,unit,scale\n"
            "i16,9,100,int16,,,\nu16,9,101,uint16,,,\nu32,9,102,uint32,,,\ni64,9,104,int64,,,\n"
            "f32,9,110,float32,,,\nscaled,9,112,int16,,°C,0.1\nbit,2,0,bit,,,\ntext,9,120,text,4,,\n"
            "several,9,130,int16,2,,\nbits,2,16,bit,9,,\n");
    setRegister(100, -5);
    setRegister(101, 65535);
    setRegister(102, 1);
    setRegister(103, 1);
    for (int word = 104; word < 108; ++word)
        setRegister(word, 0xFFFF);
    setRegister(111, 0x4148); // 12.5
    setRegister(112, 215);
    setRegister(120, 0x4241);
    setRegister(130, -2);
    setRegister(131, 300);
    for (const int coil : {0, 16, 24})
        controller.memory().setCoil(1, coil, true);
    const qint64 begin = QDateTime::currentMSecsSinceEpoch();
    SubscriberRun subscriber(broker, QStringLiteral("spBv1.0/#"));
    GatewayRun gateway(sparkplug());
    ASSERT_TRUE(subscriber.hears(topic("spBv1.0/g/DBIRTH/n/station1")));
    const DecodedPacket birth = ofType(sent(), "DBIRTH").at(0);
    EXPECT_EQ(birth.device, "station1");
    const auto is = [&birth](const char* name, const char* datatype, const char* field, const char* value) {
        EXPECT_EQ(birth.metric(name)["datatype"], datatype) << name;
        EXPECT_EQ(birth.metric(name)[field], value) << name;
    };
    is("i16", "2", "int_value", "4294967291");
    is("u16", "6", "int_value", "65535");
    is("u32", "7", "int_value", "65537");
    is("i64", "4", "long_value", "18446744073709551615");
    is("f32", "9", "float_value", "12.500000");
    is("scaled", "10", "double_value", "21.500000");
    is("bit", "11", "boolean_value", "true");
    is("text", "12", "string_value", "AB");
    EXPECT_EQ(birth.metric("several")["datatype"], "23");
    EXPECT_EQ(birth.metric("bits")["datatype"], "32");
    EXPECT_EQ(birth.metric("scaled")["engUnit"], "°C");
    for (const auto& metric : birth.metrics) {
        EXPECT_EQ(metric["Quality"], "192") << metric["name"];
        EXPECT_TRUE(metric.has("alias"));
        EXPECT_GE(std::stoll(metric["timestamp"]), begin);
    }
}

TEST_F(SparkplugGateway, SendsChangesByAliasAlone)
{
    SubscriberRun subscriber(broker, QStringLiteral("spBv1.0/#"));
    GatewayRun gateway(sparkplug());
    ASSERT_TRUE(subscriber.hears(topic("spBv1.0/g/DBIRTH/n/station1")));
    setRegister(100, 7);
    ASSERT_TRUE(sends("1", "int_value", "7"));
    const auto packets = sent();
    const auto metric = ofType(packets, "DDATA").back().metric("1");
    EXPECT_FALSE(metric.has("name"));
    EXPECT_FALSE(metric.has("datatype"));
    EXPECT_FALSE(metric.has("is_historical"));
    EXPECT_EQ(metric["Quality"], "192");
    EXPECT_TRUE(metric.has("timestamp"));
    for (const auto& data : ofType(packets, "DDATA"))
        EXPECT_EQ(data.qos, "0");
    expectSequence(packets);
}

TEST_F(SparkplugGateway, IsBornAgainOnCommand)
{
    SubscriberRun subscriber(broker, QStringLiteral("spBv1.0/#"));
    GatewayRun gateway(sparkplug());
    ASSERT_TRUE(subscriber.hears(topic("spBv1.0/g/DBIRTH/n/station1")));
    test::publish(broker, "spBv1.0/g/NCMD/n", "no payload \xFF");
    test::publish(broker, "spBv1.0/g/NCMD/n", rebirthRequest);
    ASSERT_TRUE(test::eventually([&] { return ofType(sent(), "DBIRTH").size() >= 2; }));
    const auto packets = sent();
    const auto births = ofType(packets, "NBIRTH");
    EXPECT_EQ(births[1].fields.at("seq"), "0");
    EXPECT_EQ(births[1].metric("bdSeq")["long_value"], births[0].metric("bdSeq")["long_value"]);
    expectSequence(packets);
    EXPECT_TRUE(gateway.says("does not parse"));
}

TEST_F(SparkplugGateway, WritesWhatACommandSays)
{
    SubscriberRun subscriber(broker, QStringLiteral("spBv1.0/#"));
    GatewayRun gateway(sparkplug({QStringLiteral("--allow-writes")}));
    ASSERT_TRUE(subscriber.hears(topic("spBv1.0/g/DBIRTH/n/station1")));
    EXPECT_THAT(sent()[1].text, HasSubstr("Topic: spBv1.0/g/DCMD/n/station1"));
    // Alias 1 may not be written, alias 3 may; 200 lies outside its limits, and a text is no number.
    test::publish(broker, "spBv1.0/g/DCMD/n/station1", QByteArray::fromHex("1204 1001 5005 1204 1003 502a"));
    ASSERT_TRUE(sends("3", "int_value", "42"));
    EXPECT_EQ(controller.memory().holdingRegister(1, 200), 42);
    EXPECT_EQ(controller.memory().holdingRegister(1, 100), 0);
    test::publish(broker, "spBv1.0/g/DCMD/n/station1",
                  QByteArray::fromHex("1205 1003 50c801 1205 1003 7a0131 1204 1063 5001"));
    EXPECT_TRUE(gateway.says("station1 count = 5: not sent: the list does not say rw of count"));
    EXPECT_TRUE(gateway.says("station1 set point = 42: confirmed"));
    EXPECT_TRUE(gateway.says("outside its limits"));
    EXPECT_TRUE(gateway.says("no value of the metric's type"));
    EXPECT_TRUE(gateway.says("no such metric"));
    EXPECT_EQ(controller.memory().holdingRegister(1, 200), 42);
}

TEST_F(SparkplugGateway, TellsTheDeathOfADeviceAndItsReturn)
{
    setRegister(100, 7);
    SubscriberRun subscriber(broker, QStringLiteral("spBv1.0/#"));
    GatewayRun gateway(sparkplug());
    ASSERT_TRUE(subscriber.hears(topic("spBv1.0/g/DBIRTH/n/station1")));
    controller.stop();
    ASSERT_TRUE(subscriber.hears(topic("spBv1.0/g/DDEATH/n/station1")));
    controller.start();
    ASSERT_TRUE(test::eventually([&] { return ofType(sent(), "DBIRTH").size() >= 2; }));
    const auto packets = sent();
    expectSequence(packets);
    const DecodedPacket death = ofType(packets, "DDEATH").at(0);
    EXPECT_TRUE(death.fields.count("timestamp"));
    bool isDead = false;
    for (const DecodedPacket& packet : packets) {
        isDead = (isDead || packet.type == "DDEATH") && packet.type != "DBIRTH";
        EXPECT_FALSE(isDead && packet.type == "DDATA");
    }
    EXPECT_EQ(ofType(packets, "DBIRTH").back().metric("count")["Quality"], "192");
}

TEST_F(SparkplugGateway, HasADeviceForEachStation)
{
    useList("name,area,address,type,station\none,9,100,uint16,1\ntwo,9,100,uint16,2\n");
    SubscriberRun subscriber(broker, QStringLiteral("spBv1.0/#"));
    GatewayRun gateway(sparkplug({QStringLiteral("--multi-station"), QStringLiteral("--timeout"),
                                  QStringLiteral("50"), QStringLiteral("--retries"), QStringLiteral("0")}));
    ASSERT_TRUE(subscriber.hears(topic("spBv1.0/g/DBIRTH/n/station1")));
    ASSERT_TRUE(subscriber.hears(topic("spBv1.0/g/DBIRTH/n/station2")));
    controller.setSilent(2, true);
    ASSERT_TRUE(subscriber.hears(topic("spBv1.0/g/DDEATH/n/station2")));
    setRegister(100, 7);
    ASSERT_TRUE(sends("1", "int_value", "7")); // the other one goes on
    EXPECT_EQ(ofType(sent(), "DDATA").back().device, "station1");
    controller.setSilent(2, false);
    ASSERT_TRUE(test::eventually([&] { return ofType(sent(), "DBIRTH").size() >= 3; }));
    EXPECT_EQ(ofType(sent(), "DBIRTH").back().metric("two")["alias"], "2");
    expectSequence(sent());
}

TEST_F(SparkplugGateway, HasNullWhereThereIsNoValue)
{
    useList("name,area,address,type\ncount,9,100,uint16\nbcd,9,300,bcd16\n");
    setRegister(300, 0xABCD);
    SubscriberRun subscriber(broker, QStringLiteral("spBv1.0/#"));
    GatewayRun gateway(sparkplug());
    ASSERT_TRUE(subscriber.hears(topic("spBv1.0/g/DBIRTH/n/station1")));
    const auto metric = ofType(sent(), "DBIRTH").at(0).metric("bcd");
    EXPECT_EQ(metric["is_null"], "true");
    EXPECT_EQ(metric["Quality"], "0");
    EXPECT_EQ(metric["datatype"], "6");
}

TEST_F(SparkplugGateway, WaitsForItsPrimaryHost)
{
    SubscriberRun subscriber(broker, QStringLiteral("spBv1.0/#"));
    GatewayRun gateway(sparkplug({QStringLiteral("--primary-host"), QStringLiteral("scada")}));
    ASSERT_TRUE(test::eventually([&] { return proxy->packets().size() >= 2; }));
    test::publish(broker, "spBv1.0/STATE/scada", "online", true);
    test::publish(broker, "spBv1.0/STATE/scada", "{\"online\":true}", true);
    EXPECT_EQ(typesOf(sent()).size(), 0u);
    test::publish(broker, "spBv1.0/STATE/scada", "{\"online\":true,\"timestamp\":1000}", true);
    ASSERT_TRUE(subscriber.hears(topic("spBv1.0/g/DBIRTH/n/station1")));
    // An older one is none; one of the same time is.
    test::publish(broker, "spBv1.0/STATE/scada", "{\"online\":false,\"timestamp\":999}", true);
    test::publish(broker, "spBv1.0/STATE/scada", "{\"online\":false,\"timestamp\":1000}", true);
    ASSERT_TRUE(subscriber.hears(topic("spBv1.0/g/NDEATH/n")));
    setRegister(100, 9);
    test::publish(broker, "spBv1.0/STATE/scada", "{\"online\":true,\"timestamp\":2000}", true);
    ASSERT_TRUE(test::eventually([&] { return ofType(sent(), "DBIRTH").size() >= 2; }));
    EXPECT_EQ(ofType(sent(), "DBIRTH").back().metric("count")["int_value"], "9");
}

TEST_F(SparkplugGateway, SendsAgainAsHistoryWhatHasNoReceipt)
{
    SubscriberRun subscriber(broker, QStringLiteral("spBv1.0/#"));
    GatewayRun gateway(sparkplug());
    ASSERT_TRUE(subscriber.hears(topic("spBv1.0/g/DBIRTH/n/station1")));
    proxy->holdBack(true); // no receipt comes back
    for (int value = 1; value <= 3; ++value) {
        setRegister(100, value);
        ASSERT_TRUE(sends("1", "int_value", std::to_string(value).c_str()));
    }
    proxy->cut(); // while it still holds them back
    proxy->holdBack(false);
    ASSERT_TRUE(test::eventually([&] { return ofType(sent(), "DBIRTH").size() >= 2; }));
    std::vector<std::string> history;
    ASSERT_TRUE(test::eventually([&] {
        history.clear();
        for (const DecodedPacket& packet : ofType(sent(), "DDATA")) {
            for (const auto& metric : packet.metrics) {
                if (metric["alias"] == "1" && metric["is_historical"] == "true" && metric["int_value"] != "0")
                    history.push_back(metric["int_value"]);
            }
        }
        return history.size() >= 3;
    }));
    EXPECT_THAT(history, ElementsAre("1", "2", "3"));
    expectSequence(sent());
}

TEST_F(SparkplugGateway, SpeaksVersion5)
{
    SubscriberRun subscriber(broker, QStringLiteral("spBv1.0/#"));
    GatewayRun gateway(sparkplug({QStringLiteral("--mqtt"), QStringLiteral("5")}));
    ASSERT_TRUE(subscriber.hears(topic("spBv1.0/g/DBIRTH/n/station1")));
    EXPECT_EQ(gateway.endBy(SIGTERM), 0);
    EXPECT_TRUE(subscriber.hears(topic("spBv1.0/g/NDEATH/n")));
    const auto packets = sent();
    EXPECT_THAT(packets[0].text, HasSubstr("Version: MQTT v5.0"));
    EXPECT_THAT(packets[0].text, HasSubstr("Clean"));
    EXPECT_THAT(packets.back().text, HasSubstr("Reason Code: Disconnect with Will Message (4)"));
}

} // namespace
