// SPDX-License-Identifier: MIT
#include "soak/write_frame.h"

#include "runtime/model/modbus_address.h"
#include "runtime/model/variable.h"
#include "simulator/remote_frame.h"

namespace soak
{

namespace
{

using simulator::Bytes;
using simulator::get16;

// Of its own, so that the referee does not believe what the panel believes.
constexpr std::size_t addressOffset = 8;
constexpr std::size_t valueOffset = 10; // of a write of one element
constexpr std::size_t registersOffset = 13;
constexpr std::size_t bytesOfRegister = 2;
constexpr std::size_t sumBytes = 1;
constexpr std::uint8_t writeCoil = 5;
constexpr std::uint8_t writeRegister = 6;
constexpr std::uint8_t writeRegisters = 16;

std::optional<WriteFrame> writeOfModbus(const Bytes& frame)
{
    const std::uint8_t function = frame[simulator::functionOffset];
    WriteFrame write;
    write.first = {frame[simulator::unitOffset], function == writeCoil, get16(frame, addressOffset)};
    if (function == writeCoil)
        write.content = {get16(frame, valueOffset) != 0 ? 1 : 0};
    else if (function == writeRegister)
        write.content = {get16(frame, valueOffset)};
    else if (function != writeRegisters)
        return std::nullopt;
    for (std::size_t at = registersOffset; function == writeRegisters && at + 1 < frame.size(); at += 2)
        write.content.push_back(get16(frame, at));
    return write;
}

// The values of a remote frame have their low byte first, and a double word its low half.
std::optional<WriteFrame> writeOfRemote(const Bytes& frame)
{
    const simulator::RemoteRequest request = simulator::remoteRequestOf(frame);
    if (request.isRead)
        return std::nullopt;
    WriteFrame write;
    write.first = {request.station, plc::liesInCoils(request.area),
                   plc::modbusAddress(request.area, request.element)};
    if (plc::bytesOfElement(request.area) == 1) {
        write.content = {frame[simulator::remoteValueOffset]};
        return write;
    }
    for (std::size_t at = simulator::remoteValueOffset; at + bytesOfRegister + sumBytes <= frame.size();
         at += 2)
        write.content.push_back(frame[at] | frame[at + 1] << 8);
    return write;
}

} // namespace

std::optional<WriteFrame> writeOf(const Bytes& frame, bool isRemote)
{
    return isRemote ? writeOfRemote(frame) : writeOfModbus(frame);
}

} // namespace soak
