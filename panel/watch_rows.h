/// \file
/// \brief The rows of a table, one for each variable that is named.
#ifndef PANEL_WATCH_ROWS_H
#define PANEL_WATCH_ROWS_H

#include "panel/command_line.h"
#include "panel/watch_table.h"

#include <vector>

namespace panel
{

/// \return rows without values: what is typed stands above what is listed
std::vector<WatchRow> emptyRows(const Options& options);

} // namespace panel

#endif
