/// \file
/// \brief The TCP link to the controller: one request and its reply at a time.
#ifndef RUNTIME_LINK_LINK_H
#define RUNTIME_LINK_LINK_H

#include "runtime/link/link_exchange.h"
#include "runtime/link/link_tap.h"
#include "runtime/link/owed_replies.h"
#include "runtime/link/reconnect_pause.h"
#include "runtime/link/remote_matcher.h"
#include "runtime/link/reply_assembler.h"
#include "runtime/link/reply_matcher.h"
#include "runtime/link/tcp_socket.h"
#include "runtime/model/clock.h"

#include <QByteArray>
#include <QString>

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace plc
{

enum class FrameFormat { ModbusTcp, Remote };

/// exchange() and close() belong to one thread, the communication thread.
///
/// Modbus TCP frames are numbered, so a reply that comes late is known by its number and dropped. A reply
/// that was cut and filled up with the bytes of a late one costs the connection, see OwedReplies. Remote
/// frames carry no number and cannot be given one: a late reply could not be told from the answer to the next
/// request. So with remote frames the connection, and whatever may still come on it, is dropped
///  - when no fitting reply came in time,
///  - when bytes come behind the fitting reply, or before the next request,
/// and the next request goes out on a new connection, which is made at once. What is left is a reply that
/// comes twice with the second copy after the next request went out: where that asks for as many elements of
/// the same area and station, the copy passes for its answer. Only a number in the frames could prevent that.
class Link
{
public:
    Link(const QString& host, int port, int timeoutMs, FrameFormat format = FrameFormat::ModbusTcp);
    ~Link(); ///< close() must have been called if exchange() was

    /// Before the first exchange.
    void setTap(const std::shared_ptr<LinkTap>& tap) { m_tap = tap; }

    /// Sends \a frame and waits for its reply, for the time-out at most. While there is no connection it
    /// tries to make one, in growing pauses, and lasts its time-out just the same. Making one may take a
    /// second more.
    /// \param replyExpected false for a broadcast: sent only
    /// \param replySize bytes of the reply; with remote frames one of another size does not fit
    LinkExchange exchange(const QByteArray& frame, bool replyExpected, int replySize = 0);

    /// Closes the connection; to be called last on the thread that made the exchanges.
    void close();

    /// Makes the exchange that is running, and every later one, end soon. Any thread.
    void stop();

    /// Any thread.
    LinkState state() const;

private:
    bool isRemote() const { return m_format == FrameFormat::Remote; }
    LinkExchange tryToExchange(const QByteArray& frame, bool replyExpected, int replySize);
    bool isStillConnected(Clock::time_point now);
    bool connectAgain(Clock::time_point begin);
    void dropIfBytesCame();
    bool tryToConnect();
    void drop(const QString& why);
    void dropUntrusted(const QString& why);
    bool send(const QByteArray& frame);
    void receive(Clock::time_point begin, LinkExchange* exchange);
    void waitForReply(Clock::time_point begin, LinkExchange* exchange);
    void takeBytes(int milliseconds);
    void takeReplies(LinkExchange* exchange);
    bool accept(QByteArray* reply, DropReason* reason);
    bool isMixed(const QByteArray& reply) const;
    bool connected() const { return m_socket.isOpen(); }
    void noteConnected();
    void reconnectAtOnce();
    void noteDropped(LinkExchange* exchange, const QByteArray& reply, DropReason reason);
    bool pauseWhileUnconnected(Clock::time_point begin);

    const QString m_host;
    const int m_port;
    const int m_timeoutMs;
    const FrameFormat m_format;
    std::atomic<bool> m_stopping{false};
    std::shared_ptr<LinkTap> m_tap; // may be null

    TcpSocket m_socket;
    ReplyAssembler m_assembler;
    ReplyMatcher m_matcher;
    OwedReplies m_owed;
    RemoteMatcher m_remoteMatcher; // instead of m_matcher
    ReconnectPause m_pause;
    Clock::time_point m_lastAttempt;  // when it ended
    Clock::time_point m_lastAnswered; // when the last request to be answered was sent
    int m_nextPauseMs = 0;

    mutable std::mutex m_stateMutex;
    LinkState m_state;
    Clock::time_point m_stateSince;
};

} // namespace plc

#endif
