// SPDX-License-Identifier: MIT
#include "runtime/model/settings.h"

#include "runtime/model/variable.h"

namespace plc
{

namespace
{

struct Range {
    const char* name;
    int value;
    int least;
    int most;
};

} // namespace

QString settingsError(const Settings& settings)
{
    if (settings.driverPath.isEmpty())
        return QStringLiteral("no driver library is given; give the path of libplcdriver.so");
    if (settings.host.isEmpty())
        return QStringLiteral("no controller is given; give its name or address");
    const Range ranges[] = {
        {"port", settings.port, 1, 65535},
        {"station", settings.station, 0, lastStation},
        {"time-out (ms)", settings.timeoutMs, 1, 60000},
        {"retry limit", settings.retryLimit, 0, 1000},
        {"words of one request", settings.maxBlockCount, smallestBlockCount, largestBlockCount},
        {"time between refreshes (ms)", settings.pollMs, 0, 3600000},
        {"pause between requests (ms)", settings.gapMs, 0, 60000},
        {"age of a stale value (ms)", settings.staleAfterMs, 1, 3600000},
        {"first pause of a station (ms)", settings.stationPauseMs, 0, longestStationPauseMs},
    };
    for (const Range& range : ranges) {
        if (range.value < range.least || range.value > range.most)
            return QStringLiteral("%1: %2 is outside %3..%4")
                .arg(QLatin1String(range.name))
                .arg(range.value)
                .arg(range.least)
                .arg(range.most);
    }
    return QString();
}

} // namespace plc
