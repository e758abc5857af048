// SPDX-License-Identifier: MIT
/// \file
/// \brief Builds remote frames, which replace Modbus TCP while COMINFO::remoteMode is set.
///
/// A remote frame carries the request record's own fields, multi-byte ones high byte first:
///
/// | byte      | field                                                      |
/// |-----------|------------------------------------------------------------|
/// | 0         | length of the frame, sum byte included, modulo 256         |
/// | 1         | hostKey, low byte                                          |
/// | 2         | accessFlag, low byte                                       |
/// | 3         | stationGroup, low byte                                     |
/// | 4         | station, low byte                                          |
/// | 5-6       | area, low 16 bits                                          |
/// | 7-10      | address                                                    |
/// | 11-12     | count, low 16 bits                                         |
/// | 13-16     | storeSelector                                              |
/// | 17-20     | spare13                                                    |
/// | 21..      | writes only: the value bytes as stored                     |
/// | last      | low byte of CalSUM() over all bytes before                 |
///
/// Called by the scheduler with listMutex held; the frame goes to the tail of protocolList and
/// COMINFO::framesExpected/framesReceived are set.
#ifndef FRAMES_REMOTE_FRAME_H
#define FRAMES_REMOTE_FRAME_H

#include "driver/modbus_rtu_master.h"

/// Queues one 22-byte read frame. Areas that cannot be read queue nothing. A broadcast awaits its reply like
/// any other read. In area 14 the request's count becomes the number of registers read, 2 x (count - 1) and
/// at least 2, after the frame was built: the change stays in the caller's record, and a record that is built
/// again is rewritten again. On purpose: reply handling takes the count as registers.
void Remote_ReadVar(RW_VAR* request) PLC_REQUIRES(PLC_driver.listMutex, PLC_driver.communicationTurn);

/// Queues one write frame of 22 bytes and the value bytes, for any area code, and mirrors the value into the
/// image, also after a failed reply. listDoneCallback is not called.
void Remote_WriteVar(RW_VAR* request) PLC_REQUIRES(PLC_driver.listMutex, PLC_driver.communicationTurn);

#endif
