// SPDX-License-Identifier: MIT
#include "simulator/controller_memory.h"

#include <chrono>
#include <stdexcept>
#include <string>
#include <tuple>

namespace simulator
{

namespace
{

void checkUnit(int unit)
{
    if (unit < firstUnit || unit > lastUnit)
        throw std::out_of_range("unit " + std::to_string(unit) + " has no memory: units are 1 to 255");
}

void checkPlace(int unit, int address)
{
    checkUnit(unit);
    if (address < 0 || address >= addressCount)
        throw std::out_of_range("address " + std::to_string(address) +
                                " does not exist: addresses are 0 to 65535");
}

template <class Element>
void appendValues(std::vector<MemoryValue>& values, int unit, MemoryValue::Kind kind,
                  const std::vector<Element>& elements)
{
    for (int address = 0; address < addressCount; ++address) {
        const std::uint16_t value = elements[static_cast<std::size_t>(address)];
        if (value != 0)
            values.push_back({unit, kind, address, value});
    }
}

void checkMotion(const MovingValue& value)
{
    const std::int64_t size = std::int64_t(1) << value.width;
    const std::int64_t least = value.width == MovingValue::Bit ? 0 : -(size / 2);
    if (value.lowest < least || value.highest >= size || value.lowest > value.highest)
        throw std::invalid_argument("the limits of a moving value must be from " + std::to_string(least) +
                                    " to " + std::to_string(size - 1) + ", the lowest first");
    if (value.periodMs < 1)
        throw std::invalid_argument("the period of a moving value must be 1 ms at least");
}

ControllerMemory::Clock millisecondsFromNow()
{
    using Steady = std::chrono::steady_clock;
    return [start = Steady::now()] {
        return static_cast<std::int64_t>(
            std::chrono::duration_cast<std::chrono::milliseconds>(Steady::now() - start).count());
    };
}

} // namespace

bool operator==(const MemoryValue& a, const MemoryValue& b)
{
    return std::tie(a.unit, a.kind, a.address, a.value) == std::tie(b.unit, b.kind, b.address, b.value);
}

void ControllerMemory::Unit::update(MemoryValue::Kind kind, int first, int count)
{
    const std::int64_t now = m_memory->m_clock();
    moving(kind).visit(first, count, [&](int address, const MovingValue& value) {
        const std::uint64_t place = static_cast<std::uint64_t>(m_number) << 32 |
                                    static_cast<std::uint64_t>(kind) << 16 |
                                    static_cast<std::uint64_t>(address);
        store(address, value.width, valueAt(value, now, m_memory->m_seed << 40 ^ place));
    });
}

void ControllerMemory::Unit::store(int address, MovingValue::Width width, std::int64_t value)
{
    const auto place = static_cast<std::size_t>(address);
    if (width == MovingValue::Bit) {
        coils[place] = value != 0 ? 1 : 0;
        return;
    }
    registers[place] = static_cast<std::uint16_t>(value & 0xFFFF);
    if (width == MovingValue::DoubleWord)
        registers[place + 1] = static_cast<std::uint16_t>(value >> 16 & 0xFFFF);
}

ControllerMemory::ControllerMemory(unsigned seed, Clock clock)
    : m_seed(seed), m_clock(clock ? std::move(clock) : millisecondsFromNow())
{
}

bool ControllerMemory::coil(int unit, int address) const
{
    return look(unit, MemoryValue::Coil, address) != 0;
}

void ControllerMemory::setCoil(int unit, int address, bool on)
{
    put(unit, MemoryValue::Coil, address, on ? 1 : 0);
}

std::uint16_t ControllerMemory::holdingRegister(int unit, int address) const
{
    return look(unit, MemoryValue::Register, address);
}

void ControllerMemory::setHoldingRegister(int unit, int address, std::uint16_t value)
{
    put(unit, MemoryValue::Register, address, value);
}

void ControllerMemory::set(const MemoryValue& value)
{
    put(value.unit, value.kind, value.address, value.value);
}

std::uint16_t ControllerMemory::look(int unit, MemoryValue::Kind kind, int address) const
{
    checkPlace(unit, address);
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_units.find(unit);
    if (found == m_units.end())
        return 0;
    found->second.read(kind, address, 1);
    const auto place = static_cast<std::size_t>(address);
    return kind == MemoryValue::Coil ? found->second.coils[place] : found->second.registers[place];
}

void ControllerMemory::put(int unit, MemoryValue::Kind kind, int address, std::uint16_t value)
{
    checkPlace(unit, address);
    const std::lock_guard<std::mutex> lock(m_mutex);
    Unit& memory = unitOf(unit);
    memory.write(kind, address, 1);
    const auto place = static_cast<std::size_t>(address);
    if (kind == MemoryValue::Coil)
        memory.coils[place] = value != 0 ? 1 : 0;
    else
        memory.registers[place] = value;
}

void ControllerMemory::move(const MovingPlace& place)
{
    const bool isBit = place.value.width == MovingValue::Bit;
    checkPlace(place.unit, place.address);
    checkPlace(place.unit, place.value.width == MovingValue::DoubleWord ? place.address + 1 : place.address);
    checkMotion(place.value);
    const std::lock_guard<std::mutex> lock(m_mutex);
    unitOf(place.unit)
        .moving(isBit ? MemoryValue::Coil : MemoryValue::Register)
        .put(place.address, place.value);
}

std::vector<MemoryValue> ControllerMemory::values() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<MemoryValue> all;
    for (auto& [number, unit] : m_units) {
        unit.read(MemoryValue::Coil, 0, addressCount);
        unit.read(MemoryValue::Register, 0, addressCount);
        appendValues(all, number, MemoryValue::Coil, unit.coils);
        appendValues(all, number, MemoryValue::Register, unit.registers);
    }
    return all;
}

std::vector<int> ControllerMemory::units() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<int> numbers;
    for (const auto& entry : m_units)
        numbers.push_back(entry.first);
    return numbers;
}

ControllerMemory::Unit& ControllerMemory::unitOf(int number)
{
    checkUnit(number);
    Unit& unit = m_units[number];
    unit.m_memory = this;
    unit.m_number = number;
    return unit;
}

} // namespace simulator
