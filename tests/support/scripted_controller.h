// SPDX-License-Identifier: MIT
/// \file
/// \brief A controller of which every byte is decided by the test.
#ifndef TESTS_PANEL_SCRIPTED_CONTROLLER_H
#define TESTS_PANEL_SCRIPTED_CONTROLLER_H

#include "support/listener.h"

#include <gtest/gtest.h>

#include <QByteArray>

#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <vector>

/// Plain sockets, so that any thread may play it.
class ScriptedController
{
public:
    ScriptedController() { limitWaiting(m_listener.descriptor()); }
    ~ScriptedController() { close(); }

    int port() const { return m_listener.port(); }

    /// Waits for a connection and for a request on it.
    void acceptAndReceive(std::size_t size = 12)
    {
        m_connection = accept(m_listener.descriptor(), nullptr, nullptr);
        ASSERT_GE(m_connection, 0) << "nobody connects";
        limitWaiting(m_connection);
        receive(size);
    }

    void receive(std::size_t size = 12)
    {
        std::vector<char> bytes(size);
        EXPECT_EQ(recv(m_connection, bytes.data(), size, MSG_WAITALL), static_cast<ssize_t>(size));
    }

    /// \return true when the other side closes the connection
    bool isClosedByTheOtherSide()
    {
        char byte = 0;
        return recv(m_connection, &byte, 1, 0) == 0;
    }

    void send(const char* hex)
    {
        const QByteArray bytes = QByteArray::fromHex(hex);
        EXPECT_EQ(
            ::send(m_connection, bytes.constData(), static_cast<std::size_t>(bytes.size()), MSG_NOSIGNAL),
            bytes.size());
    }

    void close()
    {
        if (m_connection >= 0)
            ::close(m_connection);
        m_connection = -1;
    }

    /// Ends the connection as a controller does that is switched off and on.
    void reset()
    {
        const linger atOnce = {1, 0};
        setsockopt(m_connection, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
        close();
    }

private:
    /// Only a test that has failed waits so long.
    static void limitWaiting(int socket)
    {
        const timeval patience = {5, 0};
        setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    }

    const test::Listener m_listener;
    int m_connection = -1;
};

#endif
