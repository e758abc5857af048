// SPDX-License-Identifier: MIT
#include "simulator/connection_set.h"

#include <poll.h>
#include <sys/epoll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace simulator
{

namespace
{

constexpr std::size_t mostConnections = 64;
constexpr int atOnce = 64; // events that are fetched together
constexpr int forEver = -1;

// epoll_wait() knows milliseconds only, and split replies have shorter pauses.
void sleepUntil(int events, ReplyQueue::Time due)
{
    using namespace std::chrono;
    const auto rest = std::max(nanoseconds(0), duration_cast<nanoseconds>(due - ReplyQueue::Clock::now()));
    timespec pause{};
    pause.tv_sec = static_cast<time_t>(duration_cast<seconds>(rest).count());
    pause.tv_nsec = static_cast<long>((rest % seconds(1)).count());
    pollfd entry{events, POLLIN, 0};
    ppoll(&entry, 1, &pause, nullptr);
}

} // namespace

ConnectionSet::ConnectionSet(int wake, int listener)
    : m_events(epoll_create1(EPOLL_CLOEXEC)), m_wake(wake), m_listener(listener)
{
    if (m_events.number() < 0)
        throw std::runtime_error("cannot wait for connections: " + std::string(std::strerror(errno)));
    watch(m_wake, EPOLLIN, &m_wake, true);
    watch(m_listener, EPOLLIN, &m_listener, true);
}

void ConnectionSet::add(std::unique_ptr<Connection> connection)
{
    watch(connection->socket(), connection->wanted(), connection.get(), true);
    connection->setWatched(connection->wanted());
    m_connections.push_back(std::move(connection));
    watchListener();
}

ConnectionSet::Work ConnectionSet::wait()
{
    const auto due = firstDue();
    if (due)
        sleepUntil(m_events.number(), *due);
    std::array<epoll_event, atOnce> events{};
    const int count = epoll_wait(m_events.number(), events.data(), atOnce, due ? 0 : forEver);
    Work work;
    for (int i = 0; i < count; ++i) {
        const epoll_event& event = events[static_cast<std::size_t>(i)];
        if (event.data.ptr == &m_wake) {
            work.isOver = true;
        } else if (event.data.ptr == &m_listener) {
            work.isConnecting = true;
        } else {
            auto* const connection = static_cast<Connection*>(event.data.ptr);
            connection->setHappened(event.events);
            work.ready.push_back(connection);
        }
    }
    if (due)
        addDue(work);
    return work;
}

void ConnectionSet::settle(Connection& connection)
{
    connection.setHappened(0);
    if (connection.isOver()) {
        m_timed.erase(&connection);
        // Closing is not enough: a process that was just forked may hold the socket open until its exec, and as long as
        // somebody does, its events would go on to come, for a connection that is no more.
        epoll_ctl(m_events.number(), EPOLL_CTL_DEL, connection.socket(), nullptr);
        m_connections.erase(std::find_if(m_connections.begin(), m_connections.end(),
                                         [&](const auto& each) { return each.get() == &connection; }));
        watchListener();
        return;
    }
    if (connection.wanted() != connection.watched()) {
        watch(connection.socket(), connection.wanted(), &connection, false);
        connection.setWatched(connection.wanted());
    }
    if (connection.wakeAt())
        m_timed.insert(&connection);
    else
        m_timed.erase(&connection);
}

std::optional<ReplyQueue::Time> ConnectionSet::firstDue() const
{
    std::optional<ReplyQueue::Time> first;
    for (const Connection* const connection : m_timed)
        if (const auto due = connection->wakeAt())
            first = first ? std::min(*first, *due) : *due;
    return first;
}

void ConnectionSet::addDue(Work& work) const
{
    const auto now = ReplyQueue::Clock::now();
    for (Connection* const connection : m_timed) {
        const auto due = connection->wakeAt();
        if (due && *due <= now && std::count(work.ready.begin(), work.ready.end(), connection) == 0)
            work.ready.push_back(connection);
    }
}

void ConnectionSet::watch(int descriptor, std::uint32_t events, void* tag, bool isNew)
{
    epoll_event event{};
    event.events = events;
    event.data.ptr = tag;
    if (epoll_ctl(m_events.number(), isNew ? EPOLL_CTL_ADD : EPOLL_CTL_MOD, descriptor, &event) != 0)
        throw std::runtime_error("cannot wait for a connection: " + std::string(std::strerror(errno)));
}

void ConnectionSet::watchListener()
{
    const bool hasRoom = m_connections.size() < mostConnections;
    if (hasRoom != m_isListening)
        watch(m_listener, hasRoom ? std::uint32_t(EPOLLIN) : 0, &m_listener, false);
    m_isListening = hasRoom;
}

} // namespace simulator
