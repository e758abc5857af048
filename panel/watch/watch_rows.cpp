// SPDX-License-Identifier: MIT
#include "panel/watch/watch_rows.h"

namespace plc
{

std::vector<WatchRow> emptyRows(const std::vector<Variable>& typed, const std::vector<ListedVariable>& listed)
{
    std::vector<WatchRow> rows;
    rows.reserve(typed.size() + listed.size());
    for (const Variable& variable : typed)
        rows.push_back({variable, {}, nullptr});
    for (const ListedVariable& line : listed)
        rows.push_back({line.elements, {}, &line});
    return rows;
}

} // namespace plc
