// SPDX-License-Identifier: MIT
/// \file
/// \brief The outcome of something that the communication thread finishes later.
#ifndef RUNTIME_MODEL_PENDING_H
#define RUNTIME_MODEL_PENDING_H

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>

namespace plc
{

/// A handle to an outcome that comes exactly once. Copies share it. Any thread.
template <class Outcome>
class Pending
{
public:
    /// \return true when the outcome is there after at most \a milliseconds
    bool wait(int milliseconds) const
    {
        std::unique_lock<std::mutex> lock(m_state->mutex);
        return m_state->changed.wait_for(lock, std::chrono::milliseconds(milliseconds),
                                         [this] { return m_state->outcome.has_value(); });
    }

    bool done() const { return wait(0); }

    /// Waits as long as it takes. Every outcome comes: at the latest when the runtime is stopped.
    Outcome get() const
    {
        std::unique_lock<std::mutex> lock(m_state->mutex);
        m_state->changed.wait(lock, [this] { return m_state->outcome.has_value(); });
        return *m_state->outcome;
    }

    /// For the runtime: sets the outcome. \return false, and nothing changes, when it was set before.
    bool finish(const Outcome& outcome) const
    {
        std::lock_guard<std::mutex> lock(m_state->mutex);
        if (m_state->outcome.has_value())
            return false;
        m_state->outcome = outcome;
        m_state->changed.notify_all();
        return true;
    }

private:
    struct State {
        std::mutex mutex;
        std::condition_variable changed;
        std::optional<Outcome> outcome;
    };
    std::shared_ptr<State> m_state = std::make_shared<State>();
};

} // namespace plc

#endif
