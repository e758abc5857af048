// SPDX-License-Identifier: MIT
#include "driver/reply_handling.h"

#include "cycle.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace
{

class ReplyHandling : public CycleTest
{
protected:
    /// A local read of two words from element 16 on, in flight.
    void readInFlight(int key = 1)
    {
        queueRead(Keyed(Variable(9, 16, 2), key));
        poll();
    }

    /// Makes the request in flight fail for good. \return the final code
    int failForGood()
    {
        int result = 0;
        for (int i = 0; i <= info.retryLimit; ++i)
            result = timeOut();
        return result;
    }
};

const char TWO_WORDS[] = "00 00 00 00 00 07 01 03 04 12 34 56 78";

} // namespace

// Nothing outstanding.

TEST_F(ReplyHandling, WithNothingOutstandingReturns1AndChangesNothing)
{
    info.failCount = 2;
    info.framesReceived = 4;
    PLC_driver.lastFailed = 1;
    PLC_driver.retVar.result = 45;
    queueWriteOf(1, 1);
    PLC_driver.requestKind = 1;

    EXPECT_EQ(1, timeOut());
    EXPECT_EQ(1, reply(TWO_WORDS));
    EXPECT_EQ(2, info.failCount);
    EXPECT_EQ(4, info.framesReceived);
    EXPECT_EQ(0, info.cycleDone);
    EXPECT_EQ(1, PLC_driver.lastFailed);
    EXPECT_EQ(1, PLC_driver.writeList.size());
    EXPECT_TRUE(listDoneCalls().empty());
    EXPECT_TRUE(onceReadDoneCalls().empty());
}

TEST_F(ReplyHandling, AlwaysReturnsTheSameRecord)
{
    QByteArray none;
    EXPECT_EQ(&PLC_driver.retVar, DataCom(&none, 0));
    readInFlight();
    EXPECT_EQ(&PLC_driver.retVar, DataCom(&none, 0));
    EXPECT_EQ(&PLC_driver.retVar, DataCom(&none, 13));
}

// Bytes of frames.

TEST_F(ReplyHandling, AFrameThatTheRuntimeStillHoldsStaysAsItIs)
{
    queueReadOf(1, 5);
    queueReadOf(1, 6);
    const QByteArray held = ComCommunication()->frame;
    goodReply();

    EXPECT_EQ("00 00 00 00 00 06 01 03 00 06 00 01", poll());
    EXPECT_EQ("00 00 00 00 00 06 01 03 00 05 00 01", toHex(held));
}

TEST_F(ReplyHandling, AFrameIsBuiltInThePlaceOfTheOneThatWasAnswered)
{
    queueReadOf(1, 5);
    queueReadOf(1, 6);
    const char* const place = ComCommunication()->frame.constData();
    goodReply();
    std::vector<QByteArray> others; // in whatever places have become free
    for (int size = 1; size <= 100; ++size)
        others.push_back(QByteArray(size, '\0'));

    EXPECT_EQ(place, ComCommunication()->frame.constData());
}

TEST_F(ReplyHandling, ARecordIsFilledInThePlaceOfTheOneThatWasAnswered)
{
    queueReadOf(1, 5);
    queueReadOf(1, 6);
    const Protocol* const place = ComCommunication();
    goodReply();

    EXPECT_EQ(place, ComCommunication());
    EXPECT_EQ(6, place->var.hostKey);
}

TEST_F(ReplyHandling, WhatTheRuntimeWroteIntoARecordIsNotInTheNext)
{
    queueReadOf(1, 5);
    Protocol* const record = ComCommunication();
    record->extra0 = record->extra1 = record->extra2 = 7;
    record->dataOffset = 100;
    record->var.data = fromHex("AA");
    goodReply();

    const Protocol* const next = ComCommunication();
    EXPECT_EQ(0, next->extra0 + next->extra1 + next->extra2);
    EXPECT_EQ(9, next->dataOffset);
    EXPECT_TRUE(next->var.data.isEmpty());
}

TEST_F(ReplyHandling, ARecordThatIsKeptNeverComesBackByItself)
{
    queueReadOf(1, 5);
    cycle();
    PLC_driver.protocolList.append(Protocol());
    PLC_driver.protocolList.last().replyLength = 11;

    goodReply();
    EXPECT_EQ(0, frameCount());
}

TEST_F(ReplyHandling, TheBytesOfAReplyAreLeftAsTheyAre)
{
    queueReadOf(1, 5);
    poll();
    QByteArray bytes = fromHex("00 00 00 00 00 05 01 03 02 12 34");
    const char* const place = bytes.constData();
    DataCom(&bytes, bytes.size());

    EXPECT_EQ("00 00 00 00 00 05 01 03 02 12 34", toHex(bytes));
    EXPECT_EQ(place, bytes.constData());
}

TEST_F(ReplyHandling, AWriteOfABitBeginsWithTheValueZeroWhateverWasSentBefore)
{
    queueWrite(Write(9, 5, 1, "34 12"));
    cycle();
    queueWrite(Write(8, 16 * 5 + 3, 1, "01"));
    poll();

    EXPECT_EQ("00 00 00 00 00 06 01 06 00 05 00 00", toHex(PLC_driver.protocolList.at(1).frame));
}

// Judging a local reply.

TEST_F(ReplyHandling, AReplyOfTheExpectedLengthIsFiledAndFinishesTheRequest)
{
    readInFlight();

    EXPECT_EQ(1, reply(TWO_WORDS));
    EXPECT_EQ(0x1234, word(16));
    EXPECT_EQ(0x5678, word(17));
    EXPECT_EQ(0, frameCount());
    EXPECT_EQ(1, info.framesReceived);
}

TEST_F(ReplyHandling, TheContentsOfAReplyAreNotExamined)
{
    readInFlight();

    EXPECT_EQ(1, reply("FF FF FF FF FF FF 63 83 00 12 34 56 78"));
    EXPECT_EQ(0x1234, word(16));
}

TEST_F(ReplyHandling, LengthsAreJudgedAgainstTheFrame)
{
    struct Row {
        const char* what;
        int expected;
        int length;
        int result;
    };
    const Row rows[] = {
        {"as expected", 13, 13, 1},
        {"time-out", 13, 0, 41},
        {"one byte short", 13, 12, 71},
        {"one byte more", 13, 14, 71},
        {"an exception", 13, 9, 71},
        {"negative length", 13, -13, 71},
        {"any length is good", -1, 1, 1},
        {"any length is good", -1, 300, 1},
        {"any length, but nothing came", -1, 0, 41},
        {"a length that no reply has", -2, 13, 71},
        {"no reply is expected and none came", 0, 0, 1},
        {"no reply is expected but one came", 0, 12, 71},
    };
    info.retryLimit = 0;
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.what) + ", length " + std::to_string(row.length));
        PLC_driver.readList.clear();
        readInFlight(0);
        PLC_driver.protocolList.first().replyLength = row.expected;
        QByteArray bytes(13, '\1');
        EXPECT_EQ(row.result, DataCom(&bytes, row.length)->result);
    }
}

TEST_F(ReplyHandling, AnAccessFlagMeansJudgedButNotFiled)
{
    RW_VAR var = Variable(9, 16, 2);
    var.accessFlag = 1;
    queueRead(var);
    poll();

    EXPECT_EQ(1, reply(TWO_WORDS));
    EXPECT_EQ(0, word(16));

    info.retryLimit = 0;
    poll();
    EXPECT_EQ(71, reply("00 00 00 00 00 03 01 83 02"));
}

TEST_F(ReplyHandling, CheckGetDataLooksAtTheAccessFlagOnly)
{
    readInFlight();
    EXPECT_EQ(1, CheckGetData(nullptr, 0));
    for (int flag : {1, -1, 2, 256}) {
        PLC_driver.protocolList.first().var.accessFlag = flag;
        EXPECT_EQ(2, CheckGetData(nullptr, 0)) << flag;
    }
}

TEST_F(ReplyHandling, ShortAndNullArraysAreJudgedByTheAnnouncedLength)
{
    queueRead(Keyed(Variable(9, 16, 2), 1));
    PLC_driver.image.wordArea[0][17] = 0x7777;

    poll();
    QByteArray twelve = fromHex("00 00 00 00 00 07 01 03 04 12 34 56");
    EXPECT_EQ(1, DataCom(&twelve, 13)->result);
    EXPECT_EQ(0x1234, word(16));
    EXPECT_EQ(0x7777, word(17)) << "a word that is not wholly there is not filed";

    poll();
    EXPECT_EQ(1, DataCom(nullptr, 13)->result);
    EXPECT_EQ(0x1234, word(16));
    poll();
    EXPECT_EQ(0, DataCom(nullptr, 0)->result);
    EXPECT_EQ(0, DataCom(nullptr, 12)->result);
}

TEST_F(ReplyHandling, ALongArrayIsJudgedByTheAnnouncedLengthToo)
{
    readInFlight();
    QByteArray longReply = fromHex("00 00 00 00 00 07 01 03 04 12 34 56 78 9A BC");

    EXPECT_EQ(1, DataCom(&longReply, 13)->result);
    EXPECT_EQ(0x5678, word(17));
    EXPECT_EQ(0, word(18));
}

// Local filing waits for the image lock with the list lock free, so other threads can queue meanwhile.
TEST_F(ReplyHandling, LocalFilingHoldsTheImageLockAndNoOther)
{
    readInFlight();
    PLC_driver.imageMutex.lock();
    std::atomic<bool> done(false);
    std::thread communication([&done] {
        QByteArray bytes = fromHex(TWO_WORDS);
        DataCom(&bytes, 13);
        done = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));

    EXPECT_FALSE(done);
    const bool listIsFree = PLC_driver.listMutex.tryLock(5000);
    EXPECT_TRUE(listIsFree);
    if (listIsFree)
        PLC_driver.listMutex.unlock();
    PLC_driver.imageMutex.unlock();
    communication.join();
    EXPECT_EQ(0x1234, word(16));
}

// Judging a remote reply.

namespace
{

class RemoteReply : public ReplyHandling
{
protected:
    void remoteInFlight(int storeSelector, int accessFlag = 0)
    {
        RW_VAR var = Remote(Keyed(Variable(9, 16, 2), 1));
        var.storeSelector = storeSelector;
        var.accessFlag = accessFlag;
        PLC_driver.readList.clear();
        queueRead(var);
        poll();
    }
};

} // namespace

TEST_F(RemoteReply, WithAnySelectorButMinus1IsNotFiledAndEndsWith100)
{
    for (int selector : {0, 1, 5, -2}) {
        remoteInFlight(selector);
        EXPECT_EQ(100, reply(TWO_WORDS)) << selector;
        EXPECT_EQ(0, frameCount());
        EXPECT_EQ(0, word(16)) << selector;
    }
}

TEST_F(RemoteReply, WithSelectorMinus1IsFiledWhateverTheAccessFlag)
{
    for (int flag : {0, 1}) {
        PLC_driver.image.wordArea[0][16] = 0;
        remoteInFlight(-1, flag);
        EXPECT_EQ(1, reply(TWO_WORDS));
        EXPECT_EQ(0x1234, word(16)) << "flag " << flag;
    }
}

TEST_F(RemoteReply, AsSecondOfTwoIsFiledAndEndsWith100)
{
    remoteInFlight(-1);
    info.framesExpected = 2;
    info.framesReceived = 1;

    EXPECT_EQ(100, reply(TWO_WORDS));
    EXPECT_EQ(0x1234, word(16));
}

TEST_F(RemoteReply, AsThirdEndsWith1Again)
{
    remoteInFlight(-1);
    info.framesExpected = 3;
    info.framesReceived = 2;

    EXPECT_EQ(1, reply(TWO_WORDS));
}

TEST_F(RemoteReply, FailuresHaveRemoteCodes)
{
    info.retryLimit = 0;
    for (int selector : {-1, 5}) {
        remoteInFlight(selector);
        EXPECT_EQ(142, timeOut());
        remoteInFlight(selector);
        EXPECT_EQ(172, reply("00 00 00 00 00 03 01 83 02"));
    }
    EXPECT_EQ(0, word(16));
}

TEST_F(RemoteReply, IsRetriedLikeALocalOne)
{
    remoteInFlight(5);

    EXPECT_EQ(0, timeOut());
    EXPECT_EQ(0, timeOut());
    EXPECT_EQ(0, timeOut());
    EXPECT_EQ(142, timeOut());
}

TEST_F(RemoteReply, LengthMinus1And0WorkAsForLocalOnes)
{
    info.retryLimit = 0;
    remoteInFlight(5);
    PLC_driver.protocolList.first().replyLength = -1;
    EXPECT_EQ(100, reply("00"));
    remoteInFlight(5);
    PLC_driver.protocolList.first().replyLength = -1;
    EXPECT_EQ(142, timeOut());
    remoteInFlight(5);
    PLC_driver.protocolList.first().replyLength = 0;
    EXPECT_EQ(100, timeOut());
}

TEST_F(RemoteReply, NeverReportsAOneShotRead)
{
    info.retryLimit = 0;
    queueOnce(Remote(Keyed(Variable(9, 16, 2), 51)));
    poll();
    EXPECT_EQ(100, goodReply());
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());

    queueOnce(Remote(Keyed(Variable(9, 16, 2), 52)));
    poll();
    timeOut();
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
    EXPECT_TRUE(onceReadDoneCalls().empty());
    EXPECT_EQ(52, PLC_driver.retVar.hostKey);
}

TEST_F(RemoteReply, DoesNotCountTowardsThePass)
{
    for (int i = 0; i < 5; ++i) {
        remoteInFlight(5);
        goodReply();
    }
    EXPECT_EQ(0, PLC_driver.readReplyCount);
    EXPECT_EQ(0, info.cycleDone);
}

// The lock would hang this test if filing took it: it is not recursive.
TEST_F(RemoteReply, IsFiledWithoutTheImageLock)
{
    remoteInFlight(-1);
    QByteArray bytes = fromHex(TWO_WORDS);
    QMutexLocker held(&PLC_driver.imageMutex);

    EXPECT_EQ(1, DealDataOfRemoteArea(&bytes, 13));
    EXPECT_EQ(0x1234, word(16));
}

// Retries.

TEST_F(ReplyHandling, AFailureWithinTheLimitReports0AndKeepsTheFrameAtTheHead)
{
    readInFlight();
    const Protocol* first = ComCommunication();

    EXPECT_EQ(0, timeOut());
    EXPECT_EQ(first, ComCommunication());
    EXPECT_EQ(0, reply("00 01"));
    EXPECT_EQ(first, ComCommunication());
    EXPECT_EQ("00 00 00 00 00 06 01 03 00 10 00 02", toHex(first->frame));
    EXPECT_EQ(0, info.framesReceived);
    EXPECT_TRUE(listDoneCalls().empty());
}

TEST_F(ReplyHandling, RetryLimit3GivesThreeTimes0AndThenTheCodeAndThePurge)
{
    info.retryLimit = 3;
    readInFlight(4);
    queueWriteOf(1, 11);

    EXPECT_EQ(0, timeOut());
    EXPECT_EQ(0, timeOut());
    EXPECT_EQ(0, timeOut());
    EXPECT_EQ(1, PLC_driver.writeList.size());
    EXPECT_EQ(45, timeOut());
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_EQ(0, frameCount());
    EXPECT_EQ((std::vector<ListDoneCall>{{0, 4, 1}}), listDoneCalls());
}

TEST_F(ReplyHandling, RetryLimit0OrNegativeMakesTheFirstFailureFinal)
{
    for (int limit : {0, -1, -2147483647 - 1}) {
        info.retryLimit = limit;
        readInFlight(0);
        EXPECT_EQ(41, timeOut()) << limit;
        EXPECT_EQ(0, info.failCount);
        EXPECT_EQ(0, frameCount());
    }
}

TEST_F(ReplyHandling, TheLastFailureDecidesTheCode)
{
    readInFlight(0);
    timeOut();
    timeOut();
    timeOut();

    EXPECT_EQ(71, reply("00 01"));
}

TEST_F(ReplyHandling, AFailureResetsThePassAndTheCycleAndIsRemembered)
{
    readInFlight();
    PLC_driver.readReplyCount = 1;
    info.cycleDone = 1;

    timeOut();

    EXPECT_EQ(0, PLC_driver.readReplyCount);
    EXPECT_EQ(0, info.cycleDone);
    EXPECT_EQ(1, PLC_driver.lastFailed);
    EXPECT_EQ(1, info.failCount);
}

TEST_F(ReplyHandling, AGoodReplyForgetsTheFailureButNotTheCount)
{
    readInFlight();
    timeOut();
    timeOut();

    EXPECT_EQ(1, reply(TWO_WORDS));
    EXPECT_EQ(0, PLC_driver.lastFailed);
    EXPECT_EQ(2, info.failCount);
}

TEST_F(ReplyHandling, FailuresOfSeveralRequestsShareOneBudget)
{
    queueReadOf(1, 1);
    queueReadOf(1, 2);
    for (int i = 0; i < RETRY_LIMIT; ++i) {
        poll();
        EXPECT_EQ(0, timeOut());
        EXPECT_EQ(1, goodReply());
    }

    poll();
    EXPECT_EQ(43, timeOut());
    EXPECT_EQ(0, info.failCount);
    poll();
    EXPECT_EQ(0, timeOut());
}

// What a final failure does.

TEST_F(ReplyHandling, AFinallyFailedCyclicReadMovesToTheEndAndIsNeverPurged)
{
    readInFlight(1);
    queueReadOf(1, 2);

    failForGood();

    EXPECT_EQ((Keys{2, 1}), keys(PLC_driver.readList));
    EXPECT_EQ(2, cycle());
    EXPECT_EQ(1, cycle());
}

TEST_F(ReplyHandling, InSingleStationModeAFinalFailurePurgesWritesAndOneShotReadsOfAnyStation)
{
    readInFlight();
    for (int station : {1, 2, 3}) {
        queueWriteOf(station, 10 + station);
        queueOnceOf(station, 50 + station);
    }

    failForGood();

    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
    EXPECT_TRUE(onceReadDoneCalls().empty());
}

TEST_F(ReplyHandling, InMultiStationModeAFinalFailurePurgesTheFailedStationOnlyAndKeepsTheOrder)
{
    info.multiStation = 1;
    queueReadOf(3, 1);
    poll();
    const int stations[] = {2, 3, 4, 3, 2};
    for (int i = 0; i < 5; ++i) {
        queueWriteOf(stations[i], 11 + i);
        queueOnceOf(stations[i], 51 + i);
    }

    failForGood();

    EXPECT_EQ((Keys{11, 13, 15}), keys(PLC_driver.writeList));
    EXPECT_EQ((Keys{51, 53, 55}), keys(PLC_driver.onceReadList));
    EXPECT_EQ(Keys{1}, keys(PLC_driver.readList));
}

TEST_F(ReplyHandling, InMultiStationModeAFinalFailurePurgesTheFirstEntriesOfItsStationToo)
{
    info.multiStation = 1;
    queueReadOf(3, 1);
    poll();
    for (int station : {3, 3, 2}) {
        queueWriteOf(station, 10 + station);
        queueOnceOf(station, 50 + station);
    }

    failForGood();

    EXPECT_EQ(Keys{12}, keys(PLC_driver.writeList));
    EXPECT_EQ(Keys{52}, keys(PLC_driver.onceReadList));
}

TEST_F(ReplyHandling, AFinallyFailedWriteIsDroppedAndNamed)
{
    info.multiStation = 1;
    queueWriteOf(3, 11);
    queueWriteOf(2, 12);
    poll();

    EXPECT_EQ(52, failForGood());
    EXPECT_EQ(11, PLC_driver.retVar.hostKey);
    EXPECT_EQ(3, PLC_driver.retVar.station);
    EXPECT_EQ(Keys{12}, keys(PLC_driver.writeList));
    EXPECT_EQ((std::vector<ListDoneCall>{{0, 11, 1}, {0, 11, 1}}), listDoneCalls())
        << "when it was built and when it failed";
}

TEST_F(ReplyHandling, AFinalFailureOfOneFrameDropsAllFramesOfTheRequest)
{
    info.retryLimit = 0;
    queueWrite(Keyed(Write(8, 35, 1, "01"), 12));
    poll();
    ASSERT_EQ(2, frameCount());

    EXPECT_EQ(41, timeOut());
    EXPECT_EQ(0, frameCount());
    EXPECT_EQ("nothing", poll());
}

// Finishing by list.

TEST_F(ReplyHandling, TheResultRecordIdentifiesTheRequestButHoldsNoValue)
{
    RW_VAR var = Keyed(Write(9, 100, 2, "01 00 02 00", 5), 77, 78);
    var.accessFlag = 1;
    var.spare3 = 31;
    var.name = "pump";
    var.name2 = "100";
    var.storeSelector = 48;
    var.spare13 = 52;
    queueWrite(var);
    poll();
    PLC_driver.retVar.data = fromHex("AA BB");
    goodReply();

    const RW_VAR& result = PLC_driver.retVar;
    EXPECT_EQ(77, result.hostKey);
    EXPECT_EQ(78, result.hostSubKey);
    EXPECT_EQ(1, result.accessFlag);
    EXPECT_EQ(31, result.spare3);
    EXPECT_EQ(LOCAL_STATION, result.stationGroup);
    EXPECT_EQ(1, result.result);
    EXPECT_EQ("pump", result.name);
    EXPECT_EQ("100", result.name2);
    EXPECT_EQ(9, result.area);
    EXPECT_EQ(100, result.address);
    EXPECT_EQ(5, result.station);
    EXPECT_EQ(2, result.count);
    EXPECT_EQ(48, result.storeSelector);
    EXPECT_EQ(52, result.spare13);
    EXPECT_TRUE(result.data.isEmpty());
}

TEST_F(ReplyHandling, PassRetValueCopiesTheResultToo)
{
    RW_VAR source = Variable(9, 100, 1);
    source.result = 7;
    RW_VAR target = RW_VAR();
    passRetValue(source, target);
    EXPECT_EQ(7, target.result);
}

TEST_F(ReplyHandling, PassRetValueEmptiesTheTargetsDataAndLeavesTheSource)
{
    const RW_VAR source = Keyed(Write(9, 1, 1, "01 00"), 5);
    RW_VAR target = Write(9, 2, 2, "AA BB CC DD");

    passRetValue(source, target);

    EXPECT_EQ(5, target.hostKey);
    EXPECT_TRUE(target.data.isEmpty());
    EXPECT_EQ("01 00", toHex(source.data));
}

TEST_F(ReplyHandling, AFinishedRequestNamesItselfAndARetryNamesTheOneBefore)
{
    queueReadOf(1, 1);
    queueReadOf(1, 2);
    cycle();
    EXPECT_EQ(1, PLC_driver.retVar.hostKey);
    poll();
    timeOut();
    EXPECT_EQ(1, PLC_driver.retVar.hostKey);
    goodReply();
    EXPECT_EQ(2, PLC_driver.retVar.hostKey);
}

TEST_F(ReplyHandling, AWriteLeavesItsListWhenItIsAnsweredAndNotBefore)
{
    queueWriteOf(1, 11);
    queueWriteOf(1, 12);
    poll();
    EXPECT_EQ((Keys{11, 12}), keys(PLC_driver.writeList));
    timeOut();
    EXPECT_EQ((Keys{11, 12}), keys(PLC_driver.writeList));
    goodReply();
    EXPECT_EQ(Keys{12}, keys(PLC_driver.writeList));
}

TEST_F(ReplyHandling, ABitInsideAWordIsFinishedByItsSecondReply)
{
    queueWrite(Keyed(Write(8, 35, 1, "01"), 12));
    poll();

    EXPECT_EQ(1, reply("00 00 00 00 00 05 01 03 02 00 10"));
    EXPECT_EQ(1, info.framesReceived);
    EXPECT_EQ(Keys{12}, keys(PLC_driver.writeList));
    EXPECT_EQ(0, PLC_driver.retVar.hostKey);
    EXPECT_EQ(0, info.cycleDone);
    EXPECT_EQ("00 00 00 00 00 06 01 06 00 02 00 18", poll());
    EXPECT_EQ(1, reply("00 00 00 00 00 06 01 06 00 02 00 18"));
    EXPECT_EQ(2, info.framesReceived);
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
    EXPECT_EQ(12, PLC_driver.retVar.hostKey);
}

TEST_F(ReplyHandling, ARetriedSecondFrameKeepsTheWordThatWasRead)
{
    queueWrite(Keyed(Write(8, 35, 1, "00"), 12));
    poll();
    reply("00 00 00 00 00 05 01 03 02 FF FF");

    EXPECT_EQ(0, timeOut());
    EXPECT_EQ("00 00 00 00 00 06 01 06 00 02 FF F7", poll());
    EXPECT_EQ(1, info.framesReceived);
}

TEST_F(ReplyHandling, WritesQueuedBetweenTheTwoFramesOfABitWaitBehindIt)
{
    queueWrite(Keyed(Write(8, 35, 1, "01"), 12));
    poll();
    queueWriteOf(1, 13);
    reply("00 00 00 00 00 05 01 03 02 00 00");

    EXPECT_EQ("00 00 00 00 00 06 01 06 00 02 00 08", poll());
    goodReply();
    EXPECT_EQ(Keys{13}, keys(PLC_driver.writeList));
}

TEST_F(ReplyHandling, AnAnsweredListThatIsEmptyByNowIsLeftAlone)
{
    const auto inFlight = [](int kind) {
        PLC_driver.retVar = Keyed(RW_VAR(), 99);
        queueReadOf(1, 5);
        poll();
        PLC_driver.readList.clear();
        PLC_driver.requestKind = kind;
    };
    for (int kind : {0, 1, 2, 100, 7}) {
        inFlight(kind);
        EXPECT_EQ(1, goodReply()) << kind;
        EXPECT_EQ(99, PLC_driver.retVar.hostKey) << kind;
        EXPECT_EQ(0, frameCount());
    }
    EXPECT_TRUE(onceReadDoneCalls().empty());
}

TEST_F(ReplyHandling, BeforeTheFirstRequestNoListIsTouched)
{
    queueReadOf(1, 5);
    queueReadOf(1, 6);
    poll();
    queueWriteOf(1, 11);
    queueOnceOf(1, 51);
    PLC_driver.requestKind = 100;

    goodReply();

    EXPECT_EQ((Keys{5, 6}), keys(PLC_driver.readList));
    EXPECT_EQ(Keys{11}, keys(PLC_driver.writeList));
    EXPECT_EQ(Keys{51}, keys(PLC_driver.onceReadList));
}

// The pass of the read list.

TEST_F(ReplyHandling, WithTwoCyclicReadsTheThirdGoodReplyEndsThePass)
{
    queueReadOf(1, 1);
    queueReadOf(1, 2);

    cycle();
    EXPECT_EQ(1, PLC_driver.readReplyCount);
    cycle();
    EXPECT_EQ(2, PLC_driver.readReplyCount);
    EXPECT_EQ(0, info.cycleDone);
    cycle();
    EXPECT_EQ(1, info.cycleDone);
    EXPECT_EQ(0, PLC_driver.readReplyCount);
}

TEST_F(ReplyHandling, NothingIsCountedWhileTheCycleIsDone)
{
    info.cycleDone = 1;
    queueReadOf(1, 1);

    cycles(3);

    EXPECT_EQ(0, PLC_driver.readReplyCount);
    EXPECT_EQ(1, info.cycleDone);
}

TEST_F(ReplyHandling, LocalWritesAndOneShotReadsCountTowardsThePassToo)
{
    queueReadOf(1, 1);
    queueReadOf(1, 2);
    queueWriteOf(1, 11);
    queueOnceOf(1, 51);

    EXPECT_EQ((Keys{11, 51}), cycles(2));
    EXPECT_EQ(2, PLC_driver.readReplyCount);
    EXPECT_EQ(1, cycle());
    EXPECT_EQ(1, info.cycleDone);
}

TEST_F(ReplyHandling, TheFirstOfTwoFramesDoesNotCountTowardsThePass)
{
    queueReadOf(1, 1);
    queueReadOf(1, 2);
    queueWrite(Keyed(Write(8, 35, 1, "01"), 12));
    poll();
    goodReply();
    EXPECT_EQ(0, PLC_driver.readReplyCount);
    goodReply();
    EXPECT_EQ(1, PLC_driver.readReplyCount);
}

TEST_F(ReplyHandling, AFinalFailureDoesNotCountTowardsThePass)
{
    queueReadOf(1, 1);
    poll();
    failForGood();

    EXPECT_EQ(0, PLC_driver.readReplyCount);
    EXPECT_EQ(0, info.cycleDone);
}

// One-shot reads and their callback.

TEST_F(ReplyHandling, AOneShotReadIsReportedWithStatus1WhenItSucceeds)
{
    queueOnce(Keyed(Variable(9, 1, 1), 51, 7));
    cycle();

    EXPECT_EQ((std::vector<OnceReadDoneCall>{{PORT_ID, 51, 7, 1}}), onceReadDoneCalls());
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
}

TEST_F(ReplyHandling, AOneShotReadIsReportedOnceWithStatus2WhenItFailsForGood)
{
    queueOnce(Keyed(Variable(9, 1, 1), 51, 7));
    poll();

    EXPECT_EQ(41, failForGood());
    EXPECT_EQ((std::vector<OnceReadDoneCall>{{PORT_ID, 51, 7, 2}}), onceReadDoneCalls());
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
}

TEST_F(ReplyHandling, AOneShotReadThatSucceedsAfterRetriesIsReportedWithStatus1)
{
    queueOnceOf(1, 51);
    poll();
    timeOut();
    EXPECT_TRUE(onceReadDoneCalls().empty());
    goodReply();

    EXPECT_EQ((std::vector<OnceReadDoneCall>{{PORT_ID, 51, 0, 1}}), onceReadDoneCalls());
}

TEST_F(ReplyHandling, OfTwoPiecesWithTheSameKeysOnlyTheLastIsReported)
{
    queueOnce(Keyed(Variable(9, 1, 1), 51, 7));
    queueOnce(Keyed(Variable(9, 2, 1), 51, 7));

    cycle();
    EXPECT_TRUE(onceReadDoneCalls().empty());
    cycle();
    EXPECT_EQ((std::vector<OnceReadDoneCall>{{PORT_ID, 51, 7, 1}}), onceReadDoneCalls());
}

TEST_F(ReplyHandling, BothKeysMustAgreeForTwoPiecesToBelongTogether)
{
    queueOnce(Keyed(Variable(9, 1, 1), 51, 7));
    queueOnce(Keyed(Variable(9, 2, 1), 51, 8));
    queueOnce(Keyed(Variable(9, 3, 1), 52, 7));

    cycles(3);

    EXPECT_EQ((std::vector<OnceReadDoneCall>{{PORT_ID, 51, 7, 1}, {PORT_ID, 51, 8, 1}, {PORT_ID, 52, 7, 1}}),
              onceReadDoneCalls());
}

TEST_F(ReplyHandling, ALaterPieceOfSmallerKeysBelongsToAnotherRead)
{
    queueOnce(Keyed(Variable(9, 1, 1), 51, 7));
    queueOnce(Keyed(Variable(9, 2, 1), 51, 6));
    queueOnce(Keyed(Variable(9, 3, 1), 50, 6));

    cycles(3);

    EXPECT_EQ((std::vector<OnceReadDoneCall>{{PORT_ID, 51, 7, 1}, {PORT_ID, 51, 6, 1}, {PORT_ID, 50, 6, 1}}),
              onceReadDoneCalls());
}

TEST_F(ReplyHandling, APieceFarBehindInTheListStillDefersTheReport)
{
    queueOnceOf(1, 51);
    queueOnceOf(1, 52);
    queueOnceOf(1, 53);
    queueOnceOf(1, 51);

    cycles(4);

    EXPECT_EQ((std::vector<OnceReadDoneCall>{{PORT_ID, 52, 0, 1}, {PORT_ID, 53, 0, 1}, {PORT_ID, 51, 0, 1}}),
              onceReadDoneCalls());
}

TEST_F(ReplyHandling, AFailedPieceWithAnotherBehindItIsNotReportedAndThePurgeTakesTheOther)
{
    queueOnceOf(1, 51);
    queueOnceOf(1, 51);
    poll();

    failForGood();

    EXPECT_TRUE(onceReadDoneCalls().empty());
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
    EXPECT_EQ((std::vector<ListDoneCall>{{0, 51, 1}}), listDoneCalls());
}

TEST_F(ReplyHandling, WritesAndCyclicReadsNeverCallTheOneShotCallback)
{
    queueWriteOf(1, 11);
    queueReadOf(1, 1);
    cycles(3);
    poll();
    failForGood();

    EXPECT_TRUE(onceReadDoneCalls().empty());
}

// What callbacks see: they run with the list lock held, at a fixed point of the story.

namespace
{

struct Seen {
    std::string what;
    Keys writes;
    Keys onceReads;
    int resultKey;
    bool listLockIsHeld;
};

std::vector<Seen>& SeenByCallbacks()
{
    static std::vector<Seen> seen;
    return seen;
}

Keys KeysOf(const QList<RW_VAR>& list)
{
    Keys keys;
    for (const RW_VAR& var : list)
        keys.push_back(var.hostKey);
    return keys;
}

void Note(const std::string& what)
{
    const bool isFree = PLC_driver.listMutex.tryLock();
    if (isFree)
        PLC_driver.listMutex.unlock();
    SeenByCallbacks().push_back({what, KeysOf(PLC_driver.writeList), KeysOf(PLC_driver.onceReadList),
                                 PLC_driver.retVar.hostKey, !isFree});
}

int NoteOnceReadDone(int, int hostKey, int, int status)
{
    Note("read " + std::to_string(hostKey) + " status " + std::to_string(status));
    return 12345;
}

int NoteListDone(QList<RW_VAR>*, int hostKey, int)
{
    Note("list " + std::to_string(hostKey));
    return -1;
}

class Callbacks : public ReplyHandling
{
protected:
    void SetUp() override
    {
        ReplyHandling::SetUp();
        SeenByCallbacks().clear();
        RegistCallBackFuncIntf(NoteOnceReadDone, NoteListDone);
    }
};

} // namespace

TEST_F(Callbacks, OfAWriteRunsWhenItsFramesAreBuiltAndTheWriteIsStillQueued)
{
    queueWriteOf(1, 11);
    queueWriteOf(1, 12);
    poll();

    ASSERT_EQ(1u, SeenByCallbacks().size());
    const Seen& seen = SeenByCallbacks()[0];
    EXPECT_EQ("list 11", seen.what);
    EXPECT_EQ((Keys{11, 12}), seen.writes);
    EXPECT_TRUE(seen.listLockIsHeld);
    goodReply();
    EXPECT_EQ(1u, SeenByCallbacks().size()) << "the reply is not announced";
}

TEST_F(Callbacks, OfAOneShotReadRunsBeforeTheReadLeavesItsListAndTheResultRecordIsRenewed)
{
    queueOnceOf(1, 51);
    queueOnceOf(1, 52);
    poll();
    goodReply();

    ASSERT_EQ(1u, SeenByCallbacks().size());
    const Seen& seen = SeenByCallbacks()[0];
    EXPECT_EQ("read 51 status 1", seen.what);
    EXPECT_EQ((Keys{51, 52}), seen.onceReads);
    EXPECT_EQ(0, seen.resultKey);
    EXPECT_TRUE(seen.listLockIsHeld);
}

TEST_F(Callbacks, OfAFinalFailureRunInOrderReadFirstAndTheListOneBeforeThePurge)
{
    info.retryLimit = 0;
    queueOnceOf(1, 51);
    queueOnceOf(1, 52);
    poll();
    queueWriteOf(1, 11);
    timeOut();

    ASSERT_EQ(2u, SeenByCallbacks().size());
    const Seen& first = SeenByCallbacks()[0];
    const Seen& second = SeenByCallbacks()[1];
    EXPECT_EQ("read 51 status 2", first.what);
    EXPECT_EQ((Keys{51, 52}), first.onceReads);
    EXPECT_EQ("list 51", second.what);
    EXPECT_EQ(Keys{52}, second.onceReads) << "the failed read is gone, the rest is purged afterwards";
    EXPECT_EQ(Keys{11}, second.writes);
    EXPECT_EQ(51, second.resultKey);
    EXPECT_TRUE(first.listLockIsHeld);
    EXPECT_TRUE(second.listLockIsHeld);
    EXPECT_TRUE(PLC_driver.onceReadList.isEmpty());
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
}

TEST_F(Callbacks, LeaveTheListLockFreeAfterwards)
{
    info.retryLimit = 0;
    queueOnceOf(1, 51);
    poll();
    timeOut();

    ASSERT_TRUE(PLC_driver.listMutex.tryLock());
    PLC_driver.listMutex.unlock();
}

// The runtime owns the callbacks, and no entry point may let an exception through.
namespace
{

int ThrowFromOnceRead(int, int, int, int)
{
    throw 1;
}

int ThrowFromListDone(QList<RW_VAR>*, int, int)
{
    throw 1;
}

} // namespace

TEST_F(ReplyHandling, AnExceptionOfACallbackDoesNotLeaveAnEntryPoint)
{
    info.retryLimit = 0;
    RegistCallBackFuncIntf(ThrowFromOnceRead, ThrowFromListDone);
    queueOnceOf(1, 51);
    poll();
    EXPECT_NO_THROW(timeOut());
    queueWriteOf(1, 11);
    EXPECT_NO_THROW(ComCommunication());

    ASSERT_TRUE(PLC_driver.listMutex.tryLock()) << "the list lock was left held";
    PLC_driver.listMutex.unlock();
}

// The reply to the read that goes before the write of a bit, when its partners are missing.

namespace
{

class BitRead : public ReplyHandling
{
protected:
    void SetUp() override
    {
        ReplyHandling::SetUp();
        queueWrite(Keyed(Write(8, 35, 1, "01"), 12));
        poll();
    }

    static int answered() { return reply("00 00 00 00 00 05 01 03 02 12 34"); }

    /// Bytes of which the runtime says that there were \a length. \return result code
    static int announced(const char* hex, int length)
    {
        QByteArray bytes = fromHex(hex);
        return DataCom(&bytes, length)->result;
    }
};

const char* const BIT_READ = "00 00 00 00 00 06 01 03 00 02 00 01";

} // namespace

TEST_F(BitRead, WithNoWriteQueuedPatchesTheWordAsItIs)
{
    PLC_driver.writeList.clear();

    EXPECT_EQ(1, reply("00 00 00 00 00 05 01 03 02 FF FF"));
    EXPECT_EQ(0xFFFF, word(2));
    EXPECT_EQ(1, frameCount());
    EXPECT_EQ("00 00 00 00 00 06 01 06 00 02 FF FF", frame(0));
}

TEST_F(BitRead, WithNoWriteQueuedForgetsTheBitBefore)
{
    answered();
    goodReply();
    queueWrite(Keyed(Write(8, 35, 1, "01"), 12));
    poll();
    PLC_driver.writeList.clear();

    EXPECT_EQ(1, reply("00 00 00 00 00 05 01 03 02 00 00"));
    EXPECT_EQ("00 00 00 00 00 06 01 06 00 02 00 00", poll());
}

TEST_F(BitRead, WithAWriteWithoutDataPatchesTheWordAsItIs)
{
    PLC_driver.writeList.first().data.clear();

    EXPECT_EQ(1, reply("00 00 00 00 00 05 01 03 02 FF FF"));
    EXPECT_EQ(0xFFFF, word(2));
    EXPECT_EQ("00 00 00 00 00 06 01 06 00 02 FF FF", poll());
}

TEST_F(BitRead, WithNoSecondFrameStoresTheMergedWord)
{
    PLC_driver.protocolList.removeLast();

    EXPECT_EQ(1, answered());
    EXPECT_EQ(0x123C, word(2));
}

TEST_F(BitRead, WithASecondFrameOfLessThan12BytesPatchesNothing)
{
    PLC_driver.protocolList.last().frame = fromHex("00 00 00 00 00 05 01 06 00 02 AA");

    EXPECT_EQ(1, answered());
    EXPECT_EQ("00 00 00 00 00 05 01 06 00 02 AA", poll());
    EXPECT_EQ(0x123C, word(2));
}

TEST_F(BitRead, WithLessThanTwoDataBytesIsRetriedAndStoresNothing)
{
    PLC_driver.image.wordArea[0][2] = 0x7777;
    PLC_driver.protocolList.first().dataLength = 1;

    EXPECT_EQ(0, answered());
    EXPECT_EQ(0x7777, word(2));
    EXPECT_EQ(BIT_READ, poll());
}

// The write would go out with a word that nobody read, so the announced length does not make the reply good.
TEST_F(BitRead, WithoutTheWordInTheArrayIsRetriedWhateverLengthWasAnnounced)
{
    PLC_driver.image.wordArea[0][2] = 0x7777;
    for (const char* cut : {"", "00", "00 00 00 00 00 05 01 03 02", "00 00 00 00 00 05 01 03 02 12"}) {
        SCOPED_TRACE(cut);
        info.failCount = 0;
        EXPECT_EQ(0, announced(cut, 11));
        EXPECT_EQ(BIT_READ, poll());
        EXPECT_EQ(1, info.failCount);
    }
    info.failCount = 0;
    EXPECT_EQ(0, DataCom(nullptr, 11)->result);
    EXPECT_EQ(0, announced("00 00 00 00 00 05 01 03 02", 9));
    EXPECT_EQ(BIT_READ, poll());
    EXPECT_EQ(0x7777, word(2));
    EXPECT_EQ(1, PLC_driver.lastFailed);

    EXPECT_EQ(1, answered());
    EXPECT_EQ("00 00 00 00 00 06 01 06 00 02 12 3C", poll());
}

TEST_F(BitRead, WithoutTheWordIsRetriedAlsoWhereAnyLengthIsTaken)
{
    PLC_driver.protocolList.first().replyLength = -1;
    EXPECT_EQ(0, announced("00 00 00 00 00 05 01 03 02", 9));
    EXPECT_EQ(BIT_READ, poll());

    PLC_driver.protocolList.first().replyLength = 0;
    EXPECT_EQ(0, announced("", 0));
    EXPECT_EQ(BIT_READ, poll());
}

TEST_F(BitRead, WithoutTheWordIsAtLastGivenUpAsAReplyOfTheWrongLength)
{
    info.retryLimit = 1;

    EXPECT_EQ(0, DataCom(nullptr, 11)->result);
    EXPECT_EQ(71, DataCom(nullptr, 11)->result);
    EXPECT_EQ("nothing", poll());
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
}

TEST_F(BitRead, OfAStationWithoutTheWordIsRetriedAndMakesNoEntry)
{
    info.multiStation = 1;

    EXPECT_EQ(0, announced("00 00 00 00 00 05 01 03 02 12", 11));
    EXPECT_TRUE(PLC_driver.extendList.isEmpty());
    EXPECT_EQ(BIT_READ, poll());

    EXPECT_EQ(1, answered());
    EXPECT_EQ("00 00 00 00 00 06 01 06 00 02 12 3C", poll());
}

TEST_F(BitRead, WithoutTheWordIsGivenUpWithTheRemoteCodeInAnotherStationGroup)
{
    info.retryLimit = 1;
    info.localStation = LOCAL_STATION + 1;
    for (int multiStation : {0, 1}) {
        SCOPED_TRACE(multiStation);
        info.multiStation = multiStation;
        queueWrite(Keyed(Write(8, 35, 1, "01"), 11));
        poll();
        PLC_driver.protocolList.first().var.hostKey = 11;

        EXPECT_EQ(0, announced("00 00 00 00 00 05 01 03 02 12", 11));
        EXPECT_EQ(BIT_READ, poll());
        EXPECT_EQ(182, announced("00 00 00 00 00 05 01 03 02 12", 11));
        EXPECT_EQ("nothing", poll());
        EXPECT_TRUE(PLC_driver.extendList.isEmpty());
    }
}

TEST_F(BitRead, WithoutTheWordAndWithoutAWriteBehindItIsJudgedByItsLengthAlone)
{
    PLC_driver.protocolList.removeLast();

    EXPECT_EQ(1, DataCom(nullptr, 11)->result);
    EXPECT_EQ(0, frameCount());
}

TEST_F(BitRead, TakesTheBitOfTheHeadOfTheWritesAtTheTimeOfTheReply)
{
    PLC_driver.writeList.first() = Keyed(Write(8, 33, 1, "01"), 12);

    answered();

    EXPECT_EQ("00 00 00 00 00 06 01 06 00 02 12 36", poll());
}

// What the write before it left behind is not sent a second time.
TEST_F(BitRead, OfAnotherStationGroupMergesItsOwnBit)
{
    for (int multiStation : {0, 1}) {
        SCOPED_TRACE(multiStation);
        info.multiStation = multiStation;
        answered();
        goodReply();
        queueWrite(Remote(Keyed(Write(8, 38, 1, "01"), 13)));
        poll();

        answered();
        EXPECT_EQ("00 00 00 00 00 06 01 06 00 02 12 74", poll()) << "bit 6, not bit 3";
        goodReply();
        queueWrite(Keyed(Write(8, 35, 1, "01"), 12));
        poll();
    }
}

// A thread that queues a write must not be able to wait for the image while filing waits for the lists.
TEST_F(BitRead, PendingBitIsTakenBeforeTheImageLock)
{
    PLC_driver.imageMutex.lock();
    std::thread communication([] { answered(); });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));

    const bool listIsFree = PLC_driver.listMutex.tryLock(5000);
    EXPECT_TRUE(listIsFree);
    PLC_driver.imageMutex.unlock();
    if (listIsFree) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        const bool imageIsFree = PLC_driver.imageMutex.tryLock(5000);
        EXPECT_TRUE(imageIsFree) << "filing holds the image lock while it waits for the list lock";
        if (imageIsFree)
            PLC_driver.imageMutex.unlock();
        PLC_driver.listMutex.unlock();
    }
    communication.join();
    EXPECT_EQ("00 00 00 00 00 06 01 06 00 02 12 3C", poll());
}
