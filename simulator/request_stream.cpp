#include "simulator/request_stream.h"

namespace simulator
{

void RequestStream::append(const std::uint8_t* bytes, std::size_t count)
{
    pending_.insert(pending_.end(), bytes, bytes + count);
}

std::optional<Bytes> RequestStream::next()
{
    if (pending_.size() < lengthEnd || isBroken())
        return std::nullopt;
    const std::size_t size = lengthEnd + get16(pending_, lengthOffset);
    if (pending_.size() < size)
        return std::nullopt;
    const auto end = pending_.begin() + static_cast<std::ptrdiff_t>(size);
    Bytes request(pending_.begin(), end);
    pending_.erase(pending_.begin(), end);
    return request;
}

bool RequestStream::isBroken() const
{
    if (pending_.size() < lengthEnd)
        return false;
    const std::size_t length = get16(pending_, lengthOffset);
    return get16(pending_, protocolOffset) != 0 || length < minimumLength || length > maximumLength;
}

} // namespace simulator
