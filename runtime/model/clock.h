// SPDX-License-Identifier: MIT
/// \file
/// \brief The clock that durations are measured with; setting the time of day does not touch it.
#ifndef RUNTIME_MODEL_CLOCK_H
#define RUNTIME_MODEL_CLOCK_H

#include <QtGlobal>

#include <chrono>

namespace plc
{

using Clock = std::chrono::steady_clock;

inline constexpr int microsecondsOfMs = 1000;

/// \return milliseconds
inline qint64 msSince(Clock::time_point begin)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();
}

} // namespace plc

#endif
