// SPDX-License-Identifier: MIT
/// \file
/// \brief What the tools know of each area: one table, a row each.
#ifndef RUNTIME_MODEL_AREA_TABLE_H
#define RUNTIME_MODEL_AREA_TABLE_H

#include "runtime/export.h"

namespace plc
{

inline constexpr int bitsOfByte = 8;
inline constexpr int bitsOfWord = 16;

enum class ElementKind { Bit, BitInWord, Word, DoubleWord };

/// How the driver cuts a long cyclic variable of bits.
enum class BitCut {
    LikeBlocks, ///< at as many bits as a block of bits has
    LikeWords   ///< at as many bits as a block of words has words, although its blocks are longer
};

/// The driver has a table of its own, which this one does not see: what a person types must mean the same to
/// both, and the tests compare them.
struct Area {
    ElementKind kind;
    int modbusBase;        ///< coil or register of element 0
    int numberBase;        ///< of the address text
    int origin;            ///< the number that the address text of element 0 has
    bool isWritable;       ///< false: it can only be read
    BitCut cut;            ///< of bits
    const char* expected;  ///< what an address must look like, for messages
    const char* holds;     ///< for the help, as the next
    const char* addresses; ///< how they are written
};

/// Area codes are 0 to areaCount() - 1.
PLCRUNTIME_API int areaCount();

/// \return true for the code of an area
PLCRUNTIME_API bool isArea(int code);

/// \param code of an area
PLCRUNTIME_API const Area& areaOf(int code);

/// The area of bits inside words, and that of the same words.
inline constexpr int bitInWordArea = 8;
inline constexpr int wordArea = 9;

// All that follow expect the code of an area.

/// \return the kind of elements in \a area
PLCRUNTIME_API ElementKind kindOf(int area);

/// \return value bytes of one element of \a area: 1 for bits, 2 for words, 4 for double words
PLCRUNTIME_API int bytesOfElement(int area);

/// \return the places, coils or registers, that an element of \a area takes; bits share theirs
PLCRUNTIME_API int placesOfElement(int area);

/// \return elements of \a area: 65535, for area 8 sixteen times as many
PLCRUNTIME_API int areaSize(int area);

} // namespace plc

#endif
