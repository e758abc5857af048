// SPDX-License-Identifier: MIT
/// \file
/// \brief What the driver tells the runtime. The wiring entry points are in the public header.
#ifndef DRIVER_HOST_INTERFACE_H
#define DRIVER_HOST_INTERFACE_H

#include "driver/modbus_rtu_master.h"

/// Calls listDoneCallback, where there is one, with an empty list and \a hostKey.
void TellListDone(int hostKey) PLC_REQUIRES(PLC_driver.listMutex);

#endif
