// SPDX-License-Identifier: MIT
/// \file
/// \brief Puts finished frames into protocolList. Communication thread.
#ifndef FRAMES_FRAME_QUEUE_H
#define FRAMES_FRAME_QUEUE_H

#include "driver/modbus_rtu_master.h"

/// What the reply to a frame looks like, in bytes.
struct ReplyShape {
    int length;     ///< the whole reply; 0: none is awaited
    int dataOffset; ///< first data byte
    int dataLength; ///< data bytes
};

/// \return \a shape, or all zeros for station 0: a Modbus broadcast is never answered
inline ReplyShape UnlessBroadcast(int station, ReplyShape shape)
{
    const ReplyShape none = {0, 0, 0};
    return station == 0 ? none : shape;
}

/// \return the bytes of the last frame that was answered, once: a frame that is built in their place takes no allocation,
///         unless the runtime still holds them
QByteArray TakeSpareFrame() PLC_REQUIRES(PLC_driver.communicationTurn);

/// Appends a frame for \a request to protocolList.
/// \return the frame's own copy of the request
RW_VAR& QueueFrame(const RW_VAR& request, QByteArray frame, ReplyShape reply)
    PLC_REQUIRES(PLC_driver.communicationTurn);

/// Tells reply handling how many replies make up the request just queued.
void ExpectFrames(int frames) PLC_REQUIRES(PLC_driver.listMutex, PLC_driver.communicationTurn);

#endif
