// SPDX-License-Identifier: MIT
/// \file
/// \brief A server on loopback that answers Modbus TCP requests as a test tells it to, wrongly on purpose.
#ifndef TESTS_SUPPORT_HOSTILE_SERVER_H
#define TESTS_SUPPORT_HOSTILE_SERVER_H

#include "support/listener.h"

#include <QByteArray>
#include <QString>

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace test
{

/// What becomes of a request.
struct Answer {
    QByteArray bytes; ///< sent as they are; none: nothing is sent
    bool thenClose = false;
};

struct SeenRequest {
    QByteArray bytes;
    std::chrono::steady_clock::time_point at;
};

/// Serves one connection after the other on a thread of its own, until it is destroyed.
class HostileServer
{
public:
    /// Called on the server's thread. \param index of the request since the start, from 0 on
    using Script = std::function<Answer(const QByteArray& request, int index)>;

    /// \param script none: each connection is closed as soon as it is made
    explicit HostileServer(Script script) : m_script(std::move(script))
    {
        m_thread = std::thread([this] { serve(); });
    }

    ~HostileServer()
    {
        m_stopping = true;
        m_thread.join();
    }

    HostileServer(const HostileServer&) = delete;
    HostileServer& operator=(const HostileServer&) = delete;

    int port() const { return m_listener.port(); }

    /// \return it as plcpanel's --controller takes it
    QString controller() const { return QStringLiteral("127.0.0.1:%1").arg(port()); }

    std::vector<SeenRequest> seen() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_seen;
    }

    int connections() const { return m_connections; }

private:
    void serve()
    {
        while (!m_stopping) {
            if (!isReadable(m_listener.descriptor()))
                continue;
            const int connection = accept(m_listener.descriptor(), nullptr, nullptr);
            ++m_connections;
            while (m_script && !m_stopping && answerNext(connection)) {
            }
            close(connection);
        }
    }

    /// \return false when the connection is over
    bool answerNext(int connection)
    {
        const QByteArray header = receive(connection, 6);
        if (header.size() < 6)
            return false;
        const int rest =
            static_cast<unsigned char>(header.at(4)) << 8 | static_cast<unsigned char>(header.at(5));
        const QByteArray request = header + receive(connection, rest);
        int index = 0;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            index = static_cast<int>(m_seen.size());
            m_seen.push_back({request, std::chrono::steady_clock::now()});
        }
        const Answer answer = m_script(request, index);
        if (!answer.bytes.isEmpty())
            send(connection, answer.bytes.constData(), static_cast<std::size_t>(answer.bytes.size()),
                 MSG_NOSIGNAL);
        return !answer.thenClose;
    }

    QByteArray receive(int connection, int size)
    {
        QByteArray bytes;
        char byte = 0;
        while (!m_stopping && bytes.size() < size) {
            if (!isReadable(connection))
                continue;
            if (recv(connection, &byte, 1, 0) != 1)
                break;
            bytes.append(byte);
        }
        return bytes;
    }

    const Script m_script;
    const Listener m_listener;
    mutable std::mutex m_mutex;
    std::vector<SeenRequest> m_seen;
    std::atomic<int> m_connections{0};
    std::atomic<bool> m_stopping{false};
    std::thread m_thread;
};

/// \return the right reply to \a request: an echo of a write, zeros of a read
inline QByteArray rightReply(const QByteArray& request)
{
    const auto byteAt = [&request](int at) { return static_cast<unsigned char>(request.at(at)); };
    const int function = byteAt(7);
    if (function != 1 && function != 3)
        return request.left(4) + QByteArray::fromHex("0006") + request.mid(6, 6);
    const int quantity = byteAt(10) << 8 | byteAt(11);
    const int bytes = function == 1 ? (quantity + 7) / 8 : 2 * quantity;
    QByteArray reply = request.left(4) + QByteArray(2, '\0') + request.mid(6, 2);
    reply[4] = static_cast<char>((bytes + 3) >> 8);
    reply[5] = static_cast<char>(bytes + 3);
    reply.append(static_cast<char>(bytes));
    return reply + QByteArray(bytes, '\0');
}

/// \return the reply by which \a request is refused with exception \a code
inline QByteArray exceptionReply(const QByteArray& request, int code)
{
    QByteArray reply = request.left(4) + QByteArray::fromHex("0003") + request.mid(6, 2);
    reply[7] = static_cast<char>(reply.at(7) | 0x80);
    reply.append(static_cast<char>(code));
    return reply;
}

/// \return \a bytes with another one at \a offset
inline QByteArray withByte(QByteArray bytes, int offset, int value)
{
    bytes[offset] = static_cast<char>(value);
    return bytes;
}

/// \return the same refusal with bytes behind it, as long as the right reply; its length field counts them
inline QByteArray paddedException(const QByteArray& request, int code)
{
    const int size = rightReply(request).size();
    QByteArray reply = exceptionReply(request, code);
    reply.append(QByteArray(std::max(size - reply.size(), 0), '\0'));
    const int length = reply.size() - 6;
    return withByte(withByte(reply, 4, length >> 8), 5, length & 0xFF);
}

} // namespace test

#endif
