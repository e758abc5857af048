// SPDX-License-Identifier: MIT
// Whoever touches what a lock guards waits while another thread holds it. A removed lock shows here at once, without
// a tool that watches every access.
#include "cycle.h"

#include "driver/reply_handling.h"
#include "driver/station_table.h"
#include "image/image_write.h"

#include <chrono>
#include <functional>
#include <future>
#include <ostream>

namespace
{

const auto WAITS_THAT_LONG = std::chrono::milliseconds(20);
const auto LONGEST_WAIT = std::chrono::seconds(60);

typedef DriverMutex Modbus_RTU_Master::*Lock;

struct Call {
    const char* name;
    Lock lock;
    void (*prepare)(); ///< before the lock is held; null for nothing
    void (*call)();
};

std::ostream& operator<<(std::ostream& out, const Call& call)
{
    return out << call.name;
}

void AddWrite(int direct)
{
    RW_VAR var = Write(9, 100, 1, "34 12");
    AddListWriteVar(&var, direct);
}

void AddOnceRead(int direct)
{
    RW_VAR var = Variable(9, 100, 1);
    var.name2 = QString("100");
    AddListOnceReadVar(&var, direct);
}

void Rebuild()
{
    QList<HOST_VAR> none;
    ReCreatReadVarList(&none);
}

void SetRegister()
{
    QString name("level"), text("100");
    QByteArray data = fromHex("34 12");
    SetRegisterData(&name, 9, &text, 1, &data, 1, 11, 0);
}

void GetRegister()
{
    QString text("100");
    QByteArray out;
    GetRegisterData(0, 9, &text, 1, &out, 1);
}

void Mirror()
{
    RW_VAR var = Write(9, 100, 1, "34 12");
    WriteDataToLocal(&var);
}

void SendRead()
{
    RW_VAR var = Variable(9, 16, 1);
    AddListReadVar(&var);
    ComCommunication();
}

void AnswerRead()
{
    QByteArray bytes = fromHex("00 00 00 00 00 05 01 03 02 12 34");
    DealDataOfLocalArea(&bytes, bytes.size());
}

void AnswerNothing()
{
    DataCom(nullptr, 0);
}

const Lock LISTS = &Modbus_RTU_Master::listMutex;
const Lock IMAGE = &Modbus_RTU_Master::imageMutex;
const Lock STATIONS = &Modbus_RTU_Master::stationMutex;

const Call calls[] = {
    {"AWrite", LISTS, nullptr, [] { AddWrite(0); }},
    {"ADirectWrite", LISTS, nullptr, [] { AddWrite(1); }},
    {"TheSizeOfTheWrites", LISTS, nullptr, [] { AddListWriteVar(nullptr, 0); }},
    {"AOneShotRead", LISTS, nullptr, [] { AddOnceRead(0); }},
    {"ADirectOneShotRead", LISTS, nullptr, [] { AddOnceRead(1); }},
    {"ARebuild", LISTS, nullptr, Rebuild},
    {"AQueuedRegister", LISTS, nullptr, SetRegister},
    {"TheScheduler", LISTS, nullptr, [] { ComCommunication(); }},
    {"AReply", LISTS, SendRead, AnswerNothing},
    {"AReplyToNothing", LISTS, nullptr, AnswerNothing},
    {"ThePendingBit", LISTS, nullptr, TakePendingBit},
    {"AMirroredWrite", IMAGE, nullptr, Mirror},
    {"AReadRegister", IMAGE, nullptr, GetRegister},
    {"AFiledReply", IMAGE, SendRead, AnswerRead},
    {"ASwitchedStation", STATIONS, nullptr, [] { EnCommStation(3, 0); }},
    {"AllStationsSwitchedOn", STATIONS, nullptr, [] { EnCommStation(-1, 1); }},
    {"ALookAtAStation", STATIONS, nullptr, [] { Ethernetcontains(3); }},
};

class WaitsForLock : public CycleTest, public ::testing::WithParamInterface<Call>
{
};

std::string NameOfCall(const ::testing::TestParamInfo<Call>& param)
{
    return param.param.name;
}

} // namespace

TEST_P(WaitsForLock, WhileAnotherThreadHoldsIt)
{
    if (GetParam().prepare)
        GetParam().prepare();
    DriverMutex& lock = PLC_driver.*GetParam().lock;
    lock.lock();
    const std::future<void> done = std::async(std::launch::async, GetParam().call);
    EXPECT_EQ(std::future_status::timeout, done.wait_for(WAITS_THAT_LONG)) << "it did not take the lock";
    lock.unlock();
    EXPECT_EQ(std::future_status::ready, done.wait_for(LONGEST_WAIT)) << "it waits for ever";
}

INSTANTIATE_TEST_SUITE_P(Calls, WaitsForLock, ::testing::ValuesIn(calls), NameOfCall);
