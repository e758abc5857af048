// SPDX-License-Identifier: MIT
#include "fuzz/modbus_checks.h"

#include "fuzz/check.h"

#include <algorithm>

namespace fuzz
{

namespace
{

using simulator::Bytes;
using simulator::ControllerMemory;
using simulator::get16;

// Offsets, codes and limits stand here once more on purpose: this checks those of others.
constexpr std::size_t addressAt = 8;
constexpr std::size_t quantityAt = 10;
constexpr std::size_t requestCountAt = 12;
constexpr std::size_t valuesAt = 13;
constexpr std::size_t replyCountAt = 8;
constexpr std::size_t replyDataAt = 9;
constexpr std::size_t plainSize = 12;
constexpr std::size_t exceptionSize = 9;

// Function codes by name, so that the limits below read like the protocol's own.
constexpr int readCoils = 1;
constexpr int readInputs = 2; // the coils again
constexpr int readRegisters = 3;
constexpr int readInputRegisters = 4; // the registers again
constexpr int writeCoil = 5;
constexpr int writeRegister = 6;
constexpr int writeCoils = 15;
constexpr int writeRegisters = 16;

int mostOf(int function)
{
    switch (function) {
    case readCoils:
    case readInputs:
        return 2000;
    case readRegisters:
    case readInputRegisters:
        return 125;
    case writeCoils:
        return 1968;
    case writeRegisters:
        return 123;
    default:
        return 1;
    }
}

bool readsBits(int function)
{
    return function == readCoils || function == readInputs;
}

bool isRead(int function)
{
    return readsBits(function) || function == readRegisters || function == readInputRegisters;
}

bool isOfBits(int function)
{
    return readsBits(function) || function == writeCoil || function == writeCoils;
}

bool isServed(int function)
{
    return isRead(function) || function == writeCoil || function == writeRegister || function == writeCoils ||
           function == writeRegisters;
}

bool writesOne(int function)
{
    return function == writeCoil || function == writeRegister;
}

bool writesMany(int function)
{
    return function == writeCoils || function == writeRegisters;
}

int quantityOf(const Bytes& request)
{
    return writesOne(request[simulator::functionOffset]) ? 1 : get16(request, quantityAt);
}

std::size_t valueBytes(int function, int quantity)
{
    return static_cast<std::size_t>(isOfBits(function) ? (quantity + 7) / 8 : 2 * quantity);
}

bool hasRightSize(const Bytes& request, int function)
{
    if (request.size() < plainSize)
        return false;
    if (!writesMany(function))
        return request.size() == plainSize;
    const std::size_t bytes = valueBytes(function, quantityOf(request));
    return request.size() == valuesAt + bytes && request[requestCountAt] == bytes;
}

bool hasRightValue(const Bytes& request, int function)
{
    const int quantity = quantityOf(request);
    if (function == writeCoil)
        return get16(request, quantityAt) == 0 || get16(request, quantityAt) == 0xFF00;
    return quantity >= 1 && quantity <= mostOf(function);
}

bool isFor(const simulator::AddressRange& hole, const Bytes& request)
{
    const auto kind = isOfBits(request[simulator::functionOffset]) ? simulator::MemoryValue::Coil
                                                                   : simulator::MemoryValue::Register;
    return (!hole.unit || *hole.unit == request[simulator::unitOffset]) && (!hole.kind || *hole.kind == kind);
}

bool isThere(const Bytes& request, const std::vector<simulator::AddressRange>& refused)
{
    const int address = get16(request, addressAt);
    const int quantity = quantityOf(request);
    if (address + quantity > simulator::addressCount)
        return false;
    for (const simulator::AddressRange& range : refused)
        if (isFor(range, request) && address <= range.to && address + quantity - 1 >= range.from)
            return false;
    return true;
}

bool bitAt(const Bytes& bytes, std::size_t from, int n)
{
    return (bytes[from + static_cast<std::size_t>(n / 8)] >> (n % 8) & 1) != 0;
}

// Every value of a read, and zeros in the bits that fill the last byte up.
void checkRead(const Bytes& request, const Bytes& reply, const ControllerMemory& memory)
{
    const int function = request[simulator::functionOffset];
    const int quantity = quantityOf(request);
    const std::size_t bytes = valueBytes(function, quantity);
    check(reply.size() == replyDataAt + bytes && reply[replyCountAt] == bytes,
          "the reply to a read has its byte count and as many bytes as the quantity needs");
    const int unit = request[simulator::unitOffset];
    const int address = get16(request, addressAt);
    for (int i = 0; i < quantity; ++i) {
        if (readsBits(function))
            check(bitAt(reply, replyDataAt, i) == memory.coil(unit, address + i), "a coil is read as it is");
        else
            check(get16(reply, replyDataAt + 2 * static_cast<std::size_t>(i)) ==
                      memory.holdingRegister(unit, address + i),
                  "a register is read as it is");
    }
    for (int i = quantity; readsBits(function) && i < 8 * static_cast<int>(bytes); ++i)
        check(!bitAt(reply, replyDataAt, i), "bits behind the last coil are 0");
}

std::uint16_t writtenValue(const Bytes& request, int i)
{
    const int function = request[simulator::functionOffset];
    if (function == writeCoils)
        return bitAt(request, valuesAt, i) ? 1 : 0;
    if (function == writeRegisters)
        return get16(request, valuesAt + 2 * static_cast<std::size_t>(i));
    const std::uint16_t value = get16(request, quantityAt);
    return function == writeCoil ? std::uint16_t(value != 0) : value;
}

// A write is answered with its own first bytes, and is executed when it is.
void checkWrite(const Bytes& request, const Bytes& reply, const ControllerMemory& memory)
{
    check(reply.size() == plainSize && std::equal(reply.begin() + simulator::unitOffset, reply.end(),
                                                  request.begin() + simulator::unitOffset),
          "the reply to a write repeats its address and its quantity or value");
    const int function = request[simulator::functionOffset];
    const int unit = request[simulator::unitOffset];
    for (int i = 0; i < quantityOf(request); ++i) {
        const int address = get16(request, addressAt) + i;
        const std::uint16_t held = isOfBits(function) ? std::uint16_t(memory.coil(unit, address))
                                                      : memory.holdingRegister(unit, address);
        check(held == writtenValue(request, i), "what was answered as written is in the memory");
    }
}

void checkHeader(const Bytes& request, const Bytes& reply)
{
    check(reply.size() >= exceptionSize, "a request to a unit that answers is answered");
    check(std::equal(reply.begin(), reply.begin() + simulator::lengthOffset, request.begin()),
          "a reply has the number and the protocol of its request");
    check(get16(reply, simulator::lengthOffset) == reply.size() - simulator::lengthEnd &&
              reply.size() <= simulator::lengthEnd + simulator::maximumLength,
          "the length field of a reply is right and allowed");
    check(reply[simulator::unitOffset] == request[simulator::unitOffset], "a reply names its unit");
}

} // namespace

bool isModbusRequest(const Bytes& request)
{
    return request.size() >= simulator::functionOffset + 1 && request.size() <= 260 &&
           get16(request, simulator::protocolOffset) == 0 &&
           get16(request, simulator::lengthOffset) == request.size() - simulator::lengthEnd;
}

unsigned expectedException(const Bytes& request, const std::vector<simulator::AddressRange>& refused)
{
    const int function = request[simulator::functionOffset];
    if (!isServed(function))
        return 1;
    if (request.size() < plainSize || !hasRightValue(request, function) || !hasRightSize(request, function))
        return 3;
    return isThere(request, refused) ? 0 : 2;
}

void checkModbusReply(const Bytes& request, const Bytes& reply, unsigned exception,
                      const ControllerMemory& memory)
{
    checkHeader(request, reply);
    const int function = request[simulator::functionOffset];
    if (exception != 0) {
        check(reply.size() == exceptionSize && reply[simulator::functionOffset] == (function | 0x80) &&
                  reply[replyCountAt] == exception,
              "a refused request is answered with its function, marked, and the exception code");
        return;
    }
    check(reply[simulator::functionOffset] == function, "a reply names its function");
    if (isRead(function))
        checkRead(request, reply, memory);
    else
        checkWrite(request, reply, memory);
}

} // namespace fuzz
