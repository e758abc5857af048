// SPDX-License-Identifier: MIT
/// \file
/// \brief A connection that is made anew, in growing pauses, whenever it was lost.
#ifndef RUNTIME_LINK_LINK_CONNECTION_H
#define RUNTIME_LINK_LINK_CONNECTION_H

#include "runtime/link/link_exchange.h"
#include "runtime/link/link_tap.h"
#include "runtime/link/reconnect_pause.h"
#include "runtime/link/transport.h"
#include "runtime/model/time_source.h"

#include <atomic>
#include <memory>
#include <mutex>

namespace plc
{

/// Knows nothing of frames and replies. Tells the tap of connections and of every byte that goes or comes.
/// All functions but stop() and state() belong to the communication thread.
class LinkConnection
{
public:
    LinkConnection(std::unique_ptr<Transport> transport, TimeSource& time);

    /// Before the first connection. It may be null.
    void setTap(const std::shared_ptr<LinkTap>& tap) { m_tap = tap; }

    bool isOpen() const { return m_transport->isOpen(); }
    LinkEnd target() const { return m_transport->target(); }

    /// While there is no connection. An attempt that has begun may last a second longer.
    /// \return false when \a timeoutMs from \a begin on were over, or stop() was called, before there was one
    bool make(Clock::time_point begin, int timeoutMs);

    /// The next attempt is made at once, and the pauses between attempts begin anew.
    void restartPauses();

    /// \return false when the connection was lost with it
    bool send(const QByteArray& frame, int timeoutMs);

    /// As of the transport. The connection may be closed then, and drop() is to say why.
    void receive(int timeoutMs, QByteArray* bytes);

    void drop(const QString& why);

    /// The same, because of what came on it.
    void dropUntrusted(const QString& why);

    /// The same, because the controller has closed it.
    void dropClosed();

    /// A request was answered on it. So the pauses between attempts begin anew: a controller that accepts and
    /// closes every connection is not stormed.
    void answered();

    /// \return requests that were answered on the connection that there is or was last
    int answers() const { return m_answers; }

    /// At the end.
    void close();

    /// Makes make() end soon, now and later. Any thread.
    void stop()
    {
        m_stopping = true;
        m_transport->stop();
    }
    bool isStopping() const { return m_stopping; }

    void countDropped(DropReason reason);

    /// Any thread.
    LinkState state() const;

private:
    bool tryToConnect();
    bool pauseUntilNextAttempt(Clock::time_point begin, int timeoutMs);
    void noteConnected();

    const std::unique_ptr<Transport> m_transport;
    TimeSource& m_time;
    std::shared_ptr<LinkTap> m_tap;
    std::atomic<bool> m_stopping{false};

    ReconnectPause m_pause;
    Clock::time_point m_lastAttempt; // when it ended
    int m_nextPauseMs = 0;
    int m_answers = 0;

    mutable std::mutex m_stateMutex;
    LinkState m_state;
    Clock::time_point m_stateSince;
};

} // namespace plc

#endif
