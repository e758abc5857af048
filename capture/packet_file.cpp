// SPDX-License-Identifier: MIT
#include "capture/packet_file.h"

#include "runtime/model/printable.h"

#include <pcap/pcap.h>

namespace plc
{

namespace
{

const qint64 microsecondsInSecond = 1000000;

/// Seconds have 32 bits in the file; where the system's have more, or a sign, they come out otherwise.
qint64 microsecondsOf(const timeval& time)
{
    return static_cast<quint32>(time.tv_sec) * microsecondsInSecond + static_cast<quint32>(time.tv_usec);
}

QString unknownFile()
{
    return QStringLiteral("byte 0: this is neither packets (pcap or pcapng) nor lines of JSON that plcpanel "
                          "--capture wrote; in Wireshark: Save As, then pcapng");
}

} // namespace

PacketFile::PacketFile(OpenFile file) : m_unopened(std::move(file))
{
    char words[PCAP_ERRBUF_SIZE] = "";
    m_pcap = pcap_fopen_offline_with_tstamp_precision(m_unopened.get(), PCAP_TSTAMP_PRECISION_MICRO, words);
    if (m_pcap != nullptr)
        static_cast<void>(m_unopened.release()); // pcap_close() closes it
    else if (QLatin1String(words) == QLatin1String("unknown file format"))
        m_error = unknownFile();
    else
        m_error =
            QStringLiteral("byte 0: its header cannot be used: ") + printable(QString::fromLocal8Bit(words));
}

PacketFile::~PacketFile()
{
    if (m_pcap != nullptr)
        pcap_close(m_pcap);
}

std::FILE* PacketFile::stream() const
{
    return m_pcap == nullptr ? m_unopened.get() : pcap_file(m_pcap);
}

int PacketFile::linkType() const
{
    return m_pcap == nullptr ? -1 : pcap_datalink(m_pcap);
}

QString PacketFile::linkTypeText() const
{
    const char* const name = pcap_datalink_val_to_name(linkType());
    return name == nullptr ? QString::number(linkType()) : QString::fromLatin1(name);
}

std::optional<Packet> PacketFile::next()
{
    if (m_pcap == nullptr || !m_error.isEmpty() || m_isCut)
        return std::nullopt;
    pcap_pkthdr* header = nullptr;
    const u_char* bytes = nullptr;
    const int result = pcap_next_ex(m_pcap, &header, &bytes);
    if (result == PCAP_ERROR)
        fail(pcap_geterr(m_pcap));
    if (result != 1)
        return std::nullopt;
    ++m_number;
    Packet packet;
    packet.microseconds = microsecondsOf(header->ts);
    packet.bytes =
        QByteArray::fromRawData(reinterpret_cast<const char*>(bytes), static_cast<int>(header->caplen));
    packet.isShortened = header->caplen < header->len;
    return packet;
}

void PacketFile::fail(const char* words)
{
    m_isCut = std::feof(stream()) != 0 && std::ferror(stream()) == 0;
    if (!m_isCut)
        m_error =
            QStringLiteral("packet %1: %2").arg(m_number + 1).arg(printable(QString::fromLocal8Bit(words)));
}

} // namespace plc
