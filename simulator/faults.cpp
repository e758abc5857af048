// SPDX-License-Identifier: MIT
#include "simulator/faults.h"

#include "simulator/modbus_request.h"

#include <stdexcept>

namespace simulator
{

namespace
{

constexpr std::uint8_t writeCoil = 5;
constexpr std::size_t extraBytes = 2; // one register more than asked for, or 16 coils

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

void add(std::uint8_t& byte, int difference)
{
    byte = static_cast<std::uint8_t>(byte + difference);
}

void addToLength(Bytes& reply, int difference)
{
    put16(reply, lengthOffset, static_cast<std::size_t>(get16(reply, lengthOffset) + difference));
}

Bytes longer(Bytes reply, std::uint32_t detail, ReplyKind kind)
{
    if (kind == ReplyKind::ToRead)
        add(reply[replyByteCountOffset], extraBytes);
    addToLength(reply, extraBytes);
    reply.resize(reply.size() + extraBytes);
    put16(reply, reply.size() - extraBytes, detail & 0xFFFF);
    return reply;
}

int oneMoreOrLess(std::uint32_t detail)
{
    return detail % 2 == 0 ? 1 : -1;
}

// A value, quantity or address that differs in its lowest bit, or a coil that was switched the other way.
Bytes wrongEcho(Bytes reply, std::uint32_t detail)
{
    const std::size_t offset = replyEchoOffset + (detail % 2 == 0 ? 0 : 2);
    const bool isCoilValue = offset != replyEchoOffset && reply[functionOffset] == writeCoil;
    put16(reply, offset, get16(reply, offset) ^ (isCoilValue ? 0xFF00u : 1u));
    return reply;
}

Bytes wrongByteCount(Bytes reply, std::uint32_t detail)
{
    add(reply[replyByteCountOffset], oneMoreOrLess(detail));
    return reply;
}

Bytes wrongLength(Bytes reply, std::uint32_t detail, ReplyKind kind)
{
    addToLength(reply, oneMoreOrLess(detail));
    return kind == ReplyKind::ToRead ? wrongByteCount(std::move(reply), detail) : reply;
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

bool isRange(int from, int to)
{
    return from >= 0 && from <= to;
}

// How much later the reply is sent.
int laterMs(const FaultSettings& settings, Fault fault, std::uint32_t detail)
{
    if (fault != Fault::Delay)
        return settings.lateMs;
    const auto times = static_cast<std::uint32_t>(settings.delayToMs - settings.delayFromMs) + 1;
    return settings.delayFromMs + static_cast<int>(detail % times);
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
        {Fault::PaddedException, "padded-exception", &S::paddedException,
         "exception 4, as long as the reply that is waited for (remote: no reply); the request is not "
         "executed"},
        {Fault::WrongEcho, "wrong-echo", &S::wrongEcho,
         "the reply to a write names another address, value or quantity"},
        {Fault::WrongByteCount, "wrong-byte-count", &S::wrongByteCount,
         "the byte count of the reply to a read is one more or less than what comes"},
        {Fault::WrongLength, "wrong-length", &S::wrongLength,
         "the length field is one more or less than what comes, and a byte count with it"},
        {Fault::CloseAfterReply, "close-after-reply", &S::closeAfterReply,
         "the connection is closed behind the reply"},
        {Fault::Delay, "delay", &S::delay,
         "the reply and those behind it come some time within --delay-ms later"},
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
    if (!isRange(settings.delayFromMs, settings.delayToMs))
        throw std::invalid_argument(
            "the delays of replies must not be negative, and the shortest comes first");
}

bool isExecuted(Fault fault)
{
    return fault != Fault::Exception && fault != Fault::PaddedException;
}

ReplyKind replyKindOf(const Bytes& reply)
{
    const ModbusFunction* const function = findFunction(reply[functionOffset]);
    if (!function)
        return ReplyKind::Exception;
    return function->action == ModbusFunction::Read ? ReplyKind::ToRead : ReplyKind::ToWrite;
}

bool canHit(Fault fault, ReplyKind kind)
{
    if (fault == Fault::WrongEcho)
        return kind == ReplyKind::ToWrite;
    return fault != Fault::WrongByteCount || kind == ReplyKind::ToRead;
}

Bytes spoil(Bytes reply, const FaultDraw& draw, ReplyKind kind)
{
    switch (draw.fault) {
    case Fault::Doubled:
        return doubled(reply);
    case Fault::Cut:
        return cut(std::move(reply), draw.detail);
    case Fault::Longer:
        return longer(std::move(reply), draw.detail, kind);
    case Fault::WrongUnit:
        ++reply[unitOffset];
        return reply;
    case Fault::WrongEcho:
        return wrongEcho(std::move(reply), draw.detail);
    case Fault::WrongByteCount:
        return wrongByteCount(std::move(reply), draw.detail);
    case Fault::WrongLength:
        return wrongLength(std::move(reply), draw.detail, kind);
    default:
        return reply;
    }
}

Bytes padded(Bytes exception, std::size_t size, const FaultDraw& draw)
{
    while (exception.size() < size) {
        exception.push_back(static_cast<std::uint8_t>(draw.detail & 0xFF));
        addToLength(exception, 1);
    }
    return exception;
}

FaultPlan::FaultPlan(const FaultSettings& settings) : m_settings(settings)
{
    checkFaults(settings);
}

void FaultPlan::restart(const FaultSettings& settings)
{
    checkFaults(settings);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_settings = settings;
    ++m_plan;
    m_sequences = 0;
}

FaultDraw FaultPlan::draw(Position& position)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (position.m_plan != m_plan) {
        position.m_plan = m_plan;
        std::seed_seq seed{static_cast<unsigned long>(m_settings.seed), ++m_sequences};
        position.m_random.seed(seed);
    }
    // Two numbers for every reply, whatever its fault: a changed probability moves no later draw.
    const auto place = static_cast<std::uint32_t>(position.m_random());
    const auto detail = static_cast<std::uint32_t>(position.m_random());
    const Fault fault = choose(m_settings, fractionOf(place));
    return {fault, detail, laterMs(m_settings, fault, detail)};
}

} // namespace simulator
