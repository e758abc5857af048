// SPDX-License-Identifier: MIT
#include "simulator/remote_server.h"

#include "simulator/area_map.h"

#include <algorithm>

namespace simulator
{

namespace
{

constexpr int broadcast = 0;

using Unit = ControllerMemory::Unit;

/// Elements that the request reads or writes.
int elementsAsked(const MappedArea& area, const RemoteRequest& request)
{
    if (request.isRead && area.kind == MappedArea::DoubleWord)
        return std::max(request.count - 1, 1);
    return request.count;
}

std::size_t index(const MappedArea& area, int element)
{
    return static_cast<std::size_t>(placeOf(area, element));
}

std::size_t behind(std::size_t place)
{
    return (place + 1) % addressCount;
}

void put16Back(Bytes& bytes, std::uint16_t value)
{
    bytes.resize(bytes.size() + 2);
    put16(bytes, bytes.size() - 2, value);
}

MemoryValue::Kind kindOf(const MappedArea& area)
{
    return area.kind == MappedArea::Bit ? MemoryValue::Coil : MemoryValue::Register;
}

/// Calls work(place) for each coil or register of `count` elements.
template <class Work>
void eachPlace(const MappedArea& area, int first, int count, const Work& work)
{
    for (int i = 0; i < count; ++i) {
        const std::size_t place = index(area, first + i);
        work(static_cast<int>(place));
        if (area.kind == MappedArea::DoubleWord)
            work(static_cast<int>(behind(place)));
    }
}

Bytes bitsOf(const Unit& unit, const MappedArea& area, int first, int count)
{
    Bytes data(static_cast<std::size_t>((count + 7) / 8));
    for (int i = 0; i < count; ++i)
        if (unit.coils[index(area, first + i)] != 0)
            data[static_cast<std::size_t>(i / 8)] |= static_cast<std::uint8_t>(1 << i % 8);
    return data;
}

Bytes registersOf(const Unit& unit, const MappedArea& area, int first, int count)
{
    Bytes data;
    for (int i = 0; i < count; ++i) {
        const std::size_t place = index(area, first + i);
        put16Back(data, unit.registers[place]);
        if (area.kind == MappedArea::DoubleWord)
            put16Back(data, unit.registers[behind(place)]);
    }
    return data;
}

Bytes dataOf(Unit& unit, const MappedArea& area, int first, int count)
{
    eachPlace(area, first, count, [&](int place) { unit.read(kindOf(area), place, 1); });
    return area.kind == MappedArea::Bit ? bitsOf(unit, area, first, count)
                                        : registersOf(unit, area, first, count);
}

std::uint16_t littleEndian(const std::uint8_t* bytes)
{
    return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

void setBitOfWord(std::uint16_t& word, int bit, bool on)
{
    const unsigned mask = 1u << bit;
    word = static_cast<std::uint16_t>(on ? word | mask : word & ~mask);
}

void writeElement(Unit& unit, const MappedArea& area, int element, const std::uint8_t* bytes)
{
    const std::size_t place = index(area, element);
    eachPlace(area, element, 1, [&](int each) { unit.write(kindOf(area), each, 1); });
    const bool on = (bytes[0] & 1) != 0;
    switch (area.kind) {
    case MappedArea::Bit:
        unit.coils[place] = on ? 1 : 0;
        break;
    case MappedArea::BitOfWord:
        setBitOfWord(unit.registers[place], element % wordBits, on);
        break;
    case MappedArea::DoubleWord:
        unit.registers[behind(place)] = littleEndian(bytes + 2);
        [[fallthrough]];
    case MappedArea::Word:
        unit.registers[place] = littleEndian(bytes);
        break;
    }
}

void writeElements(Unit& unit, const RemoteRequest& request, const Bytes& frame)
{
    const MappedArea& area = *findArea(request.area);
    const std::size_t size = valueSize(area, 1);
    const std::size_t sum = frame.size() - 1;
    std::size_t at = remoteValueOffset;
    for (int i = 0; i < request.count && at + size <= sum; ++i, at += size)
        writeElement(unit, area, request.element + i, frame.data() + at);
}

} // namespace

RemoteServer::RemoteServer(ControllerMemory& memory, std::vector<AddressRange> holes,
                           std::function<bool(int)> answers)
    : m_memory(memory), m_holes(std::move(holes)), m_answers(std::move(answers))
{
}

Bytes RemoteServer::answer(const Bytes& frame)
{
    const RemoteRequest request = remoteRequestOf(frame);
    if (!isServed(request))
        return {};
    if (request.station == broadcast && !request.isRead)
        executeOnAll(request, frame);
    if (request.station == broadcast || !m_answers(request.station) || isRefused(request, request.station))
        return {};
    Bytes reply;
    m_memory.use(request.station, [&](Unit& unit) {
        const MappedArea& area = *findArea(request.area);
        if (!request.isRead)
            writeElements(unit, request, frame);
        reply =
            request.isRead
                ? remoteReadReply(request, dataOf(unit, area, request.element, elementsAsked(area, request)))
                : remoteWriteReply(request);
    });
    return reply;
}

void RemoteServer::executeOnAll(const RemoteRequest& request, const Bytes& frame)
{
    for (const int number : m_memory.units())
        if (m_answers(number) && !isRefused(request, number))
            m_memory.use(number, [&](Unit& unit) { writeElements(unit, request, frame); });
}

bool RemoteServer::isServed(const RemoteRequest& request) const
{
    const MappedArea* const area = findArea(request.area);
    if (!area || (request.isRead && area->kind == MappedArea::BitOfWord))
        return false;
    return request.element >= 0 && request.element < elementsOf(*area) &&
           elementsAsked(*area, request) <= elementsOf(*area) - request.element;
}

bool RemoteServer::isRefused(const RemoteRequest& request, int unit) const
{
    if (m_holes.empty())
        return false;
    const MappedArea& area = *findArea(request.area);
    bool refused = false;
    eachPlace(area, request.element, elementsAsked(area, request),
              [&](int place) { refused = refused || isInHole(m_holes, unit, kindOf(area), place, 1); });
    return refused;
}

} // namespace simulator
