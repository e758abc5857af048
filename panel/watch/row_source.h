// SPDX-License-Identifier: MIT
/// \file
/// \brief The watched rows as they are now, a few at a time: there may be a million.
#ifndef PANEL_WATCH_ROW_SOURCE_H
#define PANEL_WATCH_ROW_SOURCE_H

#include "panel/watch/watched_variables.h"
#include "runtime/model/cyclic_value.h"

#include <algorithm>
#include <functional>
#include <vector>

namespace plc
{

/// Where rows have their values from.
struct RowSource {
    const WatchedVariables* variables = nullptr;
    /// Gives those from \a first on, as many as there is room for.
    std::function<void(int first, std::vector<CyclicValue>* values)> values;
};

/// Goes through all rows, again and again in the same memory.
class RowWalk
{
public:
    /// \param visit is given a row and its value; false: it is enough
    /// \return false when \a visit did
    template <class Visit>
    bool over(const RowSource& source, Visit visit)
    {
        const int rows = source.variables->size();
        for (int first = 0; first < rows; first += atOnce) {
            m_values.resize(static_cast<std::size_t>(std::min(atOnce, rows - first)));
            source.values(first, &m_values);
            int row = first;
            for (const CyclicValue& value : m_values) {
                if (!visit(row++, value))
                    return false;
            }
        }
        return true;
    }

private:
    static constexpr int atOnce = 500; // communication waits meanwhile

    std::vector<CyclicValue> m_values;
};

} // namespace plc

#endif
