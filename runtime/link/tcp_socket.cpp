// SPDX-License-Identifier: MIT
#include "runtime/link/tcp_socket.h"

#include "runtime/model/clock.h"

#include <asio.hpp>

#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>

namespace plc
{

namespace
{

using asio::ip::tcp;

using Error = std::optional<std::error_code>; // an error code without an error is a call, too

const int nobody = -1; // no descriptor
const int msOfSecond = 1000;

// How long an attempt to connect may keep stop() waiting.
const int sliceMs = 20;

// A whole reply and more.
const std::size_t mostBytesAtOnce = 4096;

// A controller that was switched off does not close its connection. Sent bytes that nothing acknowledges
// for so long end it; a station that merely does not answer keeps its gateway's connection.
const unsigned int unacknowledgedMs = 5000;

/// \param nameOf getsockname() or getpeername()
LinkEnd linkEnd(int descriptor, int (*nameOf)(int, sockaddr*, socklen_t*))
{
    tcp::endpoint end;
    auto size = static_cast<socklen_t>(end.capacity());
    if (nameOf(descriptor, end.data(), &size) != 0)
        return LinkEnd();
    end.resize(size);
    return {QString::fromStdString(end.address().to_string()), end.port()};
}

QString words(const std::error_code& error)
{
    if (error == asio::error::eof)
        return QStringLiteral("the other side has closed the connection");
    if (error == asio::error::host_not_found_try_again)
        return QStringLiteral("no name server has answered");
    return QString::fromLocal8Bit(error.message().c_str());
}

template <class Value>
void setOption(int descriptor, int level, int name, const Value& value)
{
    setsockopt(descriptor, level, name, &value, sizeof value);
}

/// \return what was begun came to its end within \a timeoutMs, and before \a stopping was true
bool runFor(asio::io_context& context, int timeoutMs, const std::atomic<bool>& stopping)
{
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!stopping && !context.stopped() && Clock::now() < end)
        context.run_until(std::min(end, Clock::now() + std::chrono::milliseconds(sliceMs)));
    return context.stopped();
}

NameLookup::Answer askSystem(const std::string& host)
{
    NameLookup::Answer answer;
    asio::io_context context(1);
    for (const auto& found :
         tcp::resolver(context).resolve(host, "0", tcp::resolver::numeric_service, answer.error))
        answer.addresses.push_back(found.endpoint().address().to_string());
    return answer;
}

std::vector<tcp::endpoint> endpointsOf(const std::vector<std::string>& addresses, int port)
{
    std::vector<tcp::endpoint> endpoints;
    endpoints.reserve(addresses.size());
    for (const std::string& address : addresses)
        endpoints.emplace_back(asio::ip::make_address(address), static_cast<unsigned short>(port));
    return endpoints;
}

/// Tries all \a endpoints. \return a connected descriptor that is the caller's, or nobody
int connectedTo(const std::vector<tcp::endpoint>& endpoints, int timeoutMs, const std::atomic<bool>& stopping,
                std::error_code* error)
{
    asio::io_context context(1); // one thread uses it
    tcp::socket socket(context);
    *error = asio::error::timed_out;
    asio::async_connect(socket, endpoints,
                        [error](const std::error_code& result, const tcp::endpoint&) { *error = result; });
    if (!runFor(context, timeoutMs, stopping) || *error)
        return nobody;
    socket.native_non_blocking(false, *error);
    return *error ? nobody : socket.release();
}

bool isNumber(const std::string& host)
{
    std::error_code error;
    asio::ip::make_address(host, error);
    return !error;
}

std::error_code lastError()
{
    return std::error_code(errno, std::system_category());
}

bool isTimeOut(int error)
{
    return error == EAGAIN || error == EWOULDBLOCK;
}

// The C library's send() and recv() are places where a thread can be cancelled, which takes four atomic operations for
// an exchange, and with 32 bits they go through a call of the system that serves all sockets. Nobody cancels here.

ssize_t sendNow(int descriptor, const void* bytes, std::size_t size)
{
    const long sent = syscall(SYS_sendto, descriptor, bytes, size, MSG_NOSIGNAL, nullptr, 0);
    return sent < 0 && errno == ENOSYS ? ::send(descriptor, bytes, size, MSG_NOSIGNAL) : sent;
}

ssize_t receiveNow(int descriptor, void* bytes, std::size_t most, int flags)
{
    const long came = syscall(SYS_recvfrom, descriptor, bytes, most, flags, nullptr, nullptr);
    return came < 0 && errno == ENOSYS ? ::recv(descriptor, bytes, most, flags) : came;
}

} // namespace

/// How long a call of the system waits at most; the system is told when that changes.
class TcpSocket::TimeLimit
{
public:
    /// \param option SO_RCVTIMEO or SO_SNDTIMEO
    TimeLimit(int descriptor, int option) : m_descriptor(descriptor), m_option(option) {}

    /// \param milliseconds from 1 on
    void set(int milliseconds)
    {
        if (milliseconds == m_milliseconds)
            return;
        m_milliseconds = milliseconds;
        timeval time = {};
        time.tv_sec = milliseconds / msOfSecond;
        time.tv_usec = milliseconds % msOfSecond * microsecondsOfMs;
        setOption(m_descriptor, SOL_SOCKET, m_option, time);
    }

private:
    const int m_descriptor;
    const int m_option;
    int m_milliseconds = 0; // 0: without end
};

/// An open connection. Asio has found it; an exchange then takes one call to send and one that waits and
/// receives, where Asio's own waiting takes three.
struct TcpSocket::Connection {
    explicit Connection(int descriptor) : socket(descriptor)
    {
        setOption(socket, IPPROTO_TCP, TCP_NODELAY, 1);
        setOption(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, unacknowledgedMs);
    }
    ~Connection() { ::close(socket); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Waits for room, which is there unless the other side does not read.
    /// \return nothing when all of \a bytes are on their way
    Error send(const QByteArray& bytes, int timeoutMs)
    {
        sendLimit.set(timeoutMs);
        ssize_t sent = 0;
        do
            sent = sendNow(socket, bytes.constData(), static_cast<std::size_t>(bytes.size()));
        while (sent < 0 && errno == EINTR);
        if (sent == bytes.size())
            return std::nullopt;
        return sent >= 0 || isTimeOut(errno) ? std::error_code(asio::error::timed_out) : lastError();
    }

    /// \return bytes received; 0 when there are none yet, or when \a error is set
    std::size_t receive(char* bytes, std::size_t most, int timeoutMs, Error* error)
    {
        if (timeoutMs > 0)
            receiveLimit.set(timeoutMs);
        const ssize_t came = receiveNow(socket, bytes, most, timeoutMs > 0 ? 0 : MSG_DONTWAIT);
        if (came > 0)
            return static_cast<std::size_t>(came);
        if (came == 0)
            *error = std::error_code(asio::error::eof);
        else if (!isTimeOut(errno) && errno != EINTR)
            *error = lastError();
        return 0;
    }

    const int socket;
    TimeLimit sendLimit{socket, SO_SNDTIMEO};
    TimeLimit receiveLimit{socket, SO_RCVTIMEO};
};

TcpSocket::TcpSocket(const QString& host, int port) : TcpSocket(host, port, askSystem) {}

TcpSocket::TcpSocket(const QString& host, int port, NameLookup::Ask ask)
    : m_host(host), m_port(port), m_lookup(std::move(ask))
{
}

TcpSocket::~TcpSocket() = default;

void TcpSocket::close()
{
    m_connection.reset();
}

bool TcpSocket::isOpen() const
{
    return m_connection != nullptr;
}

/// \return false
bool TcpSocket::failWith(const std::error_code& error)
{
    m_error = words(error);
    close();
    return false;
}

bool TcpSocket::connect(int timeoutMs)
try {
    close();
    std::error_code error;
    const int descriptor = connectWithin(timeoutMs, &error);
    if (descriptor == nobody)
        return failWith(error);
    m_connection = std::make_unique<Connection>(descriptor);
    return true;
} catch (const std::system_error& failure) { // no descriptors are left
    return failWith(failure.code());
}

/// \return as connectedTo()
int TcpSocket::connectWithin(int timeoutMs, std::error_code* error)
{
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(timeoutMs);
    const std::string host = m_host.toLocal8Bit().toStdString();
    std::optional<NameLookup::Answer> found = NameLookup::Answer{{host}, {}};
    if (!isNumber(host))
        found = m_lookup.addressesOf(host, timeoutMs, m_stopping);
    if (!found || found->error) {
        *error = found ? found->error : asio::error::host_not_found_try_again;
        return nobody;
    }
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
    return connectedTo(endpointsOf(found->addresses, m_port), static_cast<int>(left), m_stopping, error);
}

LinkEnd TcpSocket::ownEnd() const
{
    return m_connection ? linkEnd(m_connection->socket, getsockname) : LinkEnd();
}

LinkEnd TcpSocket::otherEnd() const
{
    return m_connection ? linkEnd(m_connection->socket, getpeername) : LinkEnd();
}

bool TcpSocket::send(const QByteArray& bytes, int timeoutMs)
{
    if (!m_connection)
        return false;
    const Error error = m_connection->send(bytes, timeoutMs);
    return !error || failWith(*error);
}

void TcpSocket::receive(int timeoutMs, QByteArray* bytes)
{
    std::array<char, mostBytesAtOnce> room; // so that bytes that somebody keeps take no more than they need
    Error error;
    std::size_t came = 0;
    if (m_connection)
        came = m_connection->receive(room.data(), room.size(), timeoutMs, &error);
    if (bytes->size() != static_cast<int>(came))
        bytes->resize(static_cast<int>(came));
    if (came > 0)
        std::memcpy(bytes->data(), room.data(), came);
    if (error)
        failWith(*error);
}

} // namespace plc
