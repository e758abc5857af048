// SPDX-License-Identifier: MIT
/// \file
/// \brief A trend drawn with characters.
#ifndef PANEL_HISTORY_TERMINAL_PLOT_H
#define PANEL_HISTORY_TERMINAL_PLOT_H

#include "history/history_reader.h"

#include <QStringList>

namespace plc
{

struct PlotSize {
    int columns = 80;    ///< of the terminal, 40 or more
    int lines = 10;      ///< of the picture alone, 2 or more
    bool braille = true; ///< eight dots in a character; false: ASCII, one
};

/// \return true where the locale that the user has set writes UTF-8
bool writesUtf8();

/// \return into how many pieces the range is to be cut for a picture of \a size
int plotPieces(const PlotSize& size);

/// \param trend of plotPieces() pieces
/// \return the name and the unit, the picture with its axes, the times. Where there was no fresh value it is empty.
QStringList plotLines(const Series& series, TimeRange range, const std::vector<TrendPiece>& trend,
                      const PlotSize& size);

} // namespace plc

#endif
