// SPDX-License-Identifier: MIT
/// \file
/// \brief A clock that goes on only when somebody waits, or leaps.
#ifndef TESTS_SUPPORT_VIRTUAL_TIME_H
#define TESTS_SUPPORT_VIRTUAL_TIME_H

#include "runtime/model/time_source.h"

class VirtualTime : public plc::TimeSource
{
public:
    plc::Clock::time_point now() const override { return m_now; }
    void sleep(int milliseconds) override { m_now += std::chrono::milliseconds(milliseconds); }

    /// Time that passes at once: the machine was suspended. Negative: the clock is set back.
    void leap(qint64 milliseconds) { m_now += std::chrono::milliseconds(milliseconds); }

    /// To that long after the clock's own beginning.
    void leapTo(qint64 milliseconds)
    {
        m_now = plc::Clock::time_point(std::chrono::milliseconds(milliseconds));
    }

    /// \return since the beginning
    qint64 elapsedMs() const { return msSince(beginning()); }

private:
    static plc::Clock::time_point beginning() { return plc::Clock::time_point(std::chrono::hours(1)); }

    plc::Clock::time_point m_now = beginning();
};

#endif
