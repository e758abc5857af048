// SPDX-License-Identifier: MIT
/// \file
/// \brief How runs of elements are counted and cut into pieces. Arithmetic alone: any thread, no lock.
#ifndef VARLIST_PIECES_H
#define VARLIST_PIECES_H

/// What a count is used for: it decides what the largest sensible one is.
enum CountUse {
    COUNT_OF_READ,         ///< area 14: one more than its double words
    COUNT_OF_QUEUED_WRITE, ///< area 14: 16-bit words
    COUNT_OF_ELEMENTS
};

/// \return \a count, cut to what \a area can serve at most, so that no count loops or allocates without bound
int ServableCount(int area, int count, CountUse use);

/// A run of elements in pieces of at most one block; the last piece holds the rest.
struct Pieces {
    int number; ///< 0 for a count of 0 or less
    int size;   ///< elements of every piece but the last
    int last;   ///< elements of the last piece

    /// \return elements of piece \a i
    int count(int i) const { return i == number - 1 ? last : size; }

    /// \return the element at which piece \a i of a run from \a start on begins; wraps at 2^32
    int begin(int start, int i) const;
};

/// Cuts \a count elements into pieces of at most \a limit; one piece where \a limit is 0 or less.
Pieces CutIntoPieces(int count, int limit);

/// \return words that \a count bits from bit \a address on span, counted from the first bit of their first word:
///         1 for no bit from bit 5 on, 0 or less where the count reaches back to that bit or beyond. \a count
///         is cut by ServableCount().
int WordsOfBits(int address, int count);

#endif
