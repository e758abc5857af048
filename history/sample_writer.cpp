// SPDX-License-Identifier: MIT
#include "history/sample_writer.h"

#include <QDateTime>

#include <exception>

namespace plc
{

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
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            const auto pause = std::chrono::milliseconds(m_limits.flushMs);
            if (ends) // m_ends would wake it at once
                m_wake.wait_for(lock, pause, [] { return false; });
            else
                m_wake.wait_for(lock, pause, [this] { return m_ends; });
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

/// \return false when there is nothing to write
bool SampleWriter::takeBatch()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_batch.empty())
        m_batch.swap(m_queue);
    m_inBatch = m_batch.size();
    return !m_batch.empty();
}

void SampleWriter::writeBatch()
{
    const SampleStore::Written result = m_store->write(m_batch);
    const auto end = m_batch.begin() + static_cast<std::ptrdiff_t>(result.count);
    const std::vector<LogSample> written(std::make_move_iterator(m_batch.begin()),
                                         std::make_move_iterator(end));
    m_batch.erase(m_batch.begin(), end);
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_report.written += static_cast<qint64>(result.count);
        m_report.error = result.error;
        m_inBatch = m_batch.size();
    }
    if (m_written && !written.empty())
        m_written(written);
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
