// SPDX-License-Identifier: MIT
/// \file
/// \brief A runtime for the time of one command.
#ifndef PANEL_SESSION_SESSION_H
#define PANEL_SESSION_SESSION_H

#include "panel/session/listeners.h"
#include "runtime/cycle/runtime.h"

#include <atomic>
#include <memory>

namespace plc
{

/// Starts and stops a runtime, and lets a command wait until its observer has caught up: the runtime ends a
/// write or read before it reports the last exchange of it.
class Session
{
public:
    Session(const Settings& settings, const Listeners& listeners);
    ~Session(); ///< stops
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    Runtime& runtime() { return m_runtime; }

    /// Waits until the observer has returned from every exchange that is over, for a second at most.
    void settle();

    /// Takes the signals that came since the last call, which WatchSignals::block() keeps for this. One that ends a
    /// program stops the runtime, so that whatever waits fails.
    void heedSignals();

    /// \return true when such a signal came
    bool isEnded() const { return m_ended; }

    /// \return frames that went out
    long framesSent() const;

    /// \return true when there is no connection and never was one
    bool neverConnected() const;

private:
    class Counter;

    std::atomic<long> m_observed{0};
    bool m_ended = false;
    const std::shared_ptr<Counter> m_counter;
    Runtime m_runtime;
};

/// Says on standard error what to check when the controller was never reached.
void complainOfNoConnection(const Settings& settings);

} // namespace plc

#endif
