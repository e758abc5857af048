// SPDX-License-Identifier: MIT
/// \file
/// \brief Logged samples and series as lines for people and for programs.
#ifndef PANEL_HISTORY_SAMPLE_LINES_H
#define PANEL_HISTORY_SAMPLE_LINES_H

#include "history/history_reader.h"

#include <QString>

namespace plc
{

/// \param nameColumns that the name takes at least
/// \return time, name and value with its unit, or the state in parentheses
QString sampleLine(const Series& series, qint64 timeMs, SampleState state, const QString& text,
                   int nameColumns);

/// \return an object with "time", "name", "type", "unit" where there is one, "state" and, of a fresh one, its "value" as
///         JSON has it and as a person reads it ("text")
QString sampleJson(const Series& series, qint64 timeMs, SampleState state, const QString& text);

/// \return name, unit, type, and from when to when there are samples
QString seriesLine(const LoggedSeries& series, int nameColumns);

/// \return the same as an object: "name", "unit", "type", "first", "last"
QString seriesJson(const LoggedSeries& series);

/// \return from when to when a picture goes, as a line
QString rangeLine(TimeRange range);

} // namespace plc

#endif
