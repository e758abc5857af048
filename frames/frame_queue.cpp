// SPDX-License-Identifier: MIT
#include "frames/frame_queue.h"

namespace
{

const Protocol blank = Protocol();

} // namespace

RW_VAR& QueueFrame(const RW_VAR& request, QByteArray frame, ReplyShape reply)
{
    // Filled in where it stays, and the request moved there: each copy would count references of its strings
    // and data.
    PLC_driver.protocolList.append(blank);
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
