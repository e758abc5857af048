// SPDX-License-Identifier: MIT
#include "image/extended_variables.h"

int ExtendFindSameVar(int station, int area, int address)
{
    const int size = PLC_driver.extendList.size();
    for (int i = 0; i < size; ++i) {
        const EXTENDVAR& entry = PLC_driver.extendList.at(i);
        // The address first: it tells nearly all entries apart, and one comparison is enough for those.
        if (entry.address == address && entry.area == area && entry.station == station)
            return i;
    }
    EXTENDVAR entry = {station, area, address, QByteArray(4, '\0')};
    PLC_driver.extendList.append(entry);
    return size;
}
