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

/// Where a range is kept: room for as many elements as a variable has.
struct RangePlace {
    quint32* least;
    quint32* greatest;
};

/// \param isKnown false: nothing is kept yet \param listed null for elements without a type, which are whole numbers
/// \return whether there is a range now
bool widen(const RangePlace& range, bool isKnown, const ListedVariable* listed,
           const std::vector<quint32>& elements);

} // namespace plc

#endif
