// SPDX-License-Identifier: MIT
// Captures of any traffic, written and read again.

#include "capture/capture_bytes.h"
#include "properties/property.h"

#include <ostream>
#include <string>
#include <vector>

namespace
{

// A read of some registers, and what comes back.
struct Exchange {
    int number = 0;
    int unit = 1;
    int registers = 1;
    std::vector<int> cuts; // of the reply, into the parts that arrive
    bool answered = true;
};

std::ostream& operator<<(std::ostream& out, const Exchange& exchange)
{
    out << "{number " << exchange.number << ", unit " << exchange.unit << ", registers " << exchange.registers
        << (exchange.answered ? ", cut at" : ", no reply");
    for (const int cut : exchange.cuts)
        out << ' ' << cut;
    return out << '}';
}

using Connection = std::vector<Exchange>;

rc::Gen<std::vector<Connection>> connections()
{
    const auto exchange = rc::gen::build<Exchange>(
        rc::gen::set(&Exchange::number, rc::gen::inRange(0, 0x10000)),
        rc::gen::set(&Exchange::unit, rc::gen::inRange(1, 248)),
        rc::gen::set(&Exchange::registers, rc::gen::inRange(1, 126)),
        rc::gen::set(&Exchange::cuts, test::upTo<std::vector<int>>(4, rc::gen::inRange(0, 262))),
        rc::gen::set(&Exchange::answered, rc::gen::weightedElement<bool>({{7, true}, {1, false}})));
    return test::upTo<std::vector<Connection>>(20, test::upTo<Connection>(6, exchange));
}

QByteArray bytes(const std::vector<int>& values)
{
    QByteArray result;
    for (const int value : values)
        result.append(static_cast<char>(value));
    return result;
}

QByteArray requestOf(const Exchange& exchange)
{
    return bytes(
        {exchange.number >> 8, exchange.number, 0, 0, 0, 6, exchange.unit, 3, 0, 100, 0, exchange.registers});
}

QByteArray replyOf(const Exchange& exchange)
{
    const int data = 2 * exchange.registers;
    return bytes({exchange.number >> 8, exchange.number, 0, 0, (data + 3) >> 8, data + 3, exchange.unit, 3,
                  data}) +
           QByteArray(data, '\x5A');
}

void receive(plc::LinkTap* tap, const Exchange& exchange)
{
    QByteArray rest = replyOf(exchange);
    for (const int cut : exchange.cuts) {
        const QByteArray part = rest.left(cut);
        if (!part.isEmpty())
            tap->received(part);
        rest.remove(0, part.size());
    }
    if (!rest.isEmpty())
        tap->received(rest);
}

std::string hex(const QByteArray& frame)
{
    return frame.toHex().toStdString();
}

// What is told to a capture, and what is to be read out of it. \param timeOuts whether the format knows them
std::vector<std::string> play(plc::LinkTap* tap, const std::vector<Connection>& all, bool timeOuts)
{
    std::vector<std::string> entries;
    int port = 40000;
    for (const Connection& connection : all) {
        test::connect(tap, port++);
        entries.push_back("+");
        for (const Exchange& exchange : connection) {
            tap->sent(requestOf(exchange));
            entries.push_back("> " + hex(requestOf(exchange)));
            if (exchange.answered) {
                receive(tap, exchange);
                entries.push_back("< " + hex(replyOf(exchange)));
            } else {
                tap->timedOut();
                if (timeOuts)
                    entries.push_back("timed out");
            }
        }
        tap->closed(QStringLiteral("enough"));
        entries.push_back("-");
    }
    return entries;
}

template <class Capture>
void isReadAsItWasWritten(bool timeOuts)
{
    test::holds(60, [timeOuts] {
        const std::vector<Connection> all = *connections();
        RC_PRE(!all.empty()); // a file without a packet is an error
        std::vector<std::string> expected;
        const QByteArray capture =
            test::captured<Capture>([&](plc::LinkTap* tap) { expected = play(tap, all, timeOuts); });
        const test::Read found = test::read(capture);
        RC_ASSERT(found.end.error.toStdString() == std::string());
        RC_ASSERT(found.entries == expected);
    });
}

} // namespace

TEST(Captures, InLinesAreReadAsTheyWereWritten)
{
    isReadAsItWasWritten<plc::JsonCapture>(true);
}

TEST(Captures, InPacketsAreReadAsTheyWereWritten)
{
    isReadAsItWasWritten<plc::PcapCapture>(false);
}
