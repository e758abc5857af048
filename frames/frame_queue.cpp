// SPDX-License-Identifier: MIT
#include "frames/frame_queue.h"

namespace
{

const Protocol blank = Protocol();

// A record at the end of protocolList, to be filled in. Mostly it is the one that was answered last, for what it has
// is worth keeping: its own memory and that of the list.
Protocol& NextRecord() PLC_REQUIRES(PLC_driver.communicationTurn)
{
    QList<Protocol>& frames = PLC_driver.protocolList;
    if (frames.isEmpty() && !PLC_driver.answeredList.isEmpty())
        frames.swap(PLC_driver.answeredList);
    else
        frames.append(blank);
    return frames.last();
}

} // namespace

QByteArray TakeSpareFrame()
{
    QByteArray spare;
    if (!PLC_driver.answeredList.isEmpty())
        spare.swap(PLC_driver.answeredList.first().frame);
    return spare;
}

RW_VAR& QueueFrame(const RW_VAR& request, QByteArray frame, ReplyShape reply)
{
    // Filled in where it stays, and the request moved there: each copy would count references of its strings
    // and data.
    Protocol& protocol = NextRecord();
    protocol.frameLength = frame.size();
    protocol.frame.swap(frame);
    protocol.replyLength = reply.length;
    protocol.dataOffset = reply.dataOffset;
    protocol.dataLength = reply.dataLength;
    protocol.var = RW_VAR(request);
    protocol.extra0 = protocol.extra1 = protocol.extra2 = 0;
    return protocol.var;
}

void ExpectFrames(int frames)
{
    PLC_driver.comInfo->framesReceived = 0;
    PLC_driver.comInfo->framesExpected = frames;
}
