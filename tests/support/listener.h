// SPDX-License-Identifier: MIT
// Where a server of a test waits for its clients.
#ifndef TESTS_SUPPORT_LISTENER_H
#define TESTS_SUPPORT_LISTENER_H

#include "support/loopback.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace test
{

/// A socket that listens on loopback, at a port that the system chose.
class Listener
{
public:
    Listener()
    {
        sockaddr_in address = loopback();
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        socklen_t size = sizeof address;
        if (bind(m_descriptor, generic, size) != 0 || listen(m_descriptor, 8) != 0 ||
            getsockname(m_descriptor, generic, &size) != 0)
            ADD_FAILURE() << "no port to listen on";
        m_port = ntohs(address.sin_port);
    }

    ~Listener() { close(m_descriptor); }

    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    int descriptor() const { return m_descriptor; }
    int port() const { return m_port; }

private:
    const int m_descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int m_port = 0;
};

/// Waits a little, so that whoever asks again and again can be ended. \return true when \a descriptor has something
inline bool isReadable(int descriptor)
{
    const int lookMs = 10;
    pollfd look = {descriptor, POLLIN, 0};
    return poll(&look, 1, lookMs) > 0;
}

} // namespace test

#endif
