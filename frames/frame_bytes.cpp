// SPDX-License-Identifier: MIT
#include "frames/frame_bytes.h"

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

QByteArray BeginFrame(QByteArray room, int station, FunctionCode function, int modbusAddress,
                      int bytesAfterAddress)
{
    QByteArray frame;
    frame.swap(room);
    if (frame.size() != FRAME_VALUE_OFFSET + bytesAfterAddress) // mostly a frame was like the one before
        frame.resize(FRAME_VALUE_OFFSET + bytesAfterAddress);
    char* bytes = frame.data();
    Set16(bytes, 0); // requests are never numbered
    Set16(bytes + PROTOCOL_OFFSET, 0);
    Set16(bytes + MBAP_LENGTH_OFFSET, frame.size() - MBAP_LENGTH_END);
    bytes[UNIT_OFFSET] = static_cast<char>(station & 0xFF);
    bytes[FUNCTION_OFFSET] = static_cast<char>(function);
    Set16(bytes + ADDRESS_OFFSET, modbusAddress);
    return frame;
}
