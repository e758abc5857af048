// SPDX-License-Identifier: MIT
/// \file
/// \brief How a request leaves one of the driver's two queues.
#ifndef RUNTIME_CYCLE_REQUEST_END_H
#define RUNTIME_CYCLE_REQUEST_END_H

#include "runtime/model/failure.h"

namespace plc
{

enum class RequestEnd {
    Done,      ///< answered by the controller
    Failed,    ///< given up after its own last retry
    Purged,    ///< thrown away with another request that was given up
    Discarded, ///< its turn came while its station was switched off
    Replaced,  ///< a newer write to the same elements took its place
    OutOfStep  ///< the driver's list is not what it must be; nothing is known about the request
};

/// \param given of the request that was given up, where the end comes from that
/// \return what a request that ended so failed of
Failure failureOf(RequestEnd end, const Failure& given);

/// \return what a request to \a station fails of while that is switched off
Failure stationOff(int station);

} // namespace plc

#endif
