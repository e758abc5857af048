// SPDX-License-Identifier: MIT
#include "panel/commands/command_help.h"

#include "runtime/model/area_guide.h"
#include "runtime/model/value_type.h"
#include "runtime/model/variable_list.h"

#include <algorithm>
#include <iterator>

namespace plc
{

namespace
{

enum CommandBit {
    R = 1,
    W = 2,
    V = 4,
    C = 8,
    P = 16,
    D = 32,
    A = 64,
    S = 128,
    L = 256,
    H = 512
}; // read, write, watch (view), check, replay (play), demo, where (at), scan, log, history
const int allCommands = R | W | V | C | P | D | A | S | L | H;
const int allWithDriver = allCommands & ~A & ~H;
const int allWithLink = allWithDriver & ~P;

struct OptionRow {
    const char* name;
    const char* value; ///< null: a switch
    const char* help;  ///< VALUE-TYPES stands for the words of the types
    int commands;
    int Settings::*setting;      ///< what it sets, whose default the help names; null for others
    int Options::*own = nullptr; ///< the same where it is not the runtime's
};

// In the order of the help.
const OptionRow optionRows[] = {
    {"controller", "HOST[:PORT]",
     "The controller's name or address, and its TCP port when that is not 502. Needed.",
     R | W | V | C | L | S, nullptr},
    {"station", "N",
     "The station (Modbus unit) that the variables belong to, 0 to 255. Station 0 is a broadcast: it can be "
     "written, and no controller confirms it.",
     R | W | V | C | L | S | P, &Settings::station},
    {"stations", "LIST",
     "Ask these stations whether they are there, for example 1-20,30; 1-247 where neither this nor an area "
     "is given. "
     "Areas are asked for at those that answer.",
     S, nullptr},
    {"tries", "N", "Ask a station that does not answer so many times.", S, nullptr, &Options::tries},
    {"multi-station", nullptr,
     "Several stations share the link: a variable names its own, AREA:ADDRESS@STATION, and --station is that "
     "of the others. A station that does not answer is left alone for a while, so that the others need not "
     "wait for it.",
     R | W | V | C | L | P, nullptr},
    {"vars", "FILE",
     "A list of variables, which can then be named. It is a CSV file, whose first line names the columns and "
     "each "
     "other a variable; lines that begin with # are comments. Types: VALUE-TYPES. A NAME may be a pattern, "
     "but not in "
     "a write: * stands for any characters, ? for one. Where none is named all of the list are meant. What "
     "begins like AREA:ADDRESS is an address, and stands above the named ones.",
     R | W | V | C | A | L | P, nullptr},
    {"remote", nullptr,
     "Speak remote frames instead of Modbus TCP; the controller must do so too, as plcsim --remote does.",
     R | W | V | C | L | S | P, nullptr},
    {"port", "N", "The controller's TCP port in captured packets; a capture of plcpanel says it itself.", P,
     &Settings::port},
    {"hex", nullptr, "Print values in hexadecimal.", R | V | P, nullptr},
    {"json", nullptr, "Print a JSON object per line.", R | W | V | C | S | A | L | H | P, nullptr},
    {"to", "FILE",
     "The file that is written. FILE.csv has a line for each value, FILE.sqlite is a database that plcpanel "
     "history and other programs read, also meanwhile. A log that is there goes on.",
     L, nullptr},
    {"every", nullptr, "Log every refresh of a variable, not only changes.", L, nullptr},
    {"rotate-size", "SIZE",
     "Begin a new FILE.csv before this one is longer than SIZE, e.g. 500k, 10M or 1G. The old one is renamed "
     "after the time of its first line, as FILE-20261122-140322.csv.",
     L, nullptr},
    {"rotate-daily", nullptr, "Begin a new FILE.csv with the first line of each day, by local time.", L,
     nullptr},
    {"from", "TIME",
     "Leave out what was before: a time like 2026-11-22T14:03:22 (local, or with Z or +01:00), a date, "
     "today, "
     "yesterday, or how long ago: -90s, -15m, -1h, -7d.",
     H, nullptr},
    {"to", "TIME", "Leave out what was then or later.", H, nullptr},
    {"plot", nullptr,
     "Draw each variable over time, as wide as the terminal, 80 columns elsewhere. Nothing is drawn where "
     "there "
     "was no fresh value.",
     H, nullptr},
    {"csv", nullptr, "Print what log writes to FILE.csv.", H, nullptr},
    {"names", nullptr,
     "Print only the names that the list has, or those that are meant, a line for each; of a log those in "
     "it.",
     A | H, nullptr},
    {"verify", nullptr, "Read back what was written and confirmed, and compare it.", W, nullptr},
    {"dry-run", nullptr,
     "Show the frames that the driver builds for the writes, and send nothing; --controller is not needed.",
     W, nullptr},
    {"once", nullptr, "Refresh every variable once, print the table and end.", V, nullptr},
    {"stats", nullptr,
     "Show below the table what a refresh of all variables costs: requests, frames, what was read for no "
     "variable, retries and failures, how long replies took; of each station where there are several.",
     V, nullptr},
    {"interval", "MS",
     "Look at the values every so many milliseconds. How often the controller is asked is --poll's.", V,
     nullptr, &Options::intervalMs},
    {"poll", "MS",
     "Begin a refresh of all variables every so many milliseconds at most; 0: as fast as it goes. Writes go "
     "out "
     "between refreshes.",
     V | L, &Settings::pollMs},
    {"part", "K/N",
     "Refresh and show only each Nth of the block reads, from the Kth on. Several that have a part each "
     "share "
     "the list of one slow controller over several connections.",
     V, nullptr},
    {"gap", "MS", "Pause so many milliseconds before each further request, for slow controllers.",
     allWithLink, &Settings::gapMs},
    {"timeout", "MS", "Wait so many milliseconds for a reply.", allWithDriver, &Settings::timeoutMs},
    {"retries", "N", "Try a request again so many times before giving it up.", allWithDriver,
     &Settings::retryLimit},
    {"max-block", "N",
     "Words in one request at most, 2 to 125, and eight times as many bits; default is what Modbus allows "
     "for "
     "the variables: 125, and 63 where one is of area 14.",
     allWithDriver, nullptr},
    {"driver", "PATH",
     "The driver library; default is libplcdriver.so beside this program, one directory up, or where the "
     "system looks for libraries.",
     allWithDriver, nullptr},
    {"trace", nullptr, "Print every frame and reply in hex, with its meaning, on standard error.",
     allWithLink, nullptr},
    {"capture", "FILE",
     "Write everything that goes over the link to this file, with times. FILE.pcap is for programs that show "
     "network traffic (where the controller's port is not 502 they want to be told what it is: tshark -d "
     "tcp.port==1502,mbtcp), FILE.jsonl for people and scripts: a JSON object a line. A file that is there "
     "is "
     "replaced. plcpanel replay plays both.",
     allWithLink, nullptr},
};

bool takesList(int command)
{
    for (const OptionRow& row : optionRows) {
        if (QLatin1String(row.name) == QLatin1String("vars"))
            return (row.commands & command) != 0;
    }
    return false;
}

struct CommandRow {
    Command command;
    CommandBit bit;
    const char* name;
    const char* usage;
    const char* summary;
    const char* description;
    const char* examples;
};

const CommandRow commandRows[] = {
    {Command::Read, R, "read", "read AREA:ADDRESS[xCOUNT]|NAME...", "print values",
     "Reads each variable from the controller and prints its values, a line per variable. COUNT is the "
     "number\n"
     "of elements from ADDRESS on. A NAME is one of a list (--vars), and its value is printed in its unit.\n",
     "  plcpanel read 9:100 --controller 192.168.0.10\n"
     "  plcpanel read 9:100x10 0:17 8:10.3 14:200x2 --controller plc.example:1502 --hex\n"
     "  plcpanel read 9:100x3 --controller 127.0.0.1:1502 --json\n"
     "  plcpanel read 'drive *' temperature --vars examples/machine.csv --controller 127.0.0.1:1502\n"
     "  plcpanel read 9:100@1 9:100@2 --multi-station --controller 127.0.0.1:1502\n"},
    {Command::Write, W, "write", "write AREA:ADDRESS|NAME=VALUE[,VALUE...]...",
     "write values and wait for confirmation",
     "Writes each variable, one after the other, waits until the controller has confirmed it, and says for "
     "each\n"
     "what was confirmed or why not. Several values go to consecutive elements. A VALUE is decimal, "
     "negative\n"
     "decimal or 0x-hexadecimal: 0 or 1 for a bit, -32768 to 65535 for a word, -2147483648 to 4294967295 for "
     "a\n"
     "double word. The VALUE of a NAME is in the unit of the list: 21.5, true, \"LEMON TEA\"; what lies "
     "outside its\n"
     "limits is refused. If one write is refused, none is sent.\n",
     "  plcpanel write 9:100=1234 --controller 192.168.0.10\n"
     "  plcpanel write 9:100=1,2,0x3 8:10.3=1 14:200=-5 --controller 127.0.0.1:1502\n"
     "  plcpanel write 'drive speed=-15' --vars examples/machine.csv --verify --controller 127.0.0.1:1502\n"
     "  plcpanel write 'recipe=LEMON TEA' --vars examples/machine.csv --dry-run\n"},
    {Command::Watch, V, "watch", "watch [AREA:ADDRESS[xCOUNT]|NAME...]", "show values live until Ctrl-C",
     "Refreshes the variables until Ctrl-C. In a terminal it is a table that scrolls, finds (/), sorts (s), "
     "shows\n"
     "minimum and maximum (m) and writes the selected variable (w); ? shows all keys. Elsewhere, and where "
     "TERM\n"
     "is dumb or not known, it is printed again when a value, a state or the link changes. A value that is "
     "not\n"
     "as the controller answered just now stands in parentheses, and its state says why. Several stations "
     "have\n"
     "a line each above the table.\n"
     "\n"
     "While it runs, o3 and Enter switch station 3 off, i3 and Enter switch it on, and q ends. Where\n"
     "standard input is no terminal the same is read from it, a line for each.\n"
     "Lists to try are in share/doc/plcdriver-tools/examples below where this is installed.\n",
     "  plcpanel watch 9:100x4 0:17 14:200 --controller 192.168.0.10\n"
     "  plcpanel watch 9:100 --controller 127.0.0.1:1502 --once\n"
     "  plcpanel watch --vars machine.csv --stats --controller 127.0.0.1:1502\n"
     "  plcpanel watch 9:100x4 --controller 127.0.0.1:1502 --json >changes.txt\n"},
    {Command::Check, C, "check", "check [AREA:ADDRESS[xCOUNT]|NAME...]", "find what the controller refuses",
     "Before going live: reads each block that the driver makes of the variables once. Where the controller\n"
     "refuses one, it is halved until the variables at fault are known, or the addresses between variables "
     "that\n"
     "the controller does not have. Blocks that would break a limit of Modbus are told as well. A reply "
     "that\n"
     "does not come is blamed on no variable.\n",
     "  plcpanel check --vars machine.csv --controller 192.168.0.10\n"
     "  plcpanel check 9:100 9:180 --controller 127.0.0.1:1502 --json\n"},
    {Command::Scan, S, "scan", "scan [AREA|AREA:FROM-TO|AREA:ADDRESS[xCOUNT]]...",
     "find stations and elements",
     "Without an area: which stations answer, by reading one register of each (9:0), and who they\n"
     "say they are (functions 43 and 17). A station that refuses the read is there as well.\n"
     "With areas: which of their elements can be read, all of an AREA or those that are given; a\n"
     "block that is refused is halved until it is known which of its elements are. Bits in words\n"
     "(area 8) are asked for as words. Never writes. Ctrl-C ends it with what is known. It tells what\n"
     "it has asked: a station that gives no answer in time may be there all the same.\n",
     "  plcpanel scan --controller 192.168.0.10\n"
     "  plcpanel scan --stations 1-20 --timeout 1000 --controller 192.168.0.10\n"
     "  plcpanel scan 9:0-1999 2 --station 3 --controller 192.168.0.10\n"
     "  plcpanel scan 9:00x100 --stations 1-5 --json --controller 127.0.0.1:1502\n"},
    {Command::Where, A, "where", "where [AREA:ADDRESS[xCOUNT]|NAME...]", "tell where variables lie",
     "Tells where each variable lies in the controller, to compare with its documentation: the\n"
     "functions of Modbus that read and write it, its coils or registers, counted from 0, in decimal\n"
     "and hexadecimal and as many documents number them (4xxxx registers, 0xxxx coils, counted from\n"
     "1), and how the value is put together: type, order of words and bytes, bit, scale, unit.\n"
     "A write of 3, 6 reads the word of a bit first. Asks no controller. Where the table is too wide\n"
     "for the terminal, each variable has a paragraph.\n",
     "  plcpanel where 9:100x2 0:17 8:10.3 14:200\n"
     "  plcpanel where --vars examples/machine.csv\n"
     "  plcpanel where 'drive *' --vars examples/machine.csv --json\n"},
    {Command::Log, L, "log", "log [AREA:ADDRESS[xCOUNT]|NAME...] --to FILE",
     "write changes to a file until Ctrl-C",
     "Writes the values of the variables to FILE.csv or FILE.sqlite: time, name, value, unit and state, each "
     "time\n"
     "that they change. The time is that of the controller's reply. A value that is not read any more has a "
     "line\n"
     "that says so: failed, stale or station off, and not logged from the end on. Several values of one "
     "variable\n"
     "have names of their own, NAME[0], NAME[1] and so on.\n"
     "\n"
     "What is logged is on the disk within a second, also where the program is killed or the power fails. "
     "Reading\n"
     "the controller never waits for the disk: 200000 values may wait for it, what comes then is lost, "
     "counted, and\n"
     "marked in the log.\n",
     "  plcpanel log --vars machine.csv --to machine.sqlite --controller 192.168.0.10\n"
     "  plcpanel log 9:100x4 --to words.csv --rotate-daily --rotate-size 50M --controller 192.168.0.10\n"
     "  plcpanel log 'drive *' --vars machine.csv --every --poll 1000 --to drive.csv --controller "
     "192.168.0.10\n"},
    {Command::History, H, "history", "history FILE.sqlite [NAME...]", "print or draw what log has written",
     "Prints what was logged of the variables, by time, or the names in the file where none is given. A NAME "
     "may\n"
     "be a pattern, in which * stands for any characters and ? for one. A value holds until the next line of "
     "its\n"
     "variable. The file may be written meanwhile.\n",
     "  plcpanel history machine.sqlite\n"
     "  plcpanel history machine.sqlite 'drive *' --from -1h\n"
     "  plcpanel history machine.sqlite temperature --plot --from today\n"
     "  plcpanel history machine.sqlite temperature --csv --from 2026-11-22T14:00 --to 2026-11-22T15:00\n"},
    {Command::Replay, P, "replay", "replay FILE [AREA:ADDRESS[xCOUNT]|NAME...]",
     "show the values of a capture",
     "Plays a file that --capture wrote into the driver, without a controller, and shows the values that "
     "its\n"
     "variables have then; with --json a line for each change. Give the variables that were watched (--vars "
     "and\n"
     "--max-block too, as then), or none for those that the captured requests read. Packets that other\n"
     "programs captured will do, pcap and pcapng: Ethernet, raw IP, Linux cooked or loopback. From such a "
     "file\n"
     "the settings cannot be seen: --station, --multi-station, --timeout, --retries and --remote are to be\n"
     "those of the panel. FILE may be a pipe. It is read once and, where variables are named, none of it is\n"
     "kept; otherwise its frames are, in at most 256 MB of memory.\n",
     "  plcpanel replay report.jsonl\n"
     "  plcpanel replay report.jsonl --vars machine.csv --json\n"
     "  plcpanel replay traffic.pcapng 9:100x4 --port 1502\n"
     "  plcpanel replay <(zcat traffic.pcap.gz) 9:100x4\n"},
    {Command::Demo, D, "demo", "demo", "try everything on a simulated controller",
     "Starts a simulated controller on this machine, writes and reads every area that allows it, switches a\n"
     "station off and on, lets the controller fall silent and come back, and compares every value with the\n"
     "controller's memory. Needs no controller and no network.\n",
     "  plcpanel demo\n"},
};

const CommandRow& rowOf(Command command)
{
    return *std::find_if(std::begin(commandRows), std::end(commandRows),
                         [command](const CommandRow& row) { return row.command == command; });
}

/// \return the statuses of one command, but for those that all have
QString ownExitStatusText(std::optional<Command> command)
{
    const QString common =
        QStringLiteral("Exit status:\n"
                       "  0  everything asked for was done\n"
                       "  1  something failed at the controller or on the link to it\n"
                       "  2  nothing was tried: the command line is wrong, or the driver cannot be loaded\n");
    if (!command)
        return common + QStringLiteral("  3 to 5 are told by the help of the command that has them\n");
    if (*command == Command::Where)
        return QStringLiteral("Exit status:\n"
                              "  0  all is told\n"
                              "  2  nothing is told: the command line or the list is wrong\n");
    if (*command == Command::Scan)
        return QStringLiteral(
            "Exit status:\n"
            "  0  a station answered, and of each element asked for it is known whether it can be "
            "read\n"
            "  1  no station answered, or not everything was asked or answered\n"
            "  2  nothing was tried: the command line is wrong, or the driver cannot be loaded\n"
            "  4  the controller cannot be reached\n");
    if (*command == Command::Log)
        return QStringLiteral("Exit status:\n"
                              "  0  the controller has answered, and everything is in the file\n"
                              "  1  not one value was read\n"
                              "  2  nothing was tried: the command line, the list or the file is wrong, or "
                              "the driver cannot be "
                              "loaded\n");
    if (*command == Command::History)
        return QStringLiteral("Exit status:\n"
                              "  0  something is shown\n"
                              "  1  nothing was logged in this time\n"
                              "  2  nothing is shown: the command line or the file is wrong\n");
    if (*command == Command::Replay)
        return QStringLiteral(
            "Exit status:\n"
            "  0  every variable has a value that was answered last\n"
            "  1  some were not read, or failed last\n"
            "  2  nothing is shown: the command line or the file is wrong, or the driver cannot be loaded\n");
    if (*command == Command::Write)
        return common + QStringLiteral(
                            "  3  all was confirmed, but what --verify read back is another value, or could "
                            "not be read\n");
    if (*command != Command::Check)
        return common;
    return QStringLiteral(
        "Exit status:\n"
        "  0  every variable can be read, in the blocks that the driver makes of them\n"
        "  1  nothing was refused, but not everything was answered\n"
        "  2  nothing was tried: the command line or the list is wrong, or the driver cannot be loaded\n"
        "  3  the controller refuses variables, or addresses between variables\n"
        "  4  the controller cannot be reached\n"
        "  5  nothing was tried: blocks would break a limit of Modbus\n");
}

QString exitStatusText(std::optional<Command> command)
{
    if (command == Command::Log)
        return ownExitStatusText(command) +
               QStringLiteral("  6  values are lost, or something could not be printed or "
                              "captured\n");
    return ownExitStatusText(command) + QStringLiteral("  6  what was to be printed could not be written, "
                                                       "whatever else was done, or a capture was not\n");
}

QLatin1String stationsText(std::optional<Command> command)
{
    const bool takesAny = command == Command::Where || command == Command::Scan;
    return QLatin1String(takesAny ? "An @ and the station may follow: 9:100x4@3.\n"
                                  : "With --multi-station an @ and the station may follow: 9:100x4@3.\n");
}

QString variablesText(std::optional<Command> command)
{
    return QStringLiteral(
               "Variables are written AREA:ADDRESS, with xCOUNT behind it for several elements:\n") +
           areaGuide() +
           QStringLiteral(
               "What would lie beyond Modbus address 65535 is refused. Remote frames carry no Modbus address "
               "and reach "
               "65535\nelements of each area (area 8: sixteen bits for each word). Octal digits are 0 to 7: "
               "0:17 is the\nsixteenth bit of area 0. There are no hexadecimal addresses; four elements from "
               "0 on are 9:00x4.\n") +
           stationsText(command);
}

QString listsText()
{
    return QStringLiteral("Lists have these columns, in any order:\n") + listGuide() +
           QStringLiteral(
               "Commas or semicolons stand between the fields; with semicolons a number may have a "
               "decimal comma.\n");
}

/// The parser's own text from the heading of the options on, which wraps their explanations.
QString optionsText(std::optional<Command> command)
{
    QCommandLineParser parser;
    addOptions(&parser, command);
    const QString text = parser.helpText();
    return text.mid(text.indexOf(QLatin1String("Options:")));
}

QString paragraph(const char* heading, const char* lines)
{
    return QLatin1String(heading) + QLatin1String(lines) + QLatin1Char('\n');
}

QString commandHelp(const CommandRow& row)
{
    QString text = QStringLiteral("Usage: plcpanel %1 [OPTIONS]\n\n").arg(QLatin1String(row.usage)) +
                   paragraph("", row.description);
    if (row.command != Command::Demo && row.command != Command::History)
        text += variablesText(row.command) + QLatin1Char('\n');
    if (takesList(row.bit))
        text += listsText() + QLatin1Char('\n');
    return text + optionsText(row.command) + QLatin1Char('\n') + paragraph("Examples:\n", row.examples) +
           exitStatusText(row.command);
}

QString commandList()
{
    QString text = QStringLiteral("Commands (\"plcpanel COMMAND --help\" tells what each takes, in full):\n");
    for (const CommandRow& row : commandRows)
        text += QStringLiteral("  %1 %2\n").arg(QLatin1String(row.name), -8).arg(QLatin1String(row.summary));
    return text + QLatin1Char('\n');
}

/// \return the first example of each command
QString firstExamples()
{
    QString text = QStringLiteral("\nExamples:\n");
    for (const CommandRow& row : commandRows)
        text += QString::fromLatin1(row.examples).section(QLatin1Char('\n'), 0, 0) + QLatin1Char('\n');
    return text;
}

QString programHelp()
{
    return QStringLiteral("Usage: plcpanel COMMAND [VARIABLE...] [OPTIONS]\n\n"
                          "Reads, writes and watches the memory of a controller over Modbus TCP, through "
                          "the driver library.\n\n") +
           commandList() + variablesText(std::nullopt) +
           QStringLiteral("\nThese are the options of all commands; each takes some of them.\n") +
           optionsText(std::nullopt) + firstExamples() + QLatin1Char('\n') + exitStatusText(std::nullopt);
}

QCommandLineOption optionOf(const OptionRow& row)
{
    QString help = QLatin1String(row.help);
    help.replace(QLatin1String("VALUE-TYPES"), valueTypeWords());
    if (row.setting != nullptr)
        help += QStringLiteral(" Default %1.").arg(Settings().*row.setting);
    if (row.own != nullptr)
        help += QStringLiteral(" Default %1.").arg(Options().*row.own);
    return {QLatin1String(row.name), help, QLatin1String(row.value)};
}

/// \return "read, write and watch"
QString enumerated(QStringList names, const char* beforeLast)
{
    const QString last = names.takeLast();
    return names.isEmpty() ? last
                           : QStringLiteral("%1 %2 %3")
                                 .arg(names.join(QStringLiteral(", ")), QLatin1String(beforeLast), last);
}

} // namespace

QString nameOf(Command command)
{
    return QLatin1String(rowOf(command).name);
}

QString commandNames()
{
    QStringList names;
    for (const CommandRow& row : commandRows)
        names << QLatin1String(row.name);
    return enumerated(names, "or");
}

std::optional<Command> commandNamed(const QString& name)
{
    for (const CommandRow& row : commandRows) {
        if (name == QLatin1String(row.name))
            return row.command;
    }
    return std::nullopt;
}

void addOptions(QCommandLineParser* parser, std::optional<Command> command)
{
    const int wanted = command ? rowOf(*command).bit : allCommands;
    QStringList names;
    for (const OptionRow& row : optionRows) {
        // Two commands have a --to of their own; where all options are wanted the first one stands for both.
        if ((row.commands & wanted) != 0 && !names.contains(QLatin1String(row.name)))
            parser->addOption(optionOf(row));
        if ((row.commands & wanted) != 0)
            names << QLatin1String(row.name);
    }
    parser->addOption({{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this text.")});
    parser->addOption(
        {{QStringLiteral("v"), QStringLiteral("version")}, QStringLiteral("Show the version.")});
}

QString commandsWith(const QString& option)
{
    QStringList names;
    for (const CommandRow& command : commandRows) {
        const bool takesIt =
            std::any_of(std::begin(optionRows), std::end(optionRows), [&](const OptionRow& row) {
                return option == QLatin1String(row.name) && (row.commands & command.bit) != 0;
            });
        if (takesIt)
            names << QLatin1String(command.name);
    }
    return names.isEmpty() ? QString() : enumerated(names, "and");
}

QString helpText(std::optional<Command> command)
{
    return command ? commandHelp(rowOf(*command)) : programHelp();
}

} // namespace plc
