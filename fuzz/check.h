// SPDX-License-Identifier: MIT
/// \file
/// \brief How a harness says that something broken was found.
#ifndef FUZZ_CHECK_H
#define FUZZ_CHECK_H

#include <cstdio>
#include <cstdlib>

namespace fuzz
{

/// Ends the program. The fuzzer then keeps the input.
[[noreturn]] inline void abortOverPromise(const char* promise)
{
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

/// What is done about a broken promise. It does not return: it ends the program or throws.
inline void (*onBrokenPromise)(const char* promise) = abortOverPromise;

/// Says \a promise, which was broken, unless it \a holds.
inline void check(bool holds, const char* promise)
{
    if (!holds)
        onBrokenPromise(promise);
}

} // namespace fuzz

#endif
