// SPDX-License-Identifier: MIT
#include "gateway/sparkplug/recording_proxy.h"

#include "gateway/plant_run.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace test
{

namespace
{

const int lookMs = 10;

int connected(int port)
{
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = loopback(port);
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return descriptor;
    close(descriptor);
    return -1;
}

/// \return bytes of the first packet of MQTT in \a stream; 0 when it is not whole
int sizeOfPacket(const QByteArray& stream)
{
    int size = 0;
    for (int at = 1; at < stream.size() && at < 5; ++at) {
        size |= (stream.at(at) & 0x7F) << 7 * (at - 1);
        if ((stream.at(at) & 0x80) == 0)
            return stream.size() >= at + 1 + size ? at + 1 + size : 0;
    }
    return 0;
}

/// \return false at the end of a connection
bool pass(int from, int to, QByteArray* copy)
{
    char bytes[65536];
    const ssize_t size = recv(from, bytes, sizeof bytes, 0);
    if (size <= 0)
        return false;
    *copy = QByteArray(bytes, static_cast<int>(size));
    return send(to, bytes, static_cast<std::size_t>(size), MSG_NOSIGNAL) == size;
}

} // namespace

RecordingProxy::RecordingProxy(int brokerPort) : m_brokerPort(brokerPort)
{
    m_thread = std::thread([this] { run(); });
}

RecordingProxy::~RecordingProxy()
{
    m_ends = true;
    m_thread.join();
}

std::vector<QByteArray> RecordingProxy::packets() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_packets;
}

void RecordingProxy::run()
{
    while (!m_ends) {
        if (!isReadable(m_listener.descriptor()))
            continue;
        const int gateway = accept(m_listener.descriptor(), nullptr, nullptr);
        const int broker = m_hides ? -1 : connected(m_brokerPort);
        if (broker >= 0)
            serve(gateway, broker);
        close(gateway);
        close(broker);
    }
}

void RecordingProxy::serve(int gateway, int broker)
{
    m_cuts = false;
    m_stream.clear();
    for (bool goesOn = true; goesOn && !m_ends && !m_cuts && !m_hides;) {
        pollfd waits[] = {{m_stalls ? -1 : gateway, POLLIN, 0},
                          {m_holds || m_stalls ? -1 : broker, POLLIN, 0}};
        poll(waits, 2, lookMs);
        QByteArray received;
        if ((waits[1].revents & (POLLIN | POLLHUP)) != 0)
            goesOn = pass(broker, gateway, &received);
        if (!goesOn || (waits[0].revents & (POLLIN | POLLHUP)) == 0)
            continue;
        QByteArray sent;
        goesOn = pass(gateway, broker, &sent);
        keep(sent);
    }
}

void RecordingProxy::keep(const QByteArray& bytes)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_stream += bytes;
    for (int size = sizeOfPacket(m_stream); size > 0; size = sizeOfPacket(m_stream)) {
        m_packets.push_back(m_stream.left(size));
        m_stream.remove(0, size);
    }
}

} // namespace test
