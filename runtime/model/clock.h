// SPDX-License-Identifier: MIT
/// \file
/// \brief The clock that durations are measured with; setting the time of day does not touch it.
#ifndef RUNTIME_MODEL_CLOCK_H
#define RUNTIME_MODEL_CLOCK_H

#include <QtGlobal>

#include <chrono>
#include <limits>

namespace plc
{

using Clock = std::chrono::steady_clock;

inline constexpr int microsecondsOfMs = 1000;

/// \return \a time / \a unit. What needs 32 bits, as most times of a request do, is divided in 32: of 64 a 32-bit
///         processor makes a function call.
inline qint64 wholeUnits(qint64 time, quint32 unit)
{
    const bool isShort = static_cast<quint64>(time) <= std::numeric_limits<quint32>::max();
    return isShort ? static_cast<quint32>(time) / unit : time / unit;
}

/// \return whole microseconds
inline qint64 microsecondsIn(std::chrono::nanoseconds time)
{
    return wholeUnits(time.count(), 1000);
}

/// \return milliseconds
inline qint64 msSince(Clock::time_point begin)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();
}

} // namespace plc

#endif
