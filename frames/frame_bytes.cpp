#include "frames/frame_bytes.h"

#include "driver/modbus_rtu_master.h"

void Put16(QByteArray& bytes, int value)
{
    bytes.append(static_cast<char>((value >> 8) & 0xFF));
    bytes.append(static_cast<char>(value & 0xFF));
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

void QueueFrame(const RW_VAR& request, const QByteArray& frame, int replyLength, int dataOffset,
                int dataLength)
{
    const bool answered = request.station != 0;
    Protocol protocol;
    protocol.frame = frame;
    protocol.frameLength = frame.size();
    protocol.replyLength = answered ? replyLength : 0;
    protocol.dataOffset = answered ? dataOffset : 0;
    protocol.dataLength = answered ? dataLength : 0;
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
