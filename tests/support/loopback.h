// SPDX-License-Identifier: MIT
// Where the controllers, brokers and servers of the tests listen.
#ifndef TESTS_SUPPORT_LOOPBACK_H
#define TESTS_SUPPORT_LOOPBACK_H

#include <cstdint>

#include <arpa/inet.h>
#include <netinet/in.h>

namespace test
{

/// \param port 0: one that the system chooses
inline sockaddr_in loopback(int port = 0)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

} // namespace test

#endif
