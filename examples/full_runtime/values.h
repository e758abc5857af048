// SPDX-License-Identifier: MIT
// How good the values are that the driver holds: it does not know their age, nor whether a written one was confirmed.
// Words of area 9. Has no lock: the account's guards it.
#ifndef VALUES_H
#define VALUES_H

#include <plcdriver/plcdriver.h>

#include <chrono>
#include <map>
#include <utility>

enum class State { NeverRead, Fresh, Stale, Unconfirmed };

const char* nameOf(State state);

class Values
{
public:
    // A good cyclic read was filed.
    void read(const RW_VAR& request);

    // A write was queued; it ended, however it did. What the controller has is known by the next read.
    void writeQueued(const RW_VAR& write);
    void writeEnded(const RW_VAR& write);

    // \return the worst of the elements
    State state(int station, int address, int count) const;

private:
    using Clock = std::chrono::steady_clock;

    struct Element {
        bool everRead = false;
        bool readSinceWritten = true;
        int writes = 0; // that have not ended
        Clock::time_point lastRead;
    };

    static State stateOf(const Element& element);

    std::map<std::pair<int, int>, Element> m_elements; // by station and address
};

#endif
