// SPDX-License-Identifier: MIT
/// \file
/// \brief How the table of a terminal is laid out on its screen.
#ifndef PANEL_WATCH_TABLE_PAGE_H
#define PANEL_WATCH_TABLE_PAGE_H

#include "panel/terminal/page.h"
#include "panel/watch/station_lines.h"

#include <QStringList>

#include <vector>

namespace plc
{

/// Lines about stations take so much of a window at most.
inline constexpr int linesForAStationLine = 3;

/// One row in sight, in words.
struct TableRow {
    QString name;
    QString value;
    QString least;
    QString greatest;
    QString age;
    QString changed;
    QString state;
    bool isSelected = false;
    bool isJustChanged = false;
    bool isOutside = false;
    TextLook::Colour colour = TextLook::Plain;
};

/// Columns of the widest texts; what does not fit is cut.
struct TableWidths {
    int name = 8;
    int value = 5;
};

struct TableContents {
    QString link;
    bool isConnected = false;
    std::vector<StationLine> stations;
    QStringList overlay; ///< in place of the rows; empty: the rows
    std::vector<TableRow> rows;
    TableWidths widths;
    bool showsRange = false;  ///< minimum and maximum
    bool showsChange = false; ///< when it changed, also where there is little room
    QStringList below;        ///< the rows
    QString status;
    bool isError = false; ///< what the status says
    QString hint;         ///< or what is typed behind it
    bool hasCursor = false;
};

/// Lines of a screen for each part; the rows have at least one.
struct TableLayout {
    int link = 1;
    int stations = 0;
    int heading = 1;
    int rows = 1;
    int below = 0;
    int status = 1;
    int hint = 1;

    int firstRow() const { return link + stations + heading; }
};

/// In a low window stations, what stands below, the status, the link and the heading give way, in this order.
TableLayout tableLayout(int lines, int stations, int below);

/// \return the lines of a screen of \a columns
Page tablePage(const TableContents& contents, const TableLayout& layout, int columns);

} // namespace plc

#endif
