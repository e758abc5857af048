// SPDX-License-Identifier: MIT
// plcpanel log and history as processes.

#include "history/log_files.h"
#include "panel/plcpanel_run.h"
#include "simulator/simulated_controller.h"
#include "support/built_files.h"
#include "support/waiting.h"

#include <gmock/gmock.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <atomic>
#include <csignal>
#include <thread>

namespace
{

using test::Plcpanel;
using test::plcpanel;
using test::plcpanelInShell;
using test::RunResult;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class PlcpanelLog : public test::LogFiles
{
protected:
    PlcpanelLog() { controller.start(); }

    /// \return log of \a words to the file \a name, from the controller
    QStringList line(const char* words, const char* name) const { return line(words, path(name)); }

    QStringList line(const char* words, const QString& file) const
    {
        return QStringLiteral("log %1").arg(QLatin1String(words)).split(QLatin1Char(' ')) +
               QStringList{QStringLiteral("--to"), file, QStringLiteral("--controller"),
                           QStringLiteral("127.0.0.1:%1").arg(controller.port())};
    }

    RunResult history(const char* words, const char* name = "a.sqlite") const
    {
        return plcpanel(QStringList{QStringLiteral("history"), path(name)} +
                        QString::fromLatin1(words).split(QLatin1Char(' '), Qt::SkipEmptyParts));
    }

    /// \return the column \a index of the fresh lines in a log in CSV
    static QStringList column(const QByteArray& csv, int index)
    {
        QStringList values;
        for (const QByteArray& row : csv.split('\n')) {
            if (row.endsWith(",fresh"))
                values << QString::fromUtf8(row.split(',').at(index));
        }
        return values;
    }

    simulator::SimulatedController controller;
};

/// Counts register 100 of a controller up, as fast as it goes.
class Counter
{
public:
    explicit Counter(simulator::SimulatedController* controller)
        : m_thread([this, controller] {
              while (!m_ends) {
                  controller->memory().setHoldingRegister(1, 100, static_cast<quint16>(++m_count));
                  std::this_thread::sleep_for(std::chrono::milliseconds(1));
              }
          })
    {
    }
    ~Counter()
    {
        m_ends = true;
        m_thread.join();
    }
    int count() const { return m_count; }

private:
    std::atomic<bool> m_ends{false};
    std::atomic<int> m_count{0};
    std::thread m_thread;
};

bool risesWithoutRepeating(const QStringList& values)
{
    for (int index = 1; index < values.size(); ++index) {
        if (values.at(index).toInt() <= values.at(index - 1).toInt())
            return false;
    }
    return true;
}

TEST_F(PlcpanelLog, WritesEachChangeOnceAndSaysWhenItEnds)
{
    controller.memory().setHoldingRegister(1, 100, 7);
    Plcpanel log(line("9:100 --json", "a.csv"));
    ASSERT_TRUE(
        log.eventually([](const std::string& out) { return out.find("\"value\":7") != std::string::npos; }));
    controller.memory().setHoldingRegister(1, 100, 8);
    ASSERT_TRUE(
        log.eventually([](const std::string& out) { return out.find("\"value\":8") != std::string::npos; }));
    const RunResult result = log.endBy(SIGTERM);
    EXPECT_EQ(0, result.status) << result.errors;
    EXPECT_THAT(bytesOf("a.csv").toStdString(), testing::MatchesRegex("time,name,value,unit,state\n"
                                                                      "[-0-9T:.+]+,9:100,7,,fresh\n"
                                                                      "[-0-9T:.+]+,9:100,8,,fresh\n"
                                                                      "[-0-9T:.+]+,9:100,,,not logged\n"));
    EXPECT_THAT(names(), ElementsAre("a.csv"));
}

TEST_F(PlcpanelLog, SaysThatAValueIsNotReadAndComesBack)
{
    Plcpanel log(line("9:100 --timeout 50 --retries 0 --json", "a.sqlite"));
    ASSERT_TRUE(
        log.eventually([](const std::string& out) { return out.find("fresh") != std::string::npos; }));
    controller.stop();
    ASSERT_TRUE(
        log.eventually([](const std::string& out) { return out.find("failed") != std::string::npos; }));
    controller.start();
    ASSERT_TRUE(log.eventually(
        [](const std::string& out) { return out.find("fresh", out.find("failed")) != std::string::npos; }));
    EXPECT_EQ(0, log.endBy(SIGINT).status);
    EXPECT_THAT(history("9:100").out,
                testing::MatchesRegex("[^ ]+  9:100  0\n[^ ]+  9:100  \\(failed\\)\n[^ ]+  9:100  0\n"
                                      "[^ ]+  9:100  \\(not logged\\)\n"));
}

TEST_F(PlcpanelLog, EndsInGoodOrderWhenNobodyReadsWhatItPrints)
{
    const RunResult result = plcpanelInShell("(\"$@\"; echo status $? >&2) | head -n 1",
                                             line("9:100 --every --poll 10 --json", "a.csv"));
    EXPECT_THAT(result.errors, HasSubstr("status 6"));
    EXPECT_THAT(bytesOf("a.csv").toStdString(), testing::EndsWith("not logged\n"));
}

TEST_F(PlcpanelLog, LogsEveryRefreshWhereThatIsWanted)
{
    Plcpanel log(line("9:100x2 --every --poll 10 --json", "a.csv"));
    ASSERT_TRUE(
        log.eventually([](const std::string& out) { return std::count(out.begin(), out.end(), '\n') > 10; }));
    log.endBy(SIGTERM);
    const QStringList times = column(bytesOf("a.csv"), 0);
    EXPECT_GT(times.size(), 10);
    EXPECT_EQ(QSet<QString>(times.begin(), times.end()).size(),
              (times.size() + 1) / 2); // both are read at once
}

TEST_F(PlcpanelLog, LosesNoLineInRotationUnderFastChanges)
{
    int count = 0;
    {
        const Counter counter(&controller);
        Plcpanel log(line("9:100 --every --poll 0 --rotate-size 1k --json", "a.csv"));
        ASSERT_TRUE(log.eventually(
            [](const std::string& out) { return std::count(out.begin(), out.end(), '\n') > 300; }));
        const RunResult result = log.endBy(SIGTERM);
        EXPECT_EQ(0, result.status) << result.errors;
        count = static_cast<int>(std::count(result.out.begin(), result.out.end(), '\n'));
    }
    int lines = 0;
    int files = 0;
    for (const std::string& name : names()) {
        const QByteArray bytes = bytesOf(name.c_str());
        EXPECT_THAT(bytes.toStdString(), StartsWith("time,name,value,unit,state\n"));
        EXPECT_LE(bytes.size(), 1024);
        lines += bytes.count('\n') - 1;
        ++files;
    }
    EXPECT_EQ(count, lines);
    EXPECT_GT(files, 10);
}

TEST_F(PlcpanelLog, AKilledDatabaseOpensAndHasAllButTheLastSecond)
{
    // In memory, so that a busy disk, for which nobody can vouch, is not what is measured.
    const QTemporaryDir memory(QStringLiteral("/dev/shm/plcpanel-log-XXXXXX"));
    const QString file = memory.filePath(QStringLiteral("a.sqlite"));
    const Counter counter(&controller);
    Plcpanel log(line("9:100 --poll 0 --json", file));
    ASSERT_TRUE(log.eventually(
        [](const std::string& out) { return std::count(out.begin(), out.end(), '\n') > 100; }));
    const int aSecondBefore = counter.count();
    std::this_thread::sleep_for(std::chrono::seconds(1));
    const RunResult killed = log.endBy(SIGKILL);
    const RunResult read =
        plcpanel({QStringLiteral("history"), file, QStringLiteral("9:100"), QStringLiteral("--csv")});
    EXPECT_EQ(0, read.status) << read.errors;
    const QStringList values = column(QByteArray::fromStdString(read.out), 2);
    EXPECT_TRUE(risesWithoutRepeating(values));
    EXPECT_GE(values.last().toInt(), aSecondBefore);
    EXPECT_GE(values.size(), std::count(killed.out.begin(), killed.out.end(), '\n'))
        << "printed, and not there";
}

TEST_F(PlcpanelLog, AKilledFileOfCsvHasWholeLinesAndGoesOn)
{
    Counter counter(&controller);
    Plcpanel first(line("9:100 --poll 0 --json", "a.csv"));
    ASSERT_TRUE(first.eventually(
        [](const std::string& out) { return std::count(out.begin(), out.end(), '\n') > 100; }));
    first.endBy(SIGKILL);
    const int before = column(bytesOf("a.csv"), 2).size();
    Plcpanel second(line("9:100 --poll 0 --json", "a.csv"));
    ASSERT_TRUE(second.eventually([](const std::string& out) { return !out.empty(); }));
    EXPECT_EQ(0, second.endBy(SIGTERM).status);
    const QStringList values = column(bytesOf("a.csv"), 2);
    EXPECT_GT(values.size(), before);
    EXPECT_TRUE(risesWithoutRepeating(values));
}

TEST_F(PlcpanelLog, TellsHowManyValuesAFullDiskCost)
{
    const RunResult full =
        plcpanelInShell("trap '' XFSZ; ulimit -f 1; timeout --preserve-status -s TERM 1 \"$@\"",
                        line("9:100x20 --poll 0 --every", "b.csv"));
    EXPECT_EQ(6, full.status);
    EXPECT_THAT(full.errors,
                AllOf(HasSubstr("File too large; it is tried again"), HasSubstr("values are lost")));
    EXPECT_THAT(bytesOf("b.csv").toStdString(), testing::EndsWith("\n"));
}

TEST_F(PlcpanelLog, SaysWhatIsWrongWithTheFileBeforeItBegins)
{
    put("other.csv", "a,b\n");
    put("other.sqlite", QByteArray(1000, 'x'));
    const auto refusal = [this](const char* words, const char* name) {
        const RunResult result = plcpanel(line(words, name));
        EXPECT_EQ(2, result.status) << result.out;
        return result.errors;
    };
    EXPECT_THAT(refusal("9:100", "other.csv"), HasSubstr("has other columns"));
    EXPECT_THAT(refusal("9:100", "other.sqlite"), HasSubstr("not a database"));
    EXPECT_THAT(refusal("9:100", "none/a.csv"), HasSubstr("there is no directory"));
    EXPECT_THAT(refusal("9:100", "a.txt"), HasSubstr(".csv or .sqlite"));
    EXPECT_THAT(refusal("9:100x2 9:101", "a.csv"), HasSubstr("9:101 would be logged twice"));
    EXPECT_THAT(refusal("9:100 --rotate-size 7", "a.csv"), HasSubstr("k, M or G"));
    EXPECT_THAT(refusal("9:100 --rotate-daily", "a.sqlite"), HasSubstr("a database is one file"));
}

TEST_F(PlcpanelLog, SaysWhoWritesTheFile)
{
    Plcpanel first(line("9:100 --json", "a.sqlite"));
    ASSERT_TRUE(first.eventually([](const std::string& out) { return !out.empty(); }));
    const RunResult second = plcpanel(line("9:100", "a.sqlite"));
    EXPECT_EQ(2, second.status);
    EXPECT_THAT(second.errors, HasSubstr("writes this file; end that one"));
}

TEST_F(PlcpanelLog, EndsWithStatusOneWhereTheControllerNeverAnswered)
{
    controller.stop();
    Plcpanel log(line("9:100 --timeout 50 --retries 0 --json", "a.csv"));
    ASSERT_TRUE(
        log.eventually([](const std::string& out) { return out.find("failed") != std::string::npos; }));
    const RunResult result = log.endBy(SIGTERM);
    EXPECT_EQ(1, result.status);
    EXPECT_THAT(result.errors, HasSubstr("cannot be reached"));
    EXPECT_THAT(bytesOf("a.csv").toStdString(), HasSubstr("9:100,,,failed\n"));
}

TEST_F(PlcpanelLog, WithoutThePluginOnlySqliteIsRefused)
{
    if (areProgramsEmulated())
        GTEST_SKIP()
            << "a copy of the script that has an emulator run the program leaves the program where it is";
    // Beside a copy of the program stands where Qt looks for plugins.
    const QString program = path("plcpanel");
    ASSERT_TRUE(QFile::copy(QString::fromUtf8(builtPlcpanel()), program));
    put("qt.conf", "[Paths]\nPlugins = /nowhere\n");
    const RunResult result = plcpanelInShell(
        QStringLiteral("shift; '%1' \"$@\"").arg(program).toUtf8().constData(), line("9:100", "a.sqlite"));
    EXPECT_EQ(2, result.status);
    EXPECT_THAT(result.errors, HasSubstr("install the package libqt5sql5-sqlite"));
}

class PlcpanelHistory : public PlcpanelLog
{
protected:
    PlcpanelHistory()
    {
        opened("a.sqlite")
            ->write({speed(0, "12.5"), recipe(1000, "TEA"), speed(2000, "13"),
                     speedIs(plc::SampleState::Stale, 3000), speedIs(plc::SampleState::NotLogged, 5000)});
    }
};

TEST_F(PlcpanelHistory, PrintsTheNamesInTheFile)
{
    const RunResult result = history("");
    EXPECT_EQ(0, result.status);
    EXPECT_EQ("recipe            2026-11-22T12:00:01.000+00:00 to 2026-11-22T12:00:01.000+00:00\n"
              "speed   m/min     2026-11-22T12:00:00.000+00:00 to 2026-11-22T12:00:05.000+00:00\n",
              result.out);
}

TEST_F(PlcpanelHistory, PrintsTheNamesAlone)
{
    EXPECT_EQ("recipe\nspeed\n", history("--names").out);
}

TEST_F(PlcpanelHistory, PrintsWhatWasLoggedByTime)
{
    EXPECT_EQ("2026-11-22T12:00:00.000+00:00  speed   12.5 m/min\n"
              "2026-11-22T12:00:01.000+00:00  recipe  \"TEA\"\n"
              "2026-11-22T12:00:02.000+00:00  speed   13.0 m/min\n"
              "2026-11-22T12:00:03.000+00:00  speed   (stale)\n"
              "2026-11-22T12:00:05.000+00:00  speed   (not logged)\n",
              history("sp* recipe").out);
}

TEST_F(PlcpanelHistory, PrintsARange)
{
    EXPECT_EQ("2026-11-22T12:00:02.000+00:00  speed  13.0 m/min\n",
              history("speed --from 2026-11-22T12:00:01 --to 2026-11-22T12:00:03Z").out);
    const RunResult nothing = history("speed --to 2026-11-21");
    EXPECT_EQ(1, nothing.status);
    EXPECT_THAT(nothing.errors, HasSubstr("nothing of this was logged in this time"));
}

TEST_F(PlcpanelHistory, PrintsCsvAsLogWritesIt)
{
    EXPECT_EQ("time,name,value,unit,state\n2026-11-22T12:00:01.000+00:00,recipe,TEA,,fresh\n",
              history("recipe --csv").out);
}

TEST_F(PlcpanelHistory, DrawsIn80ColumnsWhereThereIsNoTerminal)
{
    const RunResult result = history("speed --plot");
    EXPECT_EQ(0, result.status);
    EXPECT_THAT(result.out, StartsWith("speed, m/min\n"));
    for (const QString& drawn : QString::fromStdString(result.out).split(QLatin1Char('\n')))
        EXPECT_LE(drawn.size(), 80);
}

TEST_F(PlcpanelHistory, SaysWhatIsWrong)
{
    const auto refusal = [this](const char* words, const char* name = "a.sqlite") {
        const RunResult result = history(words, name);
        EXPECT_EQ(2, result.status) << result.out;
        return result.errors;
    };
    EXPECT_THAT(refusal("sped"), HasSubstr("sped: nothing of this name was logged"));
    EXPECT_THAT(refusal("speed --from noon"), HasSubstr("how long ago: -90s"));
    EXPECT_THAT(refusal("speed --from now --to -1h"), HasSubstr("--from is not before --to"));
    EXPECT_THAT(refusal("speed --plot --json"), HasSubstr("exclude each other"));
    EXPECT_THAT(refusal("speed", "none.sqlite"), HasSubstr("there is no such file"));
}

} // namespace
