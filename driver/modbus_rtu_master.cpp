// SPDX-License-Identifier: MIT
#include "driver/modbus_rtu_master.h"

#include <cstring>

Modbus_RTU_Master PLC_driver;

Modbus_RTU_Master::Modbus_RTU_Master()
    : comInfo(nullptr), onceReadDoneCallback(nullptr), listDoneCallback(nullptr),
      listMutex(QMutex::NonRecursive), imageMutex(QMutex::NonRecursive), stationMutex(QMutex::NonRecursive),
      retVar(), requestKind(NO_REQUEST_YET), writeRun(0), onceReadRun(0), readReplyCount(0), lastFailed(0),
      spareFlag(0), pendingBit(), communicationTurn(0)
{
    readList.clear();
    writeList.clear();
    onceReadList.clear();
    protocolList.clear();
    extendList.clear();
    spareList.clear();
    std::memset(&image, 0, sizeof image);
}
