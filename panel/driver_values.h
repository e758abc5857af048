/// \file
/// \brief Values out of the driver's own memory.
#ifndef PANEL_DRIVER_VALUES_H
#define PANEL_DRIVER_VALUES_H

#include "panel/driver_library.h"
#include "panel/variable.h"

#include <vector>

namespace panel
{

/// \param variable station filled in
/// \return what the driver holds for it, one value per element; no frame is sent
std::vector<quint32> valuesInDriver(const DriverCalls& calls, const Variable& variable);

} // namespace panel

#endif
