// SPDX-License-Identifier: MIT
/// \file
/// \brief What the keys of the table do, for people.
#ifndef PANEL_WATCH_TABLE_HELP_H
#define PANEL_WATCH_TABLE_HELP_H

#include <QStringList>

namespace plc
{

/// \return a line or more for each key, and what the marks mean
QStringList tableHelp(int columns);

/// \return the keys that matter most, as far as they fit into one line
QString tableHint(int columns, bool hasStations);

} // namespace plc

#endif
