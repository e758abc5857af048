// SPDX-License-Identifier: MIT
/// \file
/// \brief How each request in one of the driver's two queues ends.
#ifndef RUNTIME_CYCLE_REQUEST_LEDGER_H
#define RUNTIME_CYCLE_REQUEST_LEDGER_H

#include "runtime/cycle/request_end.h"
#include "runtime/model/variable.h"

#include <deque>
#include <vector>

namespace plc
{

struct LedgerEntry {
    int key = 0;       ///< unique; the request's hostSubKey
    Variable elements; ///< station filled in
};

struct EndedRequest {
    int key = 0;
    RequestEnd end = RequestEnd::OutOfStep;
};

/// An exact copy of the driver's write list or list of one-shot reads.
///
/// The driver throws requests away without a word: writes that a newer one replaces, requests of a station
/// that is switched off, and whatever waits when a request is given up. All of it shows in the size of the
/// list. So after each call to the driver that may change the list, with no other call in between, the
/// matching function here is told the size and says which requests have ended, each exactly once.
class RequestLedger
{
public:
    using Ended = std::vector<EndedRequest>;

    explicit RequestLedger(bool multiStation) : m_multiStation(multiStation) {}

    bool isEmpty() const { return m_entries.empty(); }
    int size() const { return static_cast<int>(m_entries.size()); }

    /// \return true when the list has a request of \a station
    bool holds(int station) const;

    /// \return true while the driver takes a further request; beyond that it drops it
    bool hasRoom() const;

    /// A newer write takes the place in the queue of the one that it replaces.
    /// \return true when it would so be sent before an older write to some of the same elements, and be
    ///         undone by it
    bool wouldOvertake(const Variable& elements) const;

    /// After the request was queued.
    Ended queued(const LedgerEntry& entry, int listSize);

    /// After the driver was polled for the next frame.
    Ended polled(int listSize);

    /// After the driver took the reply to the head of this list as good. Nothing ends while the request
    /// has further frames to come: then the list is as long as before.
    Ended answered(int listSize);

    /// After the driver gave up a request of \a station. \a head: it was the head of this list.
    Ended givenUp(bool head, int station, int listSize);

private:
    std::size_t equalEntry(const Variable& elements) const;
    void end(std::size_t index, RequestEnd how, Ended* ended);
    void compare(int listSize, Ended* ended);

    const bool m_multiStation;
    std::deque<LedgerEntry> m_entries;
};

} // namespace plc

#endif
