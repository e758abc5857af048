// SPDX-License-Identifier: MIT
#include "runtime/model/time_source.h"

#include <QThread>

#include <ctime>

namespace plc
{

namespace
{

class SystemTime : public TimeSource
{
public:
    Clock::time_point now() const override
    {
        timespec time = {};
        clock_gettime(CLOCK_MONOTONIC, &time); // as Clock, whose way there with 32 bits is twice as long
        return Clock::time_point(std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec));
    }

    void sleep(int milliseconds) override { QThread::msleep(static_cast<unsigned long>(milliseconds)); }
};

} // namespace

TimeSource& systemTime()
{
    static SystemTime time;
    return time;
}

} // namespace plc
