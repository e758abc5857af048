// SPDX-License-Identifier: MIT
#include "gateway/session/figures.h"

namespace plc
{

const std::vector<FigureRow>& figureRows()
{
    using F = const GatewayFigures&;
    static const std::vector<FigureRow> rows = {
        {"refreshesPerSecond", "Controller/Refreshes per Second", [](F f) { return f.refreshesPerSecond; }},
        {"requests", "Controller/Requests", [](F f) { return static_cast<double>(f.requests); }},
        {"retries", "Controller/Retries", [](F f) { return static_cast<double>(f.retries); }},
        {"failures", "Controller/Failures", [](F f) { return static_cast<double>(f.failures); }},
        {"roundTripMs", "Controller/Round Trip ms", [](F f) { return f.roundTripMs; }},
        {"brokerConnections", "Broker/Connections",
         [](F f) { return static_cast<double>(f.brokerConnections); }},
        {"waiting", "Spool/Waiting", [](F f) { return static_cast<double>(f.waiting); }},
        {"dropped", "Spool/Dropped", [](F f) { return static_cast<double>(f.dropped); }},
        {"oldestMs", "Spool/Oldest ms", [](F f) { return static_cast<double>(f.oldestMs); }},
        {"published", "Values/Published", [](F f) { return static_cast<double>(f.published); }},
    };
    return rows;
}

} // namespace plc
