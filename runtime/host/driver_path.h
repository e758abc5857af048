// SPDX-License-Identifier: MIT
/// \file
/// \brief Where the driver library is when nobody says so.
#ifndef RUNTIME_HOST_DRIVER_PATH_H
#define RUNTIME_HOST_DRIVER_PATH_H

#include "runtime/export.h"

#include <QString>

namespace plc
{

/// Looks for libplcdriver.so, in this order:
///  1. in \a programDirectory, one directory up, and where it is installed when that is the programs' folder;
///     not at all when \a programDirectory is empty
///  2. beside libplcruntime.so, by the name with the version that both share, then by the one without;
///     not in a program that was built with the runtime in it
///  3. where the system looks for libraries, LD_LIBRARY_PATH included
/// It never looks in the working directory, where anybody may have put a file of that name.
/// \return its absolute path, for Settings::driverPath
/// \throws std::runtime_error when there is none, saying where it was looked for
PLCRUNTIME_API QString findDriver(const QString& programDirectory = QString());

} // namespace plc

#endif
