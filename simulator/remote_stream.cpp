// SPDX-License-Identifier: MIT
#include "simulator/remote_stream.h"

#include "simulator/remote_frame.h"

#include <numeric>

namespace simulator
{

namespace
{

constexpr std::size_t sizeModulus = 256;

// As many double words as a count can say.
constexpr std::size_t longestFrame = remoteReadSize + 4 * 65535;

std::uint8_t sumOf(const Bytes& bytes, std::size_t from, std::size_t to)
{
    const auto begin = bytes.begin();
    return static_cast<std::uint8_t>(std::accumulate(begin + static_cast<std::ptrdiff_t>(from),
                                                     begin + static_cast<std::ptrdiff_t>(to), 0u) &
                                     0xFF);
}

bool fits(const Bytes& bytes, std::size_t size)
{
    return size <= bytes.size() && size % sizeModulus == bytes[0] &&
           bytes[size - 1] == sumOf(bytes, 0, size - 1);
}

} // namespace

void RemoteStream::append(const std::uint8_t* bytes, std::size_t count, Time now)
{
    m_pending.insert(m_pending.end(), bytes, bytes + count);
    m_last = now;
}

std::optional<Bytes> RemoteStream::next(Time now)
{
    if (m_pending.empty())
        return std::nullopt;
    const bool over = now >= m_last + frameSilence || m_pending.size() > longestFrame;
    if (const std::size_t size = over ? smallestSize() : likelySize())
        return take(size);
    if (over) {
        ++m_badFrames;
        m_pending.clear();
    }
    return std::nullopt;
}

std::optional<RemoteStream::Time> RemoteStream::silenceAt() const
{
    if (m_pending.empty())
        return std::nullopt;
    return m_last + frameSilence;
}

/// The size of the first frame by rules 1 to 3; 0 if more bytes are needed.
std::size_t RemoteStream::likelySize() const
{
    if (m_pending.size() < remoteReadSize)
        return 0;
    // Bytes behind it mean a write, because nobody sends on before the reply to a read.
    if (m_pending.size() == remoteReadSize && fits(m_pending, remoteReadSize))
        return remoteReadSize;
    const std::size_t write = remoteWriteSize(m_pending);
    if (write > remoteReadSize && write % sizeModulus == m_pending[0]) {
        if (m_pending.size() < write)
            return 0;
        if (fits(m_pending, write))
            return write;
    }
    return smallestSize();
}

/// The size of the first frame by rule 3; 0 if none fits. Sums up each byte once.
std::size_t RemoteStream::smallestSize() const
{
    std::size_t size = m_pending[0];
    while (size < remoteReadSize)
        size += sizeModulus;
    std::size_t summed = 0;
    std::uint8_t sum = 0;
    for (; size <= m_pending.size(); size += sizeModulus) {
        sum = static_cast<std::uint8_t>((sum + sumOf(m_pending, summed, size - 1)) & 0xFF);
        summed = size - 1;
        if (m_pending[size - 1] == sum)
            return size;
    }
    return 0;
}

std::optional<Bytes> RemoteStream::take(std::size_t size)
{
    const auto end = m_pending.begin() + static_cast<std::ptrdiff_t>(size);
    Bytes request(m_pending.begin(), end);
    m_pending.erase(m_pending.begin(), end);
    return request;
}

} // namespace simulator
