// SPDX-License-Identifier: MIT
/// \file
/// \brief What the runtime counts: every figure that plcpanel watch --stats shows.
#ifndef RUNTIME_CYCLE_STATISTICS_H
#define RUNTIME_CYCLE_STATISTICS_H

#include "runtime/cycle/round_trips.h"

#include <map>

namespace plc
{

/// What one pass sent and asked for.
struct PassCost {
    int requests = 0;         ///< block reads that ended, answered or given up
    int frames = 0;           ///< sent for them: more than requests when some were tried again
    long registers = 0;       ///< that the requests read, a double word being two
    long registersUnused = 0; ///< of these, in gaps between variables
    long bits = 0;            ///< that the requests read
    long bitsUnused = 0;      ///< of these, in gaps between variables
};

/// What the exchanges with one station came to, of writes and one-shot reads too.
struct StationStatistics {
    RoundTrips roundTrips;              ///< of every reply that came, refusals included
    long retried = 0;                   ///< failures that were retried
    std::map<int, long> failuresByCode; ///< requests given up, by the driver's result code
};

struct Statistics {
    long exchanges = 0;                        ///< frames handed to the link
    long good = 0;                             ///< replies that the driver took
    long retried = 0;                          ///< failures that were retried
    long failed = 0;                           ///< requests given up
    std::map<int, long> failuresByCode;        ///< the same by the driver's result code
    std::map<int, StationStatistics> stations; ///< of each that a frame was due for
    long passes = 0;                           ///< passes over the cyclic variables
    double passesPerSecond = 0; ///< over the last ten passes, the pauses between them included;
                                ///< 0 while there is no connection
    PassCost lastPass;          ///< of the last pass that is over
    long writesConfirmed = 0;   ///< whole writes, as write() took them
    long writesFailed = 0;
    long readsDone = 0; ///< whole one-shot reads
    long readsFailed = 0;
    long readsQueuedAgain = 0; ///< requests of one-shot reads that fell to the failure of another request
    int writesWaiting = 0;     ///< requests of writes that have not ended
};

} // namespace plc

#endif
