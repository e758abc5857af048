// SPDX-License-Identifier: MIT
/// \file
/// \brief What a whole screen shows, before it is drawn.
#ifndef PANEL_TERMINAL_PAGE_H
#define PANEL_TERMINAL_PAGE_H

#include <QString>

#include <vector>

namespace plc
{

struct TextLook {
    enum Colour { Plain, Red, Green, Yellow };
    Colour colour = Plain; ///< never the only sign of anything: there may be none
    bool bold = false;
    bool reverse = false;
};

/// Text from a column on.
struct Span {
    int column = 0;
    QString text;
    TextLook look;
};

using PageLine = std::vector<Span>;

struct Page {
    std::vector<PageLine> lines;
    int cursorLine = -1; ///< -1: no cursor is seen
    int cursorColumn = 0;
};

} // namespace plc

#endif
