// SPDX-License-Identifier: MIT
#include "bench/allocation_count.h"

#include <cstddef>

namespace
{

unsigned long allocations = 0;

} // namespace

unsigned long bench::allocationCount()
{
    return allocations;
}

extern "C" {

// What the C library's functions of the plain names do.
void* __libc_malloc(std::size_t size);                     // NOLINT(bugprone-reserved-identifier)
void* __libc_calloc(std::size_t number, std::size_t size); // NOLINT(bugprone-reserved-identifier)
void* __libc_realloc(void* memory, std::size_t size);      // NOLINT(bugprone-reserved-identifier)

__attribute__((visibility("default"))) void* malloc(std::size_t size)
{
    ++allocations;
    return __libc_malloc(size);
}

__attribute__((visibility("default"))) void* calloc(std::size_t number, std::size_t size)
{
    ++allocations;
    return __libc_calloc(number, size);
}

__attribute__((visibility("default"))) void* realloc(void* memory, std::size_t size)
{
    ++allocations;
    return __libc_realloc(memory, size);
}
}
