// SPDX-License-Identifier: MIT
#include "driver/host_interface.h"

void* LB = nullptr;
void* LW = nullptr;
void* RWI = nullptr;

void SetComInfo(COMINFO* info)
{
    if (info) {
        info->host52 = 0;
        info->host40 = 0;
    }
    PLC_driver.comInfo = info;
}

void RegistCallBackFuncIntf(OnceReadDoneCallback onceReadDone, ListDoneCallback listDone)
{
    PLC_driver.onceReadDoneCallback = onceReadDone;
    PLC_driver.listDoneCallback = listDone;
}

void FlashLocalRegister(void* first, void* second, void* third)
{
    LB = first;
    LW = second;
    RWI = third;
}

int QueryFinishFlag()
{
    return 1;
}

void TellListDone(int hostKey)
{
    if (!PLC_driver.listDoneCallback)
        return;
    QList<RW_VAR> empty;
    PLC_driver.listDoneCallback(&empty, hostKey, 1);
}
