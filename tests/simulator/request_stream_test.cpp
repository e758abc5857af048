// SPDX-License-Identifier: MIT
#include "simulator/request_stream.h"

#include "simulator/loopback_client.h"

#include <gtest/gtest.h>

namespace
{

using simulator::Bytes;
using simulator::RequestStream;
using test::fromHex;
using test::toHex;

const char* const readOne = "00 01 00 00 00 06 01 03 00 05 00 01";
const char* const writeOne = "00 02 00 00 00 06 01 06 00 05 12 34";

void append(RequestStream& stream, const std::string& hex)
{
    const Bytes bytes = fromHex(hex);
    stream.append(bytes.data(), bytes.size());
}

std::string nextOf(RequestStream& stream)
{
    const auto request = stream.next();
    return request ? toHex(*request) : "none";
}

TEST(RequestStream, GivesNothingBeforeARequestIsWhole)
{
    RequestStream stream;
    for (const std::uint8_t byte : fromHex(readOne)) {
        EXPECT_EQ(nextOf(stream), "none");
        EXPECT_FALSE(stream.isBroken());
        stream.append(&byte, 1);
    }
    EXPECT_EQ(nextOf(stream), readOne);
    EXPECT_EQ(nextOf(stream), "none");
}

TEST(RequestStream, SeparatesRequestsThatCameTogether)
{
    RequestStream stream;
    append(stream, std::string(readOne) + " " + writeOne + " 00 03");
    EXPECT_EQ(nextOf(stream), readOne);
    EXPECT_EQ(nextOf(stream), writeOne);
    EXPECT_EQ(nextOf(stream), "none");
}

class BrokenHeader : public testing::TestWithParam<const char*>
{
};

TEST_P(BrokenHeader, BreaksTheStream)
{
    RequestStream stream;
    append(stream, GetParam());
    EXPECT_TRUE(stream.isBroken());
    append(stream, readOne);
    EXPECT_EQ(nextOf(stream), "none");
}

INSTANTIATE_TEST_SUITE_P(RequestStream, BrokenHeader,
                         testing::Values("00 01 00 01 00 06", // another protocol
                                         "00 01 01 00 00 06", // and in the other byte
                                         "00 01 00 00 00 00", // not even a unit
                                         "00 01 00 00 00 01", // no function code
                                         "00 01 00 00 00 FF", // 255: one more than Modbus allows
                                         "47 45 54 20 2F 20"));

TEST(RequestStream, TakesTheShortestAndTheLongestRequest)
{
    RequestStream stream;
    append(stream, "00 01 00 00 00 02 01 07");
    EXPECT_EQ(stream.next()->size(), 8u);
    append(stream, "00 01 00 00 00 FE");
    const Bytes rest(254);
    stream.append(rest.data(), rest.size());
    EXPECT_EQ(stream.next()->size(), 260u);
}

TEST(RequestStream, GivesWhatIsWholeBeforeItBreaks)
{
    RequestStream stream;
    append(stream, std::string(readOne) + " 00 02 00 07 00 06");
    EXPECT_FALSE(stream.isBroken());
    EXPECT_EQ(nextOf(stream), readOne);
    EXPECT_TRUE(stream.isBroken());
}

} // namespace
