// SPDX-License-Identifier: MIT
/// \file
/// \brief Counts what a program allocates. Linking allocation_count.cpp replaces malloc and its relatives, so
///        operator new and the allocations of libraries are counted too.
#ifndef BENCH_ALLOCATION_COUNT_H
#define BENCH_ALLOCATION_COUNT_H

namespace bench
{

/// \return allocations since the program began, enlargements included. For programs with one thread.
unsigned long allocationCount();

} // namespace bench

#endif
