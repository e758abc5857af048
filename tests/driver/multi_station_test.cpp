// SPDX-License-Identifier: MIT
// Several stations in one driver: what happens to one leaves the others alone. Each test runs with requests
// that are served directly and with remote ones, in Modbus TCP and in remote frames.

#include "cycle.h"

#include <gtest/gtest.h>

namespace
{

struct Mode {
    const char* name;
    bool remoteGroup; ///< replies go the remote way
    bool remoteFrames;
};

void PrintTo(const Mode& mode, std::ostream* out)
{
    *out << mode.name;
}

class MultiStationCycle : public CycleTest, public testing::WithParamInterface<Mode>
{
protected:
    void SetUp() override
    {
        CycleTest::SetUp();
        info.multiStation = 1;
        info.remoteMode = GetParam().remoteFrames ? 1 : 0;
    }

    static RW_VAR served(const RW_VAR& var) { return GetParam().remoteGroup ? Remote(var) : var; }

    static RW_VAR wordOf(int station, int key) { return served(Keyed(Variable(9, key, 1, station), key)); }

    static RW_VAR writeOf(int station, int key)
    {
        return served(Keyed(Write(9, key, 1, "01 00", station), key));
    }

    /// Two writes and two one-shot reads for each of stations 2 to 4, in turns: keys 20 to 31 and 40 to 51.
    static void queueForAll()
    {
        for (int turn = 0; turn < 2; ++turn) {
            for (int station : {2, 3, 4}) {
                queueWrite(writeOf(station, 20 + 3 * turn + station));
                queueOnce(wordOf(station, 40 + 3 * turn + station));
            }
        }
    }

    static void expectOnlyStation3IsGone()
    {
        EXPECT_EQ((Keys{22, 24, 25, 27}), keys(PLC_driver.writeList));
        EXPECT_EQ((Keys{42, 44, 45, 47}), keys(PLC_driver.onceReadList));
    }

    static int failForGood()
    {
        for (int retry = 0; retry < RETRY_LIMIT; ++retry)
            EXPECT_EQ(PLC_RETRYING, timeOut());
        return timeOut();
    }

    static int noReply() { return GetParam().remoteGroup ? 141 : 41; }
};

TEST_P(MultiStationCycle, AFailedCyclicReadPurgesItsStationOnly)
{
    queueRead(wordOf(3, 13));
    ASSERT_EQ(13, pollKey());
    queueForAll();

    EXPECT_EQ(noReply(), failForGood());

    expectOnlyStation3IsGone();
    EXPECT_EQ(Keys{13}, keys(PLC_driver.readList));
}

TEST_P(MultiStationCycle, AFailedWritePurgesItsStationOnly)
{
    queueWrite(writeOf(3, 13));
    ASSERT_EQ(13, pollKey());
    queueForAll();

    EXPECT_EQ(noReply(), failForGood());

    expectOnlyStation3IsGone();
}

TEST_P(MultiStationCycle, AFailedOneShotReadPurgesItsStationOnly)
{
    queueOnce(wordOf(3, 13));
    ASSERT_EQ(13, pollKey());
    queueForAll();

    EXPECT_EQ(noReply(), failForGood());

    expectOnlyStation3IsGone();
}

TEST_P(MultiStationCycle, AFailedBitInAWordPurgesItsStationOnly)
{
    queueWrite(served(Keyed(Write(8, 35, 1, "01", 3), 13)));
    ASSERT_EQ(13, pollKey());
    queueForAll();
    while (PLC_driver.protocolList.size() > 1) // the read before the write is answered
        goodReply();

    EXPECT_EQ(noReply(), failForGood());

    expectOnlyStation3IsGone();
    EXPECT_TRUE(PLC_driver.protocolList.isEmpty());
}

TEST_P(MultiStationCycle, AReplyOfTheWrongLengthPurgesItsStationOnly)
{
    info.retryLimit = 0;
    queueRead(wordOf(3, 13));
    ASSERT_EQ(13, pollKey());
    queueForAll();

    EXPECT_EQ(noReply() + 30, reply("00 00"));

    expectOnlyStation3IsGone();
}

TEST_P(MultiStationCycle, EveryWriteOfTheOthersStillGoesOutInItsOrder)
{
    queueWrite(writeOf(3, 13));
    pollKey();
    queueForAll();
    failForGood();

    EXPECT_EQ((Keys{22, 24, 25, 27}), cycles(4));
    EXPECT_TRUE(PLC_driver.writeList.isEmpty());
}

TEST_P(MultiStationCycle, FailuresOfOneStationLeaveTheNextFewerRetriesButPurgeByWhoFailed)
{
    queueWrite(writeOf(3, 13));
    ASSERT_EQ(13, pollKey());
    queueForAll();
    for (int retry = 0; retry < RETRY_LIMIT; ++retry)
        EXPECT_EQ(PLC_RETRYING, timeOut());
    goodReply();

    ASSERT_EQ(22, pollKey());
    EXPECT_EQ(noReply(), timeOut()) << "the count goes on where station 3 left it";
    EXPECT_EQ((Keys{23, 24, 26, 27}), keys(PLC_driver.writeList)) << "station 2 failed";
    EXPECT_EQ(23, pollKey());
    EXPECT_EQ(PLC_RETRYING, timeOut()) << "a final failure starts the count anew";
}

TEST_P(MultiStationCycle, ARequestThatIsNoLongerListedPurgesForTheOneFinishedBefore)
{
    queueWrite(writeOf(4, 14));
    ASSERT_EQ(14, cycle());
    queueRead(wordOf(3, 13));
    ASSERT_EQ(13, pollKey());
    queueForAll();
    PLC_driver.readList.clear(); // as a rebuild with an empty list does

    failForGood();

    EXPECT_EQ(4, PLC_driver.retVar.station);
    EXPECT_EQ((Keys{22, 23, 25, 26}), keys(PLC_driver.writeList));
}

TEST_P(MultiStationCycle, OneShotReadsOfTwoStationsUnderOneKeyAreOneForTheReport)
{
    queueOnce(Keyed(wordOf(3, 13), 50, 1));
    queueOnce(Keyed(wordOf(2, 12), 50, 1));
    ASSERT_EQ(50, pollKey());
    failForGood();
    EXPECT_TRUE(onceReadDoneCalls().empty()) << "another one of that key is still to come";

    ASSERT_EQ(50, cycle());
    const std::vector<OnceReadDoneCall> done = {{PORT_ID, 50, 1, 1}};
    EXPECT_EQ(GetParam().remoteGroup ? std::vector<OnceReadDoneCall>() : done, onceReadDoneCalls());
}

TEST_P(MultiStationCycle, ASwitchedOffStationHoldsUpNobody)
{
    queueRead(wordOf(3, 13));
    queueRead(wordOf(4, 14));
    queueForAll();
    EnCommStation(3, 0);

    // At most five writes and five one-shot reads go before a cyclic read.
    EXPECT_EQ((Keys{22, 24, 25, 27}), cycles(4));
    EXPECT_EQ((Keys{42, 44, 45, 47}), cycles(4));
    EXPECT_EQ((Keys{14, 14}), cycles(2));

    EnCommStation(3, 1);
    EXPECT_EQ((Keys{13, 14, 13}), cycles(3));
}

INSTANTIATE_TEST_SUITE_P(Modes, MultiStationCycle,
                         testing::Values(Mode{"Local", false, false}, Mode{"RemoteGroup", true, false},
                                         Mode{"RemoteFrames", false, true},
                                         Mode{"RemoteGroupAndFrames", true, true}),
                         [](const auto& mode) { return std::string(mode.param.name); });

class MultiStationValues : public CycleTest
{
protected:
    void SetUp() override
    {
        CycleTest::SetUp();
        info.multiStation = 1;
    }

    /// \return the two bytes of a word as the runtime reads them
    static std::string wordAt(int element, int station)
    {
        QString address = QString::number(element);
        QByteArray bytes;
        GetRegisterData(0, 9, &address, station, &bytes, 1);
        return toHex(bytes);
    }
};

TEST_F(MultiStationValues, OfARemoteReplyAreFiledForItsStation)
{
    RW_VAR request = Remote(Variable(9, 10, 1, 2));
    request.storeSelector = -1;
    queueRead(request);
    poll();
    EXPECT_EQ(PLC_DONE, reply("00 00 00 00 00 05 02 03 02 12 34"));
    EXPECT_EQ("34 12", wordAt(10, 2));
    EXPECT_EQ("00 00", wordAt(10, 3));
    EXPECT_EQ(0, word(10)) << "the image of single-station mode";
}

TEST_F(MultiStationValues, OfABroadcastAreThoseOfStation0Alone)
{
    queueWrite(Write(9, 10, 1, "34 12", 0));
    poll();
    EXPECT_EQ(PLC_DONE, timeOut()) << "no reply is awaited";
    EXPECT_EQ("34 12", wordAt(10, 0));
    EXPECT_EQ("00 00", wordAt(10, 1));
}

TEST_F(MultiStationValues, StayAsTheyWereWhenTheirStationFailsOrIsSwitchedOff)
{
    queueReadOf(2, 10);
    poll();
    reply("00 00 00 00 00 05 02 03 02 12 34");
    poll();
    for (int failure = 0; failure <= RETRY_LIMIT; ++failure)
        timeOut();
    EXPECT_EQ("34 12", wordAt(10, 2));
    EnCommStation(2, 0);
    EXPECT_EQ("34 12", wordAt(10, 2));
}

TEST_F(MultiStationValues, OfAWriteThatFailedAreNotTakenBack)
{
    queueWriteOf(2, 10);
    poll();
    for (int failure = 0; failure <= RETRY_LIMIT; ++failure)
        timeOut();
    EXPECT_EQ("01 00", wordAt(10, 2)) << "filed when the frame was built";
    EXPECT_EQ("00 00", wordAt(10, 3));
}

} // namespace
