// SPDX-License-Identifier: MIT
/// \file
/// \brief The queue of samples that the broker has not acknowledged, on disk.
#ifndef GATEWAY_SPOOL_SPOOL_H
#define GATEWAY_SPOOL_SPOOL_H

#include "gateway/values/sample.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

namespace plc
{

struct SpoolLimits {
    qint64 bytes = qint64(256) << 20;            ///< of the file, about; the oldest samples are dropped
    qint64 ageMs = qint64(7) * 24 * 3600 * 1000; ///< of a sample in the spool; older ones are dropped
    qint64 memoryBytes = qint64(4) << 20;        ///< of samples in memory: how far the disk may lag behind
};

struct TakenSample {
    quint64 sequence = 0; ///< rises by at least 1; from 1 on
    Sample sample;
    bool handedOutBefore =
        false; ///< possibly a duplicate: take() gave it already, maybe in an earlier process
};

struct SpoolFigures {
    quint64 depth = 0;    ///< samples that wait for their acknowledgement
    qint64 bytes = 0;     ///< that those on disk take, about
    quint64 dropped = 0;  ///< samples, since the file was made
    quint64 newest = 0;   ///< sequence number of the sample that was appended last; 0: none ever was
    qint64 oldestAt = -1; ///< since when the oldest waits, in ms since 1970 UTC; -1: none waits
    QString problem;      ///< why samples cannot be kept on disk; empty: they can
};

/// Samples in the order in which they were appended, so each variable's are in its own. They come out of memory where
/// they still are in it, and what is acknowledged at once is never written.
///
/// A sample is on disk at most 200 ms after append(), as long as the disk keeps up: the end of the process loses no
/// more. (A loss of power loses what the system had not yet written, too.) Where the disk is full or fails, samples
/// wait in memory as long as there is room, the writing is tried again, and nobody waits for it.
///
/// The file names variables by their names: the list may change between two runs. Functions may be called from any
/// thread; one thread at a time takes.
class Spool
{
public:
    using Tell = std::function<void(const QString& words)>;
    using Now = std::function<qint64()>; ///< ms since 1970 UTC

    /// \param tell gets messages for people: on a thread of its own, except during open() \param now for tests
    explicit Spool(const Tell& tell = Tell(), const Now& now = Now());
    ~Spool(); ///< closes
    Spool(const Spool&) = delete;
    Spool& operator=(const Spool&) = delete;

    /// Once, before all else. Makes the file if there is none.
    /// \param names of the variables, by their index, each once
    /// \return why the file cannot be used and what to do; an empty text when it can
    QString open(const QString& path, const QStringList& names, const SpoolLimits& limits = SpoolLimits());

    /// Never waits for the disk.
    void append(const std::vector<Sample>& batch);

    /// \param after only samples behind this sequence number
    /// \return the oldest samples that are not acknowledged, at most \a most; what is taken stays until then. May wait
    ///         for the disk.
    std::vector<TakenSample> take(int most, quint64 after = 0);

    /// \param upTo the sequence number of a sample that was taken; it and all before it are done
    void acknowledge(quint64 upTo);

    SpoolFigures figures() const;

    /// Waits until all that was appended and acknowledged is on disk.
    /// \return false when it cannot be written
    bool flush();

    /// Writes what is left, and lets go of the file.
    void close();

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace plc

#endif
