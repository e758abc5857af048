// SPDX-License-Identifier: MIT
/// \file
/// \brief Where code that waits gets its time from: the system, or a test that has no time to lose.
#ifndef RUNTIME_MODEL_TIME_SOURCE_H
#define RUNTIME_MODEL_TIME_SOURCE_H

#include "runtime/model/clock.h"

namespace plc
{

class TimeSource
{
public:
    virtual ~TimeSource() = default;

    virtual Clock::time_point now() const = 0;

    /// \param milliseconds from 1 on
    virtual void sleep(int milliseconds) = 0;

    qint64 msSince(Clock::time_point begin) const
    {
        return std::chrono::duration_cast<std::chrono::milliseconds>(now() - begin).count();
    }
};

/// \return the system's own, for any number of threads
TimeSource& systemTime();

} // namespace plc

#endif
