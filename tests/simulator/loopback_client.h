// SPDX-License-Identifier: MIT
/// \file
/// \brief A TCP client without any Modbus of its own, and frames written as hex.
#ifndef TESTS_SIMULATOR_LOOPBACK_CLIENT_H
#define TESTS_SIMULATOR_LOOPBACK_CLIENT_H

#include "simulator/file_descriptor.h"
#include "simulator/frame_bytes.h"
#include "support/waiting.h"

#include <string>

namespace test
{

using simulator::Bytes;

/// "00 01 FF" as bytes, and back.
Bytes fromHex(const std::string& text);
std::string toHex(const Bytes& bytes);

/// Connects to 127.0.0.1. Everything that waits gives up after a time that only a failure takes.
class LoopbackClient
{
public:
    explicit LoopbackClient(int port);

    void send(const std::string& hex);
    void send(const Bytes& bytes);
    void stopSending();

    /// The next `count` bytes as hex; fewer if they do not come.
    std::string receive(std::size_t count);

    /// The next frame by its length field, as hex.
    std::string receiveFrame();

    /// Sends a frame and gives the next one that comes.
    std::string exchange(const std::string& hex);

    /// Everything that still comes until the other side closes, as hex; "still open" if it does not.
    std::string receiveUntilClosed();
    Bytes receiveBytesUntilClosed();

    /// What has arrived already, without waiting.
    std::size_t bytesWaiting() const;

private:
    bool append(Bytes& bytes, std::size_t most);

    simulator::FileDescriptor m_socket;
};

} // namespace test

#endif
