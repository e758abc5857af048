#include "panel/watch_rows.h"

namespace panel
{

std::vector<WatchRow> emptyRows(const Options& options)
{
    std::vector<WatchRow> rows;
    for (const Variable& variable : options.variables)
        rows.push_back({variable, {}, std::nullopt});
    for (const ListedVariable& listed : options.listed)
        rows.push_back({listed.elements, {}, listed});
    return rows;
}

} // namespace panel
