// SPDX-License-Identifier: MIT
/// \file
/// \brief The stations that are switched off. EnCommStation() is in the public header.
#ifndef DRIVER_STATION_TABLE_H
#define DRIVER_STATION_TABLE_H

#include "driver/modbus_rtu_master.h"

/// \return 1 when \a station is switched off, 0 otherwise. Takes stationMutex; listMutex may be held.
int Ethernetcontains(int station) PLC_EXCLUDES(PLC_driver.stationMutex);

#endif
