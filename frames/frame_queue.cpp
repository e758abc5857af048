// SPDX-License-Identifier: MIT
#include "frames/frame_queue.h"

ReplyShape UnlessBroadcast(int station, ReplyShape shape)
{
    const ReplyShape none = {0, 0, 0};
    return station == 0 ? none : shape;
}

RW_VAR& QueueFrame(const RW_VAR& request, QByteArray frame, ReplyShape reply)
{
    // Filled in where it stays, and the request moved there: each copy would count references of its strings
    // and data.
    PLC_driver.protocolList.append(Protocol());
    Protocol& protocol = PLC_driver.protocolList.last();
    protocol.frameLength = frame.size();
    protocol.frame.swap(frame);
    protocol.replyLength = reply.length;
    protocol.dataOffset = reply.dataOffset;
    protocol.dataLength = reply.dataLength;
    protocol.var = RW_VAR(request);
    return protocol.var;
}

void ExpectFrames(int frames)
{
    PLC_driver.comInfo->framesReceived = 0;
    PLC_driver.comInfo->framesExpected = frames;
}
