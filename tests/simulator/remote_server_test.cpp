// SPDX-License-Identifier: MIT
#include "simulator/remote_server.h"

#include "simulator/remote_frames.h"

#include <gmock/gmock.h>

namespace
{

using simulator::Bytes;
using simulator::ControllerMemory;
using simulator::RemoteServer;
using test::remoteRead;
using test::remoteWrite;
using test::toHex;
using testing::IsEmpty;

constexpr int silentUnit = 5;

class RemoteServerTest : public testing::Test
{
protected:
    std::string read(int area, int element, int count, int station = 1)
    {
        return toHex(server.answer(remoteRead(station, area, element, count)));
    }
    std::string write(int area, int element, int count, const Bytes& values, int station = 1)
    {
        return toHex(server.answer(remoteWrite(station, area, element, count, values)));
    }

    ControllerMemory memory;
    RemoteServer server{memory, {{100, 199}}, [](int unit) { return unit != silentUnit; }};
};

TEST_F(RemoteServerTest, ReadsBitsPackedFromTheLowest)
{
    memory.setCoil(1, 0xFC05, true);
    memory.setCoil(1, 0xFC0E, true);
    EXPECT_EQ(read(1, 5, 10), "00 00 00 00 00 05 01 01 02 01 02");
}

TEST_F(RemoteServerTest, ReadsRegistersHighByteFirst)
{
    memory.setHoldingRegister(1, 0x3003, 0x1234);
    memory.setHoldingRegister(1, 0x3004, 0xABCD);
    EXPECT_EQ(read(10, 3, 2), "00 00 00 00 00 07 01 0A 04 12 34 AB CD");
}

TEST_F(RemoteServerTest, ReadsDoubleWordsLowHalfFirstAndOneLessThanTheCount)
{
    memory.setHoldingRegister(1, 0xF706, 0x5678);
    memory.setHoldingRegister(1, 0xF707, 0x1234);
    memory.setHoldingRegister(1, 0xF708, 0x0001);
    EXPECT_EQ(read(14, 3, 2), "00 00 00 00 00 07 01 0E 04 56 78 12 34");
    EXPECT_EQ(read(14, 3, 3), "00 00 00 00 00 0B 01 0E 08 56 78 12 34 00 01 00 00");
}

TEST_F(RemoteServerTest, ReadsOneDoubleWordForACountOf0Or1)
{
    memory.setHoldingRegister(1, 0xF706, 0x5678);
    for (const int count : {0, 1})
        EXPECT_EQ(read(14, 3, count), "00 00 00 00 00 07 01 0E 04 56 78 00 00") << count;
}

TEST_F(RemoteServerTest, ReadsNoElementsAsNoData)
{
    EXPECT_EQ(read(9, 3, 0), "00 00 00 00 00 03 01 09 00");
}

TEST_F(RemoteServerTest, GivesMoreDataThanItsByteCountCanSay)
{
    const Bytes reply = server.answer(remoteRead(1, 9, 1000, 300));
    ASSERT_EQ(reply.size(), 609u);
    EXPECT_EQ(toHex({reply.begin(), reply.begin() + 9}), "00 00 00 00 02 5B 01 09 58");
}

struct Area {
    int code;
    int base;
};

constexpr Area bitAreas[] = {{0, 0xF800}, {1, 0xFC00}, {2, 0x0000}, {3, 0x2400},
                             {4, 0xE000}, {5, 0xF000}, {6, 0xF400}, {7, 0x1F40}};
constexpr Area wordAreas[] = {{9, 0x0000}, {10, 0x3000}, {11, 0x2400}, {12, 0xF000}, {13, 0xF400}};

TEST_F(RemoteServerTest, ServesEachBitAreaFromItsBase)
{
    for (const Area& area : bitAreas) {
        SCOPED_TRACE(area.code);
        EXPECT_EQ(write(area.code, 700, 3, {1, 0, 1}).size(), 3u * 12 - 1);
        EXPECT_TRUE(memory.coil(1, area.base + 700));
        EXPECT_FALSE(memory.coil(1, area.base + 701));
        EXPECT_TRUE(memory.coil(1, area.base + 702));
        EXPECT_EQ(read(area.code, 700, 3).substr(24), "01 05");
    }
}

TEST_F(RemoteServerTest, ServesEachWordAreaFromItsBase)
{
    for (const Area& area : wordAreas) {
        SCOPED_TRACE(area.code);
        write(area.code, 700, 2, {0x34, 0x12, 0xCD, 0xAB});
        EXPECT_EQ(memory.holdingRegister(1, area.base + 700), 0x1234);
        EXPECT_EQ(memory.holdingRegister(1, area.base + 701), 0xABCD);
        EXPECT_EQ(read(area.code, 700, 2).substr(24), "04 12 34 AB CD");
    }
}

TEST_F(RemoteServerTest, AnswersAWriteWithTwelveBytes)
{
    EXPECT_EQ(write(9, 0x10203, 1, {1, 0}), ""); // outside the area
    EXPECT_EQ(write(9, 0x0203, 1, {1, 0}), "00 00 00 00 00 06 01 09 02 03 00 01");
}

TEST_F(RemoteServerTest, WritesDoubleWordsLowHalfToTheLowerRegister)
{
    write(14, 3, 2, {0x78, 0x56, 0x34, 0x12, 1, 0, 2, 0});
    EXPECT_EQ(memory.holdingRegister(1, 0xF706), 0x5678);
    EXPECT_EQ(memory.holdingRegister(1, 0xF707), 0x1234);
    EXPECT_EQ(memory.holdingRegister(1, 0xF708), 1);
    EXPECT_EQ(memory.holdingRegister(1, 0xF709), 2);
}

TEST_F(RemoteServerTest, WritesABitOfAWordAndLeavesTheOthers)
{
    memory.setHoldingRegister(1, 2, 0xFF00);
    EXPECT_EQ(write(8, 35, 1, {1}), "00 00 00 00 00 06 01 08 00 23 00 01");
    EXPECT_EQ(memory.holdingRegister(1, 2), 0xFF08);
    write(8, 47, 1, {0});
    EXPECT_EQ(memory.holdingRegister(1, 2), 0x7F08);
}

TEST_F(RemoteServerTest, WritesBitsOfWordsAcrossAWordsEnd)
{
    write(8, 31, 2, {1, 1});
    EXPECT_EQ(memory.holdingRegister(1, 1), 0x8000);
    EXPECT_EQ(memory.holdingRegister(1, 2), 0x0001);
}

TEST_F(RemoteServerTest, TakesTheLowestBitOfAByteForABit)
{
    write(2, 700, 3, {5, 2, 0xFF});
    EXPECT_TRUE(memory.coil(1, 700));
    EXPECT_FALSE(memory.coil(1, 701));
    EXPECT_TRUE(memory.coil(1, 702));
}

TEST_F(RemoteServerTest, WritesOnlyElementsWhoseBytesAreAllThere)
{
    memory.setHoldingRegister(1, 701, 0x7777);
    EXPECT_NE(write(9, 700, 2, {1, 2, 3}), "");
    EXPECT_EQ(memory.holdingRegister(1, 700), 0x0201);
    EXPECT_EQ(memory.holdingRegister(1, 701), 0x7777);
}

TEST_F(RemoteServerTest, IgnoresBytesBeyondTheCount)
{
    write(9, 700, 1, {1, 2, 3, 4});
    EXPECT_EQ(memory.holdingRegister(1, 700), 0x0201);
    EXPECT_EQ(memory.holdingRegister(1, 701), 0);
}

TEST_F(RemoteServerTest, AddressesWrapBehindTheLastRegister)
{
    write(13, 0x0C00, 1, {1, 2});
    EXPECT_EQ(memory.holdingRegister(1, 0), 0x0201);
    write(14, 0x0900, 1, {1, 0, 2, 0});
    EXPECT_EQ(memory.holdingRegister(1, 0x0900), 1);
    EXPECT_EQ(memory.holdingRegister(1, 0x0901), 2);
}

TEST_F(RemoteServerTest, KeepsStationsApart)
{
    write(9, 700, 1, {1, 0}, 1);
    write(9, 700, 1, {2, 0}, 255);
    EXPECT_EQ(read(9, 700, 1, 1), "00 00 00 00 00 05 01 09 02 00 01");
    EXPECT_EQ(read(9, 700, 1, 255), "00 00 00 00 00 05 FF 09 02 00 02");
}

TEST_F(RemoteServerTest, ExecutesAWriteToStation0OnEveryUnitAndAnswersNothing)
{
    memory.setCoil(1, 0, true);
    memory.setCoil(silentUnit, 0, true);
    memory.setCoil(9, 0, true);
    EXPECT_EQ(write(9, 700, 1, {1, 2}, 0), "");
    EXPECT_EQ(memory.holdingRegister(1, 700), 0x0201);
    EXPECT_EQ(memory.holdingRegister(9, 700), 0x0201);
    EXPECT_EQ(memory.holdingRegister(silentUnit, 700), 0);
    EXPECT_THAT(memory.units(), testing::ElementsAre(1, silentUnit, 9));
}

TEST_F(RemoteServerTest, AnswersNoReadOfStation0)
{
    memory.setHoldingRegister(1, 700, 1);
    EXPECT_EQ(read(9, 700, 1, 0), "");
}

TEST_F(RemoteServerTest, AnswersNoUnitThatIsOff)
{
    EXPECT_EQ(read(9, 700, 1, silentUnit), "");
    EXPECT_EQ(write(9, 700, 1, {1, 0}, silentUnit), "");
    EXPECT_THAT(memory.values(), IsEmpty());
}

TEST_F(RemoteServerTest, AnswersNoReadOfBitsInWords)
{
    EXPECT_EQ(read(8, 700, 1), "");
}

struct Unserved {
    int area;
    int element;
    int count;
};

class UnservedElements : public RemoteServerTest, public testing::WithParamInterface<Unserved>
{
};

TEST_P(UnservedElements, AreNeitherReadNorWritten)
{
    const Unserved& p = GetParam();
    EXPECT_EQ(read(p.area, p.element, p.area == 14 ? p.count + 1 : p.count), "");
    EXPECT_EQ(write(p.area, p.element, p.count, Bytes(4 * static_cast<std::size_t>(p.count), 1)), "");
    EXPECT_THAT(memory.values(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(RemoteServer, UnservedElements,
                         testing::Values(Unserved{15, 0, 1}, Unserved{0x8009, 0, 1}, Unserved{9, -1, 1},
                                         Unserved{9, 65535, 1}, Unserved{9, 65534, 2}, Unserved{2, 65530, 6},
                                         Unserved{14, 65534, 2}, Unserved{9, 0x7FFFFFFF, 1},
                                         Unserved{8, 65535 * 16, 1},              // bits of words
                                         Unserved{9, 99, 2}, Unserved{9, 199, 1}, // refused
                                         Unserved{8, 100 * 16, 1}, Unserved{14, 0x04B2, 1}));

TEST_F(RemoteServerTest, ServesTheLastElements)
{
    EXPECT_NE(read(9, 65534, 1), "");
    EXPECT_NE(read(14, 65534, 2), "");
    EXPECT_NE(write(8, 65535 * 16 - 1, 1, {1}), "");
    EXPECT_EQ(memory.holdingRegister(1, 65534), 0x8000);
}

TEST(RemoteHoles, AreThereForOneUnitAndOneKindOnly)
{
    ControllerMemory memory;
    RemoteServer server(memory, {{100, 199, 2, simulator::MemoryValue::Register}}, [](int) { return true; });
    EXPECT_THAT(server.answer(remoteRead(2, 9, 100, 1)), IsEmpty());
    EXPECT_THAT(server.answer(remoteRead(1, 9, 100, 1)), testing::Not(IsEmpty()));
    EXPECT_THAT(server.answer(remoteRead(2, 2, 100, 1)), testing::Not(IsEmpty()));
}

TEST(RemoteHoles, KeepABroadcastFromTheirUnitAlone)
{
    ControllerMemory memory;
    memory.setCoil(1, 0, true);
    memory.setCoil(2, 0, true);
    RemoteServer server(memory, {{100, 199, 2}}, [](int) { return true; });
    server.answer(remoteWrite(0, 9, 100, 1, {7, 0}));
    EXPECT_EQ(memory.holdingRegister(1, 100), 7);
    EXPECT_EQ(memory.holdingRegister(2, 100), 0);
}

class RemoteMovingValues : public testing::Test
{
protected:
    using MovingValue = simulator::MovingValue;

    std::string read(int area, int element, int count)
    {
        return toHex(server.answer(remoteRead(1, area, element, count)));
    }

    std::int64_t now = 0;
    ControllerMemory memory{1, [this] { return now; }};
    RemoteServer server{memory, {}, [](int) { return true; }};
};

TEST_F(RemoteMovingValues, AreReadAsTheyAreNow)
{
    memory.move({1, 0xF706, {MovingValue::Counter, MovingValue::DoubleWord, 0x10000, 0x1FFFF, 10}});
    memory.move({1, 5, {MovingValue::Counter, MovingValue::Bit, 0, 1, 10}});
    now = 70;
    EXPECT_EQ(read(14, 3, 2), "00 00 00 00 00 07 01 0E 04 00 07 00 01");
    EXPECT_EQ(read(2, 5, 1), "00 00 00 00 00 04 01 02 01 01");
}

TEST_F(RemoteMovingValues, StayAsTheyWereWritten)
{
    memory.move({1, 700, {MovingValue::Counter, MovingValue::Word, 5, 65535, 10}});
    server.answer(remoteWrite(1, 8, 16 * 700, 1, {0})); // bit 0 of a word that is 5
    now = 70;
    EXPECT_EQ(memory.holdingRegister(1, 700), 4);
}

} // namespace
