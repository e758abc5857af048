// SPDX-License-Identifier: MIT
/// \file
/// \brief Turns the outcome of a reply into the result code that the runtime sees.
#ifndef DRIVER_RETURN_CODES_H
#define DRIVER_RETURN_CODES_H

#include "driver/modbus_rtu_master.h"

/// How a reply was judged.
enum Outcome {
    LOCAL_ACCEPTED = 0, ///< local or remote reply accepted
    LOCAL_CHECK_FAILED = 1,
    LOCAL_NO_REPLY = 2,
    LOCAL_WRONG_LENGTH = 3,
    REMOTE_ACCEPTED = 4, ///< accepted but not filed, or second frame of a request
    REMOTE_CHECK_FAILED = 5,
    REMOTE_NO_REPLY = 6,
    REMOTE_WRONG_LENGTH = 7
};

/// \return the result code of an Outcome; PLC_UNKNOWN_OUTCOME for any other number. Failures need a frame in
///         protocolList. Communication thread.
int GetDriverReturnValue(int outcome) PLC_REQUIRES(PLC_driver.communicationTurn);

/// \return \a base plus the fine offset of the request in flight: 1 + hostKey for a hostKey of 1..11, else 1.
///         protocolList MUST NOT be empty. Communication thread.
int SwitchErrorReturn(int base) PLC_REQUIRES(PLC_driver.communicationTurn);

#endif
