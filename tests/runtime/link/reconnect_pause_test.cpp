// SPDX-License-Identifier: MIT
#include "runtime/link/reconnect_pause.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{

using plc::ReconnectPause;

TEST(ReconnectPause, GrowsFromNothingToFiveSeconds)
{
    ReconnectPause pause;
    for (const int expected : {0, 100, 200, 400, 800, 1600, 3200, 5000, 5000, 5000})
        EXPECT_EQ(pause.next(), expected);
}

TEST(ReconnectPause, StartsAgainAfterAGoodReply)
{
    ReconnectPause pause;
    pause.next();
    pause.next();
    pause.reset();
    EXPECT_EQ(pause.next(), 0);
    EXPECT_EQ(pause.next(), 100);
}

} // namespace
