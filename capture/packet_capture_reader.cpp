// SPDX-License-Identifier: MIT
#include "capture/packet_capture_reader.h"

#include "capture/pcap_fields.h"
#include "capture/request_cutter.h"
#include "capture/tcp_segment.h"
#include "capture/tcp_stream.h"
#include "runtime/link/reply_assembler.h"

#include <map>
#include <set>
#include <tuple>

namespace plc
{

namespace
{

const std::size_t mostConnections = 1000; // that are followed at a time
const std::size_t mostPortsTold = 8;
const qint64 microsecondsOfMillisecond = 1000;

struct Connection {
    explicit Connection(FrameFormat format) : requests(requestCutterFor(format)) {}

    TcpStream toController;
    TcpStream toPanel;
    std::unique_ptr<RequestCutter> requests;
    ReplyAssembler replies;
};

/// Both addresses and the panel's port.
using ConnectionKey = std::tuple<QByteArray, QByteArray, int>;

class PacketCaptureReader
{
public:
    PacketCaptureReader(PacketFile* file, const PacketReading& reading, const CaptureSink& sink)
        : m_file(file), m_reading(reading), m_port(reading.controllerPort.value_or(modbusPort)), m_sink(sink)
    {
    }

    CaptureEnd read()
    {
        m_end.error = m_file->error();
        if (m_end.error.isEmpty() && !isKnownLinkType(m_file->linkType()))
            m_end.error =
                QStringLiteral("byte 20: packets of link type %1; Ethernet, raw IP, Linux cooked and "
                               "loopback can be read")
                    .arg(m_file->linkTypeText());
        if (!m_end.error.isEmpty())
            return m_end;
        readPackets();
        m_end.error = m_file->error();
        if (m_file->isCut())
            m_end.notes
                << QStringLiteral("its last packet, %1, was cut and is left out").arg(m_file->number() + 1);
        if (m_shortened > 0)
            m_end.notes << QStringLiteral("packets that were captured in part only are left out: %1, the "
                                          "first of them packet %2; capture whole packets (tcpdump: -s 0)")
                               .arg(m_shortened)
                               .arg(m_firstShortened);
        if (m_end.error.isEmpty() && !m_hasConnection)
            m_end.error =
                QStringLiteral("it holds no TCP to or from port %1%2; --port names the controller's")
                    .arg(m_port)
                    .arg(portsText());
        return m_end;
    }

private:
    void readPackets()
    {
        while (m_goOn) {
            const auto packet = m_file->next();
            if (!packet)
                return;
            m_time = packet->microseconds;
            const auto segment = tcpSegmentOf(m_file->linkType(), packet->bytes);
            if (segment)
                take(*segment);
            else if (packet->isShortened && m_shortened++ == 0)
                m_firstShortened = m_file->number();
        }
    }

    /// A capture of the panel begins with the first packet of its first connection.
    void settlePort(const TcpSegment& segment)
    {
        const bool isPanels = segment.isFirst && segment.sequence == panelSequenceStep;
        if (m_file->number() == 1 && isPanels && !m_reading.controllerPort)
            m_port = segment.toPort;
    }

    QString portsText() const
    {
        QStringList ports;
        for (const int port : m_otherPorts)
            ports << QString::number(port);
        return ports.isEmpty() ? QString()
                               : QStringLiteral(" (but from ports %1)").arg(ports.join(QStringLiteral(", ")));
    }

    void take(const TcpSegment& segment)
    {
        settlePort(segment);
        if (segment.toPort == m_port)
            toController(segment, ConnectionKey(segment.from, segment.to, segment.fromPort));
        else if (segment.fromPort == m_port)
            toPanel(segment, ConnectionKey(segment.to, segment.from, segment.toPort));
        else if (m_otherPorts.size() < mostPortsTold)
            m_otherPorts.insert(segment.fromPort);
    }

    /// \return a copy, because the segment's bytes are there only until the next packet is read
    static QByteArray copyOf(const QByteArray& bytes) { return QByteArray(bytes.constData(), bytes.size()); }

    void toController(const TcpSegment& segment, const ConnectionKey& key)
    {
        if (!segment.isFirst && segment.bytes.isEmpty() && m_connections.count(key) == 0)
            return; // what follows the end of a connection
        if (segment.isFirst)
            m_connections.erase(key);
        Connection& connection = connectionOf(key);
        if (segment.isFirst)
            connection.toController.begin(segment.sequence + 1);
        const QByteArray bytes = connection.toController.add(segment.sequence, copyOf(segment.bytes));
        if (connection.toController.hasJumped())
            connection.requests->reset(); // what came before the gap will not become whole
        connection.requests->append(bytes);
        for (QByteArray frame = connection.requests->next(); !frame.isEmpty();
             frame = connection.requests->next())
            request(frame);
        noteIfOutOfStep(connection.requests->outOfStep());
        if (segment.isLast)
            end(key);
    }

    void toPanel(const TcpSegment& segment, const ConnectionKey& key)
    {
        if (segment.isFirst)
            return connectionOf(key).toPanel.begin(segment.sequence + 1);
        const bool isKnown = m_connections.count(key) != 0;
        if (segment.bytes.isEmpty() && !isKnown)
            return;
        Connection& connection = connectionOf(key);
        const QByteArray bytes = connection.toPanel.add(segment.sequence, copyOf(segment.bytes));
        if (connection.toPanel.hasJumped())
            connection.replies.reset(); // what came before the gap will not become whole
        connection.replies.append(bytes);
        for (QByteArray frame = connection.replies.next(); !frame.isEmpty();
             frame = connection.replies.next())
            reply(frame);
        noteIfOutOfStep(connection.replies.outOfStep());
        if (segment.isLast)
            end(key);
    }

    Connection& connectionOf(const ConnectionKey& key)
    {
        const auto known = m_connections.find(key);
        if (known != m_connections.end())
            return known->second;
        if (m_connections.size() >= mostConnections)
            m_connections.erase(m_connections.begin());
        m_hasConnection = true;
        emitEntry(CaptureEntry::Opened, {});
        return m_connections.emplace(key, Connection(m_reading.format)).first->second;
    }

    void end(const ConnectionKey& key)
    {
        if (m_connections.erase(key) != 0)
            emitEntry(CaptureEntry::Closed, {});
    }

    void noteIfOutOfStep(bool isOutOfStep)
    {
        if (!isOutOfStep || m_isOutOfStepNoted)
            return;
        m_isOutOfStepNoted = true;
        m_end.notes << QStringLiteral(
                           "packet %1: what goes over the connection is out of step or no Modbus; its rest "
                           "is left out")
                           .arg(m_file->number());
    }

    void request(const QByteArray& frame)
    {
        m_requestTime = m_time;
        m_isWaiting = true;
        emitEntry(CaptureEntry::Request, frame);
    }

    void reply(const QByteArray& frame)
    {
        if (m_isWaiting && m_time - m_requestTime > m_reading.timeoutMs * microsecondsOfMillisecond) {
            m_isWaiting = false;
            emitEntry(CaptureEntry::TimedOut, {});
        }
        emitEntry(CaptureEntry::Reply, frame);
    }

    void emitEntry(CaptureEntry::Kind kind, const QByteArray& bytes)
    {
        CaptureEntry entry;
        entry.kind = kind;
        entry.microseconds = m_time;
        entry.bytes = bytes;
        m_goOn = m_goOn && m_sink(entry);
    }

    PacketFile* const m_file;
    const PacketReading m_reading;
    int m_port; // the controller's
    const CaptureSink& m_sink;
    CaptureEnd m_end;
    std::map<ConnectionKey, Connection> m_connections;
    std::set<int> m_otherPorts;
    qint64 m_time = 0;
    long m_shortened = 0;
    long m_firstShortened = 0;
    qint64 m_requestTime = 0;
    bool m_isWaiting = false;
    bool m_hasConnection = false;
    bool m_isOutOfStepNoted = false;
    bool m_goOn = true;
};

} // namespace

CaptureEnd readPackets(PacketFile* file, const PacketReading& reading, const CaptureSink& sink)
{
    return PacketCaptureReader(file, reading, sink).read();
}

} // namespace plc
