// SPDX-License-Identifier: MIT
#include "history/sample_writer.h"

#include <QDateTime>

#include <algorithm>
#include <exception>

namespace plc
{

namespace
{

const std::size_t mostInPart = 10000;

/// \return samples in the queue that are written without waiting for more
std::size_t wakingSize(const WriterLimits& limits)
{
    return std::max<std::size_t>(limits.queued / 4, 1);
}

} // namespace

SampleWriter::SampleWriter(std::unique_ptr<SampleStore> store, const WriterLimits& limits)
    : m_store(std::move(store)), m_limits(limits)
{
}

SampleWriter::~SampleWriter()
{
    stop();
}

void SampleWriter::setListener(const WrittenListener& written)
{
    m_written = written;
}

void SampleWriter::start(const std::vector<Series>& series)
{
    std::promise<void> opened;
    std::future<void> isOpen = opened.get_future();
    m_thread = std::thread([this, series, &opened] { run(series, &opened); });
    try {
        isOpen.get();
    } catch (...) {
        m_thread.join();
        throw;
    }
}

bool SampleWriter::add(const LogSample& sample)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_runs || m_queue.size() + m_inBatch >= m_limits.queued) {
        ++m_report.lost;
        return false;
    }
    m_queue.push_back(sample);
    if (m_queue.size() == wakingSize(m_limits))
        m_wake.notify_all();
    return true;
}

void SampleWriter::stop()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ends = true;
    }
    m_wake.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

WriterReport SampleWriter::report() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    WriterReport report = m_report;
    report.waiting = m_queue.size() + m_inBatch;
    return report;
}

void SampleWriter::run(const std::vector<Series>& series, std::promise<void>* opened)
{
    try {
        m_store->open(series);
    } catch (...) {
        m_store.reset();
        opened->set_exception(std::current_exception());
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_runs = true;
    }
    opened->set_value(); // start() may return now, and what it points to is gone
    writeUntilStopped();
    giveUp();
    m_store.reset();
}

void SampleWriter::writeUntilStopped()
{
    SteadyClock::time_point lastTry = SteadyClock::time_point::max();
    bool ends = false;
    while (!ends || (!m_batch.empty() && SteadyClock::now() < lastTry)) {
        waitForSamples(m_limits.flushMs);
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (!ends && m_ends)
                lastTry = SteadyClock::now() + std::chrono::milliseconds(m_limits.lastTriesMs);
            ends = m_ends;
            m_runs = !ends;
        }
        if (takeBatch())
            writeBatch();
        else
            m_store->idle(QDateTime::currentMSecsSinceEpoch());
    }
}

/// Not so long where many come. After a failure, which leaves many, as long as that takes.
void SampleWriter::waitForSamples(int milliseconds)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    const bool endedBefore = !m_runs;
    m_wake.wait_for(lock, std::chrono::milliseconds(milliseconds), [this, endedBefore] {
        return (m_ends && !endedBefore) ||
               (!m_isFailing && !endedBefore && m_queue.size() >= wakingSize(m_limits));
    });
}

/// \return false when there is nothing to write
bool SampleWriter::takeBatch()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_batch.empty())
        m_batch.swap(m_queue);
    m_inBatch = m_batch.size();
    return !m_batch.empty();
}

/// In parts, so that a disk that is nearly full takes what it has room for.
void SampleWriter::writeBatch()
{
    while (!m_batch.empty()) {
        m_isFailing = !writePart();
        if (m_isFailing)
            return;
    }
}

/// \return false when not all of the part is in the file
bool SampleWriter::writePart()
{
    const std::size_t size = std::min(m_batch.size(), mostInPart);
    const std::vector<LogSample> part(m_batch.begin(), m_batch.begin() + static_cast<std::ptrdiff_t>(size));
    const SampleStore::Written result = m_store->write(part);
    const auto count = static_cast<std::ptrdiff_t>(result.count);
    m_batch.erase(m_batch.begin(), m_batch.begin() + count);
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_report.written += static_cast<qint64>(result.count);
        m_report.error = result.error;
        m_inBatch = m_batch.size();
    }
    if (m_written && count > 0)
        m_written(std::vector<LogSample>(part.begin(), part.begin() + count));
    return result.error.isEmpty();
}

/// What is left at the end is lost.
void SampleWriter::giveUp()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_report.lost += static_cast<qint64>(m_batch.size() + m_queue.size());
    m_batch.clear();
    m_queue.clear();
    m_inBatch = 0;
}

} // namespace plc
