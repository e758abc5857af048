// SPDX-License-Identifier: MIT
/// \file
/// \brief A log in CSV, for spreadsheets: a line for each sample, in files of bounded length.
#ifndef HISTORY_CSV_STORE_H
#define HISTORY_CSV_STORE_H

#include "history/sample_store.h"

#include <QByteArray>
#include <QDate>
#include <QFile>
#include <QLockFile>

namespace plc
{

/// The first line names the columns, time,name,value,unit,state. Where a file is full it is renamed,
/// FILE-20261122-140322.csv by the time of its first sample, and the next sample begins a new one.
class CsvStore : public SampleStore
{
public:
    CsvStore(const QString& path, const Rotation& rotation);
    ~CsvStore() override;

    /// Goes on behind the lines of a file that is there. Half a line at its end, which a process leaves that was
    /// killed, is cut off.
    void open(const std::vector<Series>& series) override;
    Written write(const std::vector<LogSample>& samples) override;
    void idle(qint64 nowMs) override;

private:
    void openFile();
    void takeOver();
    QString append(const QByteArray& lines);
    QString rotate();
    QString freeName() const;
    bool isFull(qint64 bytes, const LogSample& sample) const;
    QByteArray lineOf(const LogSample& sample) const;

    const Rotation m_rotation;
    QFile m_file;
    QLockFile m_lock;
    std::vector<Series> m_series;
    qint64 m_size = 0;   // of whole lines, which is where the next one goes
    QString m_firstTime; // of the first sample in the file, as it stands there; empty: none
};

} // namespace plc

#endif
