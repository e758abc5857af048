// SPDX-License-Identifier: MIT
/// \file
/// \brief A driver without anything left in it from an earlier use.
#ifndef RUNTIME_HOST_EMPTY_DRIVER_H
#define RUNTIME_HOST_EMPTY_DRIVER_H

#include "runtime/host/driver_library.h"

namespace plc
{

/// Ends the frame in flight, throws away the cyclic list and what is queued, and switches every station on. No frame
/// goes out. What stays are the values in the driver's memory: nobody may show one that was not read since.
/// Nobody else may call the driver meanwhile, and its callbacks should be null.
/// \param info the settings block that is registered with the driver; it is as before in the end
void emptyDriver(const DriverCalls& calls, COMINFO* info);

} // namespace plc

#endif
