// SPDX-License-Identifier: MIT
/// \file
/// \brief What a refresh of all watched variables costs, for people.
#ifndef PANEL_WATCH_WATCH_STATISTICS_H
#define PANEL_WATCH_WATCH_STATISTICS_H

#include "runtime/cycle/runtime.h"

#include <QStringList>

namespace plc
{

/// \param columns characters of a line at most, as far as single words fit; 0: any number
/// \return refreshes and what the last one took, what was read for no variable, retries and
///         failures, how long replies took; the last two of each station as well, where there are several
QStringList statisticsLines(const Statistics& statistics, int columns);

} // namespace plc

#endif
