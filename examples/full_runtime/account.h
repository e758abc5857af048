// SPDX-License-Identifier: MIT
// How each request ends: the driver drops some without a word. Its lock is held over every call of the driver that
// queues, sends or ends a request, and over the booking that belongs to it. It comes before the driver's locks, and is
// never held while the network is waited for.
#ifndef ACCOUNT_H
#define ACCOUNT_H

#include "values.h"

#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

enum class End {
    Done,   // the controller confirmed it
    Failed, // it was sent, and may have been carried out
    Unsent  // it never left the driver
};

class Account
{
public:
    // \param told of each write once, with the lock held: it notes it and returns
    Account(COMINFO& settings, std::function<void(int key, End end)> told)
        : m_settings(settings), m_told(std::move(told))
    {
    }

    // Any thread: queues words of area 9, at most maxBlockCount.
    // \return the write's key; 0 when it is refused, and nobody will be told
    int write(int station, int address, const std::vector<int>& words);

    // Any thread. \return "fresh 1 2 3" or, in place of words that are not known, "stale"
    std::string show(int station, int address, int count);

    // Communication thread: ComCommunication(); DataCom() and what its result means.
    const Protocol* poll();
    int finish(const RW_VAR& request, QByteArray reply);

    // Communication thread: no further write of the station is taken, and the driver discards those that wait.
    void refuse(int station);

    // Communication thread, when the driver's queues are empty: what is left of the station was discarded.
    void discarded(int station);
    void accept(int station);

private:
    void end(int key, End end);
    void endAll(int station);
    int writeTo(const RW_VAR& place) const;

    COMINFO& m_settings;
    const std::function<void(int key, End end)> m_told;
    std::mutex m_lock;
    std::map<int, RW_VAR> m_waiting; // by key: writes that are queued and have not ended
    std::set<int> m_refused;         // stations
    int m_lastKey = 11;              // up to 11 keys select the fine part of a result code
    Values m_values;
};

#endif
