// SPDX-License-Identifier: MIT
#include "simulator/listen_address.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace simulator
{

namespace
{

using Addresses = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

std::string failure(const std::string& what)
{
    return what + ": " + std::strerror(errno);
}

Addresses resolved(const std::string& address, int port)
{
    addrinfo wanted{};
    wanted.ai_family = AF_UNSPEC;
    wanted.ai_socktype = SOCK_STREAM;
    wanted.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV | AI_PASSIVE;
    addrinfo* found = nullptr;
    if (getaddrinfo(address.c_str(), std::to_string(port).c_str(), &wanted, &found) != 0)
        throw std::invalid_argument(
            "'" + address +
            "' is no address to listen on: give one in digits, for example 127.0.0.1, "
            "0.0.0.0 for all of IPv4, or ::1");
    return {found, &freeaddrinfo};
}

std::string bindFailure(const std::string& address, int port)
{
    const std::string name = "port " + std::to_string(port) + " of " + address;
    if (errno == EADDRINUSE)
        return name + " is already in use: stop the program that listens there, or choose another port (0 "
                      "picks a free one)";
    if (errno == EACCES)
        return name + " is not open to you: choose a port above 1023 (0 picks a free one)";
    if (errno == EADDRNOTAVAIL)
        return address + " is no address of this machine: choose one of its own";
    return failure("cannot listen on " + name);
}

} // namespace

std::unique_ptr<FileDescriptor> listenOn(const std::string& address, int port)
{
    const Addresses where = resolved(address, port);
    auto listener = std::make_unique<FileDescriptor>(
        socket(where->ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (listener->number() < 0)
        throw std::runtime_error(failure("cannot create a socket"));
    const int on = 1; // a port whose last connections are still dying may be taken again
    setsockopt(listener->number(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (bind(listener->number(), where->ai_addr, where->ai_addrlen) != 0 ||
        listen(listener->number(), SOMAXCONN) != 0)
        throw std::runtime_error(bindFailure(address, port));
    return listener;
}

int portOf(const FileDescriptor& listener)
{
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    if (getsockname(listener.number(), reinterpret_cast<sockaddr*>(&address), &size) != 0)
        throw std::runtime_error(failure("cannot find out the port"));
    return address.ss_family == AF_INET6 ? ntohs(reinterpret_cast<const sockaddr_in6&>(address).sin6_port)
                                         : ntohs(reinterpret_cast<const sockaddr_in&>(address).sin_port);
}

std::string endpointText(const std::string& address, int port)
{
    const bool hasColons = address.find(':') != std::string::npos;
    return (hasColons ? "[" + address + "]" : address) + ":" + std::to_string(port);
}

} // namespace simulator
