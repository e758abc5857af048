// SPDX-License-Identifier: MIT
#include "panel/commands/scan_command.h"

#include "panel/scan/element_scan.h"
#include "panel/scan/scan_report.h"
#include "panel/scan/station_scan.h"
#include "panel/session/element_reader.h"
#include "panel/session/interruption.h"
#include "panel/session/listeners.h"
#include "panel/terminal/output.h"
#include "panel/terminal/progress_line.h"
#include "panel/terminal/watch_signals.h"
#include "runtime/cycle/driver_blocks.h"
#include "runtime/modbus/request_pieces.h"
#include "runtime/model/counted.h"

#include <QElapsedTimer>

#include <algorithm>

namespace plc
{

namespace
{

// What every controller with registers may be asked for.
const int askedArea = wordArea;
const int askedElement = 0;

const int mostWithoutConnection = 3; // stations in a row

/// Prints lines as they come, each in the form that is wanted.
class Printer
{
public:
    explicit Printer(bool json) : m_isJson(json) {}

    bool isJson() const { return m_isJson; }
    ProgressLine* progress() { return &m_progress; }

    void line(const QString& text)
    {
        m_progress.clear();
        print(text.endsWith(QLatin1Char('\n')) ? text : text + QLatin1Char('\n'));
    }

private:
    const bool m_isJson;
    ProgressLine m_progress;
};

double secondsOf(const QElapsedTimer& clock)
{
    return static_cast<double>(clock.elapsed()) / 1000;
}

std::vector<DriverBlock> readsOf(const std::vector<int>& stations, const Settings& settings)
{
    BlockPlanner planner(settings);
    std::vector<DriverBlock> reads;
    for (const int station : stations) {
        for (const DriverBlock& read :
             planner.blocks({{askedArea, askedElement, 1, station}}, settings.maxBlockCount))
            reads.push_back(read);
    }
    return reads;
}

/// What stations answer, and whether the scan goes on.
struct StationsFound {
    std::vector<StationAnswer> answers;
    bool isReached = true;
    bool isEnded = false; // by a signal
};

void showStation(const StationsFound& found, Printer* printer)
{
    const StationAnswer& answer = found.answers.back();
    if (printer->isJson())
        return printer->line(stationJson(answer));
    if (!isThere(answer))
        return;
    if (std::count_if(found.answers.begin(), found.answers.end(), isThere) == 1)
        printer->line(stationHeading());
    printer->line(stationLine(answer));
}

/// The rest is not asked where there is no connection any more.
bool goesOn(const StationsFound& found, const StationScan& scan)
{
    if (found.isEnded || scan.neverConnected())
        return false;
    int unconnected = 0;
    for (auto answer = found.answers.rbegin();
         answer != found.answers.rend() && answer->kind == StationAnswer::NotConnected; ++answer)
        ++unconnected;
    return unconnected < mostWithoutConnection;
}

StationsFound askStations(const Options& options, const Listeners& listeners, Printer* printer)
{
    const std::vector<DriverBlock> reads = readsOf(options.stations, options.settings);
    StationScan scan(options.settings, options.tries, listeners);
    const Interruption interruption([&scan] { scan.stop(); });
    StationsFound found;
    bool isGoingOn = true;
    for (const DriverBlock& read : reads) {
        printer->progress()->show(QStringLiteral("asking station %1, %2 of %3")
                                      .arg(read.request.station)
                                      .arg(found.answers.size() + 1)
                                      .arg(reads.size()));
        StationAnswer answer;
        answer.station = read.request.station;
        answer.words = QStringLiteral("not asked");
        found.answers.push_back(isGoingOn ? scan.ask(read) : answer);
        found.isEnded = interruption.came();
        isGoingOn = goesOn(found, scan);
        showStation(found, printer);
    }
    found.isReached = !scan.neverConnected();
    return found;
}

ExitStatus statusOf(const StationsFound& found)
{
    const bool isComplete =
        std::none_of(found.answers.begin(), found.answers.end(), [](const StationAnswer& each) {
            return each.kind == StationAnswer::NotAsked || each.kind == StationAnswer::NotConnected;
        });
    const bool isAnyThere = std::any_of(found.answers.begin(), found.answers.end(), isThere);
    return isComplete && isAnyThere ? AllGood : ControllerFailed;
}

ElementCounts scanRange(const Variable& range, const Settings& settings, ElementReader* reader,
                        Printer* printer)
{
    const auto tell = [&](const ScannedRun& run) {
        printer->line(printer->isJson() ? runJson(run) : runLine(range, run));
    };
    const ElementScan* running = nullptr;
    const auto read = [&](const Variable& elements) {
        reader->tell(QStringLiteral("station %1: %2, %3 of %4 elements, %5 so far")
                         .arg(range.station)
                         .arg(variableText({elements.area, elements.element, 1, -1}))
                         .arg(running->done())
                         .arg(range.count)
                         .arg(counted(running->counts().reads, "read")));
        return reader->read(elements);
    };
    ElementScan scan(read, mostElementsRead(range.area, settings.maxBlockCount), tell);
    running = &scan;
    scan.scan(range);
    return scan.counts();
}

/// \return the ranges of each station that is to be asked for them
std::vector<Variable> rangesOf(const Options& options, const std::vector<StationAnswer>& answers)
{
    std::vector<Variable> ranges;
    for (Variable range : options.variables) {
        if (options.stations.empty())
            ranges.push_back(withStation(range, options.settings));
        for (const StationAnswer& answer : answers) {
            range.station = answer.station;
            if (isThere(answer))
                ranges.push_back(range);
        }
    }
    return ranges;
}

/// \return false when the controller was not reached
bool scanRanges(const Options& options, const std::vector<Variable>& ranges, const Listeners& listeners,
                Printer* printer, ExitStatus* status)
{
    ElementReader reader(options.settings, listeners, printer->progress());
    for (const Variable& range : ranges) {
        if (reader.isEnded())
            break;
        if (!printer->isJson())
            printer->line(rangeHeading(range));
        QElapsedTimer clock;
        clock.start();
        const ElementCounts counts = scanRange(range, options.settings, &reader, printer);
        printer->line(printer->isJson() ? rangeEndJson(range, counts, secondsOf(clock))
                                        : rangeEnd(range, counts, secondsOf(clock)));
        if (counts.unknown > 0)
            *status = ControllerFailed;
    }
    return !reader.neverConnected();
}

ExitStatus notReached(const Options& options)
{
    complainOfNoConnection(options.settings);
    return ControllerNotReached;
}

} // namespace

ExitStatus runScan(const Options& options)
{
    WatchSignals::block(); // a signal that comes before ends the program, as is usual
    const Listeners listeners = listenersFor(options.trace, options.captureTo, options.settings);
    Printer printer(options.format == ValueFormat::Json);
    ExitStatus status = AllGood;
    StationsFound found;
    if (!options.stations.empty()) {
        QElapsedTimer clock;
        clock.start();
        found = askStations(options, listeners, &printer);
        printer.line(printer.isJson() ? stationsEndJson(found.answers, secondsOf(clock))
                                      : stationsEnd(found.answers, secondsOf(clock)));
        status = statusOf(found);
    }
    if (found.isEnded)
        return ControllerFailed;
    if (!found.isReached)
        return notReached(options);
    const std::vector<Variable> ranges = rangesOf(options, found.answers);
    if (!ranges.empty() && !scanRanges(options, ranges, listeners, &printer, &status))
        return notReached(options);
    return status;
}

} // namespace plc
