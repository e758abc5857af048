// SPDX-License-Identifier: MIT
#include "history/history_reader.h"

#include <QLocale>

#include <algorithm>
#include <queue>

namespace plc
{

namespace
{

QString numberText(const Series& series, const QVariant& value)
{
    if (value.type() == QVariant::LongLong && series.digits <= 0)
        return value.toString();
    if (series.digits >= 0)
        return QString::number(value.toDouble(), 'f', series.digits);
    return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
}

/// \param query at a row of time, state, value, text
LoggedSample sampleOf(const Series& series, const QSqlQuery& query)
{
    LoggedSample sample;
    sample.timeMs = query.value(0).toLongLong();
    sample.state = static_cast<SampleState>(query.value(1).toInt());
    const QVariant value = query.value(2);
    if (!value.isNull()) {
        sample.number = value.toDouble();
        sample.text = numberText(series, value);
    }
    if (!query.isNull(3))
        sample.text = query.value(3).toString();
    return sample;
}

const QString lastBefore = QStringLiteral("SELECT time, state, value, text FROM samples WHERE variable = ? "
                                          "AND time < ? ORDER BY time DESC, seq DESC LIMIT 1");

/// \param query prepared with lastBefore
std::optional<LoggedSample> lastSample(const LoggedSeries& series, qint64 timeMs, QSqlQuery* query)
{
    execute(query, {series.id, timeMs});
    if (!query->next())
        return std::nullopt;
    const LoggedSample sample = sampleOf(series.series, *query);
    query->finish();
    return sample;
}

/// The samples of one series, one after the other.
struct Cursor {
    const LoggedSeries* series;
    QSqlQuery query;
    LoggedSample sample;

    bool next()
    {
        if (!query.next())
            return false;
        sample = sampleOf(series->series, query);
        return true;
    }
};

/// The value that holds until the next sample.
struct Held {
    bool is = false;
    double value = 0;
};

Held heldAfter(const std::optional<LoggedSample>& sample)
{
    if (!sample || !sample->number)
        return {};
    return {true, *sample->number};
}

qint64 clamped(qint64 timeMs)
{
    return std::clamp<qint64>(timeMs, 0, latestMs);
}

TimeRange clamped(TimeRange range)
{
    return {clamped(range.fromMs), clamped(range.toMs)};
}

void widen(TrendPiece* piece, double low, double high)
{
    piece->min = std::min(piece->min.value_or(low), low);
    piece->max = std::max(piece->max.value_or(high), high);
}

} // namespace

HistoryReader::HistoryReader(const QString& path) : m_file(path, HistoryFile::Purpose::Read) {}

std::vector<LoggedSeries> HistoryReader::series() const
{
    std::vector<LoggedSeries> found;
    QSqlQuery query = m_file.run(
        QStringLiteral(
            "SELECT id, name, unit, type, digits, (SELECT min(time) FROM samples WHERE variable = id AND "
            "time >= 0), "
            "(SELECT max(time) FROM samples WHERE variable = id AND time <= %1) FROM variables ORDER BY name")
            .arg(latestMs));
    for (; query.isValid(); query.next()) {
        LoggedSeries one;
        one.id = query.value(0).toInt();
        one.series = {query.value(1).toString(), query.value(2).toString(), query.value(3).toString(),
                      query.value(4).toInt()};
        if (!query.isNull(5) && !query.isNull(6)) {
            one.firstMs = query.value(5).toLongLong();
            one.lastMs = query.value(6).toLongLong();
        }
        found.push_back(one);
    }
    return found;
}

qint64 HistoryReader::aliveMs() const
{
    return clamped(m_file.run(QStringLiteral("SELECT alive FROM logging")).value(0).toLongLong());
}

void HistoryReader::visit(const std::vector<LoggedSeries>& series, TimeRange wanted,
                          const SampleVisitor& visitor) const
{
    const TimeRange range = clamped(wanted);
    std::vector<Cursor> cursors;
    cursors.reserve(series.size());
    for (const LoggedSeries& one : series) {
        QSqlQuery query = m_file.prepare(QStringLiteral(
            "SELECT time, state, value, text FROM samples WHERE variable = ? AND time >= ? AND "
            "time < ? ORDER BY time, seq"));
        execute(&query, {one.id, range.fromMs, range.toMs});
        cursors.push_back({&one, query, {}});
    }
    const auto isLater = [&cursors](std::size_t a, std::size_t b) {
        const qint64 timeA = cursors[a].sample.timeMs;
        const qint64 timeB = cursors[b].sample.timeMs;
        return timeA != timeB ? timeA > timeB : a > b;
    };
    std::priority_queue<std::size_t, std::vector<std::size_t>, decltype(isLater)> earliest(isLater);
    for (std::size_t index = 0; index < cursors.size(); ++index) {
        if (cursors[index].next())
            earliest.push(index);
    }
    while (!earliest.empty()) {
        const std::size_t index = earliest.top();
        earliest.pop();
        if (!visitor(*cursors[index].series, cursors[index].sample))
            return;
        if (cursors[index].next())
            earliest.push(index);
    }
}

std::optional<LoggedSample> HistoryReader::sampleBefore(const LoggedSeries& series, qint64 timeMs) const
{
    const QSqlQuery query = m_file.run(
        QStringLiteral(
            "SELECT time, state, value, text FROM samples WHERE variable = ? AND time < ? ORDER BY "
            "time DESC, seq DESC LIMIT 1"),
        {series.id, timeMs});
    if (!query.isValid())
        return std::nullopt;
    return sampleOf(series.series, query);
}

std::vector<TrendPiece> HistoryReader::trend(const LoggedSeries& series, TimeRange wanted, int pieces) const
{
    const TimeRange range = clamped(wanted);
    const qint64 length = std::max<qint64>(range.toMs - range.fromMs, 1);
    const qint64 count = std::min<qint64>(std::max(pieces, 1), length);
    QSqlQuery extremes = m_file.prepare(
        QStringLiteral("SELECT min(time), min(value), max(value), sum(value IS NULL) FROM samples WHERE "
                       "variable = ? AND time >= ? AND time < ?"));
    const qint64 known = std::max(aliveMs(), series.lastMs.value_or(0) + 1);
    QSqlQuery last = m_file.prepare(lastBefore);
    Held held = heldAfter(sampleBefore(series, range.fromMs));
    std::vector<TrendPiece> trend;
    for (qint64 index = 0; index < count; ++index) {
        const qint64 begin = range.fromMs + index * length / count;
        const qint64 end = range.fromMs + (index + 1) * length / count;
        if (begin >= known)
            held = Held();
        execute(&extremes, {series.id, begin, end});
        extremes.next();
        const bool hasSamples = !extremes.isNull(0);
        TrendPiece piece;
        if (!hasSamples || extremes.value(0).toLongLong() > begin) {
            piece.gap = !held.is;
            if (held.is)
                widen(&piece, held.value, held.value);
        }
        if (hasSamples) {
            if (!extremes.isNull(1))
                widen(&piece, extremes.value(1).toDouble(), extremes.value(2).toDouble());
            piece.gap = piece.gap || extremes.value(3).toLongLong() > 0;
            held = heldAfter(lastSample(series, end, &last));
        }
        extremes.finish();
        trend.push_back(piece);
    }
    return trend;
}

} // namespace plc
