// SPDX-License-Identifier: MIT
#include "history/history_file.h"

#include "history/refuse.h"

#include <QFileInfo>
#include <QSqlError>
#include <QUrl>

#include <atomic>
#include <stdexcept>

namespace plc
{

namespace
{

const int schemaVersion = 1;
const int applicationId = 0x504C4348; // "PLCH": which databases are logs

QString wordsOf(const QSqlError& error)
{
    return error.databaseText().isEmpty() ? error.driverText() : error.databaseText();
}

QString connectionName()
{
    static std::atomic<int> number{0};
    return QStringLiteral("plc-history-%1").arg(++number);
}

bool isFolderWritable(const QFileInfo& file)
{
    return QFileInfo(file.absolutePath()).isWritable();
}

/// Reading a database with a write-ahead log makes files beside it, and only who may write it takes them away again.
bool mayWriteBeside(const QFileInfo& file)
{
    return file.isWritable() && isFolderWritable(file);
}

/// Where they cannot be made nobody writes it either, so that it is safe to read it as it is.
bool isOnReadOnlyMedium(const QFileInfo& file)
{
    return !isFolderWritable(file) && !QFileInfo::exists(file.filePath() + QStringLiteral("-wal"));
}

} // namespace

void execute(QSqlQuery* query, std::initializer_list<QVariant> values)
{
    int position = 0;
    for (const QVariant& value : values)
        query->bindValue(position++, value);
    if (!query->exec())
        refuseFile(wordsOf(query->lastError()));
}

HistoryFile::HistoryFile(const QString& path, Purpose purpose) : m_path(path), m_name(connectionName())
{
    if (!QSqlDatabase::isDriverAvailable(QStringLiteral("QSQLITE")))
        refuseFile(QStringLiteral(
            "Qt's plugin for SQLite is missing; install the package libqt5sql5-sqlite (a log in "
            "CSV does without)"));
    m_database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name);
    try {
        open(purpose);
    } catch (...) {
        m_database = QSqlDatabase();
        QSqlDatabase::removeDatabase(m_name);
        throw;
    }
}

HistoryFile::~HistoryFile()
{
    m_database.close();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_name);
}

void HistoryFile::open(Purpose purpose)
{
    const QFileInfo info(m_path);
    if (info.isDir())
        refuseFile(QStringLiteral("this is a directory"));
    QString options = QStringLiteral("QSQLITE_BUSY_TIMEOUT=2000");
    m_database.setDatabaseName(m_path);
    if (purpose == Purpose::Read) {
        if (!info.exists())
            refuseFile(QStringLiteral("there is no such file"));
        if (!mayWriteBeside(info))
            options += QStringLiteral(";QSQLITE_OPEN_READONLY");
        if (isOnReadOnlyMedium(info)) {
            options += QStringLiteral(";QSQLITE_OPEN_URI");
            m_database.setDatabaseName(
                QString::fromLatin1(QUrl::fromLocalFile(info.absoluteFilePath()).toEncoded()) +
                QStringLiteral("?immutable=1"));
        }
    }
    m_database.setConnectOptions(options);
    if (!m_database.open())
        refuseFile(wordsOf(m_database.lastError()));
    if (purpose == Purpose::Write)
        makeSchema();
    else
        run(QStringLiteral("PRAGMA query_only = ON"));
    checkSchema();
}

/// Every commit goes to the disk, and reading goes on while it does.
void HistoryFile::makeSchema()
{
    const bool isEmpty = run(QStringLiteral("SELECT count(*) FROM sqlite_master")).value(0).toInt() == 0;
    if (!isEmpty)
        checkSchema(); // before anything of a database of others is changed
    run(QStringLiteral("PRAGMA journal_mode = WAL"));
    run(QStringLiteral("PRAGMA synchronous = FULL"));
    run(QStringLiteral("PRAGMA journal_size_limit = 16777216"));
    if (!isEmpty)
        return;
    begin();
    run(QStringLiteral("PRAGMA application_id = %1").arg(applicationId));
    run(QStringLiteral("PRAGMA user_version = %1").arg(schemaVersion));
    run(QStringLiteral(
        "CREATE TABLE variables(id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE, unit TEXT NOT NULL, "
        "type TEXT NOT NULL, digits INTEGER NOT NULL)"));
    // By variable, then by time: a range of one variable lies in one piece, and needs no index besides.
    run(QStringLiteral(
        "CREATE TABLE samples(variable INTEGER NOT NULL REFERENCES variables(id), time INTEGER NOT NULL, "
        "seq INTEGER NOT NULL, state INTEGER NOT NULL, value, text TEXT, "
        "PRIMARY KEY(variable, time, seq)) WITHOUT ROWID"));
    run(QStringLiteral("CREATE TABLE logging(alive INTEGER NOT NULL)"));
    run(QStringLiteral("INSERT INTO logging VALUES(0)"));
    commit();
}

void HistoryFile::checkSchema() const
{
    const int application = run(QStringLiteral("PRAGMA application_id")).value(0).toInt();
    const int version = run(QStringLiteral("PRAGMA user_version")).value(0).toInt();
    if (application != applicationId)
        refuseFile(QStringLiteral("this database is no log of plcpanel; give another name"));
    if (version != schemaVersion)
        refuseFile(QStringLiteral("this log has the form %1, and this program knows form %2; %3")
                       .arg(version)
                       .arg(schemaVersion)
                       .arg(version > schemaVersion ? QStringLiteral("take a newer plcpanel")
                                                    : QStringLiteral("give another name")));
}

QSqlQuery HistoryFile::prepare(const QString& sql) const
{
    QSqlQuery query(m_database);
    query.setForwardOnly(true);
    if (!query.prepare(sql))
        refuseFile(wordsOf(query.lastError()));
    return query;
}

QSqlQuery HistoryFile::run(const QString& sql, std::initializer_list<QVariant> values) const
{
    QSqlQuery query = prepare(sql);
    execute(&query, values);
    query.next();
    return query;
}

void HistoryFile::begin()
{
    run(QStringLiteral("BEGIN IMMEDIATE"));
}

void HistoryFile::commit()
{
    run(QStringLiteral("COMMIT"));
}

void HistoryFile::rollback() noexcept
{
    try {
        run(QStringLiteral("ROLLBACK"));
    } catch (const std::runtime_error&) {
        // SQLite has undone it already, as it does where the disk is full
    }
}

} // namespace plc
