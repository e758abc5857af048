// SPDX-License-Identifier: MIT
/// \file
/// \brief The SQLite database of a log: opening it, and its tables.
///
/// Other programs may read it (sqlite3, spreadsheets, Python) while it is written. The names of tables and columns, and
/// what they mean, change only with the number of the schema:
///
///     variables(id, name, unit, type, digits)             a series each
///     samples(variable, time, seq, state, value, text)    time in ms since 1970, UTC; seq counts samples of one time;
///                                                         state as SampleState; value is a number, or NULL where there
///                                                         is none; text is there where the number does not say it all
///     logging(alive)                                      one row: until when somebody logged, in the same ms
#ifndef HISTORY_HISTORY_FILE_H
#define HISTORY_HISTORY_FILE_H

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QVariant>

#include <initializer_list>

namespace plc
{

/// A connection to one file, to be used and destroyed on the thread that made it. Needs a QCoreApplication.
class HistoryFile
{
public:
    enum class Purpose {
        Read, ///< a file that is there; nothing in it is changed
        Write ///< is made where it is not there
    };

    /// \throws std::runtime_error when it cannot be opened, is none of these, or Qt's plugin for SQLite is missing; the
    ///         message says what to do
    HistoryFile(const QString& path, Purpose purpose);
    ~HistoryFile();
    HistoryFile(const HistoryFile&) = delete;
    HistoryFile& operator=(const HistoryFile&) = delete;

    /// \return a query to be bound and run again and again \throws std::runtime_error with the words of SQLite
    QSqlQuery prepare(const QString& sql) const;

    /// Runs a statement once. \return the query at its first row, or behind the last \throws std::runtime_error
    QSqlQuery run(const QString& sql, std::initializer_list<QVariant> values = {}) const;

    /// Begins, keeps and undoes a transaction. \throws std::runtime_error
    void begin();
    void commit();
    void rollback() noexcept;

private:
    void open(Purpose purpose);
    void makeSchema();
    void checkSchema() const;

    const QString m_path;
    const QString m_name; // of the connection, of which Qt keeps a table
    QSqlDatabase m_database;
};

/// Runs \a query with \a values. \throws std::runtime_error with the words of SQLite
void execute(QSqlQuery* query, std::initializer_list<QVariant> values);

} // namespace plc

#endif
