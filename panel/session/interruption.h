// SPDX-License-Identifier: MIT
/// \file
/// \brief Signals that end a command while its thread waits for something else.
#ifndef PANEL_SESSION_INTERRUPTION_H
#define PANEL_SESSION_INTERRUPTION_H

#include <atomic>
#include <functional>
#include <thread>

namespace plc
{

/// As long as it lives, a thread of its own takes the signals, which are to be blocked before
/// (WatchSignals::block()), so that nobody else may wait for them.
class Interruption
{
public:
    /// \param end called once, on that thread, when a signal came that ends a program
    explicit Interruption(std::function<void()> end);
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    /// \return true when such a signal came
    bool came() const { return m_came; }

private:
    void watch(const std::function<void()>& end);

    std::atomic<bool> m_isOver{false};
    std::atomic<bool> m_came{false};
    std::thread m_thread;
};

} // namespace plc

#endif
