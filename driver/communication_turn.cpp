// SPDX-License-Identifier: MIT
#include "driver/communication_turn.h"

#include <chrono>
#include <thread>

namespace
{

typedef std::chrono::steady_clock Clock;

// A call takes microseconds: it has mostly ended before a sleep would have. Where it has not, its thread may need
// this very processor. One that takes a second waits for somebody else, whether the writer goes on or not.
const int ROUNDS_BEFORE_SLEEPING = 1000;
const int SLEEP_MICROSECONDS = 50; // the system makes it about twice as long
const int LONGEST_WAIT_SECONDS = 1;

void WaitALittle(int round)
{
    if (round >= ROUNDS_BEFORE_SLEEPING)
        std::this_thread::sleep_for(std::chrono::microseconds(SLEEP_MICROSECONDS));
}

} // namespace

void LetCommunicationPass()
{
    const TurnCount& now = PLC_driver.communicationTurn;
    const unsigned int turn = now;
    if (turn % 2 == 0) // nobody is inside
        return;
    const Clock::time_point end = Clock::now() + std::chrono::seconds(LONGEST_WAIT_SECONDS);
    for (int round = 0; now == turn && Clock::now() < end; ++round)
        WaitALittle(round);
}
