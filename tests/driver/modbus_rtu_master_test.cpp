// SPDX-License-Identifier: MIT
#include "driver/modbus_rtu_master.h"

#include "driver_fixture.h"

#include <algorithm>
#include <memory>
#include <new>

// A second object is made on the heap: it is 1.4 MB, and PLC_driver has been used by other tests.
namespace
{

template <typename Element, size_t areas>
bool AllZero(const Element (&buffers)[areas][PLC_AREA_ELEMENTS])
{
    const Element* first = &buffers[0][0];
    return std::all_of(first, first + areas * PLC_AREA_ELEMENTS,
                       [](Element element) { return element == 0; });
}

struct Destroy {
    void operator()(Modbus_RTU_Master* driver) const
    {
        driver->~Modbus_RTU_Master();
        ::operator delete(driver);
    }
};

// In memory that held something else: what is 0 afterwards has been set to 0.
Modbus_RTU_Master* MadeInUsedMemory()
{
    void* const memory = ::operator new(sizeof(Modbus_RTU_Master));
    std::fill_n(static_cast<volatile unsigned char*>(memory), sizeof(Modbus_RTU_Master),
                static_cast<unsigned char>(0xA5));
    return new (memory) Modbus_RTU_Master;
}

class DriverObject : public ::testing::Test
{
protected:
    const std::unique_ptr<Modbus_RTU_Master, Destroy> driver{MadeInUsedMemory()};
};

// A non-recursive mutex that is held cannot be taken again, not even by its holder.
bool IsNonRecursive(QMutex& mutex)
{
    QMutexLocker held(&mutex);
    if (!mutex.tryLock())
        return true;
    mutex.unlock();
    return false;
}

} // namespace

TEST_F(DriverObject, StartsWithEmptyLists)
{
    EXPECT_TRUE(driver->readList.isEmpty());
    EXPECT_TRUE(driver->writeList.isEmpty());
    EXPECT_TRUE(driver->onceReadList.isEmpty());
    EXPECT_TRUE(driver->spareList.isEmpty());
    EXPECT_TRUE(driver->protocolList.isEmpty());
    EXPECT_TRUE(driver->extendList.isEmpty());
    EXPECT_TRUE(driver->stationMap.isEmpty());
}

TEST_F(DriverObject, StartsWithoutASettingsBlock)
{
    EXPECT_EQ(nullptr, driver->comInfo);
}

TEST_F(DriverObject, StartsWithoutCallbacks)
{
    EXPECT_EQ(nullptr, driver->onceReadDoneCallback);
    EXPECT_EQ(nullptr, driver->listDoneCallback);
}

TEST_F(DriverObject, StartsOutsideACallAndWithoutAPendingBit)
{
    EXPECT_EQ(0u, driver->communicationTurn);
    EXPECT_FALSE(driver->pendingBit.queued);
    EXPECT_FALSE(driver->pendingBit.hasValue);
    EXPECT_FALSE(driver->pendingBit.on);
}

TEST_F(DriverObject, StartsBeforeTheFirstRequest)
{
    EXPECT_EQ(100, driver->requestKind);
    EXPECT_EQ(0, driver->writeRun);
    EXPECT_EQ(0, driver->onceReadRun);
    EXPECT_EQ(0, driver->readReplyCount);
    EXPECT_EQ(0, driver->lastFailed);
    EXPECT_EQ(0, driver->spareFlag);
}

TEST_F(DriverObject, StartsWithAnEmptyResultRecord)
{
    const RW_VAR& result = driver->retVar;
    EXPECT_TRUE(result.name.isEmpty());
    EXPECT_TRUE(result.name2.isEmpty());
    EXPECT_TRUE(result.data.isEmpty());
    EXPECT_EQ(0, result.hostKey);
    EXPECT_EQ(0, result.result);
    EXPECT_EQ(0, result.station);
}

TEST_F(DriverObject, StartsWithEveryImageCell0)
{
    const auto* const bytes = reinterpret_cast<const unsigned char*>(&driver->image);
    EXPECT_TRUE(
        std::all_of(bytes, bytes + sizeof driver->image, [](unsigned char byte) { return byte == 0; }));
    EXPECT_TRUE(AllZero(driver->image.bitArea));
    EXPECT_TRUE(AllZero(driver->image.wordArea));
    EXPECT_TRUE(std::all_of(driver->image.dwordArea, driver->image.dwordArea + PLC_AREA_ELEMENTS,
                            [](unsigned int element) { return element == 0; }));
}

TEST_F(DriverObject, ImageAreasLieBackToBack)
{
    const auto at = [](const void* part) { return static_cast<const char*>(part); };
    const char* image = at(&driver->image);

    EXPECT_EQ(image, at(driver->image.bitArea[0]));
    EXPECT_EQ(image + 7 * 65535, at(driver->image.bitArea[7]));
    EXPECT_EQ(at(driver->image.wordArea[0]) + 4 * 2 * 65535, at(driver->image.wordArea[4]));
    EXPECT_LT(at(driver->image.wordArea[4]), at(driver->image.dwordArea));
}

TEST_F(DriverObject, HasItsMembersInTheirOrderAndTheImageBeforeWhatItNeedsBesides)
{
    const Modbus_RTU_Master& d = *driver;
    const std::vector<const void*> members = {
        &d.comInfo,          &d.readList,         &d.writeList,
        &d.onceReadList,     &d.spareList,        &d.protocolList,
        &d.extendList,       &d.stationMap,       &d.onceReadDoneCallback,
        &d.listDoneCallback, &d.listMutex,        &d.imageMutex,
        &d.stationMutex,     &d.retVar,           &d.requestKind,
        &d.writeRun,         &d.onceReadRun,      &d.readReplyCount,
        &d.lastFailed,       &d.spareFlag,        &d.image,
        &d.pendingBit,       &d.communicationTurn};

    EXPECT_EQ(static_cast<const void*>(driver.get()), members.front());
    for (std::size_t i = 1; i < members.size(); ++i)
        EXPECT_LT(members[i - 1], members[i]) << "member " << i;
    EXPECT_EQ(1u, sizeof d.lastFailed);
    EXPECT_EQ(static_cast<const unsigned char*>(static_cast<const void*>(&d.lastFailed)) + 1, &d.spareFlag);
}

TEST_F(DriverObject, HasThreeNonRecursiveMutexes)
{
    EXPECT_TRUE(IsNonRecursive(driver->listMutex));
    EXPECT_TRUE(IsNonRecursive(driver->imageMutex));
    EXPECT_TRUE(IsNonRecursive(driver->stationMutex));
}

// Leaks and double frees show under the address sanitizer.
TEST_F(DriverObject, FreesWhatItHolds)
{
    const RW_VAR var = Write(9, 1, 1, "01 02 03");
    Protocol frame = Protocol();
    frame.frame = fromHex("00 01");
    frame.var = var;
    driver->readList.append(var);
    driver->writeList.append(var);
    driver->onceReadList.append(var);
    driver->protocolList.append(frame);
    driver->extendList.append(EXTENDVAR{1, 9, 1, fromHex("01 02")});
    driver->stationMap.insert(1, 0);
    driver->retVar = var;
}
