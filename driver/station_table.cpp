// SPDX-License-Identifier: MIT
#include "driver/station_table.h"

namespace
{

enum { SWITCH_OFF = 0, SWITCH_ON = 1 };

} // namespace

void EnCommStation(int station, int flag)
try {
    MutexHolder lock(PLC_driver.stationMutex);
    if (station < 0)
        PLC_driver.stationMap.clear();
    else if (flag == SWITCH_OFF)
        PLC_driver.stationMap.insert(station, 0);
    else if (flag == SWITCH_ON)
        PLC_driver.stationMap.remove(station);
} catch (...) {
}

int Ethernetcontains(int station)
{
    MutexHolder lock(PLC_driver.stationMutex);
    return PLC_driver.stationMap.contains(station) ? 1 : 0;
}
