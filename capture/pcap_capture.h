// SPDX-License-Identifier: MIT
/// \file
/// \brief A capture as packets, for programs that show network traffic.
#ifndef CAPTURE_PCAP_CAPTURE_H
#define CAPTURE_PCAP_CAPTURE_H

#include "capture/capture_clock.h"
#include "capture/capture_file.h"
#include "runtime/link/link_tap.h"

#include <memory>

namespace plc
{

/// Writes the bytes of the link as the TCP stream that they are, in IPv4 or IPv6 packets (link type "raw
/// IP"), each connection as a new stream. Addresses and ports are those of the link; sequence numbers and
/// what else stands in the headers are made up, because the link does not see the real ones. An address that
/// is none becomes 192.0.2.1 (panel) or 192.0.2.2 (controller).
class PcapCapture : public LinkTap
{
public:
    PcapCapture(std::unique_ptr<CaptureFile> file, CaptureClock clock);

    void opened(const LinkEnd& panel, const LinkEnd& controller) override;
    void closed(const QString& why) override;
    void sent(const QByteArray& frame) override;
    void notSent(const QByteArray&, const QString&) override {}
    void received(const QByteArray& bytes) override;
    void timedOut() override {}

private:
    struct Side {
        QByteArray address; // 4 or 16 bytes, as many on both sides
        int port = 0;
        quint32 next = 0; // sequence number
    };

    void stream(Side* from, Side* to, const QByteArray& bytes);
    void packet(Side* from, const Side& to, int flags, const QByteArray& bytes);

    const std::unique_ptr<CaptureFile> m_file;
    const CaptureClock m_clock;
    Side m_panel;
    Side m_controller;
    bool m_isOpen = false;
    quint32 m_sequence = 0; // that the connection began with
    int m_packets = 0;
};

} // namespace plc

#endif
