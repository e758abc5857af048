// SPDX-License-Identifier: MIT
/// \file
/// \brief What a person wants scanned: stations, and ranges of elements.
#ifndef PANEL_COMMANDS_SCAN_RANGES_H
#define PANEL_COMMANDS_SCAN_RANGES_H

#include "runtime/model/variable.h"

#include <QString>

#include <optional>
#include <vector>

namespace plc
{

/// Parses "1-20,30".
/// \return each once, ascending; nothing when \a text is wrong, then \a error says what is expected
std::optional<std::vector<int>> parseStations(const QString& text, QString* error);

/// \return the stations that a serial line can have, 1 to 247
std::vector<int> usualStations();

/// Parses "AREA" for all of it, "AREA:FROM-TO", or what parseVariable() takes.
/// \param remote elements without a Modbus address are there as well
/// \return bits in words as the words that hold them; nothing when \a text is wrong, then \a error says what is
///         expected
std::optional<Variable> parseScanRange(const QString& text, bool remote, QString* error);

} // namespace plc

#endif
