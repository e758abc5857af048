// SPDX-License-Identifier: MIT
#include "cycle.h"

namespace
{

class Scheduler : public CycleTest
{
};

} // namespace

// Nothing to send, and a frame that is still out.

TEST_F(Scheduler, WithAllListsEmptyReturnsNullAndSetsCycleDone)
{
    EXPECT_EQ(nullptr, ComCommunication());
    EXPECT_EQ(1, info.cycleDone);
    EXPECT_EQ(100, PLC_driver.requestKind);
}

TEST_F(Scheduler, ReturnsTheHeadOfTheFramesItself)
{
    queueReadOf(1, 5);

    const Protocol* next = ComCommunication();

    ASSERT_NE(nullptr, next);
    EXPECT_EQ(&PLC_driver.protocolList.first(), next);
}

TEST_F(Scheduler, HandsAPendingFrameOutAgainEvenWhenWritesAreQueuedMeanwhile)
{
    queueReadOf(1, 5);
    const Protocol* first = ComCommunication();
    queueWriteOf(1, 6);

    EXPECT_EQ(first, ComCommunication());
    EXPECT_EQ(first, ComCommunication());
    EXPECT_EQ(1, frameCount());
    EXPECT_EQ("00 00 00 00 00 06 01 03 00 05 00 01", toHex(first->frame));
    EXPECT_TRUE(listDoneCalls().empty());

    goodReply();
    EXPECT_EQ(6, pollKey());
}

// Another thread may hold the list lock for long; the frame that is out needs no list.
TEST_F(Scheduler, HandsAPendingFrameOutWithoutTheListLock)
{
    queueReadOf(1, 5);
    const Protocol* first = ComCommunication();
    QMutexLocker held(&PLC_driver.listMutex);

    EXPECT_EQ(first, ComCommunication());
}

TEST_F(Scheduler, LeavesTheListLockFree)
{
    const auto isFree = [] {
        if (!PLC_driver.listMutex.tryLock())
            return false;
        PLC_driver.listMutex.unlock();
        return true;
    };
    poll();
    EXPECT_TRUE(isFree()) << "nothing to send";
    queueWriteOf(2, 1);
    EnCommStation(2, 0);
    poll();
    EXPECT_TRUE(isFree()) << "write discarded";
    queueOnceOf(2, 1);
    poll();
    EXPECT_TRUE(isFree()) << "one-shot read discarded";
    queueReadOf(2, 1);
    poll();
    EXPECT_TRUE(isFree()) << "every station off";
    queueReadOf(1, 2);
    EXPECT_EQ(2, pollKey());
    EXPECT_TRUE(isFree()) << "frame built";
}

TEST_F(Scheduler, ARequestStaysAtTheHeadOfItsListUntilItsReply)
{
    queueReadOf(1, 1);
    queueReadOf(1, 2);
    poll();

    EXPECT_EQ((Keys{1, 2}), keys(PLC_driver.readList));
    goodReply();
    EXPECT_EQ((Keys{2, 1}), keys(PLC_driver.readList));
}

// Which list gets the turn.

TEST_F(Scheduler, TakesWritesThenOneShotReadsThenCyclicReads)
{
    queueReadOf(1, 1);
    queueOnceOf(1, 2);
    queueWriteOf(1, 3);

    EXPECT_EQ((Keys{3, 2, 1}), cycles(3));
}

TEST_F(Scheduler, NotesWhichListTheRequestCameFrom)
{
    queueReadOf(1, 1);
    queueOnceOf(1, 2);
    queueWriteOf(1, 3);

    cycle();
    EXPECT_EQ(1, PLC_driver.requestKind);
    cycle();
    EXPECT_EQ(2, PLC_driver.requestKind);
    cycle();
    EXPECT_EQ(0, PLC_driver.requestKind);
}

TEST_F(Scheduler, SixWritesAndNoReadsGoFiveThenNothingThenTheSixth)
{
    for (int key = 11; key <= 16; ++key)
        queueWriteOf(1, key);

    EXPECT_EQ((Keys{11, 12, 13, 14, 15}), cycles(5));
    EXPECT_EQ(5, PLC_driver.writeRun);
    info.cycleDone = 0;
    EXPECT_EQ(nullptr, ComCommunication());
    EXPECT_EQ(1, info.cycleDone);
    EXPECT_EQ(0, PLC_driver.writeRun);
    EXPECT_EQ(16, cycle());
}

TEST_F(Scheduler, SixOneShotReadsAndNothingElseGoFiveThenNothingThenTheSixth)
{
    for (int key = 11; key <= 16; ++key)
        queueOnceOf(1, key);

    EXPECT_EQ((Keys{11, 12, 13, 14, 15, -1, 16}), cycles(7));
}

TEST_F(Scheduler, FiveWritesFiveOneShotReadsOneCyclicReadAndAgain)
{
    for (int i = 0; i < 12; ++i) {
        queueWriteOf(1, 100 + i);
        queueOnceOf(1, 200 + i);
    }
    queueReadOf(1, 301);
    queueReadOf(1, 302);

    EXPECT_EQ((Keys{100, 101, 102, 103, 104, 200, 201, 202, 203, 204, 301}), cycles(11));
    EXPECT_EQ((Keys{105, 106, 107, 108, 109, 205, 206, 207, 208, 209, 302}), cycles(11));
    EXPECT_EQ((Keys{110, 111, 210, 211, 301, 302, 301}), cycles(7));
}

TEST_F(Scheduler, ACappedWriteTurnWithNoOneShotReadsGivesTheTurnToACyclicRead)
{
    for (int key = 11; key <= 17; ++key)
        queueWriteOf(1, key);
    queueReadOf(1, 1);

    EXPECT_EQ((Keys{11, 12, 13, 14, 15, 1, 16, 17, 1}), cycles(9));
}

TEST_F(Scheduler, AOneShotReadDoesNotMakeRoomForWrites)
{
    for (int key = 11; key <= 16; ++key)
        queueWriteOf(1, key);
    cycles(5);
    queueOnceOf(1, 51);
    queueReadOf(1, 1);

    EXPECT_EQ((Keys{51, 1, 16}), cycles(3));
}

TEST_F(Scheduler, RunsAreCountedAcrossPausesUntilACyclicReadOrAnEmptyReadList)
{
    queueReadOf(1, 1);
    queueWriteOf(1, 11);
    queueWriteOf(1, 12);
    cycles(2);
    EXPECT_EQ(2, PLC_driver.writeRun);
    queueOnceOf(1, 51);
    cycle();
    EXPECT_EQ(2, PLC_driver.writeRun);
    EXPECT_EQ(1, PLC_driver.onceReadRun);

    EXPECT_EQ(1, cycle());
    EXPECT_EQ(0, PLC_driver.writeRun);
    EXPECT_EQ(0, PLC_driver.onceReadRun);
}

TEST_F(Scheduler, AWriteGoesBeforeTheNextCyclicReadAsSoonAsItIsQueued)
{
    for (int key = 1; key <= 4; ++key)
        queueReadOf(1, key);

    EXPECT_EQ((Keys{1, 2}), cycles(2));
    queueWriteOf(1, 11);
    EXPECT_EQ((Keys{11, 3, 4, 1}), cycles(4));
}

// Stations that are switched off.

TEST_F(Scheduler, CyclicReadsOfSwitchedOffStationsMoveToTheEndInTheirOrder)
{
    queueReadOf(1, 1);
    queueReadOf(2, 2);
    queueReadOf(3, 3);
    EnCommStation(1, 0);
    EnCommStation(2, 0);

    EXPECT_EQ(3, pollKey());
    EXPECT_EQ((Keys{3, 1, 2}), keys(PLC_driver.readList));
}

TEST_F(Scheduler, WithEveryCyclicStationOffReturnsNullAndKeepsTheOrder)
{
    queueReadOf(1, 1);
    queueReadOf(2, 2);
    queueReadOf(1, 3);
    EnCommStation(1, 0);
    EnCommStation(2, 0);

    EXPECT_EQ(nullptr, ComCommunication());
    EXPECT_EQ((Keys{1, 2, 3}), keys(PLC_driver.readList));
    EXPECT_EQ(0, info.cycleDone);
}

TEST_F(Scheduler, WithEveryCyclicStationOffTheRunsKeepTheirValues)
{
    queueReadOf(2, 1);
    EnCommStation(2, 0);
    PLC_driver.writeRun = 3;
    PLC_driver.onceReadRun = 4;

    EXPECT_EQ(nullptr, ComCommunication());
    EXPECT_EQ(3, PLC_driver.writeRun);
    EXPECT_EQ(4, PLC_driver.onceReadRun);
}

TEST_F(Scheduler, CappedWritesStayCappedWhileEveryCyclicStationIsOff)
{
    queueReadOf(2, 1);
    EnCommStation(2, 0);
    for (int key = 11; key <= 16; ++key)
        queueWriteOf(1, key);

    EXPECT_EQ((Keys{11, 12, 13, 14, 15, -1, -1}), cycles(7));
    EnCommStation(2, 1);
    EXPECT_EQ((Keys{1, 16}), cycles(2));
}

TEST_F(Scheduler, ReadsOfAStationThatIsBackOnTakeTheirTurnAgain)
{
    queueReadOf(1, 1);
    queueReadOf(2, 2);
    EnCommStation(1, 0);
    EXPECT_EQ((Keys{2, 2}), cycles(2));

    EnCommStation(1, 1);

    EXPECT_EQ((Keys{1, 2, 1}), cycles(3));
}

TEST_F(Scheduler, WritesOfASwitchedOffStationAreDiscardedAndTheCallReturnsNull)
{
    queueReadOf(1, 1);
    queueOnceOf(1, 51);
    for (int key = 11; key <= 13; ++key)
        queueWriteOf(3, key);
    EnCommStation(3, 0);

    EXPECT_EQ(nullptr, ComCommunication()); // no fallback to another list
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_EQ(0, PLC_driver.writeRun);
    EXPECT_EQ(1, PLC_driver.requestKind);
    EXPECT_TRUE(listDoneCalls().empty());
    EXPECT_EQ(51, cycle());
}

TEST_F(Scheduler, OneShotReadsOfASwitchedOffStationAreDiscardedWithoutAReport)
{
    queueReadOf(1, 1);
    queueOnceOf(3, 51);
    queueOnceOf(3, 52);
    EnCommStation(3, 0);

    EXPECT_EQ(nullptr, ComCommunication());
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
    EXPECT_EQ(0, PLC_driver.onceReadRun);
    EXPECT_EQ(2, PLC_driver.requestKind);
    EXPECT_TRUE(onceReadDoneCalls().empty());
    EXPECT_EQ(1, cycle());
}

TEST_F(Scheduler, BehindDiscardedWritesTheNextOneGoesOutInTheSameCallAndCountsOnce)
{
    queueWriteOf(3, 11);
    queueWriteOf(3, 12);
    queueWriteOf(1, 13);
    queueWriteOf(3, 14);
    EnCommStation(3, 0);

    EXPECT_EQ(13, pollKey());
    EXPECT_EQ((Keys{13, 14}), keys(PLC_driver.writeList));
    EXPECT_EQ(1, PLC_driver.writeRun);
}

TEST_F(Scheduler, BehindDiscardedOneShotReadsTheNextOneGoesOutInTheSameCall)
{
    queueOnceOf(3, 51);
    queueOnceOf(1, 52);
    EnCommStation(3, 0);

    EXPECT_EQ(52, pollKey());
    EXPECT_EQ(1, PLC_driver.onceReadRun);
}

TEST_F(Scheduler, DiscardedWritesDoNotComeBackWhenTheStationIsOnAgain)
{
    queueWriteOf(3, 11);
    EnCommStation(3, 0);
    poll();

    EnCommStation(3, 1);

    EXPECT_EQ(nullptr, ComCommunication());
}

TEST_F(Scheduler, AFrameThatIsOutIsHandedOutAgainAlthoughItsStationWasSwitchedOff)
{
    queueWriteOf(3, 11);
    poll();
    EnCommStation(3, 0);

    EXPECT_EQ(11, pollKey());
    EXPECT_EQ(1, goodReply());
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
}

TEST_F(Scheduler, Station0CanBeSwitchedOffLikeAnyOther)
{
    queueWriteOf(0, 11);
    EnCommStation(0, 0);

    EXPECT_EQ(nullptr, ComCommunication());
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
}

// Requests for which no frame is built.

TEST_F(Scheduler, AWriteWithoutAFrameStaysAndHoldsBackThoseBehindIt)
{
    queueWrite(Keyed(Write(0, 1, 1, "01"), 11));
    queueWriteOf(1, 12);

    EXPECT_EQ((Keys{-1, -1}), cycles(2));
    EXPECT_EQ((Keys{11, 12}), keys(PLC_driver.writeList));
    EXPECT_EQ(2, PLC_driver.writeRun);
    EXPECT_TRUE(listDoneCalls().empty());
}

TEST_F(Scheduler, AWriteWithoutAFrameLetsReadsThroughAfterFiveTurns)
{
    queueWrite(Keyed(Write(15, 1, 1, "01"), 11));
    queueOnceOf(1, 51);
    queueReadOf(1, 1);

    EXPECT_EQ((Keys{-1, -1, -1, -1, -1, 51, 1, -1}), cycles(8));
}

TEST_F(Scheduler, AOneShotReadWithoutAFrameStaysAndLetsCyclicReadsThroughAfterFiveTurns)
{
    queueOnce(Keyed(Variable(8, 1, 1), 51));
    queueOnceOf(1, 52);
    queueReadOf(1, 1);

    EXPECT_EQ((Keys{-1, -1, -1, -1, -1, 1, -1}), cycles(7));
    EXPECT_EQ((Keys{51, 52}), keys(PLC_driver.onceReadList));
}

TEST_F(Scheduler, ACyclicReadWithoutAFrameStopsTheRotation)
{
    queueReadOf(1, 1);
    queueRead(Keyed(Variable(8, 1, 1), 2));
    queueReadOf(1, 3);

    EXPECT_EQ((Keys{1, -1, -1, -1}), cycles(4));
    EXPECT_EQ((Keys{2, 3, 1}), keys(PLC_driver.readList));
}

TEST_F(Scheduler, ACyclicReadWithoutAFrameStillMakesRoomForWrites)
{
    queueRead(Keyed(Variable(15, 1, 1), 2));
    for (int key = 11; key <= 16; ++key)
        queueWriteOf(1, key);

    EXPECT_EQ((Keys{11, 12, 13, 14, 15, -1, 16}), cycles(7));
}

TEST_F(Scheduler, ABitInsideAWordCountsAsOneWrite)
{
    queueWrite(Keyed(Write(8, 35, 1, "01"), 11));
    poll();

    EXPECT_EQ(1, PLC_driver.writeRun);
    EXPECT_EQ(2, frameCount());
    goodReply();
    EXPECT_EQ(11, pollKey());
    EXPECT_EQ(1, PLC_driver.writeRun);
}

TEST_F(Scheduler, RemoteModeSendsRemoteFramesForAllThreeKindsOfRequest)
{
    info.remoteMode = 1;
    queueReadOf(1, 1);
    queueOnceOf(1, 51);
    queueWriteOf(1, 11);

    EXPECT_EQ("18 0B 00 03 01 00 09 00 00 00 0B 00 01 00 00 00 00 00 00 00 00 01 00 3D", poll());
    EXPECT_EQ(1, PLC_driver.writeRun);
    EXPECT_EQ(1, goodReply());
    EXPECT_EQ("16 33 00 03 01 00 09 00 00 00 33 00 01 00 00 00 00 00 00 00 00 8A", poll());
    EXPECT_EQ(1, PLC_driver.onceReadRun);
    EXPECT_EQ(1, goodReply());
    EXPECT_EQ("16 01 00 03 01 00 09 00 00 00 01 00 01 00 00 00 00 00 00 00 00 26", poll());
    EXPECT_EQ(1, goodReply());
}

TEST_F(Scheduler, FramesCarryZeroInTheirThreeSpareWords)
{
    queueWrite(Keyed(Write(8, 35, 1, "01"), 11));
    poll();

    for (const Protocol& protocol : PLC_driver.protocolList) {
        EXPECT_EQ(0, protocol.extra0);
        EXPECT_EQ(0, protocol.extra1);
        EXPECT_EQ(0, protocol.extra2);
    }
}

TEST_F(Scheduler, AHugeReadListOfASwitchedOffStationIsTurnedOnce)
{
    for (int key = 0; key < 5000; ++key)
        queueReadOf(2, key);
    queueReadOf(1, 7777);
    EnCommStation(2, 0);

    EXPECT_EQ(7777, pollKey());
    EXPECT_EQ(7777, PLC_driver.readList.first().hostKey);
    EXPECT_EQ(0, PLC_driver.readList.at(1).hostKey);
    EXPECT_EQ(4999, PLC_driver.readList.last().hostKey);
}
