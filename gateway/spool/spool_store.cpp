// SPDX-License-Identifier: MIT
#include "gateway/spool/spool_store.h"

#include "gateway/spool/sample_code.h"
#include "runtime/model/counted.h"

#include <QDateTime>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <algorithm>
#include <atomic>

namespace plc
{

namespace
{

// "plcs": tells the file from those of other programs. The version is that of the tables and of sample_code.h.
const int fileMark = 0x706C6373;
const int fileVersion = 1;

// Of SQLite, in the lower eight bits of its codes.
enum Code { Busy = 5, ReadOnly = 8, InOut = 10, Corrupt = 11, Full = 13, CannotOpen = 14, NoDatabase = 26 };

const int pageBytes = 4096;
const int rowBytes = 64;

/// Of a file that cannot be mended and may be moved out of the way.
class DamagedFile : public std::runtime_error
{
public:
    explicit DamagedFile(const QString& words) : std::runtime_error(words.toStdString()) {}
};

QString newConnection()
{
    static std::atomic<int> number{0};
    return QStringLiteral("plc-spool-%1").arg(++number);
}

QString wordsOf(int code, const QString& words)
{
    switch (code) {
    case Busy:
        return QStringLiteral("another process holds it; each gateway needs a spool of its own");
    case ReadOnly:
        return QStringLiteral("it is read-only; make it writable, and its folder too");
    case Full:
        return QStringLiteral("no room is left on the disk; make room, or give the spool less");
    case InOut:
        return QStringLiteral(
            "the disk refuses to read or write it; see the system's messages, and whether room is left");
    case CannotOpen:
        return QStringLiteral("it cannot be opened; its folder has to exist and be writable");
    default:
        return words;
    }
}

/// \throws SpoolError, DamagedFile
[[noreturn]] void fail(const QString& path, const QSqlError& error)
{
    const int code = error.nativeErrorCode().toInt() & 0xFF;
    if (code == Corrupt || code == NoDatabase)
        throw DamagedFile(error.databaseText());
    throw SpoolError(QStringLiteral("the spool %1: %2").arg(path, wordsOf(code, error.text())));
}

QVariant number(quint64 value)
{
    return QVariant(static_cast<qlonglong>(value));
}

} // namespace

qint64 bytesInFile(int bytes)
{
    const qint64 row = bytes + rowBytes;
    return row < pageBytes ? row : (row + pageBytes - 1) / pageBytes * pageBytes;
}

struct SpoolStore::Queries {
    explicit Queries(const QSqlDatabase& database)
        : put(database), remove(database), removeOne(database), mark(database), read(database)
    {
        put.prepare(QStringLiteral("INSERT OR REPLACE INTO chunks VALUES(?, ?, ?, ?, ?)"));
        remove.prepare(QStringLiteral("DELETE FROM chunks WHERE first < ?"));
        removeOne.prepare(QStringLiteral("DELETE FROM chunks WHERE first = ?"));
        mark.prepare(QStringLiteral("UPDATE marks SET done = ?, handed_out = ?, dropped = ?"));
        read.setForwardOnly(true);
        read.prepare(QStringLiteral("SELECT samples FROM chunks WHERE first = ?"));
    }

    QSqlQuery put;
    QSqlQuery remove;
    QSqlQuery removeOne;
    QSqlQuery mark;
    QSqlQuery read;
};

SpoolStore::SpoolStore(const QString& path, const QStringList& names, const Tell& tell)
    : m_path(path), m_connection(newConnection()), m_tell(tell)
{
    try {
        try {
            open();
        } catch (const DamagedFile& damage) {
            close();
            moveAside(QString::fromStdString(damage.what()));
            open();
        }
        readMarks();
        readNames(names);
        readChunks();
        m_queries = std::make_unique<Queries>(*m_database);
    } catch (const DamagedFile& damage) { // of a file that was found whole
        close();
        throw SpoolError(
            QStringLiteral("the spool %1 is damaged: %2").arg(path, QString::fromStdString(damage.what())));
    } catch (...) {
        close();
        throw;
    }
}

SpoolStore::~SpoolStore()
{
    close();
}

void SpoolStore::open()
{
    m_database =
        std::make_unique<QSqlDatabase>(QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connection));
    if (!m_database->isValid())
        throw SpoolError(QStringLiteral("Qt has no SQLite here; install libqt5sql5-sqlite"));
    m_database->setDatabaseName(m_path);
    m_database->setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=0"));
    if (!m_database->open())
        fail(m_path, m_database->lastError());
    setUp();
}

void SpoolStore::close()
{
    m_queries.reset();
    if (!m_database)
        return;
    m_database->close();
    m_database.reset();
    QSqlDatabase::removeDatabase(m_connection);
}

void SpoolStore::run(const QString& statement)
{
    QSqlQuery query(*m_database);
    if (!query.exec(statement))
        fail(m_path, query.lastError());
}

void SpoolStore::run(QSqlQuery* query)
{
    if (!query->exec())
        fail(m_path, query->lastError());
    query->finish();
}

void SpoolStore::setUp()
{
    for (const char* pragma : {"locking_mode = EXCLUSIVE", "journal_mode = WAL", "synchronous = NORMAL",
                               "cache_size = -512", "journal_size_limit = 4194304"})
        run(QStringLiteral("PRAGMA ") + QLatin1String(pragma));
    check();
    run(QStringLiteral("BEGIN IMMEDIATE"));
    run(QStringLiteral("PRAGMA application_id = %1").arg(fileMark));
    run(QStringLiteral("PRAGMA user_version = %1").arg(fileVersion));
    run(QStringLiteral(
        "CREATE TABLE IF NOT EXISTS names(id INTEGER PRIMARY KEY, name TEXT UNIQUE NOT NULL)"));
    run(QStringLiteral("CREATE TABLE IF NOT EXISTS chunks(first INTEGER PRIMARY KEY, count INTEGER NOT NULL, "
                       "since INTEGER NOT NULL, until INTEGER NOT NULL, samples BLOB NOT NULL)"));
    run(QStringLiteral("CREATE TABLE IF NOT EXISTS marks(id INTEGER PRIMARY KEY CHECK(id = 1), "
                       "done INTEGER NOT NULL, handed_out INTEGER NOT NULL, dropped INTEGER NOT NULL)"));
    run(QStringLiteral("INSERT OR IGNORE INTO marks VALUES(1, 0, 0, 0)"));
    run(QStringLiteral("COMMIT"));
}

/// A file of something else is left alone, a damaged one is not.
void SpoolStore::check()
{
    const auto ask = [this](const char* statement) {
        QSqlQuery query(*m_database);
        if (!query.exec(QLatin1String(statement)) || !query.next())
            fail(m_path, query.lastError());
        return query.value(0);
    };
    if (ask("SELECT count(*) FROM sqlite_master").toInt() == 0)
        return;
    if (ask("PRAGMA application_id").toInt() != fileMark)
        throw SpoolError(
            QStringLiteral("%1 is a database of another program; give the spool another folder").arg(m_path));
    if (ask("PRAGMA user_version").toInt() != fileVersion)
        throw SpoolError(
            QStringLiteral("the spool %1 is of another version of the gateway; run that one until it "
                           "is empty, or remove it")
                .arg(m_path));
    const QString state = ask("PRAGMA quick_check(1)").toString();
    if (state != QLatin1String("ok"))
        throw DamagedFile(state);
}

void SpoolStore::moveAside(const QString& why)
{
    const QString aside = m_path + QStringLiteral(".damaged-") +
                          QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMddThhmmsszzz"));
    if (!QFile::rename(m_path, aside))
        throw SpoolError(QStringLiteral("the spool %1 is damaged (%2) and cannot be moved aside; remove it")
                             .arg(m_path, why));
    for (const char* part : {"-wal", "-journal", "-shm"})
        QFile::rename(m_path + QLatin1String(part), aside + QLatin1String(part));
    m_tell(
        QStringLiteral("the spool %1 is damaged (%2): it was moved to %3, and what waited in it is not sent; "
                       "going on with an empty one")
            .arg(m_path, why, aside));
}

void SpoolStore::readMarks()
{
    QSqlQuery query(*m_database);
    if (!query.exec(QStringLiteral("SELECT done, handed_out, dropped FROM marks")) || !query.next())
        fail(m_path, query.lastError());
    m_marks.done = query.value(0).toULongLong();
    m_marks.handedOut = query.value(1).toULongLong();
    m_marks.dropped = query.value(2).toULongLong();
}

void SpoolStore::readNames(const QStringList& names)
{
    QHash<QString, quint32> known;
    QSqlQuery query(*m_database);
    if (!query.exec(QStringLiteral("SELECT id, name FROM names")))
        fail(m_path, query.lastError());
    while (query.next())
        known.insert(query.value(1).toString(), query.value(0).toUInt());
    query.finish();
    run(QStringLiteral("BEGIN IMMEDIATE"));
    query.prepare(QStringLiteral("INSERT INTO names(name) VALUES(?)"));
    for (const QString& name : names) {
        if (!known.contains(name)) {
            query.bindValue(0, name);
            if (!query.exec())
                fail(m_path, query.lastError());
            known.insert(name, query.lastInsertId().toUInt());
        }
        m_variableOf.insert(known.value(name), static_cast<quint32>(m_nameOf.size()));
        m_nameOf.push_back(known.take(name));
    }
    query.finish();
    if (!known.isEmpty())
        forgetNames(known.keys());
    run(QStringLiteral("COMMIT"));
}

void SpoolStore::forgetNames(const QStringList& gone)
{
    const quint64 before = m_marks.dropped;
    std::vector<quint64> chunks;
    QSqlQuery query(*m_database);
    if (!query.exec(QStringLiteral("SELECT first FROM chunks ORDER BY first")))
        fail(m_path, query.lastError());
    while (query.next())
        chunks.push_back(query.value(0).toULongLong());
    query.finish();
    for (const quint64 first : chunks)
        keepKnown(first);
    run(QStringLiteral("UPDATE marks SET dropped = %1").arg(m_marks.dropped));
    query.prepare(QStringLiteral("DELETE FROM names WHERE name = ?"));
    for (const QString& name : gone) {
        query.bindValue(0, name);
        run(&query);
    }
    if (m_marks.dropped != before)
        m_tell(QStringLiteral("%1 dropped from the spool: the variables (%2%3) are not in the list any more")
                   .arg(counted(static_cast<qint64>(m_marks.dropped - before), "value was", "values were"))
                   .arg(gone.first(), gone.size() > 1 ? QStringLiteral(", ...") : QString()));
}

/// Takes the samples of unknown names out of a chunk, and those that are done.
void SpoolStore::keepKnown(quint64 first)
{
    QSqlQuery query(*m_database);
    query.prepare(QStringLiteral("SELECT samples FROM chunks WHERE first = ?"));
    query.bindValue(0, number(first));
    if (!query.exec() || !query.next())
        fail(m_path, query.lastError());
    std::vector<Sample> samples;
    samplesOfBytes(query.value(0).toByteArray(), &samples);
    query.finish();
    QByteArray kept;
    quint64 count = 0;
    quint64 at = first;
    for (const Sample& sample : samples) {
        if (at++ <= m_marks.done)
            continue;
        if (!m_variableOf.contains(sample.variable)) {
            ++m_marks.dropped;
            continue;
        }
        appendSample(&kept, sample, sample.variable);
        ++count;
    }
    QSqlQuery change(*m_database);
    if (count == 0) {
        change.prepare(QStringLiteral("DELETE FROM chunks WHERE first = ?"));
        change.addBindValue(number(first));
    } else { // numbers only become lower, so that none that was handed out looks new
        change.prepare(QStringLiteral("UPDATE chunks SET first = ?, count = ?, samples = ? WHERE first = ?"));
        change.addBindValue(number(std::max(first, m_marks.done + 1)));
        change.addBindValue(number(count));
        change.addBindValue(kept);
        change.addBindValue(number(first));
    }
    run(&change);
}

void SpoolStore::readChunks()
{
    QSqlQuery query(*m_database);
    query.setForwardOnly(true);
    if (!query.exec(
            QStringLiteral("SELECT first, count, length(samples), since, until FROM chunks ORDER BY first")))
        fail(m_path, query.lastError());
    while (query.next()) {
        SpoolChunk chunk;
        chunk.first = query.value(0).toULongLong();
        chunk.count = query.value(1).toULongLong();
        chunk.bytes = bytesInFile(query.value(2).toInt());
        chunk.since = query.value(3).toLongLong();
        chunk.until = query.value(4).toLongLong();
        m_chunks.push_back(chunk);
    }
}

void SpoolStore::commit(const SpoolChange& change)
{
    try {
        run(QStringLiteral("BEGIN IMMEDIATE"));
        for (const SpoolChange::Put& put : change.put) {
            QSqlQuery& query = m_queries->put;
            query.bindValue(0, number(put.chunk.first));
            query.bindValue(1, number(put.chunk.count));
            query.bindValue(2, put.chunk.since);
            query.bindValue(3, put.chunk.until);
            query.bindValue(4, put.samples);
            run(&query);
        }
        m_queries->remove.bindValue(0, number(change.removeBefore));
        run(&m_queries->remove);
        for (const quint64 first : change.removed) {
            m_queries->removeOne.bindValue(0, number(first));
            run(&m_queries->removeOne);
        }
        QSqlQuery& mark = m_queries->mark;
        mark.bindValue(0, number(change.marks.done));
        mark.bindValue(1, number(change.marks.handedOut));
        mark.bindValue(2, number(change.marks.dropped));
        run(&mark);
        run(QStringLiteral("COMMIT"));
    } catch (const std::runtime_error& error) {
        QSqlQuery(*m_database).exec(QStringLiteral("ROLLBACK"));
        throw SpoolError(QString::fromStdString(error.what()));
    }
}

std::vector<Sample> SpoolStore::read(quint64 first)
{
    QSqlQuery& query = m_queries->read;
    query.bindValue(0, number(first));
    std::vector<Sample> samples;
    try {
        if (!query.exec())
            fail(m_path, query.lastError());
        const bool isThere = query.next();
        const bool isWhole = isThere && samplesOfBytes(query.value(0).toByteArray(), &samples);
        query.finish();
        if (!isWhole)
            return {};
    } catch (const DamagedFile&) {
        return {};
    }
    for (Sample& sample : samples)
        sample.variable = m_variableOf.value(sample.variable);
    return samples;
}

} // namespace plc
