// SPDX-License-Identifier: MIT
/// \file
/// \brief Which elements of a request really exist.
#ifndef IMAGE_ELEMENT_RUN_H
#define IMAGE_ELEMENT_RUN_H

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
