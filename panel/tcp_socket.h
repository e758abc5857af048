/// \file
/// \brief A TCP connection for one request and its reply at a time.
#ifndef PANEL_TCP_SOCKET_H
#define PANEL_TCP_SOCKET_H

#include "panel/link_tap.h"

#include <QByteArray>
#include <QString>

struct addrinfo;

namespace panel
{

/// Waits in the system's own calls: with a controller on the same machine or switch, a socket class that
/// keeps buffers and notifiers of its own takes as long for an exchange as the network. Not thread-safe.
class TcpSocket
{
public:
    TcpSocket() = default;
    ~TcpSocket();
    TcpSocket(const TcpSocket&) = delete;
    TcpSocket& operator=(const TcpSocket&) = delete;

    /// Closes what is open, and tries every address of \a host for \a timeoutMs in all; looking up its name
    /// may take longer. \return true when there is a connection, else see errorString()
    bool connectTo(const QString& host, int port, int timeoutMs);

    void close();
    bool isOpen() const { return m_descriptor >= 0; }

    /// \param timeoutMs how long the connection may take nothing at a time
    /// \return true when all of \a bytes are on their way; else the socket is closed
    bool send(const QByteArray& bytes, int timeoutMs);

    /// Closes the socket when the other side has, or when what was sent is not acknowledged.
    /// \param timeoutMs 0: does not wait
    /// \return what has arrived; when nothing has, waits for \a timeoutMs at most, but may give up earlier
    QByteArray receive(int timeoutMs);

    /// \return address and port of the connection at this side, and at the other
    LinkEnd ownEnd() const;
    LinkEnd otherEnd() const;

    /// Why there is no connection, in the system's words.
    QString errorString() const { return m_error; }

private:
    bool tryAddress(const addrinfo& address, int timeoutMs);
    bool finishConnecting(int timeoutMs);
    bool isReady(short events, int timeoutMs) const;
    void configure();
    bool failWith(int error);

    int m_descriptor = -1;
    QString m_error;
};

} // namespace panel

#endif
