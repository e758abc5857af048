// SPDX-License-Identifier: MIT
#include "simulator/loopback_client.h"

#include "support/loopback.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cstdio>
#include <sstream>
#include <stdexcept>

namespace test
{

Bytes fromHex(const std::string& text)
{
    std::istringstream stream(text);
    stream >> std::hex;
    Bytes bytes;
    for (unsigned byte; stream >> byte;)
        bytes.push_back(static_cast<std::uint8_t>(byte));
    return bytes;
}

std::string toHex(const Bytes& bytes)
{
    std::string text;
    for (const std::uint8_t byte : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned>(byte));
        text += text.empty() ? "" : " ";
        text += digits;
    }
    return text;
}

LoopbackClient::LoopbackClient(int port) : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    const sockaddr_in address = test::loopback(port);
    if (connect(m_socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        throw std::runtime_error("cannot connect to the simulated controller");
}

void LoopbackClient::send(const std::string& hex)
{
    send(fromHex(hex));
}

void LoopbackClient::send(const Bytes& bytes)
{
    if (::send(m_socket.number(), bytes.data(), bytes.size(), MSG_NOSIGNAL) !=
        static_cast<ssize_t>(bytes.size()))
        throw std::runtime_error("cannot send");
}

void LoopbackClient::stopSending()
{
    shutdown(m_socket.number(), SHUT_WR);
}

// False at the end of the stream, or when nothing comes.
bool LoopbackClient::append(Bytes& bytes, std::size_t most)
{
    pollfd entry{m_socket.number(), POLLIN, 0};
    if (poll(&entry, 1, patienceMs) <= 0)
        return false;
    Bytes part(most);
    const ssize_t size = recv(m_socket.number(), part.data(), part.size(), 0);
    if (size <= 0)
        return false;
    bytes.insert(bytes.end(), part.begin(), part.begin() + size);
    return true;
}

std::string LoopbackClient::receive(std::size_t count)
{
    Bytes bytes;
    while (bytes.size() < count && append(bytes, count - bytes.size())) {
    }
    return toHex(bytes);
}

std::string LoopbackClient::receiveFrame()
{
    const std::string header = receive(simulator::lengthEnd);
    const Bytes bytes = fromHex(header);
    if (bytes.size() < simulator::lengthEnd)
        return header;
    return header + " " + receive(simulator::get16(bytes, simulator::lengthOffset));
}

std::string LoopbackClient::exchange(const std::string& hex)
{
    send(hex);
    return receiveFrame();
}

Bytes LoopbackClient::receiveBytesUntilClosed()
{
    Bytes bytes;
    while (append(bytes, 65536)) {
    }
    return bytes;
}

std::string LoopbackClient::receiveUntilClosed()
{
    const Bytes bytes = receiveBytesUntilClosed();
    pollfd entry{m_socket.number(), POLLIN, 0};
    const bool isClosed = poll(&entry, 1, 0) > 0;
    return isClosed ? toHex(bytes) : "still open";
}

std::size_t LoopbackClient::bytesWaiting() const
{
    int count = 0;
    ioctl(m_socket.number(), FIONREAD, &count);
    return static_cast<std::size_t>(count);
}

} // namespace test
