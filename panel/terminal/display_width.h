// SPDX-License-Identifier: MIT
/// \file
/// \brief How many columns of a terminal a text takes: some characters take two, some none.
#ifndef PANEL_TERMINAL_DISPLAY_WIDTH_H
#define PANEL_TERMINAL_DISPLAY_WIDTH_H

#include <QString>

namespace plc
{

/// \return columns that \a text takes, as the system's character tables have it; what cannot be printed takes none
int columnsOf(const QString& text);

/// \return as many characters of the beginning as fit into \a columns, with the marks that belong to the last one
QString leftColumns(const QString& text, int columns);

/// \return \a text with spaces behind it up to \a columns; a wider one as it is
QString padded(const QString& text, int columns);

} // namespace plc

#endif
