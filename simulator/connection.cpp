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
    : socket_(std::move(socket)), number_(number), isRemote_(isRemote), queue_(delay)
{
    const int on = 1; // replies, and above all single bytes of split ones, leave at once
    setsockopt(socket_.number(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    setsockopt(socket_.number(), SOL_SOCKET, SO_SNDBUF, &systemBuffer, sizeof systemBuffer);
}

bool Connection::mayReceive() const
{
    return !inputEnded_ && !isLastReply_ && unsent_.size() + queue_.pendingBytes() < mostPendingBytes;
}

std::uint32_t Connection::wanted() const
{
    constexpr std::uint32_t nothing = 0;
    const std::uint32_t in = mayReceive() ? std::uint32_t(EPOLLIN) : nothing;
    const std::uint32_t out = unsent_.empty() ? nothing : std::uint32_t(EPOLLOUT);
    return in | out;
}

std::optional<ReplyQueue::Time> Connection::wakeAt() const
{
    const auto due = unsent_.empty() ? queue_.nextDue() : std::nullopt;
    const auto silence = remoteStream_.silenceAt();
    return due && silence ? std::min(*due, *silence) : due ? due : silence;
}

void Connection::receive()
{
    if (happened_ & (EPOLLERR | EPOLLHUP))
        close();
    if (isClosed_ || !(happened_ & EPOLLIN) || !mayReceive())
        return;
    std::array<std::uint8_t, 4096> bytes; // not cleared: this is on the way of every request
    const ssize_t size = recv(socket_.number(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (size > 0)
        takeIn(bytes.data(), static_cast<std::size_t>(size));
    else if (size == 0)
        inputEnded_ = true;
    else if (!isTemporary(errno))
        close();
}

void Connection::takeIn(const std::uint8_t* bytes, std::size_t count)
{
    if (isRemote_)
        remoteStream_.append(bytes, count, RemoteStream::Clock::now());
    else
        stream_.append(bytes, count);
}

std::optional<Bytes> Connection::nextRequest()
{
    if (isLastReply_)
        return std::nullopt;
    return isRemote_ ? remoteStream_.next(RemoteStream::Clock::now()) : stream_.next();
}

void Connection::reply(Bytes bytes, const FaultDraw& draw)
{
    if (unsent_.empty() && queue_.passes(draw)) // nearly always
        unsent_ = std::move(bytes);
    else
        queue_.add(std::move(bytes), draw, ReplyQueue::Clock::now());
    if (draw.fault == Fault::CloseAfterReply) {
        queue_.forgetLate();
        isLastReply_ = true;
    }
}

void Connection::send()
{
    while (!isClosed_ && sendOnce()) {
    }
}

// False when nothing is due or the system takes no more.
bool Connection::sendOnce()
{
    if (unsent_.empty() && queue_.pendingBytes() != 0)
        unsent_ = queue_.takeDue(ReplyQueue::Clock::now());
    if (unsent_.empty())
        return false;
    const ssize_t size =
        ::send(socket_.number(), unsent_.data(), unsent_.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (size < 0) {
        if (!isTemporary(errno))
            close();
        return errno == EINTR;
    }
    unsent_.erase(unsent_.begin(), unsent_.begin() + size);
    return true;
}

bool Connection::isOver() const
{
    const bool wasLast = inputEnded_ || isLastReply_;
    return isClosed_ || stream_.isBroken() || (wasLast && unsent_.empty() && !queue_.nextDue());
}

} // namespace simulator
