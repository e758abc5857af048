// SPDX-License-Identifier: MIT
#include "gateway/sparkplug/decoded.h"

#include "support/application.h"
#include "support/built_files.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

namespace test
{

namespace
{

QByteArray outputOf(const QString& program, const QStringList& arguments)
{
    needApplication();
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(60000);
    return process.readAllStandardOutput();
}

/// Writes \a packets as a capture.
void makeCapture(const std::vector<QByteArray>& packets, const QTemporaryDir& folder)
{
    QFile dump(folder.filePath(QStringLiteral("dump")));
    ASSERT_TRUE(dump.open(QIODevice::WriteOnly));
    for (const QByteArray& packet : packets)
        dump.write("000000 " + packet.toHex(' ') + '\n');
    dump.close();
    outputOf(QStringLiteral("text2pcap"),
             {QStringLiteral("-q"), QStringLiteral("-T"), QStringLiteral("40000,1883"), dump.fileName(),
              folder.filePath(QStringLiteral("capture"))});
}

/// The dissector knows the payload by the name of a package, which it tells.
QByteArray packageOf(const QTemporaryDir& folder)
{
    static QByteArray package;
    if (!package.isEmpty())
        return package;
    const QByteArray text =
        outputOf(QStringLiteral("tshark"),
                 {QStringLiteral("-r"), folder.filePath(QStringLiteral("capture")), QStringLiteral("-V")});
    package = QRegularExpression(QStringLiteral("Protocol Buffers: (\\S+)\\.Payload"))
                  .match(QString::fromUtf8(text))
                  .captured(1)
                  .toUtf8();
    return package;
}

/// It wants a description of the payload.
QStringList protocolOptions(const QTemporaryDir& folder)
{
    const QByteArray package = packageOf(folder);
    if (package.isEmpty())
        return {};
    QFile ours(QString::fromUtf8(testsDirectory()) +
               QStringLiteral("/../gateway/sparkplug/sparkplug_b.proto"));
    EXPECT_TRUE(ours.open(QIODevice::ReadOnly));
    QByteArray description = ours.readAll();
    description.replace("package plc.sparkplug;", "package " + package + ';');
    QFile file(folder.filePath(QStringLiteral("payload.proto")));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(description);
    return {QStringLiteral("-o"),
            QStringLiteral("uat:protobuf_search_paths:\"%1\",\"TRUE\"").arg(folder.path()),
            QStringLiteral("-o"), QStringLiteral("protobuf.preload_protos:TRUE")};
}

/// Reads the lines that tshark prints of one packet.
class PacketReader
{
public:
    void take(const std::string& line)
    {
        packet.text += line + '\n';
        const auto value = [&line](const char* key) {
            const auto at = line.find(key);
            return at == std::string::npos ? std::string() : line.substr(at + std::string(key).size());
        };
        const auto set = [&](std::string* member, const char* key) {
            const std::string text = value(key);
            if (!text.empty() && member->empty())
                *member = text.substr(0, text.find_first_of("]("));
        };
        set(&packet.kind, "MQ Telemetry Transport Protocol, ");
        set(&packet.topic, "    Topic: ");
        set(&packet.type, "[Message Type: ");
        set(&packet.device, "[Device ID: ");
        if (line.find("QoS Level: ") != std::string::npos && packet.qos.empty())
            packet.qos = line.find("At most once") != std::string::npos ? "0" : "1";
        packet.retained = packet.retained || line.find("= Retain: Set") != std::string::npos;
        takeField(line);
    }

    DecodedPacket packet;

private:
    void takeField(const std::string& line)
    {
        static const QRegularExpression form(
            QStringLiteral("^( +)Field\\(\\d+\\): (\\w+) (?:= (.*) )? ?\\((\\w+)\\)$"));
        const auto match = form.match(QString::fromStdString(line));
        if (!match.hasMatch())
            return;
        const int depth = match.capturedLength(1);
        const std::string name = match.captured(2).toStdString();
        const std::string value = match.captured(3).toStdString();
        if (name == "metrics") {
            packet.metrics.emplace_back();
            m_depth = depth;
            m_keys.clear();
            m_values = 0;
        } else if (packet.metrics.empty() || depth <= m_depth) {
            packet.fields[name] = value;
        } else if (name == "keys") {
            m_keys.push_back(value);
        } else if (depth == m_depth + 8) {
            packet.metrics.back().fields[name] = value;
        } else if (name.find("_value") != std::string::npos && m_values < m_keys.size()) {
            packet.metrics.back().fields[m_keys[m_values++]] = value;
        }
    }

    int m_depth = 0;
    std::vector<std::string> m_keys;
    std::size_t m_values = 0;
};

} // namespace

DecodedMetric DecodedPacket::metric(const char* nameOrAlias) const
{
    for (const DecodedMetric& one : metrics) {
        if (one["name"] == nameOrAlias || (!one.has("name") && one["alias"] == nameOrAlias))
            return one;
    }
    return {};
}

bool canDecode()
{
    needApplication();
    static const bool can =
        !QStandardPaths::findExecutable(QStringLiteral("text2pcap")).isEmpty() &&
        outputOf(QStringLiteral("tshark"), {QStringLiteral("-G"), QStringLiteral("protocols")})
            .contains("sparkplugb");
    return can;
}

std::vector<DecodedPacket> decoded(const std::vector<QByteArray>& packets)
{
    QTemporaryDir folder;
    makeCapture(packets, folder);
    const QByteArray text = outputOf(
        QStringLiteral("tshark"),
        QStringList{QStringLiteral("-r"), folder.filePath(QStringLiteral("capture")), QStringLiteral("-V"),
                    QStringLiteral("-o"), QStringLiteral("tcp.desegment_tcp_streams:FALSE")} +
            protocolOptions(folder));
    std::vector<DecodedPacket> result;
    PacketReader reader;
    bool isInside = false;
    for (const QByteArray& line : text.split('\n')) {
        if (line.startsWith("Frame ")) {
            if (isInside)
                result.push_back(reader.packet);
            reader = PacketReader();
            isInside = true;
        }
        reader.take(line.toStdString());
    }
    if (isInside)
        result.push_back(reader.packet);
    EXPECT_EQ(result.size(), packets.size());
    return result;
}

} // namespace test
