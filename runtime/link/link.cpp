#include "runtime/link/link.h"

#include "runtime/modbus/failure_words.h"

#include <QThread>

#include <algorithm>

namespace plc
{

namespace
{

// How long a wait may keep stop() waiting.
const int sliceMs = 20;

const int connectTimeoutMs = 1000;

// More than could be late. A controller that sends more in one exchange would keep the panel busy and fill
// its memory.
const std::size_t mostDropped = 128;


// A connection that answered a request so short a time ago counts as open.
const std::chrono::milliseconds justAnswered(1);

} // namespace

Link::Link(const QString& host, int port, int timeoutMs, FrameFormat format)
    : m_host(host), m_port(port), m_timeoutMs(timeoutMs), m_format(format)
{
    m_nextPauseMs = m_pause.next();
    m_lastAttempt = Clock::now();
    m_stateSince = Clock::now();
}

Link::~Link() = default;

void Link::close()
{
    m_socket.close();
    if (m_tap && m_state.connected)
        m_tap->closed(QStringLiteral("the panel was stopped"));
    std::lock_guard<std::mutex> lock(m_stateMutex);
    m_state.connected = false;
    m_stateSince = Clock::now();
}

void Link::stop()
{
    m_stopping = true;
}

LinkState Link::state() const
{
    std::lock_guard<std::mutex> lock(m_stateMutex);
    LinkState state = m_state;
    state.sinceMs = msSince(m_stateSince);
    return state;
}

LinkExchange Link::exchange(const QByteArray& frame, bool replyExpected, int replySize)
{
    const LinkExchange exchange = tryToExchange(frame, replyExpected, replySize);
    if (!exchange.sent && m_tap && !m_stopping)
        m_tap->notSent(frame, noConnectionWords(m_host, m_port, state().lastError));
    return exchange;
}

LinkExchange Link::tryToExchange(const QByteArray& frame, bool replyExpected, int replySize)
{
    LinkExchange exchange;
    exchange.remote = isRemote();
    Clock::time_point begin = Clock::now();
    if (!isStillConnected(begin)) {
        const bool connectedAgain = connectAgain(begin);
        exchange.durationMs = msSince(begin);
        if (!connectedAgain)
            return exchange;
        begin = Clock::now(); // the round trip begins here
    }
    if (isRemote())
        m_remoteMatcher.expect(frame, replySize);
    const QByteArray outgoing = isRemote() ? frame : m_matcher.number(frame);
    if (!send(outgoing))
        return exchange;
    exchange.sent = true;
    exchange.sentFrame = outgoing;
    if (replyExpected)
        receive(begin, &exchange);
    if (exchange.reply.isEmpty()) {
        exchange.durationMs += msSince(begin);
        return exchange;
    }
    m_lastAnswered = begin;
    exchange.repliedAt = Clock::now();
    exchange.replyMicroseconds =
        std::chrono::duration_cast<std::chrono::microseconds>(exchange.repliedAt - begin).count();
    exchange.durationMs += exchange.replyMicroseconds / microsecondsOfMs;
    return exchange;
}

/// Notices that the other side has closed meanwhile; bytes that came are seen by their number later. Right
/// after an answer the next request finds out as soon as a look would.
bool Link::isStillConnected(Clock::time_point now)
{
    if (connected() && (isRemote() || now - m_lastAnswered >= justAnswered))
        takeBytes(0);
    if (isRemote())
        dropIfBytesCame();
    return connected();
}

/// \return false when the time-out from \a begin on was over, or the link was stopped, before there was a
///         connection
bool Link::connectAgain(Clock::time_point begin)
{
    m_lastAnswered = Clock::time_point(); // on another connection
    while (!connected()) {
        // Only this thread changes the state, so it may look without the lock.
        if (m_state.connected)
            drop(QStringLiteral("the controller closed the connection"));
        if (msSince(m_lastAttempt) >= m_nextPauseMs && tryToConnect())
            return true;
        if (!pauseWhileUnconnected(begin))
            return false;
    }
    return true;
}

void Link::dropIfBytesCame()
{
    if (connected() && m_assembler.partial())
        dropUntrusted(QStringLiteral("the controller sent something that was not asked for"));
}

/// \return false when the exchange has lasted its time-out or the link was stopped
bool Link::pauseWhileUnconnected(Clock::time_point begin)
{
    const qint64 left = m_timeoutMs - msSince(begin);
    if (left <= 0 || m_stopping)
        return false;
    const qint64 untilAttempt = m_nextPauseMs - msSince(m_lastAttempt);
    const qint64 pause = std::min({left, std::max<qint64>(untilAttempt, 1), qint64(sliceMs)});
    QThread::msleep(static_cast<unsigned long>(pause));
    return true;
}

bool Link::tryToConnect()
{
    m_nextPauseMs = m_pause.next();
    const bool connected = m_socket.connectTo(m_host, m_port, connectTimeoutMs);
    // The pause counts from the end of the attempt: one that takes long is not followed by the next at once.
    m_lastAttempt = Clock::now();
    if (connected)
        noteConnected();
    else
        drop(m_socket.errorString());
    return connected;
}

void Link::noteConnected()
{
    m_assembler.reset();
    m_owed.reset();
    if (m_tap)
        m_tap->opened(m_socket.ownEnd(), m_socket.otherEnd());
    std::lock_guard<std::mutex> lock(m_stateMutex);
    m_state.connected = true;
    ++m_state.connects;
    m_stateSince = Clock::now();
}

void Link::reconnectAtOnce()
{
    m_pause.reset();
    m_nextPauseMs = m_pause.next();
}

void Link::drop(const QString& why)
{
    m_socket.close();
    if (m_tap)
        m_tap->closed(why);
    std::lock_guard<std::mutex> lock(m_stateMutex);
    if (m_state.connected)
        m_stateSince = Clock::now();
    m_state.connected = false;
    m_state.lastError = why;
}

bool Link::send(const QByteArray& frame)
{
    const bool sent = m_socket.send(frame, m_timeoutMs);
    if (sent && m_tap)
        m_tap->sent(frame);
    if (!sent)
        drop(m_socket.errorString());
    return sent;
}

void Link::dropUntrusted(const QString& why)
{
    drop(why);
    std::lock_guard<std::mutex> lock(m_stateMutex);
    ++m_state.untrusted;
}

/// Waits for the matching reply until the time-out from \a begin on is over, and judges the connection.
void Link::receive(Clock::time_point begin, LinkExchange* exchange)
{
    waitForReply(begin, exchange);
    const bool answered = !exchange->reply.isEmpty();
    if (!answered && !connected())
        return;
    if (!answered)
        m_owed.add(exchange->sentFrame);
    if (!answered && m_tap && !m_stopping)
        m_tap->timedOut();
    if (m_assembler.outOfStep() || (!answered && m_assembler.partial()))
        dropUntrusted(QStringLiteral("the stream of replies was out of step"));
    else if (isRemote() && !answered)
        dropUntrusted(QStringLiteral("there was no reply in time, and remote frames do not tell a late one"));
    else if (isRemote() && (m_assembler.partial() || !exchange->dropped.empty()))
        dropUntrusted(QStringLiteral("the controller sent more than the reply"));
    // It lasted its time-out, which is pause enough; the station has failed, not the connection.
    if (isRemote() && !answered && !m_assembler.outOfStep())
        reconnectAtOnce();
}

void Link::waitForReply(Clock::time_point begin, LinkExchange* exchange)
{
    for (qint64 left = m_timeoutMs; left > 0 && !m_stopping; left = m_timeoutMs - msSince(begin)) {
        takeBytes(static_cast<int>(std::min<qint64>(left, sliceMs)));
        takeReplies(exchange);
        if (!exchange->reply.isEmpty())
            return reconnectAtOnce();
        if (!connected())
            return drop(QStringLiteral("the controller closed the connection"));
        if (m_assembler.outOfStep())
            return;
    }
}

/// Waits for \a milliseconds at most.
void Link::takeBytes(int milliseconds)
{
    const QByteArray bytes = m_socket.receive(milliseconds);
    if (m_tap && !bytes.isEmpty())
        m_tap->received(bytes);
    m_assembler.append(bytes);
}

/// Takes whole replies out of what has arrived and looks for the matching one.
void Link::takeReplies(LinkExchange* exchange)
{
    for (QByteArray reply = m_assembler.next(); !reply.isEmpty(); reply = m_assembler.next()) {
        DropReason reason = DropReason::Late;
        if (accept(&reply, &reason))
            exchange->reply = reply;
        else
            noteDropped(exchange, reply, reason);
        if (exchange->dropped.size() == mostDropped)
            m_assembler.distrust();
    }
    if (!exchange->reply.isEmpty() && isMixed(exchange->reply)) {
        exchange->reply.clear();
        m_assembler.distrust();
    }
}

bool Link::accept(QByteArray* reply, DropReason* reason)
{
    return isRemote() ? m_remoteMatcher.accept(*reply, reason) : m_matcher.accept(reply, reason);
}

/// \return true when \a reply may have been put together of two. Its rest is then behind it, or it is inside.
bool Link::isMixed(const QByteArray& reply) const
{
    if (isRemote() || !m_owed.areThere())
        return false;
    return m_assembler.outOfStep() || m_assembler.partial() || m_owed.beginInside(reply);
}

void Link::noteDropped(LinkExchange* exchange, const QByteArray& reply, DropReason reason)
{
    exchange->dropped.push_back({reply, reason});
    m_owed.came(reply);
    std::lock_guard<std::mutex> lock(m_stateMutex);
    m_state.dropped.count(reason);
}

} // namespace plc
