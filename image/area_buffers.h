// SPDX-License-Identifier: MIT
/// \file
/// \brief The buffers of the local image, and the accessors that copy between them and byte arrays.
///
/// Accessors check no bound, take no lock and report nothing: callers hold imageMutex and cut the run to the
/// elements that exist (see element_run.h). Counts are elements; a count below 1 does nothing unless said
/// otherwise. Bytes are in the runtime's order: one per bit, words and double words little-endian. Where a
/// writer looks at or past the end of its bytes, every byte there counts as 0.
#ifndef IMAGE_AREA_BUFFERS_H
#define IMAGE_AREA_BUFFERS_H

#include "driver/plcdriver.h"

/// The areas, back to back, about 1.4 MB: never build one on a stack.
struct Image {
    bool bitArea[8][PLC_AREA_ELEMENTS];            ///< one byte per bit, 0 or 1
    unsigned short wordArea[5][PLC_AREA_ELEMENTS]; ///< native order
    unsigned int dwordArea[PLC_AREA_ELEMENTS];     ///< native order
};

/// \name Image to bytes
/// @{

/// Appends \a count cells to \a out, one byte each.
void GetBitFromUC(QByteArray& out, bool* area, int start, int count);

/// Sets bytes 0.. of \a out to the bits \a start.. of the words: bit n is bit n mod 16 of word n / 16.
void GetBitFromUS(QByteArray& out, unsigned short* area, int start, int count);

/// Sets bytes 0.. of \a out to \a count words.
void GetWordFromUS(QByteArray& out, unsigned short* area, int start, int count);

/// A count of 1 sets bytes 0 and 1 of \a out to the low half of the element after \a start. Any other count
/// appends count - 1 whole elements (one for counts below 1).
void GetDWordFromUS(QByteArray& out, unsigned int* area, int start, int count);
/// @}

/// \name Bytes to image
/// @{

/// Stores the lowest bit of each byte; one cell past the last byte is stored as 0 if \a count asks for it.
void SetBitToUC(int start, bool* area, QByteArray* data, int count);

/// Sets a bit of the words where the byte is exactly 1, clears it otherwise; stops at the end of the bytes.
void SetBitToUS(int start, unsigned short* area, QByteArray* data, int count);

/// Stores words; a word that begins at the end of the bytes is stored as 0, the ones after it are left.
void SetWordToUS(int start, unsigned short* area, QByteArray* data, int count);

/// Stores double words; one that begins at the end of the bytes is stored as 0, the ones after it are left.
void SetDWordToUS(int start, unsigned int* area, QByteArray* data, int count);

/// Stores pairs of words exchanged (high half first); \a count is in words, an odd one at the end is left,
/// and so is a pair that is not wholly there. Kept for completeness; the driver does not use it.
void SetWordToUI(int start, unsigned short* area, QByteArray* data, int count);
/// @}

#endif
