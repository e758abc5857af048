#include "tests/driver_fixture.h"
#include "tests/failing_allocation.h"

namespace
{

/// What is left of an entry point's promises when there is no memory: no exception, and no lock kept.
class OutOfMemoryAddingTest : public DriverTest
{
protected:
    template <typename Call>
    static void ExpectSurvived(int failing, Call call)
    {
        SCOPED_TRACE("operator new fails from call " + std::to_string(failing) + " on");
        {
            AllocationWatch watch(failing);
            EXPECT_NO_THROW(call());
        }
        EXPECT_GT(AllocationWatch::count(), failing) << "nothing failed";
        ASSERT_TRUE(PLC_driver.listMutex.tryLock());
        PLC_driver.listMutex.unlock();
    }
};

} // namespace

TEST_F(OutOfMemoryAddingTest, AReadThatFindsNoMemoryIsNotQueued)
{
    RW_VAR var = Variable(9, 0, 1);
    ExpectSurvived(0, [&] { AddListReadVar(&var); });
    EXPECT_EQ(0, PLC_driver.readList.size());
    EXPECT_EQ(1, AddListReadVar(&var));
}

TEST_F(OutOfMemoryAddingTest, AWriteThatFindsNoMemoryIsNotQueued)
{
    for (int direct : {0, 1}) {
        SCOPED_TRACE(direct);
        PLC_driver.writeList.clear();
        RW_VAR var = Write(9, 0, 1, "01 00");
        ExpectSurvived(0, [&] { AddListWriteVar(&var, direct); });
        EXPECT_EQ(0, PLC_driver.writeList.size());
        EXPECT_EQ(1, AddListWriteVar(&var, direct));
    }
}

TEST_F(OutOfMemoryAddingTest, AOneShotReadThatFindsNoMemoryIsNotQueued)
{
    for (int direct : {0, 1}) {
        SCOPED_TRACE(direct);
        PLC_driver.onceReadList.clear();
        RW_VAR var = Variable(9, 0, 1);
        var.name2 = "0";
        ExpectSurvived(0, [&] { AddListOnceReadVar(&var, direct); });
        EXPECT_EQ(0, PLC_driver.onceReadList.size());
        EXPECT_EQ(1, AddListOnceReadVar(&var, direct));
    }
}

TEST_F(OutOfMemoryAddingTest, PiecesQueuedBeforeMemoryRanOutStay)
{
    RW_VAR var = Variable(9, 0, 250);
    var.name2 = "0";
    ExpectSurvived(1, [&] { AddListOnceReadVar(&var, 0); });
    ASSERT_EQ(1, PLC_driver.onceReadList.size());
    EXPECT_EQ(100, PLC_driver.onceReadList.at(0).count);
}
