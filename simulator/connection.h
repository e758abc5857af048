// SPDX-License-Identifier: MIT
/// \file
/// \brief One accepted TCP connection: bytes in, requests out; replies in, bytes out.
#ifndef SIMULATOR_CONNECTION_H
#define SIMULATOR_CONNECTION_H

#include "simulator/faults.h"
#include "simulator/file_descriptor.h"
#include "simulator/remote_stream.h"
#include "simulator/reply_queue.h"
#include "simulator/request_stream.h"

#include <optional>

namespace simulator
{

/// Never blocks. For one thread, which waits for the wanted() events of its socket or for wakeAt().
class Connection
{
public:
    /// Takes over `socket`, which must be connected and non-blocking. `number` is for the trace. `isRemote`:
    /// its requests are remote frames. `delay`: how long every reply takes.
    Connection(FileDescriptor socket, unsigned long number, bool isRemote, std::chrono::milliseconds delay);

    int socket() const { return m_socket.number(); }
    unsigned long number() const { return m_number; }
    FaultPlan::Position& faults() { return m_faults; }

    /// The epoll events to wait for. Nothing is received while many replies wait to be sent.
    std::uint32_t wanted() const;

    /// A note of whoever waits: the events that are waited for already.
    std::uint32_t watched() const { return m_watched; }
    void setWatched(std::uint32_t events) { m_watched = events; }

    /// The epoll events that the socket had.
    void setHappened(std::uint32_t events) { m_happened = events; }

    /// When send() or nextRequest() has something to do though no event comes; nothing if not.
    std::optional<ReplyQueue::Time> wakeAt() const;

    /// Takes in what has arrived, if anything happened.
    void receive();
    std::optional<Bytes> nextRequest();

    /// Remote frames that came in with a wrong length or sum and were dropped.
    unsigned long badFrames() const { return m_remoteStream.badFrames(); }

    /// With Fault::CloseAfterReply it takes no more requests, and is over once this reply is sent.
    void reply(Bytes bytes, const FaultDraw& draw);

    /// Sends what is due, as far as the system takes it.
    void send();
    void close() { m_isClosed = true; }

    /// Whether it is to be dropped: closed by either side or broken, and nothing left to send to a peer
    /// that only stopped sending.
    bool isOver() const;

private:
    bool sendOnce();
    bool mayReceive() const;
    void takeIn(const std::uint8_t* bytes, std::size_t count);

    FileDescriptor m_socket;
    const unsigned long m_number;
    FaultPlan::Position m_faults;
    const bool m_isRemote;
    RequestStream m_stream;
    RemoteStream m_remoteStream; // instead of m_stream
    ReplyQueue m_queue;
    Bytes m_unsent; // due, but the system did not take it yet
    std::uint32_t m_happened = 0;
    std::uint32_t m_watched = 0;
    bool m_inputEnded = false;
    bool m_isLastReply = false; // no request is taken any more
    bool m_isClosed = false;
};

} // namespace simulator

#endif
