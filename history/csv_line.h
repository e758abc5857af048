// SPDX-License-Identifier: MIT
/// \file
/// \brief A sample as a line of CSV.
#ifndef HISTORY_CSV_LINE_H
#define HISTORY_CSV_LINE_H

#include "history/sample.h"

#include <QByteArray>

namespace plc
{

/// The line that names the columns.
inline constexpr char csvHeader[] = "time,name,value,unit,state\n";

/// \return one line in UTF-8, with its end; times as localTimeText(), and no value but of a fresh sample
QByteArray csvLine(const Series& series, qint64 timeMs, SampleState state, const QString& text);

} // namespace plc

#endif
