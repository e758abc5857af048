// SPDX-License-Identifier: MIT
/// \file
/// \brief The state of the driver as text, so that two states can be compared and a difference be read.
#ifndef TESTS_ALLOCATION_DRIVER_STATE_H
#define TESTS_ALLOCATION_DRIVER_STATE_H

#include <string>

struct RW_VAR;

/// All fields but the result code.
std::string Describe(const RW_VAR& var);

/// The request lists, the frames, the result record, the stations switched off, the values per station that
/// are not zero, and elements 0..15 of each area that are not zero; one line each. Counters of the scheduler
/// are left out, and so are zero values per station: reading one makes an entry, which nobody can tell from
/// none.
std::string DescribeDriver();

#endif
