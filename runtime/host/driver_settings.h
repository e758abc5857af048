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

} // namespace plc

#endif
