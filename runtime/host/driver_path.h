/// \file
/// \brief Where the driver library is when nobody says so.
#ifndef RUNTIME_HOST_DRIVER_PATH_H
#define RUNTIME_HOST_DRIVER_PATH_H

#include "runtime/export.h"

#include <QString>

namespace plc
{

/// Looks for libplcdriver.so in \a programDirectory and one directory up, for the library installed with the
/// program, and where the system looks for libraries.
/// \return its absolute path
/// \throws std::runtime_error when there is none, saying where it was looked for and what to do
PLCRUNTIME_API QString findDriver(const QString& programDirectory);

} // namespace plc

#endif
