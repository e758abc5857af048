// SPDX-License-Identifier: MIT
/// \file
/// \brief Values of the controller's memory as text: what is loaded at the start and dumped at the end.
///
/// One value per line, numbers decimal or hexadecimal with 0x; `#` starts a comment; blank lines are
/// skipped:
///
///     unit 1 coil 0x0010 1
///     unit 1 register 8192 1234    # a comment
///
/// Units go from 1 to 255, addresses from 0 to 65535, a coil is 0 or 1, a register 0 to 65535. A value
/// given twice: the last line counts. A byte order mark at the beginning is skipped.
///
/// A value may move (moving_value.h says how) between limits, with a period in milliseconds:
///
///     unit 1 register 100 ramp 0..1000 period 10000
///     unit 1 register 101 sine -200..200 period 60000
///     unit 1 register32 102 counter 0..4294967295 period 10    # two registers, the low half first
///     unit 1 coil 16 random period 500                         # no limits: a coil is 0 or 1
///
/// Limits are -32768 to 65535 for a register and -2147483648 to 4294967295 for register32, the lowest
/// first; a period is 1 to 86400000. Where a place is given both ways, it moves.
#ifndef SIMULATOR_MEMORY_TEXT_H
#define SIMULATOR_MEMORY_TEXT_H

#include "simulator/controller_memory.h"

#include <optional>
#include <string>
#include <vector>

namespace simulator
{

struct MemoryText {
    std::vector<MemoryValue> values;
    std::vector<MovingPlace> moving;
    /// One for each wrong line: place, its text, what was expected. After 20 of them one that says how many
    /// more there are.
    std::vector<std::string> errors;
};

/// Reads `text`, whatever it holds. `fileName` is only for the messages.
MemoryText parseMemoryText(const std::string& text, const std::string& fileName);

/// The lines for `values`, in a form that parseMemoryText() reads back to the same values.
std::string formatMemoryText(const std::vector<MemoryValue>& values);

/// A whole decimal or 0x-hexadecimal number from 0 to `maximum`, nothing before or behind it.
std::optional<unsigned long> parseNumber(const std::string& text, unsigned long maximum);

} // namespace simulator

#endif
