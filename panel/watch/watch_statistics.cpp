// SPDX-License-Identifier: MIT
#include "panel/watch/watch_statistics.h"

#include "panel/terminal/wrapped_text.h"
#include "runtime/modbus/return_code_words.h"

namespace plc
{

namespace
{

const int labelWidth = 11;

// Of the bars: what they count, how many there are, and the longest of them.
const int binWidth = 16;
const int countWidth = 8;
const int widestBar = 24;

/// A single refresh has no rate.
QString rateText(long passes, double perSecond)
{
    if (passes < 2)
        return QString();
    if (perSecond <= 0)
        return QStringLiteral(", none a second now");
    return QStringLiteral(", %1 a second").arg(perSecond, 0, 'f', perSecond < 10 ? 1 : 0);
}

QString numbered(long number, const char* one, const char* several)
{
    return QStringLiteral("%1 %2").arg(number).arg(QLatin1String(number == 1 ? one : several));
}

QString refreshesText(const Statistics& statistics)
{
    if (statistics.passes == 0)
        return QStringLiteral("none is complete yet");
    const PassCost& pass = statistics.lastPass;
    return QStringLiteral("%1%2; the last took %3 in %4")
        .arg(statistics.passes)
        .arg(rateText(statistics.passes, statistics.passesPerSecond),
             numbered(pass.requests, "request", "requests"), numbered(pass.frames, "frame", "frames"));
}

QString amountText(long read, long unused, const char* what)
{
    QString text = QStringLiteral("%1 %2").arg(read).arg(QLatin1String(what));
    if (read > 0)
        text += QStringLiteral(" (%1 % of them for no variable)")
                    .arg(100.0 * static_cast<double>(unused) / static_cast<double>(read), 0, 'f', 1);
    return text;
}

QString readText(const PassCost& pass)
{
    return amountText(pass.registers, pass.registersUnused, "registers") + QStringLiteral(", ") +
           amountText(pass.bits, pass.bitsUnused, "bits");
}

QString failuresText(long retried, const std::map<int, long>& failuresByCode)
{
    QStringList failures;
    long failed = 0;
    for (const auto& failure : failuresByCode) {
        failed += failure.second;
        failures << QStringLiteral("%1 x %2 (return code %3)")
                        .arg(failure.second)
                        .arg(resultWords(failure.first))
                        .arg(failure.first);
    }
    const QString text = QStringLiteral("%1, %2").arg(numbered(retried, "retry", "retries"),
                                                      numbered(failed, "failure", "failures"));
    return failures.isEmpty() ? text : text + QStringLiteral(": ") + failures.join(QStringLiteral(", "));
}

QString millisecondsText(double microseconds)
{
    return QString::number(microseconds / 1000, 'f', 2);
}

QString spanText(const RoundTrips& trips)
{
    const QString replies = numbered(trips.count(), "reply", "replies");
    if (trips.count() == 0)
        return replies;
    return QStringLiteral("%1 in %2 to %3 ms, %4 ms on average")
        .arg(replies, millisecondsText(static_cast<double>(trips.shortest())),
             millisecondsText(static_cast<double>(trips.longest())), millisecondsText(trips.mean()));
}

/// \return "below 1 ms", "2 to 5 ms", "1000 ms and more"
QString binText(std::size_t bin)
{
    if (bin == 0)
        return QStringLiteral("below %1 ms").arg(RoundTrips::limits.front());
    if (bin == RoundTrips::limits.size())
        return QStringLiteral("%1 ms and more").arg(RoundTrips::limits.back());
    return QStringLiteral("%1 to %2 ms").arg(RoundTrips::limits[bin - 1]).arg(RoundTrips::limits[bin]);
}

/// What is rare gets a mark as well.
int barLength(long part, long whole)
{
    return static_cast<int>((part * widestBar + whole - 1) / whole);
}

QString barLine(const RoundTrips& trips, std::size_t bin)
{
    const long number = trips.inBin(bin);
    return QString(labelWidth, QLatin1Char(' ')) + binText(bin).leftJustified(binWidth) +
           QString::number(number).rightJustified(countWidth) + QStringLiteral("  ") +
           QString(barLength(number, trips.count()), QLatin1Char('#'));
}

/// \return a bar for each bin from the first to the last that holds something
QStringList barLines(const RoundTrips& trips)
{
    QStringList lines;
    int filled = 0;
    for (std::size_t bin = 0; bin < RoundTrips::bins; ++bin) {
        if (trips.inBin(bin) > 0)
            filled = lines.size() + 1;
        if (filled > 0)
            lines << barLine(trips, bin);
    }
    return lines.mid(0, filled);
}

QStringList binTexts(const RoundTrips& trips)
{
    QStringList texts;
    for (std::size_t bin = 0; bin < RoundTrips::bins; ++bin) {
        if (trips.inBin(bin) > 0)
            texts << QStringLiteral("%1 %2").arg(trips.inBin(bin)).arg(binText(bin));
    }
    return texts;
}

QString stationText(int station, const StationStatistics& statistics)
{
    const QStringList bins = binTexts(statistics.roundTrips);
    return QStringLiteral("%1: %2%3; %4")
        .arg(station)
        .arg(spanText(statistics.roundTrips),
             bins.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(bins.join(QStringLiteral(", "))),
             failuresText(statistics.retried, statistics.failuresByCode));
}

QStringList labelled(const char* label, const QString& text, int columns)
{
    const int room = columns > 0 ? qMax(columns - labelWidth, 1) : text.size();
    QStringList lines;
    for (const QString& line : wrapped(text.split(QLatin1Char(' ')), room))
        lines << QString::fromLatin1(lines.isEmpty() ? label : "").leftJustified(labelWidth) + line;
    return lines;
}

QStringList roundTripLines(const Statistics& statistics, int columns)
{
    RoundTrips all;
    for (const auto& station : statistics.stations)
        all.add(station.second.roundTrips);
    if (all.count() == 0)
        return {};
    return labelled("ANSWERS", spanText(all), columns) + barLines(all);
}

/// One station alone has nothing to add.
QStringList stationLines(const Statistics& statistics, int columns)
{
    QStringList lines;
    if (statistics.stations.size() < 2)
        return lines;
    for (const auto& station : statistics.stations)
        lines +=
            labelled(lines.isEmpty() ? "STATIONS" : "", stationText(station.first, station.second), columns);
    return lines;
}

} // namespace

QStringList statisticsLines(const Statistics& statistics, int columns)
{
    QStringList lines = labelled("REFRESHES", refreshesText(statistics), columns);
    if (statistics.passes > 0)
        lines += labelled("READ", readText(statistics.lastPass), columns);
    lines += labelled("TROUBLE", failuresText(statistics.retried, statistics.failuresByCode), columns);
    return lines + roundTripLines(statistics, columns) + stationLines(statistics, columns);
}

} // namespace plc
