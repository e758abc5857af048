// SPDX-License-Identifier: MIT
#include "capture/capture_reader.h"

#include <QFile>

#include <cerrno>

#include <sys/stat.h>

namespace plc
{

namespace
{

const int gzipBegin = 0x1F; // which nothing that can be read begins with

QString cannotRead()
{
    return QStringLiteral("cannot read it: %1").arg(qt_error_string(errno));
}

/// \return 0 where it is not known beforehand
qint64 sizeOf(std::FILE* file)
{
    struct stat status = {};
    const int descriptor = fileno(file);
    return descriptor >= 0 && fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) ? status.st_size : 0;
}

} // namespace

CaptureReader::CaptureReader(const QString& path)
{
    OpenFile file(std::fopen(QFile::encodeName(path).constData(), "re"));
    if (file)
        open(std::move(file));
    else
        m_error = cannotRead();
}

CaptureReader::CaptureReader(OpenFile file)
{
    open(std::move(file));
}

void CaptureReader::open(OpenFile file)
{
    const int firstByte = std::getc(file.get());
    if (firstByte == EOF)
        m_error = std::ferror(file.get()) != 0
                      ? cannotRead()
                      : QStringLiteral("it holds no capture: there is no line in it");
    else if (firstByte == gzipBegin)
        m_error =
            QStringLiteral("byte 0: it is compressed; unpack it (gunzip), or give <(zcat FILE) in its place");
    if (!m_error.isEmpty())
        return;
    std::ungetc(firstByte, file.get());
    m_size = sizeOf(file.get());
    if (firstByte == '{')
        m_lines = std::make_unique<JsonCaptureReader>(std::move(file));
    else
        m_packets = std::make_unique<PacketFile>(std::move(file));
}

std::optional<Settings> CaptureReader::settings() const
{
    return m_lines ? m_lines->settings() : std::nullopt;
}

CaptureEnd CaptureReader::read(const PacketReading& reading, const CaptureSink& sink)
{
    if (m_lines)
        return m_lines->read(sink);
    if (m_packets)
        return readPackets(m_packets.get(), reading, sink);
    CaptureEnd end;
    end.error = m_error;
    return end;
}

std::optional<double> CaptureReader::percentRead() const
{
    if (m_size == 0)
        return std::nullopt;
    std::FILE* const stream = m_lines ? m_lines->stream() : m_packets->stream();
    return 100 * static_cast<double>(ftello(stream)) / static_cast<double>(m_size);
}

CaptureEnd parseCapture(const QByteArray& bytes, const PacketReading& reading, const CaptureSink& sink)
{
    QByteArray copy = bytes; // fmemopen() takes what it could change
    OpenFile file(fmemopen(copy.data(), static_cast<std::size_t>(copy.size()), "r"));
    if (!file)
        throw std::bad_alloc();
    return CaptureReader(std::move(file)).read(reading, sink);
}

} // namespace plc
