// SPDX-License-Identifier: MIT
// Any bytes as a capture, of packets or of lines, and each frame in it as a request to be played back.
//
// Input: a byte that says how to read it, then the file.

#include "capture/capture_reader.h"
#include "capture/rebuilt_request.h"
#include "fuzz/byte_source.h"
#include "fuzz/check.h"
#include "fuzz/fuzz_target.h"
#include "fuzz/shown_text.h"
#include "runtime/modbus/frame_fields.h"

namespace
{

using fuzz::check;
using fuzz::isPrintable;
using plc::CaptureEnd;
using plc::CaptureEntry;

const int remoteFrames = 1;
const int soonEnough = 2; // the sink wants no more after a few entries
const int fewEntries = 3;

// What a replay hands to the driver without another look.
void checkRebuilt(const std::optional<plc::RebuiltRequest>& rebuilt)
{
    if (!rebuilt)
        return;
    const RW_VAR& request = rebuilt->request;
    check(request.area >= 0 && request.area < 15, "a rebuilt request has a known area");
    check(request.station >= 0 && request.station <= 255, "a rebuilt request has a station");
    check(rebuilt->isWrite || request.data.isEmpty(), "only a rebuilt write carries values");
}

void checkModbusRebuilt(const std::optional<plc::RebuiltRequest>& rebuilt)
{
    checkRebuilt(rebuilt);
    if (!rebuilt)
        return;
    const RW_VAR& request = rebuilt->request;
    check(request.count >= 1 && request.address >= 0 && request.address < plc::areaSize(request.area),
          "a rebuilt request asks for elements that its area has");
}

bool hasBytes(CaptureEntry::Kind kind)
{
    return kind == CaptureEntry::Request || kind == CaptureEntry::Reply || kind == CaptureEntry::NotSent;
}

/// Takes the entries and checks each.
class Sink
{
public:
    explicit Sink(int most) : m_most(most) {}

    bool take(const CaptureEntry& entry)
    {
        check(!m_refused, "a sink that wants no more gets no more");
        check(entry.bytes.isEmpty() != hasBytes(entry.kind), "frames have bytes, events have none");
        checkModbusRebuilt(m_modbusRebuilder->rebuild(entry.bytes));
        checkRebuilt(m_remoteRebuilder->rebuild(entry.bytes));
        m_refused = ++m_entries == m_most;
        return !m_refused;
    }

private:
    const int m_most;
    const std::unique_ptr<plc::RequestRebuilder> m_modbusRebuilder =
        plc::requestRebuilderFor(plc::FrameFormat::ModbusTcp, {}, {});
    const std::unique_ptr<plc::RequestRebuilder> m_remoteRebuilder =
        plc::requestRebuilderFor(plc::FrameFormat::Remote, {}, {});
    int m_entries = 0;
    bool m_refused = false;
};

// Errors and notes go to a terminal and say where.
void checkEnd(const CaptureEnd& end)
{
    check(isPrintable(end.error), "an error holds nothing that a terminal would act upon");
    const bool says =
        end.error.startsWith(QLatin1String("byte ")) || end.error.startsWith(QLatin1String("line ")) ||
        end.error.startsWith(QLatin1String("packet ")) || end.error.startsWith(QLatin1String("it holds no "));
    check(end.error.isEmpty() || says, "an error says where it is");
    for (const QString& note : end.notes)
        check(isPrintable(note), "a note holds nothing that a terminal would act upon");
    check(!end.settings || plc::settingsError([&] {
                               plc::Settings complete = *end.settings;
                               complete.driverPath = QStringLiteral("any");
                               return complete;
                           }())
                               .isEmpty(),
          "settings of a capture can be used");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::ByteSource source(data, size);
    const int how = source.byte();
    plc::PacketReading reading;
    reading.format = (how & remoteFrames) != 0 ? plc::FrameFormat::Remote : plc::FrameFormat::ModbusTcp;
    const std::string text = source.text(source.size());
    const QByteArray bytes(text.data(), static_cast<int>(text.size()));
    Sink sink((how & soonEnough) != 0 ? fewEntries : 0);
    checkEnd(plc::parseCapture(bytes, reading, [&](const CaptureEntry& entry) { return sink.take(entry); }));
    return 0;
}
