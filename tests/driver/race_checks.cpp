// SPDX-License-Identifier: MIT
#include "race_checks.h"

// Inline instructions that mean nothing outside valgrind; no library.
#if __has_include(<valgrind/helgrind.h>)
#include <valgrind/helgrind.h>

void LeaveUnchecked(const void* bytes, std::size_t size)
{
    VALGRIND_HG_DISABLE_CHECKING(bytes, size);
}
#else
void LeaveUnchecked(const void*, std::size_t) {}
#endif
