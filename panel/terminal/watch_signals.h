// SPDX-License-Identifier: MIT
/// \file
/// \brief What a live display answers to: signals, taken one by one instead of by handlers, and input.
#ifndef PANEL_TERMINAL_WATCH_SIGNALS_H
#define PANEL_TERMINAL_WATCH_SIGNALS_H

namespace plc
{

class WatchSignals
{
public:
    enum Kind {
        None,      ///< the time is over
        End,       ///< SIGINT, SIGTERM, SIGHUP or SIGQUIT
        Resized,   ///< SIGWINCH
        Suspended, ///< SIGTSTP: whoever gets it has to call suspend()
        Continued, ///< SIGCONT
        Input      ///< the descriptor can be read, or is at its end
    };

    /// Keeps the signals for wait(). To be called before any thread is started, because threads inherit it.
    static void block();

    /// \param input a descriptor to wait for as well; -1 for none
    /// \return what came, at the latest after \a milliseconds; signals before input
    static Kind wait(int milliseconds, int input = -1);

    /// Stops the program, as SIGTSTP does by itself, until it is continued; that SIGCONT does not come to
    /// wait().
    static void suspend();
};

} // namespace plc

#endif
