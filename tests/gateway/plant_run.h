// SPDX-License-Identifier: MIT
// The programs that a gateway stands between, each in a process of its own: the broker, a subscriber, the gateway.
#ifndef TESTS_GATEWAY_PLANT_RUN_H
#define TESTS_GATEWAY_PLANT_RUN_H

#include <QByteArray>
#include <QJsonObject>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace test
{

/// \return false where Mosquitto is not installed; tests that need it are skipped
bool hasMosquitto();

/// \return a port of loopback that was free a moment ago
int freePort();

/// A Mosquitto of its own on loopback.
class BrokerRun
{
public:
    /// \param lines of its configuration instead of those of a broker that lets everybody in; PORT stands for its port
    explicit BrokerRun(const QByteArray& lines = "listener PORT 127.0.0.1\nallow_anonymous true\n");
    ~BrokerRun(); ///< kills it

    /// Returns when it listens.
    void start();

    /// As by kill -9.
    void kill();

    int port() const { return m_port; }
    QString address() const { return QStringLiteral("127.0.0.1:%1").arg(m_port); }

private:
    const int m_port;
    const QByteArray m_lines;
    QTemporaryDir m_folder;
    std::unique_ptr<QProcess> m_process;
};

struct Heard {
    std::string topic;
    std::string payload; ///< of a subscriber to bytes: in hexadecimal
    bool retained = false;
    int qos = 0;
};

/// mosquitto_sub: a subscriber that shares no code with the gateway.
class SubscriberRun
{
public:
    enum Form { Text, Bytes };

    /// Returns when the subscription holds.
    SubscriberRun(const BrokerRun& broker, const QString& filter, Form form = Text);
    ~SubscriberRun();

    /// \return all that came so far
    const std::vector<Heard>& heard();

    /// Waits until one of what came fulfils \a condition. \return false when none does
    bool hears(const std::function<bool(const Heard& one)>& condition);

    /// \return payloads of a topic as JSON, in the order in which they came
    std::vector<QJsonObject> objects(const char* topic);

private:
    void take(const QByteArray& line);

    QProcess m_process;
    QByteArray m_rest;
    std::vector<Heard> m_heard;
};

/// Publishes with mosquitto_pub, with QoS 1.
void publish(const BrokerRun& broker, const char* topic, const QByteArray& payload, bool retain = false);

class GatewayRun
{
public:
    explicit GatewayRun(const QStringList& arguments);
    ~GatewayRun(); ///< kills it

    /// Waits for the end, which it comes to by itself. \return the exit status
    int end();
    int endBy(int signal);

    /// Waits until its messages so far contain \a text. \return false when they never do
    bool says(const char* text);

    const std::string& messages();
    qint64 processId() const { return m_process.processId(); }

private:
    QProcess m_process;
    std::string m_messages;
};

} // namespace test

#endif
