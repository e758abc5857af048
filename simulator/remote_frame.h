// SPDX-License-Identifier: MIT
/// \file
/// \brief Remote frames: where the fields of a request are, and what a reply looks like.
///
/// A request, multi-byte fields high byte first:
///
/// | byte  | field                                                            |
/// |-------|------------------------------------------------------------------|
/// | 0     | size of the frame, sum byte included, modulo 256                 |
/// | 1-3   | key, flag and group of the sender; not looked at                 |
/// | 4     | station                                                          |
/// | 5-6   | area code                                                        |
/// | 7-10  | first element                                                    |
/// | 11-12 | count                                                            |
/// | 13-20 | selector and one more word of the sender; not looked at          |
/// | 21..  | a write only: value bytes, low byte first, a byte for each bit   |
/// | last  | sum of all bytes before, modulo 256                              |
///
/// A read has no value bytes and so 22 bytes; that is how it is told from a write.
///
/// The reply to a read has nine bytes in front of its data, that to a write has 12 bytes:
///
/// | byte  | reply to a read                                  | reply to a write             |
/// |-------|--------------------------------------------------|------------------------------|
/// | 0-3   | 0                                                | 0                            |
/// | 4-5   | bytes that follow this field, modulo 65536       | 6                            |
/// | 6     | station                                          | station                      |
/// | 7     | area code                                        | area code                    |
/// | 8     | data bytes, modulo 256                           | 8-9: first element, low half |
/// | 9..   | data                                             | 10-11: count                 |
///
/// Data of a read: bits eight to a byte from the lowest bit on, registers high byte first, a double word as
/// two registers of which the first is its low half. A read of double words asks for one more than it gets,
/// and gets one at least.
#ifndef SIMULATOR_REMOTE_FRAME_H
#define SIMULATOR_REMOTE_FRAME_H

#include "simulator/frame_bytes.h"

namespace simulator
{

constexpr std::size_t remoteStationOffset = 4;
constexpr std::size_t remoteValueOffset = 21;
constexpr std::size_t remoteReadSize = 22; ///< of a read, and the least of any request

struct RemoteRequest {
    bool isRead;
    int station; ///< 0 to 255
    int area;    ///< 0 to 65535
    int element;
    int count; ///< 0 to 65535
};

/// The fields of `request`, which has remoteReadSize bytes at least.
RemoteRequest remoteRequestOf(const Bytes& request);

/// The size that the request at the beginning of `bytes` has as a write with as many value bytes as its area
/// and count need; 0 if its area has none. `bytes` has remoteReadSize bytes at least.
std::size_t remoteWriteSize(const Bytes& bytes);

Bytes remoteReadReply(const RemoteRequest& request, const Bytes& data);
Bytes remoteWriteReply(const RemoteRequest& request);

} // namespace simulator

#endif
