#include "simulator/controller_memory.h"

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

} // namespace

bool operator==(const MemoryValue& a, const MemoryValue& b)
{
    return std::tie(a.unit, a.kind, a.address, a.value) == std::tie(b.unit, b.kind, b.address, b.value);
}

const ControllerMemory::Unit* ControllerMemory::find(int unit) const
{
    const auto found = units_.find(unit);
    return found == units_.end() ? nullptr : &found->second;
}

bool ControllerMemory::coil(int unit, int address) const
{
    checkPlace(unit, address);
    const std::lock_guard<std::mutex> lock(mutex_);
    const Unit* const memory = find(unit);
    return memory && memory->coils[static_cast<std::size_t>(address)] != 0;
}

void ControllerMemory::setCoil(int unit, int address, bool on)
{
    checkPlace(unit, address);
    const std::lock_guard<std::mutex> lock(mutex_);
    units_[unit].coils[static_cast<std::size_t>(address)] = on ? 1 : 0;
}

std::uint16_t ControllerMemory::holdingRegister(int unit, int address) const
{
    checkPlace(unit, address);
    const std::lock_guard<std::mutex> lock(mutex_);
    const Unit* const memory = find(unit);
    return memory ? memory->registers[static_cast<std::size_t>(address)] : std::uint16_t(0);
}

void ControllerMemory::setHoldingRegister(int unit, int address, std::uint16_t value)
{
    checkPlace(unit, address);
    const std::lock_guard<std::mutex> lock(mutex_);
    units_[unit].registers[static_cast<std::size_t>(address)] = value;
}

void ControllerMemory::set(const MemoryValue& value)
{
    if (value.kind == MemoryValue::Coil)
        setCoil(value.unit, value.address, value.value != 0);
    else
        setHoldingRegister(value.unit, value.address, value.value);
}

std::vector<MemoryValue> ControllerMemory::values() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    std::vector<MemoryValue> all;
    for (const auto& [number, unit] : units_) {
        appendValues(all, number, MemoryValue::Coil, unit.coils);
        appendValues(all, number, MemoryValue::Register, unit.registers);
    }
    return all;
}

std::vector<int> ControllerMemory::units() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    std::vector<int> numbers;
    for (const auto& entry : units_)
        numbers.push_back(entry.first);
    return numbers;
}

void ControllerMemory::use(int unit, const std::function<void(Unit&)>& work)
{
    checkUnit(unit);
    const std::lock_guard<std::mutex> lock(mutex_);
    work(units_[unit]);
}

} // namespace simulator
