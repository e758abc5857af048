// SPDX-License-Identifier: MIT
#include "image/image_write.h"

#include "driver/driver_fixture.h"

#include <climits>

namespace
{

class ImageWriteTest : public DriverTest
{
protected:
    static void Mirror(RW_VAR var) { WriteDataToLocal(&var); }

    static unsigned short* Words(int buffer) { return PLC_driver.image.wordArea[buffer]; }
    static bool* Bits(int buffer) { return PLC_driver.image.bitArea[buffer]; }
    static unsigned int* DoubleWords() { return PLC_driver.image.dwordArea; }

    static void ClearImage() { std::memset(&PLC_driver.image, 0, sizeof PLC_driver.image); }

    static bool ImageIsAllZero()
    {
        static const Image zero = Image();
        return std::memcmp(&zero, &PLC_driver.image, sizeof zero) == 0;
    }
};

class MultiStationImageWriteTest : public ImageWriteTest
{
protected:
    typedef std::vector<std::string> List;

    void SetUp() override
    {
        ImageWriteTest::SetUp();
        info.multiStation = 1;
    }

    static void Keep(int area, int address, const char* hexValue)
    {
        PLC_driver.extendList << EXTENDVAR{DEFAULT_STATION, area, address, fromHex(hexValue)};
    }

    /// "area:address=value" of every entry of the default station, in list order.
    static List Entries()
    {
        List entries;
        for (const EXTENDVAR& entry : PLC_driver.extendList) {
            if (entry.station == DEFAULT_STATION)
                entries.push_back(std::to_string(entry.area) + ":" + std::to_string(entry.address) + "=" +
                                  toHex(entry.value));
        }
        return entries;
    }
};

} // namespace

TEST_F(ImageWriteTest, EachWordAreaHasItsBuffer)
{
    struct Row {
        int area, buffer;
    };
    const Row rows[] = {{9, 0}, {10, 4}, {11, 1}, {12, 2}, {13, 3}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.area);
        ClearImage();
        Mirror(Write(row.area, 7, 2, "34 12 CD AB"));
        EXPECT_EQ(0x1234, Words(row.buffer)[7]);
        EXPECT_EQ(0xABCD, Words(row.buffer)[8]);
        Words(row.buffer)[7] = Words(row.buffer)[8] = 0;
        EXPECT_TRUE(ImageIsAllZero());
    }
}

TEST_F(ImageWriteTest, EachBitAreaHasItsBuffer)
{
    for (int area = 1; area <= 7; ++area) {
        SCOPED_TRACE(area);
        ClearImage();
        Mirror(Write(area, 7, 1, "01"));
        EXPECT_TRUE(Bits(area)[7]);
        Bits(area)[7] = false;
        EXPECT_TRUE(ImageIsAllZero());
    }
}

TEST_F(ImageWriteTest, DoubleWordsGoWholeWithAllElements)
{
    Mirror(Write(14, 3, 2, "78 56 34 12 01 00 00 00"));
    EXPECT_EQ(0x12345678u, DoubleWords()[3]);
    EXPECT_EQ(1u, DoubleWords()[4]);
}

TEST_F(ImageWriteTest, Area0IsNeverMirrored)
{
    Mirror(Write(0, 0, 3, "01 01 01"));
    EXPECT_TRUE(ImageIsAllZero());
}

TEST_F(ImageWriteTest, CodesThatAreNoAreaAreIgnored)
{
    for (int area : {15, 16, INT_MAX, -1, INT_MIN}) {
        SCOPED_TRACE(area);
        Mirror(Write(area, 0, 1, "01 01 01 01"));
        EXPECT_TRUE(ImageIsAllZero());
    }
}

TEST_F(ImageWriteTest, BitsAreTheLowestBitOfTheirByte)
{
    Mirror(Write(1, 10, 3, "01 00 05"));
    EXPECT_TRUE(Bits(1)[10]);
    EXPECT_FALSE(Bits(1)[11]);
    EXPECT_TRUE(Bits(1)[12]);
}

TEST_F(ImageWriteTest, BitsOfAWordGoIntoTheSharedBuffer)
{
    Words(0)[2] = 0x0001;
    Mirror(Write(8, 37, 1, "01"));
    EXPECT_EQ(0x0021, Words(0)[2]);
    Mirror(Write(8, 32, 1, "02"));
    EXPECT_EQ(0x0020, Words(0)[2]);
}

TEST_F(ImageWriteTest, ShortDataEndsTheCopyEarly)
{
    Words(0)[1] = Words(0)[2] = 7;
    Mirror(Write(9, 0, 3, "34 12"));
    EXPECT_EQ(0x1234, Words(0)[0]);
    EXPECT_EQ(0, Words(0)[1]); // begins at the end of the data
    EXPECT_EQ(7, Words(0)[2]);
}

TEST_F(ImageWriteTest, CountsBelow1WriteNothing)
{
    for (int area = 1; area <= 14; ++area) {
        for (int count : {0, -1, INT_MIN}) {
            SCOPED_TRACE(std::to_string(area) + " count " + std::to_string(count));
            Mirror(Write(area, 0, count, "01 01 01 01"));
            EXPECT_TRUE(ImageIsAllZero());
        }
    }
}

TEST_F(ImageWriteTest, TheLargestCountIsHarmless)
{
    Mirror(Write(2, 65534, INT_MAX, "01 01 01"));
    Mirror(Write(9, 65534, INT_MAX, "34 12 FF FF"));
    Mirror(Write(14, 65534, INT_MAX, "78 56 34 12 FF FF FF FF"));
    Mirror(Write(8, 16 * 65534 + 15, INT_MAX, "01 01"));
    EXPECT_TRUE(Bits(2)[65534]);
    EXPECT_EQ(0x9234, Words(0)[65534]); // and bit 15 through area 8
    EXPECT_EQ(0x12345678u, DoubleWords()[65534]);
    Bits(2)[65534] = false;
    Words(0)[65534] = 0;
    DoubleWords()[65534] = 0;
    EXPECT_TRUE(ImageIsAllZero());
}

TEST_F(ImageWriteTest, ElementsBehindTheAreaAreDropped)
{
    Mirror(Write(2, 65533, 4, "01 01 01 01"));
    EXPECT_TRUE(Bits(2)[65533]);
    EXPECT_TRUE(Bits(2)[65534]);
    EXPECT_FALSE(Bits(3)[0]);
    Mirror(Write(9, 65534, 2, "01 00 02 00"));
    EXPECT_EQ(1, Words(0)[65534]);
    EXPECT_EQ(0, Words(1)[0]);
    Mirror(Write(10, 65534, 2, "01 00 02 00"));
    EXPECT_EQ(0u, DoubleWords()[0]);
    Mirror(Write(14, 65534, 2, "01 00 00 00 02 00 00 00"));
    EXPECT_EQ(1u, DoubleWords()[65534]);
}

TEST_F(ImageWriteTest, ElementsBeforeTheAreaAreDroppedWithTheirBytes)
{
    Mirror(Write(2, -2, 4, "00 00 01 01"));
    EXPECT_TRUE(Bits(2)[0]);
    EXPECT_TRUE(Bits(2)[1]);
    Mirror(Write(9, -1, 3, "01 00 02 00 03 00"));
    EXPECT_EQ(2, Words(0)[0]);
    EXPECT_EQ(3, Words(0)[1]);
    Mirror(Write(14, -1, 2, "01 00 00 00 02 00 00 00"));
    EXPECT_EQ(2u, DoubleWords()[0]);
    Words(0)[0] = 0;
    Mirror(Write(8, -2, 4, "01 01 00 01"));
    EXPECT_EQ(0x0002, Words(0)[0]);
}

TEST_F(ImageWriteTest, DataThatEndsBeforeTheAreaBeginsWritesNothing)
{
    Words(0)[0] = Words(0)[1] = 7;
    Bits(2)[0] = true;
    DoubleWords()[0] = 7;
    Mirror(Write(9, -3, 5, "01 00"));
    Mirror(Write(2, -3, 5, "01"));
    Mirror(Write(14, -3, 5, "01 00 00 00"));
    EXPECT_EQ(7, Words(0)[0]);
    EXPECT_EQ(7, Words(0)[1]);
    EXPECT_TRUE(Bits(2)[0]);
    EXPECT_EQ(7u, DoubleWords()[0]);
}

TEST_F(ImageWriteTest, TheElementAtTheEndOfTheDataIsStoredAs0AlsoBehindASkippedStart)
{
    Words(0)[0] = Words(0)[1] = 7;
    Mirror(Write(9, -1, 3, "01 00"));
    EXPECT_EQ(0, Words(0)[0]);
    EXPECT_EQ(7, Words(0)[1]);
}

TEST_F(ImageWriteTest, ForBitsOfWordsTheWordMustLieInside)
{
    Mirror(Write(8, -2, 4, "01 01 01 01"));
    EXPECT_EQ(0x0003, Words(0)[0]);
    Mirror(Write(8, 16 * 65535 - 1, 2, "01 01"));
    EXPECT_EQ(0x8000, Words(0)[65534]);
    EXPECT_EQ(0, Words(1)[0]);
}

TEST_F(ImageWriteTest, ANegativeBitAddressIsOutsideAlthoughItsQuotientIsWord0)
{
    Mirror(Write(8, -1, 1, "01"));
    Mirror(Write(8, -15, 1, "01"));
    EXPECT_TRUE(ImageIsAllZero());
}

TEST_F(ImageWriteTest, FarAwayAddressesWriteNothing)
{
    for (int area = 1; area <= 14; ++area) {
        for (int address : {16 * 65535, INT_MAX - 1, INT_MAX, INT_MIN, INT_MIN + 1, -65536}) {
            SCOPED_TRACE(std::to_string(area) + " at " + std::to_string(address));
            Mirror(Write(area, address, 8, "01 01 01 01"));
            EXPECT_TRUE(ImageIsAllZero());
        }
    }
}

TEST_F(ImageWriteTest, TheRequestIsOnlyRead)
{
    RW_VAR var = Write(9, -1, 5, "34 12");
    WriteDataToLocal(&var);
    EXPECT_EQ(-1, var.address);
    EXPECT_EQ(5, var.count);
    EXPECT_EQ("34 12", toHex(var.data));
}

TEST_F(ImageWriteTest, TheImageLockIsFreeAfterwards)
{
    for (int area = -1; area <= 15; ++area) {
        SCOPED_TRACE(area);
        Mirror(Write(area, 0, 1, "01"));
        ASSERT_TRUE(PLC_driver.imageMutex.tryLock());
        PLC_driver.imageMutex.unlock();
    }
}

TEST_F(ImageWriteTest, TheCallerMayHoldTheListLock)
{
    PLC_driver.listMutex.lock();
    Mirror(Write(9, 0, 1, "34 12"));
    PLC_driver.listMutex.unlock();
    EXPECT_EQ(0x1234, Words(0)[0]);
}

// Of any length: all elements that were given, and not one more.
TEST_F(ImageWriteTest, EveryElementOfAWriteIsStored)
{
    for (int count = 1; count <= 40; ++count) {
        SCOPED_TRACE(count);
        std::memset(&PLC_driver.image, 0, sizeof PLC_driver.image);
        for (int area : {2, 8, 9, 14}) {
            RW_VAR var = Variable(area, area == 8 ? 16 * 1000 : 0, count);
            var.data = QByteArray(count * (area == 14 ? 4 : area == 9 ? 2 : 1), '\1');
            WriteDataToLocal(&var);
        }
        for (int i = 0; i < 50; ++i) {
            EXPECT_EQ(i < count, PLC_driver.image.bitArea[2][i]);
            EXPECT_EQ(i < count, (PLC_driver.image.wordArea[0][1000 + i / 16] >> i % 16 & 1) != 0);
            EXPECT_EQ(i < count ? 0x0101 : 0, PLC_driver.image.wordArea[0][i]);
            EXPECT_EQ(i < count ? 0x01010101u : 0u, PLC_driver.image.dwordArea[i]);
        }
    }
}

TEST_F(MultiStationImageWriteTest, EveryElementOfAWriteIsStored)
{
    for (int count = 1; count <= 40; ++count) {
        SCOPED_TRACE(count);
        for (int area : {2, 9, 14}) {
            PLC_driver.extendList.clear();
            RW_VAR var = Variable(area, 0, count);
            var.data = QByteArray(count * (area == 14 ? 4 : area == 9 ? 2 : 1), '\1');
            WriteDataToLocal(&var);
            EXPECT_EQ(count, PLC_driver.extendList.size());
        }
    }
}

TEST_F(MultiStationImageWriteTest, TheImageIsNotTouched)
{
    for (int area = 1; area <= 14; ++area)
        Mirror(Write(area, 0, 1, "01 01 01 01"));
    EXPECT_TRUE(ImageIsAllZero());
}

TEST_F(MultiStationImageWriteTest, BitsReplaceTheirEntriesByOneByte)
{
    Keep(1, 11, "01");
    Mirror(Write(1, 10, 3, "01 00 05"));
    EXPECT_EQ((List{"1:11=00", "1:10=01", "1:12=01"}), Entries());
}

TEST_F(MultiStationImageWriteTest, WordsReplaceTheirEntriesByTwoBytes)
{
    for (int area = 9; area <= 13; ++area) {
        SCOPED_TRACE(area);
        PLC_driver.extendList.clear();
        Mirror(Write(area, 10, 2, "34 12 CD AB"));
        const std::string prefix = std::to_string(area);
        EXPECT_EQ((List{prefix + ":10=34 12", prefix + ":11=CD AB"}), Entries());
    }
}

TEST_F(MultiStationImageWriteTest, DoubleWordsReplaceTheirEntriesByFourBytes)
{
    Keep(14, 4, "FF FF FF FF");
    Mirror(Write(14, 3, 2, "78 56 34 12 01 00 00 00"));
    EXPECT_EQ((List{"14:4=01 00 00 00", "14:3=78 56 34 12"}), Entries());
}

TEST_F(MultiStationImageWriteTest, OtherStationsStayAsTheyAre)
{
    Keep(9, 0, "01 00");
    Mirror(Write(9, 0, 1, "34 12", 2));
    EXPECT_EQ((List{"9:0=01 00"}), Entries());
    ASSERT_EQ(2, PLC_driver.extendList.size());
    EXPECT_EQ(2, PLC_driver.extendList.at(1).station);
    EXPECT_EQ("34 12", toHex(PLC_driver.extendList.at(1).value));
}

TEST_F(MultiStationImageWriteTest, Area0AndCodesThatAreNoAreaMakeNoEntry)
{
    for (int area : {0, 15, 16, INT_MAX, -1, INT_MIN}) {
        SCOPED_TRACE(area);
        Mirror(Write(area, 0, 1, "01 01 01 01"));
        EXPECT_EQ(List{}, Entries());
    }
}

TEST_F(MultiStationImageWriteTest, ShortDataEndsOneElementPastItsEnd)
{
    Mirror(Write(1, 0, 3, "01"));
    Mirror(Write(9, 0, 3, "34 12"));
    Mirror(Write(14, 0, 3, "78 56 34 12"));
    EXPECT_EQ((List{"1:0=01", "1:1=00", "9:0=34 12", "9:1=00 00", "14:0=78 56 34 12", "14:1=00 00 00 00"}),
              Entries());
}

TEST_F(MultiStationImageWriteTest, MissingBytesOfAnElementCountAs0)
{
    Mirror(Write(9, 0, 3, "34 12 56"));
    Mirror(Write(14, 0, 1, "78"));
    EXPECT_EQ((List{"9:0=34 12", "9:1=56 00", "14:0=78 00 00 00"}), Entries());
}

TEST_F(MultiStationImageWriteTest, EmptyDataStoresOneZeroElement)
{
    Mirror(Write(1, 0, 2, ""));
    Mirror(Write(9, 0, 2, ""));
    Mirror(Write(14, 0, 2, ""));
    EXPECT_EQ((List{"1:0=00", "9:0=00 00", "14:0=00 00 00 00"}), Entries());
}

TEST_F(MultiStationImageWriteTest, BytesBehindTheDataCountAs0WhateverIsThere)
{
    const QByteArray memory = fromHex("34 12 56 78");
    RW_VAR var = Variable(9, 0, 2);
    var.data = QByteArray::fromRawData(memory.constData(), 3);
    WriteDataToLocal(&var);
    EXPECT_EQ((List{"9:0=34 12", "9:1=56 00"}), Entries());
}

TEST_F(MultiStationImageWriteTest, ABitOfAWordIsSetInTheWordsOwnEntry)
{
    Keep(9, 2, "00 10");
    Mirror(Write(8, 35, 1, "01"));
    EXPECT_EQ((List{"9:2=08 10"}), Entries());
    Mirror(Write(8, 44, 1, "00"));
    EXPECT_EQ((List{"9:2=08 00"}), Entries());
}

TEST_F(MultiStationImageWriteTest, BitsOfTheUpperByteBelongToTheSameWord)
{
    Mirror(Write(8, 40, 1, "01"));
    EXPECT_EQ((List{"9:2=00 01 00 00"}), Entries());
    Mirror(Write(8, 47, 1, "01"));
    EXPECT_EQ((List{"9:2=00 81 00 00"}), Entries());
    Mirror(Write(8, 39, 2, "01 01"));
    EXPECT_EQ((List{"9:2=80 81 00 00"}), Entries());
}

TEST_F(MultiStationImageWriteTest, BitsOfTheFirstWordsHaveTheirEntries)
{
    for (int word : {0, 1, 2, 3})
        Mirror(Write(8, 16 * word, 2, "01 01"));
    EXPECT_EQ((List{"9:0=01 00 00 00", "9:1=01 00 00 00", "9:2=01 00 00 00", "9:3=01 00 00 00"}), Entries());
}

TEST_F(MultiStationImageWriteTest, ABitOfAWordWithoutEntryMakesOneOfFourBytes)
{
    Mirror(Write(8, 35, 1, "01"));
    Mirror(Write(8, 48, 1, "00"));
    EXPECT_EQ((List{"9:2=08 00 00 00", "9:3=00 00 00 00"}), Entries());
}

TEST_F(MultiStationImageWriteTest, ABitByteOfNeither0Nor1ChangesNothing)
{
    Keep(9, 2, "08 10");
    Mirror(Write(8, 35, 1, "02"));
    Mirror(Write(8, 36, 1, "FF"));
    EXPECT_EQ((List{"9:2=08 10"}), Entries());
}

TEST_F(MultiStationImageWriteTest, SeveralBitsAllUseThePositionOfTheFirst)
{
    Mirror(Write(8, 3, 2, "01 01"));
    EXPECT_EQ((List{"9:0=08 00 00 00"}), Entries());
}

TEST_F(MultiStationImageWriteTest, SeveralBitsAcrossWordsUseThatPositionInEachWord)
{
    Mirror(Write(8, 15, 2, "01 01"));
    EXPECT_EQ((List{"9:0=00 80 00 00", "9:1=00 80 00 00"}), Entries());
}

TEST_F(MultiStationImageWriteTest, TheLastOfSeveralBitsWins)
{
    Mirror(Write(8, 3, 2, "01 00"));
    EXPECT_EQ((List{"9:0=00 00 00 00"}), Entries());
}

TEST_F(MultiStationImageWriteTest, BitsBeyondTheDataChangeNoValue)
{
    Keep(9, 0, "FF FF");
    Mirror(Write(8, 3, 5, "01"));
    EXPECT_EQ((List{"9:0=FF FF"}), Entries());
}

TEST_F(MultiStationImageWriteTest, AValueOfOneByteHasNoBitsOfAWord)
{
    Keep(9, 0, "00");
    Mirror(Write(8, 3, 1, "01"));
    EXPECT_EQ((List{"9:0=00"}), Entries());
}

TEST_F(MultiStationImageWriteTest, CountsBelow1MakeNoEntry)
{
    for (int area = 1; area <= 14; ++area) {
        for (int count : {0, -1, INT_MIN}) {
            SCOPED_TRACE(std::to_string(area) + " count " + std::to_string(count));
            Mirror(Write(area, 0, count, "01 01 01 01"));
            EXPECT_EQ(List{}, Entries());
        }
    }
}

TEST_F(MultiStationImageWriteTest, TheLargestCountEndsWithTheData)
{
    Mirror(Write(1, 0, INT_MAX, "01"));
    Mirror(Write(9, 0, INT_MAX, "34 12"));
    Mirror(Write(14, 0, INT_MAX, "78 56 34 12"));
    EXPECT_EQ((List{"1:0=01", "1:1=00", "9:0=34 12", "9:1=00 00", "14:0=78 56 34 12", "14:1=00 00 00 00"}),
              Entries());
}

TEST_F(MultiStationImageWriteTest, ElementsOutsideTheAreaGetNoEntry)
{
    Mirror(Write(1, 65534, 2, "01 01"));
    Mirror(Write(1, -1, 2, "00 01"));
    Mirror(Write(9, 65534, 2, "34 12 FF FF"));
    Mirror(Write(9, -1, 2, "FF FF 78 56"));
    Mirror(Write(14, 65534, 2, "01 00 00 00 FF FF FF FF"));
    Mirror(Write(14, -1, 2, "FF FF FF FF 02 00 00 00"));
    EXPECT_EQ((List{"1:65534=01", "1:0=01", "9:65534=34 12", "9:0=78 56", "14:65534=01 00 00 00",
                    "14:0=02 00 00 00"}),
              Entries());
}

TEST_F(MultiStationImageWriteTest, ForBitsOfWordsTheWordMustLieInside)
{
    Mirror(Write(8, 16 * 65535 - 1, 2, "01 01"));
    Mirror(Write(8, -1, 1, "01"));
    Mirror(Write(8, -15, 1, "01"));
    EXPECT_EQ((List{"9:65534=00 80 00 00"}), Entries());
}

TEST_F(MultiStationImageWriteTest, BitsThatBeginBeforeWord0ReachItsEntry)
{
    Mirror(Write(8, -2, 3, "00 00 00"));
    EXPECT_EQ((List{"9:0=00 00 00 00"}), Entries());
}

TEST_F(MultiStationImageWriteTest, FarAwayAddressesMakeNoEntry)
{
    for (int area = 1; area <= 14; ++area) {
        for (int address : {16 * 65535, INT_MAX - 1, INT_MAX, INT_MIN, INT_MIN + 1, -65536}) {
            SCOPED_TRACE(std::to_string(area) + " at " + std::to_string(address));
            Mirror(Write(area, address, 8, "01 01 01 01"));
            EXPECT_EQ(List{}, Entries());
        }
    }
}

TEST_F(MultiStationImageWriteTest, TheImageLockIsFreeAfterwards)
{
    Mirror(Write(8, 0, 1, "01"));
    Mirror(Write(9, 0, 1, "01"));
    ASSERT_TRUE(PLC_driver.imageMutex.tryLock());
    PLC_driver.imageMutex.unlock();
}
