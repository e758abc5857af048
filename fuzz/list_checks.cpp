// SPDX-License-Identifier: MIT
#include "fuzz/list_checks.h"

#include "fuzz/callbacks.h"
#include "fuzz/check.h"
#include "fuzz/driver_areas.h"
#include "fuzz/frame_checks.h"
#include "fuzz/reply_checks.h"

#include <algorithm>

namespace fuzz
{

namespace
{

// The checks have limits of their own, so that a wrong one of the driver shows.
const int listLimit = 1024;
const int longestRun = 5;

bool isOff(int station)
{
    return PLC_driver.stationMap.contains(station);
}

// A list may lose requests of switched-off stations from its front, and stops at the first of another.
void compareDiscarded(const std::vector<int>& before, const QList<RW_VAR>& list)
{
    const int lost = static_cast<int>(before.size()) - list.size();
    check(lost >= 0, "a poll queues nothing");
    for (int i = 0; i < lost; ++i)
        check(isOff(before[static_cast<std::size_t>(i)]), "only switched-off stations lose requests");
    check(lost == 0 || list.isEmpty() || !isOff(list.at(0).station),
          "requests of switched-off stations are discarded up to the first of another");
}

const QList<RW_VAR>& listInTurn()
{
    if (PLC_driver.requestKind == WRITE)
        return PLC_driver.writeList;
    return PLC_driver.requestKind == ONCE_READ ? PLC_driver.onceReadList : PLC_driver.readList;
}

long long limitOf(int area, const COMINFO& settings)
{
    return (isBitArea(area) ? 8LL : 1LL) * settings.maxBlockCount;
}

// Whether a cyclic read holds this element.
bool isRead(int area, int station, long long element)
{
    for (int i = 0; i < PLC_driver.readList.size(); ++i) {
        const RW_VAR& read = PLC_driver.readList.at(i);
        if (read.area == area && read.station == station && read.address <= element &&
            element < static_cast<long long>(read.address) + read.count)
            return true;
    }
    return false;
}

int servable(const HOST_VAR& variable)
{
    if (variable.area == bitOfWordArea)
        return std::min(variable.count, bitsOfWords);
    return std::min(variable.count, variable.area == doubleWordArea ? elementsOfArea + 1 : elementsOfArea);
}

// A variable that no block reads would keep its old value on the screen for ever. Its first, middle and last
// element are looked at.
void checkCovered(const HOST_VAR& variable, int station)
{
    const int first = PLCAddressChangeIntef(variable.area, variable.address);
    if (variable.area >= areaCount || first < 0)
        return;
    const bool bits = variable.area == bitOfWordArea;
    const int last = servable(variable) - 1;
    for (const int offset : {0, last / 2, last}) {
        const long long element = static_cast<long long>(first) + offset;
        check(isRead(bits ? wordArea : variable.area, station, bits ? element / 16 : element),
              "every element of every variable is read by some block");
    }
}

// Requests of station 255 of one area and station 0 of the next are merged as if they were of one: intended,
// and nothing is promised of them. Nor is it where counts of 0 or less are merged.
bool isPromised(const QList<HOST_VAR>& list, bool multi)
{
    for (const HOST_VAR& variable : list)
        if (variable.count < 1 || (multi && (variable.station == 0 || variable.station == 255)))
            return false;
    return true;
}

} // namespace

TurnExpectation::TurnExpectation()
    : m_reads(PLC_driver.readList.size()), m_writeRun(PLC_driver.writeRun),
      m_writes(stationsOf(PLC_driver.writeList)), m_onceReads(stationsOf(PLC_driver.onceReadList))
{
}

void TurnExpectation::compareUnchanged() const
{
    check(PLC_driver.readList.size() == m_reads &&
              PLC_driver.writeList.size() == static_cast<int>(m_writes.size()) &&
              PLC_driver.onceReadList.size() == static_cast<int>(m_onceReads.size()) &&
              PLC_driver.writeRun == m_writeRun && callbacks().listDone == 0,
          "a poll that builds nothing changes nothing");
}

bool TurnExpectation::builtWrite() const
{
    return PLC_driver.writeRun == m_writeRun + 1;
}

void TurnExpectation::compare(const COMINFO& settings) const
{
    check(PLC_driver.readList.size() == m_reads, "cyclic reads are never lost to a poll");
    compareDiscarded(m_writes, PLC_driver.writeList);
    compareDiscarded(m_onceReads, PLC_driver.onceReadList);
    check(PLC_driver.writeList.size() == static_cast<int>(m_writes.size()) ||
              PLC_driver.onceReadList.size() == static_cast<int>(m_onceReads.size()),
          "one list gets the turn");
    check(PLC_driver.writeRun >= 0 && PLC_driver.writeRun <= longestRun && PLC_driver.onceReadRun >= 0 &&
              PLC_driver.onceReadRun <= longestRun,
          "no more than five writes or one-shot reads go out in a row");
    if (!PLC_driver.protocolList.isEmpty())
        compareFrames(settings);
    compareCallbacks(settings);
}

// The frames are those of the head of the list whose turn it is; that head may have been changed on purpose,
// but not in what names it.
void TurnExpectation::compareFrames(const COMINFO& settings) const
{
    const int frames = PLC_driver.protocolList.size();
    check(settings.framesExpected == frames && settings.framesReceived == 0,
          "the settings say how many replies make up the request");
    check(!listInTurn().isEmpty(), "frames belong to a request that waits for them");
    const RW_VAR& head = listInTurn().at(0);
    const bool remote = settings.remoteMode != 0;
    const bool twoFrames = !remote && builtWrite() && head.area == bitOfWordArea;
    check(frames == (twoFrames ? 2 : 1), "only a bit inside a word takes two frames");
    check(!isOff(head.station), "nothing is sent to a switched-off station");
    for (int i = 0; i < frames; ++i) {
        const Protocol& frame = PLC_driver.protocolList.at(i);
        checkFrame(frame, remote);
        check(frame.var.hostKey == head.hostKey && frame.var.hostSubKey == head.hostSubKey &&
                  frame.var.area == head.area && frame.var.station == head.station &&
                  frame.var.stationGroup == head.stationGroup,
              "a frame knows the request that it was built for");
    }
}

void TurnExpectation::compareCallbacks(const COMINFO& settings) const
{
    check(callbacks().onceReadDone == 0, "a poll ends no one-shot read");
    const bool told = builtWrite() && settings.remoteMode == 0 && PLC_driver.writeList.at(0).area >= 1 &&
                      PLC_driver.writeList.at(0).area < areaCount && PLC_driver.listDoneCallback;
    check(callbacks().listDone == (told ? 1 : 0), "the runtime is told once of each write that is built");
}

void checkGrowth(int before, int after, int pieces, bool direct)
{
    if (direct) {
        check(after == before + 1, "a request that is added directly is always taken");
        return;
    }
    check(after >= before && after <= before + pieces, "a list grows by the pieces of the request at most");
    check(after <= std::max(before, listLimit), "no list grows beyond its limit");
}

void checkPieces(int first, const COMINFO& settings)
{
    const QList<RW_VAR>& list = PLC_driver.onceReadList;
    for (int i = first; i < list.size(); ++i) {
        const RW_VAR& piece = list.at(i);
        check(piece.count >= 1 &&
                  (settings.maxBlockCount < 1 || piece.count <= limitOf(piece.area, settings)),
              "no piece is longer than a block");
        check(piece.storeSelector == 0 && piece.spare13 == 0, "one-shot reads have no selector");
        check(settings.multiStation != 0 || piece.station == settings.defaultStation,
              "one-shot reads go to the configured station");
    }
}

void checkRebuilt(const QList<HOST_VAR>& list, const COMINFO& settings)
{
    const bool multi = settings.multiStation != 0;
    for (int i = 0; i < PLC_driver.readList.size(); ++i) {
        const RW_VAR& read = PLC_driver.readList.at(i);
        check(read.hostKey == 0 && read.hostSubKey == -1 && read.accessFlag == 0 && read.result == 0 &&
                  read.stationGroup == settings.localStation && read.data.isEmpty(),
              "a block is nobody's request: local, filed, without keys");
        check(read.address >= 0, "a block begins at an element");
    }
    if (!isPromised(list, multi))
        return;
    for (const HOST_VAR& variable : list)
        checkCovered(variable, multi ? variable.station : settings.defaultStation);
}

} // namespace fuzz
