// SPDX-License-Identifier: MIT
#include "panel/commands/scan_ranges.h"

#include "runtime/modbus/request_pieces.h"
#include "runtime/model/modbus_address.h"
#include "runtime/model/printable.h"

#include <QRegularExpression>

#include <set>

namespace plc
{

namespace
{

const int lastUsualStation = 247;

std::nullopt_t refuse(QString* error, const QString& words)
{
    *error = words;
    return std::nullopt;
}

/// "AREA:FROM-TO", without the area.
std::optional<Variable> parseSpan(int area, const QString& from, const QString& to, QString* error)
{
    const auto first = parseAddress(area, from, error);
    const auto last = first ? parseAddress(area, to, error) : std::nullopt;
    if (!last)
        return std::nullopt;
    if (*last < *first)
        return refuse(error,
                      QStringLiteral("%1 lies behind %2; the lower address is expected first").arg(from, to));
    return Variable{area, *first, *last - *first + 1, -1};
}

std::optional<Variable> wholeArea(const QString& text, bool remote, QString* error)
{
    bool isNumber = false;
    const int area = text.toInt(&isNumber);
    if (!isNumber || !isArea(area))
        return refuse(error, QStringLiteral("\"%1\" is no area; areas are 0 to %2")
                                 .arg(excerpt(text), QString::number(areaCount() - 1)));
    return Variable{area, 0, remote ? areaSize(area) : modbusElements(area), -1};
}

std::optional<Variable> parseRange(const QString& text, bool remote, QString* error)
{
    static const QRegularExpression span(QStringLiteral("^([0-9]{1,2}):([^-x@]+)-([^-x@]+)$"));
    const auto match = span.match(text);
    if (!text.contains(QLatin1Char(':')))
        return wholeArea(text, remote, error);
    if (!match.hasMatch())
        return parseVariable(text, error);
    const auto area = wholeArea(match.captured(1), remote, error);
    return area ? parseSpan(area->area, match.captured(2), match.captured(3), error) : std::nullopt;
}

} // namespace

std::optional<std::vector<int>> parseStations(const QString& text, QString* error)
{
    static const QRegularExpression part(QStringLiteral("^([0-9]{1,3})(?:-([0-9]{1,3}))?$"));
    std::set<int> stations;
    for (const QString& each : text.split(QLatin1Char(','))) {
        const auto match = part.match(each);
        const int first = match.captured(1).toInt();
        const int last = match.captured(2).isEmpty() ? first : match.captured(2).toInt();
        if (!match.hasMatch() || first < 1 || last < first || last > lastStation)
            return refuse(
                error, QStringLiteral("\"%1\" names no stations; 1 to %2 are expected, for example 1-20,30")
                           .arg(excerpt(each), QString::number(lastStation)));
        for (int station = first; station <= last; ++station)
            stations.insert(station);
    }
    return std::vector<int>(stations.begin(), stations.end());
}

std::vector<int> usualStations()
{
    std::vector<int> stations;
    for (int station = 1; station <= lastUsualStation; ++station)
        stations.push_back(station);
    return stations;
}

std::optional<Variable> parseScanRange(const QString& text, bool remote, QString* error)
{
    const auto range = parseRange(text, remote, error);
    return range ? std::optional<Variable>(wordsOf(*range)) : std::nullopt;
}

} // namespace plc
