#include "varlist/add_variables.h"

#include "driver/modbus_rtu_master.h"
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
int ReplaceableWrite(const RW_VAR& var)
{
    const QList<RW_VAR>& list = PLC_driver.writeList;
    for (int i = 1; i < list.size(); ++i)
        if (SamePlace(list.at(i), var))
            return i;
    return -1;
}

// listMutex is held.
void PutWrite(const RW_VAR& var, int replaceable)
{
    QList<RW_VAR>& list = PLC_driver.writeList;
    if (replaceable >= 0)
        list[replaceable] = var;
    else if (list.size() < PLC_LIST_LIMIT)
        list.append(var);
}

bool IsQueued(const RW_VAR& var)
{
    const QList<RW_VAR>& list = PLC_driver.onceReadList;
    for (int i = 0; i < list.size(); ++i)
        if (SameRequest(list.at(i), var))
            return true;
    return false;
}

void QueueUnlessKnown(const RW_VAR& var)
{
    if (!IsQueued(var) && PLC_driver.onceReadList.size() < PLC_LIST_LIMIT)
        PLC_driver.onceReadList.append(var);
}

// listMutex is held. The record ends as the last piece. When memory runs out no piece stays: a read that is
// queued in part would be reported as done.
void QueuePieces(RW_VAR* var, int start, const Pieces& pieces)
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

int AddDirectly(QList<RW_VAR>& list, const RW_VAR& var)
{
    QMutexLocker lock(&PLC_driver.listMutex);
    list.append(var);
    return list.size();
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
    QMutexLocker lock(&PLC_driver.listMutex);
    QueuePieces(var, start, CutIntoPieces(count, limit));
    return PLC_driver.onceReadList.size();
}

int SizeOf(const QList<RW_VAR>& list)
{
    QMutexLocker lock(&PLC_driver.listMutex);
    return list.size();
}

} // namespace

int AddWrite(const RW_VAR& var)
{
    QMutexLocker lock(&PLC_driver.listMutex);
    PutWrite(var, ReplaceableWrite(var));
    return PLC_driver.writeList.size();
}

int AddListReadVar(RW_VAR* var)
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
        return SizeOf(PLC_driver.writeList);
    if (direct == 1)
        return AddDirectly(PLC_driver.writeList, *var);
    return AddWrite(*var);
} catch (...) {
    return SizeOf(PLC_driver.writeList);
}

int AddListOnceReadVar(RW_VAR* var, int direct)
try {
    if (!var)
        return 0;
    if (direct == 1)
        return AddDirectly(PLC_driver.onceReadList, *var);
    if (!PLC_driver.comInfo)
        return 0;
    RW_VAR queued = *var; // so that the caller still has the whole request when memory runs out
    const int result = AddOnceRead(&queued);
    *var = queued;
    return result;
} catch (...) {
    return 0;
}
