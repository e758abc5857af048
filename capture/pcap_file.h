/// \file
/// \brief The packets in a pcap file.
#ifndef CAPTURE_PCAP_FILE_H
#define CAPTURE_PCAP_FILE_H

#include <QByteArray>
#include <QString>

#include <optional>

namespace plc
{

struct PcapPacket {
    qint64 microseconds = 0; ///< since the beginning of 1970, UTC
    QByteArray bytes;        ///< points into the file's
    qint64 position = 0;     ///< bytes of the file up to the packet's end
};

/// Any bytes will do. Both byte orders, times in microseconds or nanoseconds.
class PcapFile
{
public:
    /// \param bytes must stay as long as the packets are used
    explicit PcapFile(const QByteArray& bytes);

    /// \return nothing at the end or at an error
    std::optional<PcapPacket> next();

    int linkType() const { return m_linkType; }

    /// What is wrong with the file, and at which byte; empty: nothing.
    QString error() const { return m_error; }

    /// The last packet is not whole; it is left out.
    bool isCut() const { return m_isCut; }

    /// \return true when \a bytes begin as a pcap file does
    static bool recognises(const QByteArray& bytes);

private:
    quint32 numberAt(int offset) const;

    const QByteArray& m_bytes;
    bool m_isBigEndian = false;
    qint64 m_fractionsOfMicrosecond = 1;
    int m_linkType = 0;
    int m_position = 0;
    QString m_error;
    bool m_isCut = false;
};

} // namespace plc

#endif
