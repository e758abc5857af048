/// \file
/// \brief Which elements of a request really exist.
#ifndef IMAGE_ELEMENT_RUN_H
#define IMAGE_ELEMENT_RUN_H

#include "image/area_buffers.h"

/// Bits of a word.
const int WORD_BITS = 16;

/// All the bits that area 8 reaches in the words.
const int AREA_BITS_OF_WORDS = WORD_BITS * AREA_ELEMENTS;

/// The part of a run that lies inside its area.
struct ElementRun {
    int skipped; ///< elements before it that do not exist
    int start;   ///< its first element
    int count;   ///< its length, 0 when none exists
};

/// Cuts \a count elements from \a address on to those inside 0..\a elements - 1. Any arguments.
ElementRun ExistingElements(int address, int count, int elements);

/// \return whether \a address + \a offset is an element of an area of \a elements; never overflows.
bool ElementExists(int address, int offset, int elements);

#endif
