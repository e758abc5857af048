/// \file
/// \brief The clock that durations are measured with; setting the time of day does not touch it.
#ifndef PANEL_CLOCK_H
#define PANEL_CLOCK_H

#include <QtGlobal>

#include <chrono>

namespace panel
{

using Clock = std::chrono::steady_clock;

/// \return milliseconds
inline qint64 msSince(Clock::time_point begin)
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();
}

} // namespace panel

#endif
