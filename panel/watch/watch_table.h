// SPDX-License-Identifier: MIT
/// \file
/// \brief The watched values as a table for people.
#ifndef PANEL_WATCH_WATCH_TABLE_H
#define PANEL_WATCH_WATCH_TABLE_H

#include "panel/watch/watch_view.h"
#include "runtime/model/value_text.h"

#include <QStringList>

namespace plc
{

/// Where it is shown.
struct TableStyle {
    int columns = 0; ///< characters of a line at most; 0: any number
    int lines = 0;   ///< lines at most; 0: any number
    bool colours = false;
    ValueFormat format = ValueFormat::Decimal;
};

/// \return the table's lines: the link, a line for each of several stations, a heading (VARIABLE, VALUE, AGE,
///         STATE), and a row per variable, more when its values need them. Values that are not as the controller
///         answered just now stand in parentheses. In a limited width a long name is cut. Rows that do not fit
///         are counted in the last line.
QStringList watchTable(const WatchView& view, const TableStyle& style);

} // namespace plc

#endif
