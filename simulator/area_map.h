// SPDX-License-Identifier: MIT
/// \file
/// \brief Where the areas that remote frames speak of lie among coils and registers.
///
/// A table of its own, on purpose: it would not notice a wrong row of the driver or of the tools otherwise.
#ifndef SIMULATOR_AREA_MAP_H
#define SIMULATOR_AREA_MAP_H

#include <cstddef>

namespace simulator
{

inline constexpr int wordBits = 16;

struct MappedArea {
    enum Kind { Bit, BitOfWord, Word, DoubleWord };
    int base; ///< coil of element 0 of a bit area, register of element 0 of the others
    Kind kind;
};

/// The area with this code, 0 to 14; a null pointer for another code.
const MappedArea* findArea(int code);

/// Elements of the area: 65535, and sixteen times as many bits in words.
int elementsOf(const MappedArea& area);

/// The coil or register that holds `element`, of a double word the one with its low half. Addresses wrap
/// behind 65535, as they do in the frames of Modbus TCP that reach the same elements.
int placeOf(const MappedArea& area, int element);

/// Bytes of the values of `count` elements in a write: one for a bit, two for a word, four for a double word.
std::size_t valueSize(const MappedArea& area, int count);

} // namespace simulator

#endif
