// SPDX-License-Identifier: MIT
#include "runtime/cycle/station_pauses.h"

#include <algorithm>

namespace plc
{

StationPauses::StationPauses(int firstPauseMs, int triesOfRequest)
    : m_firstPauseMs(firstPauseMs), m_triesOfRequest(triesOfRequest)
{
}

void StationPauses::tried(int number, TryEnd end)
{
    Station& station = m_stations[number];
    station.lastTry = end;
    if (end == TryEnd::NoAnswer)
        ++station.unanswered;
    if (end != TryEnd::Answered)
        return;
    ++station.answers;
    station.beginAnew();
    station.lost = false;
    if (hasFailed(station.failure))
        station.failure = Failure();
}

bool StationPauses::givenUp(int number, const Failure& why, qint64 now)
{
    Station& station = m_stations[number];
    ++station.failures;
    station.lost = station.lastTry != TryEnd::Answered;
    station.failure = station.lost ? why : Failure();
    if (station.lastTry != TryEnd::NoAnswer || station.unanswered < m_triesOfRequest || m_firstPauseMs == 0)
        return false;
    station.pausing = m_hasPaused = true;
    station.until = now + std::max(station.nextPauseMs, m_firstPauseMs);
    station.nextPauseMs = std::min(2 * std::max(station.nextPauseMs, m_firstPauseMs), longestStationPauseMs);
    return true;
}

std::vector<int> StationPauses::over(qint64 now)
{
    std::vector<int> stations;
    for (auto& station : m_stations) {
        if (!station.second.pausing || station.second.until > now)
            continue;
        station.second.pausing = false;
        stations.push_back(station.first);
    }
    return stations;
}

bool StationPauses::end(int number)
{
    const auto station = m_stations.find(number);
    if (station == m_stations.end() || !station->second.pausing)
        return false;
    station->second.pausing = false;
    return true;
}

void StationPauses::forget(int number)
{
    const auto station = m_stations.find(number);
    if (station != m_stations.end())
        station->second.beginAnew();
}

void StationPauses::Station::beginAnew()
{
    pausing = false;
    unanswered = 0;
    nextPauseMs = 0;
}

bool StationPauses::isPausing(int number) const
{
    const auto station = m_stations.find(number);
    return station != m_stations.end() && station->second.pausing;
}

bool StationPauses::anyPausing() const
{
    return m_hasPaused && // it is asked with each request
           std::any_of(m_stations.begin(), m_stations.end(),
                       [](const auto& station) { return station.second.pausing; });
}

StationReport StationPauses::reportOf(int number, const Station& station, qint64 now) const
{
    StationReport report;
    report.station = number;
    report.answers = station.answers;
    report.failures = station.failures;
    report.failure = station.failure;
    if (station.pausing) {
        report.condition = StationCondition::Pausing;
        report.nextTryMs = std::max<qint64>(station.until - now, 0);
    } else if (station.lost) {
        report.condition = StationCondition::NotAnswering;
    } else if (station.answers > 0) {
        report.condition = StationCondition::Answering;
    }
    return report;
}

std::vector<StationReport> StationPauses::reports(qint64 now) const
{
    std::vector<StationReport> reports;
    for (const auto& station : m_stations)
        reports.push_back(reportOf(station.first, station.second, now));
    return reports;
}

} // namespace plc
