// SPDX-License-Identifier: MIT
// Whatever comes to the simulated controller: requests of both kinds as streams and whole, the text of its
// memory, and what its faults do to replies. The first byte says which.

#include "fuzz/byte_source.h"
#include "fuzz/check.h"
#include "fuzz/fuzz_target.h"
#include "fuzz/modbus_checks.h"
#include "simulator/area_map.h"
#include "simulator/faults.h"
#include "simulator/memory_text.h"
#include "simulator/remote_frame.h"
#include "simulator/remote_server.h"
#include "simulator/remote_stream.h"
#include "simulator/reply_queue.h"
#include "simulator/request_stream.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

namespace
{

using fuzz::ByteSource;
using fuzz::check;
using simulator::AddressRange;
using simulator::Bytes;
using simulator::ControllerMemory;
using simulator::Fault;
using simulator::get16;
using simulator::MemoryValue;
using simulator::MovingValue;
using simulator::ReplyKind;

using Clock = simulator::ReplyQueue::Clock;
using Time = simulator::ReplyQueue::Time;

const int mostSteps = 64;
const int broadcast = 0;

std::vector<AddressRange> takeRanges(ByteSource& source)
{
    std::vector<AddressRange> ranges(static_cast<std::size_t>(source.below(3)));
    for (AddressRange& range : ranges) {
        range.from = source.word();
        range.to = std::min(range.from + source.byte(), 0xFFFF);
        const int which = source.byte(); // units 1 to 3, all units; coils, registers, both
        if (which % 4 != 0)
            range.unit = which % 4;
        if (which / 4 % 4 >= 2)
            range.kind = which / 4 % 4 == 2 ? MemoryValue::Coil : MemoryValue::Register;
    }
    return ranges;
}

/// Values that move, somewhere near the first elements of unit 1, where requests are likely to look.
void takeMotions(ByteSource& source, ControllerMemory& memory)
{
    static const MovingValue::Width widths[] = {MovingValue::Bit, MovingValue::Word, MovingValue::DoubleWord};
    for (int count = source.below(4); count > 0; --count) {
        MovingValue value{};
        value.motion = static_cast<MovingValue::Motion>(source.below(4));
        value.width = widths[source.below(3)];
        value.highest = value.width == MovingValue::Bit ? 1 : source.word();
        value.periodMs = 1 + source.byte();
        memory.move({1, source.byte(), value});
    }
}

bool beginsWith(const Bytes& bytes, const Bytes& start)
{
    return start.size() <= bytes.size() && std::equal(start.begin(), start.end(), bytes.begin());
}

/// A controller with both servers on one memory, as the program has them.
struct Controller {
    explicit Controller(ByteSource& source)
        : refused(takeRanges(source)), modbus(memory, refused),
          remote(memory, refused, [this](int unit) { return modbus.answers(unit); })
    {
        const int silent = source.byte();
        modbus.setSilent(silent, true);
        takeMotions(source, memory);
        memory.setHoldingRegister(1, 0, 0x1234); // broadcasts need a unit that has a memory
    }

    std::int64_t now = 0; // stands still while an answer is compared with the memory
    ControllerMemory memory{1, [this] { return now; }};
    std::vector<AddressRange> refused;
    simulator::RequestServer modbus;
    simulator::RemoteServer remote;
};

void answerModbus(Controller& controller, const Bytes& request)
{
    controller.now += 7;
    const Bytes reply = controller.modbus.answer(request);
    if (!fuzz::isModbusRequest(request)) {
        check(reply.empty(), "what is no Modbus request is not answered");
        return;
    }
    if (!controller.modbus.answers(request[simulator::unitOffset])) {
        check(reply.empty(), "broadcasts and silent units are not answered");
        return;
    }
    const unsigned exception = fuzz::expectedException(request, controller.refused);
    fuzz::checkModbusReply(request, reply, exception, controller.memory);
}

void refuseModbus(Controller& controller, const Bytes& request)
{
    const unsigned deviceFailure = 4;
    const Bytes reply = controller.modbus.refuse(request, deviceFailure);
    if (fuzz::isModbusRequest(request) && controller.modbus.answers(request[simulator::unitOffset]))
        fuzz::checkModbusReply(request, reply, deviceFailure, controller.memory);
    else
        check(reply.empty(), "what would not be answered is not refused either");
}

// Whole requests in a stream that was cut anywhere: how it was cut makes no difference.
void runModbusStream(ByteSource& source)
{
    Controller controller(source);
    simulator::RequestStream whole;
    simulator::RequestStream split;
    Bytes arrived;
    for (int steps = 0; !source.empty() && steps < mostSteps; ++steps) {
        const Bytes bytes = source.bytes(static_cast<std::size_t>(1 + source.word() % 400));
        arrived.insert(arrived.end(), bytes.begin(), bytes.end());
        whole.append(bytes.data(), bytes.size());
        std::vector<Bytes> bytewise;
        for (const std::uint8_t byte : bytes) {
            split.append(&byte, 1);
            while (const auto request = split.next())
                bytewise.push_back(*request);
        }
        std::size_t count = 0;
        while (const auto request = whole.next()) {
            check(beginsWith(arrived, *request), "requests are the bytes that came, in their order");
            arrived.erase(arrived.begin(), arrived.begin() + static_cast<std::ptrdiff_t>(request->size()));
            check(fuzz::isModbusRequest(*request), "a request ends where its header says");
            check(count < bytewise.size() && bytewise[count] == *request, "cuts in the stream do not matter");
            ++count;
            answerModbus(controller, *request);
        }
        check(count == bytewise.size() && whole.isBroken() == split.isBroken(),
              "cuts in the stream do not matter, to its end");
    }
}

// Requests as they are, also such as no stream would let through.
void runModbusRequests(ByteSource& source)
{
    Controller controller(source);
    for (int steps = 0; !source.empty() && steps < mostSteps; ++steps) {
        const int kind = source.byte();
        Bytes request = source.bytes(static_cast<std::size_t>(source.word() % 300));
        const bool fixHeader = (kind & 1) != 0;
        if (fixHeader && request.size() >= simulator::lengthEnd) {
            simulator::put16(request, simulator::protocolOffset, 0);
            simulator::put16(request, simulator::lengthOffset, request.size() - simulator::lengthEnd);
        }
        if ((kind & 6) == 6)
            refuseModbus(controller, request);
        else
            answerModbus(controller, request);
    }
}

// Size modulo 256 and sum are all that tells a remote request.
void checkRemoteRequest(const Bytes& request)
{
    check(request.size() >= simulator::remoteReadSize && request.size() % 256 == request[0],
          "a remote request has the size that it says, modulo 256");
    const unsigned sum = std::accumulate(request.begin(), request.end() - 1, 0u);
    check((sum & 0xFF) == request.back(), "the sum of a remote request is right");
}

std::size_t remoteDataBytes(const simulator::RemoteRequest& request)
{
    const simulator::MappedArea& area = *simulator::findArea(request.area);
    if (area.kind == simulator::MappedArea::Bit)
        return static_cast<std::size_t>((request.count + 7) / 8);
    if (area.kind == simulator::MappedArea::DoubleWord)
        return 4 * static_cast<std::size_t>(std::max(request.count - 1, 1));
    return 2 * static_cast<std::size_t>(request.count);
}

void checkRemoteReadReply(const simulator::RemoteRequest& request, const Bytes& reply)
{
    const std::size_t dataAt = 9;
    const std::size_t data = remoteDataBytes(request);
    check(reply.size() == dataAt + data && reply[8] == (data & 0xFF),
          "the reply to a remote read has as many bytes as its count needs");
}

void checkRemoteWriteReply(const simulator::RemoteRequest& request, const Bytes& reply)
{
    check(reply.size() == 12 && get16(reply, 8) == (request.element & 0xFFFF) &&
              get16(reply, 10) == request.count,
          "the reply to a remote write names its elements");
}

void checkRemoteReply(const Bytes& frame, const Bytes& reply)
{
    const simulator::RemoteRequest request = simulator::remoteRequestOf(frame);
    check(reply.size() >= 9 && get16(reply, 0) == 0 && get16(reply, 2) == 0 &&
              get16(reply, simulator::lengthOffset) == ((reply.size() - simulator::lengthEnd) & 0xFFFF),
          "a remote reply has the header of a reply");
    check(reply[6] == request.station && reply[7] == request.area, "a remote reply names station and area");
    if (request.isRead)
        checkRemoteReadReply(request, reply);
    else
        checkRemoteWriteReply(request, reply);
}

// What may be answered at all; that it lies inside its area is checked by the sanitizers as well.
void answerRemote(Controller& controller, const Bytes& frame)
{
    const simulator::RemoteRequest request = simulator::remoteRequestOf(frame);
    controller.now += 7;
    const Bytes reply = controller.remote.answer(frame);
    const simulator::MappedArea* const area = simulator::findArea(request.area);
    const bool possible = area && request.station != broadcast &&
                          controller.modbus.answers(request.station) && request.element >= 0 &&
                          request.element < simulator::elementsOf(*area);
    if (!possible)
        check(reply.empty(), "what cannot be served in the remote format is not answered");
    if (!reply.empty())
        checkRemoteReply(frame, reply);
}

Bytes withSum(Bytes frame)
{
    frame[0] = static_cast<std::uint8_t>((frame.size() + 1) & 0xFF);
    frame.push_back(static_cast<std::uint8_t>(std::accumulate(frame.begin(), frame.end(), 0u) & 0xFF));
    return frame;
}

// Everything taken from the stream came in this order, though a bad frame may be missing in between.
void runRemoteStream(ByteSource& source)
{
    Controller controller(source);
    simulator::RemoteStream stream;
    Time now;
    std::size_t in = 0;
    std::size_t out = 0;
    for (int steps = 0; !source.empty() && steps < mostSteps; ++steps) {
        const int kind = source.byte();
        Bytes bytes = source.bytes(static_cast<std::size_t>(source.word() % 400));
        if ((kind & 1) != 0 && bytes.size() >= simulator::remoteValueOffset)
            bytes = withSum(bytes);
        now += std::chrono::milliseconds((kind & 2) != 0 ? 250 : 0);
        stream.append(bytes.data(), bytes.size(), now);
        in += bytes.size();
        now += std::chrono::milliseconds((kind & 4) != 0 ? 250 : 0);
        while (const auto request = stream.next(now)) {
            checkRemoteRequest(*request);
            out += request->size();
            answerRemote(controller, *request);
        }
        check(out <= in, "no request is made of bytes that did not come");
    }
    now += 2 * simulator::RemoteStream::frameSilence;
    while (const auto request = stream.next(now))
        checkRemoteRequest(*request);
    check(!stream.silenceAt(), "after a silence nothing is left to wait for");
}

void runRemoteRequests(ByteSource& source)
{
    Controller controller(source);
    for (int steps = 0; !source.empty() && steps < mostSteps; ++steps) {
        Bytes frame = source.bytes(simulator::remoteValueOffset + static_cast<std::size_t>(source.below(64)));
        frame.resize(std::max(frame.size(), simulator::remoteValueOffset));
        answerRemote(controller, withSum(frame));
    }
}

bool isSame(const std::vector<simulator::MemoryValue>& a, const std::vector<simulator::MemoryValue>& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

// Values go into the memory without another look, and messages to a terminal.
void runMemoryText(ByteSource& source)
{
    const std::string text = source.text(source.size());
    const simulator::MemoryText read = simulator::parseMemoryText(text, "file");
    ControllerMemory memory;
    for (const simulator::MemoryValue& value : read.values) {
        check(value.unit >= simulator::firstUnit && value.unit <= simulator::lastUnit && value.address >= 0 &&
                  value.address < simulator::addressCount,
              "a value of the memory has a place");
        check(value.kind != simulator::MemoryValue::Coil || value.value <= 1, "a coil is 0 or 1");
    }
    const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
    for (const simulator::MovingPlace& place : read.moving)
        memory.move(place); // throws if its place, limits or period were let through
    check(read.values.size() + read.moving.size() + read.errors.size() <= lines,
          "a line is one value or one error at most");
    for (const std::string& error : read.errors)
        check(error.compare(0, 5, "file:") == 0 &&
                  std::all_of(error.begin(), error.end(), [](char c) { return c >= ' ' && c <= '~'; }),
              "a message says where and holds nothing that a terminal would act upon");
    const simulator::MemoryText again =
        simulator::parseMemoryText(simulator::formatMemoryText(read.values), "file");
    check(again.errors.empty() && isSame(again.values, read.values), "values pass through text unchanged");
}

simulator::FaultDraw takeDraw(ByteSource& source)
{
    simulator::FaultDraw draw;
    draw.fault = static_cast<Fault>(source.below(static_cast<int>(simulator::faultKinds)));
    draw.detail = static_cast<std::uint32_t>(source.number());
    draw.lateMs = source.byte();
    return draw;
}

/// How many bytes at the same places differ.
std::size_t differences(const Bytes& a, const Bytes& b)
{
    std::size_t count = 0;
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
        count += a[i] != b[i] ? 1 : 0;
    return count;
}

void checkWrongFields(const Bytes& reply, const Bytes& spoilt, Fault fault)
{
    const std::size_t replyCountAt = 8;
    check(spoilt.size() == reply.size(), "a reply with a wrong field is as long as it was");
    const std::size_t changed = differences(reply, spoilt);
    if (fault == Fault::WrongEcho)
        check((changed == 1 || changed == 2) &&
                  std::equal(reply.begin(), reply.begin() + replyCountAt, spoilt.begin()),
              "a wrong echo names another address or value, in the frame of the right one");
    if (fault == Fault::WrongByteCount)
        check(changed == 1 && spoilt[replyCountAt] != reply[replyCountAt], "only the byte count is wrong");
    if (fault == Fault::WrongLength) {
        const int difference = get16(spoilt, simulator::lengthOffset) - get16(reply, simulator::lengthOffset);
        check((std::abs(difference) == 1 || std::abs(difference) == 0xFFFF) && changed <= 3,
              "a wrong length is one more or less");
    }
}

// What a fault leaves of a reply, by its description.
void checkSpoilt(const Bytes& reply, const Bytes& spoilt, const simulator::FaultDraw& draw)
{
    switch (draw.fault) {
    case Fault::Doubled:
        check(spoilt.size() == 2 * reply.size() && beginsWith(spoilt, reply), "doubled is twice the reply");
        break;
    case Fault::Cut:
        check(!spoilt.empty() && spoilt.size() < reply.size() && beginsWith(reply, spoilt),
              "cut is the beginning of the reply");
        break;
    case Fault::Longer:
        check(spoilt.size() == reply.size() + 2 && get16(spoilt, simulator::lengthOffset) ==
                                                       ((get16(reply, simulator::lengthOffset) + 2) & 0xFFFF),
              "longer is two bytes more, and its header says so");
        break;
    case Fault::WrongUnit:
        check(spoilt.size() == reply.size() &&
                  spoilt[simulator::unitOffset] == ((reply[simulator::unitOffset] + 1) & 0xFF),
              "a wrong unit is the next one");
        break;
    case Fault::WrongEcho:
    case Fault::WrongByteCount:
    case Fault::WrongLength:
        checkWrongFields(reply, spoilt, draw.fault);
        break;
    default:
        check(spoilt == reply, "the other faults leave the bytes alone");
    }
}

void checkPadded(const Bytes& reply, const simulator::FaultDraw& draw, std::size_t size)
{
    const Bytes longer = simulator::padded(reply, size, draw);
    check(longer.size() == std::max(reply.size(), size), "a padded reply is as long as it shall be");
    check(static_cast<std::uint16_t>(get16(longer, simulator::lengthOffset) -
                                     get16(reply, simulator::lengthOffset)) == longer.size() - reply.size(),
          "the length field of a padded reply counts what was added");
}

Bytes takeReply(ByteSource& source)
{
    const std::size_t shortest = 12; // of a write; others can be shorter, but a wrong echo hits writes only
    Bytes reply = source.bytes(shortest + static_cast<std::size_t>(source.byte()));
    reply.resize(std::max(reply.size(), shortest));
    return reply;
}

bool isQueued(const simulator::FaultDraw& draw)
{
    return draw.fault != Fault::NoReply && draw.fault != Fault::Close;
}

void checkDue(const simulator::ReplyQueue& queue, bool sent, Time now)
{
    const auto due = queue.nextDue();
    check(due.has_value() == (queue.pendingBytes() != 0), "something is due whenever something waits");
    check(sent || !due || *due > now, "what is due is sent");
}

ReplyKind remoteKind(const Bytes& reply)
{
    return (reply[7] & 1) != 0 ? ReplyKind::ToRead : ReplyKind::ToWrite;
}

// Faults delay and reorder replies, but lose and make up nothing.
void runFaults(ByteSource& source)
{
    simulator::ReplyQueue queue{std::chrono::milliseconds(source.flag() ? source.byte() : 0)};
    Time now;
    std::size_t in = 0;
    std::size_t out = 0;
    const auto take = [&] {
        const Bytes sent = queue.takeDue(now);
        out += sent.size();
        checkDue(queue, !sent.empty(), now);
        check(queue.pendingBytes() == in - out, "bytes that are not sent yet wait");
        return !sent.empty();
    };
    for (int steps = 0; !source.empty() && steps < mostSteps; ++steps) {
        simulator::FaultDraw draw = takeDraw(source);
        const Bytes reply = takeReply(source);
        const bool remote = source.flag();
        const ReplyKind kind = remote ? remoteKind(reply) : simulator::replyKindOf(reply);
        if (!simulator::canHit(draw.fault, kind))
            draw.fault = Fault::None;
        const Bytes spoilt = simulator::spoil(reply, draw, kind);
        checkSpoilt(reply, spoilt, draw);
        checkPadded(reply, draw, static_cast<std::size_t>(draw.detail % 300));
        check(!queue.passes(draw) || queue.pendingBytes() == 0, "no reply passes one that waits");
        if (isQueued(draw)) {
            queue.add(spoilt, draw, now);
            in += spoilt.size();
        }
        now += std::chrono::milliseconds(source.byte());
        while (source.flag() && take())
            ;
    }
    now += std::chrono::hours(1);
    while (take())
        ;
    check(out == in, "every byte of every reply is sent in the end");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    ByteSource source(data, size);
    switch (source.below(6)) {
    case 0:
        runModbusStream(source);
        break;
    case 1:
        runModbusRequests(source);
        break;
    case 2:
        runRemoteStream(source);
        break;
    case 3:
        runRemoteRequests(source);
        break;
    case 4:
        runMemoryText(source);
        break;
    case 5:
        runFaults(source);
        break;
    }
    return 0;
}
