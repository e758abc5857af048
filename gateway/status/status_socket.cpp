// SPDX-License-Identifier: MIT
#include "gateway/status/status_socket.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>

#include <cerrno>
#include <cstring>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace plc
{

namespace
{

const int waiting = 16; // connections that are not answered yet
const int longestAnswer = 64 * 1024;
const int patienceMs = 3000;
const mode_t forEverybody = 0666;

QString systemError()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

/// \return false when the path is too long for a socket
bool setPath(const QByteArray& path, sockaddr_un* address)
{
    const auto size = static_cast<std::size_t>(path.size());
    if (size >= sizeof address->sun_path)
        return false;
    *address = {};
    address->sun_family = AF_UNIX;
    std::memcpy(address->sun_path, path.constData(), size);
    return true;
}

const sockaddr* generic(const sockaddr_un& address)
{
    return reinterpret_cast<const sockaddr*>(&address);
}

QString tooLong(const QByteArray& path)
{
    return QStringLiteral("%1: the path is too long for a socket; give a shorter one")
        .arg(QFile::decodeName(path));
}

QByteArray readAll(int descriptor)
{
    QByteArray bytes;
    QElapsedTimer clock;
    clock.start();
    while (bytes.size() < longestAnswer) {
        const qint64 leftMs = patienceMs - clock.elapsed();
        pollfd readable = {descriptor, POLLIN, 0};
        if (leftMs <= 0 || poll(&readable, 1, static_cast<int>(leftMs)) <= 0)
            return bytes;
        char part[4096];
        const ssize_t size = read(descriptor, part, sizeof part);
        if (size <= 0)
            return bytes;
        bytes.append(part, static_cast<int>(size));
    }
    return bytes;
}

StatusAnswer refused(const QString& words)
{
    return {QJsonObject(), words};
}

} // namespace

QString statusSocket(const QString& folder)
{
    return QDir(folder).filePath(QStringLiteral("status"));
}

StatusServer::~StatusServer()
{
    if (m_listener < 0)
        return;
    eventfd_write(m_end, 1);
    m_thread.join();
    close(m_end);
    close(m_listener);
    unlink(m_path.constData());
}

QString StatusServer::open(const QString& folder)
{
    m_path = QFile::encodeName(statusSocket(folder));
    sockaddr_un address;
    if (!setPath(m_path, &address))
        return tooLong(m_path);
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    unlink(m_path.constData());
    if (listener < 0 || bind(listener, generic(address), sizeof address) != 0 ||
        chmod(m_path.constData(), forEverybody) != 0 || listen(listener, waiting) != 0) {
        const QString words = systemError();
        if (listener >= 0)
            close(listener);
        return QStringLiteral("%1: --status cannot be answered there: %2")
            .arg(QFile::decodeName(m_path), words);
    }
    m_listener = listener;
    m_end = eventfd(0, EFD_CLOEXEC);
    m_thread = std::thread([this] { serve(); });
    return QString();
}

void StatusServer::show(const QJsonObject& status)
{
    const QByteArray line = QJsonDocument(status).toJson(QJsonDocument::Compact) + '\n';
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_shown = line;
}

void StatusServer::serve() const
{
    for (;;) {
        pollfd descriptors[] = {{m_end, POLLIN, 0}, {m_listener, POLLIN, 0}};
        poll(descriptors, 2, -1);
        if (descriptors[0].revents != 0)
            return;
        const int connection = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (connection >= 0)
            answer(connection);
    }
}

/// It fits into what the system holds for a socket.
void StatusServer::answer(int connection) const
{
    QByteArray shown;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        shown = m_shown;
    }
    send(connection, shown.constData(), static_cast<std::size_t>(shown.size()), MSG_NOSIGNAL | MSG_DONTWAIT);
    close(connection);
}

StatusAnswer askStatus(const QString& folder)
{
    const QByteArray path = QFile::encodeName(statusSocket(folder));
    sockaddr_un address;
    if (!setPath(path, &address))
        return refused(tooLong(path));
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0)
        return refused(systemError());
    if (connect(descriptor, generic(address), sizeof address) != 0) {
        const bool isNobody = errno == ENOENT || errno == ECONNREFUSED;
        const QString words = isNobody ? QStringLiteral("no gateway is running there") : systemError();
        close(descriptor);
        return refused(QStringLiteral("%1: %2").arg(folder, words));
    }
    const QByteArray bytes = readAll(descriptor);
    close(descriptor);
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    if (!document.isObject())
        return refused(QStringLiteral("%1: what runs there does not answer like a gateway").arg(folder));
    return {document.object(), QString()};
}

} // namespace plc
