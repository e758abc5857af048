// SPDX-License-Identifier: MIT
#include "runtime/link/owed_replies.h"

#include "support/hex.h"

#include <gtest/gtest.h>

namespace
{

using test::fromHex;

using plc::OwedReplies;

OwedReplies owing(const char* request)
{
    OwedReplies owed;
    owed.add(fromHex(request));
    return owed;
}

const char request7[] = "0007 0000 0006 01 03 0005 0001";

TEST(OwedReplies, AreSeenInsideAReplyWhereverTheyBegin)
{
    const OwedReplies owed = owing(request7);
    EXPECT_TRUE(owed.beginInside(fromHex("0008 0000 000B 0007 0000 0005 01 03 02 9999")));
    EXPECT_TRUE(owed.beginInside(fromHex("0008 0000 000D 01 03 0007 0000 0005 01 03 02 9999")));
    EXPECT_TRUE(owed.beginInside(fromHex("0008 0000 000E 01 03 0A 1234 0007 0000 0005 01 03")));
}

TEST(OwedReplies, AreSeenInsideAReplyAsExceptionsToo)
{
    EXPECT_TRUE(owing(request7).beginInside(fromHex("0008 0000 000C 01 03 09 0007 0000 0003 01 83 02")));
}

TEST(OwedReplies, OfAnotherNumberUnitOrFunctionAreOnlyData)
{
    EXPECT_FALSE(
        owing("0006 0000 0006 01 03").beginInside(fromHex("0008 0000 000B 01 03 08 0007 0000 0005 01 03")));
    EXPECT_FALSE(owing(request7).beginInside(fromHex("0008 0000 000B 01 03 08 0007 0000 0105 01 03")))
        << "no reply is so long";
    EXPECT_FALSE(
        owing("0007 0000 0006 02 03").beginInside(fromHex("0008 0000 000B 01 03 08 0007 0000 0005 01 03")));
    EXPECT_FALSE(
        owing("0007 0000 0006 01 06").beginInside(fromHex("0008 0000 000B 01 03 08 0007 0000 0005 01 03")));
}

TEST(OwedReplies, AreTheLastSixtyFour)
{
    OwedReplies owed;
    for (int number = 1; number <= 65; ++number)
        owed.add(fromHex("00") + QByteArray(1, static_cast<char>(number)) +
                 fromHex("0000 0006 01 03 0005 0001"));
    EXPECT_FALSE(owed.beginInside(fromHex("0077 0000 000B 0001 0000 0005 01 03 02 9999")));
    EXPECT_TRUE(owed.beginInside(fromHex("0077 0000 000B 0002 0000 0005 01 03 02 9999")));
    EXPECT_TRUE(owed.beginInside(fromHex("0077 0000 000B 0041 0000 0005 01 03 02 9999")));
}

TEST(OwedReplies, AreNotTheHeaderOfTheReplyItself)
{
    EXPECT_FALSE(owing(request7).beginInside(fromHex("0007 0000 0005 01 03 02 1234")));
}

TEST(OwedReplies, AreNotOwedOnceTheyCame)
{
    OwedReplies owed = owing(request7);
    owed.came(fromHex("0006 0000 0005 01 03 02 9999"));
    EXPECT_TRUE(owed.areThere());
    owed.came(fromHex("0007 0000 0005 01 03 02 9999"));
    EXPECT_FALSE(owed.areThere());
}

TEST(OwedReplies, OfADeadStationDoNotPileUp)
{
    OwedReplies owed = owing(request7);
    for (int request = 0; request < 64; ++request)
        owed.add(fromHex("0008 0000 0006 02 03 0005 0001"));
    EXPECT_FALSE(owed.beginInside(fromHex("0009 0000 000B 01 03 08 0007 0000 0005 01 03")));
    EXPECT_TRUE(owed.areThere());
}

} // namespace
