// SPDX-License-Identifier: MIT
/// \file
/// \brief The least and the greatest that a variable was.
#ifndef PANEL_WATCH_VALUE_RANGE_H
#define PANEL_WATCH_VALUE_RANGE_H

#include "runtime/model/variable_list.h"

#include <vector>

namespace plc
{

/// Kept as elements, so that they are shown as the values are; of several values each by itself. Text has none,
/// and what is no number (nan, not BCD) does not count.
struct ValueRange {
    std::vector<quint32> least; ///< empty before the first number
    std::vector<quint32> greatest;
};

/// \param listed null for elements without a type, which are whole numbers
void widen(ValueRange* range, const ListedVariable* listed, const std::vector<quint32>& elements);

} // namespace plc

#endif
