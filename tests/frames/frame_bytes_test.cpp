// SPDX-License-Identifier: MIT
#include "frames/frame_bytes.h"

#include "support/hex.h"

#include <gtest/gtest.h>

TEST(BeginFrame, MakesTheSameFrameInAnyRoom)
{
    for (int room = 0; room <= 20; ++room) {
        SCOPED_TRACE(room);
        const QByteArray frame = BeginFrame(QByteArray(room, '\x7F'), 1, FC_READ_HOLDING_REGISTERS, 100, 2);
        EXPECT_EQ(12, frame.size());
        EXPECT_EQ("00 00 00 00 00 06 01 03 00 64", test::toHex(frame.left(10)));
    }
}
