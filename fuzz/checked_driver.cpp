// SPDX-License-Identifier: MIT
#include "fuzz/checked_driver.h"

#include "fuzz/callbacks.h"
#include "fuzz/check.h"
#include "fuzz/driver_areas.h"
#include "fuzz/frame_checks.h"
#include "fuzz/list_checks.h"
#include "fuzz/reply_checks.h"

#include <algorithm>
#include <new>

namespace fuzz
{

namespace
{

const int queueWrites = 2;
const int slowRead = 2000; // elements whose values are not compared one by one

int most(int area, int atArea14)
{
    if (area == bitOfWordArea)
        return bitsOfWords;
    return area == doubleWordArea ? atArea14 : elementsOfArea;
}

// As if the library had just been loaded.
void loadAnew()
{
    PLC_driver.~Modbus_RTU_Master();
    new (&PLC_driver) Modbus_RTU_Master();
}

} // namespace

CheckedDriver::CheckedDriver(const COMINFO& settings, bool careful)
    : m_settings(settings), m_careful(careful), m_pendingCopy(Protocol())
{
    wire(true);
    registerCallbacks(true, true);
}

CheckedDriver::~CheckedDriver()
{
    loadAnew(); // here, so that what an input leaves behind is not taken for a leak
}

// What holds after every entry point.
void CheckedDriver::call(const std::function<void()>& work)
{
    callbacks() = Callbacks();
    m_memory.setMultiStation(isMulti());
    try {
        work();
    } catch (...) {
        check(false, "no exception leaves an entry point");
    }
    checkLocksAreFree();
}

// The same for an entry point that has no business with the frame in flight and calls nobody back.
void CheckedDriver::callAside(const std::function<void()>& work)
{
    call(work);
    checkPending();
    check(callbacks().listDone == 0 && callbacks().onceReadDone == 0,
          "only polls and replies call the runtime back");
}

void CheckedDriver::rememberPending()
{
    m_pending = PLC_driver.protocolList.isEmpty() ? nullptr : &PLC_driver.protocolList.at(0);
    if (m_pending)
        m_pendingCopy = *m_pending;
}

// The runtime may be sending its bytes right now.
void CheckedDriver::checkPending() const
{
    if (!m_pending) {
        check(PLC_driver.protocolList.isEmpty(), "frames are built when they are asked for");
        return;
    }
    check(!PLC_driver.protocolList.isEmpty() && &PLC_driver.protocolList.at(0) == m_pending,
          "the frame that was handed out stays where it is until its reply");
    check(isSameFrame(*m_pending, m_pendingCopy), "the frame that was handed out stays as it is");
}

void CheckedDriver::wire(bool on)
{
    callAside([&] { SetComInfo(on ? &m_settings : nullptr); });
}

void CheckedDriver::registerCallbacks(bool onceRead, bool listDone)
{
    callAside([&] {
        RegistCallBackFuncIntf(onceRead ? noteOnceReadDone : nullptr, listDone ? noteListDone : nullptr);
    });
}

const Protocol* CheckedDriver::poll()
{
    const bool wasPending = m_pending != nullptr;
    const TurnExpectation turn;
    const Protocol* frame = nullptr;
    call([&] { frame = ComCommunication(); });
    if (!isWired() || wasPending) {
        checkPending();
        check(frame == (isWired() ? m_pending : nullptr), "a frame is handed out until its reply came");
        turn.compareUnchanged();
        return frame;
    }
    turn.compare(m_settings);
    rememberPending();
    check(frame == m_pending, "what is handed out is the first frame");
    if (turn.builtWrite())
        mirrorBuiltWrite();
    m_memory.compare(m_careful);
    return frame;
}

// The record in the list is looked at: the builder has filled its value bytes up.
void CheckedDriver::mirrorBuiltWrite()
{
    const RW_VAR& write = PLC_driver.writeList.at(0);
    const bool frames = write.area >= 1 && write.area < areaCount;
    if (m_settings.remoteMode != 0 || (frames && PLC_driver.lastFailed == 0))
        m_memory.mirror(write);
}

void CheckedDriver::reply(QByteArray* reply, int length)
{
    const ReplyExpectation expected(reply, length);
    const RW_VAR* result = nullptr;
    call([&] { result = DataCom(reply, length); });
    expected.compare(result, reply, callbacks());
    if (expected.filed())
        m_memory.file(expected.request(), reply, expected.queuedBit());
    m_memory.compare(m_careful);
    rememberPending();
}

void CheckedDriver::addRead(RW_VAR* var)
{
    const int before = PLC_driver.readList.size();
    int result = 0;
    callAside([&] { result = AddListReadVar(var); });
    check(result == before + 1 && PLC_driver.readList.size() == result, "a cyclic read is always taken");
}

void CheckedDriver::addWrite(RW_VAR* var, int direct)
{
    const int before = PLC_driver.writeList.size();
    int result = 0;
    callAside([&] { result = AddListWriteVar(var, direct); });
    checkGrowth(before, PLC_driver.writeList.size(), 1, direct == 1);
    check(result == PLC_driver.writeList.size(), "queueing a write gives the size of the list");
}

void CheckedDriver::addOnceRead(RW_VAR* var, int direct)
{
    const int before = PLC_driver.onceReadList.size();
    const RW_VAR given = *var;
    int result = 0;
    callAside([&] { result = AddListOnceReadVar(var, direct); });
    if (direct == 1) {
        checkGrowth(before, PLC_driver.onceReadList.size(), 1, true);
        check(result == before + 1, "queueing directly gives the size of the list");
        return;
    }
    const bool refused =
        !isWired() || !isKnownArea(given.area) || PLCAddressChangeIntef(given.area, given.name2) < 0;
    check(result == (refused ? 0 : PLC_driver.onceReadList.size()),
          "a one-shot read gives the size of the list, or 0 when it is refused");
    checkGrowth(before, PLC_driver.onceReadList.size(), refused ? 0 : bitsOfWords, false);
    checkPieces(before, m_settings);
}

void CheckedDriver::rebuild(QList<HOST_VAR>* list)
{
    const int before = PLC_driver.readList.size();
    int result = 0;
    callAside([&] { result = ReCreatReadVarList(list); });
    const int size = PLC_driver.readList.size();
    if (!isWired()) {
        check(result == 0 && size == before, "without settings nothing is rebuilt");
        return;
    }
    check(result == (isMulti() ? size : 0), "the rebuilt list is counted in multi-station mode only");
    checkRebuilt(*list, m_settings);
}

void CheckedDriver::switchStation(int station, int flag)
{
    const bool wasOff = PLC_driver.stationMap.contains(station);
    callAside([&] { EnCommStation(station, flag); });
    const bool isOff = PLC_driver.stationMap.contains(station);
    if (station < 0)
        check(PLC_driver.stationMap.isEmpty(), "a negative station switches all of them on");
    else
        check(isOff == (flag == 0 || (flag != 1 && wasOff)), "flag 0 switches off, 1 on, others nothing");
}

void CheckedDriver::setRegister(const RW_VAR& var)
{
    QString name = QStringLiteral("name");
    QString text = var.name2;
    QByteArray data = var.data;
    const int before = PLC_driver.writeList.size();
    int result = -1;
    callAside([&] {
        result = SetRegisterData(&name, var.area, &text, static_cast<unsigned int>(var.station), &data,
                                 var.count, var.hostKey, static_cast<unsigned int>(var.hostSubKey));
    });
    RW_VAR written = var;
    written.station = isMulti() ? var.station : m_settings.defaultStation;
    written.address = PLCAddressChangeIntef(var.area, var.name2);
    if (!isWired() || written.address < 0) {
        check(result == 0 && PLC_driver.writeList.size() == before, "a refused write changes nothing");
    } else if (m_settings.hostWriteMode != queueWrites) {
        check(result == 1 && PLC_driver.writeList.size() == before, "a write to the memory queues nothing");
        written.count = std::min(var.count, most(var.area, elementsOfArea));
        m_memory.mirror(written);
    } else {
        checkQueued(result, written, before);
    }
    m_memory.compare(m_careful);
}

void CheckedDriver::checkQueued(int result, const RW_VAR& var, int before)
{
    const bool known = var.area >= 1 && var.area < areaCount;
    const int count = std::min(var.count, most(var.area, 2 * elementsOfArea));
    const int elements = var.area == doubleWordArea ? (count + 1) / 2 : count;
    const bool queues = known && elements > 0;
    check(result == (queues ? PLC_driver.writeList.size() : 0), "a queued write gives the size of the list");
    checkGrowth(before, PLC_driver.writeList.size(), queues ? elements : 0, false);
    if (queues && PLC_driver.lastFailed != 0)
        mirrorQueued(var, elements);
}

// Once a reply failed, the pieces are mirrored as they are queued: bits one by one.
void CheckedDriver::mirrorQueued(const RW_VAR& var, int elements)
{
    const int bytes = var.area == doubleWordArea ? 4 : 2;
    RW_VAR piece = var;
    if (var.area > bitOfWordArea) {
        piece.count = elements;
        piece.data = var.data.leftJustified(elements * bytes, '\0', true);
        return m_memory.mirror(piece);
    }
    piece.count = 1;
    for (int i = 0; i < elements; ++i) {
        piece.address =
            static_cast<int>(static_cast<unsigned int>(var.address) + static_cast<unsigned int>(i));
        piece.data = QByteArray(1, i < var.data.size() ? var.data.at(i) : '\0');
        m_memory.mirror(piece);
    }
}

void CheckedDriver::getRegister(const RW_VAR& var)
{
    const QByteArray untouched("untouched");
    QString text = var.name2;
    QByteArray out = untouched;
    unsigned int result = 2;
    callAside([&] { result = GetRegisterData(0, var.area, &text, var.station, &out, var.count); });
    const int element = PLCAddressChangeIntef(var.area, var.name2);
    if (!isWired() || element < 0) {
        check(result == 0 && out == untouched, "a refused read leaves the output alone");
        return;
    }
    check(result == 1, "a register is read");
    const int count = std::min(std::max(var.count, 0), most(var.area, elementsOfArea + 1));
    if (count <= slowRead || isMulti())
        check(out == m_memory.read(var.area, var.station, element, count),
              "registers read as they are stored");
    m_memory.compare(false);
}

void CheckedDriver::callWithNulls()
{
    QString text = QStringLiteral("0");
    QByteArray bytes;
    int sizes[2] = {0, 0};
    long long refused = 0;
    callAside([&] {
        sizes[0] = AddListReadVar(nullptr);
        sizes[1] = AddListWriteVar(nullptr, 0);
        refused += AddListOnceReadVar(nullptr, 0) + ReCreatReadVarList(nullptr);
        refused += SetRegisterData(nullptr, 9, &text, 1, &bytes, 1, 0, 0);
        refused += SetRegisterData(&text, 9, nullptr, 1, &bytes, 1, 0, 0);
        refused += SetRegisterData(&text, 9, &text, 1, nullptr, 1, 0, 0);
        refused += GetRegisterData(0, 9, nullptr, 1, &bytes, 1);
        refused += GetRegisterData(0, 9, &text, 1, nullptr, 1);
    });
    check(sizes[0] == PLC_driver.readList.size() && sizes[1] == PLC_driver.writeList.size(),
          "a null record leaves the list as it is");
    check(refused == 0, "null is refused");
    check(QueryFinishFlag() == 1, "the driver has always finished");
}

} // namespace fuzz
