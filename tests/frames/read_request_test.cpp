// SPDX-License-Identifier: MIT
#include "frames/read_request.h"

#include "driver/driver_fixture.h"

#include <climits>

namespace
{

class ReadRequestTest : public DriverTest
{
protected:
    /// Queues the one frame of a request and returns its record.
    static Protocol Build(RW_VAR request)
    {
        PLC_driver.protocolList.clear();
        ReadAnalog(&request);
        return frameCount() == 1 ? PLC_driver.protocolList.first() : Protocol();
    }
};

struct ReadRow {
    const char* what;
    RW_VAR request;
    const char* frame;
    int replyLength;
    int dataLength;
};

} // namespace

TEST_F(ReadRequestTest, FrameAndReplyExpectation)
{
    const ReadRow rows[] = {
        {"bits", Variable(2, 100, 16, 3), "00 00 00 00 00 06 03 01 00 64 00 10", 11, 2},
        {"bits at the end of the address space", Variable(1, 5, 10), "00 00 00 00 00 06 01 01 FC 05 00 0A",
         11, 2},
        {"words", Variable(10, 0x10, 4), "00 00 00 00 00 06 01 03 30 10 00 04", 17, 8},
        {"double words, one less than the count", Variable(14, 3, 3), "00 00 00 00 00 06 01 03 F7 06 00 04",
         17, 8},
    };
    for (const ReadRow& row : rows) {
        SCOPED_TRACE(row.what);
        const Protocol built = Build(row.request);
        EXPECT_EQ(row.frame, toHex(built.frame));
        EXPECT_EQ(12, built.frameLength);
        EXPECT_EQ(row.replyLength, built.replyLength);
        EXPECT_EQ(9, built.dataOffset);
        EXPECT_EQ(row.dataLength, built.dataLength);
    }
}

TEST_F(ReadRequestTest, EveryReadableAreaHasItsFunctionCodeAndBase)
{
    struct Row {
        int area;
        const char* frame; // element 2, count 3
    };
    const Row rows[] = {
        {0, "00 00 00 00 00 06 01 01 F8 02 00 03"},  {1, "00 00 00 00 00 06 01 01 FC 02 00 03"},
        {2, "00 00 00 00 00 06 01 01 00 02 00 03"},  {3, "00 00 00 00 00 06 01 01 24 02 00 03"},
        {4, "00 00 00 00 00 06 01 01 E0 02 00 03"},  {5, "00 00 00 00 00 06 01 01 F0 02 00 03"},
        {6, "00 00 00 00 00 06 01 01 F4 02 00 03"},  {7, "00 00 00 00 00 06 01 01 1F 42 00 03"},
        {9, "00 00 00 00 00 06 01 03 00 02 00 03"},  {10, "00 00 00 00 00 06 01 03 30 02 00 03"},
        {11, "00 00 00 00 00 06 01 03 24 02 00 03"}, {12, "00 00 00 00 00 06 01 03 F0 02 00 03"},
        {13, "00 00 00 00 00 06 01 03 F4 02 00 03"}, {14, "00 00 00 00 00 06 01 03 F7 04 00 04"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.area);
        EXPECT_EQ(row.frame, toHex(Build(Variable(row.area, 2, 3)).frame));
    }
}

TEST_F(ReadRequestTest, BitsComeEightToAByteRoundedUp)
{
    EXPECT_EQ(0, Build(Variable(2, 0, 0)).dataLength);
    EXPECT_EQ(1, Build(Variable(2, 0, 1)).dataLength);
    EXPECT_EQ(1, Build(Variable(2, 0, 8)).dataLength);
    EXPECT_EQ(2, Build(Variable(2, 0, 9)).dataLength);
    EXPECT_EQ(5000, Build(Variable(2, 0, 40000)).dataLength);
}

TEST_F(ReadRequestTest, DoubleWordCountOf0Or1StillReadsOneElement)
{
    for (int count : {0, 1, 2}) {
        SCOPED_TRACE(count);
        const Protocol built = Build(Variable(14, 0, count));
        EXPECT_EQ("00 00 00 00 00 06 01 03 F7 00 00 02", toHex(built.frame));
        EXPECT_EQ(4, built.dataLength);
        EXPECT_EQ(13, built.replyLength);
    }
}

TEST_F(ReadRequestTest, ModbusAddressWrapsAt65536)
{
    EXPECT_EQ("00 00 00 00 00 06 01 03 09 00 00 02", toHex(Build(Variable(14, 0x0900, 2)).frame));
    EXPECT_EQ("00 00 00 00 00 06 01 01 00 00 00 01", toHex(Build(Variable(1, 0x0400, 1)).frame));
}

TEST_F(ReadRequestTest, OnlyTheLow16BitsOfTheAddressCount)
{
    EXPECT_EQ("00 00 00 00 00 06 01 03 00 05 00 01", toHex(Build(Variable(9, 0x10005, 1)).frame));
    EXPECT_EQ("00 00 00 00 00 06 01 03 FF FF 00 01", toHex(Build(Variable(9, -1, 1)).frame));
    EXPECT_EQ("00 00 00 00 00 06 01 03 2F FF 00 01", toHex(Build(Variable(10, INT_MAX, 1)).frame));
    EXPECT_EQ("00 00 00 00 00 06 01 03 F6 FE 00 02", toHex(Build(Variable(14, INT_MAX, 2)).frame));
    EXPECT_EQ("00 00 00 00 00 06 01 03 F7 00 00 02", toHex(Build(Variable(14, INT_MIN, 2)).frame));
}

TEST_F(ReadRequestTest, OnlyTheLow16BitsOfTheCountCount)
{
    EXPECT_EQ("00 00 00 00 00 06 01 03 00 00 00 03", toHex(Build(Variable(9, 0, 0x10003)).frame));
    EXPECT_EQ("00 00 00 00 00 06 01 01 00 00 FF FF", toHex(Build(Variable(2, 0, INT_MAX)).frame));
    EXPECT_EQ("00 00 00 00 00 06 01 03 00 00 FF FF", toHex(Build(Variable(9, 0, -1)).frame));
    EXPECT_EQ("00 00 00 00 00 06 01 03 F7 00 00 02", toHex(Build(Variable(14, 0, 0x10001)).frame));
    EXPECT_EQ("00 00 00 00 00 06 01 03 F7 00 FF FC", toHex(Build(Variable(14, 0, INT_MAX)).frame));
}

TEST_F(ReadRequestTest, DataBytesAreCountedIn16Bits)
{
    const Protocol words = Build(Variable(9, 0, 40000)); // 80000 bytes
    EXPECT_EQ(14464, words.dataLength);
    EXPECT_EQ(14473, words.replyLength);

    const Protocol doubleWords = Build(Variable(14, 0, 40000)); // 159996 bytes
    EXPECT_EQ("00 00 00 00 00 06 01 03 F7 00 38 7E", toHex(doubleWords.frame));
    EXPECT_EQ(28924, doubleWords.dataLength);
    EXPECT_EQ(28933, doubleWords.replyLength);
}

TEST_F(ReadRequestTest, ReplyLengthItselfDoesNotWrap)
{
    EXPECT_EQ(65543, Build(Variable(9, 0, 32767)).replyLength); // 9 + 65534
}

TEST_F(ReadRequestTest, BroadcastExpectsNoReply)
{
    for (int area : {0, 7, 9, 13, 14}) {
        SCOPED_TRACE(area);
        const Protocol built = Build(Variable(area, 1, 4, 0));
        EXPECT_EQ(12, built.frame.size());
        EXPECT_EQ(12, built.frameLength);
        EXPECT_EQ(0, built.replyLength);
        EXPECT_EQ(0, built.dataOffset);
        EXPECT_EQ(0, built.dataLength);
    }
}

TEST_F(ReadRequestTest, UnitIdentifierIsTheLowByteOfTheStation)
{
    EXPECT_EQ("00 00 00 00 00 06 05 03 00 00 00 01", toHex(Build(Variable(9, 0, 1, 0x105)).frame));
    EXPECT_EQ("00 00 00 00 00 06 FF 03 00 00 00 01", toHex(Build(Variable(9, 0, 1, -1)).frame));
}

TEST_F(ReadRequestTest, OnlyStation0IsABroadcast)
{
    EXPECT_EQ(11, Build(Variable(9, 0, 1, 256)).replyLength);
    EXPECT_EQ(11, Build(Variable(9, 0, 1, -1)).replyLength);
}

TEST_F(ReadRequestTest, RecordHoldsACopyOfTheWholeRequest)
{
    RW_VAR request = Variable(9, 1000, 2, 4);
    request.hostKey = 11;
    request.hostSubKey = 12;
    request.accessFlag = 13;
    request.spare3 = 14;
    request.stationGroup = 15;
    request.result = 16;
    request.name = "pressure";
    request.name2 = "1000";
    request.storeSelector = 17;
    request.spare13 = 18;
    request.data = fromHex("0A 0B");
    const RW_VAR copy = Build(request).var;
    EXPECT_EQ(11, copy.hostKey);
    EXPECT_EQ(12, copy.hostSubKey);
    EXPECT_EQ(13, copy.accessFlag);
    EXPECT_EQ(14, copy.spare3);
    EXPECT_EQ(15, copy.stationGroup);
    EXPECT_EQ(16, copy.result);
    EXPECT_EQ("pressure", copy.name.toStdString());
    EXPECT_EQ("1000", copy.name2.toStdString());
    EXPECT_EQ(9, copy.area);
    EXPECT_EQ(1000, copy.address);
    EXPECT_EQ(4, copy.station);
    EXPECT_EQ(2, copy.count);
    EXPECT_EQ(17, copy.storeSelector);
    EXPECT_EQ(18, copy.spare13);
    EXPECT_EQ("0A 0B", toHex(copy.data));
}

TEST_F(ReadRequestTest, RequestStaysAsItIs)
{
    RW_VAR request = Variable(14, -1, 0);
    request.data = fromHex("01");
    ReadAnalog(&request);
    EXPECT_EQ(14, request.area);
    EXPECT_EQ(-1, request.address);
    EXPECT_EQ(0, request.count);
    EXPECT_EQ("01", toHex(request.data));
}

TEST_F(ReadRequestTest, ExtraWordsAre0)
{
    const Protocol built = Build(Variable(9, 0, 1));
    EXPECT_EQ(0, built.extra0);
    EXPECT_EQ(0, built.extra1);
    EXPECT_EQ(0, built.extra2);
}

TEST_F(ReadRequestTest, FrameGoesToTheTailOfTheQueue)
{
    RW_VAR first = Variable(9, 1, 1);
    RW_VAR second = Variable(9, 2, 1);
    ReadAnalog(&first);
    ReadAnalog(&second);
    ASSERT_EQ(2, frameCount());
    EXPECT_EQ("00 00 00 00 00 06 01 03 00 01 00 01", frame(0));
    EXPECT_EQ("00 00 00 00 00 06 01 03 00 02 00 01", frame(1));
}

TEST_F(ReadRequestTest, OneReplyIsExpected)
{
    info.framesExpected = 9;
    info.framesReceived = 8;
    RW_VAR request = Variable(9, 0, 1);
    ReadAnalog(&request);
    EXPECT_EQ(1, info.framesExpected);
    EXPECT_EQ(0, info.framesReceived);
}

TEST_F(ReadRequestTest, AreaThatCannotBeReadQueuesNothing)
{
    info.framesExpected = 9;
    info.framesReceived = 8;
    for (int area : {8, 15, 16, -1, INT_MAX, INT_MIN}) {
        SCOPED_TRACE(area);
        RW_VAR request = Variable(area, 0, 1);
        ReadAnalog(&request);
        EXPECT_EQ(0, frameCount());
        EXPECT_EQ(9, info.framesExpected);
        EXPECT_EQ(8, info.framesReceived);
    }
}

TEST_F(ReadRequestTest, ReadRegisterBuildsTheSameFrame)
{
    RW_VAR request = Variable(10, 0x10, 4);
    ReadRegister(&request);
    ASSERT_EQ(1, frameCount());
    EXPECT_EQ("00 00 00 00 00 06 01 03 30 10 00 04", frame(0));
}
