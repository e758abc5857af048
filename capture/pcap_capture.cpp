// SPDX-License-Identifier: MIT
#include "capture/pcap_capture.h"

#include "capture/pcap_fields.h"

#include <QtEndian>

#include <arpa/inet.h>

namespace plc
{

namespace
{

const int mostBytesInPacket = 1400;
const int longestPacket = 65535;
const int timeToLive = 64; // IPv6: hop limit
const int windowSize = 65535;
const int dontFragment = 0x4000;
const qint64 microsecondsPerSecond = 1000000;

template <class Number>
void putBig(QByteArray* bytes, Number number)
{
    const Number big = qToBigEndian(number);
    bytes->append(reinterpret_cast<const char*>(&big), sizeof big);
}

template <class Number>
void putLittle(QByteArray* bytes, Number number)
{
    const Number little = qToLittleEndian(number);
    bytes->append(reinterpret_cast<const char*>(&little), sizeof little);
}

void put16(QByteArray* bytes, int number)
{
    putBig(bytes, static_cast<quint16>(number));
}

/// The Internet checksum.
int checksumOf(const QByteArray& bytes)
{
    quint32 sum = 0;
    for (int at = 0; at < bytes.size(); ++at) {
        const quint32 byte = static_cast<unsigned char>(bytes.at(at));
        sum += at % 2 == 0 ? byte << 8 : byte;
        sum = (sum & 0xFFFF) + (sum >> 16);
    }
    return static_cast<int>(~sum & 0xFFFF);
}

void setChecksum(QByteArray* bytes, int offset, int checksum)
{
    (*bytes)[offset] = static_cast<char>(checksum >> 8);
    (*bytes)[offset + 1] = static_cast<char>(checksum & 0xFF);
}

QByteArray fileHeader()
{
    QByteArray header;
    putLittle(&header, quint32(pcapMagic));
    putLittle(&header, quint16(2)); // version 2.4
    putLittle(&header, quint16(4));
    putLittle(&header, quint32(0)); // times are UTC
    putLittle(&header, quint32(0));
    putLittle(&header, quint32(longestPacket));
    putLittle(&header, quint32(linkTypeRawIp));
    return header;
}

QByteArray packetHeader(qint64 microseconds, int size)
{
    QByteArray header;
    putLittle(&header, static_cast<quint32>(microseconds / microsecondsPerSecond));
    putLittle(&header, static_cast<quint32>(microseconds % microsecondsPerSecond));
    putLittle(&header, static_cast<quint32>(size));
    putLittle(&header, static_cast<quint32>(size));
    return header;
}

QByteArray ipv4Header(const QByteArray& from, const QByteArray& to, int payload, int identification)
{
    QByteArray header("\x45\0", 2); // version 4, five words
    put16(&header, ipv4HeaderSize + payload);
    put16(&header, identification);
    put16(&header, dontFragment);
    header.append(static_cast<char>(timeToLive));
    header.append(static_cast<char>(protocolTcp));
    put16(&header, 0);
    header += from + to;
    setChecksum(&header, 10, checksumOf(header));
    return header;
}

QByteArray ipv6Header(const QByteArray& from, const QByteArray& to, int payload)
{
    QByteArray header("\x60\0\0\0", 4); // version 6
    put16(&header, payload);
    header.append(static_cast<char>(protocolTcp));
    header.append(static_cast<char>(timeToLive));
    return header + from + to;
}

/// What the checksum covers besides: the fields of IPv6 are wider, and their sum is the same.
QByteArray pseudoHeader(const QByteArray& from, const QByteArray& to, int size)
{
    QByteArray header = from + to;
    put16(&header, protocolTcp);
    put16(&header, size);
    return header;
}

/// \return 4 or 16 bytes
QByteArray addressOf(const QString& text, const char* otherwise)
{
    const QByteArray words =
        text.section(QLatin1Char('%'), 0, 0).toLatin1(); // without the name of an interface
    QByteArray address(ipv6AddressSize, '\0');
    if (inet_pton(AF_INET6, words.constData(), address.data()) == 1)
        return address;
    address.resize(ipv4AddressSize);
    if (inet_pton(AF_INET, words.constData(), address.data()) != 1)
        inet_pton(AF_INET, otherwise, address.data());
    return address;
}

/// An IPv4 address beside one of IPv6 is written as IPv6 writes it.
QByteArray besideIpv6(const QByteArray& address)
{
    return address.size() == ipv6AddressSize ? address : QByteArray(10, '\0') + "\xFF\xFF" + address;
}

} // namespace

PcapCapture::PcapCapture(std::unique_ptr<CaptureFile> file, CaptureClock clock)
    : m_file(std::move(file)), m_clock(std::move(clock))
{
    m_file->write(fileHeader());
}

void PcapCapture::opened(const LinkEnd& panel, const LinkEnd& controller)
{
    m_sequence += panelSequenceStep;
    m_panel = {addressOf(panel.address, "192.0.2.1"), panel.port, m_sequence};
    m_controller = {addressOf(controller.address, "192.0.2.2"), controller.port, m_sequence};
    if (m_panel.address.size() != m_controller.address.size()) {
        m_panel.address = besideIpv6(m_panel.address);
        m_controller.address = besideIpv6(m_controller.address);
    }
    m_isOpen = true;
    packet(&m_panel, {m_controller.address, m_controller.port, 0}, tcpSyn, {});
    packet(&m_controller, m_panel, tcpSyn | tcpAcknowledge, {});
    packet(&m_panel, m_controller, tcpAcknowledge, {});
}

void PcapCapture::closed(const QString&)
{
    if (!m_isOpen)
        return;
    m_isOpen = false;
    packet(&m_panel, m_controller, tcpFin | tcpAcknowledge, {});
    packet(&m_controller, m_panel, tcpFin | tcpAcknowledge, {});
    packet(&m_panel, m_controller, tcpAcknowledge, {});
}

void PcapCapture::sent(const QByteArray& frame)
{
    stream(&m_panel, &m_controller, frame);
}

void PcapCapture::received(const QByteArray& bytes)
{
    stream(&m_controller, &m_panel, bytes);
}

void PcapCapture::stream(Side* from, Side* to, const QByteArray& bytes)
{
    for (int at = 0; at < bytes.size(); at += mostBytesInPacket)
        packet(from, *to, tcpPush | tcpAcknowledge, bytes.mid(at, mostBytesInPacket));
}

/// SYN and FIN count as a byte of the stream.
void PcapCapture::packet(Side* from, const Side& to, int flags, const QByteArray& bytes)
{
    const bool isIpv6 = from->address.size() == ipv6AddressSize;
    QByteArray tcp;
    put16(&tcp, from->port);
    put16(&tcp, to.port);
    putBig(&tcp, from->next);
    putBig(&tcp, (flags & tcpAcknowledge) != 0 ? to.next : quint32(0));
    put16(&tcp, tcpHeaderSize / 4 << 12 | flags);
    put16(&tcp, windowSize);
    put16(&tcp, 0);
    put16(&tcp, 0);
    tcp += bytes;
    setChecksum(&tcp, 16, checksumOf(pseudoHeader(from->address, to.address, tcp.size()) + tcp));
    const QByteArray ip = (isIpv6 ? ipv6Header(from->address, to.address, tcp.size())
                                  : ipv4Header(from->address, to.address, tcp.size(), m_packets++ & 0xFFFF)) +
                          tcp;
    m_file->write(packetHeader(m_clock(), ip.size()) + ip);
    from->next += static_cast<quint32>(bytes.size()) + ((flags & (tcpSyn | tcpFin)) != 0 ? 1 : 0);
}

} // namespace plc
