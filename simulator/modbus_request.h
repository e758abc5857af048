// SPDX-License-Identifier: MIT
/// \file
/// \brief What a Modbus TCP request asks for, and whether it is one that can be served.
#ifndef SIMULATOR_MODBUS_REQUEST_H
#define SIMULATOR_MODBUS_REQUEST_H

#include "simulator/controller_memory.h"
#include "simulator/frame_bytes.h"

namespace simulator
{

constexpr std::size_t requestAddressOffset = 8;
constexpr std::size_t requestQuantityOffset = 10; ///< or the value, of a write of one element
constexpr std::size_t requestValuesOffset = 13;   ///< of a write of several elements, behind their byte count

constexpr std::size_t replyByteCountOffset = 8; ///< of a read; the values follow
constexpr std::size_t replyEchoOffset = 8;      ///< of a write: the address, then the value or the quantity
constexpr std::size_t writeReplySize = 12;
constexpr std::size_t exceptionReplySize = 9;

constexpr unsigned exceptionFlag = 0x80; ///< of the function code of a refusal

constexpr unsigned illegalFunction = 1;
constexpr unsigned illegalAddress = 2;
constexpr unsigned illegalValue = 3;
constexpr unsigned deviceFailure = 4;

/// One kind of request that is served.
struct ModbusFunction {
    enum Action { Read, WriteOne, WriteMany };
    int code;
    Action action;
    MemoryValue::Kind kind; ///< of the elements
    int maximum;            ///< quantity that Modbus allows
};

/// Null for a function that is not served. `code` as in a request.
const ModbusFunction* findFunction(int code);

/// Whether `bytes` are one whole frame of Modbus TCP: a header of its protocol, and as many bytes as it says.
bool isModbusFrame(const Bytes& bytes);

/// Whether quantity, byte count, value and size of a request of this function fit each other and Modbus. Looks at
/// nothing behind the end.
bool isWellFormed(const ModbusFunction& function, const Bytes& request);

/// Elements that a well-formed request reads or writes.
int quantityOf(const ModbusFunction& function, const Bytes& request);

/// Bytes of so many values in a frame: coils eight to a byte, registers two bytes each.
std::size_t valueBytes(MemoryValue::Kind kind, int quantity);

/// The size of the reply that whoever sends this frame waits for; that of an exception for a request that can only
/// be refused.
std::size_t expectedReplySize(const Bytes& request);

} // namespace simulator

#endif
