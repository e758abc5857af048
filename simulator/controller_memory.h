/// \file
/// \brief The memory of a simulated controller: coils and holding registers of every unit.
#ifndef SIMULATOR_CONTROLLER_MEMORY_H
#define SIMULATOR_CONTROLLER_MEMORY_H

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

/// Coils and holding registers of the units 1 to 255, all 0 at first. A unit's memory comes into being
/// when a value is set or a request reaches it; looking at a value does not create it.
///
/// Every function may be called from any thread at any time. A unit or an address out of range throws
/// std::out_of_range with a message that names it.
class ControllerMemory
{
public:
    /// The memory of one unit as requests work on it: `addressCount` elements each, a coil is 0 or 1.
    struct Unit {
        std::vector<std::uint8_t> coils = std::vector<std::uint8_t>(addressCount);
        std::vector<std::uint16_t> registers = std::vector<std::uint16_t>(addressCount);
    };

    bool coil(int unit, int address) const;
    void setCoil(int unit, int address, bool on);
    std::uint16_t holdingRegister(int unit, int address) const;
    void setHoldingRegister(int unit, int address, std::uint16_t value);

    void set(const MemoryValue& value);

    /// Every value that is not 0: by unit, coils before registers, by address.
    std::vector<MemoryValue> values() const;

    /// The units that have a memory, in rising order.
    std::vector<int> units() const;

    /// Calls `work` on the unit's memory, created if need be, while no other thread sees or changes
    /// anything. `work` must not call back into this object.
    void use(int unit, const std::function<void(Unit&)>& work);

private:
    const Unit* find(int unit) const; // mutex_ held

    mutable std::mutex mutex_;
    std::map<int, Unit> units_;
};

} // namespace simulator

#endif
