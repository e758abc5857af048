// SPDX-License-Identifier: MIT
#include "capture/capture.h"

#include "capture/json_capture.h"
#include "capture/pcap_capture.h"

namespace plc
{

namespace
{

bool endsWith(const QString& path, const char* ending)
{
    return path.endsWith(QLatin1String(ending), Qt::CaseInsensitive);
}

} // namespace

QString captureRefusal(const QString& path)
{
    if (endsWith(path, ".pcap") || endsWith(path, ".jsonl"))
        return QString();
    return QStringLiteral(
        "the file's ending says what is written: .pcap for programs that show network traffic, "
        ".jsonl for lines of JSON; this has neither");
}

std::shared_ptr<LinkTap> captureTo(const QString& path, const Settings& settings,
                                   const CaptureFile::Complaint& complain)
{
    if (path.isEmpty())
        return nullptr;
    auto file = std::make_unique<CaptureFile>(path, complain);
    if (endsWith(path, ".pcap"))
        return std::make_shared<PcapCapture>(std::move(file), captureTime);
    return std::make_shared<JsonCapture>(std::move(file), settings, captureTime);
}

} // namespace plc
