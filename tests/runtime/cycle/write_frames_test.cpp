// SPDX-License-Identifier: MIT
#include "runtime/cycle/write_frames.h"

#include "support/runtime_fixture.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

class WriteFrames : public testing::Test
{
protected:
    WriteFrames()
    {
        settings.driverPath = QString::fromUtf8(builtDriver());
        settings.multiStation = true;
    }

    std::vector<std::string> frames(const Variable& where, const std::vector<quint32>& values)
    {
        std::vector<std::string> result;
        for (const WriteFrame& frame : framesOfWrite(settings, where, values))
            result.push_back(frame.frame.toHex().toStdString() + (frame.completesRead ? " completes" : ""));
        return result;
    }

    Settings settings;
};

using Frames = std::vector<std::string>;

TEST_F(WriteFrames, OfBitsAreOneEach)
{
    EXPECT_EQ(frames(variable(2, 16, 3, 1), {1, 0, 1}),
              (Frames{"00000000000601050010ff00", "000000000006010500110000", "00000000000601050012ff00"}));
}

TEST_F(WriteFrames, OfABitInAWordAreTheReadOfTheWordAndTheWriteThatItCompletes)
{
    EXPECT_EQ(frames(variable(8, 163, 1, 2), {1}),
              (Frames{"0000000000060203000a0001", "0000000000060206000a0008 completes"}));
    EXPECT_EQ(frames(variable(8, 163, 2, 2), {1, 0}).size(), 4u);
    EXPECT_EQ(frames(variable(8, 163, 2, 2), {1, 0}).at(2), "0000000000060203000a0001");
}

TEST_F(WriteFrames, OfMoreWordsThanOneRequestTakesAreSeveralWithTheirOwnValues)
{
    settings.maxBlockCount = 2;
    EXPECT_EQ(frames(variable(9, 5, 3, 1), {0x1111, 0x2222, 0x3333}), (Frames{"00000000000b01100005000204"
                                                                              "11112222",
                                                                              "000000000006010600073333"}));
}

TEST_F(WriteFrames, OfRemoteFramesAreAsLongAsTheControllerTakesThem)
{
    settings.remoteMode = true;
    EXPECT_EQ(frames(variable(9, 5, 1, 1), {0x0301}).size(), 1u);
    EXPECT_EQ(frames(variable(8, 163, 1, 1), {1}).size(), 1u) << "the controller changes the bit itself";
}

TEST_F(WriteFrames, OfMoreRequestsThanTheDriverSendsInARowAreAll)
{
    EXPECT_EQ(frames(variable(2, 0, 12, 1), std::vector<quint32>(12, 1)).size(), 12u);
}

TEST_F(WriteFrames, OfWhatTheDriverBuildsNoFrameForAreNone)
{
    EXPECT_EQ(frames(variable(0, 0, 1, 1), {1}), Frames());
}

} // namespace
