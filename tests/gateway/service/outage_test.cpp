// SPDX-License-Identifier: MIT
// Nothing that was counted while the gateway ran is missing at the subscriber, whatever went down meanwhile.
//
// PLC_OUTAGE_SECONDS in the environment says how long the broker stays away; a moment is enough for what is shown.

#include "gateway/service/plant_fixture.h"
#include "gateway/sparkplug/recording_proxy.h"
#include "sparkplug_b.pb.h"

#include <QDateTime>
#include <QJsonDocument>

#include <algorithm>
#include <csignal>

namespace
{

using test::GatewayRun;
using test::Heard;
using test::RecordingProxy;
using test::SubscriberRun;

/// A value that the controller had, and when.
struct Counted {
    int value;
    qint64 from;
    qint64 until;
};

/// A value that came to the subscriber.
struct Told {
    int value;
    qint64 at;
    bool isGood;
};

const int written = 250; // ms after which what was read lies on disk

class Outage : public test::PlantFixture
{
protected:
    void SetUp() override
    {
        PlantFixture::SetUp();
        if (!IsSkipped())
            proxy = std::make_unique<RecordingProxy>(broker.port());
        useList("name,area,address,type\ncount,9,100,uint16\n");
        subscribe();
    }

    virtual QStringList format() const = 0;
    virtual SubscriberRun::Form form() const = 0;
    virtual std::vector<Told> told(const std::vector<Heard>& heard) const = 0;

    void startGateway()
    {
        QStringList all = arguments(format());
        all[all.indexOf(QStringLiteral("--broker")) + 1] = QStringLiteral("127.0.0.1:%1").arg(proxy->port());
        gateway = std::make_unique<GatewayRun>(all);
    }

    void subscribe()
    {
        collect();
        subscriber = std::make_unique<SubscriberRun>(broker, QStringLiteral("#"), form());
    }

    /// What the subscriber has heard stays, whatever becomes of it.
    void collect()
    {
        if (!subscriber)
            return;
        const std::vector<Heard>& heard = subscriber->heard();
        before.insert(before.end(), heard.begin(), heard.end());
    }

    const std::vector<Told>& toldSoFar()
    {
        std::vector<Heard> all = before;
        const std::vector<Heard>& heard = subscriber->heard();
        all.insert(all.end(), heard.begin(), heard.end());
        if (all.size() != looked)
            soFar = told(all);
        looked = all.size();
        return soFar;
    }

    /// Has the controller count, and waits until each value was read.
    void count(int times)
    {
        for (int i = 0; i < times; ++i) {
            const qint64 from = QDateTime::currentMSecsSinceEpoch();
            setRegister(100, ++last);
            const unsigned long asked = controller.requests();
            ASSERT_TRUE(test::eventually([&] { return controller.requests() >= asked + 3; }));
            counted.push_back({last, from, QDateTime::currentMSecsSinceEpoch()});
        }
    }

    void countForSeconds(int seconds)
    {
        const qint64 end = QDateTime::currentMSecsSinceEpoch() + seconds * 1000;
        while (QDateTime::currentMSecsSinceEpoch() < end)
            count(1);
    }

    bool comes(int value)
    {
        return test::eventually([&] {
            const auto& all = toldSoFar();
            return std::any_of(all.begin(), all.end(), [&](const Told& one) { return one.value == value; });
        });
    }

    static void sleep(int milliseconds)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    }

    /// At first the gateway cannot know, and what it sends goes nowhere.
    void leaveBroker()
    {
        proxy->stall(true);
        count(5);
        proxy->hide(true);
        proxy->stall(false);
        count(5);
        countForSeconds(qEnvironmentVariableIntValue("PLC_OUTAGE_SECONDS"));
    }

    void killGateway()
    {
        sleep(written);
        gateway->endBy(SIGKILL);
        startGateway();
        count(5);
    }

    void killBroker()
    {
        collect();
        subscriber.reset();
        proxy->hide(true);
        broker.kill();
        count(5);
        broker.start();
        subscribe();
        proxy->hide(false);
    }

    void loseController()
    {
        sleep(100);
        controller.stop();
        lostFrom = QDateTime::currentMSecsSinceEpoch();
        ASSERT_TRUE(test::eventually([&] {
            const auto& all = toldSoFar();
            return !all.empty() && !all.back().isGood;
        }));
        lostUntil = QDateTime::currentMSecsSinceEpoch();
        controller.start();
    }

    void expectEachInOrder()
    {
        const auto all = toldSoFar();
        for (const Counted& one : counted) {
            EXPECT_TRUE(std::any_of(all.begin(), all.end(),
                                    [&](const Told& other) {
                                        return other.value == one.value && other.isGood &&
                                               other.at >= one.from - 1 && other.at <= one.until + 1;
                                    }))
                << one.value << " is missing, or has another time";
        }
        int greatest = 0;
        for (const Told& one : all) {
            // Again, or the next one: never one that is not the next.
            EXPECT_LE(one.value, greatest + 1);
            greatest = std::max(greatest, one.value);
            EXPECT_FALSE(one.isGood && one.at > lostFrom + 1 && one.at < lostUntil) << one.value;
        }
        EXPECT_EQ(greatest, last);
    }

    void runAll()
    {
        startGateway();
        count(5);
        ASSERT_TRUE(comes(last));
        leaveBroker();
        proxy->hide(false);
        count(3);
        ASSERT_TRUE(comes(last));
        killGateway();
        leaveBroker();
        killGateway();
        proxy->hide(false);
        ASSERT_TRUE(comes(last));
        killBroker();
        count(3);
        ASSERT_TRUE(comes(last));
        loseController();
        count(3);
        ASSERT_TRUE(comes(last));
        expectEachInOrder();
    }

    std::unique_ptr<RecordingProxy> proxy;
    std::unique_ptr<GatewayRun> gateway;
    std::unique_ptr<SubscriberRun> subscriber;
    std::vector<Heard> before;
    std::vector<Told> soFar;
    std::size_t looked = 0;
    std::vector<Counted> counted;
    int last = 0;
    qint64 lostFrom = 0;
    qint64 lostUntil = 0;
};

class JsonOutage : public Outage
{
    QStringList format() const override
    {
        return {QStringLiteral("--format"), QStringLiteral("json"), QStringLiteral("--prefix"),
                QStringLiteral("p")};
    }

    SubscriberRun::Form form() const override { return SubscriberRun::Text; }

    std::vector<Told> told(const std::vector<Heard>& heard) const override
    {
        std::vector<Told> all;
        for (const Heard& one : heard) {
            if (one.topic != "p/count" || one.retained) // a new subscriber gets the last one once more
                continue;
            const QJsonObject object =
                QJsonDocument::fromJson(QByteArray::fromStdString(one.payload)).object();
            all.push_back({object["value"].toInt(), static_cast<qint64>(object["at"].toDouble()),
                           object["quality"] == QStringLiteral("good")});
        }
        return all;
    }
};

TEST_F(JsonOutage, LosesNothing)
{
    runAll();
}

class SparkplugOutage : public Outage
{
    QStringList format() const override
    {
        return {QStringLiteral("--format"), QStringLiteral("sparkplug"), QStringLiteral("--group"),
                QStringLiteral("g"),        QStringLiteral("--node"),    QStringLiteral("n")};
    }

    SubscriberRun::Form form() const override { return SubscriberRun::Bytes; }

    /// Data alone: births show what is, and data has it all the same.
    std::vector<Told> told(const std::vector<Heard>& heard) const override
    {
        const quint32 good = 192;
        std::vector<Told> all;
        for (const Heard& one : heard) {
            const QByteArray bytes = QByteArray::fromHex(QByteArray::fromStdString(one.payload));
            plc::sparkplug::Payload payload;
            if (one.topic.find("/DDATA/") == std::string::npos ||
                !payload.ParseFromArray(bytes.constData(), bytes.size()))
                continue;
            for (const auto& metric : payload.metrics())
                all.push_back({static_cast<int>(metric.int_value()), static_cast<qint64>(metric.timestamp()),
                               metric.properties().values(0).int_value() == good});
        }
        return all;
    }
};

TEST_F(SparkplugOutage, LosesNothing)
{
    runAll();
}

} // namespace
