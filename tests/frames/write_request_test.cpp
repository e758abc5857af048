// SPDX-License-Identifier: MIT
#include "frames/write_request.h"

#include "driver/driver_fixture.h"

#include <climits>

namespace
{

class WriteRequestTest : public DriverTest
{
protected:
    /// Queues the one frame of a request and returns its record.
    static Protocol Build(RW_VAR request)
    {
        PLC_driver.protocolList.clear();
        WriteAnalog(&request);
        return frameCount() == 1 ? PLC_driver.protocolList.first() : Protocol();
    }

    /// The value bytes of a request after its frame was built.
    static QByteArray Padded(RW_VAR request)
    {
        WriteAnalog(&request);
        return request.data;
    }

    /// The first bytes of a frame that is too long to be read.
    static std::string Head(const Protocol& built, int bytes) { return toHex(built.frame.left(bytes)); }
};

struct WriteRow {
    const char* what;
    RW_VAR request;
    const char* frame;
};

/// What the driver looked like when listDoneCallback ran.
struct AtCallback {
    int frames;
    unsigned short word5;
};
AtCallback atCallback;

int NoteState(QList<RW_VAR>*, int, int)
{
    atCallback.frames = PLC_driver.protocolList.size();
    atCallback.word5 = PLC_driver.image.wordArea[0][5];
    return 0;
}

} // namespace

TEST_F(WriteRequestTest, Frames)
{
    const WriteRow rows[] = {
        {"one word", Write(9, 5, 1, "34 12"), "00 00 00 00 00 06 01 06 00 05 12 34"},
        {"two words", Write(11, 0, 2, "01 00 02 00"), "00 00 00 00 00 0B 01 10 24 00 00 02 04 00 01 00 02"},
        {"words behind the first", Write(11, 7, 2, "01 00 02 00"),
         "00 00 00 00 00 0B 01 10 24 07 00 02 04 00 01 00 02"},
        {"double word", Write(14, 1, 1, "78 56 34 12"), "00 00 00 00 00 0B 01 10 F7 02 00 02 04 56 78 12 34"},
        {"two double words", Write(14, 0, 2, "01 00 00 00 02 00 00 00"),
         "00 00 00 00 00 0F 01 10 F7 00 00 04 08 00 01 00 00 00 02 00 00"},
        {"bit on", Write(3, 0, 1, "01"), "00 00 00 00 00 06 01 05 24 00 FF 00"},
        {"bit off", Write(3, 0, 1, "00"), "00 00 00 00 00 06 01 05 24 00 00 00"},
    };
    for (const WriteRow& row : rows) {
        SCOPED_TRACE(row.what);
        const Protocol built = Build(row.request);
        EXPECT_EQ(row.frame, toHex(built.frame));
        EXPECT_EQ(built.frame.size(), built.frameLength);
    }
}

TEST_F(WriteRequestTest, EveryWritableAreaHasItsFunctionCodeAndBase)
{
    struct Row {
        int area;
        const char* frame; // element 2, count 1, data 01 00
    };
    const Row rows[] = {
        {1, "00 00 00 00 00 06 01 05 FC 02 FF 00"},
        {2, "00 00 00 00 00 06 01 05 00 02 FF 00"},
        {3, "00 00 00 00 00 06 01 05 24 02 FF 00"},
        {4, "00 00 00 00 00 06 01 05 E0 02 FF 00"},
        {5, "00 00 00 00 00 06 01 05 F0 02 FF 00"},
        {6, "00 00 00 00 00 06 01 05 F4 02 FF 00"},
        {7, "00 00 00 00 00 06 01 05 1F 42 FF 00"},
        {9, "00 00 00 00 00 06 01 06 00 02 00 01"},
        {10, "00 00 00 00 00 06 01 06 30 02 00 01"},
        {11, "00 00 00 00 00 06 01 06 24 02 00 01"},
        {12, "00 00 00 00 00 06 01 06 F0 02 00 01"},
        {13, "00 00 00 00 00 06 01 06 F4 02 00 01"},
        {14, "00 00 00 00 00 0B 01 10 F7 04 00 02 04 00 01 00 00"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.area);
        EXPECT_EQ(row.frame, toHex(Build(Write(row.area, 2, 1, "01 00")).frame));
    }
}

TEST_F(WriteRequestTest, OnlyADataByteOf1SwitchesACoilOn)
{
    for (const char* data : {"00", "02", "03", "81", "FF", ""}) {
        SCOPED_TRACE(data);
        EXPECT_EQ("00 00 00 00 00 06 01 05 00 00 00 00", toHex(Build(Write(2, 0, 1, data)).frame));
    }
}

TEST_F(WriteRequestTest, OnlyTheFirstCoilIsWritten)
{
    EXPECT_EQ("00 00 00 00 00 06 01 05 00 07 00 00", toHex(Build(Write(2, 7, 3, "00 01 01")).frame));
}

TEST_F(WriteRequestTest, ABitWriteOfCount0WithoutDataSwitchesOff)
{
    EXPECT_EQ("00 00 00 00 00 06 01 05 00 00 00 00", toHex(Build(Write(2, 0, 0, "")).frame));
}

TEST_F(WriteRequestTest, DataIsPaddedWithZeroBytesInPlace)
{
    EXPECT_EQ("01 00 00", toHex(Padded(Write(2, 0, 3, "01"))));
    EXPECT_EQ("34 12 00 00 00 00", toHex(Padded(Write(9, 0, 3, "34 12"))));
    EXPECT_EQ("78 00 00 00 00 00 00 00", toHex(Padded(Write(14, 0, 2, "78"))));
    EXPECT_EQ("00 00", toHex(Padded(Write(9, 0, 1, ""))));
}

TEST_F(WriteRequestTest, MissingRegistersAreSentAs0)
{
    EXPECT_EQ("00 00 00 00 00 0D 01 10 00 00 00 03 06 12 34 00 00 00 00",
              toHex(Build(Write(9, 0, 3, "34 12")).frame));
}

TEST_F(WriteRequestTest, LongerDataIsNeitherCutNorSent)
{
    EXPECT_EQ("34 12 78 56", toHex(Padded(Write(9, 0, 1, "34 12 78 56"))));
    EXPECT_EQ("00 00 00 00 00 06 01 06 00 00 12 34", toHex(Build(Write(9, 0, 1, "34 12 78 56")).frame));
}

TEST_F(WriteRequestTest, PaddingDoesNotReachTheCallersOtherCopies)
{
    RW_VAR request = Write(9, 0, 2, "34 12");
    const QByteArray before = request.data;
    WriteAnalog(&request);
    EXPECT_EQ("34 12", toHex(before));
}

TEST_F(WriteRequestTest, WordWriteOfCount0SendsOneRegisterFromTwoPaddedBytes)
{
    EXPECT_EQ("00 00", toHex(Padded(Write(9, 0, 0, ""))));
    EXPECT_EQ("34 00", toHex(Padded(Write(9, 0, 0, "34"))));
    EXPECT_EQ("00 00 00 00 00 06 01 06 00 00 00 00", toHex(Build(Write(9, 0, 0, "")).frame));
    EXPECT_EQ("00 00 00 00 00 06 01 06 00 00 00 34", toHex(Build(Write(9, 0, 0, "34")).frame));
    EXPECT_EQ("00 00 00 00 00 06 01 06 00 00 12 34", toHex(Build(Write(9, 0, 0, "34 12")).frame));
}

TEST_F(WriteRequestTest, DoubleWordWriteOfCount0SendsNoRegister)
{
    const Protocol built = Build(Write(14, 0, 0, ""));
    EXPECT_EQ("00 00 00 00 00 07 01 10 F7 00 00 00 00", toHex(built.frame));
    EXPECT_EQ("", toHex(built.var.data));
}

TEST_F(WriteRequestTest, ByteCountWrapsAbove127Registers)
{
    EXPECT_EQ("00 00 00 00 01 05 01 10 00 00 00 7F FE", Head(Build(Variable(9, 0, 127)), 13));
    EXPECT_EQ("00 00 00 00 01 07 01 10 00 00 00 80 00", Head(Build(Variable(9, 0, 128)), 13));
    EXPECT_EQ("00 00 00 00 01 09 01 10 00 00 00 81 02", Head(Build(Variable(9, 0, 129)), 13));
    EXPECT_EQ("00 00 00 00 01 07 01 10 F7 00 00 80 00", Head(Build(Variable(14, 0, 64)), 13));
}

TEST_F(WriteRequestTest, AllRegistersFollowAWrappedByteCount)
{
    const Protocol built = Build(Variable(9, 0, 128));
    EXPECT_EQ(269, built.frame.size());
    EXPECT_EQ(269, built.frameLength);
}

TEST_F(WriteRequestTest, OnlyTheLow16BitsOfTheCountCount)
{
    EXPECT_EQ("00 00 00 00 00 06 01 06 00 00 12 34", toHex(Build(Write(9, 0, 0x10001, "34 12")).frame));
    EXPECT_EQ("00 00 00 00 00 07 01 10 F7 00 00 00 00", toHex(Build(Variable(14, 0, 0x8000)).frame));
}

TEST_F(WriteRequestTest, TheLargestCountMakesALongFrameWithAWrappedLengthField)
{
    for (int count : {INT_MAX, -1}) {
        SCOPED_TRACE(count);
        const Protocol built = Build(Variable(9, 0, count)); // 65535 registers, 131077 bytes after the field
        EXPECT_EQ("00 00 00 00 00 05 01 10 00 00 FF FF FE", Head(built, 13));
        EXPECT_EQ(131083, built.frameLength);
        EXPECT_EQ(131070, built.var.data.size());
    }
}

TEST_F(WriteRequestTest, OnlyTheLow16BitsOfTheAddressCount)
{
    EXPECT_EQ("00 00 00 00 00 06 01 06 00 05 12 34", toHex(Build(Write(9, 0x10005, 1, "34 12")).frame));
    EXPECT_EQ("00 00 00 00 00 06 01 06 2F FF 12 34", toHex(Build(Write(10, -1, 1, "34 12")).frame));
    EXPECT_EQ("00 00 00 00 00 0B 01 10 F6 FE 00 02 04 00 01 00 00",
              toHex(Build(Write(14, INT_MAX, 1, "01")).frame));
    EXPECT_EQ("00 00 00 00 00 0B 01 10 09 00 00 02 04 00 01 00 00",
              toHex(Build(Write(14, 0x0900, 1, "01")).frame));
}

TEST_F(WriteRequestTest, ReplyIsTheTwelveByteEchoWithoutData)
{
    for (int area : {1, 9, 14}) {
        SCOPED_TRACE(area);
        const Protocol built = Build(Variable(area, 0, 2));
        EXPECT_EQ(12, built.replyLength);
        EXPECT_EQ(0, built.dataOffset);
        EXPECT_EQ(0, built.dataLength);
    }
}

TEST_F(WriteRequestTest, BroadcastIsSentButExpectsNoReply)
{
    const Protocol built = Build(Write(9, 5, 1, "34 12", 0));
    EXPECT_EQ("00 00 00 00 00 06 00 06 00 05 12 34", toHex(built.frame));
    EXPECT_EQ(0, built.replyLength);
    EXPECT_EQ(0, built.dataOffset);
    EXPECT_EQ(0, built.dataLength);
}

TEST_F(WriteRequestTest, UnitIdentifierIsTheLowByteOfTheStation)
{
    const Protocol built = Build(Write(9, 5, 1, "34 12", 0x102));
    EXPECT_EQ("00 00 00 00 00 06 02 06 00 05 12 34", toHex(built.frame));
    EXPECT_EQ(12, built.replyLength);
}

TEST_F(WriteRequestTest, RecordHoldsTheRequestWithItsPaddedData)
{
    RW_VAR request = Write(9, 5, 2, "34 12", 4);
    request.hostKey = 11;
    request.accessFlag = 1;
    request.name = "speed";
    request.storeSelector = 17;
    const RW_VAR copy = Build(request).var;
    EXPECT_EQ(11, copy.hostKey);
    EXPECT_EQ(1, copy.accessFlag);
    EXPECT_EQ("speed", copy.name.toStdString());
    EXPECT_EQ(9, copy.area);
    EXPECT_EQ(5, copy.address);
    EXPECT_EQ(2, copy.count);
    EXPECT_EQ(4, copy.station);
    EXPECT_EQ(17, copy.storeSelector);
    EXPECT_EQ("34 12 00 00", toHex(copy.data));
}

TEST_F(WriteRequestTest, ExtraWordsAre0)
{
    const Protocol built = Build(Write(9, 0, 1, "01 00"));
    EXPECT_EQ(0, built.extra0);
    EXPECT_EQ(0, built.extra1);
    EXPECT_EQ(0, built.extra2);
}

TEST_F(WriteRequestTest, OneReplyIsExpectedAndTheFrameGoesToTheTail)
{
    PLC_driver.protocolList.append(Protocol());
    info.framesExpected = 9;
    info.framesReceived = 8;
    RW_VAR request = Write(9, 5, 1, "34 12");
    WriteAnalog(&request);
    EXPECT_EQ(1, info.framesExpected);
    EXPECT_EQ(0, info.framesReceived);
    EXPECT_EQ("00 00 00 00 00 06 01 06 00 05 12 34", frame(1));
}

TEST_F(WriteRequestTest, WriteAnalogBuildsNothingForOtherAreas)
{
    info.framesExpected = 9;
    for (int area : {0, 8, 15, -1, INT_MAX, INT_MIN}) {
        SCOPED_TRACE(area);
        RW_VAR request = Write(area, 0, 1, "01");
        WriteAnalog(&request);
        EXPECT_EQ(0, frameCount());
        EXPECT_EQ(9, info.framesExpected);
    }
}

TEST_F(WriteRequestTest, BitOfWordQueuesAReadAndAWriteOfItsWord)
{
    RW_VAR request = Write(8, 35, 1, "01", 2);
    WriteBool_WordOfBit(&request);
    ASSERT_EQ(2, frameCount());
    EXPECT_EQ("00 00 00 00 00 06 02 03 00 02 00 01", frame(0));
    EXPECT_EQ("00 00 00 00 00 06 02 06 00 02 00 00", frame(1));
    EXPECT_EQ(2, info.framesExpected);
    EXPECT_EQ(0, info.framesReceived);
}

TEST_F(WriteRequestTest, BitOfWordReadIsMarkedAsReadBeforeWrite)
{
    RW_VAR request = Write(8, 35, 1, "01", 2);
    request.accessFlag = 5;
    request.storeSelector = 6;
    request.hostKey = 11;
    WriteBool_WordOfBit(&request);
    ASSERT_EQ(2, frameCount());
    const Protocol& read = PLC_driver.protocolList.at(0);
    EXPECT_EQ(12, read.frameLength);
    EXPECT_EQ(11, read.replyLength);
    EXPECT_EQ(9, read.dataOffset);
    EXPECT_EQ(2, read.dataLength);
    EXPECT_EQ(0, read.var.accessFlag);
    EXPECT_EQ(2, read.var.address);
    EXPECT_EQ(-1, read.var.storeSelector);
    EXPECT_EQ(8, read.var.area);
    EXPECT_EQ(11, read.var.hostKey);
    EXPECT_EQ("01", toHex(read.var.data));
    EXPECT_EQ(0, read.extra0 | read.extra1 | read.extra2);
}

TEST_F(WriteRequestTest, BitOfWordWriteKeepsTheBitAddress)
{
    RW_VAR request = Write(8, 35, 1, "01", 2);
    request.accessFlag = 5;
    request.storeSelector = 6;
    WriteBool_WordOfBit(&request);
    ASSERT_EQ(2, frameCount());
    const Protocol& write = PLC_driver.protocolList.at(1);
    EXPECT_EQ(12, write.frameLength);
    EXPECT_EQ(12, write.replyLength);
    EXPECT_EQ(0, write.dataOffset);
    EXPECT_EQ(0, write.dataLength);
    EXPECT_EQ(1, write.var.accessFlag);
    EXPECT_EQ(35, write.var.address);
    EXPECT_EQ(0, write.var.storeSelector);
    EXPECT_EQ("01", toHex(write.var.data));
    EXPECT_EQ(0, write.extra0 | write.extra1 | write.extra2);
}

TEST_F(WriteRequestTest, BitOfWordLeavesTheRequestAlone)
{
    RW_VAR request = Write(8, 35, 3, "01", 2);
    request.accessFlag = 5;
    request.storeSelector = 6;
    WriteBool_WordOfBit(&request);
    EXPECT_EQ(35, request.address);
    EXPECT_EQ(5, request.accessFlag);
    EXPECT_EQ(6, request.storeSelector);
    EXPECT_EQ("01", toHex(request.data));
}

TEST_F(WriteRequestTest, WordOfABitIsItsAddressDividedBy16)
{
    struct Row {
        int bit;
        const char* readFrame;
        int word;
    };
    const Row rows[] = {
        {0, "00 00 00 00 00 06 01 03 00 00 00 01", 0},
        {15, "00 00 00 00 00 06 01 03 00 00 00 01", 0},
        {16, "00 00 00 00 00 06 01 03 00 01 00 01", 1},
        {-15, "00 00 00 00 00 06 01 03 00 00 00 01", 0},
        {-16, "00 00 00 00 00 06 01 03 FF FF 00 01", 0xFFFF},
        {16 * 65535, "00 00 00 00 00 06 01 03 FF FF 00 01", 0xFFFF},
        {16 * 65536, "00 00 00 00 00 06 01 03 00 00 00 01", 0},
        {INT_MAX, "00 00 00 00 00 06 01 03 FF FF 00 01", 0xFFFF},
        {INT_MIN, "00 00 00 00 00 06 01 03 00 00 00 01", 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.bit);
        PLC_driver.protocolList.clear();
        RW_VAR request = Write(8, row.bit, 1, "01");
        WriteBool_WordOfBit(&request);
        ASSERT_EQ(2, frameCount());
        EXPECT_EQ(row.readFrame, frame(0));
        EXPECT_EQ(row.word, PLC_driver.protocolList.at(0).var.address);
        EXPECT_EQ(row.bit, PLC_driver.protocolList.at(1).var.address);
    }
}

TEST_F(WriteRequestTest, BitOfWordIsNotBuiltForABroadcast)
{
    info.framesExpected = 9;
    RW_VAR request = Write(8, 35, 1, "01", 0);
    WriteBool_WordOfBit(&request);
    EXPECT_EQ(0, frameCount());
    EXPECT_EQ(9, info.framesExpected);
}

TEST_F(WriteRequestTest, WriteRegisterQueuesTellsTheRuntimeAndMirrors)
{
    RW_VAR request = Write(9, 5, 1, "34 12");
    request.hostKey = 42;
    WriteRegister(&request);
    ASSERT_EQ(1, frameCount());
    EXPECT_EQ("00 00 00 00 00 06 01 06 00 05 12 34", frame(0));
    EXPECT_EQ((std::vector<ListDoneCall>{{0, 42, 1}}), listDoneCalls());
    EXPECT_EQ(0x1234, PLC_driver.image.wordArea[0][5]);
}

TEST_F(WriteRequestTest, WriteRegisterTellsTheRuntimeOnceForEachWritableArea)
{
    for (int area = 1; area <= 14; ++area) {
        SCOPED_TRACE(area);
        listDoneCalls().clear();
        RW_VAR request = Write(area, 0, 1, "01");
        request.hostKey = area;
        WriteRegister(&request);
        EXPECT_EQ((std::vector<ListDoneCall>{{0, area, 1}}), listDoneCalls());
    }
}

TEST_F(WriteRequestTest, CallbackRunsAfterTheBuilderAndBeforeTheMirror)
{
    PLC_driver.listDoneCallback = NoteState;
    atCallback = {-1, 0xFFFF};
    RW_VAR request = Write(9, 5, 1, "34 12");
    WriteRegister(&request);
    EXPECT_EQ(1, atCallback.frames);
    EXPECT_EQ(0, atCallback.word5);
    EXPECT_EQ(0x1234, PLC_driver.image.wordArea[0][5]);
}

TEST_F(WriteRequestTest, ANullCallbackIsSkipped)
{
    PLC_driver.listDoneCallback = nullptr;
    RW_VAR request = Write(9, 5, 1, "34 12");
    WriteRegister(&request);
    EXPECT_EQ(1, frameCount());
    EXPECT_EQ(0x1234, PLC_driver.image.wordArea[0][5]);
}

TEST_F(WriteRequestTest, AfterAFailedReplyTheImageIsNotTouched)
{
    PLC_driver.lastFailed = 1;
    RW_VAR request = Write(9, 5, 1, "34 12");
    WriteRegister(&request);
    EXPECT_EQ(1, frameCount());
    EXPECT_EQ(1u, listDoneCalls().size());
    EXPECT_EQ(0, PLC_driver.image.wordArea[0][5]);
}

TEST_F(WriteRequestTest, WriteRegisterSendsABitOfAWordAsAPair)
{
    RW_VAR request = Write(8, 35, 1, "01", 2);
    WriteRegister(&request);
    EXPECT_EQ(2, frameCount());
    EXPECT_EQ(1u, listDoneCalls().size());
    EXPECT_EQ(0x0008, PLC_driver.image.wordArea[0][2]);
}

TEST_F(WriteRequestTest, BroadcastOfABitOfAWordOnlyTellsAndMirrors)
{
    RW_VAR request = Write(8, 35, 1, "01", 0);
    request.hostKey = 42;
    WriteRegister(&request);
    EXPECT_EQ(0, frameCount());
    EXPECT_EQ((std::vector<ListDoneCall>{{0, 42, 1}}), listDoneCalls());
    EXPECT_EQ(0x0008, PLC_driver.image.wordArea[0][2]);
}

TEST_F(WriteRequestTest, BroadcastOfABitOfAWordAfterAFailedReplyOnlyTells)
{
    PLC_driver.lastFailed = 1;
    RW_VAR request = Write(8, 35, 1, "01", 0);
    WriteRegister(&request);
    EXPECT_EQ(0, frameCount());
    EXPECT_EQ(1u, listDoneCalls().size());
    EXPECT_EQ(0, PLC_driver.image.wordArea[0][2]);
}

TEST_F(WriteRequestTest, NothingAtAllHappensForAreasThatAreNeverWritten)
{
    info.framesExpected = 9;
    for (int area : {0, 15, 16, -1, INT_MAX, INT_MIN}) {
        SCOPED_TRACE(area);
        RW_VAR request = Write(area, 0, 3, "01");
        WriteRegister(&request);
        EXPECT_EQ(0, frameCount());
        EXPECT_EQ(0u, listDoneCalls().size());
        EXPECT_EQ(9, info.framesExpected);
        EXPECT_FALSE(PLC_driver.image.bitArea[0][0]);
        EXPECT_EQ("01", toHex(request.data));
    }
}

TEST_F(WriteRequestTest, AWriteBeyondTheImageIsSentAndNotMirrored)
{
    RW_VAR request = Write(2, 65535, 1, "01");
    WriteRegister(&request);
    EXPECT_EQ("00 00 00 00 00 06 01 05 FF FF FF 00", frame(0));
    EXPECT_FALSE(PLC_driver.image.bitArea[3][0]); // the cell behind the area
}

TEST_F(WriteRequestTest, TheMirrorUsesThePaddedData)
{
    PLC_driver.image.wordArea[0][6] = 7;
    PLC_driver.image.wordArea[0][7] = 7;
    RW_VAR request = Write(9, 5, 3, "34 12");
    WriteRegister(&request);
    EXPECT_EQ(0x1234, PLC_driver.image.wordArea[0][5]);
    EXPECT_EQ(0, PLC_driver.image.wordArea[0][6]);
    EXPECT_EQ(0, PLC_driver.image.wordArea[0][7]);
}
