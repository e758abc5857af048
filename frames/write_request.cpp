// SPDX-License-Identifier: MIT
#include "frames/write_request.h"

#include "driver/host_interface.h"
#include "frames/frame_bytes.h"
#include "frames/frame_queue.h"
#include "image/image_write.h"

#include <utility>

namespace
{

// Function codes 5, 6 and 16 are answered with an echo of the frame's first twelve bytes.
const ReplyShape echo = {WRITE_REPLY_LENGTH, 0, 0};

// Where the frames of several registers have their number of value bytes, and the values.
const int BYTE_COUNT_OFFSET = FRAME_VALUE_OFFSET + 2;
const int REGISTERS_OFFSET = BYTE_COUNT_OFFSET + 1;

// Register i of little-endian value bytes, high byte first.
void SetRegister(char* bytes, const QByteArray& data, int i)
{
    bytes[0] = data.at(2 * i + 1);
    bytes[1] = data.at(2 * i);
}

QByteArray CoilFrame(const RW_VAR& request, int modbusAddress) PLC_REQUIRES(PLC_driver.communicationTurn)
{
    const bool on = ByteAt(request.data, 0) == 1;
    QByteArray frame = BeginFrame(TakeSpareFrame(), request.station, FC_WRITE_SINGLE_COIL, modbusAddress, 2);
    Set16(frame.data() + FRAME_VALUE_OFFSET, on ? 0xFF00 : 0x0000);
    return frame;
}

QByteArray RegisterFrame(const RW_VAR& request, int modbusAddress) PLC_REQUIRES(PLC_driver.communicationTurn)
{
    QByteArray frame =
        BeginFrame(TakeSpareFrame(), request.station, FC_WRITE_SINGLE_REGISTER, modbusAddress, 2);
    SetRegister(frame.data() + FRAME_VALUE_OFFSET, request.data, 0);
    return frame;
}

QByteArray RegistersFrame(const RW_VAR& request, int modbusAddress, int registers)
    PLC_REQUIRES(PLC_driver.communicationTurn)
{
    QByteArray frame = BeginFrame(TakeSpareFrame(), request.station, FC_WRITE_MULTIPLE_REGISTERS,
                                  modbusAddress, 3 + 2 * registers);
    char* bytes = frame.data();
    Set16(bytes + FRAME_VALUE_OFFSET, registers);
    bytes[BYTE_COUNT_OFFSET] = static_cast<char>((2 * registers) & 0xFF); // wraps above 127, on purpose
    for (int i = 0; i < registers; ++i)
        SetRegister(bytes + REGISTERS_OFFSET + 2 * i, request.data, i);
    return frame;
}

// Pads the value of the request to what its frame carries, and builds the frame. Empty for a bit inside a
// word, which takes two frames.
QByteArray WriteFrame(const Area& area, RW_VAR& request) PLC_REQUIRES(PLC_driver.communicationTurn)
{
    const int element = request.address & 0xFFFF;
    const int count = request.count & 0xFFFF;
    switch (area.kind) {
    case Area::Bit: // only the first coil is written, whatever the count
        PadTo(request.data, count);
        return CoilFrame(request, area.base + element);
    case Area::Word:
        PadTo(request.data, 2 * (count < 1 ? 1 : count));
        return count < 2 ? RegisterFrame(request, area.base + element)
                         : RegistersFrame(request, area.base + element, count);
    case Area::DoubleWord: {
        const int registers = (2 * count) & 0xFFFF; // all elements, unlike a read; on purpose
        PadTo(request.data, 2 * registers);
        return RegistersFrame(request, area.base + 2 * element, registers);
    }
    case Area::BitOfWord:
    default:
        return QByteArray();
    }
}

} // namespace

void WriteRegister(RW_VAR* request)
{
    const Area* area = FindArea(request->area);
    if (!area || !area->written)
        return;
    if (area->kind == Area::BitOfWord)
        WriteBool_WordOfBit(request);
    else
        WriteAnalog(request);
    TellListDone(request->hostKey);
    // After a failed reply the value may never arrive, so the image keeps what it has.
    if (PLC_driver.lastFailed == 0)
        WriteDataToLocal(request);
}

void WriteAnalog(RW_VAR* request)
{
    const Area* area = FindArea(request->area);
    if (!area || !area->written)
        return;
    QByteArray frame = WriteFrame(*area, *request);
    if (frame.isEmpty())
        return;
    QueueFrame(*request, std::move(frame), UnlessBroadcast(request->station, echo));
    ExpectFrames(1);
}

void WriteBool_WordOfBit(RW_VAR* request)
{
    if (request->station == 0)
        return;
    const int word = (request->address / 16) & 0xFFFF;

    // Both are built before one is queued: the read never goes out without its write.
    QByteArray readFrame = BeginFrame(TakeSpareFrame(), request->station, FC_READ_HOLDING_REGISTERS, word, 2);
    Set16(readFrame.data() + FRAME_VALUE_OFFSET, 1);
    QByteArray writeFrame = BeginFrame(TakeSpareFrame(), request->station, FC_WRITE_SINGLE_REGISTER, word, 2);
    Set16(writeFrame.data() + FRAME_VALUE_OFFSET, 0);

    const ReplyShape oneRegister = {REPLY_DATA_OFFSET + 2, REPLY_DATA_OFFSET, 2};
    RW_VAR& reading = QueueFrame(*request, std::move(readFrame), oneRegister);
    reading.accessFlag = 0;
    reading.address = word;
    reading.storeSelector = -1; // marks the read-before-write

    // The reply to the read patches the word into this frame.
    RW_VAR& writing = QueueFrame(*request, std::move(writeFrame), echo);
    writing.accessFlag = 1;
    writing.storeSelector = 0;
    ExpectFrames(2);
}
