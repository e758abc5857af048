// SPDX-License-Identifier: MIT
/// \file
/// \brief Captures in memory, and what is read out of them.
#ifndef TESTS_PANEL_CAPTURE_BYTES_H
#define TESTS_PANEL_CAPTURE_BYTES_H

#include "capture/capture_reader.h"
#include "capture/json_capture.h"
#include "capture/pcap_capture.h"

#include <QTemporaryDir>

#include <functional>
#include <string>
#include <vector>

namespace test
{

/// 2026-11-21 14:03:22.
const qint64 captureBegin = 1795269802000000;

/// Reads 9:100x2 of station 1, number 1; and the replies to it.
const QByteArray readTwo = QByteArray::fromHex("000100000006010300640002");
const QByteArray twoValues = QByteArray::fromHex("0001000000070103040007FFFF");
const QByteArray refusedTwo = QByteArray::fromHex("000100000003018302");

/// A millisecond passes with each look.
inline plc::CaptureClock slowClock()
{
    return [time = captureBegin]() mutable { return time += 1000; };
}

/// \return the bytes that a capture writes while \a play is told to it
template <class Capture>
QByteArray captured(const std::function<void(plc::LinkTap*)>& play)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("capture"));
    {
        auto file = std::make_unique<plc::CaptureFile>(path, [](const QString&) {});
        if constexpr (std::is_same_v<Capture, plc::JsonCapture>) {
            Capture capture(std::move(file), plc::Settings(), slowClock());
            play(&capture);
        } else {
            Capture capture(std::move(file), slowClock());
            play(&capture);
        }
    }
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}

inline void connect(plc::LinkTap* tap, int port = 40000)
{
    tap->opened({QStringLiteral("10.0.0.1"), port}, {QStringLiteral("10.0.0.2"), 1502});
}

struct Read {
    std::vector<std::string> entries; ///< "+", "-", "> HEX", "< HEX", "timed out"
    std::vector<qint64> times;        ///< since captureBegin
    plc::CaptureEnd end;
};

inline std::string entryText(const plc::CaptureEntry& entry)
{
    const std::string hex = entry.bytes.toHex().toStdString();
    switch (entry.kind) {
    case plc::CaptureEntry::Opened:
        return "+";
    case plc::CaptureEntry::Closed:
        return "-";
    case plc::CaptureEntry::Request:
        return "> " + hex;
    case plc::CaptureEntry::Reply:
        return "< " + hex;
    case plc::CaptureEntry::NotSent:
        return "x " + hex;
    case plc::CaptureEntry::TimedOut:
        return "timed out";
    }
    return std::string();
}

inline Read read(const QByteArray& bytes, const plc::PacketReading& reading = {})
{
    Read read;
    read.end = plc::parseCapture(bytes, reading, [&read](const plc::CaptureEntry& entry) {
        read.entries.push_back(entryText(entry));
        read.times.push_back(entry.microseconds - captureBegin);
        return true;
    });
    return read;
}

} // namespace test

#endif
