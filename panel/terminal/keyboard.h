// SPDX-License-Identifier: MIT
/// \file
/// \brief Standard input while a live display runs, as it comes: lines of a terminal, or of anything else.
#ifndef PANEL_TERMINAL_KEYBOARD_H
#define PANEL_TERMINAL_KEYBOARD_H

#include <QByteArray>

namespace plc
{

class Keyboard
{
public:
    /// \return the descriptor to wait for; -1 when nothing may be read now or ever again
    int descriptor() const;

    /// Reads once, which blocks unless descriptor() is readable. \return what came, empty at the end
    QByteArray read();

private:
    bool m_ended = false;
};

} // namespace plc

#endif
