// SPDX-License-Identifier: MIT
#include "image/reply_filing.h"

#include "driver/driver_fixture.h"
#include "driver/reply_handling.h"
#include "frames/write_request.h"

#include <climits>

namespace
{

/// A reply whose header says nothing true: only the frame in flight decides where data goes.
const char misleadingHeader[] = "FF FF FF FF FF FF FF 63 FF";

class ReplyFilingTest : public DriverTest
{
protected:
    /// Puts the read of \a var in flight, expecting \a dataLength data bytes.
    static void InFlight(const RW_VAR& var, int dataLength)
    {
        Protocol read = Protocol();
        read.replyLength = 9 + dataLength;
        read.dataOffset = 9;
        read.dataLength = dataLength;
        read.var = var;
        PLC_driver.protocolList.clear();
        PLC_driver.protocolList.append(read);
    }

    static void Arrive(const char* hexData)
    {
        QByteArray reply = fromHex(misleadingHeader) + fromHex(hexData);
        TakePendingBit();
        SaveToLocalDataErea(&reply);
    }

    /// A read of \a var answered as expected.
    static void File(const RW_VAR& var, const char* hexData)
    {
        InFlight(var, fromHex(hexData).size());
        Arrive(hexData);
    }

    /// A bit write at the head of writeList, its read and its write frame in flight.
    static void BitWriteInFlight(int bitAddress, const char* hexData)
    {
        RW_VAR write = Write(8, bitAddress, 1, hexData);
        PLC_driver.writeList.append(write);
        WriteBool_WordOfBit(&write);
    }

    static std::string PatchedValue() { return toHex(PLC_driver.protocolList.at(1).frame.mid(10, 2)); }

    static unsigned short* Words(int buffer) { return PLC_driver.image.wordArea[buffer]; }
    static bool* Bits(int buffer) { return PLC_driver.image.bitArea[buffer]; }
    static unsigned int* DoubleWords() { return PLC_driver.image.dwordArea; }

    /// Cells of an area that are 1.
    static int CountOnes(int buffer)
    {
        int ones = 0;
        for (bool cell : PLC_driver.image.bitArea[buffer])
            ones += cell ? 1 : 0;
        return ones;
    }

    /// "area:address=value" of every entry of a station, in list order.
    static std::vector<std::string> Entries(int station)
    {
        std::vector<std::string> entries;
        for (const EXTENDVAR& entry : PLC_driver.extendList) {
            if (entry.station == station)
                entries.push_back(std::to_string(entry.area) + ":" + std::to_string(entry.address) + "=" +
                                  toHex(entry.value));
        }
        return entries;
    }

    static bool ImageIsAllZero()
    {
        static const Image zero = Image();
        return std::memcmp(&zero, &PLC_driver.image, sizeof zero) == 0;
    }

    typedef std::vector<std::string> List;
};

class MultiStationFilingTest : public ReplyFilingTest
{
protected:
    void SetUp() override
    {
        ReplyFilingTest::SetUp();
        info.multiStation = 1;
    }
};

} // namespace

TEST_F(ReplyFilingTest, EachWordAreaHasItsBuffer)
{
    struct Row {
        int area, buffer;
    };
    const Row rows[] = {{9, 0}, {10, 4}, {11, 1}, {12, 2}, {13, 3}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.area);
        std::memset(&PLC_driver.image, 0, sizeof PLC_driver.image);
        File(Variable(row.area, 7, 1), "12 34");
        EXPECT_EQ(0x1234, Words(row.buffer)[7]);
        Words(row.buffer)[7] = 0;
        EXPECT_TRUE(ImageIsAllZero());
    }
}

TEST_F(ReplyFilingTest, EachBitAreaHasItsBuffer)
{
    for (int area = 0; area <= 7; ++area) {
        SCOPED_TRACE(area);
        std::memset(&PLC_driver.image, 0, sizeof PLC_driver.image);
        File(Variable(area, 7, 1), "01");
        EXPECT_TRUE(Bits(area)[7]);
        Bits(area)[7] = false;
        EXPECT_TRUE(ImageIsAllZero());
    }
}

TEST_F(ReplyFilingTest, WordsComeHighByteFirst)
{
    File(Variable(9, 100, 2), "12 34 AB CD");
    EXPECT_EQ(0x1234, Words(0)[100]);
    EXPECT_EQ(0xABCD, Words(0)[101]);
}

TEST_F(ReplyFilingTest, FiveDataBytesStoreTwoWords)
{
    Words(0)[2] = 7;
    File(Variable(9, 0, 2), "00 01 00 02 FF");
    EXPECT_EQ(1, Words(0)[0]);
    EXPECT_EQ(2, Words(0)[1]);
    EXPECT_EQ(7, Words(0)[2]);
}

TEST_F(ReplyFilingTest, OneDataByteStoresNoWord)
{
    File(Variable(9, 0, 1), "FF");
    EXPECT_TRUE(ImageIsAllZero());
}

TEST_F(ReplyFilingTest, DoubleWordIsTwoRegistersLowHalfFirst)
{
    File(Variable(14, 3, 2), "12 34 56 78");
    EXPECT_EQ(0x56781234u, DoubleWords()[3]);
}

TEST_F(ReplyFilingTest, SeveralDoubleWordsFollowEachOther)
{
    File(Variable(14, 3, 4), "12 34 56 78 00 01 00 00 FF FF FF FE");
    EXPECT_EQ(0x56781234u, DoubleWords()[3]);
    EXPECT_EQ(1u, DoubleWords()[4]);
    EXPECT_EQ(0xFFFEFFFFu, DoubleWords()[5]);
}

TEST_F(ReplyFilingTest, BytesBeyondTheLastWholeDoubleWordAreLeft)
{
    File(Variable(14, 0, 3), "00 01 00 00 FF FF FF");
    EXPECT_EQ(1u, DoubleWords()[0]);
    EXPECT_EQ(0u, DoubleWords()[1]);
}

TEST_F(ReplyFilingTest, ThreeDataBytesStoreNoDoubleWord)
{
    File(Variable(14, 0, 2), "FF FF FF");
    EXPECT_TRUE(ImageIsAllZero());
}

TEST_F(ReplyFilingTest, BitsComeLowestFirst)
{
    File(Variable(2, 20, 16), "05 80");
    EXPECT_TRUE(Bits(2)[20]);
    EXPECT_FALSE(Bits(2)[21]);
    EXPECT_TRUE(Bits(2)[22]);
    EXPECT_TRUE(Bits(2)[35]);
    EXPECT_EQ(3, CountOnes(2));
}

TEST_F(ReplyFilingTest, EveryByteReachesItsEightCells)
{
    for (int byte = 0; byte <= 0xFF; ++byte) {
        SCOPED_TRACE(byte);
        File(Variable(2, 8, 16), (QByteArray(1, '\0') + static_cast<char>(byte)).toHex().constData());
        for (int bit = 0; bit < 8; ++bit)
            EXPECT_EQ(((byte >> bit) & 1) != 0, Bits(2)[16 + bit]) << "bit " << bit;
    }
}

TEST_F(ReplyFilingTest, BitsThatAreOffClearTheirCells)
{
    Bits(2)[0] = Bits(2)[1] = true;
    File(Variable(2, 0, 8), "02");
    EXPECT_FALSE(Bits(2)[0]);
    EXPECT_TRUE(Bits(2)[1]);
}

TEST_F(ReplyFilingTest, OneBitMoreThanTheCountIsStored)
{
    File(Variable(2, 0, 10), "FF FF");
    EXPECT_TRUE(Bits(2)[10]);
    EXPECT_FALSE(Bits(2)[11]);
    EXPECT_EQ(11, CountOnes(2));
}

TEST_F(ReplyFilingTest, OfAnyCountOneBitMoreIsStored)
{
    for (int count = 0; count < 24; ++count) {
        SCOPED_TRACE(count);
        std::memset(&PLC_driver.image, 0, sizeof PLC_driver.image);
        File(Variable(2, 0, count), "FF FF FF");
        EXPECT_EQ(count + 1, CountOnes(2));
    }
}

TEST_F(ReplyFilingTest, BitsEndWithTheLastByte)
{
    File(Variable(2, 0, 8), "FF");
    EXPECT_EQ(8, CountOnes(2));
}

TEST_F(ReplyFilingTest, BitCountOf0StoresOneCell)
{
    File(Variable(2, 0, 0), "FF");
    EXPECT_EQ(1, CountOnes(2));
}

TEST_F(ReplyFilingTest, NegativeBitCountStoresNothing)
{
    File(Variable(2, 0, -1), "FF");
    File(Variable(2, 0, INT_MIN), "FF");
    EXPECT_TRUE(ImageIsAllZero());
}

TEST_F(ReplyFilingTest, LargestBitCountStoresTheBitsThatCame)
{
    File(Variable(2, 0, INT_MAX), "FF");
    EXPECT_EQ(8, CountOnes(2));
}

TEST_F(ReplyFilingTest, NoDataStoresNothing)
{
    for (int area = 0; area <= 14; ++area) {
        SCOPED_TRACE(area);
        File(Variable(area, 0, 8), "");
        EXPECT_TRUE(ImageIsAllZero());
    }
}

TEST_F(ReplyFilingTest, OnlyTheDataBytesOfTheFrameInFlightAreTaken)
{
    InFlight(Variable(9, 0, 1), 2);
    Arrive("00 01 00 02");
    EXPECT_EQ(1, Words(0)[0]);
    EXPECT_EQ(0, Words(0)[1]);
}

TEST_F(ReplyFilingTest, DataBeginsWhereTheFrameInFlightSays)
{
    InFlight(Variable(9, 0, 1), 2);
    PLC_driver.protocolList.first().dataOffset = 3;
    QByteArray reply = fromHex("AA AA AA 12 34 AA");
    SaveToLocalDataErea(&reply);
    EXPECT_EQ(0x1234, Words(0)[0]);
}

TEST_F(ReplyFilingTest, DataMayBeginWithTheReply)
{
    InFlight(Variable(9, 0, 1), 2);
    PLC_driver.protocolList.first().dataOffset = 0;
    QByteArray reply = fromHex("12 34 AA");
    SaveToLocalDataErea(&reply);
    EXPECT_EQ(0x1234, Words(0)[0]);
}

// A write that has no data of its own behind it can be of any area: only in area 8 does it need the word.
TEST_F(ReplyFilingTest, OnlyAReadBeforeWriteOfArea8LacksItsWord)
{
    for (int area = 0; area <= 14; ++area)
        for (int selector : {-2, -1, 0, 1}) {
            RW_VAR var = Variable(area, 0, 1);
            var.storeSelector = selector;
            InFlight(var, 2);
            PLC_driver.protocolList.append(PLC_driver.protocolList.at(0));
            EXPECT_EQ(area == 8 && selector == -1, LacksWordForWrite(nullptr)) << area << ", " << selector;
        }
}

TEST_F(ReplyFilingTest, DataThatWouldBeginBeforeTheReplyIsNotStored)
{
    InFlight(Variable(9, 0, 1), 2);
    PLC_driver.protocolList.first().dataOffset = -1; // the runtime holds a pointer to this record
    Arrive("12 34");
    EXPECT_TRUE(ImageIsAllZero());
}

TEST_F(ReplyFilingTest, TheFrameStaysInFlight)
{
    File(Variable(9, 0, 1), "12 34");
    EXPECT_EQ(1, frameCount());
}

TEST_F(ReplyFilingTest, CodesThatAreNoAreaStoreNothing)
{
    for (int area : {15, 16, INT_MAX, -1, INT_MIN}) {
        SCOPED_TRACE(area);
        File(Variable(area, 0, 2), "FF FF FF FF");
        EXPECT_TRUE(ImageIsAllZero());
    }
}

TEST_F(ReplyFilingTest, ANullReplyStoresNothing)
{
    for (int area = 0; area <= 14; ++area) {
        SCOPED_TRACE(area);
        InFlight(Variable(area, 0, 8), 4);
        TakePendingBit();
        SaveToLocalDataErea(nullptr);
        EXPECT_TRUE(ImageIsAllZero());
    }
}

TEST_F(ReplyFilingTest, AReplyWithoutItsDataStoresNothing)
{
    for (int area = 0; area <= 14; ++area) {
        SCOPED_TRACE(area);
        InFlight(Variable(area, 0, 8), 4);
        QByteArray empty;
        QByteArray headerOnly = fromHex("00 00 00 00 00");
        SaveToLocalDataErea(&empty);
        SaveToLocalDataErea(&headerOnly);
        EXPECT_TRUE(ImageIsAllZero());
    }
}

TEST_F(ReplyFilingTest, AShortReplyStoresTheElementsThatAreWhollyThere)
{
    InFlight(Variable(9, 0, 4), 8);
    Arrive("00 01 FF");
    EXPECT_EQ(1, Words(0)[0]);
    EXPECT_EQ(0, Words(0)[1]);

    InFlight(Variable(14, 0, 3), 8);
    Arrive("00 01 00 00 FF FF FF");
    EXPECT_EQ(1u, DoubleWords()[0]);
    EXPECT_EQ(0u, DoubleWords()[1]);

    InFlight(Variable(2, 0, 32), 4);
    Arrive("FF");
    EXPECT_EQ(8, CountOnes(2));
}

TEST_F(ReplyFilingTest, AShortReplyLeavesTheOtherElementsAsTheyWere)
{
    Words(0)[1] = 7;
    Bits(2)[8] = true;
    InFlight(Variable(9, 0, 2), 4);
    Arrive("00 01 00");
    InFlight(Variable(2, 0, 16), 2);
    Arrive("00");
    EXPECT_EQ(7, Words(0)[1]);
    EXPECT_TRUE(Bits(2)[8]);
}

TEST_F(ReplyFilingTest, WordsBehindTheLastElementAreDropped)
{
    for (int area : {9, 10, 11, 12, 13}) {
        SCOPED_TRACE(area);
        std::memset(&PLC_driver.image, 0, sizeof PLC_driver.image);
        const int buffer = area == 10 ? 4 : area == 9 ? 0 : area - 10;
        File(Variable(area, 65533, 4), "00 01 00 02 00 03 00 04");
        EXPECT_EQ(1, Words(buffer)[65533]);
        EXPECT_EQ(2, Words(buffer)[65534]);
        Words(buffer)[65533] = Words(buffer)[65534] = 0;
        EXPECT_TRUE(ImageIsAllZero());
    }
}

TEST_F(ReplyFilingTest, WordsBeforeTheFirstElementAreDropped)
{
    File(Variable(9, -2, 4), "00 01 00 02 00 03 00 04");
    EXPECT_EQ(3, Words(0)[0]);
    EXPECT_EQ(4, Words(0)[1]);
    Words(0)[0] = Words(0)[1] = 0;
    EXPECT_TRUE(ImageIsAllZero());
}

TEST_F(ReplyFilingTest, BitsOutsideTheAreaAreDropped)
{
    File(Variable(2, 65530, 16), "FF FF");
    for (int element = 65530; element <= 65534; ++element)
        EXPECT_TRUE(Bits(2)[element]) << element;
    EXPECT_EQ(5, CountOnes(2));
    EXPECT_EQ(0, CountOnes(3));

    File(Variable(4, -6, 8), "FF");
    EXPECT_TRUE(Bits(4)[0]);
    EXPECT_TRUE(Bits(4)[1]);
    EXPECT_EQ(2, CountOnes(4));
    EXPECT_EQ(0, CountOnes(3));
}

TEST_F(ReplyFilingTest, WholeBytesOfBitsThatBeginBeforeTheAreaAreShiftedIntoPlace)
{
    File(Variable(4, -1, 16), "02 01"); // bits 1 and 8
    EXPECT_TRUE(Bits(4)[0]);
    EXPECT_TRUE(Bits(4)[7]);
    EXPECT_EQ(2, CountOnes(4));
}

TEST_F(ReplyFilingTest, TheBitPastTheCountIsDroppedToo)
{
    File(Variable(7, 65533, 2), "FF");
    EXPECT_EQ(2, CountOnes(7));
    EXPECT_EQ(0, Words(0)[0]); // lies behind bit area 7
}

TEST_F(ReplyFilingTest, DoubleWordsOutsideTheAreaAreDropped)
{
    File(Variable(14, 65534, 3), "00 01 00 00 00 02 00 00");
    EXPECT_EQ(1u, DoubleWords()[65534]);
    File(Variable(14, -1, 3), "00 03 00 00 00 04 00 00");
    EXPECT_EQ(4u, DoubleWords()[0]);
    DoubleWords()[0] = DoubleWords()[65534] = 0;
    EXPECT_TRUE(ImageIsAllZero());
}

TEST_F(ReplyFilingTest, FarAwayAddressesStoreNothing)
{
    for (int area = 0; area <= 14; ++area) {
        for (int address : {65535, 65536, INT_MAX - 1, INT_MAX, INT_MIN, INT_MIN + 1, -65536}) {
            SCOPED_TRACE(std::to_string(area) + " at " + std::to_string(address));
            File(Variable(area, address, 16), "FF FF FF FF");
            EXPECT_TRUE(ImageIsAllZero());
        }
    }
}

TEST_F(ReplyFilingTest, SaversTakeTheirRoutingFromTheFrameInFlight)
{
    unsigned short words[4] = {};
    unsigned int doubleWords[4] = {};
    bool bits[16] = {};
    QByteArray reply = fromHex(misleadingHeader) + fromHex("12 34 56 78");
    InFlight(Variable(9, 2, 1), 2);
    SaveWordToUS(&reply, words);
    InFlight(Variable(14, 2, 2), 4);
    SaveDWordToUS(&reply, doubleWords);
    InFlight(Variable(2, 2, 8), 1);
    SaveBitToUC(&reply, bits);
    EXPECT_EQ(0x1234, words[2]);
    EXPECT_EQ(0x56781234u, doubleWords[2]);
    EXPECT_FALSE(bits[2]);
    EXPECT_TRUE(bits[3]);
    EXPECT_TRUE(bits[6]);
}

TEST_F(ReplyFilingTest, PendingBitOf1IsMergedAndPatchedIntoTheWriteFrame)
{
    BitWriteInFlight(35, "01");
    Arrive("12 30");
    EXPECT_EQ(0x1238, Words(0)[2]);
    EXPECT_EQ("12 38", PatchedValue());
    EXPECT_EQ("00 00 00 00 00 06 01 06 00 02 12 38", frame(1));
}

TEST_F(ReplyFilingTest, PendingBitOfAnythingElseIsCleared)
{
    for (const char* data : {"00", "02", "FF"}) {
        SCOPED_TRACE(data);
        PLC_driver.writeList.clear();
        PLC_driver.protocolList.clear();
        BitWriteInFlight(35, data);
        Arrive("12 3F");
        EXPECT_EQ(0x1237, Words(0)[2]);
        EXPECT_EQ("12 37", PatchedValue());
    }
}

TEST_F(ReplyFilingTest, PendingBit15IsTheHighestOfTheWord)
{
    BitWriteInFlight(15, "01");
    Arrive("00 01");
    EXPECT_EQ(0x8001, Words(0)[0]);
    EXPECT_EQ("80 01", PatchedValue());
}

TEST_F(ReplyFilingTest, OnlyTheHeadOfTheWriteListIsMerged)
{
    BitWriteInFlight(35, "01");
    PLC_driver.writeList.append(Write(8, 36, 1, "01"));
    Arrive("00 00");
    EXPECT_EQ("00 08", PatchedValue());
}

TEST_F(ReplyFilingTest, WithoutPendingDataTheWordIsPatchedUnchanged)
{
    BitWriteInFlight(35, "");
    Arrive("12 34");
    EXPECT_EQ(0x1234, Words(0)[2]);
    EXPECT_EQ("12 34", PatchedValue());
}

TEST_F(ReplyFilingTest, WithoutAPendingWriteTheWordIsPatchedUnchanged)
{
    BitWriteInFlight(35, "01");
    PLC_driver.writeList.clear();
    Arrive("12 34");
    EXPECT_EQ(0x1234, Words(0)[2]);
    EXPECT_EQ("12 34", PatchedValue());
}

TEST_F(ReplyFilingTest, AWordReadOfArea8ThatIsNoReadBeforeWriteIsOnlyStored)
{
    for (int selector : {0, 1, -2}) {
        SCOPED_TRACE(selector);
        PLC_driver.writeList.clear();
        PLC_driver.protocolList.clear();
        BitWriteInFlight(35, "01");
        PLC_driver.protocolList.first().var.storeSelector = selector;
        Arrive("12 30");
        EXPECT_EQ(0x1230, Words(0)[2]);
        EXPECT_EQ("00 00", PatchedValue());
    }
}

TEST_F(ReplyFilingTest, AReadBeforeWriteWithoutItsWriteFrameIsStored)
{
    BitWriteInFlight(35, "01");
    PLC_driver.protocolList.removeLast();
    Arrive("12 30");
    EXPECT_EQ(1, frameCount());
    EXPECT_EQ(0x1238, Words(0)[2]);
}

TEST_F(ReplyFilingTest, AShortSecondFrameIsNotPatched)
{
    BitWriteInFlight(35, "01");
    PLC_driver.protocolList[1].frame = fromHex("00 00 00 00 00 06 01 06 00 02 00");
    Arrive("12 30");
    EXPECT_EQ("00 00 00 00 00 06 01 06 00 02 00", frame(1));
    EXPECT_EQ(0x1238, Words(0)[2]);
}

TEST_F(ReplyFilingTest, Area8ReplyOfOneDataByteStoresAndPatchesNothing)
{
    BitWriteInFlight(35, "01");
    PLC_driver.protocolList.first().dataLength = 1;
    Arrive("12 30");
    EXPECT_TRUE(ImageIsAllZero());
    EXPECT_EQ("00 00", PatchedValue());
}

TEST_F(ReplyFilingTest, Area8WordThatIsNotWhollyThereIsNotStored)
{
    BitWriteInFlight(35, "01");
    Arrive("12");
    EXPECT_TRUE(ImageIsAllZero());
}

TEST_F(ReplyFilingTest, Area8WordOutsideTheImageIsStillPatched)
{
    BitWriteInFlight(16 * 65535 + 3, "01"); // word 65535
    Arrive("12 30");
    EXPECT_TRUE(ImageIsAllZero());
    EXPECT_EQ("12 38", PatchedValue());
}

TEST_F(ReplyFilingTest, Area8WordsAreStoredUpToTheLastAndNoFurther)
{
    Words(1)[0] = 0x7777; // right behind
    for (int address : {0, 65534, -1, 65535})
        File(Variable(8, address, 1), "12 30");
    EXPECT_EQ(0x1230, Words(0)[0]);
    EXPECT_EQ(0x1230, Words(0)[65534]);
    EXPECT_EQ(0x7777, Words(1)[0]);
    EXPECT_EQ(0, CountOnes(7)); // right before
}

TEST_F(ReplyFilingTest, NegativePendingBitAddressIsSurvived)
{
    for (int address : {-1, -17, INT_MIN, INT_MIN + 1}) {
        SCOPED_TRACE(address);
        PLC_driver.writeList.clear();
        PLC_driver.protocolList.clear();
        BitWriteInFlight(address, "01");
        Arrive("FF FF");
        EXPECT_EQ("FF FF", PatchedValue());
    }
}

TEST_F(ReplyFilingTest, SpecialRegisterSaveWorksOnAnyBuffer)
{
    unsigned short words[3] = {};
    BitWriteInFlight(35, "01");
    TakePendingBit();
    QByteArray reply = fromHex(misleadingHeader) + fromHex("12 30");
    SpecialRegisterSave(&reply, words);
    EXPECT_EQ(0x1238, words[2]);
    EXPECT_EQ("12 38", PatchedValue());
}

TEST_F(ReplyFilingTest, FilingTakesNoImageLock)
{
    PLC_driver.imageMutex.lock(); // as the local path does
    File(Variable(9, 0, 1), "12 34");
    PLC_driver.imageMutex.unlock();
    EXPECT_EQ(0x1234, Words(0)[0]);
}

TEST_F(ReplyFilingTest, FilingTakesNoListLock)
{
    InFlight(Variable(9, 0, 1), 2);
    QByteArray reply = fromHex(misleadingHeader) + fromHex("12 34");
    PLC_driver.listMutex.lock();
    SaveToLocalDataErea(&reply);
    PLC_driver.listMutex.unlock();
    EXPECT_EQ(0x1234, Words(0)[0]);
}

TEST_F(MultiStationFilingTest, WordsGetEntriesOfTwoBytesLowByteFirst)
{
    for (int area = 9; area <= 13; ++area) {
        SCOPED_TRACE(area);
        PLC_driver.extendList.clear();
        File(Variable(area, 100, 2, 5), "12 34 AB CD FF");
        const std::string prefix = std::to_string(area);
        EXPECT_EQ((List{prefix + ":100=34 12", prefix + ":101=CD AB"}), Entries(5));
    }
}

TEST_F(MultiStationFilingTest, DoubleWordsGetEntriesOfFourBytesLowByteFirst)
{
    File(Variable(14, 3, 2), "12 34 56 78 FF FF FF");
    EXPECT_EQ((List{"14:3=34 12 78 56"}), Entries(1));
}

TEST_F(MultiStationFilingTest, NothingIsWrittenBehindAValue)
{
    File(Variable(14, 0, 2), "12 34 56 78");
    File(Variable(9, 0, 1), "12 34");
    File(Variable(2, 0, 0), "FF");
    for (const EXTENDVAR& entry : PLC_driver.extendList)
        EXPECT_EQ('\0', entry.value.constData()[entry.value.size()]) << entry.area;
}

TEST_F(MultiStationFilingTest, SeveralDoubleWordsGetAnEntryEach)
{
    File(Variable(14, 3, 4), "12 34 56 78 00 01 00 00 FF FF FF FE");
    EXPECT_EQ((List{"14:3=34 12 78 56", "14:4=01 00 00 00", "14:5=FF FF FE FF"}), Entries(1));
}

TEST_F(MultiStationFilingTest, DoubleWordsBeforeTheAreaAreDroppedWithTheirBytes)
{
    File(Variable(14, -1, 4), "00 01 00 00 00 02 00 00 00 03 00 00");
    EXPECT_EQ((List{"14:0=02 00 00 00", "14:1=03 00 00 00"}), Entries(1));
}

TEST_F(MultiStationFilingTest, BitsGetEntriesOfOneByte)
{
    for (int area = 0; area <= 7; ++area) {
        SCOPED_TRACE(area);
        PLC_driver.extendList.clear();
        File(Variable(area, 20, 8), "05");
        const std::string p = std::to_string(area) + ":";
        EXPECT_EQ((List{p + "20=01", p + "21=00", p + "22=01", p + "23=00", p + "24=00", p + "25=00",
                        p + "26=00", p + "27=00"}),
                  Entries(1));
    }
}

TEST_F(MultiStationFilingTest, BitsEndOnePastTheCountWithAnEmptyEntryBehind)
{
    File(Variable(2, 0, 2), "FF");
    EXPECT_EQ((List{"2:0=01", "2:1=01", "2:2=01", "2:3="}), Entries(1));
}

TEST_F(MultiStationFilingTest, TheEntryPastTheBitsLosesItsOldValue)
{
    PLC_driver.extendList << EXTENDVAR{1, 2, 3, fromHex("01")};
    File(Variable(2, 0, 2), "FF");
    EXPECT_EQ((List{"2:3=", "2:0=01", "2:1=01", "2:2=01"}), Entries(1));
}

TEST_F(MultiStationFilingTest, ANegativeBitCountLeavesOneEmptyEntry)
{
    File(Variable(2, 5, -1), "FF");
    EXPECT_EQ((List{"2:5="}), Entries(1));
}

TEST_F(MultiStationFilingTest, OldValuesAreReplaced)
{
    File(Variable(9, 0, 1), "11 22");
    File(Variable(9, 0, 1), "12 34");
    EXPECT_EQ((List{"9:0=34 12"}), Entries(1));
}

TEST_F(MultiStationFilingTest, OtherStationsAndTheImageStayAsTheyAre)
{
    PLC_driver.extendList << EXTENDVAR{1, 9, 0, fromHex("01 00")};
    for (int area : {2, 8, 9, 14})
        File(Variable(area, 0, 2, 2), "FF FF FF FF");
    EXPECT_EQ((List{"9:0=01 00"}), Entries(1));
    EXPECT_TRUE(ImageIsAllZero());
}

TEST_F(MultiStationFilingTest, WordsOfArea8AreKeptUnderArea8)
{
    PLC_driver.extendList << EXTENDVAR{1, 9, 2, fromHex("01 00")};
    File(Variable(8, 2, 1), "12 34");
    EXPECT_EQ((List{"9:2=01 00", "8:2=34 12"}), Entries(1));
}

TEST_F(MultiStationFilingTest, PendingBitIsMergedAndPatched)
{
    BitWriteInFlight(35, "01");
    Arrive("12 30");
    EXPECT_EQ((List{"8:2=38 12"}), Entries(1));
    EXPECT_EQ("12 38", PatchedValue());
}

TEST_F(MultiStationFilingTest, PendingBitOfAnythingElseIsCleared)
{
    BitWriteInFlight(35, "02");
    Arrive("12 3F");
    EXPECT_EQ((List{"8:2=37 12"}), Entries(1));
    EXPECT_EQ("12 37", PatchedValue());
}

TEST_F(MultiStationFilingTest, WithoutPendingDataTheWordIsPatchedUnchanged)
{
    BitWriteInFlight(35, "");
    Arrive("12 34");
    EXPECT_EQ("12 34", PatchedValue());
}

TEST_F(MultiStationFilingTest, WithoutAPendingWriteTheWordIsOnlyStored)
{
    BitWriteInFlight(35, "01");
    PLC_driver.writeList.clear();
    Arrive("12 34");
    EXPECT_EQ((List{"8:2=34 12"}), Entries(1));
    EXPECT_EQ("00 00", PatchedValue());
}

TEST_F(MultiStationFilingTest, AWordReadOfArea8ThatIsNoReadBeforeWriteIsOnlyStored)
{
    for (int selector : {0, 1, -2}) {
        SCOPED_TRACE(selector);
        PLC_driver.writeList.clear();
        PLC_driver.protocolList.clear();
        BitWriteInFlight(35, "01");
        PLC_driver.protocolList.first().var.storeSelector = selector;
        Arrive("12 30");
        EXPECT_EQ((List{"8:2=30 12"}), Entries(1));
        EXPECT_EQ("00 00", PatchedValue());
    }
}

TEST_F(MultiStationFilingTest, AReadBeforeWriteWithoutAWholeWriteFrameIsStored)
{
    BitWriteInFlight(35, "01");
    PLC_driver.protocolList[1].frame = fromHex("00 00");
    Arrive("12 30");
    EXPECT_EQ("00 00", frame(1));
    EXPECT_EQ((List{"8:2=38 12"}), Entries(1));
}

TEST_F(MultiStationFilingTest, Area8ReplyOfOneDataByteStoresAndPatchesNothing)
{
    BitWriteInFlight(35, "01");
    PLC_driver.protocolList.first().dataLength = 1;
    Arrive("12 30");
    EXPECT_EQ(List{}, Entries(1));
    EXPECT_EQ("00 00", PatchedValue());
}

TEST_F(MultiStationFilingTest, CodesThatAreNoAreaMakeNoEntry)
{
    for (int area : {15, 16, INT_MAX, -1, INT_MIN}) {
        SCOPED_TRACE(area);
        File(Variable(area, 0, 2), "FF FF FF FF");
        EXPECT_EQ(List{}, Entries(1));
    }
}

TEST_F(MultiStationFilingTest, ANullOrEmptyReplyMakesNoEntry)
{
    for (int area = 0; area <= 14; ++area) {
        SCOPED_TRACE(area);
        InFlight(Variable(area, 0, 8), 4);
        QByteArray empty;
        SaveToLocalDataErea(nullptr);
        SaveToLocalDataErea(&empty);
        EXPECT_EQ(List{}, Entries(1));
    }
}

TEST_F(MultiStationFilingTest, AShortReplyMakesEntriesForWholeElementsOnly)
{
    InFlight(Variable(9, 0, 4), 8);
    Arrive("00 01 FF");
    InFlight(Variable(14, 0, 3), 8);
    Arrive("00 02 00 00 FF FF");
    InFlight(Variable(8, 0, 1), 2);
    Arrive("FF");
    EXPECT_EQ((List{"9:0=01 00", "14:0=02 00 00 00"}), Entries(1));
}

TEST_F(MultiStationFilingTest, ElementsOutsideTheAreaGetNoEntry)
{
    File(Variable(9, 65534, 2), "00 01 00 02");
    File(Variable(9, -1, 2), "00 03 00 04");
    File(Variable(14, 65534, 3), "00 05 00 00 00 06 00 00");
    File(Variable(2, 65533, 8), "FF");
    File(Variable(8, 65535, 1), "FF FF");
    File(Variable(8, -1, 1), "FF FF");
    EXPECT_EQ((List{"9:65534=01 00", "9:0=04 00", "14:65534=05 00 00 00", "2:65533=01", "2:65534=01"}),
              Entries(1));
}

TEST_F(MultiStationFilingTest, FarAwayAddressesGetNoEntry)
{
    for (int area = 0; area <= 14; ++area) {
        for (int address : {65535, INT_MAX - 1, INT_MAX, INT_MIN, -65536}) {
            SCOPED_TRACE(std::to_string(area) + " at " + std::to_string(address));
            File(Variable(area, address, 16), "FF FF FF FF");
            EXPECT_EQ(List{}, Entries(1));
        }
    }
}
