// SPDX-License-Identifier: MIT
/// \file
/// \brief Builds Modbus TCP write frames.
///
/// Called by the scheduler with listMutex held; frames go to the tail of protocolList and
/// COMINFO::framesExpected/framesReceived are set.
#ifndef FRAMES_WRITE_REQUEST_H
#define FRAMES_WRITE_REQUEST_H

#include "driver/modbus_rtu_master.h"

/// Queues the frames of a write, tells the runtime (listDoneCallback), and mirrors the value into the image
/// unless the last reply failed. Area 0 and unknown areas do nothing at all.
void WriteRegister(RW_VAR* request) PLC_REQUIRES(PLC_driver.listMutex, PLC_driver.communicationTurn);

/// Queues one frame for areas 1..7 and 9..14. \a request->data is padded with zero bytes to what the frame
/// needs, in place. Address and count are taken modulo 65536; there is no upper limit.
void WriteAnalog(RW_VAR* request) PLC_REQUIRES(PLC_driver.listMutex, PLC_driver.communicationTurn);

/// Queues the two frames of a bit inside a word (area 8): a read of the word, then a write of it whose value
/// the reply to the read patches in. Nothing for station 0: a broadcast cannot be read.
void WriteBool_WordOfBit(RW_VAR* request) PLC_REQUIRES(PLC_driver.listMutex, PLC_driver.communicationTurn);

#endif
