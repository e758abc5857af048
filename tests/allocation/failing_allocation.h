// SPDX-License-Identifier: MIT
/// \file
/// \brief Lets the n-th allocation of a call fail, and counts allocations and living blocks.
///
/// The program that links tests/allocation/failing_allocation.cpp has its malloc, calloc and realloc
/// replaced, and with them operator new and whatever libQt5Core allocates: list slots and nodes, bytes,
/// texts, map nodes. With a sanitizer, which brings a malloc of its own, operator new alone is replaced: list
/// nodes.
#ifndef TESTS_FAILING_ALLOCATION_H
#define TESTS_FAILING_ALLOCATION_H

/// Which allocations fail.
enum class Failing { ONE, ONE_AND_ALL_LATER };

/// Watches the allocations of the thread that made it, one watch at a time. Allocation number \a nth (from 1
/// on; 0: none) finds no memory.
class AllocationWatch
{
public:
    explicit AllocationWatch(int nth = 0, Failing which = Failing::ONE);
    ~AllocationWatch();
    AllocationWatch(const AllocationWatch&) = delete;
    AllocationWatch& operator=(const AllocationWatch&) = delete;

    /// Allocations under the last watch, those that failed included.
    static int count();

    /// Whether one of them failed.
    static bool failed();

    /// Blocks that this thread allocated so far and nobody freed, watched or not. Frees of other threads
    /// confuse it.
    static long livingBlocks();

    /// Whether malloc is replaced, not operator new alone.
    static bool coversMalloc();
};

#endif
