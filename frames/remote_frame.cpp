// SPDX-License-Identifier: MIT
#include "frames/remote_frame.h"

#include "frames/frame_bytes.h"
#include "frames/frame_queue.h"
#include "image/image_write.h"

#include <algorithm>

namespace
{

const int HEADER_BYTES = 21;
const int SUM_BYTES = 1;

// Counts come from the runtime and may be anything: sums and products wrap at 2^32.
int Wrapped(unsigned int value)
{
    return static_cast<int>(value);
}

// CalSUM() takes 65535 bytes at most, a value may be longer.
int SumOf(const QByteArray& frame)
{
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(frame.constData());
    int sum = 0;
    for (int at = 0; at < frame.size(); at += 0xFFFF) {
        const int length = std::min(frame.size() - at, 0xFFFF);
        sum += CalSUM(bytes + at, static_cast<unsigned short>(length)) & 0xFF;
    }
    return sum & 0xFF;
}

QByteArray RemoteFrame(const RW_VAR& request, const QByteArray& data)
{
    const int length = HEADER_BYTES + data.size() + SUM_BYTES;
    QByteArray frame;
    frame.reserve(length);
    frame.append(static_cast<char>(length & 0xFF));
    frame.append(static_cast<char>(request.hostKey & 0xFF));
    frame.append(static_cast<char>(request.accessFlag & 0xFF));
    frame.append(static_cast<char>(request.stationGroup & 0xFF));
    frame.append(static_cast<char>(request.station & 0xFF));
    Put16(frame, request.area);
    Put32(frame, request.address);
    Put16(frame, request.count);
    Put32(frame, request.storeSelector);
    Put32(frame, request.spare13);
    frame.append(data);
    frame.append(static_cast<char>(SumOf(frame)));
    return frame;
}

// Registers that a read of double words fetches: the count is one more than its elements, as in Modbus
// frames.
int RegistersOfDoubleWords(int count)
{
    return count > 1 ? Wrapped(2u * (static_cast<unsigned int>(count) - 1u)) : 2;
}

int DataBytesOf(const Area& area, int count)
{
    const unsigned int n = static_cast<unsigned int>(count);
    if (area.kind == Area::Bit)
        return Wrapped(n + 7u) / 8;
    return Wrapped(2u * n);
}

} // namespace

void Remote_ReadVar(RW_VAR* request)
{
    const Area* area = FindArea(request->area);
    if (!area || area->read == FC_NONE)
        return;
    QByteArray frame = RemoteFrame(*request, QByteArray());
    const bool doubleWords = area->kind == Area::DoubleWord;
    const int count = doubleWords ? RegistersOfDoubleWords(request->count) : request->count;
    const int dataBytes = DataBytesOf(*area, count);
    const int replyLength = Wrapped(static_cast<unsigned int>(dataBytes) + REPLY_DATA_OFFSET);
    const ReplyShape reply = {replyLength, REPLY_DATA_OFFSET, dataBytes};
    RW_VAR& queued = QueueFrame(*request, std::move(frame), reply);
    queued.count = count;
    request->count = count;
    ExpectFrames(1);
}

void Remote_WriteVar(RW_VAR* request)
{
    QByteArray frame = RemoteFrame(*request, request->data);
    const ReplyShape reply = {WRITE_REPLY_LENGTH, 0, 0};
    QueueFrame(*request, std::move(frame), UnlessBroadcast(request->station, reply));
    ExpectFrames(1);
    WriteDataToLocal(request);
}
