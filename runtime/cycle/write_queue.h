// SPDX-License-Identifier: MIT
/// \file
/// \brief Writes from the panel's threads into the driver's write list, and how each ends.
#ifndef RUNTIME_CYCLE_WRITE_QUEUE_H
#define RUNTIME_CYCLE_WRITE_QUEUE_H

#include "runtime/cycle/later_calls.h"
#include "runtime/cycle/request_ledger.h"
#include "runtime/host/driver_values.h"
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
class WriteQueue
{
public:
    /// Told of the elements of each request that has ended. \a doubtful: the driver may hold other values for them
    /// than the controller.
    using RequestEnded = std::function<void(const Variable& elements, bool doubtful)>;

    /// \param later takes the calls to those who want to be told of an end
    WriteQueue(const DriverCalls& calls, const Settings& settings, const RequestEnded& ended,
               LaterCalls& later);

    /// \param variable station filled in, and nothing against it (writeRefusal())
    /// \param done told of the outcome; may be empty
    Pending<WriteOutcome> add(const Variable& variable, const std::vector<quint32>& values,
                              const WriteDone& done = WriteDone());

    /// \return true when requests wait for room in the driver
    bool hasBacklog() const { return !m_backlog.empty(); }

    /// Hands the driver what it has room for. Writes to a station in \a stationsOff fail instead.
    /// What is for a station in \a stationsHeld waits, and whatever came behind it.
    void feed(const std::set<int>& stationsOff, const std::set<int>& stationsHeld);

    /// After ComCommunication().
    void polled()
    {
        if (!m_ledger.isEmpty()) // as it nearly always is, and then nothing can have ended
            settlePolled();
    }

    /// After DataCom() took a reply to a write as good.
    void answered();

    /// After DataCom() gave up a request of \a station. \a write: it was a write.
    void givenUp(bool write, int station, const Failure& why);

    /// A station does not answer: fails what waits for room, after givenUp() ended what the driver had.
    void lost(int station, const Failure& why);

    /// Fails everything that waits.
    void stop();

    /// \return true when the driver has a request of \a station
    bool driverHas(int station) const { return m_ledger.holds(station); }

    /// \return requests that have not ended, by station
    std::map<int, int> waitingByStation() const;

    /// \return requests that have not ended
    int waiting() const { return static_cast<int>(m_requests.size()); }

    /// \return true when a write to some elements of \a variable has not ended
    bool isWriting(const Variable& variable) const;

    long confirmedWrites() const { return m_confirmed; }
    long failedWrites() const { return m_failed; }

private:
    struct Job {
        Pending<WriteOutcome> pending;
        WriteOutcome outcome;
        WriteDone done;
        int left = 0;
    };
    struct Request {
        std::shared_ptr<Job> job;
        Variable elements;
        std::vector<quint32> values;
    };

    void settlePolled();
    int listSize() const;
    bool queue(int key, const Request& request);
    void settle(const RequestLedger::Ended& ended, const Failure& given);
    void end(int key, const Failure& failure);
    bool driverHolds(const Request& request) const;
    void finish(Job* job);

    const DriverCalls& m_calls;
    const Settings m_settings;
    const RequestEnded m_ended;
    LaterCalls& m_later;
    RequestLedger m_ledger;
    std::map<int, Request> m_requests; // by key: in the driver or waiting for room
    std::deque<int> m_backlog;         // keys of those that wait for room
    int m_nextKey = 1;
    long m_confirmed = 0;
    long m_failed = 0;
};

} // namespace plc

#endif
