// SPDX-License-Identifier: MIT
#include "window/session/mailbox.h"

#include "runtime/cycle/driver_blocks.h"
#include "runtime/cycle/exchange_record.h"

#include <QDateTime>

namespace plc
{

namespace
{

FrameEntry entryOf(const ExchangeRecord& record)
{
    FrameEntry entry;
    entry.atMs = QDateTime::currentMSecsSinceEpoch();
    entry.isWrite = record.request.accessFlag != 0;
    entry.elements = elementsOf({record.request, {}, 0});
    if (entry.isWrite)
        entry.elements.count = record.request.count;
    entry.station = entry.elements.station;
    entry.replyExpected = record.replyExpected;
    entry.durationMs = record.durationMs;
    entry.result = record.result;
    entry.frame = record.frame;
    entry.exchange = record.exchange;
    return entry;
}

} // namespace

ValueNews newsOf(int index, const CyclicValue& value)
{
    ValueNews news;
    news.index = index;
    news.state = value.state;
    news.failure = value.failure;
    news.readAtMs = value.readAtMs;
    news.answered = value.state == ValueState::Fresh;
    if (news.answered)
        news.values = value.values;
    return news;
}

Mailbox::Mailbox(int variables)
    : m_place(static_cast<std::size_t>(variables), -1), m_recorded(static_cast<std::size_t>(variables), 0)
{
}

void Mailbox::putValue(int index, const CyclicValue& value)
{
    ValueNews news = newsOf(index, value);
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_recorded[static_cast<std::size_t>(index)] != 0)
        record(index, value);
    int& place = m_place[static_cast<std::size_t>(index)];
    if (place < 0) {
        place = static_cast<int>(m_news.values.size());
        m_news.values.push_back(std::move(news));
        return;
    }
    ValueNews& waiting = m_news.values[static_cast<std::size_t>(place)];
    if (!news.answered && waiting.answered) { // what was answered is not lost for what came behind it
        news.answered = true;
        news.values = std::move(waiting.values);
    }
    waiting = std::move(news);
}

/// A write on its way says nothing of what the controller has.
void Mailbox::record(int index, const CyclicValue& value)
{
    if (value.state == ValueState::Unconfirmed || m_news.samples.size() >= mostSamples)
        return;
    CurveSample sample;
    sample.index = index;
    sample.atMs = value.readAtMs < 0 ? QDateTime::currentMSecsSinceEpoch() : value.readAtMs;
    if (value.state == ValueState::Fresh)
        sample.values = value.values;
    m_news.samples.push_back(std::move(sample));
}

void Mailbox::putExchange(const ExchangeRecord& record)
{
    FrameEntry entry = entryOf(record);
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_news.frames.size() < mostFrames)
        m_news.frames.push_back(std::move(entry));
}

void Mailbox::putWrite(const WriteNews& news)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_news.writes.push_back(news);
}

void Mailbox::putReport(SessionReport report)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_news.report = std::move(report);
}

void Mailbox::setRecorded(int index, bool recorded)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_recorded[static_cast<std::size_t>(index)] = recorded ? 1 : 0;
}

Snapshot Mailbox::take()
{
    Snapshot taken;
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::swap(taken, m_news);
    for (const ValueNews& news : taken.values)
        m_place[static_cast<std::size_t>(news.index)] = -1;
    return taken;
}

} // namespace plc
