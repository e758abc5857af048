// SPDX-License-Identifier: MIT
/// \file
/// \brief Addresses that do not exist.
#ifndef SIMULATOR_ADDRESS_RANGE_H
#define SIMULATOR_ADDRESS_RANGE_H

#include "simulator/controller_memory.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace simulator
{

/// A hole in the memory, both ends included.
struct AddressRange {
    int from;
    int to;
    std::optional<int> unit = {};               ///< without one: of every unit
    std::optional<MemoryValue::Kind> kind = {}; ///< without one: coils and registers
};

/// Whether one of the elements from `address` on lies in a hole.
inline bool isInHole(const std::vector<AddressRange>& holes, int unit, MemoryValue::Kind kind, int address,
                     int quantity)
{
    return std::any_of(holes.begin(), holes.end(), [&](const AddressRange& hole) {
        return hole.unit.value_or(unit) == unit && hole.kind.value_or(kind) == kind && address <= hole.to &&
               address + quantity > hole.from;
    });
}

} // namespace simulator

#endif
