// SPDX-License-Identifier: MIT
/// \file
/// \brief What a connection still has to send, and when.
#ifndef SIMULATOR_REPLY_QUEUE_H
#define SIMULATOR_REPLY_QUEUE_H

#include "simulator/faults.h"
#include "simulator/frame_bytes.h"

#include <chrono>
#include <deque>
#include <map>
#include <optional>

namespace simulator
{

/// Orders and delays the replies of one connection as their faults want it. Knows no socket and no clock:
/// times are given by the caller and must not go back. For one thread.
class ReplyQueue
{
public:
    using Clock = std::chrono::steady_clock;
    using Time = Clock::time_point;

    /// `delay`: how long every reply takes, besides what its fault adds.
    explicit ReplyQueue(std::chrono::milliseconds delay = {}) : m_delay(delay) {}

    /// Whether such a reply can be sent at once: nothing delays it, and nothing waits.
    bool passes(const FaultDraw& draw) const;

    /// Takes in a reply, its bytes already spoiled. NoReply and Close are not queued: the caller's business.
    void add(Bytes reply, const FaultDraw& draw, Time now);

    /// The bytes of the next send, empty if nothing is due yet.
    Bytes takeDue(Time now);

    /// When takeDue() has something to give, or nothing if no reply is waiting.
    std::optional<Time> nextDue() const;

    std::size_t pendingBytes() const { return m_pendingBytes; }

    /// Drops the replies that the next ones may overtake.
    void forgetLate();

private:
    struct Piece {
        Time due;
        Bytes bytes;
    };

    void enqueue(const Bytes& bytes, Time due);
    void enqueueSplit(const Bytes& reply, Time from);
    void hold(const Bytes& reply, Time until);
    void moveDue(Time now);

    const std::chrono::milliseconds m_delay;
    std::size_t m_pendingBytes = 0;
    std::deque<Piece> m_pieces;        // sent in this order, each when it is due
    std::multimap<Time, Bytes> m_late; // not in the order yet
    Bytes m_held;                      // goes out in front of the next piece
    Time m_heldUntil;
};

} // namespace simulator

#endif
