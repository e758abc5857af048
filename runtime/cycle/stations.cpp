// SPDX-License-Identifier: MIT
#include "runtime/cycle/stations.h"

#include <map>

namespace plc
{

Stations::Stations(const DriverCalls& calls, const Settings& settings)
    : m_calls(calls), m_pauses(settings.multiStation ? settings.stationPauseMs : 0, settings.retryLimit + 1)
{
    m_clock.start();
}

void Stations::turn(int station, bool on, bool held)
{
    if (on && held && m_off.count(station) != 0)
        m_held.insert(station);
    if (on)
        m_off.erase(station);
    else
        m_off.insert(station);
    m_pauses.forget(station);
    tellDriver(station);
}

void Stations::release(int station)
{
    m_held.erase(station);
    tellDriver(station);
}

void Stations::wake(int station)
{
    if (m_pauses.end(station))
        tellDriver(station);
}

void Stations::endPauses()
{
    if (!m_pauses.anyPausing())
        return;
    for (const int station : m_pauses.over(m_clock.elapsed()))
        tellDriver(station);
}

bool Stations::givenUp(int station, const Failure& why)
{
    return m_pauses.givenUp(station, why, m_clock.elapsed());
}

/// A station is served when neither the user, nor what is left from before, nor a pause keeps it off.
void Stations::tellDriver(int station)
{
    const bool isOff = m_off.count(station) != 0 || m_held.count(station) != 0 || m_pauses.isPausing(station);
    m_calls.EnCommStation(station, isOff ? 0 : 1);
}

std::vector<StationReport> Stations::reports(const std::set<int>& named) const
{
    std::map<int, StationReport> reports;
    for (const int station : named)
        reports[station].station = station;
    for (const StationReport& report : m_pauses.reports(m_clock.elapsed()))
        reports[report.station] = report;
    for (const int station : m_off) {
        reports[station].station = station;
        reports[station].condition = StationCondition::SwitchedOff;
        reports[station].nextTryMs = -1;
    }
    std::vector<StationReport> sorted;
    sorted.reserve(reports.size());
    for (const auto& report : reports)
        sorted.push_back(report.second);
    return sorted;
}

} // namespace plc
