// SPDX-License-Identifier: MIT
#include "panel/watch/watch_json.h"

#include "runtime/model/value_text.h"

#include "panel/watch/watch_words.h"
#include "runtime/modbus/failure_words.h"
#include "runtime/modbus/return_code_words.h"
#include "runtime/model/listed_value.h"

#include <QJsonArray>

namespace plc
{

namespace
{

const QString timeMember = QStringLiteral("time");

QJsonObject jsonOfPass(const PassCost& pass)
{
    return {{QStringLiteral("requests"), pass.requests},
            {QStringLiteral("frames"), pass.frames},
            {QStringLiteral("registers"), static_cast<qint64>(pass.registers)},
            {QStringLiteral("registersUnused"), static_cast<qint64>(pass.registersUnused)},
            {QStringLiteral("bits"), static_cast<qint64>(pass.bits)},
            {QStringLiteral("bitsUnused"), static_cast<qint64>(pass.bitsUnused)}};
}

QJsonArray jsonOfFailures(const std::map<int, long>& failures)
{
    QJsonArray array;
    for (const auto& failure : failures)
        array.append(QJsonObject{{QStringLiteral("code"), failure.first},
                                 {QStringLiteral("words"), resultWords(failure.first)},
                                 {QStringLiteral("count"), static_cast<qint64>(failure.second)}});
    return array;
}

QJsonArray jsonOfBins(const RoundTrips& trips)
{
    QJsonArray array;
    for (std::size_t bin = 0; bin < RoundTrips::bins; ++bin) {
        QJsonObject object{{QStringLiteral("count"), static_cast<qint64>(trips.inBin(bin))}};
        if (bin < RoundTrips::limits.size())
            object.insert(QStringLiteral("belowMs"), RoundTrips::limits[bin]);
        array.append(object);
    }
    return array;
}

QJsonObject jsonOfRoundTrips(const RoundTrips& trips)
{
    return {{QStringLiteral("count"), static_cast<qint64>(trips.count())},
            {QStringLiteral("shortestMs"), static_cast<double>(trips.shortest()) / 1000},
            {QStringLiteral("longestMs"), static_cast<double>(trips.longest()) / 1000},
            {QStringLiteral("meanMs"), trips.mean() / 1000},
            {QStringLiteral("bins"), jsonOfBins(trips)}};
}

QJsonArray jsonOfStations(const std::map<int, StationStatistics>& stations)
{
    QJsonArray array;
    for (const auto& station : stations)
        array.append(
            QJsonObject{{QStringLiteral("station"), station.first},
                        {QStringLiteral("roundTrips"), jsonOfRoundTrips(station.second.roundTrips)},
                        {QStringLiteral("retries"), static_cast<qint64>(station.second.retried)},
                        {QStringLiteral("failures"), jsonOfFailures(station.second.failuresByCode)}});
    return array;
}

} // namespace

QString watchJson(const WatchRow& row, int station, const QDateTime& time)
{
    const int own = row.variable.station;
    QJsonObject object = jsonOfVariable(row.variable, own < 0 ? station : own);
    object.insert(timeMember, time.toString(Qt::ISODateWithMs));
    object.insert(QStringLiteral("state"), stateWord(row.value));
    if (row.listed)
        addListed(&object, *row.listed);
    if (row.listed && row.value.ageMs >= 0)
        addListedValue(&object, *row.listed, row.value.values);
    if (row.value.ageMs >= 0)
        addValues(&object, row.value.values);
    if (hasFailed(row.value.failure)) {
        object.insert(QStringLiteral("error"), failureWords(row.value.failure));
        object.insert(QStringLiteral("code"), row.value.failure.code);
    }
    return jsonLine(object);
}

QString statisticsJson(const Statistics& statistics, const QDateTime& time)
{
    const QJsonObject values = {{QStringLiteral("refreshes"), static_cast<qint64>(statistics.passes)},
                                {QStringLiteral("refreshesPerSecond"), statistics.passesPerSecond},
                                {QStringLiteral("lastRefresh"), jsonOfPass(statistics.lastPass)},
                                {QStringLiteral("frames"), static_cast<qint64>(statistics.exchanges)},
                                {QStringLiteral("retries"), static_cast<qint64>(statistics.retried)},
                                {QStringLiteral("failed"), static_cast<qint64>(statistics.failed)},
                                {QStringLiteral("failures"), jsonOfFailures(statistics.failuresByCode)},
                                {QStringLiteral("stations"), jsonOfStations(statistics.stations)}};
    return jsonLine({{QStringLiteral("statistics"), values}, {timeMember, time.toString(Qt::ISODateWithMs)}});
}

} // namespace plc
