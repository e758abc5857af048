// SPDX-License-Identifier: MIT
// Logs in CSV.

#include "history/log_files.h"

#include <gmock/gmock.h>

namespace
{

using plc::SampleState;
using testing::ElementsAre;
using testing::HasSubstr;

using CsvStore = test::LogFiles;

TEST_F(CsvStore, HasALineForEachSampleWithItsTimeAndState)
{
    const auto written = opened("a.csv")->write(
        {speed(5, "12.5"), recipe(1000, "LEMON, \"TEA\""), speedIs(SampleState::Failed, 2000)});
    EXPECT_EQ(3u, written.count);
    EXPECT_EQ("time,name,value,unit,state\n"
              "2026-11-22T12:00:00.005+00:00,speed,12.5,m/min,fresh\n"
              "2026-11-22T12:00:01.000+00:00,recipe,\"LEMON, \"\"TEA\"\"\",,fresh\n"
              "2026-11-22T12:00:02.000+00:00,speed,,m/min,failed\n",
              bytesOf("a.csv"));
}

TEST_F(CsvStore, GoesOnBehindTheLinesThatAreThere)
{
    opened("a.csv")->write({speed(0, "1")});
    opened("a.csv")->write({speed(1000, "2")});
    EXPECT_EQ("time,name,value,unit,state\n"
              "2026-11-22T12:00:00.000+00:00,speed,1,m/min,fresh\n"
              "2026-11-22T12:00:01.000+00:00,speed,2,m/min,fresh\n",
              bytesOf("a.csv"));
}

TEST_F(CsvStore, CutsOffHalfALineThatAKilledWriterLeft)
{
    put("a.csv",
        "time,name,value,unit,state\n2026-11-22T12:00:00.000+00:00,speed,1,m/min,fresh\n2026-11-22T12");
    opened("a.csv")->write({speed(1000, "2")});
    EXPECT_EQ("time,name,value,unit,state\n"
              "2026-11-22T12:00:00.000+00:00,speed,1,m/min,fresh\n"
              "2026-11-22T12:00:01.000+00:00,speed,2,m/min,fresh\n",
              bytesOf("a.csv"));
}

TEST_F(CsvStore, LeavesAFileOfOtherColumnsAlone)
{
    put("a.csv", "name,area,address,type\n");
    EXPECT_THAT(refusal("a.csv"), HasSubstr("has other columns than time,name,value,unit,state"));
    EXPECT_EQ("name,area,address,type\n", bytesOf("a.csv"));
}

TEST_F(CsvStore, RefusesAFileOfOneEndlessLineWithoutTakingItIntoMemory)
{
    put("a.csv", "time,name,value,unit,state\n");
    ASSERT_TRUE(QFile::resize(path("a.csv"), 3LL << 30)); // a hole, which takes no room on the disk
    EXPECT_THAT(refusal("a.csv"), HasSubstr("its last line has no end"));
}

TEST_F(CsvStore, SaysThatThereIsNoDirectory)
{
    EXPECT_THAT(refusal("none/a.csv"), HasSubstr("there is no directory"));
}

TEST_F(CsvStore, SaysWhoElseWritesTheFile)
{
    const auto first = opened("a.csv");
    EXPECT_THAT(refusal("a.csv"), HasSubstr("writes this file"));
}

TEST_F(CsvStore, BeginsANewFileBeforeTheLengthIsExceeded)
{
    const int twoLines = 27 + 2 * 50;
    auto store = opened("a.csv", {twoLines, false});
    EXPECT_EQ(
        5u, store->write({speed(0, "1"), speed(1, "2"), speed(2, "3"), speed(3, "4"), speed(4, "5")}).count);
    EXPECT_THAT(names(),
                ElementsAre("a-20261122-120000-2.csv", "a-20261122-120000.csv", "a.csv", "a.csv.lock"));
    EXPECT_EQ("time,name,value,unit,state\n"
              "2026-11-22T12:00:00.000+00:00,speed,1,m/min,fresh\n"
              "2026-11-22T12:00:00.001+00:00,speed,2,m/min,fresh\n",
              bytesOf("a-20261122-120000.csv"));
    EXPECT_EQ("time,name,value,unit,state\n"
              "2026-11-22T12:00:00.004+00:00,speed,5,m/min,fresh\n",
              bytesOf("a.csv"));
}

TEST_F(CsvStore, BeginsANewFileWithTheFirstSampleOfADay)
{
    const qint64 midnight = 12 * 3600 * 1000;
    auto store = opened("a.csv", {0, true});
    store->write({speed(midnight - 1, "1")});
    store->write({speed(midnight, "2"), speed(midnight - 2, "late"), speed(midnight + 5, "3")});
    EXPECT_EQ("time,name,value,unit,state\n"
              "2026-11-22T23:59:59.999+00:00,speed,1,m/min,fresh\n",
              bytesOf("a-20261122-235959.csv"));
    EXPECT_EQ("time,name,value,unit,state\n"
              "2026-11-23T00:00:00.000+00:00,speed,2,m/min,fresh\n"
              "2026-11-22T23:59:59.998+00:00,speed,late,m/min,fresh\n"
              "2026-11-23T00:00:00.005+00:00,speed,3,m/min,fresh\n",
              bytesOf("a.csv"));
}

TEST_F(CsvStore, ADayThatBeganBeforeTheProgramEndsItsFileToo)
{
    put("a.csv", "time,name,value,unit,state\n2026-11-21T12:00:00.000+00:00,speed,1,m/min,fresh\n");
    opened("a.csv", {0, true})->write({speed(0, "2")});
    EXPECT_THAT(names(), ElementsAre("a-20261121-120000.csv", "a.csv"));
}

TEST_F(CsvStore, AFileThatSomebodyMovesAwayIsBegunAnew)
{
    auto store = opened("a.csv");
    store->write({speed(0, "1")});
    ASSERT_TRUE(QFile::rename(path("a.csv"), path("moved.csv")));
    store->write({speed(1000, "2")});
    EXPECT_EQ("time,name,value,unit,state\n2026-11-22T12:00:01.000+00:00,speed,2,m/min,fresh\n",
              bytesOf("a.csv"));
}

TEST_F(CsvStore, OnAFullDiskLeavesNoHalfLineAndCanBeTriedAgain)
{
    auto store = opened("a.csv");
    store->write({speed(0, "1")});
    const QByteArray before = bytesOf("a.csv");
    {
        const test::FullDisk full(static_cast<rlim_t>(before.size() + 20));
        const auto failed = store->write({speed(1000, "2")});
        EXPECT_EQ(0u, failed.count);
        EXPECT_THAT(failed.error.toStdString(), HasSubstr("too large"));
        EXPECT_EQ(before, bytesOf("a.csv"));
    }
    EXPECT_EQ(1u, store->write({speed(1000, "2")}).count);
    EXPECT_EQ(before + "2026-11-22T12:00:01.000+00:00,speed,2,m/min,fresh\n", bytesOf("a.csv"));
}

} // namespace
