// SPDX-License-Identifier: MIT
// plcpanel as a process against a simulated controller: what it prints, and how it ends.

#include "panel/plcpanel_run.h"
#include "panel/program_in_terminal.h"
#include "simulator/simulated_controller.h"
#include "support/built_files.h"

#include <gmock/gmock.h>

#include <QJsonDocument>
#include <QJsonObject>

#include <csignal>
#include <unistd.h>

namespace
{

using test::Plcpanel;
using test::plcpanel;
using test::RunResult;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

QStringList words(const char* text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '));
}

/// A controller whose addresses 500 to 599 do not exist.
class PlcpanelWithController : public testing::Test
{
protected:
    PlcpanelWithController() : controller(settings()) { controller.start(); }

    static simulator::Settings settings()
    {
        simulator::Settings settings;
        settings.refused = {{500, 599}};
        return settings;
    }

    /// \return \a text with the option that names the controller
    QStringList line(const char* text) const
    {
        return words(text) + QStringList{QStringLiteral("--controller"),
                                         QStringLiteral("127.0.0.1:%1").arg(controller.port())};
    }

    RunResult run(const char* text) const { return plcpanel(line(text)); }

    void set(int address, int value)
    {
        controller.memory().setHoldingRegister(1, address, static_cast<std::uint16_t>(value));
    }
    int get(int address) { return controller.memory().holdingRegister(1, address); }

    simulator::SimulatedController controller;
};

QJsonObject json(const std::string& line)
{
    return QJsonDocument::fromJson(QByteArray::fromStdString(line)).object();
}

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    for (const QString& line : QString::fromStdString(text).split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        lines.push_back(line.toStdString());
    return lines;
}

TEST_F(PlcpanelWithController, ReadPrintsALineForEachVariable)
{
    set(100, 1234);
    set(101, 65535);
    set(10, 0x0008);
    set(0xF700, 0x5678);
    set(0xF701, 0x1234);
    controller.memory().setCoil(1, 0xF800 + 15, true);
    const RunResult read = run("read 9:100x2 8:10.3 8:10.2x3 14:200 0:17");
    EXPECT_EQ(read.out, "9:100x2   1234 65535\n"
                        "8:10.3    1\n"
                        "8:10.2x3  0 1 0\n"
                        "14:200    305419896\n"
                        "0:17      1\n");
    EXPECT_THAT(read.errors, IsEmpty());
    EXPECT_EQ(read.status, 0);
}

TEST_F(PlcpanelWithController, ReadPrintsHexadecimal)
{
    set(100, 1234);
    EXPECT_EQ(run("read 9:100 14:200 --hex").out, "9:100   0x04D2\n14:200  0x00000000\n");
}

TEST_F(PlcpanelWithController, ReadFetchesMoreThanOneRequestHolds)
{
    set(0, 11);
    set(299, 22);
    const RunResult read = run("read 9:00x300 --max-block 100");
    EXPECT_THAT(read.out, testing::StartsWith("9:00x300  11 0 "));
    EXPECT_THAT(read.out, testing::EndsWith(" 0 22\n"));
    EXPECT_EQ(controller.requests(), 3U);
}

TEST_F(PlcpanelWithController, ReadPrintsJsonForValuesAndFailures)
{
    set(100, 7);
    const RunResult read = run("read 9:100x2 9:500 --json --station 3 --retries 0");
    const auto lines = linesOf(read.out);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], R"({"address":"100","area":9,"count":2,"station":3,"values":[0,0]})");
    EXPECT_EQ(json(lines[1])[QStringLiteral("address")].toString(), QStringLiteral("500"));
    EXPECT_THAT(json(lines[1])[QStringLiteral("error")].toString().toStdString(),
                HasSubstr("illegal data address"));
    EXPECT_FALSE(json(lines[1]).contains(QStringLiteral("values")));
    EXPECT_EQ(read.status, 1);
}

TEST_F(PlcpanelWithController, ReadTellsARefusedAddressAndReadsTheOthers)
{
    set(100, 5);
    const RunResult read = run("read 9:500 9:100");
    EXPECT_EQ(read.out, "9:100  5\n");
    EXPECT_EQ(read.errors,
              "plcpanel: 9:500: not read: the controller refused it: exception 2, illegal data address "
              "(return code 71)\n");
    EXPECT_EQ(read.status, 1);
}

TEST_F(PlcpanelWithController, ReadTellsThatTheControllerIsDeadAndTriesNoFurther)
{
    controller.stop();
    const RunResult read = run("read 9:100 9:101 --timeout 50 --retries 1");
    EXPECT_THAT(read.out, IsEmpty());
    EXPECT_THAT(read.errors, HasSubstr("9:100: not read: no connection to 127.0.0.1:"));
    EXPECT_THAT(read.errors, HasSubstr("9:101: not read: not tried"));
    EXPECT_THAT(read.errors, HasSubstr("cannot be reached; check that the controller is on"));
    EXPECT_EQ(read.status, 1);
}

TEST_F(PlcpanelWithController, TraceShowsFramesOnStandardErrorOnly)
{
    set(100, 5);
    const RunResult read = run("read 9:100 --trace");
    EXPECT_EQ(read.out, "9:100  5\n");
    EXPECT_THAT(read.errors,
                HasSubstr("-> 00 01 00 00 00 06 01 03 00 64 00 01  unit 1: read 1 register from 100\n"));
    EXPECT_THAT(read.errors, HasSubstr("<- 00 01 00 00 00 05 01 03 02 00 05  unit 1: registers 5 ("));
}

TEST_F(PlcpanelWithController, WriteIsConfirmedAndReachesTheController)
{
    set(10, 0x8000);
    const RunResult write = run("write 9:100=1,0xFFFF,-2 8:10.3=1 14:200=-1 1:17=1");
    EXPECT_EQ(write.out, "9:100=1,0xFFFF,-2  confirmed\n"
                         "8:10.3=1           confirmed\n"
                         "14:200=-1          confirmed\n"
                         "1:17=1             confirmed\n");
    EXPECT_THAT(write.errors, IsEmpty());
    EXPECT_EQ(write.status, 0);
    EXPECT_EQ(get(100), 1);
    EXPECT_EQ(get(101), 0xFFFF);
    EXPECT_EQ(get(102), 0xFFFE);
    EXPECT_EQ(get(10), 0x8008);
    EXPECT_EQ(get(0xF700), 0xFFFF);
    EXPECT_EQ(get(0xF701), 0xFFFF);
    EXPECT_TRUE(controller.memory().coil(1, 0xFC00 + 15));
}

TEST_F(PlcpanelWithController, WritesTakeEffectInTheOrderTyped)
{
    const RunResult write = run("write 9:100=1 9:100=2 9:100=3");
    EXPECT_EQ(write.out, "9:100=1  confirmed\n9:100=2  confirmed\n9:100=3  confirmed\n");
    EXPECT_EQ(get(100), 3);
}

TEST_F(PlcpanelWithController, WriteTellsARefusedAddressAndWritesTheOthers)
{
    const RunResult write = run("write 9:100=1 9:500=2 9:101=3");
    EXPECT_EQ(write.out, "9:100=1  confirmed\n9:101=3  confirmed\n");
    EXPECT_EQ(write.errors,
              "plcpanel: 9:500=2: not confirmed: the controller refused it: exception 2, illegal data "
              "address (return code 71)\n");
    EXPECT_EQ(write.status, 1);
    EXPECT_EQ(get(101), 3);
}

TEST_F(PlcpanelWithController, WriteTellsThatTheControllerIsSilent)
{
    controller.setSilent(1, true);
    const RunResult write = run("write 9:100=1 --timeout 50 --retries 1");
    EXPECT_EQ(write.errors, "plcpanel: 9:100=1: not confirmed: no reply within 50 ms (return code 41)\n");
    EXPECT_EQ(write.status, 1);
    EXPECT_EQ(controller.requests(), 2U);
}

TEST_F(PlcpanelWithController, WriteTellsHowMuchOfALongWriteWasConfirmed)
{
    const RunResult write = run("write 1:1=1 9:498=1,2,3,4 --max-block 2");
    EXPECT_THAT(write.errors, HasSubstr("1 of its 2 requests were confirmed"));
    EXPECT_EQ(get(499), 2);
}

TEST_F(PlcpanelWithController, ABroadcastIsSentButNotConfirmed)
{
    run("read 9:100 --station 4"); // so that the controller has that station
    const RunResult write = run("write 9:100=9 --station 0");
    EXPECT_EQ(write.out, "9:100=9  sent to every station (no controller confirms a broadcast)\n");
    EXPECT_EQ(write.status, 0);
}

TEST_F(PlcpanelWithController, AWrongWriteAmongRightOnesSendsNothing)
{
    const RunResult write = run("write 9:100=1 0:1=1");
    EXPECT_THAT(write.errors, HasSubstr("0:1=1: area 0 can only be read"));
    EXPECT_EQ(write.status, 2);
    EXPECT_EQ(controller.requests(), 0U);
}

TEST_F(PlcpanelWithController, WatchOncePrintsTheTable)
{
    set(100, 42);
    const RunResult watch = run("watch 9:100x2 0:17 --once");
    EXPECT_THAT(watch.out, testing::MatchesRegex("127.0.0.1:[0-9]+, station 1: connected for .*\n"
                                                 "\n"
                                                 "VARIABLE  VALUE  AGE      STATE\n"
                                                 "9:100x2   42 0   .* +fresh\n"
                                                 "0:17      0      .* +fresh\n"));
    EXPECT_EQ(watch.status, 0);
}

TEST_F(PlcpanelWithController, WatchOnceFailsWhenOneVariableFails)
{
    const RunResult watch = run("watch 9:100 9:500 --once");
    EXPECT_THAT(watch.out, testing::ContainsRegex("9:100     0      .* +fresh\n"));
    EXPECT_THAT(watch.out, HasSubstr("failed: the controller refused it: exception 2, illegal data address"));
    EXPECT_EQ(watch.status, 1);
}

TEST_F(PlcpanelWithController, WatchOnceTellsThatTheControllerIsDead)
{
    controller.stop();
    const RunResult watch = run("watch 9:100 --once --timeout 50 --retries 1");
    EXPECT_THAT(watch.out, HasSubstr("NOT CONNECTED"));
    EXPECT_THAT(watch.errors, HasSubstr("cannot be reached"));
    EXPECT_EQ(watch.status, 1);
}

TEST_F(PlcpanelWithController, WatchOncePrintsJson)
{
    set(100, 42);
    const RunResult watch = run("watch 9:100 9:500 --once --json");
    const auto lines = linesOf(watch.out);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_THAT(lines[0], HasSubstr(R"("values":[42])"));
    EXPECT_EQ(json(lines[0])[QStringLiteral("state")].toString(), QStringLiteral("fresh"));
    EXPECT_EQ(json(lines[1])[QStringLiteral("state")].toString(), QStringLiteral("failed"));
    EXPECT_FALSE(json(lines[1]).contains(QStringLiteral("values")));
}

TEST_F(PlcpanelWithController, WatchPrintsAnotherTableWhenAValueChangesUntilItIsStopped)
{
    set(100, 1111);
    Plcpanel watch(line("watch 9:100 --interval 20"));
    EXPECT_TRUE(
        watch.eventually([](const std::string& out) { return out.find(" 1111 ") != std::string::npos; }));
    set(100, 2222);
    EXPECT_TRUE(
        watch.eventually([](const std::string& out) { return out.find(" 2222 ") != std::string::npos; }));
    const RunResult end = watch.endBy(SIGINT);
    EXPECT_EQ(end.status, 0);
    EXPECT_THAT(end.out, Not(HasSubstr("\x1b")));
    EXPECT_THAT(end.errors, IsEmpty());
}

TEST_F(PlcpanelWithController, AWatchedValueThatIsNotRefreshedStandsInParentheses)
{
    set(100, 1111);
    Plcpanel watch(line("watch 9:100 --interval 20 --timeout 50 --retries 0"));
    EXPECT_TRUE(
        watch.eventually([](const std::string& out) { return out.find(" 1111 ") != std::string::npos; }));
    controller.setSilent(1, true);
    EXPECT_TRUE(watch.eventually([](const std::string& out) {
        return out.find("(1111)") != std::string::npos && out.find("failed: no reply") != std::string::npos;
    }));
}

TEST_F(PlcpanelWithController, WatchPrintsALineOfJsonForEachChange)
{
    Plcpanel watch(line("watch 9:100 9:200 --json --interval 20"));
    EXPECT_TRUE(watch.eventually([](const std::string& out) { return linesOf(out).size() >= 2; }));
    set(200, 3);
    EXPECT_TRUE(
        watch.eventually([](const std::string& out) { return out.find("[3]") != std::string::npos; }));
    const RunResult end = watch.endBy(SIGTERM);
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(json(linesOf(end.out).back())[QStringLiteral("address")].toString(), QStringLiteral("200"));
}

QStringList terminalLine(const QStringList& arguments)
{
    return QStringList{QString::fromUtf8(builtPlcpanel())} + arguments +
           QStringList{QStringLiteral("--driver"), QString::fromUtf8(builtDriver())};
}

TEST_F(PlcpanelWithController, ATerminalThatCannotPlaceTextGetsThePlainTable)
{
    set(100, 1234);
    for (const char* kind : {"dumb", "unknown", "", "no-such-terminal"}) {
        test::ProgramInTerminal watch(terminalLine(line("watch 9:100")), {60, 12, {{"TERM", kind}}});
        EXPECT_TRUE(watch.shows("9:100     1234")) << kind;
        watch.type("\x03");
        EXPECT_EQ(watch.end(), 0);
        EXPECT_THAT(watch.bytes(), Not(HasSubstr("\x1b[?"))) << kind;
        const bool mayHaveColours = kind == std::string("no-such-terminal");
        EXPECT_TRUE(mayHaveColours || watch.bytes().find('\x1b') == std::string::npos) << kind;
    }
}

TEST_F(PlcpanelWithController, AWaitOfMoreThanASecondSaysInATerminalHowFarItIs)
{
    controller.setSilent(1, true);
    test::ProgramInTerminal read(terminalLine(line("read 9:100 --timeout 1500 --retries 0")));
    EXPECT_EQ(read.end(), 1);
    EXPECT_THAT(
        read.bytes(),
        testing::StartsWith("\rreading 9:100: 0 requests so far\x1b[K\r\x1b[Kplcpanel: 9:100: not read"));
}

TEST(Plcpanel, DemoFindsEveryValueRight)
{
    const RunResult demo = plcpanel({QStringLiteral("demo")});
    EXPECT_EQ(demo.status, 0) << demo.out << demo.errors;
    EXPECT_THAT(demo.out, testing::ContainsRegex(
                              "Demo: [0-9]+ steps, [0-9]+ requests in .* things compared, all right\n$"));
    EXPECT_THAT(demo.out, Not(HasSubstr("WRONG")));
    EXPECT_THAT(demo.out, Not(HasSubstr("\x1b")));
    EXPECT_THAT(demo.errors, IsEmpty());
}

TEST(Plcpanel, DemoTouchesEveryArea)
{
    const RunResult demo = plcpanel({QStringLiteral("demo")});
    for (int area = 0; area <= 14; ++area) {
        EXPECT_THAT(demo.out, HasSubstr("read  " + std::to_string(area) + ":"));
        EXPECT_THAT(demo.out, HasSubstr("write " + std::to_string(area) + ":"));
    }
}

TEST(Plcpanel, AWrongCommandLineIsExplainedOnStandardError)
{
    const RunResult run = plcpanel(words("read 9:1"));
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.out, IsEmpty());
    EXPECT_THAT(run.errors, testing::StartsWith("plcpanel: --controller is missing"));
}

TEST(Plcpanel, HelpIsPrintedOnStandardOutput)
{
    const RunResult run = plcpanel({QStringLiteral("--help")});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.out, HasSubstr("Usage: plcpanel COMMAND"));
}

TEST(Plcpanel, ADriverThatCannotBeLoadedIsAWrongCommandLine)
{
    const RunResult run =
        plcpanel(words("read 9:1 --controller 127.0.0.1:1 --driver /nowhere/libplcdriver.so"));
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.errors, HasSubstr("/nowhere/libplcdriver.so cannot be loaded"));
}

} // namespace
