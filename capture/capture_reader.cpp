#include "capture/capture_reader.h"

#include "capture/json_capture_reader.h"
#include "capture/pcap_file.h"

#include <QFile>
#include <QFileInfo>

namespace plc
{

namespace
{

const qint64 largestFile = 1024LL * 1024 * 1024;
const char newerFormat[] = "\x0A\x0D\x0D\x0A";

CaptureEnd failed(const QString& error)
{
    CaptureEnd end;
    end.error = error;
    return end;
}

} // namespace

CaptureEnd parseCapture(const QByteArray& bytes, const PcapReading& reading, const CaptureSink& sink)
{
    if (PcapFile::recognises(bytes))
        return parsePcapCapture(bytes, reading, sink);
    if (bytes.startsWith(newerFormat))
        return failed(QStringLiteral("byte 0: this is pcapng; save it as pcap (in Wireshark: Save As, then "
                                     "\"tcpdump - pcap\"; or: editcap -F pcap FILE NEW.pcap)"));
    if (!bytes.isEmpty() && !bytes.startsWith('{'))
        return failed(
            QStringLiteral("byte 0: this is neither a pcap file nor lines of JSON that plcpanel --capture "
                           "wrote"));
    return parseJsonCapture(bytes, sink);
}

CaptureEnd readCapture(const QString& path, const PcapReading& reading, const CaptureSink& sink)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return failed(QStringLiteral("cannot read it: %1").arg(file.errorString()));
    if (file.isSequential() || !QFileInfo(file).isFile()) // it is read more than once
        return failed(QStringLiteral("cannot read it: it is no file"));
    if (file.size() > largestFile)
        return failed(
            QStringLiteral("it is larger than a gigabyte; cut it (pcap: editcap -c, lines: split)"));
    const uchar* const bytes = file.size() > 0 ? file.map(0, file.size()) : nullptr;
    if (bytes == nullptr && file.size() > 0)
        return failed(QStringLiteral("cannot read it: %1").arg(file.errorString()));
    return parseCapture(
        QByteArray::fromRawData(reinterpret_cast<const char*>(bytes), static_cast<int>(file.size())), reading,
        sink);
}

std::optional<Settings> capturedSettings(const QString& path)
{
    return readCapture(path, {}, [](const CaptureEntry&) { return false; }).settings;
}

} // namespace plc
