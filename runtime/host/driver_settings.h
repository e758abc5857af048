// SPDX-License-Identifier: MIT
/// \file
/// \brief The settings block that the panel registers with the driver.
#ifndef RUNTIME_HOST_DRIVER_SETTINGS_H
#define RUNTIME_HOST_DRIVER_SETTINGS_H

#include "driver/plcdriver.h"
#include "runtime/model/settings.h"

namespace plc
{

/// \return \a settings as the driver takes them
COMINFO driverSettings(const Settings& settings);

/// The next request has \a retryLimit retries, whatever those before it needed: the driver's count of failures goes
/// on over a success. On the thread that calls ComCommunication() and DataCom(), while no request is in flight.
void renewTries(COMINFO* info, int retryLimit);

} // namespace plc

#endif
