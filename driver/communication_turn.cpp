// SPDX-License-Identifier: MIT
#include "driver/communication_turn.h"

#include <chrono>
#include <thread>

namespace
{

// A call takes microseconds: it has mostly ended before a sleep would have. Where it has not, its thread may need
// this very processor. One that takes a second waits for somebody else, whether the writer goes on or not.
const int ROUNDS_BEFORE_SLEEPING = 1000;
const int SLEEP_MICROSECONDS = 50;
const int MOST_ROUNDS = ROUNDS_BEFORE_SLEEPING + 1000 * 1000 / SLEEP_MICROSECONDS;

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
    const bool inside = turn % 2 != 0;
    for (int round = 0; inside && now == turn && round < MOST_ROUNDS; ++round)
        WaitALittle(round);
}
