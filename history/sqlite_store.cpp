// SPDX-License-Identifier: MIT
#include "history/sqlite_store.h"

#include "history/writer_lock.h"
#include "runtime/model/value_type.h"

#include <QSqlQuery>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace plc
{

namespace
{

const qint64 aliveEveryMs = 10000; // while nothing is logged: each costs the disk a page

struct StoredValue {
    QVariant number; // null: there is none
    QVariant text;   // null: the number says it all
};

/// \return the number that reads as \a text, and the text where it is not the number's own
StoredValue storedValue(const QString& text, bool isText)
{
    StoredValue stored{QVariant(QVariant::LongLong), QVariant(QVariant::String)};
    bool isWhole = false;
    bool isNumber = false;
    const qint64 whole = text.toLongLong(&isWhole);
    const double number = text.toDouble(&isNumber);
    if (isText || !isNumber || !std::isfinite(number)) {
        stored.text = text;
    } else if (isWhole) {
        stored.number = whole;
    } else {
        stored.number = number;
        const bool isBig = std::abs(number) >= greatestExactWhole; // digits may be lost
        if (isBig)
            stored.text = text;
    }
    return stored;
}

} // namespace

SqliteStore::SqliteStore(const QString& path) : m_path(path), m_lock(lockPath(path)) {}

SqliteStore::~SqliteStore() = default;

void SqliteStore::open(const std::vector<Series>& series)
{
    takeWriterLock(&m_lock, m_path);
    m_file = std::make_unique<HistoryFile>(m_path, HistoryFile::Purpose::Write);
    // Two samples of one time, or a clock that was set back, are no reason to lose one.
    m_insert = m_file->prepare(
        QStringLiteral("INSERT INTO samples VALUES(?, ?, (SELECT coalesce(max(seq) + 1, 0) FROM samples "
                       "WHERE variable = ? AND time = ?), ?, ?, ?)"));
    m_alive = m_file->prepare(QStringLiteral("UPDATE logging SET alive = ?"));
    m_file->begin();
    endOpenSeries();
    addSeries(series);
    m_file->commit();
}

void SqliteStore::endOpenSeries()
{
    m_aliveMs = m_file->run(QStringLiteral("SELECT alive FROM logging")).value(0).toLongLong();
    QSqlQuery variables = m_file->run(QStringLiteral("SELECT id FROM variables"));
    QSqlQuery last = m_file->prepare(QStringLiteral(
        "SELECT time, state FROM samples WHERE variable = ? ORDER BY time DESC, seq DESC LIMIT 1"));
    for (; variables.isValid(); variables.next()) {
        const int id = variables.value(0).toInt();
        execute(&last, {id});
        if (!last.next() || last.value(1).toInt() == static_cast<int>(SampleState::NotLogged))
            continue;
        LogSample end;
        end.timeMs = std::max(m_aliveMs, last.value(0).toLongLong());
        end.state = SampleState::NotLogged;
        last.finish();
        insert(id, end, false);
    }
}

/// A series that is there keeps its number; unit, type and digits are as the list has them now.
void SqliteStore::addSeries(const std::vector<Series>& series)
{
    QSqlQuery add = m_file->prepare(QStringLiteral(
        "INSERT INTO variables(name, unit, type, digits) VALUES(?, ?, ?, ?) ON CONFLICT(name) DO UPDATE SET "
        "unit = excluded.unit, type = excluded.type, digits = excluded.digits"));
    for (const Series& one : series) {
        // A null text would be NULL.
        execute(&add, {one.name, one.unit + QLatin1String(""), one.type + QLatin1String(""), one.digits});
        const QSqlQuery id =
            m_file->run(QStringLiteral("SELECT id FROM variables WHERE name = ?"), {one.name});
        const bool isText = one.type == QLatin1String("text") || one.type == QLatin1String("hex");
        m_rows.push_back({id.value(0).toInt(), isText});
    }
}

SampleStore::Written SqliteStore::write(const std::vector<LogSample>& samples)
{
    Written result;
    try {
        m_file->begin();
        qint64 newest = m_aliveMs;
        for (const LogSample& sample : samples) {
            const Row& row = m_rows[static_cast<std::size_t>(sample.series)];
            insert(row.id, sample, row.isText);
            newest = std::max(newest, sample.timeMs);
        }
        execute(&*m_alive, {newest});
        m_file->commit();
        m_aliveMs = newest;
        result.count = samples.size();
    } catch (const std::runtime_error& error) {
        result.error = QString::fromLocal8Bit(error.what());
        m_file->rollback();
    }
    return result;
}

void SqliteStore::idle(qint64 nowMs)
{
    if (nowMs - m_aliveMs < aliveEveryMs)
        return;
    try {
        execute(&*m_alive, {nowMs});
    } catch (const std::runtime_error&) {
        // nothing is lost but the end of a gap; the next sample tells of a disk that is full
    }
    m_aliveMs = nowMs;
}

void SqliteStore::insert(int variable, const LogSample& sample, bool isText)
{
    StoredValue stored{QVariant(QVariant::LongLong), QVariant(QVariant::String)};
    if (sample.state == SampleState::Fresh)
        stored = storedValue(sample.text, isText);
    execute(&*m_insert, {variable, sample.timeMs, variable, sample.timeMs, static_cast<int>(sample.state),
                         stored.number, stored.text});
}

} // namespace plc
