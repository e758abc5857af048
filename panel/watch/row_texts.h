// SPDX-License-Identifier: MIT
/// \file
/// \brief The texts of one row, however they are laid out.
#ifndef PANEL_WATCH_ROW_TEXTS_H
#define PANEL_WATCH_ROW_TEXTS_H

#include "panel/watch/watch_view.h"
#include "runtime/model/value_text.h"

#include <QStringList>

namespace plc
{

/// \return what the variable is shown under
QString rowName(const WatchRow& row);

/// \return the values with their unit, in pieces that each stay on one line of \a width characters (0: any);
///         in parentheses when they are not as the controller answered just now, "-" when there are none
QStringList valuePieces(const WatchRow& row, ValueFormat format, int width);

/// \return other elements of the row's variable, such as the least that it had, with its unit
QString elementsText(const WatchRow& row, const std::vector<quint32>& elements, ValueFormat format);

/// \return the text in \a columns, with dots where it is cut
QString cutText(const QString& text, int columns);

} // namespace plc

#endif
