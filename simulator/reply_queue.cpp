// SPDX-License-Identifier: MIT
#include "simulator/reply_queue.h"

#include <algorithm>

namespace simulator
{

namespace
{

constexpr std::chrono::microseconds splitPause{200};

} // namespace

bool ReplyQueue::passes(const FaultDraw& draw) const
{
    const bool isDelayed = draw.fault == Fault::Late || draw.fault == Fault::Glued ||
                           draw.fault == Fault::Split || draw.fault == Fault::Delay ||
                           m_delay != m_delay.zero();
    return !isDelayed && m_pendingBytes == 0;
}

void ReplyQueue::add(Bytes reply, const FaultDraw& draw, Time now)
{
    const Time ready = now + m_delay;
    const Time later = ready + std::chrono::milliseconds(draw.lateMs);
    moveDue(now);
    m_pendingBytes += reply.size();
    if (draw.fault == Fault::Late)
        m_late.emplace(later, std::move(reply));
    else if (draw.fault == Fault::Glued && m_held.empty())
        hold(reply, later);
    else if (draw.fault == Fault::Split)
        enqueueSplit(reply, ready);
    else
        enqueue(reply, draw.fault == Fault::Delay ? later : ready);
}

Bytes ReplyQueue::takeDue(Time now)
{
    moveDue(now);
    if (m_pieces.empty() || m_pieces.front().due > now)
        return {};
    Bytes bytes = std::move(m_pieces.front().bytes);
    m_pieces.pop_front();
    m_pendingBytes -= bytes.size();
    return bytes;
}

std::optional<ReplyQueue::Time> ReplyQueue::nextDue() const
{
    std::optional<Time> first;
    const auto consider = [&first](Time due) { first = first ? std::min(*first, due) : due; };
    if (!m_pieces.empty())
        consider(m_pieces.front().due);
    if (!m_late.empty())
        consider(m_late.begin()->first);
    if (!m_held.empty())
        consider(m_heldUntil);
    return first;
}

void ReplyQueue::forgetLate()
{
    for (const auto& reply : m_late)
        m_pendingBytes -= reply.second.size();
    m_late.clear();
}

// A reply that waits to be glued goes out with whatever comes next, in one piece.
void ReplyQueue::enqueue(const Bytes& bytes, Time due)
{
    Bytes piece = std::move(m_held);
    m_held.clear();
    piece.insert(piece.end(), bytes.begin(), bytes.end());
    if (!piece.empty())
        m_pieces.push_back({due, std::move(piece)});
}

void ReplyQueue::enqueueSplit(const Bytes& reply, Time from)
{
    enqueue({}, from); // what is held is not to be split
    Time due = m_pieces.empty() ? from : std::max(from, m_pieces.back().due);
    for (const std::uint8_t byte : reply) {
        m_pieces.push_back({due, {byte}});
        due += splitPause;
    }
}

void ReplyQueue::hold(const Bytes& reply, Time until)
{
    m_held = reply;
    m_heldUntil = until;
}

void ReplyQueue::moveDue(Time now)
{
    while (!m_late.empty() && m_late.begin()->first <= now) {
        enqueue(m_late.begin()->second, now);
        m_late.erase(m_late.begin());
    }
    if (!m_held.empty() && m_heldUntil <= now)
        enqueue({}, now);
}

} // namespace simulator
