// SPDX-License-Identifier: MIT
#include "panel/peers/libmodbus_server.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace test
{

namespace
{

const int mostElements = 65536;

bool isReadable(int socket)
{
    const int lookMs = 20;
    pollfd look = {socket, POLLIN, 0};
    return poll(&look, 1, lookMs) > 0;
}

} // namespace

LibmodbusServer::LibmodbusServer()
    : m_context(modbus_new_tcp("127.0.0.1", 0), modbus_free),
      m_memory(modbus_mapping_new(mostElements, 0, mostElements, 0), modbus_mapping_free),
      m_listener(modbus_tcp_listen(m_context.get(), 1))
{
    if (m_listener < 0 || !m_memory)
        ADD_FAILURE() << "libmodbus does not listen: " << modbus_strerror(errno);
    else
        m_thread = std::thread([this] { serve(); });
}

LibmodbusServer::~LibmodbusServer()
{
    m_stopping = true;
    if (m_thread.joinable())
        m_thread.join();
    close(m_listener);
}

QString LibmodbusServer::controller() const
{
    return QStringLiteral("127.0.0.1:%1").arg(port());
}

int LibmodbusServer::port() const
{
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

int LibmodbusServer::coil(int address) const
{
    return m_memory->tab_bits[address];
}

int LibmodbusServer::word(int address) const
{
    return m_memory->tab_registers[address];
}

void LibmodbusServer::setCoil(int address, int value)
{
    m_memory->tab_bits[address] = static_cast<uint8_t>(value);
}

void LibmodbusServer::setWord(int address, int value)
{
    m_memory->tab_registers[address] = static_cast<uint16_t>(value);
}

void LibmodbusServer::serve()
{
    while (!m_stopping) {
        if (!isReadable(m_listener))
            continue;
        if (modbus_tcp_accept(m_context.get(), &m_listener) < 0)
            continue;
        while (!m_stopping && answerNext(m_context.get())) {
        }
        modbus_close(m_context.get());
    }
}

/// \return false when the connection is over
bool LibmodbusServer::answerNext(modbus_t* context)
{
    if (!isReadable(modbus_get_socket(context)))
        return true;
    uint8_t request[MODBUS_TCP_MAX_ADU_LENGTH];
    const int size = modbus_receive(context, request);
    return size >= 0 && (size == 0 || modbus_reply(context, request, size, m_memory.get()) >= 0);
}

} // namespace test
