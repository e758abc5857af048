// SPDX-License-Identifier: MIT
#include "fuzz/callbacks.h"

#include "driver/modbus_rtu_master.h"
#include "fuzz/check.h"

namespace fuzz
{

namespace
{

bool isFree(QMutex& mutex)
{
    const bool taken = mutex.tryLock();
    if (taken)
        mutex.unlock();
    return taken;
}

// The runtime is told under the list's lock, and may read registers or switch stations meanwhile.
void checkLocksInCallback()
{
    check(!isFree(PLC_driver.listMutex), "callbacks run with the list's lock held");
    check(isFree(PLC_driver.imageMutex) && isFree(PLC_driver.stationMutex),
          "callbacks run with no other lock held");
}

} // namespace

Callbacks& callbacks()
{
    static Callbacks calls;
    return calls;
}

int noteListDone(QList<RW_VAR>* list, int, int flag)
{
    checkLocksInCallback();
    check(list && list->isEmpty() && flag == 1, "the list callback gets an empty list and flag 1");
    ++callbacks().listDone;
    return 0;
}

int noteOnceReadDone(int portId, int, int, int status)
{
    checkLocksInCallback();
    check(portId == PLC_driver.comInfo->portId, "the one-shot callback gets the port of the settings");
    ++callbacks().onceReadDone;
    callbacks().lastStatus = status;
    return 0;
}

void checkLocksAreFree()
{
    check(isFree(PLC_driver.listMutex), "no entry point leaves the list's lock held");
    check(isFree(PLC_driver.imageMutex), "no entry point leaves the image's lock held");
    check(isFree(PLC_driver.stationMutex), "no entry point leaves the stations' lock held");
}

} // namespace fuzz
