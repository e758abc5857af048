/// \file
/// \brief The settings block that the panel registers with the driver.
#ifndef PANEL_DRIVER_SETTINGS_H
#define PANEL_DRIVER_SETTINGS_H

#include "driver/plcdriver.h"
#include "panel/settings.h"

namespace panel
{

/// \return \a settings as the driver takes them
COMINFO driverSettings(const Settings& settings);

} // namespace panel

#endif
