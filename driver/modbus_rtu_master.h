// SPDX-License-Identifier: MIT
/// \file
/// \brief The one object that holds all driver state.
///
/// What guards which member stands at the member, and clang holds every function to it (thread_safety.h). The only
/// nestings are listMutex before stationMutex and listMutex before imageMutex. What belongs to the communication
/// thread alone needs no lock: it is guarded by the turn of that thread (communication_turn.h). The runtime's
/// callbacks run with listMutex held.
#ifndef DRIVER_MODBUS_RTU_MASTER_H
#define DRIVER_MODBUS_RTU_MASTER_H

#include "driver/plcdriver.h"
#include "driver/thread_safety.h"
#include "image/area_buffers.h"
#include "image/extended_variable.h"

#include <QMap>

#include <atomic>

/// Which list the request in flight came from.
enum RequestKind { CYCLIC_READ = 0, WRITE = 1, ONCE_READ = 2, NO_REQUEST_YET = 100 };

/// The bit write that a read-before-write is about to merge into its word: taken from the head of writeList
/// under listMutex, so that filing needs no lock on the list.
struct PendingBit {
    bool queued;   ///< writeList had a head
    bool hasValue; ///< and its data was not empty
    bool on;       ///< the first data byte was 1
    int address;   ///< its bit address
};

/// Which call of the communication thread it is. Whoever is that thread, inside such a call, holds it like a lock.
typedef std::atomic<unsigned int> TurnCount PLC_CAPABILITY("role");

/// All driver state. There is one object, PLC_driver; free functions work on it.
class Modbus_RTU_Master
{
public:
    Modbus_RTU_Master();

    /// The runtime's settings block; null until SetComInfo().
    COMINFO* comInfo PLC_UNGUARDED("set before other threads begin");

    QList<RW_VAR> readList PLC_GUARDED_BY(listMutex);     ///< cyclic reads; the head is next or in flight
    QList<RW_VAR> writeList PLC_GUARDED_BY(listMutex);    ///< pending writes
    QList<RW_VAR> onceReadList PLC_GUARDED_BY(listMutex); ///< pending one-shot reads
    /// In its place for the sake of the members behind it.
    QList<RW_VAR> spareList PLC_UNGUARDED("always empty");

    /// Frames of the request in flight; the head is unanswered.
    QList<Protocol> protocolList PLC_GUARDED_BY(communicationTurn);
    QList<EXTENDVAR> extendList PLC_GUARDED_BY(imageMutex); ///< values per station (multi-station mode)
    QMap<int, int> stationMap PLC_GUARDED_BY(stationMutex); ///< keys: the stations that are switched off

    /// The runtime's, or null; it runs with listMutex held.
    OnceReadDoneCallback onceReadDoneCallback PLC_UNGUARDED("set before other threads begin");
    /// The same.
    ListDoneCallback listDoneCallback PLC_UNGUARDED("set before other threads begin");

    /// Of what is queued, and of what depends on it.
    DriverMutex listMutex PLC_ACQUIRED_BEFORE(imageMutex, stationMutex);
    DriverMutex imageMutex;   ///< of the values
    DriverMutex stationMutex; ///< of the table of stations

    RW_VAR retVar PLC_GUARDED_BY(listMutex);           ///< what DataCom() returns
    int requestKind PLC_GUARDED_BY(communicationTurn); ///< a RequestKind
    int writeRun PLC_GUARDED_BY(listMutex);            ///< writes built since the last cyclic read
    int onceReadRun PLC_GUARDED_BY(listMutex);         ///< one-shot reads built since the last cyclic read
    int readReplyCount PLC_GUARDED_BY(listMutex);      ///< good local replies in this pass of the read list

    /// 1 after a failed reply, 0 after a good one; any thread reads it.
    std::atomic<unsigned char> lastFailed PLC_UNGUARDED("atomic");
    unsigned char spareFlag PLC_UNGUARDED("always 0"); ///< in its place as spareList is

    Image image PLC_GUARDED_BY(imageMutex); ///< the local copy of the controller's memory

    PendingBit pendingBit PLC_GUARDED_BY(communicationTurn); ///< set before each reply is filed
    /// The record of the frame that was answered last, or none; the next frame is built in its place.
    QList<Protocol> answeredList PLC_GUARDED_BY(communicationTurn);
    /// Odd while the communication thread is inside; see communication_turn.h.
    TurnCount communicationTurn PLC_UNGUARDED("atomic");

private:
    Modbus_RTU_Master(const Modbus_RTU_Master&);
    Modbus_RTU_Master& operator=(const Modbus_RTU_Master&);
};

/// Constructed when the library is loaded, destroyed when it is unloaded.
extern Modbus_RTU_Master PLC_driver;

#endif
