// SPDX-License-Identifier: MIT
/// \file
/// \brief Cuts the bytes of one connection into remote requests.
#ifndef SIMULATOR_REMOTE_STREAM_H
#define SIMULATOR_REMOTE_STREAM_H

#include "simulator/frame_bytes.h"

#include <chrono>
#include <optional>

namespace simulator
{

/// Puts remote requests together although their length byte knows their size modulo 256 only, and finds back
/// into step after a bad one. A size "fits" where the low byte of the size is the length byte and the last
/// byte is the sum of those before. Rules, in this order:
///  1. exactly 22 bytes that fit are a read;
///  2. where the length byte is that of a write with as many value bytes as area and count need, that many
///     bytes are waited for and taken if they fit;
///  3. otherwise the smallest size that fits is taken: the length byte plus multiples of 256, 22 at least;
///  4. when nothing has come for frameSilence, rule 3 is tried without waiting; where no size fits, all bytes
///     there are count as one bad frame and are dropped.
///
/// So values shorter or longer than their count are found, but a sum may fit by accident, once in 256 tries,
/// in front of the end of a frame with such values. A write without value bytes looks like a read and is
/// taken for one. Whoever sends the next request before the reply to a damaged one loses both. For one
/// thread.
class RemoteStream
{
public:
    using Clock = std::chrono::steady_clock;
    using Time = Clock::time_point;

    static constexpr std::chrono::milliseconds frameSilence{200};

    /// Times must not go back.
    void append(const std::uint8_t* bytes, std::size_t count, Time now);

    /// The next whole request, or nothing until more bytes come or silenceAt() has passed.
    std::optional<Bytes> next(Time now);

    /// When next() decides about bytes that wait without any more coming; nothing if none wait.
    std::optional<Time> silenceAt() const;

    unsigned long badFrames() const { return m_badFrames; }

private:
    std::size_t likelySize() const;
    std::size_t smallestSize() const;
    std::optional<Bytes> take(std::size_t size);

    Bytes m_pending;
    Time m_last{};
    unsigned long m_badFrames = 0;
};

} // namespace simulator

#endif
