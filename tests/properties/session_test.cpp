// SPDX-License-Identifier: MIT
// A runtime that calls anything in any order, against a plain account of the driver's memory and a check behind every
// call (fuzz/checked_driver.h): what the fuzzer's target "session" does, with steps that can be left out one by one.

#include "fuzz/check.h"
#include "fuzz/session_steps.h"
#include "properties/property.h"

#include <QByteArray>

#include <cstdint>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace
{

using Bytes = std::vector<std::uint8_t>;

[[noreturn]] void throwOverPromise(const char* promise)
{
    throw std::runtime_error(std::string("broken promise: ") + promise);
}

// Mostly small numbers, sometimes those at which something ends.
rc::Gen<Bytes> bytesUpTo(int count)
{
    const auto byte = rc::gen::weightedOneOf<int>(
        {{6, rc::gen::inRange(0, 20)}, {1, rc::gen::inRange(20, 0xE0)}, {1, rc::gen::inRange(0xE0, 0x100)}});
    return test::upTo<Bytes>(count, rc::gen::cast<std::uint8_t>(byte));
}

struct Step {
    int kind = 0;
    Bytes arguments;
};

std::ostream& operator<<(std::ostream& out, const Step& step)
{
    const QByteArray bytes(reinterpret_cast<const char*>(step.arguments.data()),
                           static_cast<int>(step.arguments.size()));
    return out << "{step " << step.kind << ": " << bytes.toHex(' ').toStdString() << "}";
}

// The steps by their numbers.
enum Kind { PollAndReply = 2, Read = 3, WriteOne = 4, ReadOnce = 5, Set = 8, Get = 9 };

rc::Gen<Step> stepOf(Kind kind, const rc::Gen<Bytes>& arguments)
{
    return rc::gen::build<Step>(rc::gen::set(&Step::kind, rc::gen::just<int>(kind)),
                                rc::gen::set(&Step::arguments, arguments));
}

std::string textOf(int area, int element)
{
    if (area == 8)
        return std::to_string(element / 16) + "." + std::to_string(element % 16);
    return std::to_string(element + (area == 7 ? 8000 : area == 14 ? 200 : 0));
}

struct Request {
    int area = 0;
    int element = 0;
    int count = 0;
    int station = 0;
    int key = 0;
    Bytes data;
};

void appendSized(Bytes& bytes, const std::string& text)
{
    bytes.push_back(static_cast<std::uint8_t>(text.size()));
    bytes.insert(bytes.end(), text.begin(), text.end());
}

// The bytes that a record is taken from, with its keys, its data and its address text.
Bytes recordOf(const Request& request)
{
    Bytes bytes = {fuzz::WithKeys | fuzz::WithData | fuzz::WithText};
    for (const int number : {request.area, request.element, request.count, request.station, request.key, 0})
        bytes.push_back(static_cast<std::uint8_t>(number));
    appendSized(bytes, std::string(request.data.begin(), request.data.end()));
    appendSized(bytes, textOf(request.area, request.element));
    return bytes;
}

// What an ordinary runtime asks for, close together so that requests meet.
rc::Gen<Bytes> requests()
{
    return rc::gen::map(rc::gen::build<Request>(rc::gen::set(&Request::area, rc::gen::inRange(0, 16)),
                                                rc::gen::set(&Request::element, rc::gen::inRange(0, 80)),
                                                rc::gen::set(&Request::count, rc::gen::inRange(0, 20)),
                                                rc::gen::set(&Request::station, rc::gen::inRange(0, 4)),
                                                rc::gen::set(&Request::key, rc::gen::inRange(0, 14)),
                                                rc::gen::set(&Request::data, bytesUpTo(8))),
                        recordOf);
}

// The same behind the argument that says whether it is queued directly.
rc::Gen<Bytes> queuedRequests()
{
    return rc::gen::map(rc::gen::pair(rc::gen::inRange(0, 2), requests()),
                        [](const std::pair<int, Bytes>& direct) {
                            Bytes bytes = direct.second;
                            bytes.insert(bytes.begin(), static_cast<std::uint8_t>(direct.first));
                            return bytes;
                        });
}

// A reply of the awaited length with these bytes in it, over and over.
rc::Gen<Bytes> goodReplies()
{
    return rc::gen::map(bytesUpTo(16), [](const Bytes& contents) {
        Bytes bytes = {0};
        appendSized(bytes, std::string(contents.begin(), contents.end()));
        return bytes;
    });
}

rc::Gen<Step> anyStep()
{
    const auto anything =
        rc::gen::build<Step>(rc::gen::set(&Step::kind, rc::gen::inRange(0, fuzz::stepCount)),
                             rc::gen::set(&Step::arguments, bytesUpTo(24)));
    return rc::gen::weightedOneOf<Step>({{8, stepOf(PollAndReply, goodReplies())},
                                         {2, stepOf(PollAndReply, bytesUpTo(12))},
                                         {2, stepOf(Read, requests())},
                                         {4, stepOf(WriteOne, queuedRequests())},
                                         {2, stepOf(ReadOnce, queuedRequests())},
                                         {3, stepOf(Set, requests())},
                                         {3, stepOf(Get, requests())},
                                         {4, anything}});
}

class Session : public testing::Test
{
protected:
    void SetUp() override { fuzz::onBrokenPromise = throwOverPromise; }
    void TearDown() override { fuzz::onBrokenPromise = fuzz::abortOverPromise; }

    static void run(const Bytes& settings, const std::vector<Step>& steps)
    {
        fuzz::ByteSource settingsSource(settings.data(), settings.size());
        fuzz::CountLimit counts(settingsSource);
        fuzz::CheckedDriver driver(fuzz::takeSettings(settingsSource), false);
        for (const Step& step : steps) {
            if (fuzz::isFull())
                break;
            Bytes bytes = step.arguments;
            bytes.insert(bytes.begin(), static_cast<std::uint8_t>(step.kind));
            fuzz::ByteSource source(bytes.data(), bytes.size());
            fuzz::takeStep(driver, source, counts);
        }
        driver.finish();
    }
};

TEST_F(Session, KeepsEveryPromiseAndStoresNothingElse)
{
    test::holds(300, [] {
        const Bytes settings = *bytesUpTo(40);
        const auto steps = *rc::gen::container<std::vector<Step>>(anyStep());
        run(settings, steps);
    });
}

} // namespace
