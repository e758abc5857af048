// SPDX-License-Identifier: MIT
/// \file
/// \brief Standard input while a live display runs: keys of the terminal, or lines of anything else.
#ifndef PANEL_TERMINAL_KEYBOARD_H
#define PANEL_TERMINAL_KEYBOARD_H

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <termios.h>

namespace plc
{

/// A terminal that is taken over gives its keys one by one and does not echo them; signals of the keyboard
/// stay. It is given back on release() and at the end of this object's life, so whoever has one must not be
/// ended by a signal that it does not wait for, see WatchSignals.
class Keyboard
{
public:
    /// \param keys take over the terminal, if standard input is one
    explicit Keyboard(bool keys);
    ~Keyboard();
    Keyboard(const Keyboard&) = delete;
    Keyboard& operator=(const Keyboard&) = delete;

    /// Takes over the terminal, also again after release(); not while the program is in the background.
    void take();

    /// Puts the terminal back as it was, e.g. before the program is suspended.
    void release();

    /// \return true while the terminal is taken over: what is typed is not seen but by the program
    bool hasTerminal() const { return m_taken; }

    /// \return the descriptor to wait for; -1 when nothing may be read now or ever again
    int descriptor() const;

    /// Reads once, which blocks unless descriptor() is readable. \return what came, empty at the end
    QByteArray read();

private:
    const bool m_keys;
    bool m_taken = false;
    bool m_ended = false;
    termios m_before = {};
};

} // namespace plc

#endif
