// SPDX-License-Identifier: MIT
#include "fuzz/frame_checks.h"

#include "driver/plcdriver.h"
#include "fuzz/check.h"

namespace fuzz
{

namespace
{

const int readCoils = 1;
const int readRegisters = 3;
const int writeCoil = 5;
const int writeRegister = 6;
const int writeRegisters = 16;

const int lengthAt = 4;
const int unitAt = 6;
const int functionAt = 7;
const int quantityAt = 10;
const int byteCountAt = 12;
const int plainSize = 12;
const int replyHead = 9;
const int shortestRemote = 22;

int byteAt(const QByteArray& bytes, int at)
{
    return static_cast<unsigned char>(bytes.at(at));
}

int wordAt(const QByteArray& bytes, int at)
{
    return byteAt(bytes, at) << 8 | byteAt(bytes, at + 1);
}

void checkModbusHeader(const QByteArray& bytes, int station)
{
    check(bytes.size() >= plainSize, "a Modbus frame has a header, an address and a value");
    check(wordAt(bytes, 0) == 0 && wordAt(bytes, 2) == 0, "frames are not numbered and are Modbus");
    check(wordAt(bytes, lengthAt) == ((bytes.size() - 6) & 0xFFFF), "the length field counts what follows");
    check(byteAt(bytes, unitAt) == (station & 0xFF), "the unit is the request's station");
}

void checkModbusBody(const QByteArray& bytes)
{
    const int function = byteAt(bytes, functionAt);
    if (function == writeRegisters) {
        const int registers = wordAt(bytes, quantityAt);
        check(bytes.size() == byteCountAt + 1 + 2 * registers,
              "a write carries as many registers as it says");
        check(byteAt(bytes, byteCountAt) == ((2 * registers) & 0xFF), "the byte count is that, modulo 256");
        return;
    }
    check(function == readCoils || function == readRegisters || function == writeCoil ||
              function == writeRegister,
          "no other functions are used");
    check(bytes.size() == plainSize, "frames without a list of values have 12 bytes");
    if (function == writeCoil)
        check(wordAt(bytes, quantityAt) == 0 || wordAt(bytes, quantityAt) == 0xFF00, "a coil is on or off");
}

// Broadcasts are never answered; a read is answered with its data, a write with its first bytes.
void checkModbusReply(const Protocol& frame)
{
    const int function = byteAt(frame.frame, functionAt);
    if (frame.var.station == 0) {
        check(frame.replyLength == 0 && frame.dataOffset == 0 && frame.dataLength == 0,
              "no reply to a broadcast is waited for");
    } else if (function == readCoils || function == readRegisters) {
        check(frame.dataOffset == replyHead && frame.replyLength == replyHead + frame.dataLength,
              "the reply to a read is its head and its data");
        check(frame.dataLength >= 0 && frame.dataLength <= 0xFFFF, "data bytes are counted in 16 bits");
    } else {
        check(frame.replyLength == plainSize && frame.dataOffset == 0 && frame.dataLength == 0,
              "the reply to a write repeats it");
    }
}

void checkRemoteFrame(const Protocol& frame)
{
    const QByteArray& bytes = frame.frame;
    check(bytes.size() >= shortestRemote && byteAt(bytes, 0) == (bytes.size() & 0xFF),
          "a remote frame says its size, modulo 256");
    int sum = 0;
    for (int i = 0; i < bytes.size() - 1; ++i)
        sum = (sum + byteAt(bytes, i)) & 0xFF;
    check(byteAt(bytes, bytes.size() - 1) == sum, "a remote frame ends with its sum");
    check(byteAt(bytes, 4) == (frame.var.station & 0xFF), "a remote frame names its station");
}

} // namespace

void checkFrame(const Protocol& frame, bool remote)
{
    check(frame.frameLength == frame.frame.size(), "the length of a frame is its size");
    check(frame.extra0 == 0 && frame.extra1 == 0 && frame.extra2 == 0, "the spare words are 0");
    if (remote)
        return checkRemoteFrame(frame);
    checkModbusHeader(frame.frame, frame.var.station);
    checkModbusBody(frame.frame);
    checkModbusReply(frame);
}

} // namespace fuzz
