// SPDX-License-Identifier: MIT
/// \file
/// \brief The terminal as a whole screen, of which only what changes is drawn.
#ifndef PANEL_TERMINAL_SCREEN_H
#define PANEL_TERMINAL_SCREEN_H

#include "panel/terminal/key.h"
#include "panel/terminal/page.h"

#include <memory>
#include <vector>

namespace plc
{

/// One at a time. It has the terminal to itself: keys are not echoed, nothing that was there before is lost
/// where the terminal has a second screen. The terminal is put back as it was at the end of this object's life,
/// by leave(), and when an exception ends the program. Signals have to be blocked before, see WatchSignals.
/// Messages for standard error wait until then, where they would go through the screen.
class Screen
{
public:
    /// \return true when standard output is a terminal, one that is known and can place text
    static bool isPossible();

    /// Takes the terminal over; in the background this stops the program until it comes to the front.
    /// \return null where that is not possible
    static std::unique_ptr<Screen> open();

    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    /// \return columns and lines as they are now
    int columns() const;
    int lines() const;

    /// Draws what differs from what is there.
    void show(const Page& page);

    /// The terminal has another size.
    void resized();

    /// Draws all anew with the next page, whatever others wrote to the terminal.
    void redraw();

    /// Gives the terminal back, e.g. before the program is suspended; show() takes it again.
    void leave();

    /// \return what was pressed since the last call, without waiting. Standard input must be a terminal.
    std::vector<Key> keys();

private:
    Screen();
};

} // namespace plc

#endif
