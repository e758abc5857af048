// SPDX-License-Identifier: MIT
/// \file
/// \brief The record of one value of multi-station mode.
#ifndef IMAGE_EXTENDED_VARIABLE_H
#define IMAGE_EXTENDED_VARIABLE_H

#include <QByteArray>

/// One value of one station. The key is (station, area, address); bits inside words are kept in the word's entry
/// (area 9, bit address / 16), except replies to area-8 reads, which have entries of their own (area 8).
struct EXTENDVAR {
    int station;      ///< station number
    int area;         ///< area code under which the value is kept
    int address;      ///< element, or word address for bits in words
    QByteArray value; ///< little-endian: 1 byte for bits, 2 for words, 4 for double words; 4 zeros when new
};

#if defined(__SIZEOF_POINTER__) && __SIZEOF_POINTER__ == 4
static_assert(sizeof(EXTENDVAR) == 16, "EXTENDVAR is 16 bytes");
#endif

#endif
