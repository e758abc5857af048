// SPDX-License-Identifier: MIT
#include "panel/watch/watch_table.h"

#include "panel/terminal/display_width.h"
#include "panel/terminal/wrapped_text.h"
#include "panel/watch/row_texts.h"
#include "panel/watch/station_lines.h"
#include "panel/watch/watch_words.h"

#include <algorithm>

namespace plc
{

namespace
{

const int gap = 2;              // spaces between columns
const int widestValueCell = 48; // more values go on in the next line
const int narrowestValueCell = 8;
const int narrowestNameCell = 8; // that of the heading
const int neverCutName = 12;     // no AREA:ADDRESS is longer without a large count
const int ageWidth = 7;
const int shortState = 12;
const int usualValue = 16;
const int besideName = usualValue + ageWidth + shortState + 3 * gap;

// Lines about stations take so much of a window at most.
const int linesForAStationLine = 3;

enum Colour { Plain = 0, Bold = 1, Red = 31, Green = 32, Yellow = 33 };

/// The texts of one row; many values and a long state fill several lines.
struct Cells {
    QString name;
    QStringList valueLines;
    QString age;
    QString state;
    Colour colour = Plain;
};

struct Widths {
    int name = 0;
    int value = 0;
};

QStringList valueLines(const WatchRow& row, ValueFormat format, int width)
{
    return wrapped(valuePieces(row, format, width), width);
}

Colour colourOf(const WatchRow& row)
{
    const CyclicValue& value = row.value;
    if (hasFailed(value.failure) || isOutside(row))
        return Red;
    return value.state == ValueState::Fresh ? Plain : Yellow;
}

/// A name takes what a window leaves beside the other columns with a value of usual length.
int nameWidth(const WatchView& view, const TableStyle& style)
{
    int width = narrowestNameCell;
    for (const WatchRow& row : view.rows)
        width = std::max(width, columnsOf(rowName(row)));
    return style.columns == 0 ? width : std::min(width, std::max(neverCutName, style.columns - besideName));
}

/// Room for the values: what a narrow window leaves beside the other columns.
int valueRoom(const TableStyle& style, int name)
{
    if (style.columns == 0)
        return widestValueCell;
    const int others = name + ageWidth + shortState + 3 * gap;
    return std::max(narrowestValueCell, std::min(widestValueCell, style.columns - others));
}

Cells cellsOf(const WatchRow& row, const TableStyle& style, int widest)
{
    Cells cells;
    cells.name = cutText(rowName(row), widest);
    cells.valueLines = valueLines(row, style.format, valueRoom(style, widest));
    cells.age = ageText(row.value.ageMs);
    cells.state = stateText(row);
    cells.colour = colourOf(row);
    return cells;
}

QString withoutSpacesBehind(QString text)
{
    while (text.endsWith(QLatin1Char(' ')))
        text.chop(1);
    return text;
}

QString coloured(const QString& text, Colour colour, const TableStyle& style)
{
    const QString cut = withoutSpacesBehind(style.columns > 0 ? leftColumns(text, style.columns) : text);
    if (!style.colours || colour == Plain)
        return cut;
    return QStringLiteral("\x1b[%1m%2\x1b[0m").arg(static_cast<int>(colour)).arg(cut);
}

QString lineOf(const QString& name, const QString& value, const QString& age, const QString& state,
               const Widths& widths)
{
    return padded(name, widths.name + gap) + padded(value, widths.value + gap) + padded(age, ageWidth + gap) +
           state;
}

/// \return the state in lines that fit beside the other columns
QStringList stateLines(const QString& state, const Widths& widths, const TableStyle& style)
{
    const int room = style.columns - (widths.name + widths.value + ageWidth + 3 * gap);
    return wrapped(state.split(QLatin1Char(' ')), std::max(room, 1));
}

QStringList linesOf(const Cells& cells, const QStringList& states, const Widths& widths,
                    const TableStyle& style)
{
    QStringList lines;
    for (int index = 0; index < std::max(cells.valueLines.size(), states.size()); ++index) {
        const bool first = index == 0;
        const QString line = lineOf(first ? cells.name : QString(), cells.valueLines.value(index),
                                    first ? cells.age : QString(), states.value(index), widths);
        lines << coloured(line, cells.colour, style);
    }
    return lines;
}

/// \param wrapStates false to save lines: a state that is too long is cut
std::vector<QStringList> rowsOf(const std::vector<Cells>& table, const Widths& widths,
                                const TableStyle& style, bool wrapStates)
{
    std::vector<QStringList> rows;
    for (const Cells& cells : table) {
        const bool wrap = wrapStates && style.columns > 0;
        const QStringList states = wrap ? stateLines(cells.state, widths, style) : QStringList{cells.state};
        rows.push_back(linesOf(cells, states, widths, style));
    }
    return rows;
}

int linesIn(const std::vector<QStringList>& rows)
{
    int lines = 0;
    for (const QStringList& row : rows)
        lines += row.size();
    return lines;
}

QString firstLine(const WatchView& view, const TableStyle& style)
{
    if (!view.heading.isEmpty())
        return coloured(view.heading, Plain, style);
    return coloured(linkLine(view), view.link.connected ? Green : Red, style);
}

QStringList headLines(const WatchView& view, const Widths& widths, const TableStyle& style)
{
    const QString heading = lineOf(QStringLiteral("VARIABLE"), QStringLiteral("VALUE"), QStringLiteral("AGE"),
                                   QStringLiteral("STATE"), widths);
    QStringList lines = {firstLine(view, style)};
    if (hasStationLines(view)) {
        const int most = style.lines == 0 ? 0 : std::max(style.lines / linesForAStationLine, 1);
        for (const StationLine& line : stationLines(view.stations, most))
            lines << coloured(line.text, line.good ? Plain : Yellow, style);
    }
    return lines + QStringList{QString(), coloured(heading, Bold, style)};
}

/// \return what a user must know of the rows from \a shown on, which cannot be seen
QString hiddenText(const std::vector<WatchRow>& rows, std::size_t shown)
{
    const auto first = rows.begin() + static_cast<std::ptrdiff_t>(shown);
    const auto old = std::count_if(first, rows.end(),
                                   [](const WatchRow& row) { return row.value.state != ValueState::Fresh; });
    return QStringLiteral("(%1 more do not fit, %2; --once prints all)")
        .arg(rows.size() - shown)
        .arg(old == 0 ? QStringLiteral("all fresh") : QStringLiteral("%1 not fresh").arg(old));
}

/// Takes whole rows as long as they fit, and says how many did not.
QStringList fitting(QStringList lines, const std::vector<QStringList>& rows, const WatchView& view,
                    const TableStyle& style)
{
    std::size_t shown = 0;
    for (; shown < rows.size(); ++shown) {
        const int reserve = shown + 1 < rows.size() ? 1 : 0; // for the line that says what is missing
        if (style.lines > 0 && lines.size() + rows[shown].size() + reserve > style.lines)
            break;
        lines += rows[shown];
    }
    if (shown < rows.size())
        lines << coloured(hiddenText(view.rows, shown), Yellow, style);
    return lines;
}

} // namespace

QStringList watchTable(const WatchView& view, const TableStyle& style)
{
    Widths widths;
    widths.name = nameWidth(view, style);
    widths.value = 5;
    std::vector<Cells> table;
    for (const WatchRow& row : view.rows) {
        table.push_back(cellsOf(row, style, widths.name));
        for (const QString& line : table.back().valueLines)
            widths.value = std::max(widths.value, columnsOf(line));
    }
    const QStringList head = headLines(view, widths, style);
    const std::vector<QStringList> rows = rowsOf(table, widths, style, true);
    if (style.lines == 0 || head.size() + linesIn(rows) <= style.lines)
        return fitting(head, rows, view, style);
    return fitting(head, rowsOf(table, widths, style, false), view, style);
}

} // namespace plc
