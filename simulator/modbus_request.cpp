// SPDX-License-Identifier: MIT
#include "simulator/modbus_request.h"

#include <algorithm>

namespace simulator
{

namespace
{

constexpr std::size_t byteCountOffset = 12;
constexpr std::size_t fixedSize = 12; // of every request without values of its own
constexpr int coilOn = 0xFF00;
constexpr int coilOff = 0;

// Codes and quantities are its own on purpose: those of the runtime, if wrong, would not show otherwise. Inputs are the
// same elements as coils and registers, for masters that ask for them by these functions.
constexpr ModbusFunction functions[] = {
    {1, ModbusFunction::Read, MemoryValue::Coil, 2000},
    {2, ModbusFunction::Read, MemoryValue::Coil, 2000},
    {3, ModbusFunction::Read, MemoryValue::Register, 125},
    {4, ModbusFunction::Read, MemoryValue::Register, 125},
    {5, ModbusFunction::WriteOne, MemoryValue::Coil, 1},
    {6, ModbusFunction::WriteOne, MemoryValue::Register, 1},
    {15, ModbusFunction::WriteMany, MemoryValue::Coil, 1968},
    {16, ModbusFunction::WriteMany, MemoryValue::Register, 123},
};

bool hasRightValues(const ModbusFunction& function, const Bytes& request)
{
    const std::size_t byteCount = valueBytes(function.kind, quantityOf(function, request));
    return request.size() == requestValuesOffset + byteCount && request[byteCountOffset] == byteCount;
}

bool isCoilValue(int value)
{
    return value == coilOn || value == coilOff;
}

} // namespace

const ModbusFunction* findFunction(int code)
{
    const auto found = std::find_if(std::begin(functions), std::end(functions),
                                    [code](const ModbusFunction& f) { return f.code == code; });
    return found == std::end(functions) ? nullptr : found;
}

bool isModbusFrame(const Bytes& bytes)
{
    return bytes.size() >= lengthEnd + minimumLength && bytes.size() <= lengthEnd + maximumLength &&
           get16(bytes, protocolOffset) == 0 && get16(bytes, lengthOffset) == bytes.size() - lengthEnd;
}

bool isWellFormed(const ModbusFunction& function, const Bytes& request)
{
    if (request.size() < fixedSize)
        return false;
    const int quantity = quantityOf(function, request);
    if (quantity < 1 || quantity > function.maximum)
        return false;
    if (function.action == ModbusFunction::WriteMany)
        return hasRightValues(function, request);
    if (function.action == ModbusFunction::WriteOne && function.kind == MemoryValue::Coil &&
        !isCoilValue(get16(request, requestQuantityOffset)))
        return false;
    return request.size() == fixedSize;
}

int quantityOf(const ModbusFunction& function, const Bytes& request)
{
    return function.action == ModbusFunction::WriteOne ? 1 : get16(request, requestQuantityOffset);
}

std::size_t valueBytes(MemoryValue::Kind kind, int quantity)
{
    return static_cast<std::size_t>(kind == MemoryValue::Coil ? (quantity + 7) / 8 : 2 * quantity);
}

std::size_t expectedReplySize(const Bytes& request)
{
    const ModbusFunction* const function = findFunction(request[functionOffset]);
    if (!function || !isWellFormed(*function, request))
        return exceptionReplySize;
    if (function->action != ModbusFunction::Read)
        return writeReplySize;
    return replyByteCountOffset + 1 + valueBytes(function->kind, quantityOf(*function, request));
}

} // namespace simulator
