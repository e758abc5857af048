// SPDX-License-Identifier: MIT
/// \file
/// \brief What a scan found, line by line, for people and for programs.
#ifndef PANEL_SCAN_SCAN_REPORT_H
#define PANEL_SCAN_SCAN_REPORT_H

#include "panel/scan/element_scan.h"
#include "panel/scan/station_scan.h"

#include <QString>

#include <vector>

namespace plc
{

// Texts of several lines end each with a line feed, a single line ends without.

/// \param stations ascending
/// \return "1-3, 7, 9-12"
QString stationsText(const std::vector<int>& stations);

/// \return the line above those of stationLine()
QString stationHeading();

/// \return what a station answered that is there
QString stationLine(const StationAnswer& answer);

/// \return the stations that are not known to be there, together where the same became of them, and a summary
QString stationsEnd(const std::vector<StationAnswer>& answers, double seconds);

/// \return the line above those of runLine()
QString rangeHeading(const Variable& range);

/// \param run of \a range, in whose columns it stands
QString runLine(const Variable& range, const ScannedRun& run);

/// \return a summary
QString rangeEnd(const Variable& range, const ElementCounts& counts, double seconds);

/// The same as objects of JSON.
QString stationJson(const StationAnswer& answer);
QString stationsEndJson(const std::vector<StationAnswer>& answers, double seconds);
QString runJson(const ScannedRun& run);
QString rangeEndJson(const Variable& range, const ElementCounts& counts, double seconds);

} // namespace plc

#endif
