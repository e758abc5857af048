// SPDX-License-Identifier: MIT
/// \file
/// \brief A TCP connection for one request and its reply at a time.
#ifndef RUNTIME_LINK_TCP_SOCKET_H
#define RUNTIME_LINK_TCP_SOCKET_H

#include "runtime/link/name_lookup.h"
#include "runtime/link/transport.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <system_error>

namespace plc
{

/// Needs no event loop, and few system calls for an exchange: with a controller on the same machine or
/// switch, they would take as long as the network. Not thread-safe.
class TcpSocket : public Transport
{
public:
    /// \param host name or address
    TcpSocket(const QString& host, int port);

    /// \param ask in place of the system, for tests
    TcpSocket(const QString& host, int port, NameLookup::Ask ask);
    ~TcpSocket() override;
    TcpSocket(const TcpSocket&) = delete;
    TcpSocket& operator=(const TcpSocket&) = delete;

    /// Tries every address of the host, whose name is looked up each time.
    bool connect(int timeoutMs) override;
    void stop() override { m_stopping = true; }

    void close() override;
    bool isOpen() const override;
    bool send(const QByteArray& bytes, int timeoutMs) override;

    /// Closes also when what was sent is not acknowledged.
    void receive(int timeoutMs, QByteArray* bytes) override;

    LinkEnd target() const override { return {m_host, m_port}; }
    LinkEnd ownEnd() const override;
    LinkEnd otherEnd() const override;
    QString errorString() const override { return m_error; }

private:
    class TimeLimit;
    struct Connection;

    int connectWithin(int timeoutMs, std::error_code* error);
    bool failWith(const std::error_code& error);

    const QString m_host;
    const int m_port;
    NameLookup m_lookup;
    std::atomic<bool> m_stopping{false};
    std::unique_ptr<Connection> m_connection;
    QString m_error;
};

} // namespace plc

#endif
