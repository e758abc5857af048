/// \file
/// \brief The one object that holds all driver state.
///
/// Locks: listMutex guards the request lists, the scheduler counters and retVar; imageMutex guards the image
/// and extendList; stationMutex guards stationMap. The only nestings are listMutex before stationMutex and
/// listMutex before imageMutex. protocolList, requestKind and pendingBit belong to the communication thread
/// alone and need no lock. The runtime's callbacks run with listMutex held.
#ifndef DRIVER_MODBUS_RTU_MASTER_H
#define DRIVER_MODBUS_RTU_MASTER_H

#include "driver/plcdriver.h"
#include "image/area_buffers.h"
#include "image/extended_variable.h"

#include <QMap>
#include <QMutex>

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

/// All driver state. There is one object, PLC_driver; free functions work on it.
class Modbus_RTU_Master
{
public:
    Modbus_RTU_Master();

    COMINFO* comInfo;                          ///< the runtime's settings block; null until SetComInfo()
    QList<RW_VAR> readList;                    ///< cyclic reads; the head is next or in flight
    QList<RW_VAR> writeList;                   ///< pending writes
    QList<RW_VAR> onceReadList;                ///< pending one-shot reads
    QList<RW_VAR> spareList;                   ///< always empty
    QList<Protocol> protocolList;              ///< frames of the request in flight; the head is unanswered
    QList<EXTENDVAR> extendList;               ///< values per station (multi-station mode)
    QMap<int, int> stationMap;                 ///< keys: the stations that are switched off
    OnceReadDoneCallback onceReadDoneCallback; ///< the runtime's, or null; runs with listMutex held
    ListDoneCallback listDoneCallback;         ///< the runtime's, or null; runs with listMutex held
    QMutex listMutex;                          ///< request lists, scheduler counters, retVar
    QMutex imageMutex;                         ///< image, extendList
    QMutex stationMutex;                       ///< stationMap
    RW_VAR retVar;                             ///< what DataCom() returns
    int requestKind;                           ///< a RequestKind
    int writeRun;                              ///< writes built since the last cyclic read
    int onceReadRun;                           ///< one-shot reads built since the last cyclic read
    int readReplyCount;                        ///< good local replies in the current pass of the read list
    std::atomic<unsigned char>
        lastFailed;          ///< 1 after a failed reply, 0 after a good one; any thread reads it
    unsigned char spareFlag; ///< always 0
    Image image;             ///< the local copy of the controller's memory

    PendingBit pendingBit;                       ///< set before each reply is filed
    std::atomic<unsigned int> communicationTurn; ///< odd while the communication thread is inside; see
                                                 ///< communication_turn.h

private:
    Modbus_RTU_Master(const Modbus_RTU_Master&);
    Modbus_RTU_Master& operator=(const Modbus_RTU_Master&);
};

/// Constructed when the library is loaded, destroyed when it is unloaded.
extern Modbus_RTU_Master PLC_driver;

#endif
