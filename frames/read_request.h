// SPDX-License-Identifier: MIT
/// \file
/// \brief Builds Modbus TCP read frames.
///
/// Called by the scheduler with listMutex held; the frame goes to the tail of protocolList and
/// COMINFO::framesExpected/framesReceived are set. A request whose area cannot be read queues nothing.
#ifndef FRAMES_READ_REQUEST_H
#define FRAMES_READ_REQUEST_H

#include "driver/modbus_rtu_master.h"

/// The name that the scheduler calls; forwards to ReadAnalog().
void ReadRegister(RW_VAR* request) PLC_REQUIRES(PLC_driver.listMutex, PLC_driver.communicationTurn);

/// Queues one 12-byte read frame. Address and count are taken modulo 65536; there is no upper limit. Area 14
/// fetches count - 1 double words, and one for a count of 0 or 1. The request is not changed.
void ReadAnalog(RW_VAR* request) PLC_REQUIRES(PLC_driver.listMutex, PLC_driver.communicationTurn);

#endif
