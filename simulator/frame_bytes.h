// SPDX-License-Identifier: MIT
/// \file
/// \brief Bytes of Modbus TCP frames: where the fields are, and how 16-bit numbers are put and got.
#ifndef SIMULATOR_FRAME_BYTES_H
#define SIMULATOR_FRAME_BYTES_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace simulator
{

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t protocolOffset = 2; ///< 16 bits, always 0 for Modbus
constexpr std::size_t lengthOffset = 4;   ///< 16 bits, counts everything behind itself
constexpr std::size_t lengthEnd = 6;      ///< what the length field counts starts here
constexpr std::size_t unitOffset = 6;
constexpr std::size_t functionOffset = 7;
constexpr std::size_t minimumLength = 2;   ///< unit identifier and function code
constexpr std::size_t maximumLength = 254; ///< unit identifier and 253 bytes that Modbus allows

/// The big-endian number at `offset`; both bytes must exist.
inline std::uint16_t get16(const Bytes& bytes, std::size_t offset)
{
    return static_cast<std::uint16_t>(bytes[offset] << 8 | bytes[offset + 1]);
}

/// Writes `value` big-endian at `offset`; both bytes must exist.
inline void put16(Bytes& bytes, std::size_t offset, std::size_t value)
{
    bytes[offset] = static_cast<std::uint8_t>(value >> 8 & 0xFF);
    bytes[offset + 1] = static_cast<std::uint8_t>(value & 0xFF);
}

} // namespace simulator

#endif
