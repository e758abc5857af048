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
                           delay_ != delay_.zero();
    return !isDelayed && pendingBytes_ == 0;
}

void ReplyQueue::add(Bytes reply, const FaultDraw& draw, Time now)
{
    const Time ready = now + delay_;
    const Time later = ready + std::chrono::milliseconds(draw.lateMs);
    moveDue(now);
    pendingBytes_ += reply.size();
    if (draw.fault == Fault::Late)
        late_.emplace(later, std::move(reply));
    else if (draw.fault == Fault::Glued && held_.empty())
        hold(reply, later);
    else if (draw.fault == Fault::Split)
        enqueueSplit(reply, ready);
    else
        enqueue(reply, draw.fault == Fault::Delay ? later : ready);
}

Bytes ReplyQueue::takeDue(Time now)
{
    moveDue(now);
    if (pieces_.empty() || pieces_.front().due > now)
        return {};
    Bytes bytes = std::move(pieces_.front().bytes);
    pieces_.pop_front();
    pendingBytes_ -= bytes.size();
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

void ReplyQueue::forgetLate()
{
    for (const auto& reply : late_)
        pendingBytes_ -= reply.second.size();
    late_.clear();
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

void ReplyQueue::enqueueSplit(const Bytes& reply, Time from)
{
    enqueue({}, from); // what is held is not to be split
    Time due = pieces_.empty() ? from : std::max(from, pieces_.back().due);
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
