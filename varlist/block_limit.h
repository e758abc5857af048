// SPDX-License-Identifier: MIT
/// \file
/// \brief How many elements one request may hold.
#ifndef VARLIST_BLOCK_LIMIT_H
#define VARLIST_BLOCK_LIMIT_H

/// \name Most elements of one request
/// 0 or less means that nothing is split. The settings block MUST be registered.
/// @{

/// \return COMINFO::maxBlockCount
int WordLimit();

/// \return eight times as many, at most 2^31 - 1
int BitLimit();

/// \return the limit of \a area: BitLimit() for bit areas, WordLimit() for all others
int BlockLimit(int area);
/// @}

#endif
