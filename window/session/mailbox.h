// SPDX-License-Identifier: MIT
/// \file
/// \brief What the communication thread puts in and the window takes out: neither waits for the other.
#ifndef WINDOW_SESSION_MAILBOX_H
#define WINDOW_SESSION_MAILBOX_H

#include "window/session/snapshot.h"

#include <mutex>

namespace plc
{

struct ExchangeRecord;

/// Any thread. What nobody takes does not pile up: of each variable the last state is kept, of samples and
/// frames so many.
class Mailbox
{
public:
    static constexpr std::size_t mostSamples = 200000;
    static constexpr std::size_t mostFrames = 20000;

    explicit Mailbox(int variables);

    void putValue(int index, const CyclicValue& value);
    void putExchange(const ExchangeRecord& record);
    void putWrite(const WriteNews& news);
    void putReport(SessionReport report);

    /// What is on a curve is recorded.
    void setRecorded(int index, bool recorded);

    /// \return what came since the last call
    Snapshot take();

private:
    void record(int index, const CyclicValue& value);

    std::mutex m_mutex;
    Snapshot m_news;
    std::vector<int> m_place; // of each variable in m_news; -1: nothing came
    std::vector<char> m_recorded;
};

/// \return how a value that was looked at is, for Snapshot::values
ValueNews newsOf(int index, const CyclicValue& value);

} // namespace plc

#endif
