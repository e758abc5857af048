// SPDX-License-Identifier: MIT
#include "simulator/request_server.h"

#include "simulator/modbus_request.h"

#include <algorithm>

namespace simulator
{

namespace
{

using Unit = ControllerMemory::Unit;

/// What a well-formed request that hits no hole is about.
struct Elements {
    MemoryValue::Kind kind;
    std::size_t first;
    std::size_t count;
};

Elements elementsOf(const ModbusFunction& function, const Bytes& request)
{
    return {function.kind, get16(request, requestAddressOffset),
            static_cast<std::size_t>(quantityOf(function, request))};
}

/// The header of `request` with the length field of a reply of this size, and unit and function.
Bytes replyTo(const Bytes& request, std::size_t size)
{
    Bytes reply(size);
    std::copy_n(request.begin(), functionOffset + 1, reply.begin());
    put16(reply, lengthOffset, size - lengthEnd);
    return reply;
}

Bytes exceptionTo(const Bytes& request, unsigned code)
{
    Bytes reply = replyTo(request, exceptionReplySize);
    reply[functionOffset] |= exceptionFlag;
    reply[functionOffset + 1] = static_cast<std::uint8_t>(code);
    return reply;
}

Bytes read(const Bytes& request, const Elements& elements, Unit& unit)
{
    unit.read(elements.kind, static_cast<int>(elements.first), static_cast<int>(elements.count));
    const std::size_t bytes = valueBytes(elements.kind, static_cast<int>(elements.count));
    constexpr std::size_t valuesOffset = replyByteCountOffset + 1;
    Bytes reply = replyTo(request, valuesOffset + bytes);
    reply[replyByteCountOffset] = static_cast<std::uint8_t>(bytes);
    if (elements.kind == MemoryValue::Register) {
        for (std::size_t i = 0; i < elements.count; ++i)
            put16(reply, valuesOffset + 2 * i, unit.registers[elements.first + i]);
        return reply;
    }
    for (std::size_t i = 0; i < elements.count; ++i)
        reply[valuesOffset + i / 8] |= static_cast<std::uint8_t>(unit.coils[elements.first + i] << i % 8);
    return reply;
}

void writeOne(const Bytes& request, const Elements& elements, Unit& unit)
{
    const std::uint16_t value = get16(request, requestQuantityOffset);
    if (elements.kind == MemoryValue::Register)
        unit.registers[elements.first] = value;
    else
        unit.coils[elements.first] = value != 0 ? 1 : 0;
}

void writeMany(const Bytes& request, const Elements& elements, Unit& unit)
{
    for (std::size_t i = 0; i < elements.count; ++i) {
        if (elements.kind == MemoryValue::Register)
            unit.registers[elements.first + i] = get16(request, requestValuesOffset + 2 * i);
        else
            unit.coils[elements.first + i] = request[requestValuesOffset + i / 8] >> i % 8 & 1;
    }
}

/// A write is answered with its own beginning.
Bytes write(const ModbusFunction& function, const Bytes& request, const Elements& elements, Unit& unit)
{
    unit.write(elements.kind, static_cast<int>(elements.first), static_cast<int>(elements.count));
    if (function.action == ModbusFunction::WriteOne)
        writeOne(request, elements, unit);
    else
        writeMany(request, elements, unit);
    Bytes reply = replyTo(request, writeReplySize);
    std::copy_n(request.begin() + replyEchoOffset, writeReplySize - replyEchoOffset,
                reply.begin() + replyEchoOffset);
    return reply;
}

} // namespace

RequestServer::RequestServer(ControllerMemory& memory, std::vector<AddressRange> holes)
    : m_memory(memory), m_holes(std::move(holes))
{
}

Bytes RequestServer::answer(const Bytes& request)
{
    if (!isModbusFrame(request))
        return {};
    const int unit = request[unitOffset];
    if (unit == 0)
        executeOnAll(request);
    return answers(unit) ? execute(request, unit) : Bytes();
}

Bytes RequestServer::refuse(const Bytes& request, unsigned exceptionCode) const
{
    if (!isModbusFrame(request) || !answers(request[unitOffset]))
        return {};
    return exceptionTo(request, exceptionCode);
}

bool RequestServer::answers(int unit) const
{
    return unit >= firstUnit && unit <= lastUnit && !m_silent[static_cast<std::size_t>(unit)];
}

void RequestServer::setSilent(int unit, bool silent)
{
    if (unit >= firstUnit && unit <= lastUnit)
        m_silent[static_cast<std::size_t>(unit)] = silent;
}

Bytes RequestServer::execute(const Bytes& request, int unit)
{
    const ModbusFunction* const function = findFunction(request[functionOffset]);
    if (const unsigned exception = objection(function, request, unit))
        return exceptionTo(request, exception);
    const Elements elements = elementsOf(*function, request);
    Bytes reply;
    m_memory.use(unit, [&](Unit& memory) {
        reply = function->action == ModbusFunction::Read ? read(request, elements, memory)
                                                         : write(*function, request, elements, memory);
    });
    return reply;
}

// A read or a wrong request changes nothing, so only writes come to anything.
void RequestServer::executeOnAll(const Bytes& request)
{
    for (const int unit : m_memory.units())
        if (answers(unit))
            execute(request, unit);
}

// The exception to send, or 0. Only what passes is looked at any further.
unsigned RequestServer::objection(const ModbusFunction* function, const Bytes& request, int unit) const
{
    if (!function)
        return illegalFunction;
    if (!isWellFormed(*function, request))
        return illegalValue;
    const int address = get16(request, requestAddressOffset);
    const int quantity = quantityOf(*function, request);
    const bool isThere =
        address + quantity <= addressCount && !isInHole(m_holes, unit, function->kind, address, quantity);
    return isThere ? 0 : illegalAddress;
}

} // namespace simulator
