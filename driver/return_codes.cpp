// SPDX-License-Identifier: MIT
#include "driver/return_codes.h"

namespace
{

// Index = Outcome. Success codes stand as they are; failures are bases that the request's key refines.
struct OutcomeCode {
    int code;
    bool failure;
};

const OutcomeCode outcomeCodes[] = {
    {PLC_DONE, false},           // LOCAL_ACCEPTED
    {PLC_LOCAL_CHECK, true},     // LOCAL_CHECK_FAILED
    {PLC_LOCAL_NO_REPLY, true},  // LOCAL_NO_REPLY
    {PLC_LOCAL_LENGTH, true},    // LOCAL_WRONG_LENGTH
    {PLC_REMOTE_DONE, false},    // REMOTE_ACCEPTED
    {PLC_REMOTE_CHECK, true},    // REMOTE_CHECK_FAILED
    {PLC_REMOTE_NO_REPLY, true}, // REMOTE_NO_REPLY
    {PLC_REMOTE_LENGTH, true},   // REMOTE_WRONG_LENGTH
};
const int outcomeCount = sizeof outcomeCodes / sizeof outcomeCodes[0];

// Keys of the runtime that have a code of their own.
const int FIRST_FINE_KEY = 1;
const int LAST_FINE_KEY = 11;

} // namespace

int SwitchErrorReturn(int base)
{
    const int key = PLC_driver.protocolList.at(0).var.hostKey;
    const bool fine = key >= FIRST_FINE_KEY && key <= LAST_FINE_KEY;
    return base + 1 + (fine ? key : 0);
}

int GetDriverReturnValue(int outcome)
{
    if (outcome < 0 || outcome >= outcomeCount)
        return PLC_UNKNOWN_OUTCOME;
    const OutcomeCode& entry = outcomeCodes[outcome];
    return entry.failure ? SwitchErrorReturn(entry.code) : entry.code;
}
