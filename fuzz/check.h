// SPDX-License-Identifier: MIT
/// \file
/// \brief How a harness says that something broken was found.
#ifndef FUZZ_CHECK_H
#define FUZZ_CHECK_H

#include <cstdio>
#include <cstdlib>

namespace fuzz
{

/// Ends the program with \a promise, which was broken, unless it \a holds. The fuzzer then keeps the input.
inline void check(bool holds, const char* promise)
{
    if (holds)
        return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

} // namespace fuzz

#endif
