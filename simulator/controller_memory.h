// SPDX-License-Identifier: MIT
/// \file
/// \brief The memory of a simulated controller: coils and holding registers of every unit, some of which move.
#ifndef SIMULATOR_CONTROLLER_MEMORY_H
#define SIMULATOR_CONTROLLER_MEMORY_H

#include "simulator/moving_value.h"

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <vector>

namespace simulator
{

constexpr int addressCount = 65536; ///< coils, and as many holding registers, addresses 0 to 65535
constexpr int firstUnit = 1;        ///< unit 0 is broadcast and has no memory of its own
constexpr int lastUnit = 255;

/// One value as it is loaded, dumped and compared. A coil's value is 0 or 1.
struct MemoryValue {
    enum Kind { Coil, Register };
    int unit;
    Kind kind;
    int address;
    std::uint16_t value;
};

bool operator==(const MemoryValue& a, const MemoryValue& b);

/// Where a moving value stands.
struct MovingPlace {
    int unit;
    int address; ///< coil of a bit, register of a word, of a double word the one with its low half
    MovingValue value;
};

/// Coils and holding registers of the units 1 to 255, all 0 at first. A unit's memory comes into being
/// when a value is set or a request is executed on it; looking at a value does not create it.
///
/// Values may move by themselves. What they are is computed when they are looked at, from the time since the memory
/// was made and a seed. What is written stays: a value moves no more once it, or half of it, was set.
///
/// Every function may be called from any thread at any time. A unit or an address out of range throws
/// std::out_of_range with a message that names it.
class ControllerMemory
{
public:
    /// Milliseconds since the start; must not go back.
    using Clock = std::function<std::int64_t()>;

    /// The memory of one unit as requests work on it: `addressCount` elements each, a coil is 0 or 1. Before
    /// elements are read or written, read() or write() must have been called for them: they bring moving values up to
    /// the time, and write() ends their movement. Addresses behind 65535 are ignored.
    class Unit
    {
    public:
        std::vector<std::uint8_t> coils = std::vector<std::uint8_t>(addressCount);
        std::vector<std::uint16_t> registers = std::vector<std::uint16_t>(addressCount);

        void read(MemoryValue::Kind kind, int first, int count)
        {
            if (!moving(kind).isEmpty())
                update(kind, first, count);
        }
        void write(MemoryValue::Kind kind, int first, int count)
        {
            if (moving(kind).isEmpty())
                return;
            update(kind, first, count);
            moving(kind).remove(first, count);
        }

    private:
        friend class ControllerMemory;

        MovingValues& moving(MemoryValue::Kind kind)
        {
            return kind == MemoryValue::Coil ? m_movingCoils : m_movingRegisters;
        }
        void update(MemoryValue::Kind kind, int first, int count);
        void store(int address, MovingValue::Width width, std::int64_t value);

        const ControllerMemory* m_memory = nullptr; // for its clock and seed
        int m_number = 0;
        MovingValues m_movingCoils;
        MovingValues m_movingRegisters;
    };

    /// Moving values that are random are the same for the same seed. Without a clock, time begins now.
    explicit ControllerMemory(unsigned seed = 1, Clock clock = {});
    ControllerMemory(const ControllerMemory&) = delete;
    ControllerMemory& operator=(const ControllerMemory&) = delete;

    bool coil(int unit, int address) const;
    void setCoil(int unit, int address, bool on);
    std::uint16_t holdingRegister(int unit, int address) const;
    void setHoldingRegister(int unit, int address, std::uint16_t value);

    void set(const MemoryValue& value);

    /// Lets a value move from here on. Throws std::invalid_argument if its limits are out of order or do not fit its
    /// width, or its period is below 1 ms.
    void move(const MovingPlace& place);

    /// Every value that is not 0: by unit, coils before registers, by address. Moving ones as they are now.
    std::vector<MemoryValue> values() const;

    /// The units that have a memory, in rising order.
    std::vector<int> units() const;

    /// Calls `work(Unit&)` on the unit's memory, created if need be, while no other thread sees or changes
    /// anything. `work` must not call back into this object.
    template <class Work>
    void use(int unit, const Work& work)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        work(unitOf(unit));
    }

private:
    std::uint16_t look(int unit, MemoryValue::Kind kind, int address) const;
    void put(int unit, MemoryValue::Kind kind, int address, std::uint16_t value);
    Unit& unitOf(int number); // m_mutex held

    const std::uint64_t m_seed;
    const Clock m_clock;
    mutable std::mutex m_mutex;
    mutable std::map<int, Unit> m_units; // looking brings moving values up to the time
};

} // namespace simulator

#endif
