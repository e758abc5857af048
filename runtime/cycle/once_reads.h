// SPDX-License-Identifier: MIT
/// \file
/// \brief One-shot reads through the driver's list, and how each ends.
#ifndef RUNTIME_CYCLE_ONCE_READS_H
#define RUNTIME_CYCLE_ONCE_READS_H

#include "runtime/cycle/later_calls.h"
#include "runtime/cycle/request_ledger.h"
#include "runtime/host/driver_values.h"
#include "runtime/modbus/request_pieces.h"
#include "runtime/model/outcome.h"
#include "runtime/model/pending.h"
#include "runtime/model/settings.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>

namespace plc
{

/// Every function expects the lock that keeps all calls to the driver apart (see Runtime).
class OnceReads
{
public:
    /// \return how many elements to read instead of \a asked's own number, see CyclicValues::wholeBits()
    using WholeBits = std::function<int(const Variable& asked)>;

    /// \param later takes the calls to those who want to be told of an end
    OnceReads(const DriverCalls& calls, const Settings& settings, const WholeBits& wholeBits,
              LaterCalls& later);

    /// \param variable station filled in, and nothing against it (readRefusal())
    /// \param done told of the outcome; may be empty
    Pending<ReadOutcome> add(const Variable& variable, const ReadDone& done = ReadDone());

    /// \return true when requests wait for room in the driver
    bool hasBacklog() const { return !m_backlog.empty(); }

    /// Hands the driver a few requests at a time. Reads of a station in \a stationsOff fail instead.
    /// What is for a station in \a stationsHeld waits, and whatever came behind it.
    void feed(const std::set<int>& stationsOff, const std::set<int>& stationsHeld);

    /// After ComCommunication().
    void polled()
    {
        if (!m_ledger.isEmpty()) // as it nearly always is, and then nothing can have ended
            settlePolled();
    }

    /// The driver's callback for a request: 1 answered, 2 given up. Only notes it down.
    void note(int key, int status);

    /// After DataCom() took a reply to a one-shot read as good: takes the values out of the driver before
    /// anything else can change them there.
    void answered();

    /// After DataCom() gave up a request of \a station. \a onceRead: it was a one-shot read. Others that
    /// fell with it are queued again.
    void givenUp(bool onceRead, int station, const Failure& why);

    /// A station does not answer: fails what waits for it, after givenUp() queued again what the driver had.
    void lost(int station, const Failure& why);

    /// Fails everything that waits.
    void stop();

    /// \return true when the driver has a request of \a station
    bool driverHas(int station) const { return m_ledger.holds(station); }

    /// \return requests that have not ended, by station
    std::map<int, int> waitingByStation() const;

    /// \return requests that have not ended
    int waiting() const { return static_cast<int>(m_requests.size()); }

    long doneReads() const { return m_done; }
    long failedReads() const { return m_failed; }
    long queuedAgain() const { return m_queuedAgain; }

private:
    struct Job {
        Pending<ReadOutcome> pending;
        ReadOutcome outcome;
        ReadDone done;
        std::vector<std::vector<quint32>> parts;
        int left = 0;
    };
    struct Request {
        std::shared_ptr<Job> job;
        std::size_t part = 0;
        ReadPiece piece;
    };

    void settlePolled();
    int listSize() const;
    RW_VAR record(int key, const Variable& asked, int elements) const;
    void queue(int key, const Request& request);
    void settle(const RequestLedger::Ended& ended, const Failure& given);
    void take(int key);
    void again(const std::vector<int>& keys);
    void fail(int key, const Failure& failure);
    void finish(std::map<int, Request>::iterator request);
    void conclude(Job* job);

    const DriverCalls& m_calls;
    const Settings m_settings;
    const WholeBits m_wholeBits;
    LaterCalls& m_later;
    RequestLedger m_ledger;
    std::map<int, Request> m_requests; // by key: in the driver or waiting for their turn
    std::deque<int> m_backlog;         // keys of those that wait for their turn
    int m_notedKey = 0;
    int m_notedStatus = 0;
    int m_nextKey = 1;
    long m_done = 0;
    long m_failed = 0;
    long m_queuedAgain = 0;
};

} // namespace plc

#endif
