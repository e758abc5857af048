// SPDX-License-Identifier: MIT
#include "window/captures/loaded_capture.h"

#include "capture/capture_reader.h"
#include "capture/captured_reads.h"
#include "capture/held_entries.h"
#include "capture/replay.h"
#include "driver/plcdriver.h"
#include "runtime/cycle/driver_blocks.h"
#include "runtime/cycle/refresh_plan.h"
#include "runtime/modbus/request_pieces.h"
#include "window/session/mailbox.h"

#include <algorithm>
#include <deque>
#include <stdexcept>

namespace plc
{

namespace
{

const std::size_t mostChanges = 1000000;
const int neverOldMs = 3600000; // ages go by the times of the capture
const int usOfMs = 1000;

/// What was read takes the place of variables that nobody named.
void chooseVariables(const CapturedReads& reads, Watched* watched)
{
    if (!watched->variables.empty())
        return;
    watched->settings.multiStation = reads.stations().size() > 1;
    if (reads.stations().size() == 1)
        watched->settings.station = *reads.stations().begin();
    const std::vector<Variable> variables = reads.variables();
    watched->settings.maxBlockCount = blockCountFor(variables);
    for (Variable variable : variables) {
        if (!watched->settings.multiStation)
            variable.station = -1;
        watched->variables.push_back(asListed(variable));
    }
}

std::vector<Variable> askedOf(const Watched& watched)
{
    std::vector<Variable> asked;
    for (const ListedVariable& variable : watched.variables)
        asked.push_back(withStation(variable.elements, watched.settings));
    return asked;
}

/// Makes frames with their replies of single entries.
class FramePairs
{
public:
    explicit FramePairs(FrameFormat format)
        : m_format(format), m_rebuilder(requestRebuilderFor(format, {}, {}))
    {
    }

    void take(const CaptureEntry& entry)
    {
        if (entry.kind == CaptureEntry::Request || entry.kind == CaptureEntry::NotSent)
            begin(entry);
        else if (m_isOpen && (entry.kind == CaptureEntry::Reply || entry.kind == CaptureEntry::TimedOut))
            end(entry);
    }

    std::deque<FrameEntry> frames;

private:
    void begin(const CaptureEntry& entry)
    {
        m_open = {};
        m_open.exchange.format = m_format;
        m_open.exchange.sent = entry.kind == CaptureEntry::Request;
        m_open.exchange.sentFrame = entry.bytes;
        m_open.frame = entry.bytes;
        m_open.atMs = entry.microseconds / usOfMs;
        m_open.station = dialectOf(m_format).stationOf(entry.bytes);
        if (const auto rebuilt = m_rebuilder->rebuild(entry.bytes)) {
            m_open.isWrite = rebuilt->isWrite;
            m_open.elements = elementsOf({rebuilt->request, {}, 0});
            m_open.elements.station = m_open.station;
        }
        m_isOpen = true;
        if (!m_open.exchange.sent)
            end(entry);
    }

    void end(const CaptureEntry& entry)
    {
        m_isOpen = false;
        m_open.durationMs = static_cast<int>(entry.microseconds / usOfMs - m_open.atMs);
        m_open.atMs = entry.microseconds / usOfMs;
        if (entry.kind == CaptureEntry::Reply)
            m_open.exchange.reply = entry.bytes;
        const bool isGood = entry.kind == CaptureEntry::Reply &&
                            dialectOf(m_format).faultOf(m_open.frame, entry.bytes) == FailureKind::None;
        m_open.result = isGood ? PLC_DONE : PLC_RETRYING;
        frames.push_back(m_open);
        if (frames.size() > Mailbox::mostFrames)
            frames.pop_front();
    }

    const FrameFormat m_format;
    const std::unique_ptr<RequestRebuilder> m_rebuilder;
    FrameEntry m_open;
    bool m_isOpen = false;
};

/// Plays entries and writes down what changes.
class Writer
{
public:
    explicit Writer(LoadedCapture* loaded)
        : m_loaded(loaded), m_asked(askedOf(loaded->watched)), m_replay(settingsFor(loaded->watched), m_asked)
    {
        loaded->changes.resize(m_asked.size());
    }

    /// \return false when there is no room for more
    bool play(const CaptureEntry& entry)
    {
        const auto changed = m_replay.play(entry);
        for (std::size_t index = 0; changed && index < m_asked.size(); ++index) {
            if (overlaps(*changed, m_asked[index]))
                look(index, entry.microseconds / usOfMs);
        }
        return m_changes < mostChanges;
    }

private:
    static Settings settingsFor(const Watched& watched)
    {
        Settings settings = watched.settings;
        settings.staleAfterMs = neverOldMs;
        return settings;
    }

    void look(std::size_t index, qint64 atMs)
    {
        const CyclicValue value = m_replay.value(index);
        ValueNews news = newsOf(static_cast<int>(index), value);
        std::vector<LoadedCapture::Change>& changes = m_loaded->changes[index];
        news.readAtMs = news.answered ? atMs : changes.empty() ? -1 : changes.back().news.readAtMs;
        const bool isSame = !changes.empty() && changes.back().news.state == news.state &&
                            changes.back().news.values == news.values &&
                            changes.back().news.failure == news.failure;
        if (!isSame && value.state != ValueState::Unconfirmed)
            m_loaded->samples.push_back({news.index, atMs, news.values});
        if (isSame) {
            changes.back().news.readAtMs = news.readAtMs;
            return;
        }
        changes.push_back({atMs, news});
        ++m_changes;
    }

    LoadedCapture* const m_loaded;
    const std::vector<Variable> m_asked;
    Replay m_replay;
    std::size_t m_changes = 0;
};

void play(const HeldEntries& held, const std::atomic<bool>& stop, LoadedCapture* loaded)
{
    Writer writer(loaded);
    FramePairs pairs(frameFormatOf(loaded->watched.settings));
    for (const CaptureEntry& entry : held.entries()) {
        pairs.take(entry);
        if (!writer.play(entry)) {
            loaded->lastMs = entry.microseconds / usOfMs;
            loaded->notes
                << CapturePlayer::tr(
                       "it holds more changes than are kept; what comes behind the first %1 is left out")
                       .arg(mostChanges);
            break;
        }
        if (stop)
            break;
    }
    loaded->frames.assign(pairs.frames.begin(), pairs.frames.end());
}

} // namespace

QStringList captureEndings()
{
    return {QStringLiteral("jsonl"), QStringLiteral("pcap"), QStringLiteral("pcapng")};
}

LoadedCapture loadCapture(const QString& path, const Watched& wanted, const std::atomic<bool>& stop)
{
    LoadedCapture loaded;
    loaded.watched = wanted;
    CaptureReader capture(path);
    if (const auto settings = capture.settings()) {
        const QString driver = wanted.settings.driverPath;
        loaded.watched.settings = *settings;
        loaded.watched.settings.driverPath = driver;
    }
    PacketReading reading;
    reading.format = frameFormatOf(loaded.watched.settings);
    CapturedReads reads(reading.format);
    HeldEntries held;
    const CaptureEnd end = capture.read(reading, [&](const CaptureEntry& entry) {
        reads.add(entry);
        return held.add(entry) && !stop;
    });
    loaded.error = end.error;
    loaded.notes = end.notes;
    if (held.isFull())
        loaded.notes << CapturePlayer::tr("its first %1 MB are shown").arg(mostHeldMegabytes);
    loaded.firstMs = reads.firstTime() / usOfMs;
    loaded.lastMs = reads.lastTime() / usOfMs;
    if (!loaded.error.isEmpty())
        return loaded;
    chooseVariables(reads, &loaded.watched);
    if (loaded.watched.variables.empty())
        loaded.error = CapturePlayer::tr("it holds no read that the driver could have made");
    try {
        if (loaded.error.isEmpty())
            play(held, stop, &loaded);
    } catch (const std::exception& error) {
        loaded.error = QString::fromStdString(error.what());
    }
    return loaded;
}

CapturePlayer::CapturePlayer(std::shared_ptr<const LoadedCapture> capture)
    : m_capture(std::move(capture)), m_nowMs(m_capture->firstMs), m_shown(m_capture->changes.size(), 0)
{
}

void CapturePlayer::seek(qint64 ms)
{
    m_nowMs = std::clamp(ms, m_capture->firstMs, m_capture->lastMs);
    m_hasMoved = true;
}

bool CapturePlayer::advance(qint64 ms)
{
    seek(m_nowMs + ms);
    return m_nowMs < m_capture->lastMs;
}

Snapshot CapturePlayer::take()
{
    Snapshot news;
    if (!m_framesGiven)
        news.frames = m_capture->frames;
    m_framesGiven = true;
    const std::size_t samples = std::min(samplesAtOnce, m_capture->samples.size() - m_samplesGiven);
    const auto from = m_capture->samples.begin() + static_cast<std::ptrdiff_t>(m_samplesGiven);
    news.samples.assign(from, from + static_cast<std::ptrdiff_t>(samples));
    m_samplesGiven += samples;
    for (std::size_t index = 0; m_hasMoved && index < m_capture->changes.size(); ++index) {
        const auto& changes = m_capture->changes[index];
        const auto behind = std::upper_bound(changes.begin(), changes.end(), m_nowMs,
                                             [](qint64 ms, const auto& change) { return ms < change.atMs; });
        const auto shown = static_cast<std::size_t>(behind - changes.begin());
        if (shown == m_shown[index])
            continue;
        m_shown[index] = shown;
        ValueNews one = shown > 0 ? changes[shown - 1].news : ValueNews();
        one.index = static_cast<int>(index);
        one.readAtMs = std::min(one.readAtMs, m_nowMs);
        news.values.push_back(std::move(one));
    }
    m_hasMoved = false;
    return news;
}

} // namespace plc
