// SPDX-License-Identifier: MIT
// What a person may type, and what is said about the rest.

#include "panel/commands/command_line.h"

#include "support/application.h"

#include <gmock/gmock.h>

#include <QTemporaryFile>

namespace
{

using namespace plc;
using testing::ElementsAre;
using testing::HasSubstr;

CommandLine parsed(const char* words)
{
    test::needApplication();
    QStringList arguments = QString::fromLatin1(words).split(QLatin1Char(' '));
    arguments.removeAll(QString());
    return parseCommandLine(QStringList{QStringLiteral("plcpanel")} + arguments);
}

/// \return the options of a line that is accepted
Options options(const char* words)
{
    const CommandLine line = parsed(words);
    EXPECT_EQ(line.wish, CommandLine::Run) << words << ": " << line.text.toStdString();
    return line.options;
}

std::string refusal(const char* words)
{
    const CommandLine line = parsed(words);
    EXPECT_EQ(line.wish, CommandLine::Refuse) << words;
    return line.text.toStdString();
}

TEST(CommandLine, RemoteFramesAreForAllThatNamesAController)
{
    EXPECT_TRUE(options("read 9:1 --controller a --remote").settings.remoteMode);
    EXPECT_TRUE(options("write 9:1=1 --controller a --remote").settings.remoteMode);
    EXPECT_TRUE(options("watch 9:1 --controller a --remote").settings.remoteMode);
    EXPECT_FALSE(options("read 9:1 --controller a").settings.remoteMode);
    EXPECT_THAT(refusal("demo --remote"), HasSubstr("--remote is no option of demo"));
}

TEST(CommandLine, ReadTakesVariablesAndTheController)
{
    const Options read = options("read 9:100x10 0:17 --controller plc.example:1502 --station 7");
    EXPECT_EQ(read.command, Command::Read);
    ASSERT_EQ(read.variables.size(), 2U);
    EXPECT_EQ(read.variables[0].element, 100);
    EXPECT_EQ(read.variables[0].count, 10);
    EXPECT_EQ(read.variables[1].element, 15);
    EXPECT_EQ(read.settings.host, QStringLiteral("plc.example"));
    EXPECT_EQ(read.settings.port, 1502);
    EXPECT_EQ(read.settings.station, 7);
    EXPECT_EQ(read.format, ValueFormat::Decimal);
}

TEST(CommandLine, OptionsMayStandBeforeTheCommand)
{
    EXPECT_EQ(options("--controller a --hex read 9:1").format, ValueFormat::Hex);
}

TEST(CommandLine, ThePortIs502WhenNoneIsGiven)
{
    EXPECT_EQ(options("read 9:1 --controller 192.168.0.10").settings.port, 502);
}

TEST(CommandLine, AnAddressWithColonsStandsInBracketsBeforeAPort)
{
    EXPECT_EQ(options("read 9:1 --controller ::1").settings.host, QStringLiteral("::1"));
    EXPECT_EQ(options("read 9:1 --controller ::1").settings.port, 502);
    EXPECT_EQ(options("read 9:1 --controller [::1]:1502").settings.host, QStringLiteral("::1"));
    EXPECT_EQ(options("read 9:1 --controller [::1]:1502").settings.port, 1502);
}

TEST(CommandLine, WriteTakesAsManyElementsAsValues)
{
    const Options write = options("write 9:100=1,0x10,-1 8:10.3=1 --controller a");
    ASSERT_EQ(write.writes.size(), 2U);
    EXPECT_EQ(write.writes[0].variable.count, 3);
    EXPECT_THAT(write.writes[0].values, ElementsAre(1, 16, 65535));
    EXPECT_EQ(write.writes[0].text, QStringLiteral("9:100=1,0x10,-1"));
    EXPECT_EQ(write.writes[1].variable.element, 10 * 16 + 3);
}

TEST(CommandLine, WriteTakesACountThatIsThatOfTheValues)
{
    EXPECT_EQ(options("write 9:100x2=1,2 --controller a").writes[0].variable.count, 2);
}

TEST(CommandLine, ValuesMayBeNegativeWithinTheirSize)
{
    EXPECT_THAT(options("write 9:1=-32768 --controller a").writes[0].values, ElementsAre(0x8000));
    EXPECT_THAT(options("write 14:200=-2147483648 --controller a").writes[0].values, ElementsAre(0x80000000));
    EXPECT_THAT(options("write 14:200=4294967295 --controller a").writes[0].values, ElementsAre(0xFFFFFFFF));
}

TEST(CommandLine, WatchTakesItsOwnOptions)
{
    const Options watch = options("watch 9:1 --controller a --once --json --interval 50 --trace");
    EXPECT_TRUE(watch.once);
    EXPECT_TRUE(watch.trace);
    EXPECT_EQ(watch.intervalMs, 50);
    EXPECT_EQ(watch.format, ValueFormat::Json);
}

TEST(CommandLine, TheLinkCanBeTuned)
{
    const Settings settings =
        options("demo --timeout 1000 --retries 0 --max-block 125 --driver x.so").settings;
    EXPECT_EQ(settings.timeoutMs, 1000);
    EXPECT_EQ(settings.retryLimit, 0);
    EXPECT_EQ(settings.maxBlockCount, 125);
    EXPECT_EQ(settings.driverPath, QStringLiteral("x.so"));
}

TEST(CommandLine, DefaultsAreThoseOfTheSettings)
{
    const Options read = options("read 9:1 --controller a");
    EXPECT_EQ(read.settings.timeoutMs, 300);
    EXPECT_EQ(read.settings.retryLimit, 3);
    EXPECT_EQ(read.settings.maxBlockCount, 125);
    EXPECT_EQ(read.settings.station, 1);
    EXPECT_TRUE(read.settings.driverPath.isEmpty());
    EXPECT_FALSE(read.trace);
}

TEST(CommandLine, WatchChoosesBlocksThatModbusAllowsForItsVariables)
{
    EXPECT_EQ(options("watch 9:1 0:1 --controller a").settings.maxBlockCount, 125);
    EXPECT_EQ(options("watch 9:1 14:200 --controller a").settings.maxBlockCount, 63);
    EXPECT_EQ(options("watch 9:1 14:200 --max-block 20 --controller a").settings.maxBlockCount, 20);
}

TEST(CommandLine, WatchRefusesBlocksThatBreakALimitOfModbus)
{
    EXPECT_THAT(
        refusal("watch 14:200 --max-block 64 --controller a"),
        HasSubstr("--max-block 64: blocks of 64 words would read more than the 125 registers that Modbus "
                  "allows at once, because area 14 has two registers an element; at most 63 fit"));
}

/// A list of variables in a file.
class ListFile
{
public:
    explicit ListFile(const QByteArray& lines)
    {
        EXPECT_TRUE(m_file.open());
        m_file.write("name,area,address,station,count,type\n" + lines);
        m_file.close();
    }

    QByteArray path() const { return m_file.fileName().toLocal8Bit(); }

    /// \return options of watch with this list and \a words
    Options options(const char* words = "") const { return ::options(line(words)); }
    std::string refusal(const char* words = "") const { return ::refusal(line(words)); }

private:
    QByteArray line(const char* words) const { return "watch --controller a --vars " + path() + ' ' + words; }

    QTemporaryFile m_file;
};

TEST(CommandLine, WatchTakesAList)
{
    const Options watch = ListFile("speed,9,100,,,int16\nlamp,0,17,,2,bit\n").options();
    ASSERT_EQ(watch.listed.size(), 2U);
    EXPECT_EQ(watch.listed[0].name, QStringLiteral("speed"));
    EXPECT_EQ(watch.listed[1].elements.element, 15);
    EXPECT_TRUE(watch.variables.empty());
    EXPECT_FALSE(watch.statistics);
}

TEST(CommandLine, WatchTakesAListTogetherWithVariables)
{
    const Options watch = ListFile("speed,9,100,,,int16\n").options("9:1 --once --stats");
    EXPECT_EQ(watch.listed.size(), 1U);
    EXPECT_EQ(watch.variables.size(), 1U);
    EXPECT_TRUE(watch.once);
    EXPECT_TRUE(watch.statistics);
}

TEST(CommandLine, WatchChoosesBlocksThatModbusAllowsForItsList)
{
    const ListFile words("a,9,100,,,int16\n");
    const ListFile doubleWords("a,9,100,,,int16\nb,14,200,,,int32\n");
    EXPECT_EQ(words.options().settings.maxBlockCount, 125);
    EXPECT_EQ(doubleWords.options().settings.maxBlockCount, 63);
    EXPECT_EQ(doubleWords.options("--max-block 20").settings.maxBlockCount, 20);
    EXPECT_THAT(doubleWords.refusal("--max-block 64"), HasSubstr("--max-block 64: blocks of 64 words"));
    EXPECT_EQ(words.options("14:200").settings.maxBlockCount, 63);
}

TEST(CommandLine, AllWrongLinesOfAListAreToldAtOnce)
{
    const ListFile list("a,9,0,,,int17\nb,9,1,,,int16\nc,9,0,3,,int16\nd,9\n");
    const std::string path = list.path().toStdString();
    EXPECT_EQ(
        list.refusal(),
        "--vars " + path + ": nothing is done until this is put right:\n" + path +
            ": line 2: \"int17\" is no type of area 9; it holds int16, uint16, int32, uint32, float32, "
            "hex, text, int64, uint64, float64, bcd16, bcd32\n    a,9,0,,,int17\n" +
            path +
            ": line 4: station 3 is not served; only station 1 is, unless several stations are switched "
            "on in the settings (--multi-station)\n    c,9,0,3,,int16\n" +
            path +
            ": line 5: it has 2 fields; 6 are expected: name,area,address,station,count,type\n    d,9\n"
            "plcpanel watch --help explains commands, variables and options.");
}

TEST(CommandLine, AListMayNameTheStationOfTheOption)
{
    EXPECT_EQ(ListFile("a,9,0,3,,int16\n").options("--station 3").listed[0].elements.station, 3);
}

TEST(CommandLine, AListWithoutVariablesIsRefused)
{
    EXPECT_THAT(ListFile("# nothing\n").refusal(), HasSubstr("the list holds no variable"));
}

TEST(CommandLine, AListThatCannotBeReadIsRefused)
{
    EXPECT_THAT(refusal("watch --controller a --vars /no/such/file.csv"),
                HasSubstr("\n/no/such/file.csv: cannot read it: "));
}

TEST(CommandLine, AListHasTypesInsteadOfHexadecimal)
{
    EXPECT_THAT(ListFile("a,9,0,,,hex\n").refusal("--hex"), HasSubstr("--hex and --vars exclude each other"));
}

struct Refused {
    const char* words;
    const char* said;
};

class RefusedCommandLine : public testing::TestWithParam<Refused>
{
};

TEST_P(RefusedCommandLine, IsToldWhatWasWrong)
{
    EXPECT_THAT(refusal(GetParam().words), HasSubstr(GetParam().said));
}

INSTANTIATE_TEST_SUITE_P(
    Lines, RefusedCommandLine,
    testing::Values(
        Refused{"", "no command is given; choose read, write, watch, check, "},
        Refused{"frob", "\"frob\" is no command"}, Refused{"read 9:1", "--controller is missing"},
        Refused{"read --controller a", "no variable is given; AREA:ADDRESS[xCOUNT] is expected"},
        Refused{"write --controller a", "AREA:ADDRESS=VALUE[,VALUE...] is expected"},
        Refused{"read 9:1 --controller a:0", "a port from 1 to 65535"},
        Refused{"read 9:1 --controller a:65536", "a port from 1 to 65535"},
        Refused{"read 9:1 --controller a:b", "a port from 1 to 65535"},
        Refused{"read 9:1 --controller :502", "give a name or address"},
        Refused{"read 9:1 --controller a --station 256", "--station 256: give a number from 0 to 255"},
        Refused{"read 9:1 --controller a --timeout 0", "--timeout 0: give a number from 1 to 60000"},
        Refused{"read 9:1 --controller a --retries x", "--retries x: give a number from 0 to 1000"},
        Refused{"read 9:1 --controller a --max-block 126", "--max-block 126: give a number from 2 to 125"},
        Refused{"read 9:1 --controller a --once", "--once is no option of read; it belongs to watch"},
        Refused{"write 9:1=1 --controller a --hex",
                "--hex is no option of write; it belongs to read, watch and replay"},
        Refused{"read 9:1 --controller a --frob", "Unknown option 'frob'"},
        Refused{"read 9:1 --controller a --hex --json", "--hex and --json exclude each other"},
        Refused{"read 15:1 --controller a", "\"15\" is no area; areas are 0 to 14"},
        Refused{"read 0:8 --controller a", "octal digits"},
        Refused{"read 14:199 --controller a", "a decimal number from 200 on"},
        Refused{"read 8:10 --controller a", "word.bit, e.g. 10.3"},
        Refused{"read 9:1=2 --controller a", "plcpanel write does that"},
        Refused{"read 9:1 --controller a --station 0", "station 0 is a broadcast"},
        Refused{"write 9:1 --controller a", "\"9:1\" names no value"},
        Refused{"write 9:1=65536 --controller a", "-32768 to 65535, or 0x0 to 0xffff is expected"},
        Refused{"write 9:1=-32769 --controller a", "-32768 to 65535"},
        Refused{"write 14:200=4294967296 --controller a", "-2147483648 to 4294967295"},
        Refused{"write 1:1=2 --controller a", "0 or 1 is expected"},
        Refused{"write 9:1=1, --controller a", "\"\" is no value of area 9"},
        Refused{"write 9:1x3=4 --controller a", "1 value given for 3 elements"},
        Refused{"write 9:65534=1,2 --controller a", "do not lie in area 9"},
        Refused{"write 0:1=1 --controller a", "area 0 can only be read"},
        Refused{"scan", "--controller is missing"},
        Refused{"scan --stations 0 --controller a", "--stations: \"0\" names no stations; 1 to 255"},
        Refused{"scan --stations 9-3 --controller a", "\"9-3\" names no stations"},
        Refused{"scan --stations 1,x --controller a", "for example 1-20,30"},
        Refused{"scan --stations 1-256 --controller a", "1 to 255 are expected"},
        Refused{"scan --stations 1 --station 2 --controller a",
                "--station and --stations exclude each other"},
        Refused{"scan 9:1@3 --stations 1 --controller a", "9:1@3: it names a station"},
        Refused{"scan 15 --controller a", "\"15\" is no area"},
        Refused{"scan 9:9-3 --controller a", "9 lies behind 3"},
        Refused{"scan 0:0-8 --controller a", "octal digits"},
        Refused{"scan 11:0-60000 --controller a", "beyond Modbus address 65535"},
        Refused{"scan 9:1 --station 0 --controller a", "station 0 is a broadcast"},
        Refused{"scan --tries 0 --controller a", "--tries 0: give a number from 1"},
        Refused{"scan --vars x.csv --controller a", "--vars is no option of scan"},
        Refused{"watch --controller a", "or a list of them: --vars FILE"},
        Refused{"demo --vars x.csv", "--vars is no option of demo"},
        Refused{"read 9:1 --stats --controller a", "--stats is no option of read"},
        Refused{"demo 9:1", "\"9:1\" is one argument too many"},
        Refused{"demo --controller a", "--controller is no option of demo"}));

TEST(CommandLine, ARefusalSaysWhereTheHelpIs)
{
    EXPECT_THAT(refusal("frob"), HasSubstr("\nplcpanel --help explains"));
    EXPECT_THAT(refusal("read 9:1"), HasSubstr("\nplcpanel read --help explains"));
}

TEST(CommandLine, TheHelpListsCommandsAreasOptionsExamplesAndExitStatus)
{
    const CommandLine line = parsed("--help");
    EXPECT_EQ(line.wish, CommandLine::ShowText);
    const std::string text = line.text.toStdString();
    for (const char* part :
         {"Usage: plcpanel COMMAND", "\n  read     print values\n",
          "\n  write    write values and wait for confirmation\n", "\n  0    bits, read only ",
          "\n  8    bits in the words of area 9 word.bit", "\n  14   double words (32 bits)",
          "decimal  7:8000  7:65535 ", "--controller <HOST[:PORT]>", "\nExamples:\n", "\nExit status:\n"})
        EXPECT_THAT(text, HasSubstr(part));
}

TEST(CommandLine, TheHelpTellsHowStationsAreNamedWithTheOptionThatTheCommandHas)
{
    EXPECT_THAT(parsed("read --help").text.toStdString(), HasSubstr("\nWith --multi-station an @ and"));
    for (const char* command : {"scan --help", "where --help"}) {
        const std::string help = parsed(command).text.toStdString();
        EXPECT_THAT(help, HasSubstr("\nAn @ and the station may follow"));
        EXPECT_THAT(help, testing::Not(HasSubstr("--multi-station"))) << command;
    }
}

TEST(CommandLine, TheHelpOfACommandListsItsOwnOptionsOnly)
{
    const std::string read = parsed("read --help").text.toStdString();
    EXPECT_THAT(read, HasSubstr("Usage: plcpanel read AREA:ADDRESS[xCOUNT]|NAME... [OPTIONS]"));
    EXPECT_THAT(read, HasSubstr("--json"));
    EXPECT_THAT(read, testing::Not(HasSubstr("--once")));
    EXPECT_THAT(parsed("watch -h").text.toStdString(), HasSubstr("--once"));
    EXPECT_THAT(parsed("demo --help").text.toStdString(), testing::Not(HasSubstr("--controller")));
}

TEST(CommandLine, TheHelpNamesTheDefaults)
{
    const std::string help = parsed("--help").text.simplified().toStdString();
    EXPECT_THAT(help, HasSubstr("Wait so many milliseconds for a reply. Default 300."));
    EXPECT_THAT(help, HasSubstr("before giving it up. Default 3."));
}

TEST(CommandLine, TheVersionIsShown)
{
    const CommandLine line = parsed("--version");
    EXPECT_EQ(line.wish, CommandLine::ShowText);
    EXPECT_THAT(line.text.toStdString(), testing::MatchesRegex("plcpanel [0-9.]+\n"));
}

} // namespace
