// SPDX-License-Identifier: MIT
#include "runtime/host/driver_settings.h"

namespace plc
{

namespace
{

// SetRegisterData() queues writes for the controller.
const int queueWrites = 2;

// The driver counts failures up to a final one. Here the count is brought back before it could overflow.
const int mostFailures = 1000000000;

} // namespace

COMINFO driverSettings(const Settings& settings)
{
    COMINFO info = {};
    info.maxBlockCount = settings.maxBlockCount;
    info.defaultStation = settings.station;
    info.retryLimit = settings.retryLimit;
    info.multiStation = settings.multiStation ? 1 : 0;
    // The station group of every request stays 0, that of this block too: so the driver takes replies to
    // remote frames for local ones, files them under its lock and reports one-shot reads.
    info.remoteMode = settings.remoteMode ? 1 : 0;
    info.hostWriteMode = queueWrites;
    return info;
}

void renewTries(COMINFO* info, int retryLimit)
{
    info->retryLimit = info->failCount < mostFailures ? info->failCount + retryLimit : 0;
}

} // namespace plc
