// SPDX-License-Identifier: MIT
/// \file
/// \brief The numbers of Modbus TCP: where the fields of a frame are, function codes, limits, exceptions.
///
/// The simulator, the tests and the fuzz targets have their own, which would notice a wrong one here.
#ifndef RUNTIME_MODBUS_PROTOCOL_H
#define RUNTIME_MODBUS_PROTOCOL_H

#include "runtime/model/settings.h"

namespace plc
{

inline constexpr int numberOffset = 0;   ///< transaction identifier
inline constexpr int protocolOffset = 2; ///< protocol identifier, 0 for Modbus
inline constexpr int lengthOffset = 4;   ///< bytes behind the length field itself
inline constexpr int headerToLength = 6; ///< bytes that the length does not count
inline constexpr int unitOffset = 6;
inline constexpr int functionOffset = 7;
inline constexpr int pduDataOffset = 8;

// Of requests.
inline constexpr int addressOffset = 8;         ///< the first coil or register
inline constexpr int quantityOffset = 10;       ///< how many of them
inline constexpr int singleValueOffset = 10;    ///< of a write of one
inline constexpr int multipleValuesOffset = 13; ///< of a write of several

// Of replies. That to a write repeats the request from addressOffset to before the values of several registers.
inline constexpr int byteCountOffset = 8; ///< of the reply to a read
inline constexpr int readDataOffset = 9;  ///< the same
inline constexpr int writeReplySize = 12;

// What the length field may say of a reply.
inline constexpr int shortestLength = 2; ///< unit and function code
inline constexpr int longestLength = 254;

enum FunctionCode {
    ReadCoils = 1,
    ReadRegisters = 3,
    WriteCoil = 5,
    WriteRegister = 6,
    WriteRegisters = 16,
    ReportServerId = 17,          ///< the driver sends neither this
    ReadDeviceIdentification = 43 ///< nor this
};

inline constexpr int exceptionFlag = 0x80; ///< in the function code of a reply

inline constexpr int coilOn = 0xFF00; ///< what is written to a coil to switch it on

inline constexpr int broadcastStation = 0; ///< every controller takes it, none answers

// What one request may carry.
inline constexpr int mostCoilsRead = 2000;
inline constexpr int mostRegistersRead = largestBlockCount;
inline constexpr int mostRegistersWritten = 123;

enum ExceptionCode {
    IllegalFunction = 1,
    IllegalDataAddress = 2,
    IllegalDataValue = 3,
    DeviceFailure = 4,
    Acknowledge = 5, ///< accepted; the controller is still at work
    DeviceBusy = 6,  ///< it is at work for somebody else
    MemoryParityError = 8,
    GatewayPathUnavailable = 10, ///< from a gateway, in place of the controller
    GatewayTargetSilent = 11     ///< the same: the controller does not answer it
};

/// \return true for an exception by which a gateway says that it cannot reach the controller
inline constexpr bool isFromGateway(int exception)
{
    return exception == GatewayPathUnavailable || exception == GatewayTargetSilent;
}

} // namespace plc

#endif
