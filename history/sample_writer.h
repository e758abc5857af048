// SPDX-License-Identifier: MIT
/// \file
/// \brief Writes samples on a thread of its own, so that whoever has them never waits for a disk.
#ifndef HISTORY_SAMPLE_WRITER_H
#define HISTORY_SAMPLE_WRITER_H

#include "history/sample_store.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace plc
{

struct WriterLimits {
    std::size_t queued = 200000; ///< samples that wait at most; what comes then is lost
    int flushMs = 500;           ///< between two writes, which is what a killed process may lose
    int lastTriesMs = 2000;      ///< how long stop() goes on trying where writing fails
};

struct WriterReport {
    qint64 written = 0; ///< samples in the file
    qint64 lost = 0;    ///< samples that found no room in the queue, or were not written in the end
    std::size_t waiting = 0;
    QString error; ///< of the last try to write; empty when that was good
};

/// A sample that cannot be written is tried again until the queue has no room for more: a full disk that gets room
/// in time costs nothing.
class SampleWriter
{
public:
    /// Told on the writer's thread of samples that are in the file now. It should not wait.
    using WrittenListener = std::function<void(const std::vector<LogSample>& samples)>;

    explicit SampleWriter(std::unique_ptr<SampleStore> store, const WriterLimits& limits = WriterLimits());
    ~SampleWriter(); ///< stops
    SampleWriter(const SampleWriter&) = delete;
    SampleWriter& operator=(const SampleWriter&) = delete;

    /// Before start().
    void setListener(const WrittenListener& written);

    /// Opens the store and starts the thread.
    /// \throws std::runtime_error when the store cannot be opened; the message says what to do
    void start(const std::vector<Series>& series);

    /// Any thread, without waiting for the disk.
    /// \return false when there is no room, or it does not run: the sample is lost and counted
    bool add(const LogSample& sample);

    /// Writes what is there and ends the thread. Once stopped, stays stopped.
    void stop();

    /// Any thread.
    WriterReport report() const;

private:
    using SteadyClock = std::chrono::steady_clock;

    void run(const std::vector<Series>& series, std::promise<void>* opened);
    void writeUntilStopped();
    void waitForSamples(int milliseconds);
    bool takeBatch();
    void writeBatch();
    bool writePart();
    void giveUp();

    std::unique_ptr<SampleStore> m_store;
    const WriterLimits m_limits;
    WrittenListener m_written;
    std::vector<LogSample> m_batch; // of the writer's thread: what is being written
    bool m_isFailing = false;       // of the same: the last try was no good
    std::thread m_thread;

    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    std::vector<LogSample> m_queue;
    std::size_t m_inBatch = 0; // samples that are taken from the queue and not yet in the file
    bool m_runs = false;
    bool m_ends = false;
    WriterReport m_report;
};

} // namespace plc

#endif
