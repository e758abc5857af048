// SPDX-License-Identifier: MIT
// One thing, several things.

#include "runtime/model/counted.h"

#include <gmock/gmock.h>

namespace
{

TEST(Counted, TellsOneFromSeveral)
{
    EXPECT_EQ(plc::counted(0, "value").toStdString(), "0 values");
    EXPECT_EQ(plc::counted(1, "value").toStdString(), "1 value");
    EXPECT_EQ(plc::counted(12, "value").toStdString(), "12 values");
    EXPECT_EQ(plc::counted(1, "reply", "replies").toStdString(), "1 reply");
    EXPECT_EQ(plc::counted(2, "reply", "replies").toStdString(), "2 replies");
}

} // namespace
