// SPDX-License-Identifier: MIT
/// \file
/// \brief Lets the communication thread come between the pieces of a large write.
///
/// A mutex alone would not: it is free for a moment between two pieces, but whoever has just released it
/// takes it again before the thread that waits for it is awake.
#ifndef DRIVER_COMMUNICATION_TURN_H
#define DRIVER_COMMUNICATION_TURN_H

#include "driver/modbus_rtu_master.h"

/// Says, as long as it lives, that the communication thread is inside an entry point. One at a time.
class PLC_SCOPED_CAPABILITY CommunicationTurn
{
public:
    CommunicationTurn() PLC_ACQUIRE(PLC_driver.communicationTurn)
        PLC_UNCHECKED("the count is what it acquires")
    {
        Count();
    }
    ~CommunicationTurn() PLC_RELEASE() PLC_UNCHECKED("the count is what it releases") { Count(); }

private:
    CommunicationTurn(const CommunicationTurn&);
    CommunicationTurn& operator=(const CommunicationTurn&);

    // Only the communication thread counts, so that a plain load and store will do: they cost a request nothing.
    static void Count()
    {
        TurnCount& turn = PLC_driver.communicationTurn;
        turn.store(turn.load(std::memory_order_relaxed) + 1, std::memory_order_release);
    }
};

/// Waits until the call that the communication thread is inside of, if any, has ended, for a second at most. Later
/// calls are not waited for, so a thread that polls without pause does not hold up the writer either. No lock may
/// be held.
void LetCommunicationPass()
    PLC_EXCLUDES(PLC_driver.communicationTurn, PLC_driver.listMutex, PLC_driver.imageMutex);

#endif
