// SPDX-License-Identifier: MIT
#include "panel/commands/replay_command.h"

#include "capture/capture_clock.h"
#include "capture/captured_reads.h"
#include "capture/held_entries.h"
#include "capture/replay.h"
#include "panel/terminal/output.h"
#include "panel/terminal/progress_line.h"
#include "panel/terminal/terminal.h"
#include "panel/watch/watch_json.h"
#include "panel/watch/watch_rows.h"
#include "panel/watch/watch_table.h"
#include "runtime/cycle/refresh_plan.h"
#include "runtime/modbus/request_pieces.h"
#include "runtime/model/counted.h"

#include <algorithm>

namespace plc
{

namespace
{

const int neverOldMs = 3600000; // the age of a value is told by the times of the capture

QDateTime dateTimeOf(qint64 microseconds)
{
    return QDateTime::fromMSecsSinceEpoch(microseconds / 1000, Qt::UTC);
}

PacketReading readingOf(const Options& options)
{
    PacketReading reading;
    reading.controllerPort = options.capturedPort;
    reading.format = frameFormatOf(options.settings);
    reading.timeoutMs = options.settings.timeoutMs;
    return reading;
}

bool namesVariables(const Options& options)
{
    return !options.variables.empty() || !options.listed.empty();
}

/// The captured reads take the place of named variables.
Options withVariables(const Options& options, const CapturedReads& reads)
{
    Options complete = options;
    complete.variables = reads.variables();
    complete.settings.multiStation = reads.stations().size() > 1;
    if (reads.stations().size() == 1)
        complete.settings.station = *reads.stations().begin();
    complete.settings.maxBlockCount = blockCountFor(complete.variables);
    if (!complete.settings.multiStation) {
        for (Variable& variable : complete.variables)
            variable.station = -1;
    }
    return complete;
}

std::vector<Variable> askedVariables(const Options& options)
{
    std::vector<Variable> variables;
    for (const WatchRow& row : emptyRows(options.variables, options.listed))
        variables.push_back(withStation(row.variable, options.settings));
    return variables;
}

/// The rows as the capture goes on; as JSON each change is printed.
class ReplayedRows
{
public:
    explicit ReplayedRows(const Options& options)
        : m_options(options), m_rows(emptyRows(options.variables, options.listed)),
          m_asked(askedVariables(options)), m_replay(options.settings, m_asked),
          m_answeredAt(m_rows.size(), 0)
    {
    }

    void play(const CaptureEntry& entry)
    {
        const auto changed = m_replay.play(entry);
        for (std::size_t index = 0; changed && index < m_rows.size(); ++index) {
            if (overlaps(*changed, m_asked[index]))
                look(index, entry.microseconds);
        }
    }

    std::vector<WatchRow> rows(qint64 now) const
    {
        std::vector<WatchRow> rows = m_rows;
        for (std::size_t index = 0; index < rows.size(); ++index) {
            if (rows[index].value.ageMs >= 0)
                rows[index].value.ageMs = (now - m_answeredAt[index]) / 1000;
        }
        return rows;
    }

    const ReplayCounts& counts() const { return m_replay.counts(); }

private:
    void look(std::size_t index, qint64 now)
    {
        WatchRow& row = m_rows[index];
        const CyclicValue before = row.value;
        row.value = m_replay.value(index);
        if (!hasFailed(row.value.failure))
            m_answeredAt[index] = now;
        if (m_options.format == ValueFormat::Json && !sameNews(before, row.value))
            print(watchJson(row, m_options.settings.station, dateTimeOf(now)) + QLatin1Char('\n'));
    }

    const Options& m_options;
    std::vector<WatchRow> m_rows;
    const std::vector<Variable> m_asked;
    Replay m_replay;
    std::vector<qint64> m_answeredAt;
};

QString headingOf(const Options& options, const CapturedReads& reads, const ReplayCounts& counts)
{
    return QStringLiteral("%1, %2 to %3: requests: %4, replies: %5, retries: %6, given up: %7")
        .arg(options.captureFile, captureTimeText(reads.firstTime()), captureTimeText(reads.lastTime()),
             QString::number(counts.requests), QString::number(counts.good), QString::number(counts.retried),
             QString::number(counts.failed));
}

void printTable(const Options& options, const CapturedReads& reads, const ReplayedRows& rows)
{
    WatchView view;
    view.heading = headingOf(options, reads, rows.counts());
    view.station = options.settings.station;
    view.rows = rows.rows(reads.lastTime());
    TableStyle style;
    style.format = options.format;
    style.colours = wantsColours();
    print(watchTable(view, style).join(QLatin1Char('\n')) + QLatin1Char('\n'));
}

void note(const Options& options, const QStringList& notes, const ReplayCounts& counts)
{
    const QString begin = options.captureFile + QStringLiteral(": ");
    for (const QString& text : notes)
        complain(begin + text);
    if (counts.otherStations > 0)
        complain(begin +
                 QStringLiteral("left out: %1 to other stations than %2; --station and --multi-station "
                                "choose them")
                     .arg(counted(counts.otherStations, "request"))
                     .arg(options.settings.station));
    if (counts.notRebuilt > 0)
        complain(begin + QStringLiteral("left out: %1 of a kind that the driver builds no frames for")
                             .arg(counted(counts.notRebuilt, "request")));
    if (counts.dropped > 0)
        complain(begin + QStringLiteral("left out: %1, late or of no request that is there")
                             .arg(counted(counts.dropped, "reply", "replies")));
}

ExitStatus refuse(const Options& options, const QString& error)
{
    complain(QStringLiteral("%1: %2").arg(options.captureFile, error));
    return WrongCommandLine;
}

bool wasReadLast(const WatchRow& row)
{
    return row.value.ageMs >= 0 && !hasFailed(row.value.failure);
}

/// \param entries that were read so far; told where it is not known how much there is
QString progressText(const char* what, const CaptureReader& capture, std::size_t entries)
{
    const auto percent = capture.percentRead();
    return QLatin1String(what) + (percent ? QStringLiteral(": %1 %").arg(*percent, 0, 'f', 0)
                                          : QStringLiteral(": %1 frames").arg(entries));
}

/// What is there when a capture has been played.
ExitStatus show(const Options& options, const CapturedReads& reads, const CaptureEnd& end,
                const ReplayedRows& rows)
{
    if (options.format != ValueFormat::Json)
        printTable(options, reads, rows);
    note(options, end.notes, rows.counts());
    const std::vector<WatchRow> last = rows.rows(reads.lastTime());
    return std::all_of(last.begin(), last.end(), wasReadLast) ? AllGood : ControllerFailed;
}

/// What is asked for is known, so each entry is played as it is read.
ExitStatus replayNamed(const Options& options)
{
    CapturedReads reads(frameFormatOf(options.settings));
    ProgressLine progress;
    ReplayedRows rows(options);
    std::size_t entries = 0;
    const CaptureEnd end = options.capture->read(readingOf(options), [&](const CaptureEntry& entry) {
        reads.add(entry);
        rows.play(entry);
        progress.show(progressText("replaying", *options.capture, ++entries));
        return true;
    });
    progress.clear();
    return end.error.isEmpty() ? show(options, reads, end, rows) : refuse(options, end.error);
}

/// What was read is known when the whole capture is, so its entries are kept until then.
ExitStatus replayWhatWasRead(const Options& options)
{
    CapturedReads reads(frameFormatOf(options.settings));
    HeldEntries held;
    ProgressLine progress;
    const CaptureEnd end = options.capture->read(readingOf(options), [&](const CaptureEntry& entry) {
        reads.add(entry);
        progress.show(progressText("reading", *options.capture, held.entries().size()));
        return held.add(entry);
    });
    progress.clear();
    if (!end.error.isEmpty())
        return refuse(options, end.error);
    if (held.isFull())
        return refuse(options,
                      QStringLiteral("to find out what was read takes more than %1 MB of memory; name the "
                                     "variables, then it is played as it is read, however long it is")
                          .arg(mostHeldMegabytes));
    const Options complete = withVariables(options, reads);
    if (complete.variables.empty())
        return refuse(options, QStringLiteral("it holds no read that the driver could have made"));
    ReplayedRows rows(complete);
    for (const CaptureEntry& entry : held.entries()) {
        rows.play(entry);
        progress.show(QStringLiteral("replaying"));
    }
    progress.clear();
    return show(complete, reads, end, rows);
}

} // namespace

ExitStatus runReplay(const Options& options)
{
    Options own = options;
    own.settings.staleAfterMs = neverOldMs;
    return namesVariables(own) ? replayNamed(own) : replayWhatWasRead(own);
}

} // namespace plc
