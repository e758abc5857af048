// SPDX-License-Identifier: MIT
/// \file
/// \brief Remote requests for tests.
#ifndef TESTS_SIMULATOR_REMOTE_FRAMES_H
#define TESTS_SIMULATOR_REMOTE_FRAMES_H

#include "simulator/loopback_client.h"

#include <numeric>

namespace test
{

/// `bytes` with their length in front of the rest and the sum behind: byte 0 is overwritten.
inline Bytes sealed(Bytes bytes)
{
    bytes[0] = static_cast<std::uint8_t>((bytes.size() + 1) & 0xFF);
    bytes.push_back(static_cast<std::uint8_t>(std::accumulate(bytes.begin(), bytes.end(), 0u) & 0xFF));
    return bytes;
}

inline Bytes remoteWrite(int station, int area, int element, int count, const Bytes& values)
{
    Bytes bytes(21);
    bytes[4] = static_cast<std::uint8_t>(station);
    simulator::put16(bytes, 5, static_cast<std::size_t>(area));
    simulator::put16(bytes, 7, static_cast<std::size_t>(static_cast<unsigned int>(element) >> 16));
    simulator::put16(bytes, 9, static_cast<std::size_t>(element & 0xFFFF));
    simulator::put16(bytes, 11, static_cast<std::size_t>(count));
    bytes.insert(bytes.end(), values.begin(), values.end());
    return sealed(bytes);
}

inline Bytes remoteRead(int station, int area, int element, int count)
{
    return remoteWrite(station, area, element, count, {});
}

} // namespace test

#endif
