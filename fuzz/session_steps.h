// SPDX-License-Identifier: MIT
/// \file
/// \brief What a runtime may do next, taken from a byte string.
#ifndef FUZZ_SESSION_STEPS_H
#define FUZZ_SESSION_STEPS_H

#include "fuzz/byte_source.h"
#include "fuzz/checked_driver.h"
#include "fuzz/driver_values.h"

namespace fuzz
{

/// What the first byte of a step is one of: polls and replies come first.
constexpr int stepCount = 14;

/// Calls one entry point, or a few; the first byte says which.
void takeStep(CheckedDriver& driver, ByteSource& source, CountLimit& counts);

/// \return true where the driver keeps so many values per station that each step would take long
bool isFull();

} // namespace fuzz

#endif
