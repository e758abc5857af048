// SPDX-License-Identifier: MIT
/// \file
/// \brief The open connections of a controller, and the wait for one of them to have something to do.
#ifndef SIMULATOR_CONNECTION_SET_H
#define SIMULATOR_CONNECTION_SET_H

#include "simulator/connection.h"
#include "simulator/file_descriptor.h"

#include <memory>
#include <set>
#include <vector>

namespace simulator
{

/// For one thread. What waiting costs does not grow with connections on which nothing happens.
class ConnectionSet
{
public:
    /// What there is to do.
    struct Work {
        bool isOver = false;       ///< `wake` can be read
        bool isConnecting = false; ///< somebody wants a connection, and there is room for it
        std::vector<Connection*> ready = {};
    };

    /// Descriptors that stay open as long as the set lives. Throws std::runtime_error if the system has no room.
    ConnectionSet(int wake, int listener);

    void add(std::unique_ptr<Connection> connection);

    /// Sleeps until something comes in, can go out or is due.
    Work wait();

    /// To be called for each connection that was ready, once it was served. Drops it if it is over.
    void settle(Connection& connection);

private:
    std::optional<ReplyQueue::Time> firstDue() const;
    void addDue(Work& work) const;
    void watch(int descriptor, std::uint32_t events, void* tag, bool isNew);
    void watchListener();

    FileDescriptor m_events;
    int m_wake;
    int m_listener;
    bool m_isListening = true;
    std::vector<std::unique_ptr<Connection>> m_connections;
    std::set<Connection*> m_timed; // have something to do at a time
};

} // namespace simulator

#endif
