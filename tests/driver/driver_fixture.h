// SPDX-License-Identifier: MIT
/// \file
/// \brief A clean driver for each test, and short words for requests, bytes and frames.
///
/// All driver state is the one object PLC_driver, so tests of one program share it: DriverTest puts it back
/// into the state of a freshly loaded library, wired to a settings block and two recording callbacks.
#ifndef TESTS_DRIVER_FIXTURE_H
#define TESTS_DRIVER_FIXTURE_H

#include "driver/modbus_rtu_master.h"
#include "support/hex.h"

#include <gtest/gtest.h>

#include <cstring>
#include <ostream>
#include <string>
#include <vector>

/// What the fixture's settings block says, for expectations that a person can check by eye.
enum FixtureSettings {
    MAX_BLOCK_COUNT = 100,
    DEFAULT_STATION = 1,
    RETRY_LIMIT = 3,
    LOCAL_STATION = 3,
    PORT_ID = 7,
    QUEUE_WRITES = 2 ///< COMINFO::hostWriteMode
};

using test::fromHex;
using test::toHex;

/// A request of the local station group whose other fields are 0 or empty.
inline RW_VAR Variable(int area, int address, int count, int station = DEFAULT_STATION)
{
    RW_VAR var = RW_VAR();
    var.stationGroup = LOCAL_STATION;
    var.area = area;
    var.address = address;
    var.count = count;
    var.station = station;
    return var;
}

/// A write: Write(9, 5, 1, "34 12").
inline RW_VAR Write(int area, int address, int count, const char* hexData, int station = DEFAULT_STATION)
{
    RW_VAR var = Variable(area, address, count, station);
    var.data = fromHex(hexData);
    return var;
}

/// One call of the one-shot-read callback.
struct OnceReadDoneCall {
    int portId;
    int hostKey;
    int hostSubKey;
    int status;
};

inline bool operator==(const OnceReadDoneCall& a, const OnceReadDoneCall& b)
{
    return a.portId == b.portId && a.hostKey == b.hostKey && a.hostSubKey == b.hostSubKey &&
           a.status == b.status;
}

inline std::ostream& operator<<(std::ostream& out, const OnceReadDoneCall& call)
{
    return out << "{port " << call.portId << ", key " << call.hostKey << ", sub key " << call.hostSubKey
               << ", status " << call.status << "}";
}

/// One call of the list callback; listSize is -1 for a null list.
struct ListDoneCall {
    int listSize;
    int hostKey;
    int flag;
};

inline bool operator==(const ListDoneCall& a, const ListDoneCall& b)
{
    return a.listSize == b.listSize && a.hostKey == b.hostKey && a.flag == b.flag;
}

inline std::ostream& operator<<(std::ostream& out, const ListDoneCall& call)
{
    return out << "{list of " << call.listSize << ", key " << call.hostKey << ", flag " << call.flag << "}";
}

class DriverTest : public ::testing::Test
{
public:
    DriverTest() : info(COMINFO()) {}

protected:
    void SetUp() override
    {
        WireSettings();
        ClearDriver();
        onceReadDoneCalls().clear();
        listDoneCalls().clear();
        PLC_driver.onceReadDoneCallback = RecordOnceReadDone;
        PLC_driver.listDoneCallback = RecordListDone;
    }

    /// The block dies with the test, so the driver must not keep it.
    void TearDown() override
    {
        PLC_driver.comInfo = nullptr;
        PLC_driver.protocolList.clear();
    }

    /// The calls of the two callbacks so far, oldest first.
    static std::vector<OnceReadDoneCall>& onceReadDoneCalls()
    {
        static std::vector<OnceReadDoneCall> calls;
        return calls;
    }
    static std::vector<ListDoneCall>& listDoneCalls()
    {
        static std::vector<ListDoneCall> calls;
        return calls;
    }

    static int frameCount() { return PLC_driver.protocolList.size(); }

    /// A queued frame in hexadecimal; empty where there is none.
    static std::string frame(int index)
    {
        return index < frameCount() ? toHex(PLC_driver.protocolList.at(index).frame) : std::string();
    }

    COMINFO info;

private:
    void WireSettings()
    {
        info = COMINFO();
        info.maxBlockCount = MAX_BLOCK_COUNT;
        info.defaultStation = DEFAULT_STATION;
        info.retryLimit = RETRY_LIMIT;
        info.localStation = LOCAL_STATION;
        info.hostWriteMode = QUEUE_WRITES;
        info.portId = PORT_ID;
        PLC_driver.comInfo = &info;
    }

    static void ClearDriver()
    {
        ClearLists();
        PLC_driver.stationMap.clear();
        PLC_driver.retVar = RW_VAR();
        PLC_driver.requestKind = NO_REQUEST_YET;
        PLC_driver.writeRun = 0;
        PLC_driver.onceReadRun = 0;
        PLC_driver.readReplyCount = 0;
        PLC_driver.lastFailed = 0;
        PLC_driver.spareFlag = 0;
        PLC_driver.pendingBit = PendingBit();
        std::memset(&PLC_driver.image, 0, sizeof PLC_driver.image);
        LB = LW = RWI = nullptr;
    }

    static void ClearLists()
    {
        PLC_driver.readList.clear();
        PLC_driver.writeList.clear();
        PLC_driver.onceReadList.clear();
        PLC_driver.spareList.clear();
        PLC_driver.protocolList.clear();
        PLC_driver.answeredList.clear();
        PLC_driver.extendList.clear();
    }

    static int RecordOnceReadDone(int portId, int hostKey, int hostSubKey, int status)
    {
        onceReadDoneCalls().push_back({portId, hostKey, hostSubKey, status});
        return 0;
    }

    static int RecordListDone(QList<RW_VAR>* list, int hostKey, int flag)
    {
        listDoneCalls().push_back({list ? list->size() : -1, hostKey, flag});
        return 0;
    }
};

#endif
