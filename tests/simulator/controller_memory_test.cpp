#include "simulator/controller_memory.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <thread>

namespace
{

using simulator::ControllerMemory;
using simulator::MemoryValue;
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

} // namespace
