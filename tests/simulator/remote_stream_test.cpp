// SPDX-License-Identifier: MIT
#include "simulator/remote_stream.h"

#include "simulator/remote_frames.h"

#include <gtest/gtest.h>

namespace
{

using simulator::Bytes;
using simulator::RemoteStream;
using test::fromHex;
using test::remoteRead;
using test::remoteWrite;
using test::toHex;

const char* const readHex = "16 00 00 00 01 00 09 00 00 00 64 00 02 00 00 00 00 00 00 00 00 86";
const char* const writeHex = "18 00 01 00 01 00 09 00 00 00 64 00 01 00 00 00 00 00 00 00 00 34 12 CE";

class RemoteStreamTest : public testing::Test
{
protected:
    void append(const Bytes& bytes) { stream.append(bytes.data(), bytes.size(), now); }
    void passSilence() { now += RemoteStream::frameSilence; }

    std::string next()
    {
        const auto request = stream.next(now);
        return request ? toHex(*request) : "none";
    }

    RemoteStream stream;
    RemoteStream::Time now{};
};

TEST_F(RemoteStreamTest, GivesAReadOnceItIsWhole)
{
    for (const std::uint8_t byte : fromHex(readHex)) {
        EXPECT_EQ(next(), "none");
        append({byte});
    }
    EXPECT_EQ(next(), readHex);
    EXPECT_EQ(next(), "none");
    EXPECT_EQ(stream.silenceAt(), std::nullopt);
}

TEST_F(RemoteStreamTest, GivesAWriteOnceItIsWhole)
{
    for (const std::uint8_t byte : fromHex(writeHex)) {
        EXPECT_EQ(next(), "none");
        append({byte});
    }
    EXPECT_EQ(next(), writeHex);
}

TEST_F(RemoteStreamTest, SeparatesRequestsThatCameTogether)
{
    append(fromHex(std::string(readHex) + " " + writeHex + " " + readHex));
    EXPECT_EQ(next(), readHex);
    EXPECT_EQ(next(), writeHex);
    EXPECT_EQ(next(), readHex);
    EXPECT_EQ(next(), "none");
}

// 272 bytes: the length byte is 16.
TEST_F(RemoteStreamTest, FindsTheEndOfAWriteThatIsLongerThanItsLengthByte)
{
    const Bytes frame = remoteWrite(1, 9, 100, 125, Bytes(250, 7));
    ASSERT_EQ(frame[0], 16);
    append(Bytes(frame.begin(), frame.end() - 1));
    EXPECT_EQ(next(), "none");
    append({frame.back()});
    EXPECT_EQ(next(), toHex(frame));
}

struct LongWrite {
    int area;
    int count;
    std::size_t values;
};

class LongWrites : public testing::TestWithParam<LongWrite>
{
};

// In whatever pieces the bytes come.
TEST_P(LongWrites, AreTakenWhole)
{
    Bytes values(GetParam().values);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<std::uint8_t>(i * 37 % 251);
    Bytes frame = remoteWrite(1, GetParam().area, 100, GetParam().count, values);
    for (const int first : {0, 1, 77, 255}) {
        frame.pop_back();
        frame[21] = static_cast<std::uint8_t>(first);
        frame = test::sealed(frame);
        for (const std::size_t piece : {std::size_t(23), std::size_t(256), std::size_t(4096), frame.size()}) {
            RemoteStream stream;
            std::optional<Bytes> taken;
            for (std::size_t at = 0; at < frame.size(); at += piece) {
                EXPECT_FALSE(taken.has_value()) << "before the end";
                stream.append(frame.data() + at, std::min(piece, frame.size() - at), {});
                taken = stream.next({});
            }
            ASSERT_TRUE(taken.has_value()) << piece;
            EXPECT_EQ(toHex(*taken), toHex(frame));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(RemoteStream, LongWrites,
                         testing::Values(LongWrite{1, 234, 234}, LongWrite{2, 1000, 1000},
                                         LongWrite{8, 300, 300}, LongWrite{9, 128, 256},
                                         LongWrite{9, 125, 250}, LongWrite{13, 500, 1000},
                                         LongWrite{14, 61, 244}, LongWrite{14, 64, 256},
                                         LongWrite{14, 20000, 80000}));

// The first value byte is what the sum of a read with this header would be.
TEST_F(RemoteStreamTest, TellsAWriteOf256BytesFromAReadThoughTheSumOfAReadFits)
{
    Bytes values(256, 9);
    values[0] = remoteRead(1, 9, 100, 128)[21];
    const Bytes frame = remoteWrite(1, 9, 100, 128, values);
    ASSERT_EQ(frame[0], 22);
    append(Bytes(frame.begin(), frame.begin() + 100));
    EXPECT_EQ(next(), "none");
    append(Bytes(frame.begin() + 100, frame.end()));
    EXPECT_EQ(next(), toHex(frame));
}

TEST_F(RemoteStreamTest, TakesAReadOfAsManyElementsAtOnce)
{
    append(remoteRead(1, 9, 100, 128));
    EXPECT_EQ(next(), toHex(remoteRead(1, 9, 100, 128)));
}

TEST_F(RemoteStreamTest, TakesFewerValueBytesThanTheCountNeeds)
{
    const Bytes frame = remoteWrite(1, 9, 100, 10, {1, 2, 3});
    append(frame);
    EXPECT_EQ(next(), toHex(frame));
}

TEST_F(RemoteStreamTest, TakesMoreValueBytesThanTheCountNeeds)
{
    const Bytes frame = remoteWrite(1, 9, 100, 1, Bytes(300, 1));
    append(frame);
    EXPECT_EQ(next(), toHex(frame));
}

TEST_F(RemoteStreamTest, TakesAWriteOfAnUnknownAreaByItsLengthByte)
{
    const Bytes frame = remoteWrite(1, 15, 100, 1, {1, 2});
    append(frame);
    EXPECT_EQ(next(), toHex(frame));
}

// 256 bytes less than area and count need, so the length byte agrees with both sizes.
TEST_F(RemoteStreamTest, TakesAShorterWriteAfterSilence)
{
    const Bytes frame = remoteWrite(1, 9, 100, 138, Bytes(20, 1));
    append(frame);
    EXPECT_EQ(next(), "none");
    passSilence();
    EXPECT_EQ(next(), toHex(frame));
    EXPECT_EQ(stream.badFrames(), 0u);
}

class BadRemoteFrame : public RemoteStreamTest, public testing::WithParamInterface<const char*>
{
};

TEST_P(BadRemoteFrame, IsCountedOnceAfterSilenceAndTheNextIsTaken)
{
    append(fromHex(GetParam()));
    EXPECT_EQ(next(), "none");
    EXPECT_EQ(stream.badFrames(), 0u);
    ASSERT_EQ(stream.silenceAt(), now + RemoteStream::frameSilence);
    passSilence();
    EXPECT_EQ(next(), "none");
    EXPECT_EQ(stream.badFrames(), 1u);
    EXPECT_EQ(stream.silenceAt(), std::nullopt);
    append(fromHex(readHex));
    EXPECT_EQ(next(), readHex);
    EXPECT_EQ(stream.badFrames(), 1u);
}

INSTANTIATE_TEST_SUITE_P(
    RemoteStream, BadRemoteFrame,
    testing::Values(
        "16 00 00 00 01 00 09 00 00 00 64 00 02 00 00 00 00 00 00 00 00 87", // sum
        "17 00 00 00 01 00 09 00 00 00 64 00 02 00 00 00 00 00 00 00 00 87", // length, sum fits it
        "15 00 00 00 01 00 09 00 00 00 64 00 02 00 00 00 00 00 00 00 00 85",
        "18 00 01 00 01 00 09 00 00 00 64 00 01 00 00 00 00 00 00 00 00 34 13 CE", // value
        "16 00 00",                                                                // cut
        "00", "FF"));

TEST_F(RemoteStreamTest, WaitsOnWhileBytesKeepComing)
{
    for (const std::uint8_t byte : fromHex(readHex)) {
        append({byte});
        now += RemoteStream::frameSilence / 2;
        if (byte != 0x86) {
            EXPECT_EQ(next(), "none");
        }
    }
    EXPECT_EQ(next(), readHex);
    EXPECT_EQ(stream.badFrames(), 0u);
}

TEST_F(RemoteStreamTest, DoesNotCollectWithoutEnd)
{
    for (int i = 0; i < 300; ++i) {
        append(Bytes(1000, 0x55)); // a length byte of 0x55, sums that seldom fit
        next();
    }
    EXPECT_GT(stream.badFrames(), 0u);
}

} // namespace
