// SPDX-License-Identifier: MIT
#include "panel/commands/history_command.h"

#include "history/csv_line.h"
#include "history/history_reader.h"
#include "panel/commands/named_variables.h"
#include "panel/history/sample_lines.h"
#include "panel/history/terminal_plot.h"
#include "panel/terminal/display_width.h"
#include "panel/terminal/output.h"
#include "panel/terminal/terminal.h"
#include "runtime/model/printable.h"

#include <algorithm>
#include <stdexcept>

namespace plc
{

namespace
{

const qint64 farPast = 0;
const qint64 farFuture = latestMs;

bool isNamed(const QString& name, const QString& text)
{
    // A variable of several values has a series for each, NAME[0], NAME[1], ...
    return name == text || name.startsWith(text + QLatin1Char('[')) || fitsPattern(name, text);
}

/// \return those that \a texts name, each once \throws std::runtime_error for a text that names none
std::vector<LoggedSeries> chosenSeries(const std::vector<LoggedSeries>& all, const QStringList& texts)
{
    std::vector<LoggedSeries> chosen;
    for (const QString& text : texts) {
        bool isFound = false;
        for (const LoggedSeries& series : all) {
            if (!isNamed(series.series.name, text))
                continue;
            isFound = true;
            const auto isSame = [&series](const LoggedSeries& other) { return other.id == series.id; };
            if (std::none_of(chosen.begin(), chosen.end(), isSame))
                chosen.push_back(series);
        }
        if (!isFound)
            throw std::runtime_error(
                QStringLiteral(
                    "%1: nothing of this name was logged; without a name the file's names are printed")
                    .arg(text)
                    .toStdString());
    }
    return chosen;
}

int widestName(const std::vector<LoggedSeries>& series)
{
    int width = 0;
    for (const LoggedSeries& one : series)
        width = std::max(width, columnsOf(one.series.name));
    return width;
}

ExitStatus printNames(const std::vector<LoggedSeries>& all, const Options& options)
{
    const int width = widestName(all);
    for (const LoggedSeries& one : all) {
        if (options.names)
            print(printable(one.series.name) + QLatin1Char('\n'));
        else
            print(options.format == ValueFormat::Json ? seriesJson(one) : seriesLine(one, width));
    }
    return AllGood;
}

TimeRange rangeOf(const HistoryOptions& wanted)
{
    return {wanted.fromMs.value_or(farPast), wanted.toMs.value_or(farFuture)};
}

ExitStatus printSamples(const HistoryReader& reader, const std::vector<LoggedSeries>& chosen,
                        const Options& options)
{
    const int width = widestName(chosen);
    bool isEmpty = true;
    if (options.history.csv)
        print(QString::fromLatin1(csvHeader));
    reader.visit(
        chosen, rangeOf(options.history), [&](const LoggedSeries& series, const LoggedSample& sample) {
            isEmpty = false;
            if (options.history.csv)
                print(QString::fromUtf8(csvLine(series.series, sample.timeMs, sample.state, sample.text)));
            else if (options.format == ValueFormat::Json)
                print(sampleJson(series.series, sample.timeMs, sample.state, sample.text));
            else
                print(sampleLine(series.series, sample.timeMs, sample.state, sample.text, width));
            return !outputFailed();
        });
    if (!isEmpty)
        return AllGood;
    complain(
        QStringLiteral("nothing of this was logged in this time; a value that does not change has no samples "
                       "(--plot shows it all the same)"));
    return ControllerFailed;
}

/// \return the range asked for, or that of the samples
TimeRange drawnRange(const HistoryReader& reader, const std::vector<LoggedSeries>& chosen,
                     const HistoryOptions& wanted, int pieces)
{
    TimeRange range{farFuture, farPast};
    for (const LoggedSeries& one : chosen) {
        range.fromMs = std::min(range.fromMs, one.firstMs.value_or(farFuture));
        range.toMs = std::max(range.toMs, one.lastMs.value_or(farPast) + 1);
    }
    range.toMs = std::max(range.toMs, reader.aliveMs());
    if (range.fromMs == farFuture)
        range.fromMs = range.toMs;
    range.fromMs = wanted.fromMs.value_or(range.fromMs);
    range.toMs = wanted.toMs.value_or(range.toMs);
    range.toMs = std::max(range.toMs, range.fromMs + pieces); // a piece is a millisecond or more
    return range;
}

ExitStatus drawTrends(const HistoryReader& reader, const std::vector<LoggedSeries>& chosen,
                      const Options& options)
{
    const TerminalSize terminal = terminalSize();
    const int around = 4; // lines: name, axis, times, and an empty one
    const int count = static_cast<int>(chosen.size());
    PlotSize size;
    size.columns = std::max(40, terminal.columns);
    size.lines = (std::clamp((terminal.lines - 3) / count - around, 5, 15) - 1) | 1; // odd: one in the middle
    size.braille = writesUtf8();
    const TimeRange range = drawnRange(reader, chosen, options.history, plotPieces(size));
    for (const LoggedSeries& one : chosen) {
        const auto trend = reader.trend(one, range, plotPieces(size));
        print(plotLines(one.series, range, trend, size).join(QLatin1Char('\n')) + QStringLiteral("\n\n"));
    }
    print(rangeLine(range));
    return AllGood;
}

} // namespace

ExitStatus runHistory(const Options& options)
{
    try {
        const HistoryReader reader(options.history.file);
        const std::vector<LoggedSeries> all = reader.series();
        if (options.history.names.isEmpty())
            return printNames(all, options);
        const std::vector<LoggedSeries> chosen = chosenSeries(all, options.history.names);
        return options.history.plot ? drawTrends(reader, chosen, options)
                                    : printSamples(reader, chosen, options);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(options.history.file.toStdString() + ": " + error.what());
    }
}

} // namespace plc
