// SPDX-License-Identifier: MIT
#include "bench/peers.h"

#include "frames/frame_bytes.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

namespace bench
{

namespace
{

const int longestReply = 260;

int connectedSocket(int port)
{
    const int descriptor = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        throw std::runtime_error("the bare socket cannot connect");
    const int on = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return descriptor;
}

} // namespace

BareSocket::BareSocket(int port, const std::vector<QByteArray>& frames)
    : m_frames(frames), m_socket(connectedSocket(port))
{
}

BareSocket::~BareSocket()
{
    ::close(m_socket);
}

void BareSocket::refresh()
{
    for (const QByteArray& frame : m_frames) {
        if (send(m_socket, frame.constData(), static_cast<std::size_t>(frame.size()), 0) != frame.size())
            throw std::runtime_error("the bare socket cannot send");
        receiveReply();
    }
}

void BareSocket::receiveReply()
{
    unsigned char reply[longestReply];
    std::size_t have = 0;
    std::size_t need = MBAP_LENGTH_END;
    while (have < need) {
        const ssize_t came = recv(m_socket, reply + have, sizeof reply - have, 0);
        if (came <= 0)
            throw std::runtime_error("the bare socket gets no reply");
        have += static_cast<std::size_t>(came);
        if (have >= MBAP_LENGTH_END)
            need = MBAP_LENGTH_END + Get16(reply + MBAP_LENGTH_OFFSET);
    }
}

} // namespace bench
