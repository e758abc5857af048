// SPDX-License-Identifier: MIT
#include "simulator/listen_address.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace
{

using simulator::endpointText;
using simulator::listenOn;
using simulator::portOf;
using testing::HasSubstr;
using testing::ThrowsMessage;

TEST(ListenAddress, IsLoopbackUnlessToldOtherwise)
{
    EXPECT_STREQ(simulator::defaultListenAddress, "127.0.0.1");
}

TEST(ListenAddress, ListensOnAnyAddressOfTheMachine)
{
    for (const char* address : {"127.0.0.1", "127.0.0.2", "0.0.0.0"})
        EXPECT_GT(portOf(*listenOn(address, 0)), 0) << address;
}

TEST(ListenAddress, RefusesWhatIsNoAddress)
{
    for (const char* address : {"", "localhost", "1.2.3.4.5", "127.0.0.1:502"})
        EXPECT_THAT([&] { listenOn(address, 0); }, ThrowsMessage<std::invalid_argument>(HasSubstr(
                                                       "no address to listen on: give one in digits")))
            << address;
}

TEST(ListenAddress, SaysThatAnAddressIsAnothersMachine)
{
    EXPECT_THAT([] { listenOn("192.0.2.1", 0); },
                ThrowsMessage<std::runtime_error>(HasSubstr("192.0.2.1 is no address of this machine")));
}

TEST(EndpointText, PutsAnIpv6AddressIntoBrackets)
{
    EXPECT_EQ(endpointText("127.0.0.1", 502), "127.0.0.1:502");
    EXPECT_EQ(endpointText("::1", 502), "[::1]:502");
}

} // namespace
