// SPDX-License-Identifier: MIT
#include "runtime/cycle/send_pause.h"

#include "runtime/modbus/protocol.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

Settings withTimeout(int milliseconds)
{
    Settings settings;
    settings.timeoutMs = milliseconds;
    return settings;
}

TEST(SendPause, GrowsWhileTheControllerIsBusyUpToTheTimeOut)
{
    SendPause pause(withTimeout(400));
    for (const int expected : {100, 200, 400, 400})
        EXPECT_EQ(pause.after(DeviceBusy), expected);
}

TEST(SendPause, IsAFirstOneAgainAfterAnyOtherAnswer)
{
    SendPause pause(withTimeout(400));
    pause.after(DeviceBusy);
    pause.after(DeviceBusy);
    EXPECT_EQ(pause.after(0), 0);
    EXPECT_EQ(pause.after(DeviceBusy), 100);
    EXPECT_EQ(pause.after(IllegalDataAddress), 0);
    EXPECT_EQ(pause.after(DeviceBusy), 100);
}

TEST(SendPause, IsThereWithTheShortestTimeOutToo)
{
    SendPause pause(withTimeout(1));
    EXPECT_EQ(pause.after(DeviceBusy), 1);
    EXPECT_EQ(pause.after(DeviceBusy), 1);
}

TEST(SendPause, IsNeverShorterThanTheGap)
{
    Settings settings = withTimeout(400);
    settings.gapMs = 150;
    SendPause pause(settings);
    EXPECT_EQ(pause.after(0), 150);
    EXPECT_EQ(pause.after(DeviceBusy), 150);
    EXPECT_EQ(pause.after(DeviceBusy), 200);
}

} // namespace
