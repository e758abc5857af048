// SPDX-License-Identifier: MIT
/// \file
/// \brief What a pass over the cyclic variables costs, and how often there is one.
#ifndef RUNTIME_CYCLE_PASS_COUNTER_H
#define RUNTIME_CYCLE_PASS_COUNTER_H

#include "runtime/cycle/statistics.h"

#include <QtGlobal>

#include <deque>

namespace plc
{

/// Counts one pass while it runs. Not thread-safe.
class PassCounter
{
public:
    /// A frame of a cyclic request went to the link.
    void frame() { ++m_running.frames; }

    /// A cyclic request of \a area ended. \param unused elements of it that no variable shows
    void request(int area, int elements, int unused);

    /// \param microseconds on a clock that only goes forward
    void endPass(qint64 microseconds);

    /// \return of the last pass that is over; zeros before the first
    const PassCost& last() const { return m_last; }

    /// \param microseconds now, on the clock of endPass()
    /// \return passes a second over the last ten, the pauses between them included; 0 before the second. It
    ///         falls while the next one is late.
    double perSecond(qint64 microseconds) const;

private:
    PassCost m_running;
    PassCost m_last;
    std::deque<qint64> m_ends; // of the last passes
};

} // namespace plc

#endif
