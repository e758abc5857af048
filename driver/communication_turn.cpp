#include "driver/communication_turn.h"

#include <chrono>
#include <thread>

namespace
{

// A call takes microseconds: it has mostly ended before a sleep would have. Where it has not, its thread may
// need this very processor.
const int ROUNDS_BEFORE_SLEEPING = 1000;
const int SLEEP_MICROSECONDS = 50;

void WaitALittle(int round)
{
    if (round >= ROUNDS_BEFORE_SLEEPING)
        std::this_thread::sleep_for(std::chrono::microseconds(SLEEP_MICROSECONDS));
}

} // namespace

CommunicationTurn::CommunicationTurn() PLC_UNCHECKED("the count is what it acquires")
{
    ++PLC_driver.communicationTurn;
}

CommunicationTurn::~CommunicationTurn() PLC_UNCHECKED("the count is what it releases")
{
    ++PLC_driver.communicationTurn;
}

void LetCommunicationPass()
{
    const unsigned int turn = PLC_driver.communicationTurn;
    const bool inside = turn % 2 != 0;
    for (int round = 0; inside && PLC_driver.communicationTurn == turn; ++round)
        WaitALittle(round);
}
