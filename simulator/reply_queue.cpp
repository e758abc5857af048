#include "simulator/reply_queue.h"

#include <algorithm>
#include <numeric>

namespace simulator
{

namespace
{

constexpr std::chrono::microseconds splitPause{200};

} // namespace

void ReplyQueue::add(Bytes reply, const FaultDraw& draw, Time now)
{
    const Time later = now + std::chrono::milliseconds(draw.lateMs);
    moveDue(now);
    if (draw.fault == Fault::Late)
        late_.emplace(later, std::move(reply));
    else if (draw.fault == Fault::Glued && held_.empty())
        hold(reply, later);
    else if (draw.fault == Fault::Split)
        enqueueSplit(reply, now);
    else
        enqueue(reply, now);
}

Bytes ReplyQueue::takeDue(Time now)
{
    moveDue(now);
    if (pieces_.empty() || pieces_.front().due > now)
        return {};
    Bytes bytes = std::move(pieces_.front().bytes);
    pieces_.pop_front();
    return bytes;
}

std::optional<ReplyQueue::Time> ReplyQueue::nextDue() const
{
    std::optional<Time> first;
    const auto consider = [&first](Time due) { first = first ? std::min(*first, due) : due; };
    if (!pieces_.empty())
        consider(pieces_.front().due);
    if (!late_.empty())
        consider(late_.begin()->first);
    if (!held_.empty())
        consider(heldUntil_);
    return first;
}

std::size_t ReplyQueue::pendingBytes() const
{
    std::size_t bytes = held_.size();
    for (const Piece& piece : pieces_)
        bytes += piece.bytes.size();
    for (const auto& reply : late_)
        bytes += reply.second.size();
    return bytes;
}

// A reply that waits to be glued goes out with whatever comes next, in one piece.
void ReplyQueue::enqueue(const Bytes& bytes, Time due)
{
    Bytes piece = std::move(held_);
    held_.clear();
    piece.insert(piece.end(), bytes.begin(), bytes.end());
    if (!piece.empty())
        pieces_.push_back({due, std::move(piece)});
}

void ReplyQueue::enqueueSplit(const Bytes& reply, Time now)
{
    enqueue({}, now); // what is held is not to be split
    Time due = pieces_.empty() ? now : std::max(now, pieces_.back().due);
    for (const std::uint8_t byte : reply) {
        pieces_.push_back({due, {byte}});
        due += splitPause;
    }
}

void ReplyQueue::hold(const Bytes& reply, Time until)
{
    held_ = reply;
    heldUntil_ = until;
}

void ReplyQueue::moveDue(Time now)
{
    while (!late_.empty() && late_.begin()->first <= now) {
        enqueue(late_.begin()->second, now);
        late_.erase(late_.begin());
    }
    if (!held_.empty() && heldUntil_ <= now)
        enqueue({}, now);
}

} // namespace simulator
