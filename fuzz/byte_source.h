// SPDX-License-Identifier: MIT
/// \file
/// \brief Takes values from the byte string that a fuzzer made.
///
/// Whatever is asked of an empty source is 0 or empty, so a harness never has to look at the size first.
/// Values are taken from the front in the order of the calls and each kind has a plain encoding, so that
/// seeds can be written by hand or by a program.
#ifndef FUZZ_BYTE_SOURCE_H
#define FUZZ_BYTE_SOURCE_H

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace fuzz
{

/// A number() whose first byte is below this is that byte itself.
constexpr int firstMarker = 0xE0;
constexpr int word16Marker = 0xFE; ///< two bytes follow, high byte first
constexpr int word32Marker = 0xFF; ///< four bytes follow, high byte first

/// What the markers between stand for: the edges of areas, of lists and of the types.
constexpr std::array<int, word16Marker - firstMarker> edges = {
    -1,    -2,     INT_MIN, INT_MIN + 1, INT_MAX, INT_MAX - 1, 65533, 65534,  65535,  65536,
    65537, 131069, 131070,  131071,      32767,   32768,       255,   256,    257,    1023,
    1024,  1025,   1048559, 1048560,     1048561, 2000,        2001,  -65535, -32768, -16};

class ByteSource
{
public:
    ByteSource(const std::uint8_t* data, std::size_t size) : m_at(data), m_end(data + size) {}

    bool empty() const { return m_at == m_end; }
    std::size_t size() const { return static_cast<std::size_t>(m_end - m_at); }

    int byte() { return empty() ? 0 : *m_at++; }

    bool flag() { return (byte() & 1) != 0; }

    /// 0 to \a number - 1, of which there are 256 at most.
    int below(int number) { return byte() % number; }

    int word()
    {
        const int high = byte();
        return high << 8 | byte();
    }

    /// Any number; small ones take one byte, and so do those at which something ends.
    int number()
    {
        const int first = byte();
        if (first < firstMarker)
            return first;
        if (first == word16Marker)
            return word();
        if (first != word32Marker)
            return edges[static_cast<std::size_t>(first - firstMarker)];
        const unsigned high = static_cast<unsigned>(word());
        return static_cast<int>(high << 16 | static_cast<unsigned>(word()));
    }

    /// \a count bytes, fewer at the end.
    std::vector<std::uint8_t> bytes(std::size_t count)
    {
        const std::uint8_t* const from = m_at;
        m_at += std::min(count, size());
        return std::vector<std::uint8_t>(from, m_at);
    }

    /// The same as text.
    std::string text(std::size_t count)
    {
        const std::vector<std::uint8_t> taken = bytes(count);
        return std::string(taken.begin(), taken.end());
    }

private:
    const std::uint8_t* m_at;
    const std::uint8_t* m_end;
};

} // namespace fuzz

#endif
