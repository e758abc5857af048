// SPDX-License-Identifier: MIT
/// \file
/// \brief The TCP link to the controller: one request and its reply at a time.
#ifndef RUNTIME_LINK_LINK_H
#define RUNTIME_LINK_LINK_H

#include "runtime/link/closing_habit.h"
#include "runtime/link/link_connection.h"
#include "runtime/link/link_exchange.h"
#include "runtime/link/link_tap.h"
#include "runtime/link/reply_assembler.h"
#include "runtime/link/reply_matcher.h"
#include "runtime/model/frame_format.h"

#include <QByteArray>
#include <QString>

#include <memory>

namespace plc
{

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
    /// Over TCP, with the system's time.
    Link(const QString& host, int port, int timeoutMs, FrameFormat format = FrameFormat::ModbusTcp);

    Link(std::unique_ptr<Transport> transport, int timeoutMs, FrameFormat format, TimeSource& time);
    ~Link(); ///< close() must have been called if exchange() was

    /// Before the first exchange.
    void setTap(const std::shared_ptr<LinkTap>& tap);

    /// Sends \a frame and waits for its reply, for the time-out at most. While there is no connection it
    /// tries to make one, in growing pauses, and lasts its time-out just the same. Making one may take a
    /// second more.
    /// \param replyExpected false for a broadcast: sent only
    /// \param replySize bytes of the reply; with remote frames one of another size does not fit
    LinkExchange exchange(const QByteArray& frame, bool replyExpected, int replySize = 0);

    /// The same. \param exchange as it is made; receives what the exchange brought
    void exchange(const QByteArray& frame, bool replyExpected, int replySize, LinkExchange* exchange);

    /// Takes the room of a reply that nobody wants any more, for the next one. On the thread that makes the exchanges.
    void takeBack(QByteArray* reply) { m_received.swap(*reply); }

    /// Closes the connection; to be called last on the thread that made the exchanges.
    void close() { m_connection.close(); }

    /// Makes the exchange that is running, and every later one, end soon. Any thread.
    void stop() { m_connection.stop(); }

    /// Any thread.
    LinkState state() const { return m_connection.state(); }

private:
    // Cold is what a request nearly never takes: it stays out of the way of the rest.
    void tryToExchange(const QByteArray& frame, bool replyExpected, int replySize, LinkExchange* exchange);
    bool isStillConnected(Clock::time_point now);
    bool isInFlow(Clock::time_point now) const;
    [[gnu::cold]] bool connectAgain(Clock::time_point begin);
    void noteReply(Clock::time_point begin, LinkExchange* exchange);
    void receive(Clock::time_point begin, LinkExchange* exchange);
    bool waitForReply(Clock::time_point begin, LinkExchange* exchange);
    [[gnu::cold]] void noteClosed(LinkExchange* exchange);
    [[gnu::cold]] void noteSilence(const QByteArray& sentFrame);
    [[gnu::cold]] void judgeStream(const StreamEnd& end);
    bool isAnsweredAtOnce(LinkExchange* exchange);
    [[gnu::cold]] void takeReplies(LinkExchange* exchange);
    [[gnu::cold]] void noteDropped(LinkExchange* exchange, const QByteArray& reply, DropReason reason);

    const int m_timeoutMs;
    const FrameFormat m_format;
    TimeSource& m_time;
    std::shared_ptr<LinkTap> m_tap; // may be null
    LinkConnection m_connection;
    ReplyAssembler m_assembler;
    const std::unique_ptr<ReplyMatcher> m_matcher;
    const bool m_knowsLateReplies; // the matcher
    ClosingHabit m_closing;
    QByteArray m_received;         // at last, or what room there is for it
    Clock::time_point m_repliedAt; // the last time
};

} // namespace plc

#endif
