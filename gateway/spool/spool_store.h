// SPDX-License-Identifier: MIT
/// \file
/// \brief The spool's file: runs of samples, and how far they have got.
#ifndef GATEWAY_SPOOL_SPOOL_STORE_H
#define GATEWAY_SPOOL_SPOOL_STORE_H

#include "gateway/values/sample.h"

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>

#include <deque>
#include <functional>
#include <memory>
#include <stdexcept>
#include <vector>

class QSqlDatabase;
class QSqlQuery;

namespace plc
{

/// Samples of consecutive sequence numbers that lie in the file together.
struct SpoolChunk {
    quint64 first = 0; ///< sequence number of the first one
    quint64 count = 0;
    qint64 bytes = 0; ///< that it takes in the file, about
    qint64 since = 0; ///< when the first and the last of them were appended, in ms since 1970 UTC
    qint64 until = 0;
};

/// \return the sequence number of the last sample
inline quint64 lastOf(const SpoolChunk& chunk)
{
    return chunk.first + chunk.count - 1;
}

struct SpoolMarks {
    quint64 done = 0;      ///< up to here samples are acknowledged or dropped
    quint64 handedOut = 0; ///< up to here samples were handed out once
    quint64 dropped = 0;   ///< samples, in all

    bool operator==(const SpoolMarks& other) const
    {
        return done == other.done && handedOut == other.handedOut && dropped == other.dropped;
    }
};

/// What one commit changes.
struct SpoolChange {
    struct Put {
        SpoolChunk chunk;
        QByteArray samples; ///< see sample_code.h
    };
    std::vector<Put> put;         ///< new ones, and new contents of known ones
    quint64 removeBefore = 0;     ///< chunks that begin before this sequence number go
    std::vector<quint64> removed; ///< and those that begin here
    SpoolMarks marks;
};

/// The file cannot be used, or not now; the words say why and what to do.
class SpoolError : public std::runtime_error
{
public:
    explicit SpoolError(const QString& words) : std::runtime_error(words.toStdString()) {}
};

/// Held by one process at a time, and used by the thread that made it. What was committed is there after the end of
/// the process, however it ends; a loss of power may take what the system had not yet put onto the disk, and leaves
/// the file whole.
class SpoolStore
{
public:
    using Tell = std::function<void(const QString& words)>;

    /// A file that is damaged is moved aside, and \a tell says so. Samples of names that are not among \a names any
    /// more are dropped and counted, and \a tell says so.
    /// \param names of the variables, by their index
    /// \throws SpoolError
    SpoolStore(const QString& path, const QStringList& names, const Tell& tell);
    ~SpoolStore();
    SpoolStore(const SpoolStore&) = delete;
    SpoolStore& operator=(const SpoolStore&) = delete;

    /// \return as they were when the file was opened
    const std::deque<SpoolChunk>& chunks() const { return m_chunks; }
    const SpoolMarks& marks() const { return m_marks; }

    /// \return what stands for the variable in the bytes of its samples
    quint32 nameOf(quint32 variable) const { return m_nameOf[variable]; }

    /// All of it or, when it throws, nothing.
    /// \throws SpoolError
    void commit(const SpoolChange& change);

    /// \return the samples of the chunk that begins at \a first, none when they are damaged
    /// \throws SpoolError
    std::vector<Sample> read(quint64 first);

private:
    struct Queries;

    void open();
    void close();
    void setUp();
    void check();
    void moveAside(const QString& why);
    void readNames(const QStringList& names);
    void readMarks();
    void readChunks();
    void forgetNames(const QStringList& gone);
    void keepKnown(quint64 first);
    void run(const QString& statement);
    void run(QSqlQuery* query);

    const QString m_path;
    const QString m_connection;
    const Tell m_tell;
    std::unique_ptr<QSqlDatabase> m_database;
    std::unique_ptr<Queries> m_queries;
    std::vector<quint32> m_nameOf;        // by variable
    QHash<quint32, quint32> m_variableOf; // by name
    std::deque<SpoolChunk> m_chunks;
    SpoolMarks m_marks;
};

/// \return what a chunk of so many bytes takes in the file
qint64 bytesInFile(int bytes);

} // namespace plc

#endif
