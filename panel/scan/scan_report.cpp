// SPDX-License-Identifier: MIT
#include "panel/scan/scan_report.h"

#include "panel/terminal/display_width.h"
#include "runtime/model/counted.h"
#include "runtime/model/value_text.h"

#include <QJsonArray>
#include <QMap>

#include <algorithm>

namespace plc
{

namespace
{

const int stationWidth = 7;
const int timeWidth = 11;
const int answerColumn = stationWidth + 2 + timeWidth + 2;
const std::size_t mostNotTogether = 3; // that are told one by one

QString timeText(qint64 microseconds)
{
    return QStringLiteral("%1 ms").arg(static_cast<double>(microseconds) / 1000, 0, 'f', 1);
}

QString answerText(const StationAnswer& answer)
{
    QString text = QStringLiteral("answers");
    if (answer.kind == StationAnswer::Refused)
        text += QStringLiteral(" with ") + answer.words;
    if (answer.kind == StationAnswer::Unusable)
        text += QStringLiteral(", but ") + answer.words;
    const QString identity = identityText(answer.identity);
    return identity.isEmpty() ? text : text + QStringLiteral("; ") + identity;
}

QString answerText(const ReadAnswer& answer)
{
    switch (answer.kind) {
    case ReadAnswer::Given:
        return QStringLiteral("can be read");
    case ReadAnswer::Refused:
        return QStringLiteral("refused: ") + answer.words;
    case ReadAnswer::Interrupted:
        return QStringLiteral("not asked: ") + answer.words;
    default:
        return answer.words;
    }
}

std::size_t countOf(const std::vector<StationAnswer>& answers, StationAnswer::Kind kind)
{
    return static_cast<std::size_t>(std::count_if(
        answers.begin(), answers.end(), [kind](const StationAnswer& each) { return each.kind == kind; }));
}

std::size_t thereAre(const std::vector<StationAnswer>& answers)
{
    return static_cast<std::size_t>(std::count_if(answers.begin(), answers.end(), isThere));
}

QString absenceWords(const StationAnswer& answer)
{
    if (answer.kind == StationAnswer::None && answer.tries > 1)
        return answer.words + QStringLiteral(" (asked %1 times)").arg(answer.tries);
    return answer.words;
}

/// In the order of the first station of each.
QString absentLines(const std::vector<StationAnswer>& answers)
{
    QStringList order;
    QMap<QString, std::vector<int>> stations;
    for (const StationAnswer& answer : answers) {
        if (isThere(answer))
            continue;
        const QString words = absenceWords(answer);
        if (!stations.contains(words))
            order << words;
        stations[words].push_back(answer.station);
    }
    QString text;
    for (const QString& words : order)
        text += QStringLiteral("%1: %2\n").arg(stationsText(stations.value(words)), words);
    return text;
}

QString elementText(Variable elements, int element)
{
    return addressText(elements.area, element);
}

QString secondsText(double seconds)
{
    return QStringLiteral("%1 s").arg(seconds, 0, 'f', 1);
}

QString spanText(const Variable& elements)
{
    const QString first = variableText({elements.area, elements.element, 1, -1});
    return elements.count == 1
               ? first
               : first + QStringLiteral(" to ") + variableText({elements.area, endOf(elements) - 1, 1, -1});
}

QString notTogetherText(const ElementCounts& counts)
{
    QString text;
    for (std::size_t each = 0; each < std::min(counts.notTogether.size(), mostNotTogether); ++each)
        text +=
            QStringLiteral("  %1: given in two, but not together\n").arg(spanText(counts.notTogether[each]));
    if (counts.notTogether.size() > mostNotTogether)
        text += QStringLiteral("  and %1 more such\n").arg(counts.notTogether.size() - mostNotTogether);
    return text;
}

QLatin1String kindWord(StationAnswer::Kind kind)
{
    switch (kind) {
    case StationAnswer::Values:
        return QLatin1String("values");
    case StationAnswer::Refused:
        return QLatin1String("exception");
    case StationAnswer::Unusable:
        return QLatin1String("unusable");
    case StationAnswer::Gateway:
        return QLatin1String("gateway");
    case StationAnswer::None:
        return QLatin1String("none");
    case StationAnswer::NotConnected:
        return QLatin1String("not connected");
    case StationAnswer::NotAsked:
        return QLatin1String("not asked");
    }
    return QLatin1String("");
}

QLatin1String kindWord(ReadAnswer::Kind kind)
{
    switch (kind) {
    case ReadAnswer::Given:
        return QLatin1String("given");
    case ReadAnswer::Refused:
        return QLatin1String("refused");
    case ReadAnswer::Unanswered:
        return QLatin1String("none");
    case ReadAnswer::NotConnected:
        return QLatin1String("not connected");
    case ReadAnswer::Interrupted:
        return QLatin1String("not asked");
    }
    return QLatin1String("");
}

QJsonObject jsonOfIdentity(const Identity& identity)
{
    QJsonObject object{{QStringLiteral("function"), identity.function}};
    for (const auto& field : identity.fields)
        object.insert(field.first, field.second);
    return object;
}

QJsonObject jsonOfElements(const Variable& elements)
{
    QJsonObject object{{QStringLiteral("station"), elements.station},
                       {QStringLiteral("area"), elements.area},
                       {QStringLiteral("from"), elementText(elements, elements.element)},
                       {QStringLiteral("to"), elementText(elements, endOf(elements) - 1)},
                       {QStringLiteral("count"), elements.count}};
    return object;
}

} // namespace

QString stationsText(const std::vector<int>& stations)
{
    QStringList texts;
    for (std::size_t first = 0; first < stations.size();) {
        std::size_t last = first;
        while (last + 1 < stations.size() && stations[last + 1] == stations[last] + 1)
            ++last;
        texts << (first == last ? QString::number(stations[first])
                                : QStringLiteral("%1-%2").arg(stations[first]).arg(stations[last]));
        first = last + 1;
    }
    return texts.join(QStringLiteral(", "));
}

QString stationHeading()
{
    return QStringLiteral("%1  %2  ANSWER")
        .arg(QStringLiteral("STATION"), stationWidth)
        .arg(QStringLiteral("TIME"), timeWidth);
}

QString stationLine(const StationAnswer& answer)
{
    return QStringLiteral("%1  %2  ")
               .arg(answer.station, stationWidth)
               .arg(timeText(answer.microseconds), timeWidth) +
           answerText(answer);
}

QString stationsEnd(const std::vector<StationAnswer>& answers, double seconds)
{
    const std::size_t there = thereAre(answers);
    const std::size_t unasked =
        countOf(answers, StationAnswer::NotAsked) + countOf(answers, StationAnswer::NotConnected);
    QStringList results{QStringLiteral("%1 answered").arg(there)};
    if (const std::size_t gateway = countOf(answers, StationAnswer::Gateway))
        results << QStringLiteral("a gateway did not reach %1").arg(gateway);
    if (const std::size_t silent = countOf(answers, StationAnswer::None))
        results << QStringLiteral("%1 gave no answer").arg(silent);
    if (unasked > 0)
        results << QStringLiteral("%1 not asked").arg(unasked);
    QString text = absentLines(answers) + QStringLiteral("%1 in %2: %3\n")
                                              .arg(counted(static_cast<qint64>(answers.size()), "station"),
                                                   secondsText(seconds), results.join(QStringLiteral(", ")));
    if (there > 1 && there == answers.size())
        text += QStringLiteral("All answered: a controller may answer for any station.\n");
    return text;
}

QString rangeHeading(const Variable& range)
{
    return QStringLiteral("Station %1, %2:").arg(range.station).arg(spanText(range));
}

QString runLine(const Variable& range, const ScannedRun& run)
{
    const int widest = columnsOf(spanText({range.area, endOf(range) - 1, 1, -1}));
    const int width = range.count == 1 ? widest : 2 * widest + columnsOf(QStringLiteral(" to "));
    return QStringLiteral("  ") + padded(spanText(run.elements), width) +
           QStringLiteral("  %1  ").arg(run.elements.count, QString::number(range.count).size()) +
           answerText(run.answer);
}

QString rangeEnd(const Variable& range, const ElementCounts& counts, double seconds)
{
    QStringList results{QStringLiteral("%1 can be read").arg(counts.given)};
    if (counts.refused > 0)
        results << QStringLiteral("%1 refused").arg(counts.refused);
    if (counts.unknown > 0)
        results << QStringLiteral("%1 not known").arg(counts.unknown);
    if (counts.tooMany > 0)
        results << QStringLiteral("%1 were too many at once, %2 were not")
                       .arg(counts.tooMany)
                       .arg(counts.mostAtOnce);
    return notTogetherText(counts) + QStringLiteral("%1, %2 in %3: %4\n")
                                         .arg(counted(range.count, "element"), counted(counts.reads, "read"),
                                              secondsText(seconds), results.join(QStringLiteral(", ")));
}

QString stationJson(const StationAnswer& answer)
{
    QJsonObject object{{QStringLiteral("station"), answer.station},
                       {QStringLiteral("answer"), kindWord(answer.kind)},
                       {QStringLiteral("tries"), answer.tries}};
    if (answer.microseconds >= 0)
        object.insert(QStringLiteral("ms"), static_cast<double>(answer.microseconds) / 1000);
    if (answer.exception > 0)
        object.insert(QStringLiteral("exception"), answer.exception);
    if (!answer.words.isEmpty())
        object.insert(QStringLiteral("words"), answer.words);
    if (answer.identity.function != 0)
        object.insert(QStringLiteral("identity"), jsonOfIdentity(answer.identity));
    return jsonLine(object);
}

QString stationsEndJson(const std::vector<StationAnswer>& answers, double seconds)
{
    const auto number = [&answers](StationAnswer::Kind kind) {
        return static_cast<int>(countOf(answers, kind));
    };
    const QJsonObject summary{
        {QStringLiteral("stations"), static_cast<int>(answers.size())},
        {QStringLiteral("answered"), static_cast<int>(thereAre(answers))},
        {QStringLiteral("gateway"), number(StationAnswer::Gateway)},
        {QStringLiteral("none"), number(StationAnswer::None)},
        {QStringLiteral("notAsked"), number(StationAnswer::NotAsked) + number(StationAnswer::NotConnected)},
        {QStringLiteral("seconds"), seconds}};
    return jsonLine({{QStringLiteral("summary"), summary}});
}

QString runJson(const ScannedRun& run)
{
    QJsonObject object = jsonOfElements(run.elements);
    object.insert(QStringLiteral("answer"), kindWord(run.answer.kind));
    if (run.answer.exception > 0)
        object.insert(QStringLiteral("exception"), run.answer.exception);
    if (!run.answer.words.isEmpty())
        object.insert(QStringLiteral("words"), run.answer.words);
    return jsonLine(object);
}

QString rangeEndJson(const Variable& range, const ElementCounts& counts, double seconds)
{
    QJsonObject summary = jsonOfElements(range);
    summary.insert(QStringLiteral("given"), static_cast<qint64>(counts.given));
    summary.insert(QStringLiteral("refused"), static_cast<qint64>(counts.refused));
    summary.insert(QStringLiteral("unknown"), static_cast<qint64>(counts.unknown));
    summary.insert(QStringLiteral("reads"), static_cast<qint64>(counts.reads));
    summary.insert(QStringLiteral("seconds"), seconds);
    summary.insert(QStringLiteral("mostAtOnce"), counts.mostAtOnce);
    if (counts.tooMany > 0)
        summary.insert(QStringLiteral("tooMany"), counts.tooMany);
    QJsonArray apart;
    for (const Variable& elements : counts.notTogether)
        apart.append(QJsonObject{{QStringLiteral("from"), elementText(elements, elements.element)},
                                 {QStringLiteral("to"), elementText(elements, endOf(elements) - 1)}});
    if (!apart.isEmpty())
        summary.insert(QStringLiteral("notTogether"), apart);
    return jsonLine({{QStringLiteral("summary"), summary}});
}

} // namespace plc
