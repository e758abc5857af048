// SPDX-License-Identifier: MIT
#include "runtime/host/empty_driver.h"

namespace plc
{

namespace
{

// A failure is final at once: it brings the count of failures above this.
const int noRetries = -1;

// More than the driver's two queues hold, and the polls that bring nothing among them.
const int mostPolls = 4 * PLC_LIST_LIMIT;

bool isQueueEmpty(const DriverCalls& calls)
{
    RW_VAR nothing = {}; // queues nothing, and gives the size
    return calls.AddListWriteVar(nullptr, 0) == 0 && calls.AddListOnceReadVar(&nothing, 0) == 0;
}

/// \return true when a frame was in flight, which has failed now
bool failFrame(const DriverCalls& calls)
{
    if (calls.ComCommunication() == nullptr)
        return false;
    QByteArray noReply;
    calls.DataCom(&noReply, 0);
    return true;
}

} // namespace

void emptyDriver(const DriverCalls& calls, COMINFO* info)
{
    const int retryLimit = info->retryLimit;
    info->retryLimit = noRetries;
    QList<HOST_VAR> noVariables;
    calls.ReCreatReadVarList(&noVariables);
    calls.EnCommStation(-1, 1);
    // Sometimes the driver hands out nothing although something is queued.
    for (int polls = 0; polls < mostPolls; ++polls) {
        if (!failFrame(calls) && isQueueEmpty(calls))
            break;
    }
    info->retryLimit = retryLimit;
    info->failCount = 0;
}

} // namespace plc
