// SPDX-License-Identifier: MIT
/// \file
/// \brief Rebuilds the cyclic read list. ReCreatReadVarList() is in the public header.
#ifndef VARLIST_READ_LIST_H
#define VARLIST_READ_LIST_H

#include "driver/modbus_rtu_master.h"

/// Appends \a var to \a list in pieces of at most \a max elements. Left alone when it fits; otherwise \a var
/// is left holding the last piece. A \a max of 0 or less never splits.
void WhetherGroup(int count, int max, RW_VAR* var, QList<RW_VAR>* list);

/// Sorts by address, ascending and signed; entries of equal address keep their order. Only list slots are
/// exchanged, no record is copied.
void Bubble_Sort(QList<RW_VAR>* list);

/// Merges a sorted list into block reads of at most \a maxLen elements and appends them to readList. An entry
/// inside the open block is dropped; a gap is read along when the block stays within \a maxLen. Never splits:
/// an entry that opens a block keeps its own count.
/// \param list   sorted by address
/// \param maxLen elements of a block at most; 0 or less: every entry opens its own block
/// \param index  size of readList
/// \return new size of readList
int WordVarReCreat(QList<RW_VAR>* list, int maxLen, int index) PLC_REQUIRES(PLC_driver.listMutex);

#endif
