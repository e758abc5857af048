// SPDX-License-Identifier: MIT
/// \file
/// \brief The values of multi-station mode, one entry per station and element.
#ifndef IMAGE_EXTENDED_VARIABLES_H
#define IMAGE_EXTENDED_VARIABLES_H

#include "driver/modbus_rtu_master.h"

/// Finds the entry of a key in PLC_driver.extendList, or appends one with four zero bytes. The walk is linear
/// on purpose and costs no allocation. Takes no lock: callers hold imageMutex (replies of remote requests
/// are filed without it).
/// \return index into extendList, valid until the lock is released
int ExtendFindSameVar(int station, int area, int address) PLC_REQUIRES(PLC_driver.imageMutex);

#endif
