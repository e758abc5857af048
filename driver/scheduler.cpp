// SPDX-License-Identifier: MIT
#include "driver/communication_turn.h"
#include "driver/modbus_rtu_master.h"
#include "driver/station_table.h"
#include "frames/read_request.h"
#include "frames/remote_frame.h"
#include "frames/write_request.h"

namespace
{

bool HeadIsSwitchedOff(const QList<RW_VAR>& list) PLC_REQUIRES(PLC_driver.listMutex)
{
    return Ethernetcontains(list.at(0).station) == 1;
}

// Writes and one-shot reads of a switched-off station are discarded, not deferred.
void DiscardSwitchedOff(QList<RW_VAR>& list) PLC_REQUIRES(PLC_driver.listMutex)
{
    while (!list.isEmpty() && HeadIsSwitchedOff(list))
        list.removeFirst();
}

void BuildRead(RW_VAR* request) PLC_REQUIRES(PLC_driver.listMutex, PLC_driver.communicationTurn)
{
    if (PLC_driver.comInfo->remoteMode != 0)
        Remote_ReadVar(request);
    else
        ReadRegister(request);
}

void BuildWrite(RW_VAR* request) PLC_REQUIRES(PLC_driver.listMutex, PLC_driver.communicationTurn)
{
    if (PLC_driver.comInfo->remoteMode != 0)
        Remote_WriteVar(request);
    else
        WriteRegister(request);
}

void TakeWriteTurn() PLC_REQUIRES(PLC_driver.listMutex, PLC_driver.communicationTurn)
{
    PLC_driver.requestKind = WRITE;
    DiscardSwitchedOff(PLC_driver.writeList);
    if (PLC_driver.writeList.isEmpty())
        return;
    BuildWrite(&PLC_driver.writeList.first());
    ++PLC_driver.writeRun;
}

void TakeOnceReadTurn() PLC_REQUIRES(PLC_driver.listMutex, PLC_driver.communicationTurn)
{
    PLC_driver.requestKind = ONCE_READ;
    DiscardSwitchedOff(PLC_driver.onceReadList);
    if (PLC_driver.onceReadList.isEmpty())
        return;
    BuildRead(&PLC_driver.onceReadList.first());
    ++PLC_driver.onceReadRun;
}

void ResetRuns() PLC_REQUIRES(PLC_driver.listMutex)
{
    PLC_driver.writeRun = 0;
    PLC_driver.onceReadRun = 0;
}

// Cyclic reads of a switched-off station move to the end, through one full turn of the list at most.
// \return whether there is one that may be sent
bool SkipSwitchedOff(QList<RW_VAR>& list) PLC_REQUIRES(PLC_driver.listMutex)
{
    for (int n = list.size(); n != 0; --n) {
        if (!HeadIsSwitchedOff(list))
            return true;
        list.move(0, list.size() - 1);
    }
    return false;
}

void TakeCyclicReadTurn() PLC_REQUIRES(PLC_driver.listMutex, PLC_driver.communicationTurn)
{
    QList<RW_VAR>& list = PLC_driver.readList;
    if (list.isEmpty()) {
        ResetRuns();
        PLC_driver.comInfo->cycleDone = 1;
        return;
    }
    PLC_driver.requestKind = CYCLIC_READ;
    if (!SkipSwitchedOff(list)) // all of them are off: the runs keep their values
        return;
    BuildRead(&list.first());
    ResetRuns();
}

// One list gets the turn. A turn that yields no frame does not fall back to another list.
void TakeTurn() PLC_REQUIRES(PLC_driver.listMutex, PLC_driver.communicationTurn)
{
    if (!PLC_driver.writeList.isEmpty() && PLC_driver.writeRun < PLC_LONGEST_RUN)
        TakeWriteTurn();
    else if (!PLC_driver.onceReadList.isEmpty() && PLC_driver.onceReadRun < PLC_LONGEST_RUN)
        TakeOnceReadTurn();
    else
        TakeCyclicReadTurn();
}

Protocol* HeadFrame() PLC_REQUIRES(PLC_driver.communicationTurn)
{
    return PLC_driver.protocolList.isEmpty() ? nullptr : &PLC_driver.protocolList.first();
}

} // namespace

Protocol* ComCommunication()
try {
    if (!PLC_driver.comInfo)
        return nullptr;
    CommunicationTurn turn;
    if (Protocol* pending = HeadFrame()) // the communication thread's own list: no lock
        return pending;
    MutexHolder lock(PLC_driver.listMutex);
    TakeTurn();
    return HeadFrame();
} catch (...) {
    // A build that ran out of memory is dropped whole; its request is built again at its next turn.
    CommunicationTurn turn;
    PLC_driver.protocolList.clear();
    return nullptr;
}
