// SPDX-License-Identifier: MIT
/// \file
/// \brief What a user can ask of a running plcpanel watch.
#ifndef PANEL_WATCH_WATCH_ORDER_H
#define PANEL_WATCH_WATCH_ORDER_H

#include <QString>

namespace plc
{

struct WatchOrder {
    enum Kind { End, SwitchOff, SwitchOn, Nothing, Wrong };
    Kind kind = Nothing;
    int station = -1; ///< to be switched
    QString error;    ///< when wrong: what was typed and what is expected
};

/// Reads "o3" or "-3" (station 3 off), "i3" or "+3" (on), "q" (the end); an empty line is nothing. Spaces and
/// capitals do not matter.
WatchOrder parseWatchOrder(const QString& line);

/// A line as it comes, character by character.
class TypedLine
{
public:
    /// Takes one: a character, backspace, Enter, Ctrl-U (away with the line). Others are ignored.
    /// \return true when the line is over
    bool press(char key);

    /// \return the line that is over; the next one is empty
    QString take();

    const QString& text() const { return m_text; }

private:
    QString m_text;
};

} // namespace plc

#endif
