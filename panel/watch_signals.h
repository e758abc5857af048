/// \file
/// \brief The signals that a live display answers to, taken one by one instead of by handlers.
#ifndef PANEL_WATCH_SIGNALS_H
#define PANEL_WATCH_SIGNALS_H

namespace panel
{

class WatchSignals
{
public:
    enum Kind {
        None,     ///< the time is over
        End,      ///< SIGINT, SIGTERM or SIGHUP
        Resized,  ///< SIGWINCH
        Continued ///< SIGCONT
    };

    /// Keeps the signals for wait(). To be called before any thread is started, because threads inherit it.
    static void block();

    /// \return the signal that came, at the latest after \a milliseconds
    static Kind wait(int milliseconds);
};

} // namespace panel

#endif
