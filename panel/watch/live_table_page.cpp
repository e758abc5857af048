// SPDX-License-Identifier: MIT
// What the table of a terminal shows; what its keys do is in live_table.cpp.

#include "panel/watch/live_table.h"

#include "panel/terminal/display_width.h"
#include "panel/terminal/wrapped_text.h"
#include "panel/watch/row_details.h"
#include "panel/watch/row_texts.h"
#include "panel/watch/table_help.h"
#include "panel/watch/watch_statistics.h"
#include "panel/watch/watch_words.h"

#include <algorithm>

namespace plc
{

namespace
{

const int widestValue = 48;
const int leastValueWidth = 12;

// How a write ended stands in its row for so long; one that failed until the next write to it.
const qint64 confirmedMs = 10000;

const qint64 calmMs = 1000; // between two drawings of a time

/// Whole seconds: tenths would be drawn all the time.
QString calmAge(qint64 ms)
{
    if (ms < 0)
        return QStringLiteral("-");
    if (ms < calmMs)
        return QStringLiteral("<1 s");
    return ms < 10 * calmMs ? QStringLiteral("%1 s").arg(ms / calmMs) : ageText(ms);
}

TextLook::Colour colourOf(const WatchRow& row)
{
    if (hasFailed(row.value.failure) || isOutside(row))
        return TextLook::Red;
    return row.value.state == ValueState::Fresh ? TextLook::Plain : TextLook::Yellow;
}

/// A connection that lasts is not counted in tenths of a second either.
QString calmLinkLine(WatchView view)
{
    view.link.sinceMs -= view.link.sinceMs % calmMs;
    return linkLine(view);
}

} // namespace

void LiveTable::arrange(qint64 nowMs)
{
    const bool stays = m_order == RowOrder::List || m_order == RowOrder::Name;
    if (m_rows.empty() || (stays && m_arranged == m_order))
        return;
    const int selected = selectedRow();
    if (m_order == RowOrder::Name) {
        QStringList names;
        for (int row = 0; row < m_source.variables.size(); ++row)
            names << m_source.variables.name(row);
        m_rows = rowsByName(names);
    } else {
        m_rows = rowsByState(m_order, m_source.seen.states(), nowMs);
    }
    const bool isOnTop = m_window.selected() == 0; // where what comes up is waited for
    m_arranged = m_order;
    if (!isOnTop)
        m_window.follow(static_cast<int>(std::find(m_rows.begin(), m_rows.end(), selected) - m_rows.begin()));
}

QString LiveTable::writtenText(int row) const
{
    const auto written = m_written.find(row);
    if (written == m_written.end())
        return QString();
    const Written& write = written->second;
    return write.outcome.isEmpty() ? QStringLiteral("writing %1").arg(write.value)
                                   : QStringLiteral("%1 %2").arg(write.value, write.outcome);
}

QString LiveTable::stateOf(int row, const WatchRow& shown, qint64 nowMs) const
{
    const auto written = m_written.find(row);
    const bool isOver = written == m_written.end() ||
                        (written->second.confirmed && nowMs - written->second.endedAtMs > confirmedMs);
    return isOver ? stateText(shown) : writtenText(row) + QStringLiteral("; ") + stateText(shown);
}

TableRow LiveTable::tableRow(int row, qint64 nowMs) const
{
    const WatchRow shown = rowAt(row);
    const SeenValue seen = m_source.seen.at(row);
    TableRow texts;
    texts.name = rowName(shown);
    texts.value = valuePieces(shown, m_source.format, 0).join(QLatin1Char(' '));
    texts.least = elementsText(shown, seen.range.least, m_source.format);
    texts.greatest = elementsText(shown, seen.range.greatest, m_source.format);
    texts.age = calmAge(shown.value.ageMs);
    texts.changed = timeOfDay(seen.changedAtMs);
    texts.state = stateOf(row, shown, nowMs);
    texts.isJustChanged = isJustChanged(seen.changedAtMs, nowMs);
    texts.isOutside = isOutside(shown);
    texts.colour = colourOf(shown);
    return texts;
}

void LiveTable::fillRows(TableContents* contents, int columns, qint64 nowMs)
{
    for (int place = m_window.first(); place < m_window.end(); ++place) {
        TableRow row = tableRow(m_rows[static_cast<std::size_t>(place)], nowMs);
        row.isSelected = place == m_window.selected() && m_source.hasKeys;
        m_valueWidth = std::max(m_valueWidth, columnsOf(row.value));
        if (m_showsRange)
            m_valueWidth = std::max({m_valueWidth, columnsOf(row.least), columnsOf(row.greatest)});
        contents->rows.push_back(row);
    }
    m_valueWidth = std::max(leastValueWidth, std::min(m_valueWidth, std::min(widestValue, columns / 3)));
    contents->widths = {std::max(m_nameWidth, contents->widths.name), m_valueWidth};
    contents->showsRange = m_showsRange;
    contents->showsChange = m_order == RowOrder::Change;
}

void LiveTable::fillOverlay(TableContents* contents, const TableLayout& layout, int columns)
{
    const int row = m_rows.empty() ? 0 : selectedRow();
    const QStringList lines =
        m_overlay == Overlay::Help
            ? tableHelp(columns)
            : rowDetails(rowAt(row), m_source.seen.at(row), writtenText(row), m_source.format, columns);
    const int room = layout.heading + layout.rows;
    m_overlayMost = std::max(lines.size() - room, 0);
    m_overlayTop = std::min(m_overlayTop, m_overlayMost);
    contents->overlay = lines.mid(m_overlayTop, room);
    contents->status = m_overlayMost > 0 ? QStringLiteral("up and down scroll") : QString();
    contents->hint = QStringLiteral("any other key: back to the table");
}

QString LiveTable::statusText() const
{
    const SeenCounts counts = m_source.seen.counts();
    QString text = QStringLiteral("%1-%2 of %3, %4")
                       .arg(m_window.rows() == 0 ? 0 : m_window.first() + 1)
                       .arg(m_window.end())
                       .arg(m_window.rows())
                       .arg(orderText(m_order));
    text += counts.notFresh == 0 ? QStringLiteral("; all fresh")
                                 : QStringLiteral("; %1 not fresh").arg(counts.notFresh);
    if (counts.outside > 0)
        text += QStringLiteral(", %1 outside limits").arg(counts.outside);
    return text;
}

QString LiveTable::hintText(int columns) const
{
    return m_source.hasKeys ? tableHint(columns, m_hasStations) : QStringLiteral("Ctrl-C ends.");
}

void LiveTable::fillFoot(TableContents* contents, int columns) const
{
    contents->hasCursor = m_write || m_entry;
    contents->status = statusText();
    if (m_write) {
        contents->status = m_write->headline();
        contents->isError = m_write->hasError();
        contents->hint = m_write->prompt() + m_write->typed();
    } else if (m_entry) {
        contents->hint = m_entry->prompt() + m_entry->text();
    } else if (m_news.isEmpty()) {
        contents->hint = hintText(columns);
    } else {
        const QStringList lines = wrapped(m_news.split(QLatin1Char(' ')), columns);
        contents->hint = lines.mid(lines.size() > 1 ? 1 : 0).join(QLatin1Char(' '));
        if (lines.size() > 1)
            contents->status = lines.first();
    }
}

Page LiveTable::page(const WatchReport& report, int columns, int lines, qint64 nowMs)
{
    m_hasStations = hasStationLines(report.view);
    TableContents contents;
    if (report.statistics)
        contents.below = QStringList{QString()} + statisticsLines(*report.statistics, columns);
    const int most = std::max(lines / linesForAStationLine, 1);
    if (m_hasStations)
        contents.stations = stationLines(report.view.stations, most);
    contents.link = calmLinkLine(report.view);
    contents.isConnected = report.view.link.connected;
    const TableLayout layout =
        tableLayout(lines, static_cast<int>(contents.stations.size()), contents.below.size());
    m_firstLine = layout.firstRow();
    m_window.resize(m_source.variables.size(), layout.rows);
    arrange(nowMs);
    fillFoot(&contents, columns);
    if (m_overlay == Overlay::None)
        fillRows(&contents, columns, nowMs);
    else
        fillOverlay(&contents, layout, columns);
    return tablePage(contents, layout, columns);
}

} // namespace plc
