// SPDX-License-Identifier: MIT
#include "driver/driver_fixture.h"

#include <climits>

namespace
{

typedef std::vector<std::string> List;

/// "area:address+count" of every entry.
List Runs(const QList<RW_VAR>& list)
{
    List runs;
    for (const RW_VAR& var : list)
        runs.push_back(std::to_string(var.area) + ":" + std::to_string(var.address) + "+" +
                       std::to_string(var.count));
    return runs;
}

/// A record that has another value in each field.
RW_VAR Distinct()
{
    RW_VAR var = Write(9, 24, 25, "0A 0B", 26);
    var.hostKey = 11;
    var.hostSubKey = 12;
    var.accessFlag = 13;
    var.spare3 = 14;
    var.stationGroup = 15;
    var.result = 16;
    var.name = "first";
    var.name2 = "1000";
    var.storeSelector = 17;
    var.spare13 = 18;
    return var;
}

void ExpectSame(const RW_VAR& expected, const RW_VAR& actual)
{
    EXPECT_EQ(expected.hostKey, actual.hostKey);
    EXPECT_EQ(expected.hostSubKey, actual.hostSubKey);
    EXPECT_EQ(expected.accessFlag, actual.accessFlag);
    EXPECT_EQ(expected.spare3, actual.spare3);
    EXPECT_EQ(expected.stationGroup, actual.stationGroup);
    EXPECT_EQ(expected.result, actual.result);
    EXPECT_EQ(expected.name.toStdString(), actual.name.toStdString());
    EXPECT_EQ(expected.name2.toStdString(), actual.name2.toStdString());
    EXPECT_EQ(expected.area, actual.area);
    EXPECT_EQ(expected.address, actual.address);
    EXPECT_EQ(expected.station, actual.station);
    EXPECT_EQ(expected.count, actual.count);
    EXPECT_EQ(expected.storeSelector, actual.storeSelector);
    EXPECT_EQ(expected.spare13, actual.spare13);
    EXPECT_EQ(toHex(expected.data), toHex(actual.data));
}

/// A list of different word requests at elements 0, 1, ...
QList<RW_VAR> ListOf(int size)
{
    QList<RW_VAR> list;
    for (int address = 0; address < size; ++address)
        list.append(Variable(9, address, 1));
    return list;
}

class AddListReadVarTest : public DriverTest
{
};

class AddListWriteVarTest : public DriverTest
{
protected:
    static int Add(RW_VAR var, int direct = 0) { return AddListWriteVar(&var, direct); }
    static const QList<RW_VAR>& Queue() { return PLC_driver.writeList; }
};

class AddListOnceReadVarTest : public DriverTest
{
protected:
    /// Adds a one-shot read; the record as the caller gets it back is in `returned`.
    int Add(int area, const char* text, int count, int hostKey = 1, int hostSubKey = 2)
    {
        returned = Variable(area, 4711, count, 9);
        returned.name2 = text;
        returned.hostKey = hostKey;
        returned.hostSubKey = hostSubKey;
        returned.storeSelector = 5;
        returned.spare13 = 6;
        return AddListOnceReadVar(&returned, 0);
    }

    static const QList<RW_VAR>& Queue() { return PLC_driver.onceReadList; }

    RW_VAR returned = RW_VAR();
};

} // namespace

TEST_F(AddListReadVarTest, AppendsACopy)
{
    RW_VAR var = Distinct();
    EXPECT_EQ(1, AddListReadVar(&var));
    EXPECT_EQ(2, AddListReadVar(&var));
    ExpectSame(Distinct(), PLC_driver.readList.at(0));
    ExpectSame(Distinct(), var);
}

TEST_F(AddListReadVarTest, TheCopyIsTheDriversOwn)
{
    RW_VAR var = Distinct();
    AddListReadVar(&var);
    var.address = 0;
    var.data[0] = 0;
    ExpectSame(Distinct(), PLC_driver.readList.at(0));
}

TEST_F(AddListReadVarTest, HasNoCap)
{
    PLC_driver.readList = ListOf(1024);
    RW_VAR var = Distinct();
    EXPECT_EQ(1025, AddListReadVar(&var));
}

TEST_F(AddListReadVarTest, QueuesAnyRecordUnchanged)
{
    RW_VAR var = Variable(99, INT_MIN, INT_MAX, -1);
    EXPECT_EQ(1, AddListReadVar(&var));
    EXPECT_EQ((List{"99:-2147483648+2147483647"}), Runs(PLC_driver.readList));
}

TEST_F(AddListReadVarTest, TakesNoLock)
{
    RW_VAR var = Distinct();
    PLC_driver.listMutex.lock(); // as the rebuild does
    EXPECT_EQ(1, AddListReadVar(&var));
    PLC_driver.listMutex.unlock();
}

TEST_F(AddListReadVarTest, NeedsNoSettingsBlock)
{
    PLC_driver.comInfo = nullptr;
    RW_VAR var = Distinct();
    EXPECT_EQ(1, AddListReadVar(&var));
}

TEST_F(AddListReadVarTest, NullGivesTheSizeAndChangesNothing)
{
    EXPECT_EQ(0, AddListReadVar(nullptr));
    PLC_driver.readList = ListOf(3);
    EXPECT_EQ(3, AddListReadVar(nullptr));
    EXPECT_EQ(3, PLC_driver.readList.size());
}

TEST_F(AddListWriteVarTest, AppendsACopy)
{
    RW_VAR var = Distinct();
    EXPECT_EQ(1, AddListWriteVar(&var, 0));
    ExpectSame(Distinct(), Queue().at(0));
    ExpectSame(Distinct(), var);
}

TEST_F(AddListWriteVarTest, AnEqualWriteReplacesTheOneBehindTheHead)
{
    Add(Write(9, 1, 1, "01 00"));
    Add(Write(9, 2, 1, "02 00"));
    EXPECT_EQ(2, Add(Write(9, 2, 1, "03 00")));
    EXPECT_EQ((List{"9:1+1", "9:2+1"}), Runs(Queue()));
    EXPECT_EQ("03 00", toHex(Queue().at(1).data));
}

// Each of the four by one more and by one less.
TEST_F(AddListWriteVarTest, AWriteToAnyOtherPlaceIsAnother)
{
    for (int RW_VAR::*field : {&RW_VAR::station, &RW_VAR::area, &RW_VAR::address, &RW_VAR::count})
        for (int difference : {-1, 1}) {
            PLC_driver.writeList.clear();
            Add(Write(9, 1, 1, "01 00"));
            Add(Write(9, 100, 3, "02 00", 5));
            RW_VAR other = Write(9, 100, 3, "03 00", 5);
            other.*field += difference;
            EXPECT_EQ(3, Add(other)) << Runs(Queue()).back();
        }
}

TEST_F(AddListWriteVarTest, AnEqualWriteAtTheHeadIsNeverReplaced)
{
    Add(Write(9, 1, 1, "01 00"));
    Add(Write(9, 2, 1, "02 00"));
    EXPECT_EQ(3, Add(Write(9, 1, 1, "03 00")));
    EXPECT_EQ("01 00", toHex(Queue().at(0).data));
    EXPECT_EQ("03 00", toHex(Queue().at(2).data));
}

TEST_F(AddListWriteVarTest, AListOfOneEntryIsNotSearched)
{
    Add(Write(9, 1, 1, "01 00"));
    EXPECT_EQ(2, Add(Write(9, 1, 1, "02 00")));
    EXPECT_EQ(2, Add(Write(9, 1, 1, "03 00")));
    EXPECT_EQ("01 00", toHex(Queue().at(0).data));
    EXPECT_EQ("03 00", toHex(Queue().at(1).data));
}

TEST_F(AddListWriteVarTest, AReplacingWriteTakesThePlaceWithEveryField)
{
    Add(Write(9, 1, 1, ""));
    Add(Write(9, 24, 25, "FF", 26));
    Add(Write(9, 3, 1, ""));
    EXPECT_EQ(3, Add(Distinct()));
    ExpectSame(Distinct(), Queue().at(1));
    EXPECT_EQ(3, Queue().at(2).address);
}

TEST_F(AddListWriteVarTest, StationAreaAddressAndCountMustAllBeEqual)
{
    Add(Write(9, 1, 1, ""));
    Add(Write(9, 2, 3, "", 4));
    EXPECT_EQ(3, Add(Write(9, 2, 3, "", 5)));
    EXPECT_EQ(4, Add(Write(10, 2, 3, "", 4)));
    EXPECT_EQ(5, Add(Write(9, 3, 3, "", 4)));
    EXPECT_EQ(6, Add(Write(9, 2, 4, "", 4)));
    EXPECT_EQ(6, Add(Write(9, 2, 3, "", 4)));
}

TEST_F(AddListWriteVarTest, KeysAndDataAreNotCompared)
{
    RW_VAR queued = Write(9, 2, 1, "01 00");
    queued.hostKey = 1;
    queued.hostSubKey = 1;
    Add(Write(9, 1, 1, ""));
    Add(queued);
    RW_VAR newer = Write(9, 2, 1, "02 00");
    newer.hostKey = 7;
    newer.hostSubKey = 8;
    EXPECT_EQ(2, Add(newer));
    EXPECT_EQ(7, Queue().at(1).hostKey);
    EXPECT_EQ(8, Queue().at(1).hostSubKey);
}

TEST_F(AddListWriteVarTest, TheFirstOfTwoEqualEntriesIsReplaced)
{
    Add(Write(9, 1, 1, ""), 1);
    Add(Write(9, 2, 1, "01 00"), 1);
    Add(Write(9, 2, 1, "02 00"), 1);
    EXPECT_EQ(3, Add(Write(9, 2, 1, "03 00")));
    EXPECT_EQ("03 00", toHex(Queue().at(1).data));
    EXPECT_EQ("02 00", toHex(Queue().at(2).data));
}

TEST_F(AddListWriteVarTest, TheListIsFullAt1024)
{
    PLC_driver.writeList = ListOf(1023);
    EXPECT_EQ(1024, Add(Write(9, 2000, 1, "")));
    EXPECT_EQ(1024, Add(Write(9, 2001, 1, "")));
    EXPECT_EQ(2000, Queue().last().address);
}

TEST_F(AddListWriteVarTest, AFullListStillTakesReplacements)
{
    PLC_driver.writeList = ListOf(1024);
    EXPECT_EQ(1024, Add(Write(9, 1023, 1, "03 00")));
    EXPECT_EQ("03 00", toHex(Queue().last().data));
}

TEST_F(AddListWriteVarTest, DirectAppendsWithoutSearch)
{
    Add(Write(9, 1, 1, ""));
    Add(Write(9, 2, 1, "01 00"));
    EXPECT_EQ(3, Add(Write(9, 2, 1, "02 00"), 1));
    EXPECT_EQ("01 00", toHex(Queue().at(1).data));
    EXPECT_EQ("02 00", toHex(Queue().at(2).data));
}

TEST_F(AddListWriteVarTest, DirectAppendsToAFullList)
{
    PLC_driver.writeList = ListOf(1024);
    EXPECT_EQ(1025, Add(Write(9, 5, 1, ""), 1));
}

TEST_F(AddListWriteVarTest, OnlyADirectOf1IsDirect)
{
    Add(Write(9, 1, 1, ""));
    Add(Write(9, 2, 1, ""));
    EXPECT_EQ(2, Add(Write(9, 2, 1, ""), 2));
    EXPECT_EQ(2, Add(Write(9, 2, 1, ""), -1));
}

TEST_F(AddListWriteVarTest, QueuesAnyRecordUnchanged)
{
    EXPECT_EQ(1, Add(Write(99, INT_MIN, INT_MAX, "01", -1)));
    EXPECT_EQ(2, Add(Write(0, INT_MAX, INT_MIN, "01", -1)));
    EXPECT_EQ((List{"99:-2147483648+2147483647", "0:2147483647+-2147483648"}), Runs(Queue()));
}

TEST_F(AddListWriteVarTest, NeedsNoSettingsBlock)
{
    PLC_driver.comInfo = nullptr;
    EXPECT_EQ(1, Add(Distinct()));
}

TEST_F(AddListWriteVarTest, NullGivesTheSizeAndChangesNothing)
{
    PLC_driver.writeList = ListOf(3);
    EXPECT_EQ(3, AddListWriteVar(nullptr, 0));
    EXPECT_EQ(3, AddListWriteVar(nullptr, 1));
    EXPECT_EQ(3, Queue().size());
}

TEST_F(AddListWriteVarTest, TheListLockIsFreeAfterwards)
{
    Add(Distinct(), 1);
    Add(Distinct());
    Add(Distinct());
    AddListWriteVar(nullptr, 0);
    ASSERT_TRUE(PLC_driver.listMutex.tryLock());
    PLC_driver.listMutex.unlock();
}

TEST_F(AddListOnceReadVarTest, TheAddressComesFromTheText)
{
    struct Row {
        int area;
        const char* text;
        const char* queued;
    };
    const Row rows[] = {{0, "17", "0:15+1"}, {2, "17", "2:17+1"},   {7, "8017", "7:17+1"},
                        {9, "17", "9:17+1"}, {13, "17", "13:17+1"}, {14, "217", "14:17+1"}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.area);
        PLC_driver.onceReadList.clear();
        EXPECT_EQ(1, Add(row.area, row.text, 1));
        EXPECT_EQ((List{row.queued}), Runs(Queue()));
    }
}

TEST_F(AddListOnceReadVarTest, BitsAreSplitAtEightTimesTheBlock)
{
    info.maxBlockCount = 4;
    EXPECT_EQ(2, Add(2, "100", 40));
    EXPECT_EQ((List{"2:100+32", "2:132+8"}), Runs(Queue()));
}

TEST_F(AddListOnceReadVarTest, WordsAreSplitAtTheBlock)
{
    EXPECT_EQ(3, Add(9, "1000", 250));
    EXPECT_EQ((List{"9:1000+100", "9:1100+100", "9:1200+50"}), Runs(Queue()));
}

TEST_F(AddListOnceReadVarTest, AMultipleOfTheBlockEndsWithAWholePiece)
{
    EXPECT_EQ(2, Add(9, "0", 200));
    EXPECT_EQ((List{"9:0+100", "9:100+100"}), Runs(Queue()));
}

TEST_F(AddListOnceReadVarTest, DoubleWordsAreSplitByTheirCount)
{
    EXPECT_EQ(2, Add(14, "200", 150));
    EXPECT_EQ((List{"14:0+100", "14:100+50"}), Runs(Queue()));
}

TEST_F(AddListOnceReadVarTest, BitsOfWordsBecomeTheirWordsFromWord1On)
{
    EXPECT_EQ(1, Add(8, "10.3", 20));
    EXPECT_EQ((List{"9:1+2"}), Runs(Queue()));
}

TEST_F(AddListOnceReadVarTest, BitsOfWordsCountTheWordsTheyTouch)
{
    struct Row {
        const char* text;
        int count;
        const char* queued;
    };
    const Row rows[] = {{"0.0", 1, "9:1+1"},  {"0.0", 16, "9:1+1"}, {"0.0", 17, "9:1+2"},
                        {"5.15", 1, "9:1+1"}, {"5.15", 2, "9:1+2"}, {"5.20", 12, "9:1+1"}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        PLC_driver.onceReadList.clear();
        Add(8, row.text, row.count);
        EXPECT_EQ((List{row.queued}), Runs(Queue()));
    }
}

TEST_F(AddListOnceReadVarTest, BitsOfWordsAreSplitByWords)
{
    info.maxBlockCount = 2;
    EXPECT_EQ(2, Add(8, "0.0", 48));
    EXPECT_EQ((List{"9:1+2", "9:3+1"}), Runs(Queue()));
}

TEST_F(AddListOnceReadVarTest, TheCallersRecordComesBackAsTheLastPiece)
{
    Add(9, "1000", 250);
    EXPECT_EQ(1200, returned.address);
    EXPECT_EQ(50, returned.count);
    EXPECT_EQ(9, returned.area);
    EXPECT_EQ(0, returned.storeSelector);
    EXPECT_EQ(0, returned.spare13);
}

TEST_F(AddListOnceReadVarTest, TheCallersRecordOfBitsOfWordsComesBackAsWords)
{
    Add(8, "10.3", 20);
    EXPECT_EQ(9, returned.area);
    EXPECT_EQ(1, returned.address);
    EXPECT_EQ(2, returned.count);
}

TEST_F(AddListOnceReadVarTest, SingleStationModeUsesTheDefaultStation)
{
    info.defaultStation = 42;
    Add(9, "0", 1);
    EXPECT_EQ(42, returned.station);
    EXPECT_EQ(42, Queue().at(0).station);
}

TEST_F(AddListOnceReadVarTest, MultiStationModeKeepsTheStation)
{
    info.multiStation = 1;
    Add(9, "0", 1);
    EXPECT_EQ(9, returned.station);
    EXPECT_EQ(9, Queue().at(0).station);
}

TEST_F(AddListOnceReadVarTest, OtherFieldsAreCarriedThrough)
{
    RW_VAR var = Distinct();
    AddListOnceReadVar(&var, 0);
    RW_VAR expected = Distinct();
    expected.address = 1000;
    expected.station = DEFAULT_STATION;
    expected.storeSelector = 0;
    expected.spare13 = 0;
    ASSERT_EQ(1, Queue().size());
    ExpectSame(expected, Queue().at(0));
}

TEST_F(AddListOnceReadVarTest, AnEqualReadIsQueuedOnce)
{
    EXPECT_EQ(1, Add(9, "5", 1));
    EXPECT_EQ(1, Add(9, "5", 1));
}

TEST_F(AddListOnceReadVarTest, ADifferenceInKeysAddressAreaOrCountQueuesAgain)
{
    Add(9, "5", 1);
    EXPECT_EQ(2, Add(9, "5", 1, 99));
    EXPECT_EQ(3, Add(9, "5", 1, 1, 99));
    EXPECT_EQ(4, Add(9, "6", 1));
    EXPECT_EQ(5, Add(10, "5", 1));
    EXPECT_EQ(6, Add(9, "5", 2));
}

TEST_F(AddListOnceReadVarTest, AnyOtherKeyOrStationQueuesAgain)
{
    info.multiStation = 1;
    for (int RW_VAR::*field : {&RW_VAR::hostKey, &RW_VAR::hostSubKey, &RW_VAR::station, &RW_VAR::count})
        for (int difference : {-1, 1}) {
            PLC_driver.onceReadList.clear();
            RW_VAR var = Variable(9, 0, 3, 5);
            var.name2 = QString("100");
            AddListOnceReadVar(&var, 0);
            var.*field += difference;
            EXPECT_EQ(2, AddListOnceReadVar(&var, 0));
        }
    PLC_driver.onceReadList.clear();
    for (int area : {11, 10, 12})
        for (const char* address : {"100", "99", "101"}) {
            RW_VAR var = Variable(area, 0, 3, 5);
            var.name2 = QString(address);
            AddListOnceReadVar(&var, 0);
        }
    EXPECT_EQ(9, PLC_driver.onceReadList.size());
}

TEST_F(AddListOnceReadVarTest, ADifferentStationQueuesAgain)
{
    info.multiStation = 1;
    Add(9, "5", 1);
    PLC_driver.onceReadList[0].station = 8;
    EXPECT_EQ(2, Add(9, "5", 1));
}

TEST_F(AddListOnceReadVarTest, OnlyThePiecesThatAreMissingAreQueued)
{
    Add(9, "100", 100);
    EXPECT_EQ(3, Add(9, "0", 250));
    EXPECT_EQ((List{"9:100+100", "9:0+100", "9:200+50"}), Runs(Queue()));
}

TEST_F(AddListOnceReadVarTest, TheListIsFullAt1024)
{
    PLC_driver.onceReadList = ListOf(1023);
    EXPECT_EQ(1024, Add(9, "2000", 250));
    EXPECT_EQ("9:2000+100", Runs(Queue()).back());
    EXPECT_EQ(1024, Add(9, "3000", 1));
    EXPECT_EQ(2000, Queue().last().address);
}

TEST_F(AddListOnceReadVarTest, DirectAppendsTheRecordUnchanged)
{
    RW_VAR var = Distinct();
    var.name2 = "not an address";
    EXPECT_EQ(1, AddListOnceReadVar(&var, 1));
    EXPECT_EQ(2, AddListOnceReadVar(&var, 1));
    RW_VAR expected = Distinct();
    expected.name2 = "not an address";
    ExpectSame(expected, var);
    ExpectSame(expected, Queue().at(0));
}

TEST_F(AddListOnceReadVarTest, DirectIsNeitherCappedNorCut)
{
    PLC_driver.onceReadList = ListOf(1024);
    RW_VAR var = Variable(8, INT_MAX, INT_MAX);
    EXPECT_EQ(1025, AddListOnceReadVar(&var, 1));
    EXPECT_EQ("8:2147483647+2147483647", Runs(Queue()).back());
}

TEST_F(AddListOnceReadVarTest, DirectNeedsNoSettingsBlock)
{
    PLC_driver.comInfo = nullptr;
    RW_VAR var = Distinct();
    EXPECT_EQ(1, AddListOnceReadVar(&var, 1));
}

TEST_F(AddListOnceReadVarTest, OnlyADirectOf1IsDirect)
{
    RW_VAR var = Distinct();
    AddListOnceReadVar(&var, 2);
    EXPECT_EQ((List{"9:1000+25"}), Runs(Queue()));
}

TEST_F(AddListOnceReadVarTest, WithoutASettingsBlockNothingIsQueuedOrChanged)
{
    PLC_driver.onceReadList = ListOf(2);
    PLC_driver.comInfo = nullptr;
    RW_VAR var = Distinct();
    EXPECT_EQ(0, AddListOnceReadVar(&var, 0));
    EXPECT_EQ(2, Queue().size());
    ExpectSame(Distinct(), var);
}

TEST_F(AddListOnceReadVarTest, NullIsRefused)
{
    PLC_driver.onceReadList = ListOf(2);
    EXPECT_EQ(0, AddListOnceReadVar(nullptr, 0));
    EXPECT_EQ(0, AddListOnceReadVar(nullptr, 1));
    EXPECT_EQ(2, Queue().size());
}

TEST_F(AddListOnceReadVarTest, ATextThatNamesNoElementIsRefusedAndTheRecordStays)
{
    PLC_driver.onceReadList = ListOf(2);
    for (const char* text : {"", "x", "-5", "2147483648", "1.0"}) {
        SCOPED_TRACE(text);
        RW_VAR var = Distinct();
        var.name2 = text;
        EXPECT_EQ(0, AddListOnceReadVar(&var, 0));
        RW_VAR expected = Distinct();
        expected.name2 = text;
        ExpectSame(expected, var);
        EXPECT_EQ(2, Queue().size());
    }
}

TEST_F(AddListOnceReadVarTest, ACodeThatIsNoAreaIsRefusedAfterTheRecordWasPrepared)
{
    PLC_driver.onceReadList = ListOf(2);
    for (int area : {15, 16, INT_MAX, -1, INT_MIN}) {
        SCOPED_TRACE(area);
        EXPECT_EQ(0, Add(area, "5", 1));
        EXPECT_EQ(0, returned.storeSelector);
        EXPECT_EQ(0, returned.spare13);
        EXPECT_EQ(int{DEFAULT_STATION}, returned.station);
        EXPECT_EQ(area, returned.area);
        EXPECT_EQ(2, Queue().size());
    }
}

TEST_F(AddListOnceReadVarTest, CountsBelow1QueueNothingAndGiveTheSize)
{
    PLC_driver.onceReadList = ListOf(2);
    for (int maxBlockCount : {100, 1, 0, -1, -5, INT_MIN, INT_MAX}) {
        info.maxBlockCount = maxBlockCount;
        for (int count : {0, -1, -5, -100, INT_MIN}) {
            SCOPED_TRACE("count " + std::to_string(count) + " block " + std::to_string(maxBlockCount));
            EXPECT_EQ(2, Add(2, "5", count));
            EXPECT_EQ(2, Add(8, "0.0", count));
            EXPECT_EQ(2, Add(9, "5", count));
            EXPECT_EQ(2, Add(14, "205", count));
        }
    }
}

// The words that are spanned count, not the bits asked for: they reach back to the first bit of their word.
TEST_F(AddListOnceReadVarTest, CountsBelow1OfBitsInsideWordsAreReadWhileTheySpanAWord)
{
    struct Row {
        const char* text;
        int count;
        std::vector<std::string> queued;
        int returned;
    };
    const Row rows[] = {
        {"0.5", 0, {"9:1+1"}, 1},
        {"7.15", 0, {"9:1+1"}, 1},
        {"0.5", -4, {"9:1+1"}, 1},
        {"0.15", -14, {"9:1+1"}, 1},
        {"0.5", -5, {}, 0},
        {"0.0", 0, {}, 0},
        {"0.5", -6, {}, 0},
        {"0.0", -1, {}, 0},
        {"0.5", -21, {}, -1},
        {"0.0", -16, {}, -1},
        {"0.15", INT_MIN, {}, -134217727},
    };
    for (int maxBlockCount : {100, 1, 0, -5, INT_MAX}) {
        info.maxBlockCount = maxBlockCount;
        for (const Row& row : rows) {
            SCOPED_TRACE(std::string(row.text) + " count " + std::to_string(row.count) + " block " +
                         std::to_string(maxBlockCount));
            PLC_driver.onceReadList.clear();
            EXPECT_EQ(static_cast<int>(row.queued.size()), Add(8, row.text, row.count));
            EXPECT_EQ(row.queued, Runs(Queue()));
            EXPECT_EQ(row.returned, returned.count);
            EXPECT_EQ(9, returned.area);
        }
    }
}

TEST_F(AddListOnceReadVarTest, ABlockOf0OrLessNeverSplits)
{
    for (int maxBlockCount : {0, -1, -100, INT_MIN}) {
        SCOPED_TRACE(maxBlockCount);
        PLC_driver.onceReadList.clear();
        info.maxBlockCount = maxBlockCount;
        Add(2, "5", 1000);
        Add(8, "0.0", 1600);
        Add(9, "5", 1000);
        EXPECT_EQ((List{"2:5+1000", "9:1+100", "9:5+1000"}), Runs(Queue()));
    }
}

TEST_F(AddListOnceReadVarTest, TheLargestBlockNeverSplits)
{
    info.maxBlockCount = INT_MAX;
    Add(2, "5", 1000);
    Add(9, "5", 1000);
    EXPECT_EQ((List{"2:5+1000", "9:5+1000"}), Runs(Queue()));
}

TEST_F(AddListOnceReadVarTest, RunawayCountsAreCutToWhatTheAreaCanServe)
{
    struct Row {
        int area;
        const char* text;
        int pieces;
        const char* last;
    };
    const Row rows[] = {
        {2, "0", 82, "2:64800+735"},     // 65535 bits, 800 a piece
        {8, "0.0", 656, "9:65501+35"},   // 65535 words from word 1 on
        {9, "0", 656, "9:65500+35"},     // 65535 words
        {14, "200", 656, "14:65500+36"}, // 65536, one more than the elements
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.area);
        PLC_driver.onceReadList.clear();
        EXPECT_EQ(row.pieces, Add(row.area, row.text, INT_MAX));
        EXPECT_EQ(row.last, Runs(Queue()).back());
    }
}

TEST_F(AddListOnceReadVarTest, RunawayCountsWithoutSplittingAreCutToo)
{
    info.maxBlockCount = 0;
    Add(2, "0", INT_MAX);
    Add(8, "0.0", INT_MAX);
    Add(9, "0", INT_MAX);
    Add(14, "200", INT_MAX);
    EXPECT_EQ((List{"2:0+65535", "9:1+65535", "9:0+65535", "14:0+65536"}), Runs(Queue()));
}

TEST_F(AddListOnceReadVarTest, CountsThatTheAreaCanServeAreNotCut)
{
    info.maxBlockCount = 0;
    Add(9, "0", 65535);
    Add(9, "1", 65536);
    Add(14, "200", 65536);
    EXPECT_EQ((List{"9:0+65535", "9:1+65535", "14:0+65536"}), Runs(Queue()));
}

TEST_F(AddListOnceReadVarTest, ManyPiecesFillTheListAndNoMore)
{
    info.maxBlockCount = 1;
    EXPECT_EQ(1024, Add(9, "0", INT_MAX));
    EXPECT_EQ("9:1023+1", Runs(Queue()).back());
}

TEST_F(AddListOnceReadVarTest, AnAddressAtTheEndOf32BitsIsSurvived)
{
    EXPECT_EQ(2, Add(9, "2147483647", 150));
    EXPECT_EQ("9:2147483647+100", Runs(Queue()).front());
    EXPECT_EQ(3, Add(8, "134217727.15", 1));
    EXPECT_EQ("9:1+1", Runs(Queue()).back());
}

TEST_F(AddListOnceReadVarTest, TheListLockIsFreeAfterwards)
{
    RW_VAR direct = Distinct();
    AddListOnceReadVar(&direct, 1);
    Add(9, "5", 1);
    Add(9, "5", 0);
    Add(9, "x", 1);
    Add(15, "5", 1);
    ASSERT_TRUE(PLC_driver.listMutex.tryLock());
    PLC_driver.listMutex.unlock();
}
