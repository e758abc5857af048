#include "simulator/faults.h"

#include <stdexcept>

namespace simulator
{

namespace
{

constexpr std::size_t byteCountOffset = 8;
constexpr std::size_t extraBytes = 2; // one register more than asked for, or 16 coils
constexpr std::uint8_t readCoils = 1;
constexpr std::uint8_t readRegisters = 3;

Bytes doubled(const Bytes& reply)
{
    Bytes both = reply;
    both.insert(both.end(), reply.begin(), reply.end());
    return both;
}

Bytes cut(Bytes reply, std::uint32_t detail)
{
    if (reply.size() > 1)
        reply.resize(1 + detail % (reply.size() - 1));
    return reply;
}

bool isReadReply(const Bytes& reply)
{
    return reply[functionOffset] == readCoils || reply[functionOffset] == readRegisters;
}

Bytes longer(Bytes reply, std::uint32_t detail, bool hasByteCount)
{
    if (hasByteCount)
        reply[byteCountOffset] = static_cast<std::uint8_t>(reply[byteCountOffset] + extraBytes);
    put16(reply, lengthOffset, get16(reply, lengthOffset) + extraBytes);
    reply.resize(reply.size() + extraBytes);
    put16(reply, reply.size() - extraBytes, detail & 0xFFFF);
    return reply;
}

// Unit and byte count are at the same places in both kinds of frames.
Bytes spoilBytes(Bytes reply, const FaultDraw& draw, bool hasByteCount)
{
    switch (draw.fault) {
    case Fault::Doubled:
        return doubled(reply);
    case Fault::Cut:
        return cut(std::move(reply), draw.detail);
    case Fault::Longer:
        return longer(std::move(reply), draw.detail, hasByteCount);
    case Fault::WrongUnit:
        ++reply[unitOffset];
        return reply;
    default:
        return reply;
    }
}

Fault choose(const FaultSettings& settings, double position)
{
    for (const FaultKind& kind : faultList()) {
        position -= settings.*kind.probability;
        if (position < 0)
            return kind.fault;
    }
    return Fault::None;
}

double fractionOf(std::uint32_t number)
{
    return number / 4294967296.0; // below 1, so that a probability of 1 is a certainty
}

} // namespace

const std::vector<FaultKind>& faultList()
{
    using S = FaultSettings;
    static const std::vector<FaultKind> list = {
        {Fault::NoReply, "no-reply", &S::noReply, "nothing is sent"},
        {Fault::Late, "late", &S::late, "the reply comes --late-ms later"},
        {Fault::Doubled, "doubled", &S::doubled, "the reply comes twice"},
        {Fault::Split, "split", &S::split, "the reply comes byte by byte"},
        {Fault::Glued, "glued", &S::glued, "the reply comes in one piece with the next one"},
        {Fault::Cut, "cut", &S::cut, "only the first bytes of the reply come"},
        {Fault::Longer, "longer", &S::longer, "the reply holds two bytes more than asked for"},
        {Fault::WrongUnit, "wrong-unit", &S::wrongUnit, "the reply carries another unit identifier"},
        {Fault::Exception, "exception", &S::exception,
         "exception 4 (remote: no reply); the request is not executed"},
        {Fault::Close, "close", &S::close, "the connection is closed instead of a reply"},
    };
    return list;
}

void checkFaults(const FaultSettings& settings)
{
    double sum = 0;
    for (const FaultKind& kind : faultList()) {
        const double probability = settings.*kind.probability;
        if (!(probability >= 0 && probability <= 1)) // written so that "not a number" fails it
            throw std::invalid_argument("the probability of the fault '" + std::string(kind.name) +
                                        "' must be from 0 to 1");
        sum += probability;
    }
    if (sum > 1 + 1e-9) // 0.05 + 0.55 + 0.3 + 0.1 is a little more than 1
        throw std::invalid_argument("the probabilities of the faults add up to " + std::to_string(sum) +
                                    "; lower them so that they add up to 1 at most");
    if (settings.lateMs < 0)
        throw std::invalid_argument("the delay of late replies must not be negative");
}

Bytes spoil(Bytes reply, const FaultDraw& draw)
{
    const bool hasByteCount = isReadReply(reply);
    return spoilBytes(std::move(reply), draw, hasByteCount);
}

Bytes spoilRemote(Bytes reply, const FaultDraw& draw, bool toRead)
{
    return spoilBytes(std::move(reply), draw, toRead);
}

FaultPlan::FaultPlan(const FaultSettings& settings) : settings_(settings)
{
    checkFaults(settings);
}

void FaultPlan::restart(const FaultSettings& settings)
{
    checkFaults(settings);
    const std::lock_guard<std::mutex> lock(mutex_);
    settings_ = settings;
    ++plan_;
    sequences_ = 0;
}

FaultDraw FaultPlan::draw(Position& position)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (position.plan_ != plan_) {
        position.plan_ = plan_;
        std::seed_seq seed{static_cast<unsigned long>(settings_.seed), ++sequences_};
        position.random_.seed(seed);
    }
    // Two numbers for every reply, whatever its fault: a changed probability moves no later draw.
    const auto place = static_cast<std::uint32_t>(position.random_());
    const auto detail = static_cast<std::uint32_t>(position.random_());
    return {choose(settings_, fractionOf(place)), detail, settings_.lateMs};
}

} // namespace simulator
