#include "frames/frame_bytes.h"

#include "driver/modbus_rtu_master.h"

void Put16(QByteArray& bytes, int value)
{
    bytes.append(static_cast<char>((value >> 8) & 0xFF));
    bytes.append(static_cast<char>(value & 0xFF));
}

void Put32(QByteArray& bytes, int value)
{
    Put16(bytes, value >> 16);
    Put16(bytes, value);
}

void Set16(QByteArray& bytes, int at, int value)
{
    bytes[at] = static_cast<char>((value >> 8) & 0xFF);
    bytes[at + 1] = static_cast<char>(value & 0xFF);
}

void PadTo(QByteArray& bytes, int size)
{
    if (bytes.size() < size)
        bytes.append(QByteArray(size - bytes.size(), '\0'));
}

QByteArray BeginFrame(int station, FunctionCode function, int modbusAddress, int bytesAfterAddress)
{
    QByteArray frame;
    frame.reserve(FRAME_VALUE_OFFSET + bytesAfterAddress);
    Put16(frame, 0); // transaction: requests are never numbered
    Put16(frame, 0); // protocol: Modbus
    Put16(frame, FRAME_VALUE_OFFSET - MBAP_LENGTH_END + bytesAfterAddress);
    frame.append(static_cast<char>(station & 0xFF));
    frame.append(static_cast<char>(function));
    Put16(frame, modbusAddress);
    return frame;
}

ReplyShape UnlessBroadcast(int station, ReplyShape shape)
{
    const ReplyShape none = {0, 0, 0};
    return station == 0 ? none : shape;
}

void QueueFrame(const RW_VAR& request, const QByteArray& frame, ReplyShape reply)
{
    Protocol protocol;
    protocol.frame = frame;
    protocol.frameLength = frame.size();
    protocol.replyLength = reply.length;
    protocol.dataOffset = reply.dataOffset;
    protocol.dataLength = reply.dataLength;
    protocol.var = request;
    protocol.extra0 = 0;
    protocol.extra1 = 0;
    protocol.extra2 = 0;
    PLC_driver.protocolList.append(protocol);
}

void ExpectFrames(int frames)
{
    PLC_driver.comInfo->framesReceived = 0;
    PLC_driver.comInfo->framesExpected = frames;
}
