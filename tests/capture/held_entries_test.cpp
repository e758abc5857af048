// SPDX-License-Identifier: MIT
// Entries of a capture kept within a bound.

#include "capture/held_entries.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

CaptureEntry request(int size)
{
    CaptureEntry entry;
    entry.kind = CaptureEntry::Request;
    entry.bytes = QByteArray(size, 'x');
    return entry;
}

TEST(HeldEntries, KeepEntriesInTheirOrder)
{
    HeldEntries held;
    EXPECT_TRUE(held.add(request(1)));
    EXPECT_TRUE(held.add(request(2)));
    ASSERT_EQ(held.entries().size(), 2u);
    EXPECT_EQ(held.entries()[1].bytes.size(), 2);
    EXPECT_FALSE(held.isFull());
}

TEST(HeldEntries, TakeNothingBeyondTheirBound)
{
    HeldEntries held(2000);
    EXPECT_TRUE(held.add(request(1000)));
    EXPECT_FALSE(held.add(request(1000)));
    EXPECT_FALSE(held.add(request(1))) << "what came before it is missing";
    EXPECT_TRUE(held.isFull());
    EXPECT_EQ(held.entries().size(), 1u);
}

} // namespace
