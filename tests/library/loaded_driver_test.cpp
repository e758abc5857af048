// SPDX-License-Identifier: MIT
// Request cycles through the exports alone.
#include "loaded_driver.h"
#include "support/built_files.h"

#include <cstring>

typedef LibraryTest Library;
typedef std::vector<std::vector<int>> Reports;

TEST(FreshLibrary, HasNothingToSendAndNothingOutstanding)
{
    LoadedDriver driver;
    ASSERT_TRUE(driver.loaded());
    COMINFO info = COMINFO();
    info.host40 = info.host52 = 5;

    EXPECT_EQ(1, driver.QueryFinishFlag());
    EXPECT_EQ(nullptr, driver.ComCommunication()) << "before it is wired";
    driver.SetComInfo(&info);
    EXPECT_EQ(0, info.host40);
    EXPECT_EQ(0, info.host52);
    EXPECT_EQ(nullptr, driver.ComCommunication());
    EXPECT_EQ(1, info.cycleDone);
    QByteArray none;
    const RW_VAR* result = driver.DataCom(&none, 0);
    ASSERT_NE(nullptr, result);
    EXPECT_EQ(1, result->result);
    EXPECT_TRUE(result->data.isEmpty());
}

TEST(FreshLibrary, HasThreeNullPointersThatItKeepsForTheRuntime)
{
    LoadedDriver driver;
    ASSERT_TRUE(driver.loaded());
    EXPECT_EQ(nullptr, *driver.LB);
    EXPECT_EQ(nullptr, *driver.LW);
    EXPECT_EQ(nullptr, *driver.RWI);
    int bits, words, third;
    driver.FlashLocalRegister(&bits, &words, &third);

    EXPECT_EQ(&bits, *driver.LB);
    EXPECT_EQ(&words, *driver.LW);
    EXPECT_EQ(&third, *driver.RWI);
}

TEST(FreshLibrary, IsGoneAfterUnloadAndForgetsEverything)
{
    COMINFO info = COMINFO();
    {
        LoadedDriver driver;
        ASSERT_TRUE(driver.loaded());
        driver.SetComInfo(&info);
        RW_VAR var = Variable(9, 1, 1);
        EXPECT_EQ(1, driver.AddListReadVar(&var));
        EXPECT_EQ(1, driver.AddListWriteVar(&var, 0));
        ASSERT_NE(nullptr, driver.ComCommunication());
        driver.EnCommStation(1, 0);
    }
    EXPECT_EQ(nullptr, dlopen(builtDriver(), RTLD_NOW | RTLD_NOLOAD)) << "still loaded";

    LoadedDriver again;
    ASSERT_TRUE(again.loaded());
    again.SetComInfo(&info);
    EXPECT_EQ(nullptr, again.ComCommunication());
    RW_VAR var = Variable(9, 1, 1);
    EXPECT_EQ(1, again.AddListReadVar(&var));
    EXPECT_NE(nullptr, again.ComCommunication()) << "station 1 is on again";
}

TEST_F(Library, ReadsCyclicallyIntoWhatTheRuntimeReads)
{
    RW_VAR var = Variable(10, 16, 4);
    var.hostKey = 5;
    driver.AddListReadVar(&var);

    EXPECT_EQ("00 00 00 00 00 06 01 03 30 10 00 04", poll());
    EXPECT_EQ(1, reply("00 00 00 00 00 0B 01 03 08 00 01 12 34 FF FF 80 00"));
    EXPECT_EQ("01 00 34 12 FF FF 00 80", get(10, "16", 4));
    EXPECT_EQ("00 00 00 00 00 06 01 03 30 10 00 04", poll());
    EXPECT_EQ(0, reply(""));
    EXPECT_EQ(46, reply(""));
    EXPECT_EQ(std::vector<int>{5}, announced());
}

TEST_F(Library, WritesABitInsideAWord)
{
    EXPECT_EQ(1, set(8, "2.3", fromHex("01"), 1, 7));

    EXPECT_EQ("00 00 00 00 00 06 01 03 00 02 00 01", poll());
    EXPECT_EQ(std::vector<int>{7}, announced());
    EXPECT_EQ(1, reply("00 00 00 00 00 05 01 03 02 00 10"));
    EXPECT_EQ("00 00 00 00 00 06 01 06 00 02 00 18", poll());
    EXPECT_EQ(1, reply("00 00 00 00 00 06 01 06 00 02 00 18"));
    EXPECT_EQ("18 00", get(9, "2", 1));
    EXPECT_EQ("nothing", poll());
}

TEST_F(Library, ReadsOnceInPiecesAndReportsOnce)
{
    info.maxBlockCount = 2;
    RW_VAR var = Variable(9, 0, 3);
    var.name2 = "100";
    var.hostKey = 51;
    var.hostSubKey = 52;

    EXPECT_EQ(2, driver.AddListOnceReadVar(&var, 0));
    EXPECT_EQ("00 00 00 00 00 06 01 03 00 64 00 02", poll());
    EXPECT_EQ(1, reply("00 00 00 00 00 07 01 03 04 00 01 00 02"));
    EXPECT_TRUE(reports().empty());
    EXPECT_EQ("00 00 00 00 00 06 01 03 00 66 00 01", poll());
    EXPECT_EQ(1, reply("00 00 00 00 00 05 01 03 02 00 03"));
    EXPECT_EQ((Reports{{7, 51, 52, 1}}), reports());
    EXPECT_EQ("01 00 02 00 03 00", get(9, "100", 3));
}

TEST_F(Library, KeepsStationsApart)
{
    info.multiStation = 1;
    for (int station = 1; station <= 2; ++station) {
        RW_VAR var = Variable(9, 10, 1, station);
        driver.AddListReadVar(&var);
    }
    EXPECT_EQ("00 00 00 00 00 06 01 03 00 0A 00 01", poll());
    reply("00 00 00 00 00 05 01 03 02 11 12");
    EXPECT_EQ("00 00 00 00 00 06 02 03 00 0A 00 01", poll());
    reply("00 00 00 00 00 05 02 03 02 21 22");

    EXPECT_EQ("12 11", get(9, "10", 1, 1));
    EXPECT_EQ("22 21", get(9, "10", 1, 2));
    driver.EnCommStation(1, 0);
    EXPECT_EQ("00 00 00 00 00 06 02 03 00 0A 00 01", poll());
}

TEST_F(Library, ConvertsAddressTexts)
{
    EXPECT_EQ(15, driver.PLCAddressChangeIntef(0, "17"));
    EXPECT_EQ(62, driver.PLCAddressChangeIntef(8, "3.14"));
    EXPECT_EQ(-1, driver.PLCAddressChangeIntef(7, "7999"));
    EXPECT_EQ("refused", get(14, "199", 2));
}

TEST_F(Library, OffersTheChecksumsAndDigits)
{
    const unsigned char bytes[] = {0x01, 0x03, 0x00, 0x00, 0x00, 0x0A};

    EXPECT_EQ(0x000E, driver.CalSUM(bytes, 6));
    EXPECT_EQ(0xCDC5, driver.CalCRC(bytes, 6)); // sent as C5 CD
    EXPECT_EQ(0xF2, driver.CalLRC(bytes, 6));
    EXPECT_EQ(0x08, driver.CalXOR(bytes, 6));
    EXPECT_EQ('B', driver.DigitalToASCII(11));
    EXPECT_EQ(11, driver.ASCIIToDigital('B'));
}

// A runtime that was built long ago writes and reads the records at fixed byte offsets.
#if defined(__SIZEOF_POINTER__) && __SIZEOF_POINTER__ == 4

namespace
{

void Put(void* record, int offset, int value)
{
    std::memcpy(static_cast<char*>(record) + offset, &value, sizeof value);
}

int At(const void* record, int offset)
{
    int value;
    std::memcpy(&value, static_cast<const char*>(record) + offset, sizeof value);
    return value;
}

const QByteArray& BytesAt(const void* record, int offset)
{
    return *reinterpret_cast<const QByteArray*>(static_cast<const char*>(record) + offset);
}

} // namespace

TEST(LibraryRecords, LieWhereTheTablesSay)
{
    LoadedDriver driver;
    ASSERT_TRUE(driver.loaded());
    int block[19] = {};
    Put(block, 16, 100); // maxBlockCount
    Put(block, 28, 1);   // retryLimit
    Put(block, 60, 3);   // localStation
    driver.SetComInfo(reinterpret_cast<COMINFO*>(block));
    RW_VAR var = RW_VAR();
    Put(&var, 0, 11);  // hostKey
    Put(&var, 4, 12);  // hostSubKey
    Put(&var, 16, 3);  // stationGroup
    Put(&var, 32, 9);  // area
    Put(&var, 36, 16); // address
    Put(&var, 40, 5);  // station
    Put(&var, 44, 2);  // count
    driver.AddListReadVar(&var);

    const void* frame = driver.ComCommunication();
    ASSERT_NE(nullptr, frame);
    EXPECT_EQ("00 00 00 00 00 06 05 03 00 10 00 02", toHex(BytesAt(frame, 0)));
    EXPECT_EQ(12, At(frame, 4));
    EXPECT_EQ(13, At(frame, 8));
    EXPECT_EQ(9, At(frame, 12));
    EXPECT_EQ(4, At(frame, 16));
    EXPECT_EQ(11, At(frame, 20));
    EXPECT_EQ(16, At(frame, 20 + 36));
    EXPECT_EQ(1, At(block, 44)); // framesExpected
    EXPECT_EQ(0, At(block, 48)); // framesReceived

    QByteArray bytes = fromHex("00 00 00 00 00 07 05 03 04 12 34 56 78");
    const void* result = driver.DataCom(&bytes, 13);
    EXPECT_EQ(1, At(block, 48));
    EXPECT_EQ(1, At(result, 20));
    const int fields[][2] = {{0, 11}, {4, 12}, {16, 3}, {32, 9}, {36, 16}, {40, 5}, {44, 2}};
    for (const int* field : fields)
        EXPECT_EQ(field[1], At(result, field[0])) << "offset " << field[0];
    EXPECT_TRUE(BytesAt(result, 56).isEmpty());

    driver.ComCommunication();
    EXPECT_EQ(0, At(driver.DataCom(&bytes, 0), 20));
    EXPECT_EQ(1, At(block, 32)); // failCount
    driver.ComCommunication();
    EXPECT_EQ(52, At(driver.DataCom(&bytes, 0), 20));
    EXPECT_EQ(0, At(block, 32));
}

#endif
