// SPDX-License-Identifier: MIT
/// \file
/// \brief Where samples are kept: a file of one of two formats.
#ifndef HISTORY_SAMPLE_STORE_H
#define HISTORY_SAMPLE_STORE_H

#include "history/sample.h"

#include <QString>

#include <cstddef>
#include <memory>
#include <vector>

namespace plc
{

/// All functions, from open() to the destructor, are called on one thread; each may wait for the disk.
class SampleStore
{
public:
    SampleStore() = default;
    virtual ~SampleStore() = default;
    SampleStore(const SampleStore&) = delete;
    SampleStore& operator=(const SampleStore&) = delete;

    /// Once, before all else. \throws std::runtime_error that says why the file cannot be written, and what to do
    virtual void open(const std::vector<Series>& series) = 0;

    struct Written {
        std::size_t count = 0; ///< samples from the first on that are in the file, to survive this process
        QString error;         ///< why the others are not; they may be given again
    };

    /// When it returns, what was written is handed to the disk (fsync), and no half sample is in the file.
    virtual Written write(const std::vector<LogSample>& samples) = 0;

    /// Nothing was to be written; called again and again. \param nowMs since 1970, UTC
    virtual void idle(qint64 nowMs) = 0;
};

/// How a log in CSV is cut into several files.
struct Rotation {
    qint64 mostBytes = 0; ///< a file of this name is not longer; 0: as long as may be
    bool daily = false;   ///< no file has samples of two days, by local time
};

/// \return what is against a log with this file name: its ending says the format. Empty: nothing
QString storeRefusal(const QString& path);

/// \param path nothing is against it
/// \param rotation for CSV
std::unique_ptr<SampleStore> makeSampleStore(const QString& path, const Rotation& rotation);

/// \return true for a file name that stands for an SQLite database
bool isDatabasePath(const QString& path);

} // namespace plc

#endif
