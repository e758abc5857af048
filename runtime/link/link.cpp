// SPDX-License-Identifier: MIT
#include "runtime/link/link.h"

#include "runtime/link/tcp_socket.h"
#include "runtime/modbus/failure_words.h"

#include <algorithm>

namespace plc
{

namespace
{

// How long a wait may keep stop() waiting.
const int sliceMs = 20;

// More than could be late. A controller that sends more in one exchange would keep the panel busy and fill
// its memory.
const std::size_t mostDropped = 128;

} // namespace

Link::Link(const QString& host, int port, int timeoutMs, FrameFormat format)
    : Link(std::make_unique<TcpSocket>(host, port), timeoutMs, format, systemTime())
{
}

Link::Link(std::unique_ptr<Transport> transport, int timeoutMs, FrameFormat format, TimeSource& time)
    : m_timeoutMs(timeoutMs), m_format(format), m_time(time), m_connection(std::move(transport), time),
      m_matcher(replyMatcherFor(format)), m_knowsLateReplies(m_matcher->knowsLateReplies())
{
}

Link::~Link() = default;

void Link::setTap(const std::shared_ptr<LinkTap>& tap)
{
    m_tap = tap;
    m_connection.setTap(tap);
}

LinkExchange Link::exchange(const QByteArray& frame, bool replyExpected, int replySize)
{
    LinkExchange made;
    exchange(frame, replyExpected, replySize, &made);
    return made;
}

void Link::exchange(const QByteArray& frame, bool replyExpected, int replySize, LinkExchange* exchange)
{
    tryToExchange(frame, replyExpected, replySize, exchange);
    if (!exchange->sent && m_tap && !m_connection.isStopping()) {
        const LinkEnd target = m_connection.target();
        m_tap->notSent(frame, noConnectionWords(target.address, target.port, state().lastError));
    }
}

void Link::tryToExchange(const QByteArray& frame, bool replyExpected, int replySize, LinkExchange* exchange)
{
    exchange->format = m_format;
    Clock::time_point begin = m_time.now();
    if (!isStillConnected(begin)) {
        const bool connectedAgain = connectAgain(begin);
        exchange->durationMs = m_time.msSince(begin);
        if (!connectedAgain)
            return;
        begin = m_time.now(); // the round trip begins here
    }
    QByteArray outgoing = m_matcher->prepare(frame, replySize);
    if (!m_connection.send(outgoing, m_timeoutMs))
        return;
    exchange->sent = true;
    exchange->sentFrame = std::move(outgoing);
    if (replyExpected)
        receive(begin, exchange);
    if (exchange->reply.isEmpty())
        exchange->durationMs += m_time.msSince(begin);
    else
        noteReply(begin, exchange);
}

void Link::noteReply(Clock::time_point begin, LinkExchange* exchange)
{
    exchange->repliedAt = m_repliedAt = m_time.now();
    exchange->replyMicroseconds = microsecondsIn(exchange->repliedAt - begin);
    exchange->durationMs += wholeUnits(exchange->replyMicroseconds, microsecondsOfMs);
}

/// What a connection that has answered often brings in so short a time after a reply, a look would miss as well; and it
/// is a call to the system for each request. Not where replies carry no number: there a look also finds what must not
/// be taken for the next answer.
bool Link::isInFlow(Clock::time_point now) const
{
    const int trustedAnswers = 8;
    const std::chrono::microseconds shortTime(100);
    return m_knowsLateReplies && m_connection.answers() > trustedAnswers && now - m_repliedAt < shortTime;
}

/// Notices that the other side has closed meanwhile, so that this costs no request a try. Bytes that came are seen by
/// their number later, or cost the connection.
bool Link::isStillConnected(Clock::time_point now)
{
    if (!m_connection.isOpen())
        return false;
    if (isInFlow(now))
        return true;
    const int waitMs = m_closing.waitMs(m_connection.answers());
    m_connection.receive(waitMs, &m_received);
    m_assembler.append(m_received);
    if (!m_connection.isOpen())
        m_closing.closed(m_connection.answers());
    if (m_connection.isOpen() && !m_knowsLateReplies && m_assembler.partial())
        m_connection.dropUntrusted(QStringLiteral("the controller sent something that was not asked for"));
    return m_connection.isOpen();
}

/// \return false when the time-out from \a begin on was over, or the link was stopped, before there was a
///         connection
bool Link::connectAgain(Clock::time_point begin)
{
    if (!m_connection.make(begin, m_timeoutMs))
        return false;
    m_assembler.reset();
    m_matcher->connectedAnew();
    return true;
}

/// Waits for the matching reply until the time-out from \a begin on is over, and judges the connection.
void Link::receive(Clock::time_point begin, LinkExchange* exchange)
{
    if (waitForReply(begin, exchange))
        return;
    const bool answered = !exchange->reply.isEmpty();
    if (!answered && !m_connection.isOpen())
        return;
    if (!answered)
        noteSilence(exchange->sentFrame);
    judgeStream({answered, m_assembler.partial(), !exchange->dropped.empty()});
}

/// \return true when the reply came so that there is nothing to judge
bool Link::waitForReply(Clock::time_point begin, LinkExchange* exchange)
{
    for (qint64 left = m_timeoutMs; left > 0 && !m_connection.isStopping();
         left = m_timeoutMs - m_time.msSince(begin)) {
        m_connection.receive(static_cast<int>(std::min<qint64>(left, sliceMs)), &m_received);
        const bool answeredAtOnce = isAnsweredAtOnce(exchange);
        if (!answeredAtOnce)
            takeReplies(exchange);
        if (!exchange->reply.isEmpty()) {
            m_connection.answered();
            return answeredAtOnce;
        }
        if (!m_connection.isOpen()) {
            noteClosed(exchange);
            return false;
        }
        exchange->outOfStep = m_assembler.outOfStep();
        if (exchange->outOfStep)
            return false;
    }
    return false;
}

/// As nearly always: the reply came whole, and nothing else.
bool Link::isAnsweredAtOnce(LinkExchange* exchange)
{
    if (!m_assembler.wouldBeWhole(m_received) || !m_matcher->acceptAlone(&m_received))
        return false;
    exchange->reply.swap(m_received);
    return true;
}

void Link::noteClosed(LinkExchange* exchange)
{
    exchange->closed = true;
    exchange->answeredBefore = m_connection.answers() > 0;
    m_connection.dropClosed();
    m_closing.closed(m_connection.answers());
}

void Link::noteSilence(const QByteArray& sentFrame)
{
    m_matcher->gaveUp(sentFrame);
    if (m_tap && !m_connection.isStopping())
        m_tap->timedOut();
}

void Link::judgeStream(const StreamEnd& end)
{
    const QString distrust = m_matcher->distrustAfter(end);
    if (m_assembler.outOfStep() || (!end.answered && end.bytesLeft))
        m_connection.dropUntrusted(QStringLiteral("the stream of replies was out of step"));
    else if (!distrust.isEmpty())
        m_connection.dropUntrusted(distrust);
    // It lasted its time-out, which is pause enough; the station has failed, not the connection.
    if (!m_knowsLateReplies && !end.answered && !m_assembler.outOfStep())
        m_connection.restartPauses();
}

/// Takes whole replies out of what has arrived and looks for the matching one.
void Link::takeReplies(LinkExchange* exchange)
{
    m_assembler.append(m_received);
    for (QByteArray reply = m_assembler.next(); !reply.isEmpty(); reply = m_assembler.next()) {
        DropReason reason = DropReason::Late;
        if (m_matcher->accept(&reply, &reason))
            exchange->reply = std::move(reply);
        else
            noteDropped(exchange, reply, reason);
        if (exchange->dropped.size() == mostDropped)
            m_assembler.distrust();
    }
    const bool isFollowed = m_assembler.outOfStep() || m_assembler.partial();
    if (!exchange->reply.isEmpty() && m_matcher->isMixed(exchange->reply, isFollowed)) {
        exchange->reply.clear();
        m_assembler.distrust();
    }
}

void Link::noteDropped(LinkExchange* exchange, const QByteArray& reply, DropReason reason)
{
    exchange->dropped.push_back({reply, reason});
    m_connection.countDropped(reason);
}

} // namespace plc
