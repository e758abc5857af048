/// \file
/// \brief A TCP connection for one request and its reply at a time.
#ifndef RUNTIME_LINK_TCP_SOCKET_H
#define RUNTIME_LINK_TCP_SOCKET_H

#include "runtime/link/link_tap.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <system_error>

namespace plc
{

/// Needs no event loop, and few system calls for an exchange: with a controller on the same machine or
/// switch, they would take as long as the network. Not thread-safe.
class TcpSocket
{
public:
    TcpSocket();
    ~TcpSocket();
    TcpSocket(const TcpSocket&) = delete;
    TcpSocket& operator=(const TcpSocket&) = delete;

    /// Closes what is open, and tries every address of \a host for \a timeoutMs in all; looking up its name
    /// may take longer. \return true when there is a connection, else see errorString()
    bool connectTo(const QString& host, int port, int timeoutMs);

    void close();
    bool isOpen() const;

    /// \return true when all of \a bytes are on their way; else the socket is closed
    bool send(const QByteArray& bytes, int timeoutMs);

    /// Closes the socket when the other side has, or when what was sent is not acknowledged.
    /// \param timeoutMs 0: does not wait
    /// \return what has arrived; when nothing has, waits for \a timeoutMs at most
    QByteArray receive(int timeoutMs);

    /// \return address and port of the connection at this side, and at the other
    LinkEnd ownEnd() const;
    LinkEnd otherEnd() const;

    /// Why there is no connection, in the system's words.
    QString errorString() const { return m_error; }

private:
    class TimeLimit;
    struct Connection;

    bool failWith(const std::error_code& error);

    std::unique_ptr<Connection> m_connection;
    QString m_error;
};

} // namespace plc

#endif
