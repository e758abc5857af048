// SPDX-License-Identifier: MIT
/// \file
/// \brief One process's share of a list that several refresh together.
#ifndef RUNTIME_CYCLE_LIST_PART_H
#define RUNTIME_CYCLE_LIST_PART_H

#include "runtime/model/settings.h"
#include "runtime/model/variable.h"

#include <QString>

#include <cstddef>
#include <optional>
#include <vector>

namespace plc
{

inline constexpr int mostListParts = 100;

/// A controller that takes its time for each reply answers several connections at once. Each process has one, and a
/// driver of its own.
struct ListPart {
    int number = 1; ///< 1..parts
    int parts = 1;
};

/// Parses "K/N", 1 <= K <= N <= mostListParts.
/// \return nothing when \a text is wrong, then \a error says what is expected
std::optional<ListPart> parseListPart(const QString& text, QString* error);

/// Each Nth of the block reads that the driver makes of the list, from the Kth on: all parts together refresh every
/// variable, none twice. A variable that takes several blocks goes with the first. A part may be empty where there
/// are fewer blocks than parts. There must be no Runtime meanwhile.
/// \return the indexes of the variables of \a part, in their order
/// \throws std::runtime_error when the driver cannot be loaded, or a variable or the block size is refused
std::vector<std::size_t> variablesOfPart(const ListPart& part, const std::vector<Variable>& variables,
                                         const Settings& settings);

} // namespace plc

#endif
