// SPDX-License-Identifier: MIT
#include "driver/reply_handling.h"

#include "driver/communication_turn.h"
#include "driver/host_interface.h"
#include "driver/return_codes.h"
#include "frames/address_map.h"
#include "frames/frame_bytes.h"
#include "image/reply_filing.h"

namespace
{

bool IsLocal(const RW_VAR& request)
{
    return request.stationGroup == PLC_driver.comInfo->localStation;
}

bool IsSuccess(int code)
{
    return code == PLC_DONE || code == PLC_REMOTE_DONE;
}

// Only the announced length is judged; a reply length of -1 takes any reply but none. The one reply that must
// really hold its data is that to the read before the write of a bit.
// \return one of the two failures, or LOCAL_ACCEPTED
Outcome JudgeLength(const QByteArray* reply, int length, Outcome noReply, Outcome wrongLength)
    PLC_REQUIRES(PLC_driver.communicationTurn)
{
    const int expected = PLC_driver.protocolList.at(0).replyLength;
    if (length == 0 && expected != 0)
        return noReply;
    if (length != 0 && expected != length && expected != -1)
        return wrongLength;
    return LacksWordForWrite(reply) ? wrongLength : LOCAL_ACCEPTED;
}

// Notes the head of writeList where filing is going to merge its bit into the word just read.
void PrepareFiling(const RW_VAR& request) PLC_REQUIRES(PLC_driver.communicationTurn)
    PLC_EXCLUDES(PLC_driver.listMutex)
{
    if (request.area == AREA_BIT_OF_WORD && request.storeSelector == -1)
        TakePendingBit();
}

// These words lie in the runtime's memory and may hold anything.
int OneMore(int word)
{
    return static_cast<int>(static_cast<unsigned int>(word) + 1u);
}

// \return whether the failure is final; until then the frame stays at the head and is handed out again.
bool CountFailure() PLC_REQUIRES(PLC_driver.listMutex, PLC_driver.communicationTurn)
{
    COMINFO& info = *PLC_driver.comInfo;
    PLC_driver.readReplyCount = 0;
    PLC_driver.lastFailed = 1;
    info.cycleDone = 0;
    // Only a final failure clears the count, a success does not; on purpose.
    info.failCount = OneMore(info.failCount);
    if (info.failCount <= info.retryLimit)
        return false;
    info.failCount = 0;
    PLC_driver.protocolList.clear();
    return true;
}

// A record that was the only one is kept for the next frame.
void RemoveHeadFrame() PLC_REQUIRES(PLC_driver.communicationTurn)
{
    if (PLC_driver.protocolList.size() == 1 && PLC_driver.answeredList.isEmpty())
        PLC_driver.answeredList.swap(PLC_driver.protocolList);
    else
        PLC_driver.protocolList.removeFirst();
}

// \return whether the request is complete; a bit inside a word takes two replies.
bool CountReply() PLC_REQUIRES(PLC_driver.listMutex, PLC_driver.communicationTurn)
{
    COMINFO& info = *PLC_driver.comInfo;
    if (PLC_driver.lastFailed != 0) // mostly it is 0 already, and setting it takes a fence
        PLC_driver.lastFailed = 0;
    RemoveHeadFrame();
    info.framesReceived = OneMore(info.framesReceived);
    return info.framesReceived >= info.framesExpected;
}

// A pass of the read list is answered when more local replies than entries came in.
void CountTowardsPass(bool local) PLC_REQUIRES(PLC_driver.listMutex)
{
    COMINFO& info = *PLC_driver.comInfo;
    if (info.cycleDone != 0 || !local)
        return;
    if (++PLC_driver.readReplyCount > PLC_driver.readList.size()) {
        PLC_driver.readReplyCount = 0;
        info.cycleDone = 1;
    }
}

void FinishHead(QList<RW_VAR>& list) PLC_REQUIRES(PLC_driver.listMutex)
{
    passRetValue(list.at(0), PLC_driver.retVar);
    list.removeFirst();
}

bool IsLastPiece(const QList<RW_VAR>& list) PLC_REQUIRES(PLC_driver.listMutex)
{
    const RW_VAR& head = list.at(0);
    for (int i = 1; i < list.size(); ++i)
        if (list.at(i).hostKey == head.hostKey && list.at(i).hostSubKey == head.hostSubKey)
            return false;
    return true;
}

void ReportOnceRead(const RW_VAR& head) PLC_REQUIRES(PLC_driver.listMutex)
{
    const int status = PLC_driver.lastFailed == 0 ? 1 : 2;
    if (PLC_driver.onceReadDoneCallback)
        PLC_driver.onceReadDoneCallback(PLC_driver.comInfo->portId, head.hostKey, head.hostSubKey, status);
}

void FinishOnceRead(bool local) PLC_REQUIRES(PLC_driver.listMutex)
{
    QList<RW_VAR>& list = PLC_driver.onceReadList;
    if (list.isEmpty())
        return;
    if (local && IsLastPiece(list))
        ReportOnceRead(list.at(0));
    FinishHead(list);
}

void FinishWrite() PLC_REQUIRES(PLC_driver.listMutex)
{
    if (!PLC_driver.writeList.isEmpty())
        FinishHead(PLC_driver.writeList);
}

void RotateCyclicRead() PLC_REQUIRES(PLC_driver.listMutex)
{
    QList<RW_VAR>& list = PLC_driver.readList;
    if (list.isEmpty())
        return;
    passRetValue(list.at(0), PLC_driver.retVar);
    list.move(0, list.size() - 1);
}

void FinishRequest(bool local) PLC_REQUIRES(PLC_driver.listMutex, PLC_driver.communicationTurn)
{
    if (PLC_driver.requestKind == WRITE)
        FinishWrite();
    else if (PLC_driver.requestKind == ONCE_READ)
        FinishOnceRead(local);
    else if (PLC_driver.requestKind == CYCLIC_READ)
        RotateCyclicRead();
}

void RemoveStation(QList<RW_VAR>& list, int station) PLC_REQUIRES(PLC_driver.listMutex)
{
    for (int i = list.size() - 1; i >= 0; --i)
        if (list.at(i).station == station)
            list.removeAt(i);
}

// After a final failure nothing queued is worth keeping: in multi-station mode of the failed station only.
// Cyclic reads stay.
void Purge() PLC_REQUIRES(PLC_driver.listMutex)
{
    TellListDone(PLC_driver.retVar.hostKey);
    if (PLC_driver.comInfo->multiStation == 0) {
        PLC_driver.onceReadList.clear();
        PLC_driver.writeList.clear();
    } else {
        RemoveStation(PLC_driver.onceReadList, PLC_driver.retVar.station);
        RemoveStation(PLC_driver.writeList, PLC_driver.retVar.station);
    }
}

// What a reply of this code does to the request in flight. \return the result that the runtime sees.
int FinishReply(bool local, int code) PLC_REQUIRES(PLC_driver.listMutex, PLC_driver.communicationTurn)
{
    if (IsSuccess(code)) {
        if (!CountReply())
            return code;
        CountTowardsPass(local);
    } else if (!CountFailure()) {
        return PLC_RETRYING;
    }
    FinishRequest(local);
    if (PLC_driver.lastFailed != 0)
        Purge();
    return code;
}

void FileRemoteReply(QByteArray* reply) PLC_REQUIRES(PLC_driver.communicationTurn)
    PLC_UNCHECKED("files without imageMutex, unlike the local path; on purpose")
{
    SaveToLocalDataErea(reply);
}

} // namespace

void passRetValue(const RW_VAR& source, RW_VAR& target)
{
    target.hostKey = source.hostKey;
    target.hostSubKey = source.hostSubKey;
    target.accessFlag = source.accessFlag;
    target.spare3 = source.spare3;
    target.stationGroup = source.stationGroup;
    target.result = source.result;
    target.name = source.name;
    target.name2 = source.name2;
    target.area = source.area;
    target.address = source.address;
    target.station = source.station;
    target.count = source.count;
    target.storeSelector = source.storeSelector;
    target.spare13 = source.spare13;
    if (!target.data.isEmpty())
        target.data.clear(); // the runtime never gets value bytes through the result record
}

int CheckGetData(QByteArray*, int)
{
    return PLC_driver.protocolList.at(0).var.accessFlag == 0 ? 1 : 2;
}

void TakePendingBit()
{
    PLC_driver.pendingBit = PendingBit();
    MutexHolder lock(PLC_driver.listMutex);
    if (PLC_driver.writeList.isEmpty())
        return;
    const RW_VAR& write = PLC_driver.writeList.at(0);
    PLC_driver.pendingBit.queued = true;
    PLC_driver.pendingBit.hasValue = !write.data.isEmpty();
    PLC_driver.pendingBit.on = ByteAt(write.data, 0) == 1;
    PLC_driver.pendingBit.address = write.address;
}

int DealDataOfLocalArea(QByteArray* reply, int length)
{
    const Protocol& request = PLC_driver.protocolList.at(0);
    const Outcome judged = JudgeLength(reply, length, LOCAL_NO_REPLY, LOCAL_WRONG_LENGTH);
    if (judged != LOCAL_ACCEPTED)
        return GetDriverReturnValue(judged);
    if (CheckGetData(reply, length) == 1) {
        PrepareFiling(request.var);
        MutexHolder lock(PLC_driver.imageMutex);
        SaveToLocalDataErea(reply);
    }
    return GetDriverReturnValue(LOCAL_ACCEPTED);
}

int DealDataOfRemoteArea(QByteArray* reply, int length)
{
    const Protocol& request = PLC_driver.protocolList.at(0);
    const Outcome judged = JudgeLength(reply, length, REMOTE_NO_REPLY, REMOTE_WRONG_LENGTH);
    if (judged != LOCAL_ACCEPTED)
        return GetDriverReturnValue(judged);
    if (request.var.storeSelector != -1) // decides filing here; accessFlag does not
        return GetDriverReturnValue(REMOTE_ACCEPTED);
    PrepareFiling(request.var);
    FileRemoteReply(reply);
    const bool second = PLC_driver.comInfo->framesReceived == 1;
    return GetDriverReturnValue(second ? REMOTE_ACCEPTED : LOCAL_ACCEPTED);
}

RW_VAR* DataCom(QByteArray* reply, int length)
try {
    CommunicationTurn turn;
    const bool outstanding = PLC_driver.comInfo && !PLC_driver.protocolList.isEmpty();
    const bool local = outstanding && IsLocal(PLC_driver.protocolList.at(0).var);
    int code = PLC_DONE;
    if (outstanding)
        code = local ? DealDataOfLocalArea(reply, length) : DealDataOfRemoteArea(reply, length);

    MutexHolder lock(PLC_driver.listMutex);
    PLC_driver.retVar.result = PLC_DONE;
    if (outstanding)
        PLC_driver.retVar.result = FinishReply(local, code);
    return &PLC_driver.retVar;
} catch (...) {
    MutexHolder lock(PLC_driver.listMutex);
    PLC_driver.retVar.result = PLC_RETRYING;
    return &PLC_driver.retVar;
}
