// SPDX-License-Identifier: MIT
/// \file
/// \brief The packets in a file of captured network traffic.
#ifndef CAPTURE_PACKET_FILE_H
#define CAPTURE_PACKET_FILE_H

#include "capture/open_file.h"

#include <QByteArray>
#include <QString>

#include <optional>

struct pcap; // of libpcap

namespace plc
{

struct Packet {
    qint64 microseconds = 0;  ///< since the beginning of 1970, UTC, until 2106
    QByteArray bytes;         ///< as far as they were captured; good until the next packet is asked for
    bool isShortened = false; ///< there were more bytes than that
};

/// What libpcap reads: pcap of both byte orders with times in microseconds or nanoseconds, and pcapng. Any
/// bytes will do.
class PacketFile
{
public:
    /// \param file is read from where it stands, once, from its beginning to its end; it may be a pipe
    explicit PacketFile(OpenFile file);
    ~PacketFile();
    PacketFile(const PacketFile&) = delete;
    PacketFile& operator=(const PacketFile&) = delete;

    /// \return nothing at the end or at an error
    std::optional<Packet> next();

    /// \return the number of the packet handed out last, as programs that show packets count them: the first
    /// is 1
    long number() const { return m_number; }

    /// \return one of libpcap's DLT_ numbers
    int linkType() const;

    /// \return its name, for messages
    QString linkTypeText() const;

    /// \return what it reads from, to be asked how far that is
    std::FILE* stream() const;

    /// What is wrong with the file, and at which packet; empty: nothing.
    QString error() const { return m_error; }

    /// The file ends within a packet, which is left out.
    bool isCut() const { return m_isCut; }

private:
    void fail(const char* words);

    OpenFile m_unopened; // what could not be opened as packets
    pcap* m_pcap = nullptr;
    long m_number = 0;
    QString m_error;
    bool m_isCut = false;
};

} // namespace plc

#endif
