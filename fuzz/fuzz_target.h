// SPDX-License-Identifier: MIT
/// \file
/// \brief The one function of every target, under the name by which a fuzzer and replay.cpp call it.
#ifndef FUZZ_FUZZ_TARGET_H
#define FUZZ_FUZZ_TARGET_H

#include <cstddef>
#include <cstdint>

/// Runs the target on one input; ends the program when a promise is broken. \return 0
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

#endif
