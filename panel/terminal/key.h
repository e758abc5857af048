// SPDX-License-Identifier: MIT
/// \file
/// \brief What a person presses.
#ifndef PANEL_TERMINAL_KEY_H
#define PANEL_TERMINAL_KEY_H

#include <QString>

namespace plc
{

struct Key {
    enum Kind {
        Character, ///< Key::text
        Enter,
        Escape,
        Backspace,
        EraseLine, ///< Ctrl-U
        Redraw,    ///< Ctrl-L
        Help,      ///< F1
        Up,
        Down,
        PageUp,
        PageDown,
        Home,
        End,
        WheelUp,
        WheelDown,
        Click, ///< on Key::line
        Other  ///< one that nothing is known of
    };

    Kind kind = Other;
    QString text; ///< one character
    int line = -1;
};

} // namespace plc

#endif
