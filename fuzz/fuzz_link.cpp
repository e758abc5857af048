// SPDX-License-Identifier: MIT
// Requests and streams of replies, put together and matched as the panel's link does it.
//
// Input: whether frames are remote, the way to split the stream, then steps: a request, bytes that come, a
// reply that the harness makes from the last request, or a new connection. Every input runs twice, with the
// bytes of a step in one piece and split: the two must tell the same story.

#include "fuzz/byte_source.h"
#include "fuzz/check.h"
#include "fuzz/fuzz_target.h"
#include "runtime/link/reply_assembler.h"
#include "runtime/link/reply_matcher.h"
#include "runtime/modbus/frame_fields.h"
#include "runtime/modbus/remote_fields.h"

#include <QList>

#include <memory>

namespace
{

using fuzz::ByteSource;
using fuzz::check;
using plc::byteAt;
using plc::DropReason;
using plc::wordAt;

const int unset = -1;

QByteArray takeBytes(ByteSource& source, std::size_t most)
{
    const std::string text = source.text(most);
    return QByteArray(text.data(), static_cast<int>(text.size()));
}

// The driver's frames are never shorter; what they hold is not the matchers' business.
QByteArray takeFrame(ByteSource& source)
{
    const int shortest = 12;
    const QByteArray frame = takeBytes(source, static_cast<std::size_t>(source.below(40)));
    return frame.leftJustified(shortest, '\0');
}

// What the link remembers of its last request, by an own account.
struct Asked {
    QByteArray sent; // as it went out
    int replySize = 0;
    bool answered = true;
};

bool answersModbus(const QByteArray& reply, const Asked& asked)
{
    return !asked.answered && !asked.sent.isEmpty() && reply.left(2) == asked.sent.left(2) &&
           byteAt(reply, plc::unitOffset) == byteAt(asked.sent, plc::unitOffset) &&
           (byteAt(reply, plc::functionOffset) & ~plc::exceptionFlag) ==
               byteAt(asked.sent, plc::functionOffset);
}

bool answersRemote(const QByteArray& reply, const Asked& asked)
{
    const bool isWrite = asked.sent.size() > plc::remoteReadSize;
    return !asked.answered && !asked.sent.isEmpty() && reply.size() == asked.replySize &&
           byteAt(reply, plc::unitOffset) == byteAt(asked.sent, plc::remoteStationOffset) &&
           byteAt(reply, plc::remoteReplyAreaOffset) == wordAt(asked.sent, plc::remoteAreaOffset) &&
           (!isWrite ||
            (wordAt(reply, plc::remoteReplyElementOffset) ==
                 wordAt(asked.sent, plc::remoteElementOffset + 2) &&
             wordAt(reply, plc::remoteReplyCountOffset) == wordAt(asked.sent, plc::remoteCountOffset)));
}

/// The receiving half of a link, with every step checked; the story is what came of each reply.
class Receiver
{
public:
    explicit Receiver(bool remote)
        : m_remote(remote),
          m_matcher(plc::replyMatcherFor(remote ? plc::FrameFormat::Remote : plc::FrameFormat::ModbusTcp))
    {
    }

    void ask(const QByteArray& frame, int replySize)
    {
        m_asked.replySize = replySize;
        m_asked.answered = false;
        m_asked.sent = m_matcher->prepare(frame, replySize);
        checkSent(frame);
    }

    void connectAnew()
    {
        m_assembler.reset();
        check(!m_assembler.partial() && !m_assembler.outOfStep(), "a new connection starts afresh");
        m_arrived.clear();
    }

    void receive(const QByteArray& bytes)
    {
        const bool lost = m_assembler.outOfStep();
        if (!lost)
            m_arrived += bytes;
        m_assembler.append(bytes);
        for (QByteArray reply = m_assembler.next(); !reply.isEmpty(); reply = m_assembler.next()) {
            check(!lost, "nothing is taken from a stream that is out of step");
            checkWhole(reply);
            judge(reply);
        }
        checkRest();
    }

    const QByteArray& sent() const { return m_asked.sent; }
    bool outOfStep() const { return m_assembler.outOfStep(); }
    bool partial() const { return m_assembler.partial(); }
    const QList<QByteArray>& story() const { return m_story; }

private:
    // What goes out differs from the driver's frame in its number alone, which is never 0.
    void checkSent(const QByteArray& frame) const
    {
        if (m_remote)
            return check(m_asked.sent == frame, "remote frames go out as they are");
        check(m_asked.sent.mid(2) == frame.mid(2) && m_asked.sent.size() == frame.size(),
              "numbering changes nothing but the number");
        check(wordAt(m_asked.sent, plc::numberOffset) != 0, "no request has number 0");
    }

    // The header's length field alone says where a reply ends, and no byte is lost or made up.
    void checkWhole(const QByteArray& reply)
    {
        const int length = wordAt(reply, plc::lengthOffset);
        check(wordAt(reply, plc::protocolOffset) == 0 && length >= 2 && length <= 254,
              "a reply has a header that a reply can have");
        check(reply.size() == plc::headerToLength + length, "a reply is as long as its header says");
        check(m_arrived.startsWith(reply), "replies are the bytes that came, in their order");
        m_arrived.remove(0, reply.size());
    }

    // What is kept back must be the beginning of a reply that can still become whole.
    void checkRest() const
    {
        check(m_assembler.partial() == !m_arrived.isEmpty(),
              "bytes of an unfinished reply are known to wait");
        if (m_assembler.outOfStep() || m_arrived.size() < plc::headerToLength)
            return;
        const int length = wordAt(m_arrived, plc::lengthOffset);
        check(m_arrived.size() < plc::headerToLength + length, "a whole reply does not wait");
    }

    void judge(const QByteArray& reply)
    {
        const bool fits = m_remote ? answersRemote(reply, m_asked) : answersModbus(reply, m_asked);
        DropReason reason = DropReason::Late;
        QByteArray passedOn = reply;
        const bool accepted = m_matcher->accept(&passedOn, &reason);
        check(accepted == fits, "exactly the reply to the last request is passed on, and once");
        checkPassedOn(reply, passedOn, accepted);
        m_asked.answered = m_asked.answered || accepted;
        const int outcome = accepted ? unset : static_cast<int>(reason);
        m_story << QByteArray::number(outcome) + ':' + passedOn;
    }

    // The driver knows number 0 only, and gets everything else as the controller sent it.
    void checkPassedOn(const QByteArray& reply, const QByteArray& passedOn, bool accepted) const
    {
        QByteArray expected = reply;
        if (accepted && !m_remote)
            plc::putWord(&expected, plc::numberOffset, 0);
        check(passedOn == expected, "matching changes nothing but the number of the matching reply");
    }

    const bool m_remote;
    plc::ReplyAssembler m_assembler;
    const std::unique_ptr<plc::ReplyMatcher> m_matcher;
    Asked m_asked;
    QByteArray m_arrived; // and is not part of a whole reply yet
    QList<QByteArray> m_story;
};

// Cuts the bytes of one step by a pattern of piece sizes, 0 meaning an empty read.
void receiveSplit(Receiver& receiver, const QByteArray& bytes, const QByteArray& pattern)
{
    int at = 0;
    for (int i = 0; at < bytes.size(); ++i) {
        const int wanted = pattern.isEmpty() ? 1 : static_cast<unsigned char>(pattern.at(i % pattern.size()));
        // Each turn of the pattern takes at least a byte.
        const int size =
            wanted == 0 && pattern.size() > 1 && i % pattern.size() != 0 ? 0 : std::max(wanted, 1);
        receiver.receive(bytes.mid(at, size));
        at += size;
    }
}

// A reply to the last request, changed by one byte at most, so that inputs get behind the header.
QByteArray madeReply(ByteSource& source, const QByteArray& sent, bool remote)
{
    const int changed = source.byte();
    const char value = static_cast<char>(source.byte());
    QByteArray body = takeBytes(source, static_cast<std::size_t>(source.below(8)));
    QByteArray reply(plc::pduDataOffset, '\0');
    plc::putWord(&reply, plc::numberOffset, remote ? 0 : wordAt(sent, plc::numberOffset));
    plc::putWord(&reply, plc::lengthOffset, 2 + body.size());
    const int unit = remote ? plc::remoteStationOffset : plc::unitOffset;
    const int function = remote ? plc::remoteAreaOffset + 1 : plc::functionOffset;
    reply[plc::unitOffset] = static_cast<char>(byteAt(sent, unit));
    reply[plc::functionOffset] = static_cast<char>(byteAt(sent, function));
    reply += body;
    if (changed < reply.size())
        reply[changed] = value;
    return reply;
}

void step(ByteSource& source, bool remote, Receiver& whole, Receiver& split, const QByteArray& pattern)
{
    const int kind = source.byte();
    if (kind < 0x50) {
        const QByteArray frame = takeFrame(source);
        const int replySize = source.byte();
        whole.ask(frame, replySize);
        split.ask(frame, replySize);
    } else if (kind < 0xF0) {
        const QByteArray bytes = kind < 0xA0
                                     ? takeBytes(source, static_cast<std::size_t>(source.word() % 600))
                                     : madeReply(source, whole.sent(), remote);
        whole.receive(bytes);
        receiveSplit(split, bytes, pattern);
    } else {
        whole.connectAnew();
        split.connectAnew();
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    ByteSource source(data, size);
    const bool remote = source.flag();
    const QByteArray pattern = takeBytes(source, static_cast<std::size_t>(source.below(6)));
    Receiver whole(remote);
    Receiver split(remote);
    for (int steps = 0; !source.empty() && steps < 64; ++steps) {
        step(source, remote, whole, split, pattern);
        check(whole.story() == split.story() && whole.outOfStep() == split.outOfStep() &&
                  whole.partial() == split.partial(),
              "how the stream was cut on its way makes no difference");
    }
    return 0;
}
