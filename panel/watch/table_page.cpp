// SPDX-License-Identifier: MIT
#include "panel/watch/table_page.h"

#include "panel/terminal/display_width.h"
#include "panel/watch/row_texts.h"

#include <algorithm>

namespace plc
{

namespace
{

const int gap = 2;
const int marks = 4; // selected, changed, outside, and a space
const int ageWidth = 6;
const int changedWidth = 8; // 10:23:45
const int shortState = 12;
const int usefulState = 30;
const int narrowestName = 12;
const int usualValue = 16;
const int narrowestValue = 8;
const int leastRows = 3; // before anything else has to give way

/// Where each column begins, and how wide it is; 0: it is not there.
struct Columns {
    int name = 0;
    int value = 0;
    int least = 0;
    int greatest = 0;
    int age = 0;
    int changed = 0;
    int state = 0;
};

int nameRoom(int widest, int columns)
{
    const int beside = marks + usualValue + ageWidth + shortState + 3 * gap;
    return std::min(widest, std::max(narrowestName, columns - beside));
}

/// What a narrow window has no room for is left out: the state last.
Columns columnsFor(const TableContents& contents, int columns)
{
    Columns widths;
    widths.name = nameRoom(contents.widths.name, columns);
    int rest = columns - marks - widths.name - gap;
    const int values = contents.showsRange ? 3 : 1;
    widths.value = std::min(contents.widths.value, std::max(rest / values - gap, narrowestValue));
    rest -= widths.value + gap;
    if (contents.showsRange) {
        widths.least = widths.greatest = widths.value;
        rest -= 2 * (widths.value + gap);
    } else if (rest >= ageWidth) {
        widths.age = ageWidth;
        rest -= ageWidth + gap;
    }
    const int withChange = changedWidth + gap + (contents.showsChange ? 0 : usefulState);
    if (!contents.showsRange && rest >= withChange) {
        widths.changed = changedWidth;
        rest -= changedWidth + gap;
    }
    widths.state = std::max(rest, 0);
    return widths;
}

/// Puts texts side by side, each in its column.
class LineOfCells
{
public:
    explicit LineOfCells(const TextLook& look) : m_look(look) {}

    void mark(bool isSet, const QChar& sign) { m_text += isSet ? sign : QChar(QLatin1Char(' ')); }

    void cell(const QString& text, int width)
    {
        if (width > 0)
            m_text += padded(cutText(text, width), width + gap);
    }

    PageLine line(int columns) const
    {
        QString text = leftColumns(m_text, columns);
        if (m_look.reverse)
            text = padded(text, columns);
        return {Span{0, text, m_look}};
    }

private:
    const TextLook m_look;
    QString m_text;
};

PageLine lineOf(const TableRow& row, const Columns& widths, int columns)
{
    TextLook look;
    look.colour = row.colour;
    look.bold = row.isJustChanged;
    look.reverse = row.isSelected;
    LineOfCells line(look);
    line.mark(row.isSelected, QLatin1Char('>'));
    line.mark(row.isJustChanged, QLatin1Char('*'));
    line.mark(row.isOutside, QLatin1Char('!'));
    line.mark(false, QLatin1Char(' '));
    line.cell(row.name, widths.name);
    line.cell(row.value, widths.value);
    line.cell(row.least, widths.least);
    line.cell(row.greatest, widths.greatest);
    line.cell(row.age, widths.age);
    line.cell(row.changed, widths.changed);
    line.cell(row.state, widths.state);
    return line.line(columns);
}

PageLine headingLine(const Columns& widths, int columns)
{
    TextLook look;
    look.bold = true;
    LineOfCells line(look);
    line.cell(QString(), marks - gap);
    line.cell(QStringLiteral("VARIABLE"), widths.name);
    line.cell(QStringLiteral("VALUE"), widths.value);
    line.cell(QStringLiteral("MIN"), widths.least);
    line.cell(QStringLiteral("MAX"), widths.greatest);
    line.cell(QStringLiteral("AGE"), widths.age);
    line.cell(QStringLiteral("CHANGED"), widths.changed);
    line.cell(QStringLiteral("STATE"), widths.state);
    return line.line(columns);
}

PageLine plainLine(const QString& text, int columns, TextLook::Colour colour = TextLook::Plain)
{
    TextLook look;
    look.colour = colour;
    return {Span{0, cutText(text, columns), look}};
}

void addHead(const TableContents& contents, const TableLayout& layout, int columns, Page* page)
{
    if (layout.link > 0)
        page->lines.push_back(
            plainLine(contents.link, columns, contents.isConnected ? TextLook::Green : TextLook::Red));
    for (int line = 0; line < layout.stations; ++line) {
        const StationLine& station = contents.stations[static_cast<std::size_t>(line)];
        page->lines.push_back(
            plainLine(station.text, columns, station.good ? TextLook::Plain : TextLook::Yellow));
    }
}

void addRows(const TableContents& contents, const TableLayout& layout, int columns, Page* page)
{
    const Columns widths = columnsFor(contents, columns);
    if (layout.heading > 0)
        page->lines.push_back(headingLine(widths, columns));
    for (const TableRow& row : contents.rows)
        page->lines.push_back(lineOf(row, widths, columns));
}

void addFoot(const TableContents& contents, const TableLayout& layout, int columns, Page* page)
{
    for (int line = 0; line < layout.below; ++line)
        page->lines.push_back(plainLine(contents.below.value(line), columns));
    if (layout.status > 0)
        page->lines.push_back(
            plainLine(contents.status, columns, contents.isError ? TextLook::Red : TextLook::Plain));
    if (layout.hint == 0)
        return;
    if (!contents.hasCursor) {
        page->lines.push_back(plainLine(contents.hint, columns));
        return;
    }
    // Of a long entry the end is seen, where it is typed.
    QString typed = contents.hint;
    while (columnsOf(typed) >= columns && !typed.isEmpty())
        typed.remove(0, 1);
    page->cursorLine = static_cast<int>(page->lines.size());
    page->cursorColumn = columnsOf(typed);
    page->lines.push_back(plainLine(typed, columns));
}

} // namespace

TableLayout tableLayout(int lines, int stations, int below)
{
    TableLayout layout;
    layout.stations = stations;
    layout.below = below;
    const auto rest = [&] {
        return lines - layout.link - layout.stations - layout.heading - layout.below - layout.status -
               layout.hint;
    };
    layout.stations = std::min(stations, std::max(lines / linesForAStationLine, 1));
    layout.below = std::max(0, std::min(below, rest() + layout.below - leastRows));
    layout.stations = std::max(0, std::min(layout.stations, rest() + layout.stations - 1));
    for (int* part : {&layout.status, &layout.link, &layout.heading, &layout.hint}) {
        if (rest() < 1)
            *part = 0;
    }
    layout.rows = std::max(rest(), 1);
    return layout;
}

Page tablePage(const TableContents& contents, const TableLayout& layout, int columns)
{
    Page page;
    addHead(contents, layout, columns, &page);
    if (contents.overlay.isEmpty())
        addRows(contents, layout, columns, &page);
    for (const QString& line : contents.overlay)
        page.lines.push_back(plainLine(line, columns));
    const int room = layout.firstRow() + layout.rows;
    page.lines.resize(static_cast<std::size_t>(room));
    addFoot(contents, layout, columns, &page);
    return page;
}

} // namespace plc
