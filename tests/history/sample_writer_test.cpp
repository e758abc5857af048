// SPDX-License-Identifier: MIT
// Writing on a thread of its own, and times as people write them.

#include "history/local_time.h"
#include "history/log_files.h"
#include "history/sample_writer.h"
#include "support/waiting.h"

#include <gmock/gmock.h>

#include <atomic>

namespace
{

using plc::SampleWriter;
using plc::WriterLimits;
using test::noon;
using testing::HasSubstr;

using SampleWriterTest = test::LogFiles;

/// A disk that is full, or waits, as a test wants it.
struct Disk {
    std::atomic<bool> isFull{false};
    std::atomic<bool> waits{false};
    std::atomic<int> tries{0};
};

class StoreOnDisk : public plc::SampleStore
{
public:
    explicit StoreOnDisk(Disk* disk) : m_disk(disk) {}
    void open(const std::vector<plc::Series>&) override {}
    Written write(const std::vector<plc::LogSample>& samples) override
    {
        ++m_disk->tries;
        test::eventually([this] { return !m_disk->waits; });
        return m_disk->isFull ? Written{0, QStringLiteral("No space left")}
                              : Written{samples.size(), QString()};
    }
    void idle(qint64) override {}

private:
    Disk* const m_disk;
};

TEST_F(SampleWriterTest, WritesSoonWithoutBeingTold)
{
    SampleWriter writer(plc::makeSampleStore(path("a.csv"), {}), {10, 1, 0});
    writer.start({plc::Series{QStringLiteral("speed"), QString(), QString()}});
    EXPECT_TRUE(writer.add(speed(0, "1")));
    EXPECT_TRUE(test::eventually([&writer] { return writer.report().written == 1; }));
    EXPECT_THAT(bytesOf("a.csv").toStdString(), HasSubstr("speed,1,"));
}

TEST_F(SampleWriterTest, WritesAllBeforeItEnds)
{
    Disk disk;
    SampleWriter writer(std::make_unique<StoreOnDisk>(&disk), {10, 3600000, 0});
    writer.start({});
    writer.add(speed(0, "1"));
    writer.stop();
    EXPECT_EQ(1, writer.report().written);
    EXPECT_FALSE(writer.add(speed(1, "2")));
}

TEST_F(SampleWriterTest, NeverWaitsForTheDiskAndCountsWhatFindsNoRoom)
{
    Disk disk;
    disk.waits = true;
    SampleWriter writer(std::make_unique<StoreOnDisk>(&disk), {3, 1, 0});
    writer.start({});
    writer.add(speed(0, "1"));
    ASSERT_TRUE(test::eventually([&disk] { return disk.tries > 0; }));
    EXPECT_TRUE(writer.add(speed(1, "2")));
    EXPECT_TRUE(writer.add(speed(2, "3")));
    EXPECT_FALSE(writer.add(speed(3, "4")));
    disk.waits = false;
    writer.stop();
    EXPECT_EQ(3, writer.report().written);
    EXPECT_EQ(1, writer.report().lost);
}

TEST_F(SampleWriterTest, AFullDiskThatGetsRoomInTimeCostsNothing)
{
    Disk disk;
    disk.isFull = true;
    SampleWriter writer(std::make_unique<StoreOnDisk>(&disk), {10, 1, 0});
    writer.start({});
    writer.add(speed(0, "1"));
    ASSERT_TRUE(test::eventually([&disk] { return disk.tries > 3; }));
    EXPECT_EQ("No space left", writer.report().error.toStdString());
    disk.isFull = false;
    ASSERT_TRUE(test::eventually([&writer] { return writer.report().written == 1; }));
    writer.stop();
    EXPECT_EQ(0, writer.report().lost);
    EXPECT_EQ("", writer.report().error.toStdString());
}

TEST_F(SampleWriterTest, WhatIsNotWrittenInTheEndIsLost)
{
    Disk disk;
    disk.isFull = true;
    SampleWriter writer(std::make_unique<StoreOnDisk>(&disk), {10, 1, 5});
    writer.start({});
    writer.add(speed(0, "1"));
    writer.add(speed(1, "2"));
    writer.stop();
    EXPECT_EQ(2, writer.report().lost);
    EXPECT_EQ(0, writer.report().written);
}

TEST_F(SampleWriterTest, AFileThatCannotBeOpenedIsToldByStart)
{
    SampleWriter writer(plc::makeSampleStore(path("none/a.csv"), {}));
    EXPECT_THROW(writer.start({}), std::runtime_error);
}

TEST_F(SampleWriterTest, TimesAreLocalAndHaveTheirDistanceFromUtc)
{
    EXPECT_EQ("2026-11-22T12:00:00.000+00:00", plc::localTimeText(noon).toStdString());
    qputenv("TZ", "Europe/Rome");
    EXPECT_EQ("2026-11-22T13:00:00.000+01:00", plc::localTimeText(noon).toStdString());
}

TEST_F(SampleWriterTest, TakesTimesAsPeopleWriteThem)
{
    const qint64 hour = 3600000;
    const auto parsed = [](const char* text) {
        return plc::parseLocalTime(QString::fromLatin1(text), noon).value_or(-1) - noon;
    };
    EXPECT_EQ(0, parsed("now"));
    EXPECT_EQ(-hour, parsed("-1h"));
    EXPECT_EQ(-90000, parsed("-90s"));
    EXPECT_EQ(-7 * 24 * hour, parsed("-7d"));
    EXPECT_EQ(-12 * hour, parsed("today"));
    EXPECT_EQ(-36 * hour, parsed("yesterday"));
    EXPECT_EQ(-12 * hour, parsed("2026-11-22"));
    EXPECT_EQ(60000, parsed("2026-11-22T12:01"));
    EXPECT_EQ(1500, parsed("2026-11-22 12:00:01.5"));
    EXPECT_EQ(-hour, parsed("2026-11-22T12:00:00+01:00"));
    EXPECT_EQ(hour, parsed("2026-11-22T13:00Z"));
    EXPECT_EQ(-1 - noon, parsed("1h"));
    EXPECT_EQ(-1 - noon, parsed("22.11.2026"));
}

} // namespace
