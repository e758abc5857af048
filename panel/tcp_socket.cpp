#include "panel/tcp_socket.h"

#include <asio.hpp>

#include <poll.h>

#include <array>
#include <chrono>

namespace panel
{

namespace
{

using asio::ip::tcp;

// A whole reply and more.
const std::size_t mostBytesAtOnce = 4096;

// A controller that was switched off does not close its connection. Sent bytes that nothing acknowledges
// for so long end it; a station that merely does not answer keeps its gateway's connection.
const unsigned int unacknowledgedMs = 5000;

LinkEnd linkEnd(const tcp::endpoint& end)
{
    return {QString::fromStdString(end.address().to_string()), end.port()};
}

QString words(const std::error_code& error)
{
    if (error == asio::error::eof)
        return QStringLiteral("the other side has closed the connection");
    return QString::fromLocal8Bit(error.message().c_str());
}

} // namespace

/// The socket, and what waits for it.
struct TcpSocket::Connection {
    asio::io_context context{1}; // one thread uses it
    tcp::socket socket{context};

    /// \return true when what was begun came to its end within \a milliseconds
    bool runFor(int milliseconds)
    {
        context.restart();
        context.run_for(std::chrono::milliseconds(milliseconds));
        return context.stopped();
    }

    /// What was begun ends, and its handler is called.
    void giveUp()
    {
        std::error_code ignored;
        socket.close(ignored);
        context.run();
    }

    std::error_code connect(const tcp::resolver::results_type& endpoints, int timeoutMs)
    {
        std::error_code result;
        asio::async_connect(socket, endpoints, [&result](const std::error_code& error, const tcp::endpoint&) {
            result = error;
        });
        if (runFor(timeoutMs))
            return result;
        giveUp();
        return asio::error::timed_out;
    }

    std::error_code configure()
    {
        std::error_code error;
        socket.non_blocking(true, error);
        if (!error)
            socket.set_option(tcp::no_delay(true), error);
        setsockopt(socket.native_handle(), IPPROTO_TCP, TCP_USER_TIMEOUT, &unacknowledgedMs,
                   sizeof unacknowledgedMs);
        return error;
    }

    std::error_code send(const asio::const_buffer& buffer, int timeoutMs)
    {
        std::error_code result;
        const std::size_t sent = asio::write(socket, buffer, result);
        if (result != asio::error::would_block)
            return result;
        asio::async_write(socket, buffer + sent,
                          [&result](const std::error_code& error, std::size_t) { result = error; });
        if (runFor(timeoutMs))
            return result;
        giveUp();
        return asio::error::timed_out;
    }

    /// \return true when there are bytes, or the other side has closed, within \a milliseconds
    bool isReadable(int milliseconds)
    {
        pollfd descriptor = {socket.native_handle(), POLLIN, 0};
        return poll(&descriptor, 1, milliseconds) > 0; // one call; Asio's own wait takes three
    }

    /// \return bytes received; 0 when there are none yet, or when \a error is set
    std::size_t receive(const asio::mutable_buffer& buffer, int timeoutMs, std::error_code* error)
    {
        if (timeoutMs > 0 && !isReadable(timeoutMs))
            return 0;
        const std::size_t came = socket.read_some(buffer, *error);
        if (*error == asio::error::would_block)
            error->clear();
        return came;
    }
};

TcpSocket::TcpSocket() = default;

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

bool TcpSocket::connectTo(const QString& host, int port, int timeoutMs)
try {
    m_connection = std::make_unique<Connection>();
    tcp::resolver resolver(m_connection->context);
    std::error_code error;
    const auto endpoints = resolver.resolve(host.toLocal8Bit().toStdString(), std::to_string(port),
                                            tcp::resolver::numeric_service, error);
    if (!error)
        error = m_connection->connect(endpoints, timeoutMs);
    if (!error)
        error = m_connection->configure();
    return !error || failWith(error);
} catch (const std::system_error& failure) { // no descriptors are left
    return failWith(failure.code());
}

LinkEnd TcpSocket::ownEnd() const
{
    std::error_code error;
    return m_connection ? linkEnd(m_connection->socket.local_endpoint(error)) : LinkEnd();
}

LinkEnd TcpSocket::otherEnd() const
{
    std::error_code error;
    return m_connection ? linkEnd(m_connection->socket.remote_endpoint(error)) : LinkEnd();
}

bool TcpSocket::send(const QByteArray& bytes, int timeoutMs)
{
    if (!m_connection)
        return false;
    const auto buffer = asio::buffer(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    const std::error_code error = m_connection->send(buffer, timeoutMs);
    return !error || failWith(error);
}

QByteArray TcpSocket::receive(int timeoutMs)
{
    if (!m_connection)
        return QByteArray();
    std::array<char, mostBytesAtOnce> bytes;
    std::error_code error;
    const std::size_t came = m_connection->receive(asio::buffer(bytes), timeoutMs, &error);
    if (error)
        failWith(error);
    return QByteArray(bytes.data(), static_cast<int>(came));
}

} // namespace panel
