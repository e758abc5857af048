// SPDX-License-Identifier: MIT
#include "capture/held_entries.h"

namespace plc
{

namespace
{

const std::size_t bytesBesideData = 32; // that an array takes besides its bytes, allocation included

std::size_t sizeOf(const CaptureEntry& entry)
{
    const int characters = entry.why.size();
    return sizeof entry + bytesBesideData + static_cast<std::size_t>(entry.bytes.size()) +
           static_cast<std::size_t>(characters) * sizeof(QChar);
}

} // namespace

bool HeldEntries::add(const CaptureEntry& entry)
{
    const std::size_t size = sizeOf(entry);
    m_isFull = m_isFull || size > m_mostBytes - m_bytes;
    if (m_isFull)
        return false;
    m_entries.push_back(entry);
    m_entries.back().bytes.squeeze();
    m_bytes += size;
    return true;
}

} // namespace plc
