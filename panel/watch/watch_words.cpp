// SPDX-License-Identifier: MIT
#include "panel/watch/watch_words.h"

#include "runtime/modbus/failure_words.h"
#include "runtime/model/listed_value.h"

namespace plc
{

QString linkText(const LinkState& link)
{
    if (link.connected) {
        QString text = QStringLiteral("connected for %1").arg(ageText(link.sinceMs));
        if (link.connects > 1)
            text += QStringLiteral(", reconnects: %1").arg(link.connects - 1);
        if (link.dropped.total() > 0)
            text += QStringLiteral(", replies dropped: %1").arg(link.dropped.total());
        return text;
    }
    if (link.lastError.isEmpty())
        return QStringLiteral("connecting");
    return QStringLiteral("NOT CONNECTED for %1, trying again (%2)")
        .arg(ageText(link.sinceMs), link.lastError);
}

bool hasStationLines(const WatchView& view)
{
    return view.stations.size() > 1;
}

QString linkLine(const WatchView& view)
{
    const int own = view.stations.size() == 1 ? view.stations.front().station : view.station;
    const QString stations = hasStationLines(view) ? QStringLiteral("%1 stations").arg(view.stations.size())
                                                   : QStringLiteral("station %1").arg(own);
    return QStringLiteral("%1, %2: %3").arg(view.controller, stations, linkText(view.link));
}

QString stateWord(const CyclicValue& value)
{
    return valueStateWord(hasFailed(value.failure) ? ValueState::Failed : value.state);
}

QString stateText(const CyclicValue& value)
{
    if (!hasFailed(value.failure))
        return stateWord(value);
    return QStringLiteral("%1: %2").arg(stateWord(value), failureText(value.failure));
}

bool isOutside(const WatchRow& row)
{
    return row.listed && row.value.ageMs >= 0 && isOutside(*row.listed, row.value.values);
}

QString stateText(const WatchRow& row)
{
    const QString text = stateText(row.value);
    return isOutside(row) ? QStringLiteral("%1, outside %2").arg(text, limitsText(*row.listed)) : text;
}

QString ageText(qint64 ms)
{
    if (ms < 0)
        return QStringLiteral("-");
    const qint64 seconds = ms / 1000;
    if (seconds < 10)
        return QStringLiteral("%1.%2 s").arg(seconds).arg(ms % 1000 / 100);
    if (seconds < 120)
        return QStringLiteral("%1 s").arg(seconds);
    const qint64 minutes = seconds / 60;
    if (minutes < 120)
        return QStringLiteral("%1 min").arg(minutes);
    return QStringLiteral("%1 h").arg(seconds / 3600);
}

} // namespace plc
