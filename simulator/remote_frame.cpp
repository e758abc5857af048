// SPDX-License-Identifier: MIT
#include "simulator/remote_frame.h"

#include "simulator/area_map.h"

#include <algorithm>

namespace simulator
{

namespace
{

constexpr std::size_t areaOffset = 5;
constexpr std::size_t elementOffset = 7;
constexpr std::size_t countOffset = 11;

constexpr std::size_t replyAreaOffset = 7;
constexpr std::size_t replyByteCountOffset = 8;
constexpr std::size_t readReplyHead = 9;
constexpr std::size_t writeReplyElementOffset = 8;
constexpr std::size_t writeReplyCountOffset = 10;
constexpr std::size_t writeReplySize = 12;

Bytes replyOf(const RemoteRequest& request, std::size_t size)
{
    Bytes reply(size);
    put16(reply, lengthOffset, size - lengthEnd);
    reply[unitOffset] = static_cast<std::uint8_t>(request.station);
    reply[replyAreaOffset] = static_cast<std::uint8_t>(request.area);
    return reply;
}

} // namespace

RemoteRequest remoteRequestOf(const Bytes& request)
{
    const unsigned int high = get16(request, elementOffset);
    const unsigned int low = get16(request, elementOffset + 2);
    return {request.size() == remoteReadSize, request[remoteStationOffset], get16(request, areaOffset),
            static_cast<int>(high << 16 | low), get16(request, countOffset)};
}

std::size_t remoteWriteSize(const Bytes& bytes)
{
    const MappedArea* const area = findArea(get16(bytes, areaOffset));
    return area ? remoteReadSize + valueSize(*area, get16(bytes, countOffset)) : 0;
}

Bytes remoteReadReply(const RemoteRequest& request, const Bytes& data)
{
    Bytes reply = replyOf(request, readReplyHead + data.size());
    reply[replyByteCountOffset] = static_cast<std::uint8_t>(data.size() & 0xFF);
    std::copy(data.begin(), data.end(), reply.begin() + readReplyHead);
    return reply;
}

Bytes remoteWriteReply(const RemoteRequest& request)
{
    Bytes reply = replyOf(request, writeReplySize);
    put16(reply, writeReplyElementOffset, static_cast<std::size_t>(request.element & 0xFFFF));
    put16(reply, writeReplyCountOffset, static_cast<std::size_t>(request.count));
    return reply;
}

} // namespace simulator
