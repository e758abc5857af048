// SPDX-License-Identifier: MIT
#include "panel/watch/watch_view.h"

#include "panel/watch/station_lines.h"

#include <algorithm>

namespace plc
{

bool sameNews(const CyclicValue& a, const CyclicValue& b)
{
    return a.state == b.state && a.values == b.values && a.failure == b.failure;
}

bool sameNews(const WatchView& a, const WatchView& b)
{
    return a.link.connected == b.link.connected && a.link.lastError == b.link.lastError &&
           std::equal(a.stations.begin(), a.stations.end(), b.stations.begin(), b.stations.end(),
                      [](const StationReport& x, const StationReport& y) { return sameNews(x, y); }) &&
           std::equal(a.rows.begin(), a.rows.end(), b.rows.begin(), b.rows.end(),
                      [](const WatchRow& x, const WatchRow& y) { return sameNews(x.value, y.value); });
}

} // namespace plc
