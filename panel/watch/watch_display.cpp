// SPDX-License-Identifier: MIT
#include "panel/watch/watch_display.h"

#include "panel/terminal/output.h"
#include "panel/terminal/screen.h"
#include "panel/terminal/terminal.h"
#include "panel/watch/json_rows.h"
#include "panel/watch/watch_json.h"
#include "panel/watch/watch_statistics.h"

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
        if (m_last && sameNews(*m_last, report.view))
            return;
        print((m_last ? QStringLiteral("\n") : QString()) + joined(watchTable(report.view, m_style)));
        m_last = std::make_unique<WatchView>(report.view);
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
        const WatchView& view = report.view;
        if (!m_rows)
            m_rows.emplace(view.station);
        m_last.resize(view.rows.size());
        const QDateTime time = QDateTime::currentDateTimeUtc();
        for (std::size_t index = 0; index < view.rows.size(); ++index) {
            const CyclicValue& value = view.rows[index].value;
            Shown& last = m_last[index];
            if (last.isShown && sameNews(last.value, value))
                continue;
            m_rows->append(index, view.rows[index], time, &m_lines);
            last.value = value;
            last.isShown = true;
            if (m_lines.size() > mostHeldBytes)
                printHeld();
        }
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

    struct Shown {
        CyclicValue value;
        bool isShown = false;
    };

    void printHeld()
    {
        if (!m_lines.isEmpty())
            printBytes(m_lines);
        m_lines.resize(0); // its memory stays
    }

    std::optional<JsonRows> m_rows;
    std::vector<Shown> m_last;
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
    print(joined((watchTable(report.view, style) + below).mid(0, room)));
}

} // namespace plc
