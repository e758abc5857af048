// SPDX-License-Identifier: MIT
#include "gateway/system/service_manager.h"

#include <cstddef>
#include <cstring>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace plc
{

namespace
{

// Of the time between two signs of life that the manager waits: so that a late one does no harm.
const int signsInTime = 4;

qint64 watchdogOfEnvironment()
{
    const QByteArray process = qgetenv("WATCHDOG_PID");
    if (!process.isEmpty() && process.toLongLong() != getpid())
        return 0;
    return qgetenv("WATCHDOG_USEC").toLongLong() / 1000;
}

} // namespace

ServiceManager::ServiceManager() : ServiceManager(qgetenv("NOTIFY_SOCKET"), watchdogOfEnvironment()) {}

ServiceManager::ServiceManager(const QByteArray& socket, qint64 watchdogMs)
    : m_socket(socket), m_watchdogMs(socket.isEmpty() ? 0 : watchdogMs)
{
    if (!m_socket.isEmpty())
        m_descriptor = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
}

ServiceManager::~ServiceManager()
{
    if (m_descriptor >= 0)
        close(m_descriptor);
}

/// A manager that does not listen is none of our worries.
void ServiceManager::send(const QByteArray& message) const
{
    sockaddr_un address = {};
    const auto size = static_cast<std::size_t>(m_socket.size());
    if (m_descriptor < 0 || size >= sizeof address.sun_path)
        return;
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, m_socket.constData(), size);
    if (address.sun_path[0] == '@') // a name that is no file
        address.sun_path[0] = '\0';
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + size);
    sendto(m_descriptor, message.constData(), static_cast<std::size_t>(message.size()), MSG_NOSIGNAL,
           reinterpret_cast<const sockaddr*>(&address), length);
}

void ServiceManager::ready()
{
    send("READY=1");
}

void ServiceManager::status(const QString& words)
{
    if (words == m_status)
        return;
    m_status = words;
    QString line = words;
    send("STATUS=" + line.replace(QLatin1Char('\n'), QLatin1Char(' ')).toUtf8());
}

void ServiceManager::stopping()
{
    send("STOPPING=1");
}

void ServiceManager::alive()
{
    send("WATCHDOG=1");
}

Watchdog::Watchdog(ServiceManager* manager, qint64 longestRoundMs)
    : m_manager(manager), m_longestRoundMs(longestRoundMs)
{
}

void Watchdog::look(quint32 rounds, qint64 nowMs)
{
    if (m_manager->watchdogMs() <= 0)
        return;
    if (!m_began || rounds != m_rounds)
        m_movedMs = nowMs;
    m_began = true;
    m_rounds = rounds;
    if (nowMs < m_dueMs || nowMs - m_movedMs > m_longestRoundMs)
        return;
    m_manager->alive();
    m_dueMs = nowMs + m_manager->watchdogMs() / signsInTime;
}

} // namespace plc
