// SPDX-License-Identifier: MIT
#include "frames/remote_frame.h"

#include "driver/driver_fixture.h"
#include "image/extended_variables.h"

#include <climits>

namespace
{

class RemoteFrameTest : public DriverTest
{
protected:
    void SetUp() override
    {
        DriverTest::SetUp();
        info.remoteMode = 1;
    }

    /// Queues the one frame of a read and returns its record; request keeps what the builder writes into it.
    static Protocol BuildRead(RW_VAR& request)
    {
        PLC_driver.protocolList.clear();
        Remote_ReadVar(&request);
        return frameCount() == 1 ? PLC_driver.protocolList.first() : Protocol();
    }

    static Protocol BuildWrite(RW_VAR request)
    {
        PLC_driver.protocolList.clear();
        Remote_WriteVar(&request);
        return frameCount() == 1 ? PLC_driver.protocolList.first() : Protocol();
    }

    static int byteAt(const QByteArray& bytes, int at) { return static_cast<unsigned char>(bytes.at(at)); }

    /// What the last byte has to be.
    static int SumOfAllButTheLast(const QByteArray& frame)
    {
        unsigned int sum = 0;
        for (int at = 0; at + 1 < frame.size(); ++at)
            sum += static_cast<unsigned int>(byteAt(frame, at));
        return static_cast<int>(sum & 0xFF);
    }

    /// Hands the driver a reply of the right size.
    static RW_VAR* Answer(int length)
    {
        QByteArray reply(length, '\0');
        return DataCom(&reply, reply.size());
    }
};

RW_VAR Zero()
{
    RW_VAR var = RW_VAR();
    return var;
}

/// Every field differs from byte to byte.
RW_VAR Distinct(int area)
{
    RW_VAR var = RW_VAR();
    var.hostKey = 0x11121314;
    var.hostSubKey = 0x21222324;
    var.accessFlag = 0x31323334;
    var.spare3 = 0x41424344;
    var.stationGroup = 0x51525354;
    var.result = 0x61626364;
    var.name = QStringLiteral("name");
    var.name2 = QStringLiteral("name2");
    var.area = area;
    var.address = 0x71727374;
    var.station = 0x75767778;
    var.count = 0x00010203;
    var.storeSelector = 0x01020304;
    var.spare13 = 0x05060708;
    return var;
}

} // namespace

TEST_F(RemoteFrameTest, AReadOfNothingIsItsLengthAndItsSum)
{
    RW_VAR request = Zero();
    EXPECT_EQ("16 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 16",
              toHex(BuildRead(request).frame));
}

TEST_F(RemoteFrameTest, AReadCarriesTheFieldsOfItsRequestHighByteFirst)
{
    RW_VAR request = Distinct(9);
    EXPECT_EQ("16 14 34 54 78 00 09 71 72 73 74 02 03 01 02 03 04 05 06 07 08 26",
              toHex(BuildRead(request).frame));
}

TEST_F(RemoteFrameTest, NegativeFieldsGoOutInTwosComplement)
{
    RW_VAR request = Zero();
    request.hostKey = request.accessFlag = request.stationGroup = request.station = -1;
    request.address = -2;
    request.count = -1;
    request.storeSelector = -1;
    request.spare13 = INT_MIN;
    EXPECT_EQ("16 FF FF FF FF 00 00 FF FF FF FE FF FF FF FF FF FF 80 00 00 00 87",
              toHex(BuildRead(request).frame));
}

TEST_F(RemoteFrameTest, AReadHas22BytesWhateverDataItsRequestHolds)
{
    RW_VAR request = Write(9, 5, 1, "34 12");
    const Protocol built = BuildRead(request);
    EXPECT_EQ(22, built.frame.size());
    EXPECT_EQ(22, built.frameLength);
}

TEST_F(RemoteFrameTest, AReadKeepsACopyOfItsWholeRequest)
{
    RW_VAR request = Distinct(9);
    request.data = fromHex("01 02");
    const RW_VAR copy = BuildRead(request).var;
    EXPECT_EQ(0x11121314, copy.hostKey);
    EXPECT_EQ(0x21222324, copy.hostSubKey);
    EXPECT_EQ(0x31323334, copy.accessFlag);
    EXPECT_EQ(0x41424344, copy.spare3);
    EXPECT_EQ(0x51525354, copy.stationGroup);
    EXPECT_EQ(QStringLiteral("name"), copy.name);
    EXPECT_EQ(QStringLiteral("name2"), copy.name2);
    EXPECT_EQ(9, copy.area);
    EXPECT_EQ(0x71727374, copy.address);
    EXPECT_EQ(0x75767778, copy.station);
    EXPECT_EQ(0x00010203, copy.count);
    EXPECT_EQ(0x01020304, copy.storeSelector);
    EXPECT_EQ(0x05060708, copy.spare13);
    EXPECT_EQ("01 02", toHex(copy.data));
}

TEST_F(RemoteFrameTest, ExpectedReplyOfBitsIsAByteForEightOfThem)
{
    const int counts[][2] = {{0, 0},  {1, 1},        {8, 1},  {9, 2},   {16, 2},
                             {17, 3}, {40000, 5000}, {-1, 0}, {-20, -1}};
    for (int area = 0; area <= 7; ++area) {
        for (const auto& row : counts) {
            SCOPED_TRACE(testing::Message() << "area " << area << " count " << row[0]);
            RW_VAR request = Variable(area, 5, row[0]);
            const Protocol built = BuildRead(request);
            EXPECT_EQ(row[1], built.dataLength);
            EXPECT_EQ(row[1] + 9, built.replyLength);
            EXPECT_EQ(9, built.dataOffset);
            EXPECT_EQ(row[0], request.count);
        }
    }
}

TEST_F(RemoteFrameTest, ExpectedReplyOfWordsIsTwoBytesEach)
{
    const int counts[][2] = {{0, 0}, {1, 2}, {125, 250}, {40000, 80000}, {-1, -2}};
    for (int area = 9; area <= 13; ++area) {
        for (const auto& row : counts) {
            SCOPED_TRACE(testing::Message() << "area " << area << " count " << row[0]);
            RW_VAR request = Variable(area, 5, row[0]);
            const Protocol built = BuildRead(request);
            EXPECT_EQ(row[1], built.dataLength);
            EXPECT_EQ(row[1] + 9, built.replyLength);
            EXPECT_EQ(9, built.dataOffset);
            EXPECT_EQ(row[0], request.count);
        }
    }
}

TEST_F(RemoteFrameTest, AReadOfDoubleWordsSendsTheOldCountAndKeepsTheRegisters)
{
    RW_VAR request = Variable(14, 3, 5);
    const Protocol built = BuildRead(request);
    EXPECT_EQ("16 00 00 03 01 00 0E 00 00 00 03 00 05 00 00 00 00 00 00 00 00 30", toHex(built.frame));
    EXPECT_EQ(8, request.count);
    EXPECT_EQ(8, built.var.count);
    EXPECT_EQ(16, built.dataLength);
    EXPECT_EQ(25, built.replyLength);
    EXPECT_EQ(9, built.dataOffset);
}

TEST_F(RemoteFrameTest, AReadOfOneDoubleWordOrLessBecomesTwoRegisters)
{
    for (int count : {2, 1, 0, -1, INT_MIN}) {
        SCOPED_TRACE(count);
        RW_VAR request = Variable(14, 3, count);
        const Protocol built = BuildRead(request);
        EXPECT_EQ(2, request.count);
        EXPECT_EQ(2, built.var.count);
        EXPECT_EQ(4, built.dataLength);
        EXPECT_EQ(13, built.replyLength);
    }
}

TEST_F(RemoteFrameTest, RegistersOfAnEndlessCountWrap)
{
    RW_VAR request = Variable(14, 3, INT_MAX);
    const Protocol built = BuildRead(request);
    EXPECT_EQ(-4, request.count);
    EXPECT_EQ(-8, built.dataLength);
    EXPECT_EQ(1, built.replyLength);
}

TEST_F(RemoteFrameTest, TheCountOfDoubleWordsIsRewrittenInTheListAndAgainAtEachTurn)
{
    RW_VAR request = Variable(14, 3, 3);
    AddListReadVar(&request);
    EXPECT_EQ(3, request.count) << "the caller's own record";
    const int turns[][2] = {{3, 4}, {4, 6}, {6, 10}};
    for (const auto& turn : turns) {
        const Protocol* built = ComCommunication();
        ASSERT_TRUE(built);
        EXPECT_EQ(turn[0], byteAt(built->frame, 12));
        EXPECT_EQ(turn[1], built->var.count);
        EXPECT_EQ(turn[1], PLC_driver.readList.first().count);
        EXPECT_EQ(turn[1], Answer(built->replyLength)->count);
    }
}

TEST_F(RemoteFrameTest, TheCountOfOneDoubleWordStaysFromTurnToTurn)
{
    RW_VAR request = Variable(14, 3, 2);
    AddListReadVar(&request);
    for (int turn = 0; turn < 3; ++turn) {
        const Protocol* built = ComCommunication();
        ASSERT_TRUE(built);
        EXPECT_EQ(2, byteAt(built->frame, 12));
        EXPECT_EQ(13, built->replyLength);
        Answer(built->replyLength);
    }
}

TEST_F(RemoteFrameTest, ARetryOfDoubleWordsSendsTheSameFrame)
{
    RW_VAR request = Variable(14, 3, 3);
    AddListReadVar(&request);
    const QByteArray first = ComCommunication()->frame;
    EXPECT_EQ(0, Answer(0)->result);
    EXPECT_EQ(toHex(first), toHex(ComCommunication()->frame));
    EXPECT_EQ(4, PLC_driver.readList.first().count);
}

TEST_F(RemoteFrameTest, WhatCannotBeReadQueuesNothingAndChangesNothing)
{
    for (int area : {8, 15, 16, 255, -1, INT_MAX, INT_MIN}) {
        SCOPED_TRACE(area);
        info.framesExpected = 7;
        info.framesReceived = 5;
        RW_VAR request = Variable(area, 3, 5);
        Remote_ReadVar(&request);
        EXPECT_EQ(0, frameCount());
        EXPECT_EQ(7, info.framesExpected);
        EXPECT_EQ(5, info.framesReceived);
        EXPECT_EQ(5, request.count);
    }
}

TEST_F(RemoteFrameTest, AReadOfStation0IsAwaited)
{
    for (int area : {0, 9, 14}) {
        SCOPED_TRACE(area);
        RW_VAR request = Variable(area, 3, 2, 0);
        const Protocol built = BuildRead(request);
        EXPECT_EQ(0, byteAt(built.frame, 4));
        EXPECT_EQ(area == 0 ? 10 : 13, built.replyLength);
        EXPECT_EQ(9, built.dataOffset);
    }
}

TEST_F(RemoteFrameTest, EachFrameGoesToTheTailAndIsOneExpectedReply)
{
    RW_VAR read = Variable(9, 1, 1);
    Remote_ReadVar(&read);
    info.framesExpected = 2;
    info.framesReceived = 1;
    RW_VAR again = Variable(9, 2, 1);
    Remote_ReadVar(&again);
    EXPECT_EQ(1, info.framesExpected);
    EXPECT_EQ(0, info.framesReceived);
    info.framesExpected = 2;
    info.framesReceived = 1;
    RW_VAR write = Write(8, 3, 1, "01");
    Remote_WriteVar(&write);
    EXPECT_EQ(1, info.framesExpected);
    EXPECT_EQ(0, info.framesReceived);
    ASSERT_EQ(3, frameCount());
    EXPECT_EQ(1, PLC_driver.protocolList.at(0).var.address);
    EXPECT_EQ(2, PLC_driver.protocolList.at(1).var.address);
    EXPECT_EQ(3, PLC_driver.protocolList.at(2).var.address);
}

TEST_F(RemoteFrameTest, AWriteCarriesTheFieldsOfItsRequestAndItsDataUnswapped)
{
    RW_VAR request = Distinct(9);
    request.data = fromHex("34 12 78 56");
    const Protocol built = BuildWrite(request);
    EXPECT_EQ("1A 14 34 54 78 00 09 71 72 73 74 02 03 01 02 03 04 05 06 07 08 34 12 78 56 3E",
              toHex(built.frame));
    EXPECT_EQ(26, built.frameLength);
}

TEST_F(RemoteFrameTest, AWriteWithoutDataHas22Bytes)
{
    EXPECT_EQ("16 00 00 03 01 00 09 00 00 00 05 00 01 00 00 00 00 00 00 00 00 29",
              toHex(BuildWrite(Write(9, 5, 1, "")).frame));
}

TEST_F(RemoteFrameTest, TheLengthByteIsTheLengthModulo256)
{
    const int sizes[][3] = {{233, 255, 255}, {234, 256, 0}, {250, 272, 16}, {490, 512, 0}};
    for (const auto& row : sizes) {
        SCOPED_TRACE(row[0]);
        RW_VAR request = Variable(9, 5, row[0] / 2);
        request.data = QByteArray(row[0], '\x07');
        const Protocol built = BuildWrite(request);
        EXPECT_EQ(row[1], built.frameLength);
        EXPECT_EQ(row[1], built.frame.size());
        EXPECT_EQ(row[2], byteAt(built.frame, 0));
        EXPECT_EQ(SumOfAllButTheLast(built.frame), byteAt(built.frame, built.frame.size() - 1));
    }
}

TEST_F(RemoteFrameTest, TheSumCoversMoreBytesThan16BitsCount)
{
    RW_VAR request = Variable(9, 5, 35000);
    request.data = QByteArray(70000, '\x01');
    const QByteArray frame = BuildWrite(request).frame;
    ASSERT_EQ(70022, frame.size());
    EXPECT_EQ(70022 & 0xFF, byteAt(frame, 0));
    EXPECT_EQ(SumOfAllButTheLast(frame), byteAt(frame, 70021));
    request.data[69990] = '\x02';
    EXPECT_EQ((byteAt(frame, 70021) + 1) & 0xFF, byteAt(BuildWrite(request).frame, 70021));
}

TEST_F(RemoteFrameTest, AWriteExpectsTwelveBytesWithoutData)
{
    for (int station : {1, 255, 256, -1}) {
        SCOPED_TRACE(station);
        const Protocol built = BuildWrite(Write(9, 5, 1, "34 12", station));
        EXPECT_EQ(12, built.replyLength);
        EXPECT_EQ(0, built.dataOffset);
        EXPECT_EQ(0, built.dataLength);
    }
}

TEST_F(RemoteFrameTest, AWriteToStation0ExpectsNothing)
{
    const Protocol built = BuildWrite(Write(9, 5, 1, "34 12", 0));
    EXPECT_EQ(0, built.replyLength);
    EXPECT_EQ(0, built.dataOffset);
    EXPECT_EQ(0, built.dataLength);
    EXPECT_EQ("18 00 00 03 00 00 09 00 00 00 05 00 01 00 00 00 00 00 00 00 00 34 12 70", toHex(built.frame));
}

TEST_F(RemoteFrameTest, AWriteGoesOutWhateverItsArea)
{
    const struct {
        int area;
        const char* bytes;
    } rows[] = {{0, "00 00"},  {1, "00 01"},  {8, "00 08"},       {14, "00 0E"},
                {15, "00 0F"}, {-1, "FF FF"}, {0x10009, "00 09"}, {INT_MAX, "FF FF"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.area);
        const Protocol built = BuildWrite(Write(row.area, 5, 1, "01 00"));
        ASSERT_EQ(24, built.frame.size());
        EXPECT_EQ(row.bytes, toHex(built.frame.mid(5, 2)));
        EXPECT_EQ(12, built.replyLength);
    }
}

TEST_F(RemoteFrameTest, AWriteLeavesItsRequestAsItIs)
{
    RW_VAR request = Write(14, 5, 3, "01 00 00 00 02 00 00 00 03 00 00 00");
    const Protocol built = BuildWrite(request);
    EXPECT_EQ(3, request.count);
    EXPECT_EQ(3, built.var.count);
    EXPECT_EQ(toHex(request.data), toHex(built.var.data));
    EXPECT_EQ(request.accessFlag, built.var.accessFlag);
}

TEST_F(RemoteFrameTest, AWriteIsMirroredInEveryAreaThatHasAMirror)
{
    BuildWrite(Write(1, 5, 2, "01 01"));
    EXPECT_TRUE(PLC_driver.image.bitArea[1][5]);
    EXPECT_TRUE(PLC_driver.image.bitArea[1][6]);
    BuildWrite(Write(8, 35, 1, "01"));
    EXPECT_EQ(0x0008, PLC_driver.image.wordArea[0][2]);
    BuildWrite(Write(10, 5, 1, "34 12"));
    EXPECT_EQ(0x1234, PLC_driver.image.wordArea[4][5]);
    BuildWrite(Write(14, 5, 1, "78 56 34 12"));
    EXPECT_EQ(0x12345678u, PLC_driver.image.dwordArea[5]);
}

TEST_F(RemoteFrameTest, AWriteToArea0OrToNoAreaIsNotMirrored)
{
    const Image before = PLC_driver.image;
    for (int area : {0, 15, -1})
        BuildWrite(Write(area, 5, 1, "01 01"));
    EXPECT_EQ(0, std::memcmp(&before, &PLC_driver.image, sizeof before));
}

TEST_F(RemoteFrameTest, AWriteIsMirroredAfterAFailedReplyToo)
{
    PLC_driver.lastFailed = 1;
    BuildWrite(Write(9, 5, 1, "34 12"));
    EXPECT_EQ(0x1234, PLC_driver.image.wordArea[0][5]);
    EXPECT_EQ(1, PLC_driver.lastFailed);
}

TEST_F(RemoteFrameTest, AWriteToStation0IsMirrored)
{
    BuildWrite(Write(9, 5, 1, "34 12", 0));
    EXPECT_EQ(0x1234, PLC_driver.image.wordArea[0][5]);
}

TEST_F(RemoteFrameTest, AWriteIsMirroredForItsStationWhereValuesAreKeptPerStation)
{
    info.multiStation = 1;
    BuildWrite(Write(9, 5, 1, "34 12", 2));
    BuildWrite(Write(14, 6, 1, "78 56 34 12", 3));
    EXPECT_EQ(0, PLC_driver.image.wordArea[0][5]);
    EXPECT_EQ(0u, PLC_driver.image.dwordArea[6]);
    ASSERT_EQ(2, PLC_driver.extendList.size());
    EXPECT_EQ("34 12", toHex(PLC_driver.extendList.at(ExtendFindSameVar(2, 9, 5)).value));
    EXPECT_EQ("78 56 34 12", toHex(PLC_driver.extendList.at(ExtendFindSameVar(3, 14, 6)).value));
    EXPECT_EQ(2, PLC_driver.extendList.size());
}

TEST_F(RemoteFrameTest, AWriteIsNotAnnounced)
{
    BuildWrite(Write(9, 5, 1, "34 12"));
    BuildWrite(Write(8, 5, 1, "01"));
    EXPECT_TRUE(listDoneCalls().empty());
}

TEST_F(RemoteFrameTest, FramesAreTheSameWhereValuesAreKeptPerStation)
{
    RW_VAR single = Variable(14, 3, 5, 7);
    const Protocol inSingle = BuildRead(single);
    const Protocol writeInSingle = BuildWrite(Write(9, 5, 1, "34 12", 7));
    info.multiStation = 1;
    RW_VAR multi = Variable(14, 3, 5, 7);
    const Protocol inMulti = BuildRead(multi);
    EXPECT_EQ(7, byteAt(inMulti.frame, 4));
    EXPECT_EQ(toHex(inSingle.frame), toHex(inMulti.frame));
    EXPECT_EQ(inSingle.replyLength, inMulti.replyLength);
    EXPECT_EQ(8, multi.count);
    EXPECT_EQ(toHex(writeInSingle.frame), toHex(BuildWrite(Write(9, 5, 1, "34 12", 7)).frame));
}

TEST_F(RemoteFrameTest, RepliesAreFiledFromBehindNineBytesPerStationOrInTheImage)
{
    for (int multiStation : {0, 1}) {
        SCOPED_TRACE(multiStation);
        info.multiStation = multiStation;
        RW_VAR request = Variable(14, 3, 3, 7);
        request.stationGroup = LOCAL_STATION;
        AddListReadVar(&request);
        ASSERT_TRUE(ComCommunication());
        QByteArray reply = fromHex("FF FF FF FF FF FF FF FF FF 56 78 12 34 00 01 00 02");
        EXPECT_EQ(PLC_DONE, DataCom(&reply, reply.size())->result);
        if (multiStation == 0) {
            EXPECT_EQ(0x12345678u, PLC_driver.image.dwordArea[3]);
            EXPECT_EQ(0x00020001u, PLC_driver.image.dwordArea[4]);
        } else {
            EXPECT_EQ("78 56 34 12", toHex(PLC_driver.extendList.at(ExtendFindSameVar(7, 14, 3)).value));
            EXPECT_EQ("01 00 02 00", toHex(PLC_driver.extendList.at(ExtendFindSameVar(7, 14, 4)).value));
        }
        PLC_driver.readList.clear();
    }
}
