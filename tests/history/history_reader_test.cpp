// SPDX-License-Identifier: MIT
// Logs in SQLite: what is written is what is read.

#include "history/log_files.h"

#include <gmock/gmock.h>

#include <limits>

namespace
{

using plc::HistoryReader;
using plc::LoggedSample;
using plc::LoggedSeries;
using plc::SampleState;
using plc::TrendPiece;
using test::noon;
using testing::ElementsAre;
using testing::HasSubstr;

class HistoryReaderTest : public test::LogFiles
{
protected:
    /// Writes \a samples to a.sqlite.
    void write(const std::vector<plc::LogSample>& samples) const
    {
        EXPECT_EQ(samples.size(), opened("a.sqlite")->write(samples).count);
    }

    /// \return "MS NAME TEXT STATE" of each sample, the time from noon on
    std::vector<std::string> read(qint64 fromMs = -noon, qint64 toMs = noon) const
    {
        std::vector<std::string> lines;
        const HistoryReader reader(path("a.sqlite"));
        reader.visit(reader.series(), {noon + fromMs, noon + toMs},
                     [&lines](const LoggedSeries& series, const LoggedSample& sample) {
                         lines.push_back(
                             QStringLiteral("%1 %2 %3 %4")
                                 .arg(sample.timeMs - noon)
                                 .arg(series.series.name, sample.text, sampleStateWord(sample.state))
                                 .toStdString());
                         return true;
                     });
        return lines;
    }

    std::string readRefusal(const char* name) const
    {
        try {
            const HistoryReader reader(path(name));
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    }

    /// \return "MIN..MAX", "MIN..MAX gap" or "gap" for each piece of \a count of the \a ms behind noon
    std::vector<std::string> trend(qint64 ms, int count) const
    {
        std::vector<std::string> words;
        const HistoryReader reader(path("a.sqlite"));
        for (const TrendPiece& piece : reader.trend(reader.series().at(1), {noon, noon + ms}, count)) {
            const QString range =
                piece.min ? QStringLiteral("%1..%2").arg(*piece.min).arg(*piece.max) : QString();
            words.push_back((range + QLatin1String(piece.gap ? " gap" : "")).trimmed().toStdString());
        }
        return words;
    }
};

TEST_F(HistoryReaderTest, TellsByTimeWhatWasWritten)
{
    write({speed(0, "12.5"), speed(2000, "13"), recipe(1000, "0123"), speedIs(SampleState::Stale, 3000)});
    EXPECT_THAT(read(), ElementsAre("0 speed 12.5 fresh", "1000 recipe 0123 fresh", "2000 speed 13.0 fresh",
                                    "3000 speed  stale"));
}

TEST_F(HistoryReaderTest, KeepsTwoSamplesOfOneTimeAndThoseOfAClockThatWasSetBack)
{
    write({speed(5, "1"), speed(5, "2"), speed(3, "3"), speed(5, "4")});
    EXPECT_THAT(read(), ElementsAre("3 speed 3.0 fresh", "5 speed 1.0 fresh", "5 speed 2.0 fresh",
                                    "5 speed 4.0 fresh"));
}

TEST_F(HistoryReaderTest, ARangeTakesItsBeginAndLeavesItsEnd)
{
    write({speed(1, "1"), speed(2, "2"), speed(3, "3")});
    EXPECT_THAT(read(2, 3), ElementsAre("2 speed 2.0 fresh"));
}

TEST_F(HistoryReaderTest, KeepsDigitsThatNoNumberHas)
{
    write({speed(0, "18446744073709551615"), speed(1, "nan"), speed(2, "-3")});
    EXPECT_THAT(read(),
                ElementsAre("0 speed 18446744073709551615 fresh", "1 speed nan fresh", "2 speed -3.0 fresh"));
}

TEST_F(HistoryReaderTest, TheNextWriterSaysFromWhenOnNobodyLogged)
{
    write({speed(0, "1"), recipe(4000, "TEA")});
    opened("a.sqlite")->write({speed(9000, "2")});
    EXPECT_THAT(read(), ElementsAre("0 speed 1.0 fresh", "4000 recipe TEA fresh", "4000 recipe  not logged",
                                    "4000 speed  not logged", "9000 speed 2.0 fresh"));
}

TEST_F(HistoryReaderTest, AWriterWithoutSamplesSaysThatItIsAlive)
{
    auto store = opened("a.sqlite");
    store->write({speed(0, "1")});
    store->idle(noon + 60000);
    EXPECT_EQ(noon + 60000, HistoryReader(path("a.sqlite")).aliveMs());
}

TEST_F(HistoryReaderTest, ReadsWhileItIsWritten)
{
    auto store = opened("a.sqlite");
    const HistoryReader reader(path("a.sqlite"));
    store->write({speed(0, "1")});
    EXPECT_THAT(read(), ElementsAre("0 speed 1.0 fresh"));
    EXPECT_EQ(noon, reader.series().at(1).lastMs);
}

TEST_F(HistoryReaderTest, LeavesNothingBesideTheFile)
{
    write({speed(0, "1")});
    read();
    EXPECT_THAT(names(), ElementsAre("a.sqlite"));
}

TEST_F(HistoryReaderTest, ATrendHasTheTrueExtremesOfEachPiece)
{
    write({speed(0, "5"), speed(3, "-2"), speed(7, "9"), speed(12, "1")});
    EXPECT_THAT(trend(20, 2), ElementsAre("-2..9", "1..9"));
}

TEST_F(HistoryReaderTest, AValueHoldsUntilTheNextSample)
{
    write({speed(-1000, "5"), speed(25, "7"), recipe(40, "TEA")});
    EXPECT_THAT(trend(40, 4), ElementsAre("5..5", "5..5", "5..7", "7..7"));
}

TEST_F(HistoryReaderTest, ATrendShowsWhereThereWasNoFreshValue)
{
    write({speed(5, "1"), speedIs(SampleState::Failed, 15), speed(35, "2")});
    EXPECT_THAT(trend(40, 4), ElementsAre("1..1 gap", "1..1 gap", "gap", "2..2 gap"));
}

TEST_F(HistoryReaderTest, BehindTheLastSignOfLifeNothingIsKnown)
{
    write({speed(5, "1")});
    EXPECT_THAT(trend(20, 2), ElementsAre("1..1 gap", "gap"));
}

TEST_F(HistoryReaderTest, PassesOverTimesThatNoCalendarHas)
{
    write({speed(0, "1")});
    {
        const plc::HistoryFile file(path("a.sqlite"), plc::HistoryFile::Purpose::Write);
        for (const qint64 time : {std::numeric_limits<qint64>::min(), std::numeric_limits<qint64>::max()})
            file.run(QStringLiteral("INSERT INTO samples VALUES(1, ?, 0, 99, 2, NULL)"), {time});
        file.run(QStringLiteral("UPDATE logging SET alive = ?"), {std::numeric_limits<qint64>::max()});
    }
    const HistoryReader reader(path("a.sqlite"));
    const LoggedSeries series = reader.series().at(1);
    EXPECT_EQ(noon, series.firstMs);
    EXPECT_EQ(noon, series.lastMs);
    EXPECT_EQ(plc::latestMs, reader.aliveMs());
    const plc::TimeRange all{std::numeric_limits<qint64>::min(), std::numeric_limits<qint64>::max()};
    EXPECT_EQ(4u, reader.trend(series, all, 4).size());
    EXPECT_THAT(read(), ElementsAre("0 speed 1.0 fresh"));
}

TEST_F(HistoryReaderTest, LeavesAFileOfSomethingElseAlone)
{
    put("text.sqlite", QByteArray(2000, 'x'));
    EXPECT_THAT(refusal("text.sqlite"), HasSubstr("not a database"));
    EXPECT_THAT(readRefusal("text.sqlite"), HasSubstr("not a database"));
    EXPECT_EQ(QByteArray(2000, 'x'), bytesOf("text.sqlite"));
}

TEST_F(HistoryReaderTest, LeavesADatabaseOfOthersAlone)
{
    {
        const plc::HistoryFile file(path("a.sqlite"), plc::HistoryFile::Purpose::Write);
        file.run(QStringLiteral("PRAGMA application_id = 7"));
    }
    EXPECT_THAT(refusal("a.sqlite"), HasSubstr("no log of plcpanel"));
    EXPECT_THAT(readRefusal("a.sqlite"), HasSubstr("no log of plcpanel"));
}

TEST_F(HistoryReaderTest, SaysThatALogIsNewerThanTheProgram)
{
    {
        const plc::HistoryFile file(path("a.sqlite"), plc::HistoryFile::Purpose::Write);
        file.run(QStringLiteral("PRAGMA user_version = 2"));
    }
    EXPECT_THAT(refusal("a.sqlite"), HasSubstr("form 2"));
    EXPECT_THAT(refusal("a.sqlite"), HasSubstr("newer plcpanel"));
}

TEST_F(HistoryReaderTest, SaysWhatIsWrongWithThePlace)
{
    EXPECT_THAT(refusal("none/a.sqlite"), HasSubstr("there is no directory"));
    EXPECT_THAT(readRefusal("none.sqlite"), HasSubstr("no such file"));
    const auto first = opened("a.sqlite");
    EXPECT_THAT(refusal("a.sqlite"), HasSubstr("writes this file"));
}

TEST_F(HistoryReaderTest, OnAFullDiskASampleCanBeTriedAgain)
{
    auto store = opened("a.sqlite");
    {
        const test::FullDisk full(8192);
        EXPECT_NE("", store->write({speed(0, "1")}).error.toStdString());
    }
    EXPECT_EQ("", store->write({speed(0, "1")}).error.toStdString());
    EXPECT_THAT(read(), ElementsAre("0 speed 1.0 fresh"));
}

} // namespace
