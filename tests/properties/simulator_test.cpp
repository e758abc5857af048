// SPDX-License-Identifier: MIT
// What the simulated controller answers to frames of any contents.

#include "properties/property.h"
#include "simulator/request_server.h"

#include <cstdint>
#include <vector>

namespace
{

using simulator::Bytes;

// A frame of eight bytes and more, mostly of small numbers and with a known function code.
rc::Gen<Bytes> frames()
{
    const auto byte =
        rc::gen::weightedOneOf<int>({{3, rc::gen::inRange(0, 8)}, {1, rc::gen::inRange(0, 256)}});
    const auto code =
        rc::gen::weightedOneOf<int>({{7, rc::gen::element(1, 2, 3, 4, 5, 6, 15, 16)}, {1, byte}});
    const auto rest = test::upTo<std::vector<int>>(16, byte);
    return rc::gen::map(rc::gen::tuple(rc::gen::inRange(0, 0x10000), byte, code, rest),
                        [](const std::tuple<int, int, int, std::vector<int>>& drawn) {
                            Bytes frame = {static_cast<std::uint8_t>(std::get<0>(drawn) >> 8),
                                           static_cast<std::uint8_t>(std::get<0>(drawn)),
                                           0,
                                           0,
                                           0,
                                           0,
                                           static_cast<std::uint8_t>(std::get<1>(drawn)),
                                           static_cast<std::uint8_t>(std::get<2>(drawn))};
                            for (const int each : std::get<3>(drawn))
                                frame.push_back(static_cast<std::uint8_t>(each));
                            simulator::put16(frame, simulator::lengthOffset,
                                             frame.size() - simulator::lengthEnd);
                            return frame;
                        });
}

} // namespace

// What goes out is a frame for the same request or nothing.
TEST(Simulator, AnswersAnyFrameWithAWellFormedReply)
{
    simulator::ControllerMemory memory;
    simulator::RequestServer server{memory, {{100, 199}, {0x8000, 0x8000}}};
    test::holds(1000, [&server] {
        const Bytes request = *frames();
        const Bytes reply = server.answer(request);
        if (request[simulator::unitOffset] == 0) {
            RC_ASSERT(reply.empty());
            return;
        }
        RC_ASSERT(reply.size() >= 9u);
        RC_ASSERT(simulator::get16(reply, 0) == simulator::get16(request, 0));
        RC_ASSERT(simulator::get16(reply, simulator::protocolOffset) == 0);
        RC_ASSERT(simulator::get16(reply, simulator::lengthOffset) == reply.size() - simulator::lengthEnd);
        RC_ASSERT(reply[simulator::unitOffset] == request[simulator::unitOffset]);
        RC_ASSERT((reply[simulator::functionOffset] & 0x7F) == (request[simulator::functionOffset] & 0x7F));
    });
}
