// SPDX-License-Identifier: MIT
#include "panel/commands/log_command.h"

#include "history/recorder.h"
#include "history/sample_writer.h"
#include "panel/history/sample_lines.h"
#include "panel/session/listeners.h"
#include "panel/session/session.h"
#include "panel/terminal/output.h"
#include "panel/terminal/progress_line.h"
#include "panel/terminal/terminal.h"
#include "panel/terminal/watch_signals.h"
#include "runtime/cycle/driver_blocks.h"
#include "runtime/cycle/exchange_record.h"
#include "runtime/modbus/request_pieces.h"

#include <QDateTime>

#include <csignal>
#include <map>
#include <mutex>
#include <set>
#include <stdexcept>

namespace plc
{

namespace
{

const int lookEveryMs = 100;

// Samples that were logged and are not printed yet; a reader that does not read costs the log nothing.
const std::size_t mostUnprinted = 100000;

/// \return what is logged, in pieces that one request reads
std::vector<RecordedVariable> recordedVariables(const Options& options)
{
    std::vector<RecordedVariable> whole;
    for (const Variable& typed : options.variables)
        whole.push_back({typed, std::nullopt, std::nullopt});
    for (const ListedVariable& listed : options.listed)
        whole.push_back({listed.elements, listed, std::nullopt});
    std::vector<RecordedVariable> variables;
    for (const RecordedVariable& variable : whole) {
        std::vector<Variable> pieces;
        for (const ReadPiece& piece :
             readPieces(withStation(variable.elements, options.settings), options.settings.maxBlockCount))
            pieces.push_back(piece.shown);
        const std::vector<RecordedVariable> parts = cutLike(variable, pieces);
        variables.insert(variables.end(), parts.begin(), parts.end());
    }
    return variables;
}

/// \throws std::runtime_error where two values would be logged under one name
void refuseDoubles(const std::vector<Series>& series)
{
    std::set<QString> names;
    for (const Series& one : series) {
        if (!names.insert(one.name).second)
            throw std::runtime_error(
                QStringLiteral("%1 would be logged twice; name it once").arg(one.name).toStdString());
    }
}

/// What was logged and waits for being printed.
class Unprinted
{
public:
    void add(const std::vector<LogSample>& samples)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (const LogSample& sample : samples) {
            if (m_samples.size() < mostUnprinted)
                m_samples.push_back(sample);
            else
                ++m_passedOver;
        }
    }

    std::vector<LogSample> take()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return std::exchange(m_samples, {});
    }

    qint64 passedOver() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_passedOver;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<LogSample> m_samples;
    qint64 m_passedOver = 0;
};

/// Which variables a block refreshes. One thread.
class BlockVariables
{
public:
    explicit BlockVariables(const Options& options)
    {
        for (const RecordedVariable& variable : recordedVariables(options))
            m_variables.push_back(withStation(variable.elements, options.settings));
    }

    const std::vector<int>& in(const RW_VAR& request)
    {
        const Variable elements = elementsOf(DriverBlock{request, {}, 0});
        const auto key = std::make_tuple(elements.station, elements.area, elements.element, elements.count);
        const auto known = m_blocks.find(key);
        if (known != m_blocks.end())
            return known->second;
        std::vector<int>& indices = m_blocks[key];
        for (std::size_t index = 0; index < m_variables.size(); ++index) {
            if (overlaps(m_variables[index], elements))
                indices.push_back(static_cast<int>(index));
        }
        return indices;
    }

private:
    std::vector<Variable> m_variables;
    std::map<std::tuple<int, int, int, int>, std::vector<int>> m_blocks;
};

qint64 wallClock()
{
    return QDateTime::currentMSecsSinceEpoch();
}

class Log
{
public:
    explicit Log(const Options& options)
        : m_options(options), m_series(seriesOf(recordedVariables(options))), m_blocks(options),
          m_writer(makeSampleStore(options.log.to, options.log.rotation)),
          m_recorder(
              recordedVariables(options),
              options.log.every ? Recorder::What::Refreshes : Recorder::What::Changes,
              [this](const LogSample& sample) { return m_writer.add(sample); }, wallClock),
          m_session(options.settings, listeners())
    {
    }

    ExitStatus run()
    {
        openFile();
        Runtime& runtime = m_session.runtime();
        for (const RecordedVariable& variable : recordedVariables(m_options))
            runtime.addCyclic(variable.elements);
        runtime.setValueObserver(
            [this](int index, const CyclicValue& value) { m_recorder.take(index, value); });
        runtime.start();
        while (goOn(WatchSignals::wait(lookEveryMs)))
            look();
        m_recorder.end();
        runtime.stop();
        m_writer.stop();
        look();
        return sum();
    }

private:
    Listeners listeners()
    {
        Listeners all = listenersFor(m_options.trace, m_options.captureTo, m_options.settings);
        if (m_options.log.every)
            all.exchanges = [this, others = all.exchanges](const ExchangeRecord& record) {
                if (others)
                    others(record);
                takeRefreshed(record);
            };
        return all;
    }

    void takeRefreshed(const ExchangeRecord& record)
    {
        for (const int index : m_blocks.in(record.request))
            m_recorder.take(index, m_session.runtime().value(index));
    }

    void openFile()
    {
        refuseDoubles(m_series);
        if (m_options.format == ValueFormat::Json)
            m_writer.setListener([this](const std::vector<LogSample>& samples) { m_unprinted.add(samples); });
        try {
            m_writer.start(m_series);
        } catch (const std::runtime_error& error) {
            throw std::runtime_error("--to " + m_options.log.to.toStdString() + ": " + error.what());
        }
    }

    bool goOn(WatchSignals::Kind kind)
    {
        if (kind == WatchSignals::Suspended)
            WatchSignals::suspend();
        return kind != WatchSignals::End && !outputFailed();
    }

    void look()
    {
        const WriterReport report = m_writer.report();
        tellError(report);
        tellConnection();
        printLogged();
        // What found no room is taken again when there is enough for all of it.
        if (report.lost > 0 && report.waiting == 0) {
            for (const int index : m_recorder.missed())
                m_recorder.take(index, m_session.runtime().value(index));
        }
        if (m_options.format != ValueFormat::Json || !isTerminal())
            m_progress.show(progress(report));
    }

    void tell(const QString& words)
    {
        m_progress.clear();
        complain(words);
    }

    void tellError(const WriterReport& report)
    {
        if (report.error != m_error && !report.error.isEmpty())
            tell(QStringLiteral("--to %1: %2; it is tried again until there is no room for what waits")
                     .arg(m_options.log.to, report.error));
        if (report.error != m_error && report.error.isEmpty())
            tell(QStringLiteral("--to %1: can be written again").arg(m_options.log.to));
        m_error = report.error;
        if (report.lost > 0 && m_lost == 0)
            tell(QStringLiteral("--to %1: %2; the log will say where")
                     .arg(m_options.log.to,
                          report.error.isEmpty()
                              ? QStringLiteral(
                                    "values come faster than they can be written, and some are lost")
                              : QStringLiteral("there is no room for more to wait, and values are lost")));
        m_lost = report.lost;
    }

    void tellConnection()
    {
        if (m_connectionTold || !m_session.neverConnected() || m_recorder.failed() == 0)
            return;
        m_connectionTold = true;
        m_progress.clear();
        complainOfNoConnection(m_options.settings);
    }

    void printLogged()
    {
        const std::vector<LogSample> samples = m_unprinted.take();
        if (samples.empty())
            return;
        m_progress.clear();
        QString lines;
        for (const LogSample& sample : samples)
            lines += sampleJson(m_series[static_cast<std::size_t>(sample.series)], sample.timeMs,
                                sample.state, sample.text);
        print(lines);
    }

    QString progress(const WriterReport& report) const
    {
        QString words = QStringLiteral("logging to %1: %2 values of %3 series")
                            .arg(m_options.log.to)
                            .arg(report.written)
                            .arg(m_series.size());
        if (const int failed = m_recorder.failed())
            words += QStringLiteral(", %1 not read now").arg(failed);
        if (report.lost > 0)
            words += QStringLiteral(", %1 lost").arg(report.lost);
        return words + QStringLiteral("; Ctrl-C ends");
    }

    ExitStatus sum()
    {
        m_progress.clear();
        const WriterReport report = m_writer.report();
        if (m_unprinted.passedOver() > 0)
            complain(QStringLiteral("%1 values are in the log and were not printed, because nobody read them")
                         .arg(m_unprinted.passedOver()));
        if (report.lost > 0)
            complain(QStringLiteral("--to %1: %2 values are lost%3")
                         .arg(m_options.log.to)
                         .arg(report.lost)
                         .arg(report.error.isEmpty() ? QString() : QStringLiteral(": ") + report.error));
        else if (errorsGoToTerminal())
            printError(QStringLiteral("%1 values logged to %2\n").arg(report.written).arg(m_options.log.to));
        if (report.lost > 0)
            return OutputFailed;
        return m_recorder.hasAnswers() ? AllGood : ControllerFailed;
    }

    const Options& m_options;
    const std::vector<Series> m_series;
    BlockVariables m_blocks; // of the communication thread
    Unprinted m_unprinted;
    SampleWriter m_writer;
    Recorder m_recorder;
    Session m_session; // its thread uses what goes before it
    ProgressLine m_progress;
    QString m_error; // that was told last
    qint64 m_lost = 0;
    bool m_connectionTold = false;
};

} // namespace

ExitStatus runLog(const Options& options)
{
    WatchSignals::block();
    std::signal(SIGPIPE, SIG_IGN); // who reads what is printed may go; the file is ended in good order
    return Log(options).run();
}

} // namespace plc
