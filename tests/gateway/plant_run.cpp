// SPDX-License-Identifier: MIT
#include "gateway/plant_run.h"

#include "support/application.h"
#include "support/built_files.h"
#include "support/loopback.h"
#include "support/waiting.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QJsonDocument>
#include <QStandardPaths>

#include <csignal>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

namespace test
{

namespace
{

const int lookMs = 10;

QString mosquitto()
{
    // Debian has it where only root looks.
    const QString found = QStandardPaths::findExecutable(QStringLiteral("mosquitto"));
    return found.isEmpty()
               ? QStandardPaths::findExecutable(QStringLiteral("mosquitto"), {QStringLiteral("/usr/sbin")})
               : found;
}

bool listens(int port)
{
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = loopback(port);
    const bool isThere =
        connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    close(descriptor);
    return isThere;
}

} // namespace

bool hasMosquitto()
{
    return !mosquitto().isEmpty();
}

int freePort()
{
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = loopback();
    socklen_t size = sizeof address;
    EXPECT_EQ(0, bind(descriptor, reinterpret_cast<sockaddr*>(&address), size));
    EXPECT_EQ(0, getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size));
    close(descriptor);
    return ntohs(address.sin_port);
}

BrokerRun::BrokerRun(const QByteArray& lines) : m_port(freePort()), m_lines(lines)
{
    needApplication();
}

BrokerRun::~BrokerRun()
{
    kill();
}

void BrokerRun::start()
{
    QByteArray text = m_lines;
    text.replace("PORT", QByteArray::number(m_port));
    if (geteuid() == 0)
        text += "user root\n"; // it would not read the files of the test otherwise
    QFile file(m_folder.filePath(QStringLiteral("broker.conf")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text + "log_dest none\n");
    file.close();
    m_process = std::make_unique<QProcess>();
    m_process->start(mosquitto(), {QStringLiteral("-c"), file.fileName()});
    ASSERT_TRUE(m_process->waitForStarted());
    ASSERT_TRUE(eventually([this] { return listens(m_port); }));
}

void BrokerRun::kill()
{
    if (!m_process)
        return;
    m_process->kill();
    m_process->waitForFinished();
    m_process.reset();
}

SubscriberRun::SubscriberRun(const BrokerRun& broker, const QString& filter, Form form)
{
    // -d tells when the subscription holds.
    m_process.start(QStringLiteral("stdbuf"),
                    QStringList{QStringLiteral("-oL"), QStringLiteral("mosquitto_sub"), QStringLiteral("-d"),
                                QStringLiteral("-h"), QStringLiteral("127.0.0.1"), QStringLiteral("-p"),
                                QString::number(broker.port()), QStringLiteral("-q"), QStringLiteral("1"),
                                QStringLiteral("-t"), filter, QStringLiteral("-F"),
                                QStringLiteral("HEARD\t%r\t%q\t%t\t") +
                                    (form == Bytes ? QStringLiteral("%x") : QStringLiteral("%p"))});

    EXPECT_TRUE(eventually([this] {
        m_process.waitForReadyRead(lookMs);
        m_rest += m_process.readAllStandardOutput();
        return m_rest.contains("SUBACK");
    }));
}

SubscriberRun::~SubscriberRun()
{
    m_process.kill();
    m_process.waitForFinished();
}

void SubscriberRun::take(const QByteArray& line)
{
    const QByteArrayList fields = line.split('\t');
    if (fields.size() < 5 || fields[0] != "HEARD")
        return;
    Heard one;
    one.retained = fields[1] == "1";
    one.qos = fields[2].toInt();
    one.topic = fields[3].toStdString();
    one.payload = fields.mid(4).join('\t').toStdString();
    m_heard.push_back(one);
}

const std::vector<Heard>& SubscriberRun::heard()
{
    m_process.waitForReadyRead(lookMs);
    m_rest += m_process.readAllStandardOutput();
    for (int end = m_rest.indexOf('\n'); end >= 0; end = m_rest.indexOf('\n')) {
        take(m_rest.left(end));
        m_rest.remove(0, end + 1);
    }
    return m_heard;
}

bool SubscriberRun::hears(const std::function<bool(const Heard& one)>& condition)
{
    std::size_t looked = 0;
    return eventually([&] {
        for (heard(); looked < m_heard.size(); ++looked) {
            if (condition(m_heard[looked]))
                return true;
        }
        return false;
    });
}

std::vector<QJsonObject> SubscriberRun::objects(const char* topic)
{
    std::vector<QJsonObject> objects;
    for (const Heard& one : heard()) {
        if (one.topic == topic)
            objects.push_back(QJsonDocument::fromJson(QByteArray::fromStdString(one.payload)).object());
    }
    return objects;
}

void publish(const BrokerRun& broker, const char* topic, const QByteArray& payload, bool retain)
{
    QStringList arguments = {QStringLiteral("-p"), QString::number(broker.port()), QStringLiteral("-q"),
                             QStringLiteral("1"),  QStringLiteral("-t"),           QString::fromUtf8(topic),
                             QStringLiteral("-s")};
    if (retain)
        arguments << QStringLiteral("-r");
    QProcess process;
    process.start(QStringLiteral("mosquitto_pub"), arguments);
    process.write(payload);
    process.closeWriteChannel();
    EXPECT_TRUE(process.waitForFinished());
    EXPECT_EQ(0, process.exitCode()) << process.readAllStandardError().constData();
}

GatewayRun::GatewayRun(const QStringList& arguments)
{
    needApplication();
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.start(QString::fromUtf8(builtPlcgateway()), arguments);
    EXPECT_TRUE(m_process.waitForStarted());
}

GatewayRun::~GatewayRun()
{
    m_process.kill();
    m_process.waitForFinished();
}

int GatewayRun::end()
{
    EXPECT_TRUE(m_process.waitForFinished(patienceMs) || m_process.state() == QProcess::NotRunning);
    messages();
    return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}

int GatewayRun::endBy(int signal)
{
    if (m_process.processId() > 0) // 0, where it did not start, would mean the test itself
        ::kill(static_cast<pid_t>(m_process.processId()), signal);
    return end();
}

const std::string& GatewayRun::messages()
{
    m_process.waitForReadyRead(lookMs);
    m_messages += m_process.readAll().toStdString();
    return m_messages;
}

bool GatewayRun::says(const char* text)
{
    return eventually([&] { return messages().find(text) != std::string::npos; });
}

} // namespace test
