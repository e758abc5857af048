// SPDX-License-Identifier: MIT
#include "simulator/connection.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace simulator
{

namespace
{

// A peer that asks and never reads shall not fill the memory, neither ours nor the system's.
constexpr std::size_t mostPendingBytes = 65536;
constexpr int systemBuffer = 65536;

bool isTemporary(int error)
{
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

} // namespace

Connection::Connection(FileDescriptor socket, unsigned long number, bool isRemote,
                       std::chrono::milliseconds delay)
    : m_socket(std::move(socket)), m_number(number), m_isRemote(isRemote), m_queue(delay)
{
    const int on = 1; // replies, and above all single bytes of split ones, leave at once
    setsockopt(m_socket.number(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    setsockopt(m_socket.number(), SOL_SOCKET, SO_SNDBUF, &systemBuffer, sizeof systemBuffer);
}

bool Connection::mayReceive() const
{
    return !m_inputEnded && !m_isLastReply && m_unsent.size() + m_queue.pendingBytes() < mostPendingBytes;
}

std::uint32_t Connection::wanted() const
{
    constexpr std::uint32_t nothing = 0;
    const std::uint32_t in = mayReceive() ? std::uint32_t(EPOLLIN) : nothing;
    const std::uint32_t out = m_unsent.empty() ? nothing : std::uint32_t(EPOLLOUT);
    return in | out;
}

std::optional<ReplyQueue::Time> Connection::wakeAt() const
{
    const auto due = m_unsent.empty() ? m_queue.nextDue() : std::nullopt;
    const auto silence = m_remoteStream.silenceAt();
    return due && silence ? std::min(*due, *silence) : due ? due : silence;
}

void Connection::receive()
{
    if (m_happened & (EPOLLERR | EPOLLHUP))
        close();
    if (m_isClosed || !(m_happened & EPOLLIN) || !mayReceive())
        return;
    std::array<std::uint8_t, 4096> bytes; // not cleared: this is on the way of every request
    const ssize_t size = recv(m_socket.number(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (size > 0)
        takeIn(bytes.data(), static_cast<std::size_t>(size));
    else if (size == 0)
        m_inputEnded = true;
    else if (!isTemporary(errno))
        close();
}

void Connection::takeIn(const std::uint8_t* bytes, std::size_t count)
{
    if (m_isRemote)
        m_remoteStream.append(bytes, count, RemoteStream::Clock::now());
    else
        m_stream.append(bytes, count);
}

std::optional<Bytes> Connection::nextRequest()
{
    if (m_isLastReply)
        return std::nullopt;
    return m_isRemote ? m_remoteStream.next(RemoteStream::Clock::now()) : m_stream.next();
}

void Connection::reply(Bytes bytes, const FaultDraw& draw)
{
    if (m_unsent.empty() && m_queue.passes(draw)) // nearly always
        m_unsent = std::move(bytes);
    else
        m_queue.add(std::move(bytes), draw, ReplyQueue::Clock::now());
    if (draw.fault == Fault::CloseAfterReply) {
        m_queue.forgetLate();
        m_isLastReply = true;
    }
}

void Connection::send()
{
    while (!m_isClosed && sendOnce()) {
    }
}

// False when nothing is due or the system takes no more.
bool Connection::sendOnce()
{
    if (m_unsent.empty() && m_queue.pendingBytes() != 0)
        m_unsent = m_queue.takeDue(ReplyQueue::Clock::now());
    if (m_unsent.empty())
        return false;
    const ssize_t size =
        ::send(m_socket.number(), m_unsent.data(), m_unsent.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (size < 0) {
        if (!isTemporary(errno))
            close();
        return errno == EINTR;
    }
    m_unsent.erase(m_unsent.begin(), m_unsent.begin() + size);
    return true;
}

bool Connection::isOver() const
{
    const bool wasLast = m_inputEnded || m_isLastReply;
    return m_isClosed || m_stream.isBroken() || (wasLast && m_unsent.empty() && !m_queue.nextDue());
}

} // namespace simulator
