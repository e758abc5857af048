// SPDX-License-Identifier: MIT
// Messages from a broker, whoever sent them: requests to write and commands, requests for births, states of a host.
//
// Input: the format, then steps: a message to a topic (one of the gateway's, or any) with any payload, or the end of the
// connection and another one. Whatever comes, only the one variable that may be written is written, with values inside
// its limits, and a retained message writes nothing.

#include "fuzz/byte_source.h"
#include "fuzz/check.h"
#include "fuzz/fuzz_target.h"
#include "gateway/journal/journal.h"
#include "gateway/json/json_publisher.h"
#include "gateway/sparkplug/sparkplug_publisher.h"

#include <memory>

namespace
{

using fuzz::ByteSource;
using fuzz::check;

const int greatestAllowed = 100;
const int longestPayload = 600;

class EmptyBacklog : public plc::Backlog
{
public:
    std::vector<plc::WaitingSample> take(std::size_t) override { return {}; }
    void acknowledge(quint64) override { check(false, "nothing is acknowledged that did not wait"); }
    void rewind() override {}
    quint64 newest() const override { return 0; }
};

class ConstantValues : public plc::CurrentValues
{
public:
    plc::Sample current(std::size_t variable) override
    {
        return {static_cast<quint32>(variable), 1000, qint64(5), plc::SampleQuality::Good};
    }
    int stationOf(std::size_t) const override { return 1; }
    bool isUp(int) override { return true; }
    bool isSettled() override { return true; }
};

class PatientBroker : public plc::Broker
{
public:
    int publish(const plc::BrokerMessage& message) override
    {
        check(!message.topic.isEmpty() && !message.topic.contains('#') && !message.topic.contains('+'),
              "messages go to topics");
        return ++m_token;
    }
    int subscribe(const QByteArrayList&, int) override { return ++m_token; }
    void leave(bool) override { hasLeft = true; }

    int lastToken() const { return m_token; }
    bool hasLeft = false;

private:
    int m_token = 0;
};

plc::GatewayOptions optionsWith(bool isJson)
{
    plc::GatewayOptions options;
    options.format = isJson ? plc::PayloadFormat::Json : plc::PayloadFormat::Sparkplug;
    options.prefix = QStringLiteral("p");
    options.group = QStringLiteral("g");
    options.node = QStringLiteral("n");
    options.device = QStringLiteral("d");
    options.primaryHost = QStringLiteral("h");
    options.stateDirectory = QStringLiteral("/proc/nowhere"); // nothing is written down
    options.variables.resize(3);
    const char* const names[] = {"a", "b", "c"};
    for (std::size_t i = 0; i < options.variables.size(); ++i) {
        options.variables[i].name = QString::fromLatin1(names[i]);
        options.variables[i].elements.element = static_cast<int>(i);
        options.variables[i].min = 0;
        options.variables[i].max = greatestAllowed;
    }
    options.variables[1].access = plc::Access::ReadWrite;
    options.variables[2].access = plc::Access::ReadOnly;
    return options;
}

/// A gateway without a controller and a broker.
class Gateway
{
public:
    explicit Gateway(bool isJson)
        : m_options(optionsWith(isJson)),
          m_writes(
              m_options.variables, true,
              [this](std::size_t variable, const std::vector<quint32>& elements, const plc::WriteDone& done) {
                  write(variable, elements, done);
              },
              [] {})
    {
        if (isJson)
            m_publisher = std::make_unique<plc::JsonPublisher>(m_options.prefix, m_options.variables, 10,
                                                               &m_backlog, &m_writes);
        else
            m_publisher =
                std::make_unique<plc::SparkplugPublisher>(m_options, &m_backlog, &m_values, &m_writes);
        connect();
    }

    void connect()
    {
        m_broker.hasLeft = false;
        m_publisher->will();
        m_publisher->connected(&m_broker);
        m_publisher->subscribed(m_broker.lastToken(), true);
        m_publisher->work({});
    }

    void disconnect() { m_publisher->disconnected(); }

    void receive(const plc::BrokerMessage& message)
    {
        m_mayWrite = !message.retain;
        m_publisher->received(message);
        m_publisher->work({});
        if (!m_broker.hasLeft)
            return;
        disconnect();
        connect();
    }

private:
    void write(std::size_t variable, const std::vector<quint32>& elements, const plc::WriteDone& done) const
    {
        check(m_mayWrite, "a retained message writes nothing");
        check(variable == 1, "only what the list says rw of is written");
        check(elements.size() == 1 && elements.front() <= greatestAllowed, "the limits of the list hold");
        done({});
    }

    const plc::GatewayOptions m_options;
    EmptyBacklog m_backlog;
    ConstantValues m_values;
    PatientBroker m_broker;
    plc::WriteGate m_writes;
    std::unique_ptr<plc::Publisher> m_publisher;
    bool m_mayWrite = false;
};

QByteArray takeTopic(ByteSource& source)
{
    const char* const topics[] = {"p/a/set",         "p/b/set",          "p/c/set",
                                  "p/%62/set",       "spBv1.0/g/NCMD/n", "spBv1.0/g/DCMD/n/d1",
                                  "spBv1.0/STATE/h", "p/$state/set"};
    const int choice = source.below(static_cast<int>(std::size(topics)) + 1);
    return choice < static_cast<int>(std::size(topics))
               ? QByteArray(topics[choice])
               : QByteArray::fromStdString(source.text(static_cast<std::size_t>(source.below(40))));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    plc::listenToJournal([](plc::Weight, const QString&) {});
    ByteSource source(data, size);
    Gateway gateway(source.flag());
    while (!source.empty()) {
        const int step = source.byte();
        if (step == 0xFF) {
            gateway.disconnect();
            gateway.connect();
            continue;
        }
        plc::BrokerMessage message;
        message.retain = (step & 1) != 0;
        message.topic = takeTopic(source);
        message.payload =
            QByteArray::fromStdString(source.text(static_cast<std::size_t>(source.word() % longestPayload)));
        gateway.receive(message);
    }
    return 0;
}
