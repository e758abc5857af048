// SPDX-License-Identifier: MIT
// The socket that systemd listens to, for tests.
#ifndef TESTS_GATEWAY_SYSTEM_MANAGER_SOCKET_H
#define TESTS_GATEWAY_SYSTEM_MANAGER_SOCKET_H

#include <gtest/gtest.h>

#include <QByteArray>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace test
{

/// What systemd would hear.
class ManagerSocket
{
public:
    explicit ManagerSocket(const QByteArray& name)
        : m_descriptor(socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0))
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, name.constData(), static_cast<std::size_t>(name.size()));
        if (name.startsWith('@'))
            address.sun_path[0] = '\0';
        const auto length =
            static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + std::size_t(name.size()));
        EXPECT_EQ(0, bind(m_descriptor, reinterpret_cast<const sockaddr*>(&address), length));
    }
    ~ManagerSocket() { close(m_descriptor); }

    std::vector<std::string> heard() const
    {
        std::vector<std::string> all;
        char message[500];
        for (ssize_t size = 0; (size = recv(m_descriptor, message, sizeof message, 0)) >= 0;)
            all.emplace_back(message, static_cast<std::size_t>(size));
        return all;
    }

private:
    const int m_descriptor;
};

} // namespace test

#endif
