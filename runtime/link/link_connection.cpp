// SPDX-License-Identifier: MIT
#include "runtime/link/link_connection.h"

#include <algorithm>

namespace plc
{

namespace
{

// How long a pause may keep stop() waiting.
const int longestSleepMs = 20;

const int connectTimeoutMs = 1000;

} // namespace

LinkConnection::LinkConnection(std::unique_ptr<Transport> transport, TimeSource& time)
    : m_transport(std::move(transport)), m_time(time), m_lastAttempt(time.now()), m_stateSince(time.now())
{
    restartPauses();
}

bool LinkConnection::make(Clock::time_point begin, int timeoutMs)
{
    // Only this thread changes the state, so it may look without the lock.
    if (m_state.connected)
        dropClosed();
    do {
        if (m_time.msSince(m_lastAttempt) >= m_nextPauseMs && tryToConnect())
            return true;
    } while (pauseUntilNextAttempt(begin, timeoutMs));
    return false;
}

bool LinkConnection::tryToConnect()
{
    m_nextPauseMs = m_pause.next();
    const bool connected = m_transport->connect(connectTimeoutMs);
    // The pause counts from the end of the attempt: one that takes long is not followed by the next at once.
    m_lastAttempt = m_time.now();
    if (connected)
        noteConnected();
    else
        drop(m_transport->errorString());
    return connected;
}

/// \return false when the time is over or the connection is no longer wanted
bool LinkConnection::pauseUntilNextAttempt(Clock::time_point begin, int timeoutMs)
{
    const qint64 left = timeoutMs - m_time.msSince(begin);
    if (left <= 0 || m_stopping)
        return false;
    const qint64 untilAttempt = m_nextPauseMs - m_time.msSince(m_lastAttempt);
    m_time.sleep(
        static_cast<int>(std::min({left, std::max<qint64>(untilAttempt, 1), qint64(longestSleepMs)})));
    return true;
}

void LinkConnection::restartPauses()
{
    m_pause.reset();
    m_nextPauseMs = m_pause.next();
}

void LinkConnection::answered()
{
    ++m_answers;
    restartPauses();
}

void LinkConnection::noteConnected()
{
    m_answers = 0;
    if (m_tap)
        m_tap->opened(m_transport->ownEnd(), m_transport->otherEnd());
    std::lock_guard<std::mutex> lock(m_stateMutex);
    m_state.connected = true;
    ++m_state.connects;
    m_stateSince = m_time.now();
}

bool LinkConnection::send(const QByteArray& frame, int timeoutMs)
{
    const bool sent = m_transport->send(frame, timeoutMs);
    if (sent && m_tap)
        m_tap->sent(frame);
    if (!sent)
        drop(m_transport->errorString());
    return sent;
}

void LinkConnection::receive(int timeoutMs, QByteArray* bytes)
{
    m_transport->receive(timeoutMs, bytes);
    if (m_tap && !bytes->isEmpty())
        m_tap->received(*bytes);
}

void LinkConnection::drop(const QString& why)
{
    m_transport->close();
    if (m_tap)
        m_tap->closed(why);
    std::lock_guard<std::mutex> lock(m_stateMutex);
    if (m_state.connected)
        m_stateSince = m_time.now();
    m_state.connected = false;
    m_state.closedAtOnce = false;
    m_state.lastError = why;
}

void LinkConnection::dropClosed()
{
    drop(QStringLiteral("the controller closed the connection"));
    std::lock_guard<std::mutex> lock(m_stateMutex);
    m_state.closedAtOnce = m_answers == 0;
}

void LinkConnection::dropUntrusted(const QString& why)
{
    drop(why);
    std::lock_guard<std::mutex> lock(m_stateMutex);
    ++m_state.untrusted;
}

void LinkConnection::close()
{
    m_transport->close();
    if (m_tap && m_state.connected)
        m_tap->closed(QStringLiteral("the panel was stopped"));
    std::lock_guard<std::mutex> lock(m_stateMutex);
    m_state.connected = false;
    m_stateSince = m_time.now();
}

void LinkConnection::countDropped(DropReason reason)
{
    std::lock_guard<std::mutex> lock(m_stateMutex);
    m_state.dropped.count(reason);
}

LinkState LinkConnection::state() const
{
    std::lock_guard<std::mutex> lock(m_stateMutex);
    LinkState state = m_state;
    state.sinceMs = m_time.msSince(m_stateSince);
    return state;
}

} // namespace plc
