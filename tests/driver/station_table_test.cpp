// SPDX-License-Identifier: MIT
#include "driver/station_table.h"

#include "driver_fixture.h"

namespace
{

class StationTable : public DriverTest
{
protected:
    static QList<int> switchedOff() { return PLC_driver.stationMap.keys(); }
};

} // namespace

TEST_F(StationTable, NoStationIsSwitchedOffAtFirst)
{
    for (int station : {-1, 0, 1, 2, 255, 2147483647})
        EXPECT_EQ(0, Ethernetcontains(station)) << station;
}

TEST_F(StationTable, Flag0SwitchesOffAndContainsSaysSo)
{
    EnCommStation(3, 0);

    EXPECT_EQ(1, Ethernetcontains(3));
    EXPECT_EQ(0, Ethernetcontains(2));
    EXPECT_EQ(0, Ethernetcontains(4));
}

TEST_F(StationTable, Flag0TwiceLeavesOneKeyThatFlag1Removes)
{
    EnCommStation(3, 0);
    EnCommStation(3, 0);
    EXPECT_EQ(QList<int>{3}, switchedOff());
    EXPECT_EQ(0, PLC_driver.stationMap.value(3, -1));

    EnCommStation(3, 1);
    EXPECT_TRUE(switchedOff().isEmpty());
}

TEST_F(StationTable, Flag0PutsTheValueOfAPresentKeyBackTo0)
{
    PLC_driver.stationMap.insert(3, 42);

    EnCommStation(3, 0);

    EXPECT_EQ(0, PLC_driver.stationMap.value(3, -1));
}

TEST_F(StationTable, Flag1OfAStationThatIsOnDoesNothing)
{
    EnCommStation(3, 0);

    EnCommStation(4, 1);

    EXPECT_EQ(QList<int>{3}, switchedOff());
}

TEST_F(StationTable, AnyOtherFlagChangesNothing)
{
    EnCommStation(3, 0);
    for (int flag : {2, -1, 256, 2147483647}) {
        EnCommStation(3, flag);
        EnCommStation(4, flag);
        EXPECT_EQ(QList<int>{3}, switchedOff()) << flag;
    }
}

TEST_F(StationTable, Station0CanBeSwitchedOff)
{
    EnCommStation(0, 0);

    EXPECT_EQ(1, Ethernetcontains(0));
}

TEST_F(StationTable, ANegativeStationSwitchesEveryStationOnWhateverTheFlag)
{
    for (const std::pair<int, int>& call : {std::pair<int, int>{-1, 1}, {-5, 0}, {-1, 7}, {-2147483647, 0}}) {
        EnCommStation(1, 0);
        EnCommStation(2, 0);
        EnCommStation(call.first, call.second);
        EXPECT_TRUE(switchedOff().isEmpty()) << call.first << ", " << call.second;
    }
}

// The scheduler asks with the list lock held, and runtimes switch stations at any time: a station call that
// took a second lock would hang here.
TEST_F(StationTable, TakesNoLockButItsOwn)
{
    QMutexLocker list(&PLC_driver.listMutex);
    QMutexLocker image(&PLC_driver.imageMutex);

    EnCommStation(3, 0);

    EXPECT_EQ(1, Ethernetcontains(3));
}

TEST_F(StationTable, LeavesItsLockFree)
{
    EnCommStation(3, 0);
    Ethernetcontains(3);
    EnCommStation(-1, 0);

    ASSERT_TRUE(PLC_driver.stationMutex.tryLock());
    PLC_driver.stationMutex.unlock();
}
