// SPDX-License-Identifier: MIT
#include "simulator/request_stream.h"

namespace simulator
{

void RequestStream::append(const std::uint8_t* bytes, std::size_t count)
{
    m_pending.insert(m_pending.end(), bytes, bytes + count);
}

std::optional<Bytes> RequestStream::next()
{
    if (m_pending.size() < lengthEnd || isBroken())
        return std::nullopt;
    const std::size_t size = lengthEnd + get16(m_pending, lengthOffset);
    if (m_pending.size() < size)
        return std::nullopt;
    const auto end = m_pending.begin() + static_cast<std::ptrdiff_t>(size);
    Bytes request(m_pending.begin(), end);
    m_pending.erase(m_pending.begin(), end);
    return request;
}

bool RequestStream::isBroken() const
{
    if (m_pending.size() < lengthEnd)
        return false;
    const std::size_t length = get16(m_pending, lengthOffset);
    return get16(m_pending, protocolOffset) != 0 || length < minimumLength || length > maximumLength;
}

} // namespace simulator
