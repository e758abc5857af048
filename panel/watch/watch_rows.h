// SPDX-License-Identifier: MIT
/// \file
/// \brief The rows of a table, one for each variable that is named.
#ifndef PANEL_WATCH_WATCH_ROWS_H
#define PANEL_WATCH_WATCH_ROWS_H

#include "panel/watch/watch_view.h"

#include <vector>

namespace plc
{

/// \return rows without values: what is typed stands above what is listed, which must outlive them
std::vector<WatchRow> emptyRows(const std::vector<Variable>& typed,
                                const std::vector<ListedVariable>& listed);

} // namespace plc

#endif
