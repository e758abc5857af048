// SPDX-License-Identifier: MIT
#include "panel/watch/watch_display.h"

#include "panel/terminal/output.h"
#include "panel/terminal/screen.h"
#include "panel/terminal/terminal.h"
#include "panel/watch/json_rows.h"
#include "panel/watch/watch_json.h"
#include "panel/watch/watch_statistics.h"
#include "panel/watch/watch_table.h"
#include "runtime/cycle/value_changes.h"

#include <algorithm>

namespace plc
{

namespace
{

// Of a table: link, gap, heading, one row, and how many others there are.
const int leastTableLines = 5;

QString joined(const QStringList& lines)
{
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

/// \return what a table shows, with its rows as they are now
WatchView viewOf(const WatchReport& report)
{
    WatchView view = report.view;
    const WatchedVariables& variables = *report.rows.variables;
    view.rows.reserve(static_cast<std::size_t>(variables.size()));
    RowWalk().over(report.rows, [&](int row, const CyclicValue& value) {
        view.rows.push_back({variables.variable(row), value, variables.listed(row)});
        return true;
    });
    return view;
}

/// \return the lines below a table, with a gap between; none when no statistics are wanted
QStringList statisticsBelow(const WatchReport& report, int columns)
{
    return report.statistics ? QStringList{QString()} + statisticsLines(*report.statistics, columns)
                             : QStringList();
}

/// A table each time that there is something new. Statistics are always new and come last.
class PrintedTables : public Display
{
public:
    explicit PrintedTables(ValueFormat format)
    {
        m_style.format = format;
        m_style.colours = wantsColours();
    }

    void show(const WatchReport& report) override
    {
        WatchView view = viewOf(report);
        if (m_last && sameNews(*m_last, view))
            return;
        print((m_last ? QStringLiteral("\n") : QString()) + joined(watchTable(view, m_style)));
        m_last = std::make_unique<WatchView>(std::move(view));
    }

    void end(const WatchReport& report) override
    {
        show(report);
        if (report.statistics)
            print(joined(statisticsBelow(report, 0)));
    }

private:
    TableStyle m_style;
    std::unique_ptr<WatchView> m_last;
};

/// A line of JSON for each variable that changed, and one for the statistics at the end.
class JsonLines : public Display
{
public:
    JsonLines() { m_lines.reserve(2 * mostHeldBytes); }

    void show(const WatchReport& report) override
    {
        if (!m_rows)
            m_rows.emplace(report.view.station);
        const QDateTime time = QDateTime::currentDateTimeUtc();
        m_walk.over(report.rows, [&](int row, const CyclicValue& value) {
            // In any case, so that it is known what was told.
            if (m_told.isNews(row, value) || m_isFirst)
                append(*report.rows.variables, row, value, time);
            return true;
        });
        m_isFirst = false;
        printHeld();
    }

    void end(const WatchReport& report) override
    {
        show(report);
        if (report.statistics)
            print(statisticsJson(*report.statistics, QDateTime::currentDateTimeUtc()) + QLatin1Char('\n'));
    }

private:
    static const int mostHeldBytes = 1 << 18; // to be written at once

    void append(const WatchedVariables& variables, int row, const CyclicValue& value, const QDateTime& time)
    {
        m_row.variable = variables.variable(row);
        m_row.listed = variables.listed(row);
        m_row.value = value;
        m_rows->append(m_row, time, &m_lines);
        if (m_lines.size() > mostHeldBytes)
            printHeld();
    }

    void printHeld()
    {
        if (!m_lines.isEmpty())
            printBytes(m_lines);
        m_lines.resize(0); // its memory stays
    }

    std::optional<JsonRows> m_rows;
    RowWalk m_walk;
    ValueChanges m_told;
    bool m_isFirst = true; // every row is told once
    WatchRow m_row;        // its memory is used again
    QByteArray m_lines;
};

} // namespace

bool wantsScreen(const DisplayWishes& wishes)
{
    // The lines of a trace on the same terminal would go through the table.
    const bool disturbed = wishes.trace && errorsGoToTerminal();
    return wishes.format != ValueFormat::Json && !wishes.once && !disturbed && Screen::isPossible();
}

std::unique_ptr<Display> displayFor(const DisplayWishes& wishes)
{
    if (wishes.format == ValueFormat::Json)
        return std::make_unique<JsonLines>();
    return std::make_unique<PrintedTables>(wishes.format);
}

void printLastTable(const WatchReport& report, ValueFormat format)
{
    const TerminalSize size = terminalSize();
    const int room = std::max(size.lines - 1, 1); // the cursor has a line of its own
    TableStyle style;
    style.format = format;
    style.columns = size.columns - 1;
    style.colours = wantsColours();
    const QStringList below = statisticsBelow(report, style.columns);
    style.lines = std::max(room - below.size(), leastTableLines);
    print(joined((watchTable(viewOf(report), style) + below).mid(0, room)));
}

} // namespace plc
