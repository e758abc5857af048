// SPDX-License-Identifier: MIT
/// \file
/// \brief Values out of the driver's own memory.
#ifndef RUNTIME_HOST_DRIVER_VALUES_H
#define RUNTIME_HOST_DRIVER_VALUES_H

#include "runtime/host/driver_library.h"
#include "runtime/model/variable.h"

#include <vector>

namespace plc
{

/// \param variable station filled in
/// \return what the driver holds for it, one value per element; no frame is sent
std::vector<quint32> valuesInDriver(const DriverCalls& calls, const Variable& variable);

} // namespace plc

#endif
