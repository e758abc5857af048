// SPDX-License-Identifier: MIT
/// \file
/// \brief The stations of a link, as they look, for people.
#ifndef PANEL_WATCH_STATION_LINES_H
#define PANEL_WATCH_STATION_LINES_H

#include "runtime/model/station_report.h"

#include <QString>

#include <vector>

namespace plc
{

struct StationLine {
    QString text;
    bool good = true; ///< nothing to worry about
};

/// \return a line for each station: how it looks, when it is tried next, what failed
/// \param most lines at most: when they do not suffice, one line counts the good ones. 0: any number
std::vector<StationLine> stationLines(const std::vector<StationReport>& stations, int most);

/// \return true when both tell the same apart from times and counts
bool sameNews(const StationReport& a, const StationReport& b);

} // namespace plc

#endif
