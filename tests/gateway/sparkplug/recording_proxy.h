// SPDX-License-Identifier: MIT
/// \file
/// \brief Stands between the gateway and its broker, and keeps what the gateway sends.
#ifndef TESTS_GATEWAY_SPARKPLUG_RECORDING_PROXY_H
#define TESTS_GATEWAY_SPARKPLUG_RECORDING_PROXY_H

#include "support/listener.h"

#include <QByteArray>

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

namespace test
{

/// One connection at a time.
class RecordingProxy
{
public:
    explicit RecordingProxy(int brokerPort);
    ~RecordingProxy();
    RecordingProxy(const RecordingProxy&) = delete;
    RecordingProxy& operator=(const RecordingProxy&) = delete;

    int port() const { return m_listener.port(); }

    /// \return the packets of MQTT that the gateway has sent so far, of all its connections
    std::vector<QByteArray> packets() const;

    /// While it holds, what the broker sends is kept back from the gateway.
    void holdBack(bool holds) { m_holds = holds; }

    /// While it holds, nothing goes through in either direction, and neither side can know.
    void stall(bool stalls) { m_stalls = stalls; }

    /// Ends the connection that there is.
    void cut() { m_cuts = true; }

    /// While it holds, there is no broker for the gateway.
    void hide(bool hides) { m_hides = hides; }

private:
    void run();
    void serve(int gateway, int broker);
    void keep(const QByteArray& bytes);

    const int m_brokerPort;
    const Listener m_listener;
    std::atomic<bool> m_ends{false};
    std::atomic<bool> m_holds{false};
    std::atomic<bool> m_stalls{false};
    std::atomic<bool> m_cuts{false};
    std::atomic<bool> m_hides{false};
    mutable std::mutex m_mutex;
    QByteArray m_stream; // of the connection, without whole packets
    std::vector<QByteArray> m_packets;
    std::thread m_thread;
};

} // namespace test

#endif
