// SPDX-License-Identifier: MIT
#include "panel/watch/watch_display.h"

#include "panel/terminal/output.h"
#include "panel/terminal/redrawn_lines.h"
#include "panel/terminal/terminal.h"
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

/// A table in the terminal, redrawn in place.
class LiveTable : public Display
{
public:
    explicit LiveTable(ValueFormat format) { m_style.format = format; }

    void show(const WatchReport& report) override { draw(report, QStringList{QString(), report.prompt}); }
    void end(const WatchReport& report) override { draw(report, {}); }
    bool redraws() const override { return true; }
    void resized() override { print(m_lines.clear()); }
    void continued() override { m_lines.startAnew(); }

private:
    /// In a low window what stands at the end goes first.
    void draw(const WatchReport& report, const QStringList& hint)
    {
        const TerminalSize size = terminalSize();
        const int room = std::max(size.lines - 1, 1); // the cursor has a line of its own
        m_style.columns = size.columns - 1;
        m_style.colours = wantsColours();
        const QStringList below = statisticsBelow(report, m_style.columns) + hint;
        m_style.lines = std::max(room - below.size(), leastTableLines);
        QStringList lines = watchTable(report.view, m_style);
        for (const QString& line : below)
            lines << line.left(m_style.columns);
        print(m_lines.draw(lines.mid(0, room)));
    }

    TableStyle m_style;
    RedrawnLines m_lines;
};

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
    void show(const WatchReport& report) override
    {
        const WatchView& view = report.view;
        m_last.resize(view.rows.size());
        for (std::size_t index = 0; index < view.rows.size(); ++index) {
            std::unique_ptr<CyclicValue>& last = m_last[index];
            const WatchRow& row = view.rows[index];
            if (last && sameNews(*last, row.value))
                continue;
            print(watchJson(row, view.station, QDateTime::currentDateTimeUtc()) + QLatin1Char('\n'));
            last = std::make_unique<CyclicValue>(row.value);
        }
    }

    void end(const WatchReport& report) override
    {
        show(report);
        if (report.statistics)
            print(statisticsJson(*report.statistics, QDateTime::currentDateTimeUtc()) + QLatin1Char('\n'));
    }

private:
    std::vector<std::unique_ptr<CyclicValue>> m_last;
};

} // namespace

std::unique_ptr<Display> displayFor(const DisplayWishes& wishes)
{
    if (wishes.format == ValueFormat::Json)
        return std::make_unique<JsonLines>();
    // The lines of a trace on the same terminal would go through a table that is redrawn.
    const bool disturbed = wishes.trace && errorsGoToTerminal();
    if (isTerminal() && !wishes.once && !disturbed)
        return std::make_unique<LiveTable>(wishes.format);
    return std::make_unique<PrintedTables>(wishes.format);
}

} // namespace plc
