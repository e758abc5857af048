// SPDX-License-Identifier: MIT
/// \file
/// \brief Faults on demand: which fault hits a reply, and what it does to the reply's bytes.
#ifndef SIMULATOR_FAULTS_H
#define SIMULATOR_FAULTS_H

#include "simulator/frame_bytes.h"

#include <cstdint>
#include <mutex>
#include <random>
#include <string>
#include <vector>

namespace simulator
{

/// What can happen to a reply. The request is executed in every case but Exception and PaddedException. A fault that
/// cannot be made of a reply, such as a wrong echo of a read, leaves it alone and does not count.
enum class Fault {
    None,
    NoReply,   ///< nothing is sent
    Late,      ///< sent FaultSettings::lateMs later; requests that come meanwhile are answered before it
    Doubled,   ///< sent twice
    Split,     ///< sent byte by byte, with tiny pauses
    Glued,     ///< held back and sent in one piece with the next reply, or alone after lateMs
    Cut,       ///< only its first bytes are sent, at least one; the next reply follows as if all had been
    Longer,    ///< two bytes more than asked for; length field and byte count say so too
    WrongUnit, ///< carries the unit identifier that follows the right one
    Exception, ///< exception 4 (device failure) instead of the reply; a write is NOT executed. Remote frames
               ///< know no exceptions: with them nothing is sent, and nothing is executed either
    Close,     ///< the connection is closed instead, with whatever was still to be sent on it

    PaddedException, ///< Exception, with as many bytes behind it as make it as long as the reply that is waited for;
                     ///< the length field counts them
    WrongEcho,      ///< the reply to a write names another address, or another value or quantity
    WrongByteCount, ///< the byte count of the reply to a read is one more or less than the bytes that come; length
                    ///< field and size are right
    WrongLength, ///< the length field is one more or less than the bytes that come, and a byte count with it
    CloseAfterReply, ///< the reply is sent, then the connection is closed; late replies are lost with it
    Delay ///< sent some time within delayFromMs..delayToMs later, and so are those behind it, in order
};

constexpr std::size_t faultKinds = 17; ///< kinds of enum Fault, None included

/// Probability (0..1) of each fault; their sum must not exceed 1, the rest is replies without a fault.
struct FaultSettings {
    double noReply = 0;
    double late = 0;
    double doubled = 0;
    double split = 0;
    double glued = 0;
    double cut = 0;
    double longer = 0;
    double wrongUnit = 0;
    double exception = 0;
    double close = 0;
    double paddedException = 0;
    double wrongEcho = 0;
    double wrongByteCount = 0;
    double wrongLength = 0;
    double closeAfterReply = 0;
    double delay = 0;
    int delayFromMs = 10; ///< of Delay, all times between both as likely
    int delayToMs = 100;
    int lateMs = 500; ///< milliseconds; more than the time-out of the runtime under test
    unsigned seed = 1;
};

/// Name, setting and effect of one fault, for command lines and reports.
struct FaultKind {
    Fault fault;
    const char* name; ///< as in `--fault no-reply=0.1`
    double FaultSettings::*probability;
    const char* effect;
};

/// All faults but None, in the order of the enum.
const std::vector<FaultKind>& faultList();

/// Throws std::invalid_argument with a message that says what to change, if a probability is not within
/// 0..1, their sum exceeds 1, lateMs or a delay is negative, or the delays are out of order.
void checkFaults(const FaultSettings& settings);

/// What was drawn for one reply.
struct FaultDraw {
    Fault fault = Fault::None;
    std::uint32_t detail = 0; ///< a random number for the fault's own use
    int lateMs = 0;           ///< how much later the reply is sent, of Late, Glued and Delay
};

/// Whether a request whose reply is hit by the fault is executed, as it is without one.
bool isExecuted(Fault fault);

/// What a reply is the answer to.
enum class ReplyKind { ToRead, ToWrite, Exception };

/// The kind of a reply of Modbus TCP.
ReplyKind replyKindOf(const Bytes& reply);

/// Whether the fault can be made of such a reply, or needs no reply at all.
bool canHit(Fault fault, ReplyKind kind);

/// The reply as it goes out: Doubled, Cut, Longer, WrongUnit, WrongEcho, WrongByteCount and WrongLength change its
/// bytes, the other faults only how or whether it is sent. `reply` is one whole reply, header included, of Modbus TCP
/// or to a remote frame: unit, byte count and echo are at the same places in both.
Bytes spoil(Bytes reply, const FaultDraw& draw, ReplyKind kind);

/// `exception` with bytes behind it, `size` in all; as it is if it has so many.
Bytes padded(Bytes exception, std::size_t size, const FaultDraw& draw);

/// Draws a fault for each reply, reproducibly: the n-th connection that receives a request after the
/// plan was made or restarted gets the n-th random sequence of the seed, and each reply on it one draw.
/// So the same seed and the same requests on a connection give the same faults, whatever happens on other
/// connections at the same time. Every function may be called from any thread.
class FaultPlan
{
public:
    /// Where one connection stands in its random sequence.
    class Position
    {
        friend class FaultPlan;
        unsigned long m_plan = 0;
        std::mt19937 m_random;
    };

    explicit FaultPlan(const FaultSettings& settings); ///< throws as checkFaults()
    void restart(const FaultSettings& settings);       ///< throws as checkFaults(), then changes nothing
    FaultDraw draw(Position& position);

private:
    std::mutex m_mutex;
    FaultSettings m_settings;
    unsigned long m_plan = 1;      // counts restarts
    unsigned long m_sequences = 0; // handed out since the last restart
};

} // namespace simulator

#endif
