// SPDX-License-Identifier: MIT
/// \file
/// \brief A log in an SQLite database, which can be asked while it is written.
#ifndef HISTORY_SQLITE_STORE_H
#define HISTORY_SQLITE_STORE_H

#include "history/history_file.h"
#include "history/sample_store.h"

#include <QLockFile>

#include <memory>
#include <optional>

namespace plc
{

/// See history_file.h for what is in it.
class SqliteStore : public SampleStore
{
public:
    explicit SqliteStore(const QString& path);
    ~SqliteStore() override;

    /// Goes on with a log that is there. Where its last writer was killed, the series get the sample "not logged" with
    /// the time at which that was seen alive last.
    void open(const std::vector<Series>& series) override;

    /// In one transaction: all of \a samples or none.
    Written write(const std::vector<LogSample>& samples) override;
    void idle(qint64 nowMs) override;

private:
    void endOpenSeries();
    void addSeries(const std::vector<Series>& series);
    void insert(int variable, const LogSample& sample, bool isText);

    struct Row {
        int id;
        bool isText; // its values are no numbers, even where they look like one
    };

    const QString m_path;
    QLockFile m_lock;
    std::unique_ptr<HistoryFile> m_file;
    std::optional<QSqlQuery> m_insert;
    std::optional<QSqlQuery> m_alive;
    std::vector<Row> m_rows; // of the series
    qint64 m_aliveMs = 0;    // as it stands in the file
};

} // namespace plc

#endif
