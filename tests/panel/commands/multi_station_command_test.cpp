// SPDX-License-Identifier: MIT
// Several stations from the command line to the screen, and what a user types while they are watched.

#include "panel/commands/command_line.h"
#include "panel/plcpanel_run.h"
#include "panel/program_in_terminal.h"
#include "panel/watch/watch_table.h"
#include "simulator/simulated_controller.h"
#include "support/application.h"
#include "support/built_files.h"

#include <gmock/gmock.h>

#include <QTemporaryFile>

#include <csignal>
#include <fcntl.h>

namespace
{

using namespace plc;
using test::Plcpanel;
using test::plcpanel;
using test::RunResult;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

QStringList words(const std::string& text)
{
    return QString::fromStdString(text).split(QLatin1Char(' '));
}

CommandLine parsed(const char* text)
{
    test::needApplication();
    return parseCommandLine(QStringList{QStringLiteral("plcpanel")} + words(text));
}

bool contains(const std::string& text, const char* part)
{
    return text.find(part) != std::string::npos;
}

TEST(MultiStationCommandLine, VariablesNameTheirStations)
{
    const CommandLine read = parsed("read 9:1@3 9:1x2 --multi-station --station 7 --controller a");
    ASSERT_EQ(read.wish, CommandLine::Run) << read.text.toStdString();
    EXPECT_TRUE(read.options.settings.multiStation);
    EXPECT_EQ(read.options.settings.station, 7);
    EXPECT_EQ(read.options.variables[0].station, 3);
    EXPECT_EQ(read.options.variables[1].station, -1);
    const CommandLine write = parsed("write 9:1@3=5,6 --multi-station --controller a");
    ASSERT_EQ(write.wish, CommandLine::Run) << write.text.toStdString();
    EXPECT_EQ(write.options.writes[0].variable.station, 3);
    EXPECT_EQ(write.options.writes[0].variable.count, 2);
}

TEST(MultiStationCommandLine, OtherStationsNeedTheOption)
{
    const CommandLine read = parsed("read 9:1@3 --controller a");
    EXPECT_EQ(read.wish, CommandLine::Refuse);
    EXPECT_THAT(read.text.toStdString(), HasSubstr("station 3 is not served; only station 1 is"));
    EXPECT_THAT(read.text.toStdString(), HasSubstr("--multi-station"));
    EXPECT_EQ(parsed("read 9:1@1 --controller a").wish, CommandLine::Run);
}

TEST(MultiStationCommandLine, WrongStationsAreRefused)
{
    EXPECT_THAT(parsed("read 9:1@256 --multi-station --controller a").text.toStdString(),
                HasSubstr("\"256\" is no station"));
    EXPECT_THAT(parsed("read 9:1@0 --multi-station --controller a").text.toStdString(),
                HasSubstr("station 0 is a broadcast"));
    EXPECT_THAT(parsed("demo --multi-station").text.toStdString(),
                HasSubstr("--multi-station is no option of demo"));
}

/// Words 100 of stations 1 to 3 are 111, 222 and 333.
class WithStations : public testing::Test
{
protected:
    WithStations()
    {
        controller.start();
        for (int station = 1; station <= 3; ++station)
            set(station, static_cast<std::uint16_t>(111 * station));
    }

    void set(int station, std::uint16_t value)
    {
        controller.memory().setHoldingRegister(station, 100, value);
    }
    int get(int station) { return controller.memory().holdingRegister(station, 100); }

    QStringList line(const std::string& text) const
    {
        return words(text + " --multi-station --controller 127.0.0.1:" + std::to_string(controller.port()));
    }

    simulator::SimulatedController controller;
};

TEST_F(WithStations, ReadPrintsEachStationsOwnValue)
{
    const RunResult read = plcpanel(line("read 9:100@1 9:100@2 9:100 --station 3"));
    EXPECT_EQ(read.out, "9:100@1  111\n9:100@2  222\n9:100    333\n");
    EXPECT_EQ(read.status, 0) << read.errors;
}

TEST_F(WithStations, ReadPrintsTheStationAsJson)
{
    const RunResult read = plcpanel(line("read 9:100@2 9:100 --station 3 --json"));
    EXPECT_EQ(read.out, "{\"address\":\"100\",\"area\":9,\"count\":1,\"station\":2,\"values\":[222]}\n"
                        "{\"address\":\"100\",\"area\":9,\"count\":1,\"station\":3,\"values\":[333]}\n");
}

TEST_F(WithStations, WriteReachesItsStationAndTellsWhichFailed)
{
    controller.setSilent(2, true);
    const RunResult write = plcpanel(line("write 9:100@1=7 9:100@2=8 9:100@3=9 --timeout 200 --retries 0"));
    EXPECT_EQ(write.out, "9:100@1=7  confirmed\n9:100@3=9  confirmed\n");
    EXPECT_EQ(write.errors, "plcpanel: 9:100@2=8: not confirmed: no reply within 200 ms (return code 41)\n");
    EXPECT_EQ(write.status, 1);
    EXPECT_EQ(get(1), 7);
    EXPECT_EQ(get(2), 222);
    EXPECT_EQ(get(3), 9);
}

TEST_F(WithStations, WatchOnceShowsStationsAboveTheTable)
{
    controller.setSilent(2, true);
    const RunResult watch = plcpanel(line("watch 9:100@1 9:100@2 9:100@3 --once --timeout 200 --retries 0"));
    EXPECT_THAT(watch.out,
                testing::ContainsRegex("127.0.0.1:[0-9]+, 3 stations: connected for .*\n"
                                       "station 1: answering\n"
                                       "station 2: not answering.*, requests given up: [0-9]+ .no reply "
                                       "within 200 ms.\n"
                                       "station 3: answering\n"
                                       "\n"
                                       "VARIABLE  VALUE  AGE      STATE\n"
                                       "9:100@1   111    .* fresh\n"
                                       "9:100@2   -      -        failed: no reply"));
    EXPECT_EQ(watch.status, 1);
}

TEST_F(WithStations, WatchReadsTheStationsOfAList)
{
    QTemporaryFile list;
    ASSERT_TRUE(list.open());
    list.write("name,area,address,station,count,type\nfirst,9,100,1,,uint16\nsecond,9,100,2,,uint16\n"
               "own,9,100,,,uint16\n");
    list.close();
    const RunResult watch =
        plcpanel(line("watch --once --json --station 3 --vars " + list.fileName().toStdString()));
    EXPECT_THAT(watch.out, testing::ContainsRegex("\"name\":\"first\".*\"station\":1.*.111."));
    EXPECT_THAT(watch.out, testing::ContainsRegex("\"name\":\"second\".*\"station\":2.*.222."));
    EXPECT_THAT(watch.out, testing::ContainsRegex("\"name\":\"own\".*\"station\":3.*.333."));
    EXPECT_EQ(watch.status, 0) << watch.errors;
}

TEST_F(WithStations, WatchShowsADeadStationAndThatItIsBack)
{
    Plcpanel watch(line("watch 9:100@1 9:100@2 --interval 20 --timeout 200 --retries 0"));
    EXPECT_TRUE(watch.eventually([](const std::string& out) { return contains(out, "222    "); }));
    controller.setSilent(2, true);
    EXPECT_TRUE(watch.eventually([](const std::string& out) {
        return contains(out, "station 2: not answering, next try in ") && contains(out, "(222)");
    }));
    set(1, 7777);
    EXPECT_TRUE(watch.eventually([](const std::string& out) { return contains(out, "7777   "); }));
    set(2, 8888);
    controller.setSilent(2, false);
    EXPECT_TRUE(watch.eventually([](const std::string& out) { return contains(out, "8888   "); }));
    EXPECT_EQ(watch.endBy(SIGINT).status, 0);
}

TEST_F(WithStations, WatchObeysLinesFromItsInput)
{
    Plcpanel watch(line("watch 9:100@1 9:100@2 --interval 20"));
    EXPECT_TRUE(watch.eventually([](const std::string& out) { return contains(out, "222    "); }));
    watch.type("o2\n");
    EXPECT_TRUE(watch.eventually([](const std::string& out) {
        return contains(out, "station 2: switched off") && contains(out, "station off");
    }));
    set(2, 5555);
    watch.type("+2\n");
    EXPECT_TRUE(watch.eventually([](const std::string& out) { return contains(out, "5555   "); }));
    watch.type("q\n");
    const RunResult end = watch.end();
    EXPECT_EQ(end.status, 0);
    EXPECT_THAT(end.errors, IsEmpty());
}

TEST_F(WithStations, WatchComplainsOfAWrongLineAndGoesOn)
{
    Plcpanel watch(line("watch 9:100@1 9:100@2 --interval 20"));
    watch.type("o300\n");
    EXPECT_TRUE(watch.eventually([](const std::string& out) { return contains(out, "222    "); }));
    set(2, 5555);
    EXPECT_TRUE(watch.eventually([](const std::string& out) { return contains(out, "5555   "); }));
    const RunResult end = watch.endBy(SIGTERM);
    EXPECT_EQ(end.status, 0);
    EXPECT_THAT(end.errors, HasSubstr("plcpanel: \"o300\" is no command; o3 switches station 3 off"));
}

TEST_F(WithStations, WatchGoesOnWhenItsInputEnds)
{
    const QStringList arguments = line("watch 9:100@1 --interval 20") +
                                  QStringList{QStringLiteral("--driver"), QString::fromUtf8(builtDriver())};
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(QString::fromUtf8(builtPlcpanel()), arguments);
    ASSERT_TRUE(process.waitForReadyRead(60000));
    EXPECT_FALSE(process.waitForFinished(300));
    process.terminate();
    ASSERT_TRUE(process.waitForFinished(60000));
    EXPECT_EQ(process.exitCode(), 0);
}

TEST_F(WithStations, AreSwitchedByKeysInATerminal)
{
    test::ProgramInTerminal watch(QStringList{QString::fromUtf8(builtPlcpanel())} +
                                  line("watch 9:100@1 9:100@2 --interval 50") +
                                  QStringList{QStringLiteral("--driver"), QString::fromUtf8(builtDriver())});
    EXPECT_TRUE(watch.shows("station 2: answering"));
    EXPECT_TRUE(watch.shows("o3 i3 station 3 off, on"));
    watch.type("o4\x7f");
    EXPECT_TRUE(watch.shows("> o"));
    watch.type("2\r");
    EXPECT_TRUE(watch.shows("station 2: switched off"));
    EXPECT_TRUE(watch.shows("station 2 is switched off"));
    set(2, 5555);
    watch.type("i2\r");
    EXPECT_TRUE(watch.shows("5555"));
    watch.type("ox\r");
    EXPECT_TRUE(watch.shows("\"ox\" is no command"));
    watch.type("q");
    EXPECT_EQ(watch.end(), 0);
    EXPECT_TRUE(watch.isAsBefore());
}

TEST(WatchTableOfStations, TakesNoMoreThanAThirdOfALowWindow)
{
    WatchView view;
    view.controller = QStringLiteral("10.0.0.1:502");
    view.link.connected = true;
    for (int station = 1; station <= 8; ++station) {
        StationReport report;
        report.station = station;
        report.condition = station == 4 ? StationCondition::Pausing : StationCondition::Answering;
        report.nextTryMs = 1500;
        view.stations.push_back(report);
    }
    TableStyle style;
    style.lines = 12;
    const QStringList lines = watchTable(view, style);
    EXPECT_EQ(lines.value(0), QStringLiteral("10.0.0.1:502, 8 stations: connected for 0.0 s"));
    EXPECT_EQ(lines.value(1), QStringLiteral("station 4: not answering, next try in 2 s"));
    EXPECT_EQ(lines.value(2), QStringLiteral("7 of 8 stations answering or not tried yet"));
    style.lines = 24;
    EXPECT_EQ(watchTable(view, style).value(8), QStringLiteral("station 8: answering"));
}

TEST(WatchTableOfStations, IsNewsWhenAStationLooksOtherwise)
{
    WatchView before;
    before.stations.resize(2);
    WatchView after = before;
    EXPECT_TRUE(sameNews(before, after));
    after.stations[1].condition = StationCondition::SwitchedOff;
    EXPECT_FALSE(sameNews(before, after));
}

} // namespace
