#include "panel/commands/replay_command.h"

#include "capture/capture_clock.h"
#include "capture/capture_reader.h"
#include "capture/captured_reads.h"
#include "capture/replay.h"
#include "panel/terminal/output.h"
#include "panel/terminal/progress_line.h"
#include "panel/terminal/terminal.h"
#include "panel/watch/watch_json.h"
#include "panel/watch/watch_rows.h"
#include "runtime/cycle/refresh_plan.h"
#include "runtime/modbus/request_pieces.h"

#include <QFileInfo>

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

PcapReading readingOf(const Options& options)
{
    PcapReading reading;
    reading.controllerPort = options.settings.port;
    reading.format = options.settings.remoteMode ? FrameFormat::Remote : FrameFormat::ModbusTcp;
    reading.timeoutMs = options.settings.timeoutMs;
    return reading;
}

/// Where no variable is named, those of the captured reads take their place.
Options withVariables(const Options& options, const CapturedReads& reads)
{
    Options complete = options;
    complete.settings.staleAfterMs = neverOldMs;
    if (!options.variables.empty() || !options.listed.empty())
        return complete;
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
        if (row.value.code == 0)
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
        complain(begin + QStringLiteral("%1 requests to other stations than %2 are left out; --station and "
                                        "--multi-station choose them")
                             .arg(counts.otherStations)
                             .arg(options.settings.station));
    if (counts.notRebuilt > 0)
        complain(begin + QStringLiteral("%1 requests are left out, because the driver builds no such frames")
                             .arg(counts.notRebuilt));
    if (counts.dropped > 0)
        complain(begin +
                 QStringLiteral("%1 replies are left out, because they were late or belong to no request")
                     .arg(counts.dropped));
}

ExitStatus refuse(const Options& options, const QString& error)
{
    complain(QStringLiteral("%1: %2").arg(options.captureFile, error));
    return WrongCommandLine;
}

bool wasReadLast(const WatchRow& row)
{
    return row.value.ageMs >= 0 && row.value.code == 0;
}

} // namespace

ExitStatus runReplay(const Options& options)
{
    const PcapReading reading = readingOf(options);
    CapturedReads reads(options.settings.remoteMode);
    const CaptureEnd end = readCapture(options.captureFile, reading, [&reads](const CaptureEntry& entry) {
        reads.add(entry);
        return true;
    });
    if (!end.error.isEmpty())
        return refuse(options, end.error);
    const Options complete = withVariables(options, reads);
    if (complete.variables.empty() && complete.listed.empty())
        return refuse(options, QStringLiteral("it holds no read that the driver could have made"));
    const double size = static_cast<double>(QFileInfo(options.captureFile).size());
    ProgressLine progress;
    ReplayedRows rows(complete);
    readCapture(options.captureFile, reading, [&](const CaptureEntry& entry) {
        rows.play(entry);
        progress.show(QStringLiteral("replaying: %1 %")
                          .arg(100 * static_cast<double>(entry.position) / size, 0, 'f', 0));
        return true;
    });
    progress.clear();
    if (complete.format != ValueFormat::Json)
        printTable(complete, reads, rows);
    note(complete, end.notes, rows.counts());
    const std::vector<WatchRow> last = rows.rows(reads.lastTime());
    return std::all_of(last.begin(), last.end(), wasReadLast) ? AllGood : ControllerFailed;
}

} // namespace plc
