#include "image/extended_variables.h"

#include "driver/modbus_rtu_master.h"

int ExtendFindSameVar(int station, int area, int address)
{
    const QList<EXTENDVAR>& entries = PLC_driver.extendList;
    const int size = entries.size();
    for (int i = 0; i < size; ++i) {
        const EXTENDVAR& entry = entries.at(i);
        // The address first: it tells nearly all entries apart, and one comparison is enough for those.
        if (entry.address == address && entry.area == area && entry.station == station)
            return i;
    }
    EXTENDVAR entry = {station, area, address, QByteArray(4, '\0')};
    PLC_driver.extendList.append(entry);
    return size;
}
