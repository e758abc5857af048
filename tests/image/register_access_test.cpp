// SPDX-License-Identifier: MIT
#include "driver/driver_fixture.h"

#include <climits>

namespace
{

class RegisterAccessTest : public DriverTest
{
protected:
    /// "result: bytes" of a read into an array that held EE EE.
    static std::string Get(int area, const char* address, int count, int station = DEFAULT_STATION)
    {
        QString text = address;
        QByteArray out = fromHex("EE EE");
        const unsigned int result = GetRegisterData(0, area, &text, station, &out, count);
        return std::to_string(result) + ": " + toHex(out);
    }

    /// The bytes read, where there are too many to be written out.
    static QByteArray GetBytes(int area, const char* address, int count)
    {
        QString text = address;
        QByteArray out;
        GetRegisterData(0, area, &text, DEFAULT_STATION, &out, count);
        return out;
    }

    static int Set(int area, const char* address, const QByteArray& value, int count,
                   unsigned int station = 9)
    {
        QString name = "level";
        QString text = address;
        QByteArray data = value;
        return SetRegisterData(&name, area, &text, station, &data, count, 11, 12);
    }

    /// "address+count=data" of every queued write, in list order.
    static std::vector<std::string> Queue()
    {
        std::vector<std::string> queue;
        for (const RW_VAR& var : PLC_driver.writeList)
            queue.push_back(std::to_string(var.address) + "+" + std::to_string(var.count) + "=" +
                            toHex(var.data));
        return queue;
    }

    /// "address+count" of every queued write.
    static std::vector<std::string> QueuedRuns()
    {
        std::vector<std::string> queue;
        for (const RW_VAR& var : PLC_driver.writeList)
            queue.push_back(std::to_string(var.address) + "+" + std::to_string(var.count));
        return queue;
    }

    static void Keep(int station, int area, int address, const char* hexValue)
    {
        PLC_driver.extendList << EXTENDVAR{station, area, address, fromHex(hexValue)};
    }

    static unsigned short* Words(int buffer) { return PLC_driver.image.wordArea[buffer]; }
    static bool* Bits(int buffer) { return PLC_driver.image.bitArea[buffer]; }
    static unsigned int* DoubleWords() { return PLC_driver.image.dwordArea; }

    static bool ImageIsAllZero()
    {
        static const Image zero = Image();
        return std::memcmp(&zero, &PLC_driver.image, sizeof zero) == 0;
    }

    typedef std::vector<std::string> List;
};

class GetTest : public RegisterAccessTest
{
};

class MultiStationGetTest : public RegisterAccessTest
{
protected:
    void SetUp() override
    {
        RegisterAccessTest::SetUp();
        info.multiStation = 1;
    }
};

/// Writes to the driver's memory only.
class SetMemoryTest : public RegisterAccessTest
{
protected:
    void SetUp() override
    {
        RegisterAccessTest::SetUp();
        info.hostWriteMode = 0;
    }
};

/// Writes that are queued for the controller.
class SetQueueTest : public RegisterAccessTest
{
};

} // namespace

TEST_F(GetTest, EachWordAreaHasItsBuffer)
{
    struct Row {
        int area, buffer;
    };
    const Row rows[] = {{9, 0}, {10, 4}, {11, 1}, {12, 2}, {13, 3}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.area);
        std::memset(&PLC_driver.image, 0, sizeof PLC_driver.image);
        Words(row.buffer)[7] = 0x1234;
        EXPECT_EQ("1: 00 00 34 12 00 00", Get(row.area, "6", 3));
    }
}

TEST_F(GetTest, EachBitAreaHasItsBuffer)
{
    const char* const addressOf9[8] = {"11", "11", "9", "9", "9", "9", "9", "8009"};
    for (int area = 0; area <= 7; ++area) {
        SCOPED_TRACE(area);
        std::memset(&PLC_driver.image, 0, sizeof PLC_driver.image);
        Bits(area)[10] = true;
        EXPECT_EQ("1: 00 01 00", Get(area, addressOf9[area], 3));
    }
}

TEST_F(GetTest, BitsOfWordsRunAcrossWords)
{
    Words(0)[0] = 0x8000;
    Words(0)[1] = 0x0001;
    EXPECT_EQ("1: 00 01 01", Get(8, "0.14", 3));
}

TEST_F(GetTest, AWordWrittenThroughArea9ShowsItsBitsThroughArea8)
{
    Words(0)[10] = 0x1234;
    EXPECT_EQ("1: 00 00 01 00 01 01 00 00 00 01 00 00 01 00 00 00", Get(8, "10.0", 16));
}

TEST_F(GetTest, DoubleWordCount1GivesTheLowHalfOfTheElementAfterTheAddress)
{
    DoubleWords()[0] = 0x11111111;
    DoubleWords()[1] = 0x12345678;
    EXPECT_EQ("1: 78 56", Get(14, "200", 1));
}

TEST_F(GetTest, DoubleWordCountNGivesOneElementLess)
{
    DoubleWords()[0] = 0x11223344;
    DoubleWords()[1] = 0x12345678;
    EXPECT_EQ("1: 44 33 22 11", Get(14, "200", 2));
    EXPECT_EQ("1: 44 33 22 11 78 56 34 12", Get(14, "200", 3));
}

TEST_F(GetTest, CountsBelow1GiveNothing)
{
    for (int area : {0, 2, 7, 8, 9, 13}) {
        for (int count : {0, -1, INT_MIN}) {
            SCOPED_TRACE(std::to_string(area) + " count " + std::to_string(count));
            EXPECT_EQ("1: ", Get(area, area == 7 ? "8000" : area == 8 ? "0.0" : "0", count));
        }
    }
}

TEST_F(GetTest, DoubleWordCountsBelow1GiveOneElement)
{
    DoubleWords()[0] = 0x11223344;
    for (int count : {0, -1, INT_MIN})
        EXPECT_EQ("1: 44 33 22 11", Get(14, "200", count)) << count;
}

TEST_F(GetTest, AnAddressThatDoesNotConvertLeavesTheOutput)
{
    struct Row {
        int area;
        const char* address;
    };
    const Row rows[] = {{9, ""},     {9, "x"},  {9, "-5"},         {0, "8"},    {7, "7999"},
                        {14, "199"}, {8, "3"},  {8, "3.1.2"},      {8, "-1.0"}, {9, "2147483648"},
                        {9, "1 2"},  {8, "3."}, {8, "134217728.0"}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.address);
        EXPECT_EQ("0: EE EE", Get(row.area, row.address, 1));
    }
}

TEST_F(GetTest, ACodeThatIsNoAreaGivesAnEmptyOutput)
{
    for (int area : {15, 16, INT_MAX, -1, INT_MIN})
        EXPECT_EQ("1: ", Get(area, "5", 2)) << area;
}

TEST_F(GetTest, ElementsOutsideTheAreaGiveZeroBytes)
{
    Bits(2)[65534] = true;
    Bits(3)[0] = true;
    EXPECT_EQ("1: 01 00 00", Get(2, "65534", 3));
    Words(0)[65534] = 0x1234;
    Words(1)[0] = 0xFFFF;
    EXPECT_EQ("1: 34 12 00 00", Get(9, "65534", 2));
    EXPECT_EQ("1: 01 00 00 00", Get(8, "65534.12", 4));
    EXPECT_EQ("1: 00 00", Get(8, "65534.15", 2));
    EXPECT_EQ("1: 00", Get(8, "65535.0", 1));
    DoubleWords()[65534] = 0x12345678;
    EXPECT_EQ("1: 78 56 34 12 00 00 00 00", Get(14, "65734", 3));
}

TEST_F(GetTest, TheLowHalfOfTheElementAfterTheLastIsZero)
{
    DoubleWords()[65534] = 0x12345678;
    EXPECT_EQ("1: 78 56", Get(14, "65733", 1));
    EXPECT_EQ("1: 00 00", Get(14, "65734", 1));
    EXPECT_EQ("1: 00 00", Get(14, "2147483647", 1));
}

// What lies behind the last double word in the driver belongs to nobody's values.
TEST_F(GetTest, WhatLiesBehindTheImageIsNotRead)
{
    PLC_driver.pendingBit = {true, true, true, -1};
    DoubleWords()[65534] = 0x12345678;
    EXPECT_EQ("1: 00 00", Get(14, "65734", 1));
    EXPECT_EQ("1: 00 00", Get(14, "65735", 1));
    EXPECT_EQ("1: 00 00 00 00", Get(14, "65735", 2));
    EXPECT_EQ("1: 78 56 34 12 00 00 00 00", Get(14, "65734", 3));
}

TEST_F(MultiStationGetTest, BitsOfTheFirstWordsComeFromTheirEntries)
{
    for (int word : {0, 1, 2, 3})
        Keep(1, 9, word, word % 2 ? "01 00" : "00 00");
    for (int word : {0, 1, 2, 3})
        EXPECT_EQ(word % 2 ? "1: 01" : "1: 00", Get(8, (std::to_string(word) + ".0").c_str(), 1)) << word;
}

TEST_F(GetTest, FarAwayAddressesGiveZeroBytes)
{
    EXPECT_EQ("1: 00 00", Get(2, "2147483647", 2));
    EXPECT_EQ("1: 00 00 00 00", Get(9, "2147483647", 2));
    EXPECT_EQ("1: 00 00", Get(8, "134217727.15", 2));
    EXPECT_EQ("1: 00 00 00 00 00 00 00 00", Get(14, "2147483647", 3));
}

TEST_F(GetTest, RunawayCountsAreCutToWhatTheAreaCanServe)
{
    EXPECT_EQ(65535, GetBytes(2, "0", INT_MAX).size());
    EXPECT_EQ(2 * 65535, GetBytes(9, "0", INT_MAX).size());
    EXPECT_EQ(16 * 65535, GetBytes(8, "0.0", INT_MAX).size());
    EXPECT_EQ(4 * 65535, GetBytes(14, "200", INT_MAX).size());
    EXPECT_EQ(2 * 65535, GetBytes(9, "0", 65536).size());
    EXPECT_EQ(4 * 65535, GetBytes(14, "200", 65537).size());
}

TEST_F(GetTest, CountsThatTheAreaCanServeAreNotCut)
{
    EXPECT_EQ(2 * 65535, GetBytes(9, "0", 65535).size());
    EXPECT_EQ(4 * 65535, GetBytes(14, "200", 65536).size());
    EXPECT_EQ(16 * 65535, GetBytes(8, "0.0", 16 * 65535).size());
}

TEST_F(GetTest, ACutCountStillHasItsSizeBehindTheArea)
{
    Words(0)[65534] = 0x1234;
    const QByteArray out = GetBytes(9, "65534", INT_MAX);
    EXPECT_EQ(2 * 65535, out.size());
    EXPECT_EQ("34 12 00 00", toHex(out.left(4)));
}

TEST_F(GetTest, NullPointersAreRefused)
{
    QString text = "0";
    QByteArray out = fromHex("EE");
    EXPECT_EQ(0u, GetRegisterData(0, 9, nullptr, 1, &out, 1));
    EXPECT_EQ(0u, GetRegisterData(0, 9, &text, 1, nullptr, 1));
    EXPECT_EQ("EE", toHex(out));
}

TEST_F(GetTest, WithoutASettingsBlockNothingIsRead)
{
    PLC_driver.comInfo = nullptr;
    EXPECT_EQ("0: EE EE", Get(9, "0", 1));
}

TEST_F(GetTest, TheImageLockIsFreeAfterwards)
{
    Get(9, "0", 1);
    Get(9, "x", 1);
    Get(15, "0", 1);
    ASSERT_TRUE(PLC_driver.imageMutex.tryLock());
    PLC_driver.imageMutex.unlock();
}

TEST_F(GetTest, NoEntryIsMadeInSingleStationMode)
{
    Get(9, "0", 1);
    EXPECT_EQ(0, PLC_driver.extendList.size());
}

TEST_F(MultiStationGetTest, ValuesComeFromTheStationsEntries)
{
    Keep(1, 9, 5, "34 12");
    Keep(2, 9, 5, "78 56");
    Words(0)[5] = 0xFFFF;
    EXPECT_EQ("1: 34 12", Get(9, "5", 1, 1));
    EXPECT_EQ("1: 78 56", Get(9, "5", 1, 2));
}

TEST_F(MultiStationGetTest, ReadingANewElementMakesItsEntryAndGives0)
{
    EXPECT_EQ("1: 00 00", Get(9, "100", 1, 4));
    ASSERT_EQ(1, PLC_driver.extendList.size());
    EXPECT_EQ(4, PLC_driver.extendList.at(0).station);
    EXPECT_EQ(9, PLC_driver.extendList.at(0).area);
    EXPECT_EQ(100, PLC_driver.extendList.at(0).address);
    EXPECT_EQ("00 00 00 00", toHex(PLC_driver.extendList.at(0).value));
}

TEST_F(MultiStationGetTest, BitsAreTheLowestBitOfTheirByteAnd0WithoutValue)
{
    Keep(1, 2, 0, "01");
    Keep(1, 2, 1, "02");
    Keep(1, 2, 2, "03");
    Keep(1, 2, 3, "");
    EXPECT_EQ("1: 01 00 01 00 00", Get(2, "0", 5));
}

TEST_F(MultiStationGetTest, WordsAreTheirFirstTwoBytesAnd0WithoutValue)
{
    Keep(1, 10, 0, "34 12 FF FF");
    Keep(1, 10, 1, "");
    EXPECT_EQ("1: 34 12 00 00", Get(10, "0", 2));
}

TEST_F(MultiStationGetTest, AMissingByteOfAValueCountsAs0)
{
    Keep(1, 9, 0, "34");
    Keep(1, 14, 0, "34 12");
    EXPECT_EQ("1: 34 00", Get(9, "0", 1));
    EXPECT_EQ("1: 34 12 00 00", Get(14, "200", 2));
    EXPECT_EQ("1: 01 01 00", Get(8, "0.4", 3));
}

TEST_F(MultiStationGetTest, BitsOfWordsComeFromTheWordsEntries)
{
    Keep(1, 9, 0, "00 80");
    Keep(1, 9, 1, "01 00");
    Keep(1, 8, 0, "FF FF");
    EXPECT_EQ("1: 00 01 01 00", Get(8, "0.14", 4));
}

TEST_F(MultiStationGetTest, BitsOfTheUpperByteBelongToTheSameWord)
{
    Keep(1, 9, 2, "00 81");
    EXPECT_EQ("1: 01", Get(8, "2.8", 1));
    EXPECT_EQ("1: 01", Get(8, "2.15", 1));
    EXPECT_EQ("1: 00 01 00", Get(8, "2.7", 3));
    EXPECT_EQ(1, PLC_driver.extendList.size());
}

TEST_F(MultiStationGetTest, BitsOfAWordWithoutValueAre0)
{
    Keep(1, 9, 0, "");
    EXPECT_EQ("1: 00 00", Get(8, "0.0", 2));
}

TEST_F(MultiStationGetTest, OneEntryServesAllBitsOfAWord)
{
    Get(8, "3.0", 17);
    ASSERT_EQ(2, PLC_driver.extendList.size());
    EXPECT_EQ(9, PLC_driver.extendList.at(0).area);
    EXPECT_EQ(3, PLC_driver.extendList.at(0).address);
    EXPECT_EQ(4, PLC_driver.extendList.at(1).address);
}

TEST_F(MultiStationGetTest, DoubleWordCount1GivesTheLowHalfOfTheElementItself)
{
    Keep(1, 14, 0, "78 56 34 12");
    Keep(1, 14, 1, "FF FF FF FF");
    EXPECT_EQ("1: 78 56", Get(14, "200", 1));
}

TEST_F(MultiStationGetTest, DoubleWordCountNGivesOneElementLess)
{
    Keep(1, 14, 0, "78 56 34 12");
    Keep(1, 14, 1, "");
    EXPECT_EQ("1: 78 56 34 12", Get(14, "200", 2));
    EXPECT_EQ("1: 78 56 34 12 00 00 00 00", Get(14, "200", 3));
}

TEST_F(MultiStationGetTest, CountsBelow1GiveNothingAndMakeNoEntry)
{
    for (int area : {2, 8, 9, 14}) {
        for (int count : {0, -1, INT_MIN}) {
            SCOPED_TRACE(std::to_string(area) + " count " + std::to_string(count));
            EXPECT_EQ("1: ", Get(area, area == 14 ? "200" : area == 8 ? "0.0" : "0", count));
            EXPECT_EQ(0, PLC_driver.extendList.size());
        }
    }
}

TEST_F(MultiStationGetTest, ElementsOutsideTheAreaGiveZeroBytesAndMakeNoEntry)
{
    Keep(1, 9, 65534, "34 12");
    Keep(1, 2, 65534, "01");
    Keep(1, 14, 65534, "78 56 34 12");
    EXPECT_EQ("1: 34 12 00 00", Get(9, "65534", 2));
    EXPECT_EQ("1: 01 00", Get(2, "65534", 2));
    EXPECT_EQ("1: 78 56 34 12 00 00 00 00", Get(14, "65734", 3));
    EXPECT_EQ("1: 00 00", Get(8, "65534.15", 2));
    EXPECT_EQ("1: 00 00", Get(14, "65735", 1));
    EXPECT_EQ("1: 00 00", Get(9, "2147483647", 1));
    EXPECT_EQ("1: 00 00", Get(8, "134217727.15", 2));
    EXPECT_EQ(3, PLC_driver.extendList.size());
}

TEST_F(MultiStationGetTest, RunawayCountsAreCutToWhatTheAreaCanServe)
{
    EXPECT_EQ(65535, GetBytes(2, "65530", INT_MAX).size());
    EXPECT_EQ(2 * 65535, GetBytes(9, "65530", INT_MAX).size());
    EXPECT_EQ(16 * 65535, GetBytes(8, "65530.0", INT_MAX).size());
    EXPECT_EQ(4 * 65535, GetBytes(14, "65730", INT_MAX).size());
    EXPECT_EQ(15, PLC_driver.extendList.size()); // five bits, five words (two views), five double words
}

TEST_F(MultiStationGetTest, ACodeThatIsNoAreaGivesAnEmptyOutputAndNoEntry)
{
    for (int area : {15, INT_MAX, -1}) {
        SCOPED_TRACE(area);
        EXPECT_EQ("1: ", Get(area, "5", 2));
        EXPECT_EQ(0, PLC_driver.extendList.size());
    }
}

TEST_F(MultiStationGetTest, AnAddressThatDoesNotConvertChangesNothing)
{
    EXPECT_EQ("0: EE EE", Get(9, "-5", 1));
    EXPECT_EQ(0, PLC_driver.extendList.size());
}

TEST_F(SetMemoryTest, OnlyTheImageChanges)
{
    for (int mode : {0, 1, 3, -2}) {
        SCOPED_TRACE(mode);
        info.hostWriteMode = mode;
        Words(0)[10] = 0;
        EXPECT_EQ(1, Set(9, "10", fromHex("34 12"), 1));
        EXPECT_EQ(0x1234, Words(0)[10]);
        EXPECT_EQ(0, PLC_driver.writeList.size());
        EXPECT_EQ(0, frameCount());
    }
}

TEST_F(SetMemoryTest, AfterAFailedReplyTheImageStillChanges)
{
    PLC_driver.lastFailed = 1;
    EXPECT_EQ(1, Set(9, "10", fromHex("34 12"), 1));
    EXPECT_EQ(0x1234, Words(0)[10]);
}

TEST_F(SetMemoryTest, CountMeansElementsOfTheArea)
{
    EXPECT_EQ(1, Set(14, "200", fromHex("01 00 00 00 02 00 00 00"), 2));
    EXPECT_EQ(1u, DoubleWords()[0]);
    EXPECT_EQ(2u, DoubleWords()[1]);
}

TEST_F(SetMemoryTest, AWordCanBeReadBackBitByBit)
{
    Set(9, "10", fromHex("34 12"), 1);
    EXPECT_EQ("1: 00 00 01 00 01 01 00 00 00 01 00 00 01 00 00 00", Get(8, "10.0", 16));
}

TEST_F(SetMemoryTest, Area0AndCodesThatAreNoAreaAreIgnored)
{
    for (int area : {0, 15, INT_MAX, -1}) {
        SCOPED_TRACE(area);
        EXPECT_EQ(1, Set(area, "0", fromHex("01 01 01 01"), 1));
        EXPECT_TRUE(ImageIsAllZero());
        EXPECT_EQ(0, PLC_driver.writeList.size());
    }
}

TEST_F(SetMemoryTest, AnAddressThatDoesNotConvertChangesNothing)
{
    EXPECT_EQ(0, Set(9, "x", fromHex("34 12"), 1));
    EXPECT_EQ(0, Set(9, "-5", fromHex("34 12"), 1));
    EXPECT_EQ(0, Set(8, "3", fromHex("01"), 1));
    EXPECT_TRUE(ImageIsAllZero());
}

TEST_F(SetMemoryTest, ElementsOutsideTheAreaAreDropped)
{
    EXPECT_EQ(1, Set(9, "65534", fromHex("01 00 02 00"), 2));
    EXPECT_EQ(1, Set(9, "65535", fromHex("03 00"), 1));
    EXPECT_EQ(1, Set(9, "2147483647", fromHex("04 00 05 00"), 2));
    EXPECT_EQ(1, Words(0)[65534]);
    Words(0)[65534] = 0;
    EXPECT_TRUE(ImageIsAllZero());
}

TEST_F(SetMemoryTest, RunawayAndNegativeCountsAreHarmless)
{
    EXPECT_EQ(1, Set(9, "10", fromHex("34 12"), INT_MAX));
    EXPECT_EQ(0x1234, Words(0)[10]);
    Words(0)[10] = 0;
    EXPECT_EQ(1, Set(9, "10", fromHex("34 12"), INT_MIN));
    EXPECT_EQ(1, Set(8, "10.0", fromHex("01"), INT_MIN));
    EXPECT_TRUE(ImageIsAllZero());
}

TEST_F(SetMemoryTest, SingleStationModeIgnoresTheStation)
{
    Set(9, "10", fromHex("34 12"), 1, 77);
    EXPECT_EQ(0x1234, Words(0)[10]);
    EXPECT_EQ(0, PLC_driver.extendList.size());
}

TEST_F(SetMemoryTest, MultiStationModeWritesTheStationsEntry)
{
    info.multiStation = 1;
    EXPECT_EQ(1, Set(9, "10", fromHex("34 12"), 1, 5));
    EXPECT_TRUE(ImageIsAllZero());
    EXPECT_EQ("1: 34 12", Get(9, "10", 1, 5));
    EXPECT_EQ("1: 00 00", Get(9, "10", 1, 6));
}

TEST_F(SetMemoryTest, TheCallersDataStaysAsItIs)
{
    QString name, text = "0";
    QByteArray data = fromHex("34");
    SetRegisterData(&name, 9, &text, 1, &data, 4, 0, 0);
    EXPECT_EQ("34", toHex(data));
}

TEST_F(SetQueueTest, TheQueuedRequestCarriesEverything)
{
    info.remoteMode = 6;
    EXPECT_EQ(1, Set(9, "10", fromHex("34 12"), 1));
    ASSERT_EQ(1, PLC_driver.writeList.size());
    const RW_VAR& var = PLC_driver.writeList.at(0);
    EXPECT_EQ(11, var.hostKey);
    EXPECT_EQ(12, var.hostSubKey);
    EXPECT_EQ(1, var.accessFlag);
    EXPECT_EQ(6, var.spare3);
    EXPECT_EQ(int{LOCAL_STATION}, var.stationGroup);
    EXPECT_EQ("level", var.name.toStdString());
    EXPECT_EQ("10", var.name2.toStdString());
    EXPECT_EQ(9, var.area);
    EXPECT_EQ(10, var.address);
    EXPECT_EQ(1, var.count);
    EXPECT_EQ(0, var.storeSelector);
    EXPECT_EQ(0, var.spare13);
    EXPECT_EQ("34 12", toHex(var.data));
}

TEST_F(SetQueueTest, SingleStationModeUsesTheDefaultStation)
{
    info.defaultStation = 42;
    Set(9, "10", fromHex("34 12"), 1, 9);
    EXPECT_EQ(42, PLC_driver.writeList.at(0).station);
}

TEST_F(SetQueueTest, MultiStationModeUsesTheGivenStation)
{
    info.multiStation = 1;
    Set(9, "10", fromHex("34 12"), 1, 9);
    EXPECT_EQ(9, PLC_driver.writeList.at(0).station);
}

TEST_F(SetQueueTest, TheImageChangesOnlyWhenTheFrameIsBuilt)
{
    Set(9, "10", fromHex("34 12"), 1);
    EXPECT_TRUE(ImageIsAllZero());
}

TEST_F(SetQueueTest, AfterAFailedReplyEachChunkIsMirroredAtOnce)
{
    PLC_driver.lastFailed = 1;
    info.maxBlockCount = 1;
    EXPECT_EQ(2, Set(9, "10", fromHex("34 12 78 56"), 2));
    EXPECT_EQ(0x1234, Words(0)[10]);
    EXPECT_EQ(0x5678, Words(0)[11]);
}

TEST_F(SetQueueTest, BitsAreQueuedOneByOne)
{
    EXPECT_EQ(3, Set(2, "10", fromHex("01 00 05"), 3));
    EXPECT_EQ((List{"10+1=01", "11+1=00", "12+1=05"}), Queue());
}

TEST_F(SetQueueTest, EveryAreaFrom1To14IsServed)
{
    for (int area = 1; area <= 14; ++area) {
        SCOPED_TRACE(area);
        PLC_driver.writeList.clear();
        const char* const address = area == 7 ? "8001" : area == 8 ? "0.1" : area == 14 ? "201" : "1";
        EXPECT_EQ(1, Set(area, address, fromHex("01"), 1));
        ASSERT_EQ(1, PLC_driver.writeList.size());
        EXPECT_EQ(area, PLC_driver.writeList.at(0).area);
        EXPECT_EQ(1, PLC_driver.writeList.at(0).address);
        EXPECT_EQ(1, PLC_driver.writeList.at(0).count);
    }
}

TEST_F(SetQueueTest, BitsOfWordsAreQueuedOneByOneUnderTheirBitAddress)
{
    EXPECT_EQ(2, Set(8, "2.3", fromHex("01 01"), 2));
    EXPECT_EQ((List{"35+1=01", "36+1=01"}), Queue());
    EXPECT_EQ(8, PLC_driver.writeList.at(0).area);
}

TEST_F(SetQueueTest, BitsBeyondTheDataAre0)
{
    Set(2, "0", fromHex("01"), 3);
    EXPECT_EQ((List{"0+1=01", "1+1=00", "2+1=00"}), Queue());
}

TEST_F(SetQueueTest, WordsAreQueuedInBlocks)
{
    EXPECT_EQ(3, Set(9, "1000", fromHex("34 12"), 250));
    EXPECT_EQ((List{"1000+100", "1100+100", "1200+50"}), QueuedRuns());
    EXPECT_EQ(200, PLC_driver.writeList.at(1).data.size());
    EXPECT_EQ(100, PLC_driver.writeList.at(2).data.size());
}

TEST_F(SetQueueTest, AMultipleOfTheBlockEndsWithAWholeBlock)
{
    EXPECT_EQ(2, Set(9, "0", QByteArray(), 200));
    EXPECT_EQ((List{"0+100", "100+100"}), QueuedRuns());
}

TEST_F(SetQueueTest, EachBlockHasItsOwnBytesAnd0BeyondTheData)
{
    info.maxBlockCount = 2;
    Set(9, "0", fromHex("01 00 02 00 03"), 5);
    EXPECT_EQ((List{"0+2=01 00 02 00", "2+2=03 00 00 00", "4+1=00 00"}), Queue());
}

TEST_F(SetQueueTest, BytesBeyondTheCountAreNotQueued)
{
    Set(9, "0", fromHex("01 00 02 00 03 00"), 2);
    EXPECT_EQ((List{"0+2=01 00 02 00"}), Queue());
}

TEST_F(SetQueueTest, BytesBehindTheDataCountAs0WhateverIsThere)
{
    const QByteArray memory = fromHex("01 01 01 01");
    Set(2, "0", QByteArray::fromRawData(memory.constData(), 1), 2);
    Set(9, "0", QByteArray::fromRawData(memory.constData(), 1), 1);
    EXPECT_EQ((List{"0+1=01", "1+1=00", "0+1=01 00"}), Queue());
}

TEST_F(SetQueueTest, DoubleWordsAreCountedInWordsRoundedUp)
{
    EXPECT_EQ(1, Set(14, "200", fromHex("01 00 00 00 02 00 00 00 03 00"), 5));
    EXPECT_EQ((List{"0+3=01 00 00 00 02 00 00 00 03 00 00 00"}), Queue());
}

TEST_F(SetQueueTest, OneOrTwoWordsAreOneDoubleWord)
{
    for (int count : {1, 2}) {
        SCOPED_TRACE(count);
        PLC_driver.writeList.clear();
        EXPECT_EQ(1, Set(14, "200", fromHex("78 56 34 12"), count));
        EXPECT_EQ((List{"0+1=78 56 34 12"}), Queue());
    }
}

TEST_F(SetQueueTest, DoubleWordsAreQueuedInBlocks)
{
    info.maxBlockCount = 2;
    EXPECT_EQ(2, Set(14, "210", fromHex("01 00 00 00 02 00 00 00 03 00 00 00"), 6));
    EXPECT_EQ((List{"10+2=01 00 00 00 02 00 00 00", "12+1=03 00 00 00"}), Queue());
}

TEST_F(SetQueueTest, Area0AndCodesThatAreNoAreaAreRefused)
{
    for (int area : {0, 15, 16, INT_MAX, -1, INT_MIN}) {
        SCOPED_TRACE(area);
        PLC_driver.lastFailed = 1;
        EXPECT_EQ(0, Set(area, "0", fromHex("01 01 01 01"), 1));
        EXPECT_EQ(List{}, Queue());
        EXPECT_TRUE(ImageIsAllZero());
    }
}

TEST_F(SetQueueTest, AnAddressThatDoesNotConvertQueuesNothing)
{
    EXPECT_EQ(0, Set(9, "x", fromHex("34 12"), 1));
    EXPECT_EQ(0, Set(9, "-5", fromHex("34 12"), 1));
    EXPECT_EQ(0, Set(7, "7999", fromHex("01"), 1));
    EXPECT_EQ(List{}, Queue());
}

TEST_F(SetQueueTest, CountsBelow1QueueNothing)
{
    for (int maxBlockCount : {100, 1, 0, -1, INT_MIN}) {
        for (int count : {0, -1, -2, -100, INT_MIN}) {
            for (int area : {1, 8, 9, 14}) {
                SCOPED_TRACE(std::to_string(area) + " count " + std::to_string(count) + " block " +
                             std::to_string(maxBlockCount));
                info.maxBlockCount = maxBlockCount;
                EXPECT_EQ(0, Set(area, area == 8 ? "0.0" : area == 14 ? "200" : "0", fromHex("01"), count));
                EXPECT_EQ(List{}, Queue());
            }
        }
    }
}

TEST_F(SetQueueTest, CountsBelow1QueueNothingBesideWhatIsQueued)
{
    Set(9, "0", fromHex("01 00"), 1);
    EXPECT_EQ(0, Set(9, "5", fromHex("01 00"), 0));
    EXPECT_EQ(1, PLC_driver.writeList.size());
}

TEST_F(SetQueueTest, ABlockOf0OrLessNeverSplits)
{
    for (int maxBlockCount : {0, -1, -100, INT_MIN}) {
        SCOPED_TRACE(maxBlockCount);
        PLC_driver.writeList.clear();
        info.maxBlockCount = maxBlockCount;
        EXPECT_EQ(1, Set(9, "0", fromHex("01"), 250));
        EXPECT_EQ(2, Set(14, "200", fromHex("01"), 500));
        EXPECT_EQ((List{"0+250", "0+250"}), QueuedRuns());
    }
}

TEST_F(SetQueueTest, TheLargestBlockNeverSplits)
{
    info.maxBlockCount = INT_MAX;
    EXPECT_EQ(1, Set(9, "0", fromHex("01"), 250));
    EXPECT_EQ((List{"0+250"}), QueuedRuns());
}

TEST_F(SetQueueTest, RunawayWordCountsAreCutToTheArea)
{
    EXPECT_EQ(656, Set(9, "0", fromHex("01"), INT_MAX)); // 655 x 100 + 35
    EXPECT_EQ("65500+35", QueuedRuns().back());
}

TEST_F(SetQueueTest, RunawayDoubleWordCountsAreCutToTheArea)
{
    EXPECT_EQ(656, Set(14, "200", fromHex("01"), INT_MAX));
    EXPECT_EQ("65500+35", QueuedRuns().back());
}

TEST_F(SetQueueTest, RunawayCountsWithoutSplittingAreCutToTheArea)
{
    info.maxBlockCount = 0;
    EXPECT_EQ(1, Set(9, "0", fromHex("01"), INT_MAX));
    EXPECT_EQ(2, Set(14, "200", fromHex("01"), INT_MAX));
    EXPECT_EQ((List{"0+65535", "0+65535"}), QueuedRuns());
    EXPECT_EQ(4 * 65535, PLC_driver.writeList.at(1).data.size());
}

TEST_F(SetQueueTest, RunawayBitCountsFillTheListAndNoMore)
{
    EXPECT_EQ(1024, Set(2, "0", fromHex("01"), INT_MAX));
    EXPECT_EQ("1023+1", QueuedRuns().back());
}

TEST_F(SetQueueTest, RunawayCountsOfBitsOfWordsFillTheListAndNoMore)
{
    EXPECT_EQ(1024, Set(8, "0.0", fromHex("01"), INT_MAX));
    EXPECT_EQ("1023+1", QueuedRuns().back());
}

TEST_F(SetQueueTest, AnAddressAtTheEndOf32BitsIsSurvived)
{
    EXPECT_EQ(2, Set(9, "2147483647", fromHex("01"), 150));
    EXPECT_EQ("2147483647+100", QueuedRuns().front());
    EXPECT_EQ(5, Set(2, "2147483647", fromHex("01"), 3));
    EXPECT_EQ(6, Set(14, "2147483647", fromHex("01"), 3));
}

TEST_F(SetQueueTest, ANewerWriteReplacesAQueuedOneBehindTheHead)
{
    Set(9, "0", fromHex("01 00"), 1);
    Set(9, "5", fromHex("02 00"), 1);
    EXPECT_EQ(2, Set(9, "5", fromHex("03 00"), 1));
    EXPECT_EQ((List{"0+1=01 00", "5+1=03 00"}), Queue());
    EXPECT_EQ(3, Set(9, "0", fromHex("04 00"), 1));
}

TEST_F(SetQueueTest, NullPointersAreRefused)
{
    QString name = "level", text = "0";
    QByteArray data = fromHex("01 00");
    EXPECT_EQ(0, SetRegisterData(nullptr, 9, &text, 1, &data, 1, 0, 0));
    EXPECT_EQ(0, SetRegisterData(&name, 9, nullptr, 1, &data, 1, 0, 0));
    EXPECT_EQ(0, SetRegisterData(&name, 9, &text, 1, nullptr, 1, 0, 0));
    EXPECT_EQ(List{}, Queue());
    info.hostWriteMode = 0;
    EXPECT_EQ(0, SetRegisterData(nullptr, 9, &text, 1, &data, 1, 0, 0));
    EXPECT_EQ(0, SetRegisterData(&name, 9, &text, 1, nullptr, 1, 0, 0));
    EXPECT_TRUE(ImageIsAllZero());
}

TEST_F(SetQueueTest, WithoutASettingsBlockNothingIsWritten)
{
    PLC_driver.comInfo = nullptr;
    EXPECT_EQ(0, Set(9, "0", fromHex("34 12"), 1));
    EXPECT_EQ(List{}, Queue());
    EXPECT_TRUE(ImageIsAllZero());
}

TEST_F(SetQueueTest, TheLocksAreFreeAfterwards)
{
    PLC_driver.lastFailed = 1;
    Set(9, "0", fromHex("34 12"), 1);
    Set(9, "x", fromHex("34 12"), 1);
    ASSERT_TRUE(PLC_driver.listMutex.tryLock());
    PLC_driver.listMutex.unlock();
    ASSERT_TRUE(PLC_driver.imageMutex.tryLock());
    PLC_driver.imageMutex.unlock();
}
