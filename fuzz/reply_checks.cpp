// SPDX-License-Identifier: MIT
#include "fuzz/reply_checks.h"

#include "fuzz/check.h"
#include "fuzz/driver_areas.h"

#include <algorithm>

namespace fuzz
{

namespace
{

const int valueAt = 10; // of a frame that writes one register

int oneMore(int word)
{
    return static_cast<int>(static_cast<unsigned int>(word) + 1u);
}

bool isSameRequest(const RW_VAR& a, const RW_VAR& b)
{
    return a.hostKey == b.hostKey && a.hostSubKey == b.hostSubKey && a.accessFlag == b.accessFlag &&
           a.spare3 == b.spare3 && a.stationGroup == b.stationGroup && a.name == b.name &&
           a.name2 == b.name2 && a.area == b.area && a.address == b.address && a.station == b.station &&
           a.count == b.count && a.storeSelector == b.storeSelector && a.spare13 == b.spare13 &&
           a.data == b.data;
}

QueuedBit headOfWrites()
{
    QueuedBit bit;
    if (PLC_driver.writeList.isEmpty())
        return bit;
    const RW_VAR& head = PLC_driver.writeList.at(0);
    bit.queued = true;
    bit.hasValue = !head.data.isEmpty();
    bit.on = bit.hasValue && head.data.at(0) == 1;
    bit.address = head.address;
    return bit;
}

int failureCode(bool local, bool nothingCame, int hostKey)
{
    const int base = nothingCame ? (local ? PLC_LOCAL_NO_REPLY : PLC_REMOTE_NO_REPLY)
                                 : (local ? PLC_LOCAL_LENGTH : PLC_REMOTE_LENGTH);
    return base + 1 + (hostKey >= 1 && hostKey <= 11 ? hostKey : 0);
}

} // namespace

std::vector<int> stationsOf(const QList<RW_VAR>& list)
{
    std::vector<int> stations;
    for (int i = 0; i < list.size(); ++i)
        stations.push_back(list.at(i).station);
    return stations;
}

bool isSameFrame(const Protocol& a, const Protocol& b)
{
    return a.frame == b.frame && a.frameLength == b.frameLength && a.replyLength == b.replyLength &&
           a.dataOffset == b.dataOffset && a.dataLength == b.dataLength && isSameRequest(a.var, b.var);
}

ReplyExpectation::ReplyExpectation(const QByteArray* reply, int length)
    : m_outstanding(PLC_driver.comInfo && !PLC_driver.protocolList.isEmpty()), m_request(Protocol()),
      m_settings(COMINFO()), m_frames(PLC_driver.protocolList.size()), m_reads(PLC_driver.readList.size()),
      m_kind(PLC_driver.requestKind), m_writes(stationsOf(PLC_driver.writeList)),
      m_onceReads(stationsOf(PLC_driver.onceReadList))
{
    if (!m_outstanding)
        return;
    m_request = PLC_driver.protocolList.at(0);
    m_settings = *PLC_driver.comInfo;
    m_bit = headOfWrites();
    judge(reply, length);
}

// A bit is never written into a word that nobody read.
bool ReplyExpectation::lacksWord(const QByteArray* reply) const
{
    const RW_VAR& var = m_request.var;
    return var.area == bitOfWordArea && var.storeSelector == -1 && m_frames > 1 &&
           dataOf(m_request, reply).size() < 2;
}

// Lengths alone are judged; what the bytes say is the runtime's business.
void ReplyExpectation::judge(const QByteArray* reply, int length)
{
    const RW_VAR& var = m_request.var;
    const int expected = m_request.replyLength;
    m_local = var.stationGroup == m_settings.localStation;
    m_good = (length == 0 ? expected == 0 : expected == length || expected == -1) && !lacksWord(reply);
    m_filed = m_good && (m_local ? var.accessFlag == 0 : var.storeSelector == -1);
    const int received = m_settings.framesReceived;
    if (m_good) {
        const bool plain = m_local || (var.storeSelector == -1 && received != 1);
        m_code = plain ? PLC_DONE : PLC_REMOTE_DONE;
        m_finished = oneMore(received) >= m_settings.framesExpected;
        return;
    }
    m_final = oneMore(m_settings.failCount) > m_settings.retryLimit;
    m_finished = m_final;
    m_code = m_final ? failureCode(m_local, length == 0 && expected != 0, var.hostKey) : int(PLC_RETRYING);
}

void ReplyExpectation::compare(const RW_VAR* result, const QByteArray* reply,
                               const Callbacks& callbacks) const
{
    check(result == &PLC_driver.retVar, "every reply is answered with the one result record");
    check(result->data.isEmpty(), "the result record never holds value bytes");
    check(result->result == m_code, "the result code is that of the length and of the request");
    compareFrames(reply);
    compareLists();
    compareCallbacks(callbacks);
}

void ReplyExpectation::compareFrames(const QByteArray* reply) const
{
    if (!m_outstanding)
        check(PLC_driver.protocolList.size() == m_frames, "a reply to nothing changes nothing");
    else if (m_good)
        compareSuccess(reply);
    else
        compareFailure();
}

void ReplyExpectation::compareSuccess(const QByteArray* reply) const
{
    check(PLC_driver.protocolList.size() == m_frames - 1, "a good reply ends its frame and no other");
    check(PLC_driver.lastFailed == 0, "a good reply is noted");
    check(PLC_driver.comInfo->failCount == m_settings.failCount, "a good reply leaves the count of failures");
    check(PLC_driver.comInfo->framesReceived == oneMore(m_settings.framesReceived), "replies are counted");
    // The word that was read, with the bit in it, goes out next.
    const QByteArray data = dataOf(m_request, reply);
    const bool multi = m_settings.multiStation != 0;
    if (!m_filed || m_request.var.area != bitOfWordArea || m_request.var.storeSelector != -1 ||
        m_frames < 2 || (multi && !m_bit.queued))
        return;
    const unsigned int word = static_cast<unsigned int>(static_cast<unsigned char>(data.at(0)) << 8 |
                                                        static_cast<unsigned char>(data.at(1)));
    const QByteArray& frame = PLC_driver.protocolList.at(0).frame;
    const unsigned int sent = static_cast<unsigned int>(static_cast<unsigned char>(frame.at(valueAt)) << 8 |
                                                        static_cast<unsigned char>(frame.at(valueAt + 1)));
    check(sent == mergedWord(word, m_bit), "the write of a bit carries the word that was read");
}

void ReplyExpectation::compareFailure() const
{
    check(PLC_driver.lastFailed == 1, "a failure is noted");
    check(PLC_driver.comInfo->cycleDone == 0, "a failure ends no cycle");
    if (m_final) {
        check(PLC_driver.protocolList.isEmpty(), "a final failure drops all frames of its request");
        check(PLC_driver.comInfo->failCount == 0, "a final failure starts the count anew");
        return;
    }
    check(PLC_driver.comInfo->failCount == oneMore(m_settings.failCount), "failures are counted");
    check(PLC_driver.protocolList.size() == m_frames && isSameFrame(PLC_driver.protocolList.at(0), m_request),
          "a failed frame stays as it is, to be sent again");
}

// Entries that must be left of a list: without its finished head, and without those that a final failure
// purges.
int ReplyExpectation::left(const std::vector<int>& stations, int kind) const
{
    const int finished = m_finished && m_kind == kind && !stations.empty() ? 1 : 0;
    const auto from = stations.begin() + finished;
    if (!m_final)
        return static_cast<int>(stations.end() - from);
    if (m_settings.multiStation == 0)
        return 0;
    const int failed = PLC_driver.retVar.station;
    return static_cast<int>(stations.end() - from - std::count(from, stations.end(), failed));
}

void ReplyExpectation::compareLists() const
{
    check(PLC_driver.readList.size() == m_reads, "cyclic reads are never lost to a reply");
    check(PLC_driver.writeList.size() == left(m_writes, WRITE), "the write list loses what it must, no more");
    check(PLC_driver.onceReadList.size() == left(m_onceReads, ONCE_READ),
          "the list of one-shot reads loses what it must, no more");
}

void ReplyExpectation::compareCallbacks(const Callbacks& calls) const
{
    check(calls.listDone == 0 || m_final, "the list callback reports final failures");
    check(calls.listDone <= 1 && calls.onceReadDone <= 1, "a reply is reported once");
    if (calls.onceReadDone == 0)
        return;
    check(m_finished && m_local && m_kind == ONCE_READ && !m_onceReads.empty(),
          "the one-shot callback reports local one-shot reads that are finished");
    check(calls.lastStatus == (m_good ? 1 : 2), "the one-shot callback says how it ended");
}

} // namespace fuzz
