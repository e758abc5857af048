// SPDX-License-Identifier: MIT
/// \file
/// \brief Entries of a capture that wait until it is known what they are to be played for.
#ifndef CAPTURE_HELD_ENTRIES_H
#define CAPTURE_HELD_ENTRIES_H

#include "capture/capture_entry.h"

#include <cstddef>
#include <deque>

namespace plc
{

const std::size_t mostHeldMegabytes = 256;

/// Takes a bounded amount of memory.
class HeldEntries
{
public:
    explicit HeldEntries(std::size_t mostBytes = mostHeldMegabytes * 1024 * 1024) : m_mostBytes(mostBytes) {}

    /// \return false when there is no room for it
    bool add(const CaptureEntry& entry);

    /// \return true when an entry found no room
    bool isFull() const { return m_isFull; }

    const std::deque<CaptureEntry>& entries() const { return m_entries; }

private:
    const std::size_t m_mostBytes;
    std::size_t m_bytes = 0;
    bool m_isFull = false;
    std::deque<CaptureEntry> m_entries;
};

} // namespace plc

#endif
