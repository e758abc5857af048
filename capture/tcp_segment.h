// SPDX-License-Identifier: MIT
/// \file
/// \brief The TCP segment in a captured packet.
#ifndef CAPTURE_TCP_SEGMENT_H
#define CAPTURE_TCP_SEGMENT_H

#include <QByteArray>

#include <optional>

namespace plc
{

struct TcpSegment {
    QByteArray from; ///< address, 4 or 16 bytes
    QByteArray to;
    int fromPort = 0;
    int toPort = 0;
    quint32 sequence = 0;
    bool isFirst = false; ///< SYN
    bool isLast = false;  ///< FIN or RST
    QByteArray bytes;     ///< points into the packet's
};

/// \param linkType one of libpcap's DLT_ numbers
/// \return true when packets of this link type can be read: Ethernet, raw IP, Linux cooked (both versions),
///         loopback
bool isKnownLinkType(int linkType);

/// Any bytes will do. \return nothing when \a packet holds no whole IPv4 or IPv6 packet with TCP in it, or
/// only a fragment
std::optional<TcpSegment> tcpSegmentOf(int linkType, const QByteArray& packet);

} // namespace plc

#endif
