// SPDX-License-Identifier: MIT
/// \file
/// \brief What plcpanel watch prints for programs: lines of JSON.
#ifndef PANEL_WATCH_WATCH_JSON_H
#define PANEL_WATCH_WATCH_JSON_H

#include "panel/watch/watch_view.h"
#include "runtime/cycle/runtime.h"

#include <QDateTime>

namespace plc
{

/// \param station of variables that name none
/// \return what is known of one variable. One of a list has its "name" and "type", its "unit", "min" and
///         "max" where the list has them, its value as the table shows it ("text") and as JSON has it
///         ("value"), and "outside" where there are limits; "values" are always the elements, as numbers
QString watchJson(const WatchRow& row, int station, const QDateTime& time);

/// \return one object, "statistics", with what statisticsLines() tells
QString statisticsJson(const Statistics& statistics, const QDateTime& time);

} // namespace plc

#endif
