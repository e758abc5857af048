// SPDX-License-Identifier: MIT
#include "runtime/model/time_source.h"

#include <QThread>

namespace plc
{

namespace
{

class SystemTime : public TimeSource
{
public:
    Clock::time_point now() const override { return Clock::now(); }

    void sleep(int milliseconds) override { QThread::msleep(static_cast<unsigned long>(milliseconds)); }
};

} // namespace

TimeSource& systemTime()
{
    static SystemTime time;
    return time;
}

} // namespace plc
