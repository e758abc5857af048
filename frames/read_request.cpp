// SPDX-License-Identifier: MIT
#include "frames/read_request.h"

#include "frames/frame_bytes.h"
#include "frames/frame_queue.h"

#include <utility>

namespace
{

// What a read frame says and what its reply brings; each value is kept to 16 bits.
struct ReadFrame {
    int modbusAddress;
    int quantity;
    int dataBytes;
};

ReadFrame ReadFrameOf(const Area& area, int element, int count)
{
    ReadFrame read;
    read.modbusAddress = area.base + element;
    read.quantity = count;
    read.dataBytes = 2 * count;
    if (area.kind == Area::Bit)
        read.dataBytes = (count + 7) / 8;
    if (area.kind == Area::DoubleWord) {
        // The count of this area is one more than the double words to fetch, on purpose: the read list is
        // sized that way.
        const int doubleWords = (count < 2 ? 2 : count) - 1;
        read.modbusAddress = area.base + 2 * element;
        read.quantity = 2 * doubleWords;
        read.dataBytes = 4 * doubleWords;
    }
    read.dataBytes &= 0xFFFF;
    return read;
}

} // namespace

void ReadRegister(RW_VAR* request)
{
    ReadAnalog(request);
}

void ReadAnalog(RW_VAR* request)
{
    const Area* area = FindArea(request->area);
    if (!area || area->read == FC_NONE)
        return;
    const ReadFrame read = ReadFrameOf(*area, request->address & 0xFFFF, request->count & 0xFFFF);
    QByteArray frame = BeginFrame(TakeSpareFrame(), request->station, area->read, read.modbusAddress, 2);
    Set16(frame.data() + FRAME_VALUE_OFFSET, read.quantity);
    const ReplyShape reply = {REPLY_DATA_OFFSET + read.dataBytes, REPLY_DATA_OFFSET, read.dataBytes};
    QueueFrame(*request, std::move(frame), UnlessBroadcast(request->station, reply));
    ExpectFrames(1);
}
