#include "panel/tcp_socket.h"

#include <QElapsedTimer>

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

namespace panel
{

namespace
{

// A whole reply and more.
const int mostBytesAtOnce = 4096;

// How long a receive that waits sleeps in the system's own time-out; shorter waits are polled for, because
// changing that time-out takes a call of its own.
const int receiveSliceMs = 20;

// A controller that was switched off does not close its connection. Sent bytes that nothing acknowledges
// for so long end it; a station that merely does not answer keeps its gateway's connection.
const unsigned int unacknowledgedMs = 5000;

struct FreeAddresses {
    void operator()(addrinfo* addresses) const { freeaddrinfo(addresses); }
};
using Addresses = std::unique_ptr<addrinfo, FreeAddresses>;

QString systemWords(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

Addresses addressesOf(const QString& host, int port, QString* error)
{
    addrinfo hints = {};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int failure =
        getaddrinfo(host.toLocal8Bit().constData(), QByteArray::number(port).constData(), &hints, &found);
    if (failure != 0)
        *error = QString::fromLocal8Bit(gai_strerror(failure));
    return Addresses(failure == 0 ? found : nullptr);
}

int left(const QElapsedTimer& clock, int timeoutMs)
{
    return static_cast<int>(std::max<qint64>(timeoutMs - clock.elapsed(), 0));
}

bool wouldWait(int error)
{
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

using EndLookUp = int (*)(int descriptor, sockaddr* address, socklen_t* size);

LinkEnd endOf(int descriptor, EndLookUp lookUp)
{
    sockaddr_storage storage = {};
    auto* const address = reinterpret_cast<sockaddr*>(&storage);
    socklen_t size = sizeof storage;
    char host[NI_MAXHOST] = {};
    char service[NI_MAXSERV] = {};
    if (lookUp(descriptor, address, &size) != 0 ||
        getnameinfo(address, size, host, sizeof host, service, sizeof service,
                    NI_NUMERICHOST | NI_NUMERICSERV) != 0)
        return {};
    return {QString::fromLatin1(host), QString::fromLatin1(service).toInt()};
}

} // namespace

TcpSocket::~TcpSocket()
{
    close();
}

void TcpSocket::close()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    m_descriptor = -1;
}

/// \return false
bool TcpSocket::failWith(int error)
{
    m_error = systemWords(error);
    close();
    return false;
}

bool TcpSocket::connectTo(const QString& host, int port, int timeoutMs)
{
    close();
    QElapsedTimer clock;
    clock.start();
    const Addresses addresses = addressesOf(host, port, &m_error);
    for (const addrinfo* address = addresses.get(); address != nullptr; address = address->ai_next) {
        if (tryAddress(*address, left(clock, timeoutMs)))
            return true;
    }
    return false;
}

bool TcpSocket::tryAddress(const addrinfo& address, int timeoutMs)
{
    m_descriptor =
        ::socket(address.ai_family, address.ai_socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, address.ai_protocol);
    if (m_descriptor < 0)
        return failWith(errno);
    if (::connect(m_descriptor, address.ai_addr, address.ai_addrlen) != 0) {
        if (errno != EINPROGRESS)
            return failWith(errno);
        if (!finishConnecting(timeoutMs))
            return false;
    }
    configure();
    return true;
}

bool TcpSocket::finishConnecting(int timeoutMs)
{
    if (!isReady(POLLOUT, timeoutMs))
        return failWith(ETIMEDOUT);
    int error = 0;
    socklen_t size = sizeof error;
    getsockopt(m_descriptor, SOL_SOCKET, SO_ERROR, &error, &size);
    return error == 0 || failWith(error);
}

void TcpSocket::configure()
{
    fcntl(m_descriptor, F_SETFL, fcntl(m_descriptor, F_GETFL) & ~O_NONBLOCK);
    const timeval slice = {0, receiveSliceMs * 1000};
    setsockopt(m_descriptor, SOL_SOCKET, SO_RCVTIMEO, &slice, sizeof slice);
    const int on = 1;
    setsockopt(m_descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    setsockopt(m_descriptor, IPPROTO_TCP, TCP_USER_TIMEOUT, &unacknowledgedMs, sizeof unacknowledgedMs);
}

LinkEnd TcpSocket::ownEnd() const
{
    return endOf(m_descriptor, getsockname);
}

LinkEnd TcpSocket::otherEnd() const
{
    return endOf(m_descriptor, getpeername);
}

bool TcpSocket::isReady(short events, int timeoutMs) const
{
    pollfd descriptor = {m_descriptor, events, 0};
    QElapsedTimer clock;
    clock.start();
    int ready = -1;
    do {
        ready = poll(&descriptor, 1, left(clock, timeoutMs));
    } while (ready < 0 && errno == EINTR);
    return ready > 0;
}

bool TcpSocket::send(const QByteArray& bytes, int timeoutMs)
{
    for (int sent = 0; sent < bytes.size();) {
        const ssize_t now =
            ::send(m_descriptor, bytes.constData() + sent, static_cast<std::size_t>(bytes.size() - sent),
                   MSG_NOSIGNAL | MSG_DONTWAIT);
        if (now > 0)
            sent += static_cast<int>(now);
        else if (!wouldWait(errno))
            return failWith(errno);
        else if (!isReady(POLLOUT, timeoutMs))
            return failWith(ETIMEDOUT);
    }
    return true;
}

QByteArray TcpSocket::receive(int timeoutMs)
{
    if (timeoutMs > 0 && timeoutMs < receiveSliceMs && !isReady(POLLIN, timeoutMs))
        return QByteArray();
    char bytes[mostBytesAtOnce];
    const int flags = timeoutMs < receiveSliceMs ? MSG_DONTWAIT : 0;
    const ssize_t came = recv(m_descriptor, bytes, sizeof bytes, flags);
    if (came > 0)
        return QByteArray(bytes, static_cast<int>(came));
    if (came == 0)
        failWith(ECONNRESET);
    else if (!wouldWait(errno))
        failWith(errno);
    return QByteArray();
}

} // namespace panel
