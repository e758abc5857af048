#include "capture/pcap_file.h"

#include "capture/pcap_fields.h"

#include <QtEndian>

namespace plc
{

namespace
{

const quint32 largestPacket = 262144; // what capturing programs take at most
const int linkTypeOffset = 20;
const quint32 linkTypeMask = 0x0FFFFFFF; // above it stands what trails each packet
const qint64 microsecondsInSecond = 1000000;

quint32 bigEndianAt(const QByteArray& bytes, int offset)
{
    return qFromBigEndian<quint32>(bytes.constData() + offset);
}

quint32 littleEndianAt(const QByteArray& bytes, int offset)
{
    return qFromLittleEndian<quint32>(bytes.constData() + offset);
}

bool isMagic(quint32 number)
{
    return number == pcapMagic || number == pcapNanosecondMagic;
}

} // namespace

bool PcapFile::recognises(const QByteArray& bytes)
{
    return bytes.size() >= 4 && (isMagic(bigEndianAt(bytes, 0)) || isMagic(littleEndianAt(bytes, 0)));
}

PcapFile::PcapFile(const QByteArray& bytes) : m_bytes(bytes)
{
    if (!recognises(bytes) || bytes.size() < pcapHeaderSize) {
        m_error = QStringLiteral("byte 0: there is no whole header of a pcap file");
        return;
    }
    m_isBigEndian = isMagic(bigEndianAt(bytes, 0));
    m_fractionsOfMicrosecond = numberAt(0) == pcapNanosecondMagic ? 1000 : 1;
    m_linkType = static_cast<int>(numberAt(linkTypeOffset) & linkTypeMask);
    m_position = pcapHeaderSize;
}

quint32 PcapFile::numberAt(int offset) const
{
    return m_isBigEndian ? bigEndianAt(m_bytes, offset) : littleEndianAt(m_bytes, offset);
}

std::optional<PcapPacket> PcapFile::next()
{
    const int left = m_bytes.size() - m_position;
    if (!m_error.isEmpty() || m_isCut || left == 0)
        return std::nullopt;
    const quint32 size = left < pcapPacketHeaderSize ? 0 : numberAt(m_position + 8);
    if (size > largestPacket) {
        m_error = QStringLiteral("byte %1: a packet of %2 bytes, which no program captures")
                      .arg(m_position)
                      .arg(size);
        return std::nullopt;
    }
    if (left < pcapPacketHeaderSize + static_cast<int>(size)) {
        m_isCut = true;
        return std::nullopt;
    }
    PcapPacket packet;
    packet.microseconds =
        numberAt(m_position) * microsecondsInSecond + numberAt(m_position + 4) / m_fractionsOfMicrosecond;
    packet.bytes = QByteArray::fromRawData(m_bytes.constData() + m_position + pcapPacketHeaderSize,
                                           static_cast<int>(size));
    m_position += pcapPacketHeaderSize + static_cast<int>(size);
    packet.position = m_position;
    return packet;
}

} // namespace plc
