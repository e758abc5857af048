// SPDX-License-Identifier: MIT
#include "runtime/modbus/exception_words.h"

#include "runtime/modbus/protocol.h"

namespace plc
{

namespace
{

struct ExceptionWords {
    ExceptionCode code;
    const char* words;
};

// The names are those of the Modbus application protocol.
const ExceptionWords exceptions[] = {
    {IllegalFunction, "illegal function"},
    {IllegalDataAddress, "illegal data address"},
    {IllegalDataValue, "illegal data value"},
    {DeviceFailure, "server device failure"},
    {Acknowledge, "acknowledge: accepted, still at work"},
    {DeviceBusy, "server device busy"},
    {MemoryParityError, "memory parity error"},
    {GatewayPathUnavailable, "gateway path unavailable"},
    {GatewayTargetSilent, "gateway target device failed to respond"},
};

} // namespace

QString exceptionWords(int code)
{
    for (const ExceptionWords& row : exceptions) {
        if (row.code == code)
            return QLatin1String(row.words);
    }
    return QStringLiteral("an exception that Modbus does not name");
}

} // namespace plc
