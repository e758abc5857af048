// SPDX-License-Identifier: MIT
/// \file
/// \brief The driver's areas, as a runtime knows them: written down once more, so that a slip in the driver's own
///        table shows.
#ifndef FUZZ_DRIVER_AREAS_H
#define FUZZ_DRIVER_AREAS_H

namespace fuzz
{

constexpr int areaCount = 15;
constexpr int bitOfWordArea = 8; ///< the areas below hold bits
constexpr int wordArea = 9;      ///< whose words hold the bits of area 8; the areas up to 13 hold words
constexpr int doubleWordArea = 14;

// A second opinion: not those of driver/plcdriver.h, so that a wrong limit there shows.
constexpr int elementsOfArea = 65535;
constexpr int bitsOfWord = 16;
constexpr int bitsOfWords = bitsOfWord * elementsOfArea; ///< elements of area 8

inline bool isKnownArea(int area)
{
    return area >= 0 && area < areaCount;
}

inline bool isBitArea(int area)
{
    return area >= 0 && area < bitOfWordArea;
}

} // namespace fuzz

#endif
