// SPDX-License-Identifier: MIT
#include "varlist/add_variables.h"

#include "frames/address_map.h"
#include "varlist/address_text.h"
#include "varlist/block_limit.h"
#include "varlist/pieces.h"

namespace
{

bool SamePlace(const RW_VAR& a, const RW_VAR& b)
{
    return a.station == b.station && a.area == b.area && a.address == b.address && a.count == b.count;
}

bool SameRequest(const RW_VAR& a, const RW_VAR& b)
{
    return a.hostKey == b.hostKey && a.hostSubKey == b.hostSubKey && SamePlace(a, b);
}

// Index of the queued write that var replaces, -1 for none. The head is left alone: it may be on its way.
int ReplaceableWrite(const RW_VAR& var) PLC_REQUIRES(PLC_driver.listMutex)
{
    for (int i = 1; i < PLC_driver.writeList.size(); ++i)
        if (SamePlace(PLC_driver.writeList.at(i), var))
            return i;
    return -1;
}

void PutWrite(const RW_VAR& var, int replaceable) PLC_REQUIRES(PLC_driver.listMutex)
{
    QList<RW_VAR>& list = PLC_driver.writeList;
    if (replaceable >= 0)
        list[replaceable] = var;
    else if (list.size() < PLC_LIST_LIMIT)
        list.append(var);
}

bool IsQueued(const RW_VAR& var) PLC_REQUIRES(PLC_driver.listMutex)
{
    for (int i = 0; i < PLC_driver.onceReadList.size(); ++i)
        if (SameRequest(PLC_driver.onceReadList.at(i), var))
            return true;
    return false;
}

void QueueUnlessKnown(const RW_VAR& var) PLC_REQUIRES(PLC_driver.listMutex)
{
    if (!IsQueued(var) && PLC_driver.onceReadList.size() < PLC_LIST_LIMIT)
        PLC_driver.onceReadList.append(var);
}

// The record ends as the last piece. When memory runs out no piece stays: a read that is
// queued in part would be reported as done.
void QueuePieces(RW_VAR* var, int start, const Pieces& pieces) PLC_REQUIRES(PLC_driver.listMutex)
{
    QList<RW_VAR>& list = PLC_driver.onceReadList;
    const int before = list.size();
    try {
        for (int i = 0; i < pieces.number; ++i) {
            var->count = pieces.count(i);
            var->address = pieces.begin(start, i);
            QueueUnlessKnown(*var);
        }
    } catch (...) {
        while (list.size() > before)
            list.removeLast();
        throw;
    }
}

// Turns bits inside words into the words that they span, which are what counts from here on: no bit from bit
// 5 on still is one word. They are read from word 1 on, whatever the text says; on purpose.
int ReadWordsInstead(RW_VAR* var, int bitAddress)
{
    var->area = AREA_WORD;
    var->count = WordsOfBits(bitAddress, var->count);
    return 1;
}

// One of the request lists: which one is said without touching it, for that takes the lock.
typedef QList<RW_VAR> Modbus_RTU_Master::*RequestList;

int AddDirectly(RequestList list, const RW_VAR& var) PLC_EXCLUDES(PLC_driver.listMutex)
{
    MutexHolder lock(PLC_driver.listMutex);
    (PLC_driver.*list).append(var);
    return (PLC_driver.*list).size();
}

// A one-shot read by address text: parsed, cut, and queued piece by piece.
int AddOnceRead(RW_VAR* var)
{
    int start = StringAddressToInt(var->area, var->name2);
    if (start < 0)
        return 0;
    const COMINFO& info = *PLC_driver.comInfo;
    var->storeSelector = 0;
    var->spare13 = 0;
    if (info.multiStation == 0)
        var->station = info.defaultStation;
    if (!FindArea(var->area))
        return 0;
    const int limit = BlockLimit(var->area);
    int count = ServableCount(var->area, var->count, COUNT_OF_READ);
    if (var->area == AREA_BIT_OF_WORD) {
        var->count = count;
        start = ReadWordsInstead(var, start);
        count = var->count;
    }
    MutexHolder lock(PLC_driver.listMutex);
    QueuePieces(var, start, CutIntoPieces(count, limit));
    return PLC_driver.onceReadList.size();
}

int SizeOf(RequestList list) PLC_EXCLUDES(PLC_driver.listMutex)
{
    MutexHolder lock(PLC_driver.listMutex);
    return (PLC_driver.*list).size();
}

} // namespace

int AddWrite(const RW_VAR& var)
{
    MutexHolder lock(PLC_driver.listMutex);
    PutWrite(var, ReplaceableWrite(var));
    return PLC_driver.writeList.size();
}

int AddListReadVar(RW_VAR* var)
    PLC_UNCHECKED("the rebuild holds listMutex; a runtime calls it while no other thread is inside")
try {
    if (var)
        PLC_driver.readList.append(*var);
    return PLC_driver.readList.size();
} catch (...) {
    return PLC_driver.readList.size();
}

int AddListWriteVar(RW_VAR* var, int direct)
try {
    if (!var)
        return SizeOf(&Modbus_RTU_Master::writeList);
    if (direct == 1)
        return AddDirectly(&Modbus_RTU_Master::writeList, *var);
    return AddWrite(*var);
} catch (...) {
    return SizeOf(&Modbus_RTU_Master::writeList);
}

int AddListOnceReadVar(RW_VAR* var, int direct)
try {
    if (!var)
        return 0;
    if (direct == 1)
        return AddDirectly(&Modbus_RTU_Master::onceReadList, *var);
    if (!PLC_driver.comInfo)
        return 0;
    RW_VAR queued = *var; // so that the caller still has the whole request when memory runs out
    const int result = AddOnceRead(&queued);
    *var = queued;
    return result;
} catch (...) {
    return 0;
}
