// SPDX-License-Identifier: MIT
/// \file
/// \brief Reads a file with a capture, of either format.
#ifndef CAPTURE_CAPTURE_READER_H
#define CAPTURE_CAPTURE_READER_H

#include "capture/json_capture_reader.h"
#include "capture/packet_capture_reader.h"

namespace plc
{

/// Reads a capture once, from its beginning to its end, and keeps none of it, so that it may come from a pipe
/// and may be longer than memory. The content says which format it is.
class CaptureReader
{
public:
    /// Opens the file and reads its beginning. One that cannot be read is an error of read().
    explicit CaptureReader(const QString& path);

    /// The same for an open file, or bytes in memory.
    explicit CaptureReader(OpenFile file);

    /// \return the settings that were captured with it, as far as it holds any and can be read
    std::optional<Settings> settings() const;

    /// To be called once.
    CaptureEnd read(const PacketReading& reading, const CaptureSink& sink);

    /// \return how many of a hundred parts were read so far; nothing where the size is not known beforehand
    std::optional<double> percentRead() const;

private:
    void open(OpenFile file);

    std::unique_ptr<JsonCaptureReader> m_lines; // one of both, unless there is an error
    std::unique_ptr<PacketFile> m_packets;
    QString m_error;
    qint64 m_size = 0; // 0: not known
};

/// Reads bytes. Any will do.
CaptureEnd parseCapture(const QByteArray& bytes, const PacketReading& reading, const CaptureSink& sink);

} // namespace plc

#endif
