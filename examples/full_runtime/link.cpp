// SPDX-License-Identifier: MIT
#include "link.h"

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <thread>

namespace
{

const std::chrono::milliseconds timeOut(200);
const int headerSize = 6; // up to the length
const int longestRest = 254;
const std::size_t mostOwed = 64;

int wordAt(const QByteArray& bytes, int index)
{
    return static_cast<unsigned char>(bytes[index]) << 8 | static_cast<unsigned char>(bytes[index + 1]);
}

bool answers(const QByteArray& reply, const QByteArray& sent)
{
    return reply.size() >= 9 && reply.left(2) == sent.left(2) && reply[6] == sent[6] &&
           (reply[7] & 0x7F) == sent[7];
}

bool isException(const QByteArray& reply)
{
    return (reply[7] & 0x80) != 0;
}

// What the driver does not look at: a read must bring what it says, a write repeat what was asked.
bool isSound(const QByteArray& reply, const QByteArray& sent)
{
    if (sent[7] == 1 || sent[7] == 3)
        return reply.size() == 9 + static_cast<unsigned char>(reply[8]);
    return reply.mid(8, 4) == sent.mid(8, 4);
}

} // namespace

Exchange Link::exchange(QByteArray frame, bool replyExpected)
{
    const Clock::time_point deadline = Clock::now() + timeOut;
    Exchange result;
    if (!connected()) {
        std::this_thread::sleep_until(deadline);
        return result;
    }
    m_number =
        m_number % 0xFFFF + 1; // a new one for each try; never 0, which a device that echoes none sends
    frame[0] = static_cast<char>(m_number >> 8);
    frame[1] = static_cast<char>(m_number & 0xFF);
    result.sent = send(m_socket, frame.constData(), size_t(frame.size()), MSG_NOSIGNAL) == frame.size();
    if (!result.sent)
        drop();
    else if (replyExpected)
        result.reply = answer(frame, deadline);
    result.silent = result.reply.isEmpty() && m_socket >= 0;
    return result;
}

// The reply with the driver's number 0, or nothing. One byte, which the driver refuses, for a reply that is unsound.
QByteArray Link::answer(const QByteArray& sent, Clock::time_point deadline)
{
    for (QByteArray reply = receive(deadline); !reply.isEmpty(); reply = receive(deadline)) {
        m_owed.erase(std::remove(m_owed.begin(), m_owed.end(), reply.left(4)), m_owed.end());
        if (!answers(reply, sent))
            continue; // late, or another's
        if (holdsAnOwedOne(reply)) {
            drop();
            return QByteArray();
        }
        m_pauseMs = 0; // an answer, not a connection, ends the growing of the pauses
        m_nextAttempt = Clock::now();
        if (isException(reply))
            return reply.left(9).replace(0, 2, QByteArray(2, '\0'));
        return isSound(reply, sent) ? reply.replace(0, 2, QByteArray(2, '\0')) : QByteArray(1, '\0');
    }
    if (m_socket >= 0)
        m_owed.push_back(sent.left(4));
    if (m_owed.size() > mostOwed)
        m_owed.pop_front();
    return QByteArray();
}

// A reply that was cut may be filled up by one that comes late. The connection is kept after a time-out, for the other
// stations' sake, so it is looked for.
bool Link::holdsAnOwedOne(const QByteArray& reply) const
{
    return std::any_of(m_owed.begin(), m_owed.end(),
                       [&](const QByteArray& head) { return reply.indexOf(head, headerSize) >= 0; });
}

// A reply ends where the length in its header says. One that has begun and is not whole in time, or whose header cannot
// be right, ends the connection: the stream has lost its step.
QByteArray Link::receive(Clock::time_point deadline)
{
    QByteArray reply;
    if (!append(&reply, headerSize, deadline)) {
        if (!reply.isEmpty())
            drop();
        return QByteArray();
    }
    const int rest = wordAt(reply, 4);
    if (wordAt(reply, 2) == 0 && rest >= 2 && rest <= longestRest && append(&reply, rest, deadline))
        return reply;
    drop();
    return QByteArray();
}

bool Link::append(QByteArray* bytes, int size, Clock::time_point deadline)
{
    const int wanted = bytes->size() + size;
    while (m_socket >= 0 && bytes->size() < wanted) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd readable = {m_socket, POLLIN, 0};
        if (poll(&readable, 1, static_cast<int>(std::max<long long>(left, 0))) != 1)
            return false;
        char part[headerSize + longestRest];
        const ssize_t got = recv(m_socket, part, size_t(wanted - bytes->size()), 0);
        if (got <= 0)
            drop();
        else
            bytes->append(part, static_cast<int>(got));
    }
    return m_socket >= 0;
}

bool Link::connected()
{
    if (m_socket < 0 && Clock::now() >= m_nextAttempt) {
        connect();
        m_pauseMs = m_pauseMs == 0 ? 100 : std::min(2 * m_pauseMs, 5000);
        m_nextAttempt = Clock::now() + std::chrono::milliseconds(m_pauseMs);
    }
    return m_socket >= 0;
}

void Link::connect()
{
    addrinfo hints = addrinfo(), *found = nullptr;
    hints.ai_socktype = SOCK_STREAM;
    if (getaddrinfo(m_host.c_str(), m_port.c_str(), &hints, &found) != 0)
        return;
    for (const addrinfo* one = found; one != nullptr && m_socket < 0; one = one->ai_next)
        if (!connectTo(one->ai_addr, one->ai_addrlen, one->ai_family))
            drop();
    freeaddrinfo(found);
}

bool Link::connectTo(const sockaddr* address, unsigned size, int family)
{
    const timeval wait = {1, 0}; // to connect, and to send
    m_socket = socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    return m_socket >= 0 && setsockopt(m_socket, SOL_SOCKET, SO_SNDTIMEO, &wait, sizeof wait) == 0 &&
           ::connect(m_socket, address, size) == 0;
}

void Link::drop()
{
    if (m_socket >= 0)
        close(m_socket);
    m_socket = -1;
    m_owed.clear(); // nothing comes on the old connection any more
}
