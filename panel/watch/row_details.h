// SPDX-License-Identifier: MIT
/// \file
/// \brief All that is known of one row, for people.
#ifndef PANEL_WATCH_ROW_DETAILS_H
#define PANEL_WATCH_ROW_DETAILS_H

#include "panel/watch/seen_values.h"
#include "panel/watch/watch_view.h"
#include "runtime/model/value_text.h"

#include <QStringList>

namespace plc
{

/// \return the time of day, "-" for a negative one
QString timeOfDay(qint64 ms);

/// \param written how the last write to it ended; empty: there was none
/// \param columns of a line at most, as far as single words fit
QStringList rowDetails(const WatchRow& row, const SeenValue& seen, const QString& written, ValueFormat format,
                       int columns);

} // namespace plc

#endif
