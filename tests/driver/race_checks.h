// SPDX-License-Identifier: MIT
/// \file
/// \brief Memory that two threads touch without a lock on purpose.
#ifndef TESTS_DRIVER_RACE_CHECKS_H
#define TESTS_DRIVER_RACE_CHECKS_H

#include <cstddef>

/// Takes bytes out of the checks of helgrind; without it, nothing happens. The thread sanitizer is told in
/// tests/thread_sanitizer.cpp.
void LeaveUnchecked(const void* bytes, std::size_t size);

#endif
