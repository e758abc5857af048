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

void PadTo(QByteArray& bytes, int size)
{
    if (bytes.size() < size)
        bytes.append(QByteArray(size - bytes.size(), '\0'));
}

QByteArray BeginFrame(int station, FunctionCode function, int modbusAddress, int bytesAfterAddress)
{
    // The zeros are the numbers of the transaction, for requests are never numbered, and of the protocol.
    QByteArray frame(FRAME_VALUE_OFFSET + bytesAfterAddress, '\0');
    char* bytes = frame.data();
    Set16(bytes + MBAP_LENGTH_OFFSET, frame.size() - MBAP_LENGTH_END);
    bytes[UNIT_OFFSET] = static_cast<char>(station & 0xFF);
    bytes[FUNCTION_OFFSET] = static_cast<char>(function);
    Set16(bytes + ADDRESS_OFFSET, modbusAddress);
    return frame;
}

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
