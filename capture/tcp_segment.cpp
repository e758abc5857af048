// SPDX-License-Identifier: MIT
#include "capture/tcp_segment.h"

#include "capture/pcap_fields.h"
#include "runtime/modbus/frame_fields.h"

#include <pcap/dlt.h>

#include <algorithm>

namespace plc
{

namespace
{

const int etherTypeIpv4 = 0x0800;
const int etherTypeIpv6 = 0x86DD;
const int etherTypesOfTags[] = {0x8100, 0x88A8}; // of virtual networks
const int tagSize = 4;
const int mostTags = 2;

struct LinkLayer {
    int linkType; // as libpcap numbers it
    int headerSize;
    int typeOffset; // of the EtherType; -1: it has none, and IP follows
};

const LinkLayer linkLayers[] = {
    {DLT_NULL, 4, -1}, // loopback: four bytes, the protocol in an order of the machine's
    {DLT_LOOP, 4, -1}, // the same, big-endian
    {DLT_EN10MB, 14, 12}, {DLT_RAW, 0, -1},        {DLT_IPV4, 0, -1},
    {DLT_IPV6, 0, -1},    {DLT_LINUX_SLL, 16, 14}, {DLT_LINUX_SLL2, 20, 0},
};

const LinkLayer* linkLayerOf(int linkType)
{
    for (const LinkLayer& layer : linkLayers) {
        if (layer.linkType == linkType)
            return &layer;
    }
    return nullptr;
}

QByteArray behind(const QByteArray& bytes, int size)
{
    return size >= bytes.size() ? QByteArray()
                                : QByteArray::fromRawData(bytes.constData() + size, bytes.size() - size);
}

QByteArray firstOf(const QByteArray& bytes, int size)
{
    return QByteArray::fromRawData(bytes.constData(), std::min(size, bytes.size()));
}

bool isTag(int etherType)
{
    return std::find(std::begin(etherTypesOfTags), std::end(etherTypesOfTags), etherType) !=
           std::end(etherTypesOfTags);
}

/// \return the IP packet in \a packet; empty when there is none
QByteArray ipPacketOf(const LinkLayer& layer, const QByteArray& packet)
{
    if (layer.typeOffset < 0)
        return behind(packet, layer.headerSize);
    int type = wordAt(packet, layer.typeOffset);
    int size = layer.headerSize;
    for (int tags = 0; tags < mostTags && isTag(type); ++tags) {
        type = wordAt(packet, size + 2);
        size += tagSize;
    }
    return type == etherTypeIpv4 || type == etherTypeIpv6 ? behind(packet, size) : QByteArray();
}

/// An IP packet taken apart; payload is empty when it holds no TCP.
struct IpParts {
    QByteArray from;
    QByteArray to;
    QByteArray payload;
};

IpParts ipv4Parts(const QByteArray& packet)
{
    const int headerSize = (byteAt(packet, 0) & 0x0F) * 4;
    const int size = wordAt(packet, 2);
    const bool isFragment = (wordAt(packet, 6) & 0x3FFF) != 0;
    if (headerSize < ipv4HeaderSize || size < headerSize || size > packet.size() || isFragment ||
        byteAt(packet, 9) != protocolTcp)
        return {};
    return {packet.mid(12, 4), packet.mid(16, 4), behind(firstOf(packet, size), headerSize)};
}

/// Packets with extension headers are left out.
IpParts ipv6Parts(const QByteArray& packet)
{
    const int size = ipv6HeaderSize + wordAt(packet, 4);
    if (size > packet.size() || byteAt(packet, 6) != protocolTcp)
        return {};
    return {packet.mid(8, 16), packet.mid(24, 16), behind(firstOf(packet, size), ipv6HeaderSize)};
}

IpParts ipPartsOf(const QByteArray& packet)
{
    switch (byteAt(packet, 0) >> 4) {
    case 4:
        return ipv4Parts(packet);
    case 6:
        return ipv6Parts(packet);
    default:
        return {};
    }
}

} // namespace

bool isKnownLinkType(int linkType)
{
    return linkLayerOf(linkType) != nullptr;
}

std::optional<TcpSegment> tcpSegmentOf(int linkType, const QByteArray& packet)
{
    const LinkLayer* const layer = linkLayerOf(linkType);
    if (layer == nullptr)
        return std::nullopt;
    const IpParts ip = ipPartsOf(ipPacketOf(*layer, packet));
    const QByteArray& tcp = ip.payload;
    const int headerSize = (byteAt(tcp, 12) >> 4) * 4;
    if (headerSize < tcpHeaderSize || headerSize > tcp.size())
        return std::nullopt;
    TcpSegment segment;
    segment.from = ip.from;
    segment.to = ip.to;
    segment.fromPort = wordAt(tcp, 0);
    segment.toPort = wordAt(tcp, 2);
    segment.sequence = static_cast<quint32>(wordAt(tcp, 4)) << 16 | static_cast<quint32>(wordAt(tcp, 6));
    const int flags = byteAt(tcp, 13);
    segment.isFirst = (flags & tcpSyn) != 0;
    segment.isLast = (flags & (tcpFin | tcpReset)) != 0;
    segment.bytes = behind(tcp, headerSize);
    return segment;
}

} // namespace plc
