// SPDX-License-Identifier: MIT
#include "bench/client_load.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <ctime>
#include <stdexcept>
#include <vector>

namespace bench
{

namespace
{

using Clock = std::chrono::steady_clock;

const unsigned char request[] = {0, 1, 0, 0, 0, 6, 1, 3, 0, 0, 0, 100}; // 100 registers of unit 1
const std::size_t replySize = 9 + 2 * 100;
const int patienceMs = 5000;
const int mostEvents = 64;

int connectedSocket(int port)
{
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        throw std::runtime_error("cannot connect to the server");
    const int on = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return descriptor;
}

double processorSeconds(qint64 process)
{
    clockid_t clock = 0;
    timespec time = {};
    if (clock_getcpuclockid(static_cast<pid_t>(process), &clock) != 0 || clock_gettime(clock, &time) != 0)
        throw std::runtime_error("the system does not say what the server costs");
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

class Clients
{
public:
    Clients(int port, int count) : m_events(epoll_create1(EPOLL_CLOEXEC))
    {
        for (int i = 0; i < count; ++i) {
            m_sockets.push_back(connectedSocket(port));
            epoll_event event = {};
            event.events = EPOLLIN;
            event.data.fd = m_sockets.back();
            epoll_ctl(m_events, EPOLL_CTL_ADD, m_sockets.back(), &event);
        }
    }
    ~Clients()
    {
        for (const int socket : m_sockets)
            ::close(socket);
        ::close(m_events);
    }
    Clients(const Clients&) = delete;
    Clients& operator=(const Clients&) = delete;

    void start()
    {
        for (const int socket : m_sockets)
            ask(socket);
    }

    /// Takes the replies that are there and asks again. \return how many there were
    int takeTurn()
    {
        epoll_event events[mostEvents];
        const int count = epoll_wait(m_events, events, mostEvents, patienceMs);
        if (count <= 0)
            throw std::runtime_error("the server does not answer");
        for (int i = 0; i < count; ++i) {
            takeReply(events[i].data.fd);
            ask(events[i].data.fd);
        }
        return count;
    }

private:
    static void ask(int socket)
    {
        if (send(socket, request, sizeof request, MSG_NOSIGNAL) != sizeof request)
            throw std::runtime_error("cannot send to the server");
    }

    static void takeReply(int socket)
    {
        unsigned char reply[replySize];
        if (recv(socket, reply, sizeof reply, MSG_WAITALL) != sizeof reply || reply[7] != request[7])
            throw std::runtime_error("the server does not answer as it must");
    }

    int m_events;
    std::vector<int> m_sockets;
};

} // namespace

LoadFigures loadServer(const LoopbackController& server, int clients, int ms)
{
    Clients load(server.port(), clients);
    load.start();
    for (int warm = 0; warm < 10 * clients;)
        warm += load.takeTurn();
    const double before = processorSeconds(server.process());
    const auto start = Clock::now();
    const auto end = start + std::chrono::milliseconds(ms);
    long requests = 0;
    auto now = start;
    for (; now < end; now = Clock::now())
        requests += load.takeTurn();
    return {static_cast<double>(requests), std::chrono::duration<double>(now - start).count(),
            processorSeconds(server.process()) - before};
}

} // namespace bench
