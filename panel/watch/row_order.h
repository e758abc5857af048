// SPDX-License-Identifier: MIT
/// \file
/// \brief In which order the rows of a table stand.
#ifndef PANEL_WATCH_ROW_ORDER_H
#define PANEL_WATCH_ROW_ORDER_H

#include "panel/watch/seen_values.h"

#include <QStringList>

#include <vector>

namespace plc
{

enum class RowOrder { List, Name, Trouble, Change };

/// \return the one that comes behind it, the first behind the last
RowOrder nextOrder(RowOrder order);

/// \return "list order", "by name", ...
QString orderText(RowOrder order);

/// What changed so lately is marked, and stands above the rest in the order of changes as the list has it:
/// values that change all the time would go round and round.
inline constexpr qint64 justChangedMs = 2000;

/// \return true when something changed a moment ago
bool isJustChanged(qint64 changedAtMs, qint64 nowMs);

/// \return true when a stands before b: letters of any case, and numbers inside by their value
bool isNameBefore(const QString& a, const QString& b);

/// \return the rows in \a order, equal ones as the list has them
std::vector<int> rowsByName(const QStringList& names);
std::vector<int> rowsByState(RowOrder order, const std::vector<SeenState>& states, qint64 nowMs);

} // namespace plc

#endif
