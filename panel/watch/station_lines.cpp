// SPDX-License-Identifier: MIT
#include "panel/watch/station_lines.h"

#include "runtime/modbus/failure_words.h"

#include <algorithm>

namespace plc
{

namespace
{

const int msOfSecond = 1000;

/// \return whole seconds, never 0 while there is something left to wait for
qint64 secondsOf(qint64 ms)
{
    return (ms + msOfSecond - 1) / msOfSecond;
}

QString conditionText(const StationReport& report)
{
    switch (report.condition) {
    case StationCondition::NotTried:
        return QStringLiteral("not tried yet");
    case StationCondition::Answering:
        return QStringLiteral("answering");
    case StationCondition::NotAnswering:
        return QStringLiteral("not answering");
    case StationCondition::Pausing:
        return QStringLiteral("not answering, next try in %1 s").arg(secondsOf(report.nextTryMs));
    case StationCondition::SwitchedOff:
        return QStringLiteral("switched off");
    }
    return QString();
}

StationLine lineOf(const StationReport& report)
{
    StationLine line;
    line.good =
        report.condition == StationCondition::Answering || report.condition == StationCondition::NotTried;
    line.text = QStringLiteral("station %1: %2").arg(report.station).arg(conditionText(report));
    if (report.failures > 0)
        line.text += QStringLiteral(", requests given up: %1").arg(report.failures);
    if (!line.good && hasFailed(report.failure))
        line.text += QStringLiteral(" (%1)").arg(failureWords(report.failure));
    return line;
}

} // namespace

std::vector<StationLine> stationLines(const std::vector<StationReport>& stations, int most)
{
    std::vector<StationLine> lines;
    lines.reserve(stations.size());
    for (const StationReport& report : stations)
        lines.push_back(lineOf(report));
    if (most == 0 || static_cast<int>(lines.size()) <= most)
        return lines;
    const auto good = [](const StationLine& line) { return line.good; };
    const auto count = std::count_if(lines.begin(), lines.end(), good);
    lines.erase(std::remove_if(lines.begin(), lines.end(), good), lines.end());
    StationLine others;
    others.text =
        QStringLiteral("%1 of %2 stations answering or not tried yet").arg(count).arg(stations.size());
    lines.push_back(others);
    return lines;
}

bool sameNews(const StationReport& a, const StationReport& b)
{
    return a.station == b.station && a.condition == b.condition && a.failure == b.failure;
}

} // namespace plc
