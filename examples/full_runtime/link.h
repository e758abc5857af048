// SPDX-License-Identifier: MIT
// The connection, and the part of Modbus TCP that is the runtime's: the driver numbers no frame and judges a reply by
// its length alone. Belongs to the communication thread.
#ifndef LINK_H
#define LINK_H

#include <QByteArray>

#include <chrono>
#include <deque>
#include <string>

struct sockaddr;

using Clock = std::chrono::steady_clock;

struct Exchange {
    QByteArray reply;    // the answer to the frame; empty when there is none
    bool sent = false;   // the frame went out
    bool silent = false; // nothing came, and the connection stands
};

class Link
{
public:
    Link(std::string host, std::string port) : m_host(std::move(host)), m_port(std::move(port)) {}
    ~Link() { drop(); }
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;

    // Takes the time-out at most. Without a connection nothing is sent, and it takes as long: so a request fails after
    // its tries, rather than being done minutes later.
    Exchange exchange(QByteArray frame, bool replyExpected);

private:
    bool connected();
    void connect();
    bool connectTo(const sockaddr* address, unsigned size, int family);
    void drop();
    QByteArray receive(Clock::time_point deadline);
    bool append(QByteArray* bytes, int size, Clock::time_point deadline);
    QByteArray answer(const QByteArray& sent, Clock::time_point deadline);
    bool holdsAnOwedOne(const QByteArray& reply) const;

    const std::string m_host, m_port;
    int m_socket = -1;
    int m_number = 0;
    int m_pauseMs = 0;
    Clock::time_point m_nextAttempt = Clock::now();
    std::deque<QByteArray> m_owed; // number and protocol of frames that were not answered on this connection
};

#endif
