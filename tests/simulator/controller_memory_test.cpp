// SPDX-License-Identifier: MIT
#include "simulator/controller_memory.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <thread>

namespace
{

using simulator::ControllerMemory;
using simulator::MemoryValue;
using simulator::MovingValue;
using testing::ElementsAre;

TEST(ControllerMemory, IsAllZeroAtFirst)
{
    const ControllerMemory memory;
    EXPECT_FALSE(memory.coil(1, 0));
    EXPECT_EQ(memory.holdingRegister(255, 65535), 0);
}

TEST(ControllerMemory, KeepsCoilsAndRegistersApart)
{
    ControllerMemory memory;
    memory.setCoil(1, 100, true);
    memory.setHoldingRegister(1, 101, 0xABCD);
    EXPECT_TRUE(memory.coil(1, 100));
    EXPECT_EQ(memory.holdingRegister(1, 100), 0);
    EXPECT_FALSE(memory.coil(1, 101));
    EXPECT_EQ(memory.holdingRegister(1, 101), 0xABCD);
}

TEST(ControllerMemory, KeepsUnitsApart)
{
    ControllerMemory memory;
    memory.setHoldingRegister(1, 7, 11);
    memory.setHoldingRegister(2, 7, 22);
    EXPECT_EQ(memory.holdingRegister(1, 7), 11);
    EXPECT_EQ(memory.holdingRegister(2, 7), 22);
    EXPECT_EQ(memory.holdingRegister(3, 7), 0);
}

TEST(ControllerMemory, ReachesTheFirstAndTheLastAddress)
{
    ControllerMemory memory;
    for (const int address : {0, 65535}) {
        memory.setCoil(1, address, true);
        memory.setHoldingRegister(1, address, 5);
        EXPECT_TRUE(memory.coil(1, address));
        EXPECT_EQ(memory.holdingRegister(1, address), 5);
    }
}

TEST(ControllerMemory, RefusesUnitsAndAddressesThatDoNotExist)
{
    ControllerMemory memory;
    EXPECT_THROW(memory.coil(0, 0), std::out_of_range);
    EXPECT_THROW(memory.setCoil(256, 0, true), std::out_of_range);
    EXPECT_THROW(memory.holdingRegister(1, -1), std::out_of_range);
    EXPECT_THROW(memory.setHoldingRegister(1, 65536, 1), std::out_of_range);
    EXPECT_THROW(memory.use(0, [](ControllerMemory::Unit&) {}), std::out_of_range);
    EXPECT_THAT(memory.units(), ElementsAre());
}

TEST(ControllerMemory, CreatesAUnitWhenItIsWrittenOrUsedButNotWhenLookedAt)
{
    ControllerMemory memory;
    memory.coil(1, 0);
    memory.setCoil(5, 0, false);
    memory.use(3, [](ControllerMemory::Unit&) {});
    EXPECT_THAT(memory.units(), ElementsAre(3, 5));
}

TEST(ControllerMemory, ListsWhatIsNotZeroInOrder)
{
    ControllerMemory memory;
    const MemoryValue coil{2, MemoryValue::Coil, 9, 1};
    const MemoryValue low{2, MemoryValue::Register, 3, 30};
    const MemoryValue high{2, MemoryValue::Register, 65535, 0xFFFF};
    const MemoryValue otherUnit{1, MemoryValue::Register, 4, 40};
    for (const MemoryValue& value : {high, low, coil, otherUnit})
        memory.set(value);
    memory.set({2, MemoryValue::Register, 8, 0});
    EXPECT_THAT(memory.values(), ElementsAre(otherUnit, coil, low, high));
}

TEST(ControllerMemory, LosesNothingWhenSeveralThreadsWrite)
{
    ControllerMemory memory;
    const auto writeFrom = [&memory](int first) {
        for (int address = first; address < first + 1000; ++address)
            memory.setHoldingRegister(1, address, 1);
    };
    std::thread one(writeFrom, 0);
    std::thread two(writeFrom, 1000);
    one.join();
    two.join();
    EXPECT_EQ(memory.values().size(), 2000u);
}

class MovingMemory : public testing::Test
{
protected:
    std::int64_t now = 0;
    ControllerMemory memory{1, [this] { return now; }};
};

constexpr MovingValue countingUp{MovingValue::Counter, MovingValue::Word, 0, 65535, 10};

TEST_F(MovingMemory, ShowsAValueAsItIsWhenItIsLookedAt)
{
    memory.move({1, 100, countingUp});
    EXPECT_EQ(memory.holdingRegister(1, 100), 0);
    now = 50;
    EXPECT_EQ(memory.holdingRegister(1, 100), 5);
    EXPECT_THAT(memory.values(), ElementsAre(MemoryValue{1, MemoryValue::Register, 100, 5}));
}

TEST_F(MovingMemory, MovesCoils)
{
    memory.move({1, 100, {MovingValue::Counter, MovingValue::Bit, 0, 1, 10}});
    EXPECT_FALSE(memory.coil(1, 100));
    now = 10;
    EXPECT_TRUE(memory.coil(1, 100));
    EXPECT_EQ(memory.holdingRegister(1, 100), 0);
}

TEST_F(MovingMemory, StoresADoubleWordLowHalfFirst)
{
    now = 10;
    memory.move({1, 100, {MovingValue::Counter, MovingValue::DoubleWord, 0x1234FFFF, 0x7FFFFFFF, 10}});
    EXPECT_EQ(memory.holdingRegister(1, 101), 0x1235);
    EXPECT_EQ(memory.holdingRegister(1, 100), 0x0000);
}

TEST_F(MovingMemory, StoresNegativeValuesAsTwosComplement)
{
    memory.move({1, 100, {MovingValue::Counter, MovingValue::Word, -2, 0, 10}});
    memory.move({1, 200, {MovingValue::Counter, MovingValue::DoubleWord, -2, 0, 10}});
    EXPECT_EQ(memory.holdingRegister(1, 100), 0xFFFE);
    EXPECT_EQ(memory.holdingRegister(1, 200), 0xFFFE);
    EXPECT_EQ(memory.holdingRegister(1, 201), 0xFFFF);
}

TEST_F(MovingMemory, KeepsWhatIsWritten)
{
    memory.move({1, 100, countingUp});
    memory.setHoldingRegister(1, 100, 77);
    now = 50;
    EXPECT_EQ(memory.holdingRegister(1, 100), 77);
}

TEST_F(MovingMemory, StopsADoubleWordOfWhichHalfIsWritten)
{
    memory.move({1, 100, {MovingValue::Counter, MovingValue::DoubleWord, 0x10005, 0x1FFFF, 10}});
    memory.setHoldingRegister(1, 101, 9);
    now = 50;
    EXPECT_EQ(memory.holdingRegister(1, 100), 5);
    EXPECT_EQ(memory.holdingRegister(1, 101), 9);
}

TEST_F(MovingMemory, GivesRandomValuesOfTwoPlacesEachTheirOwn)
{
    const MovingValue random{MovingValue::Random, MovingValue::Word, 0, 65535, 10};
    memory.move({1, 100, random});
    memory.move({1, 101, random});
    memory.move({2, 100, random});
    EXPECT_NE(memory.holdingRegister(1, 100), memory.holdingRegister(1, 101));
    EXPECT_NE(memory.holdingRegister(1, 100), memory.holdingRegister(2, 100));
}

TEST_F(MovingMemory, GivesTheSameRandomValuesForTheSameSeed)
{
    const MovingValue random{MovingValue::Random, MovingValue::Word, 0, 65535, 10};
    ControllerMemory same{1, [] { return 0; }};
    ControllerMemory other{2, [] { return 0; }};
    for (ControllerMemory* each : {&memory, &same, &other})
        each->move({1, 100, random});
    EXPECT_EQ(memory.holdingRegister(1, 100), same.holdingRegister(1, 100));
    EXPECT_NE(memory.holdingRegister(1, 100), other.holdingRegister(1, 100));
}

TEST_F(MovingMemory, RefusesWhatHasNoPlaceOrDoesNotFit)
{
    EXPECT_THROW(memory.move({0, 100, countingUp}), std::out_of_range);
    EXPECT_THROW(memory.move({1, 65535, {MovingValue::Ramp, MovingValue::DoubleWord, 0, 9, 10}}),
                 std::out_of_range);
    EXPECT_THROW(memory.move({1, 1, {MovingValue::Ramp, MovingValue::Word, 0, 65536, 10}}),
                 std::invalid_argument);
    EXPECT_THROW(memory.move({1, 1, {MovingValue::Ramp, MovingValue::Word, 9, 0, 10}}),
                 std::invalid_argument);
    EXPECT_THROW(memory.move({1, 1, {MovingValue::Ramp, MovingValue::Bit, -1, 1, 10}}),
                 std::invalid_argument);
    EXPECT_THROW(memory.move({1, 1, {MovingValue::Ramp, MovingValue::Word, 0, 9, 0}}), std::invalid_argument);
}

TEST(ControllerMemory, LetsTimeBeginWhenItIsMade)
{
    ControllerMemory memory;
    memory.move({1, 100, {MovingValue::Ramp, MovingValue::Word, 0, 65535, 86400000}});
    EXPECT_LT(memory.holdingRegister(1, 100), 100); // two minutes
}

} // namespace
