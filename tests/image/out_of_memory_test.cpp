#include "image/extended_variables.h"
#include "tests/driver_fixture.h"
#include "tests/failing_allocation.h"

namespace
{

/// What is left of an entry point's promises when there is no memory: no exception, and no lock kept.
class OutOfMemoryRegisterTest : public DriverTest
{
protected:
    static void ExpectLocksFree()
    {
        ASSERT_TRUE(PLC_driver.listMutex.tryLock());
        PLC_driver.listMutex.unlock();
        ASSERT_TRUE(PLC_driver.imageMutex.tryLock());
        PLC_driver.imageMutex.unlock();
    }

    /// Writes one word while operator new fails from its first call on.
    static void SetWithoutMemory()
    {
        QString name, text = "0";
        QByteArray data = Bytes("34 12");
        {
            AllocationWatch watch(0);
            EXPECT_NO_THROW(SetRegisterData(&name, 9, &text, 1, &data, 1, 0, 0));
        }
        EXPECT_GT(AllocationWatch::count(), 0) << "nothing failed";
    }
};

} // namespace

TEST_F(OutOfMemoryRegisterTest, AQueuedWriteIsNotQueued)
{
    SetWithoutMemory();
    EXPECT_EQ(0, PLC_driver.writeList.size());
    ExpectLocksFree();
}

TEST_F(OutOfMemoryRegisterTest, AWriteToAStationsMemoryMakesNoEntry)
{
    info.hostWriteMode = 0;
    info.multiStation = 1;
    SetWithoutMemory();
    EXPECT_EQ(0, PLC_driver.extendList.size());
    ExpectLocksFree();
}

TEST_F(OutOfMemoryRegisterTest, AReadOfAStationsMemoryMakesNoEntry)
{
    info.multiStation = 1;
    QString text = "0";
    QByteArray out;
    {
        AllocationWatch watch(0);
        EXPECT_NO_THROW(GetRegisterData(0, 9, &text, 1, &out, 1));
    }
    EXPECT_GT(AllocationWatch::count(), 0) << "nothing failed";
    EXPECT_EQ(0, PLC_driver.extendList.size());
    ExpectLocksFree();
}

TEST_F(OutOfMemoryRegisterTest, FindingAnEntryNeedsNoMemory)
{
    for (int address = 0; address < 100; ++address)
        ExtendFindSameVar(1, 9, address);
    {
        AllocationWatch watch(-1);
        ExtendFindSameVar(1, 9, 99);
    }
    EXPECT_EQ(0, AllocationWatch::count());
}
