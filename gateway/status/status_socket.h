// SPDX-License-Identifier: MIT
/// \file
/// \brief How a running gateway is: told to whoever asks, over a socket in its folder.
#ifndef GATEWAY_STATUS_STATUS_SOCKET_H
#define GATEWAY_STATUS_STATUS_SOCKET_H

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <mutex>
#include <thread>

namespace plc
{

/// \return the socket of the gateway whose folder this is
QString statusSocket(const QString& folder);

/// Answers each connection with what was shown last, a JSON object on one line, and ends it. Anybody on the machine
/// may ask: what it tells holds no secrets. Who asks and does not listen keeps nobody.
class StatusServer
{
public:
    StatusServer() = default;
    ~StatusServer(); ///< the socket is gone
    StatusServer(const StatusServer&) = delete;
    StatusServer& operator=(const StatusServer&) = delete;

    /// Begins to answer. What a process that was killed left there is replaced, so the caller must know that no other
    /// gateway has the folder.
    /// \return why it cannot; empty when it can
    QString open(const QString& folder);

    /// Any thread.
    void show(const QJsonObject& status);

private:
    void serve() const;
    void answer(int connection) const;

    QByteArray m_path;
    int m_listener = -1;
    int m_end = -1; // becomes readable when the thread is to end
    std::thread m_thread;
    mutable std::mutex m_mutex;
    QByteArray m_shown = "{}\n";
};

struct StatusAnswer {
    QJsonObject status;
    QString error; ///< not empty: why there is none
};

/// Asks the gateway whose folder this is; waits a few seconds at most.
StatusAnswer askStatus(const QString& folder);

} // namespace plc

#endif
