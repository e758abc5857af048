// SPDX-License-Identifier: MIT
// plcpanel watch in a real terminal: keys, writing, what is drawn, and how the terminal is left.

#include "panel/program_in_terminal.h"
#include "simulator/simulated_controller.h"
#include "support/built_files.h"
#include "support/waiting.h"

#include <gmock/gmock.h>

#include <QTemporaryFile>

#include <csignal>

namespace
{

using test::ProgramInTerminal;
using test::TerminalKind;
using testing::HasSubstr;
using testing::Not;

/// Sixty variables, "value 0" to "value 59"; the controller refuses those from 50 on.
class WatchOnAScreen : public testing::Test
{
protected:
    WatchOnAScreen() : controller(settings())
    {
        controller.start();
        EXPECT_TRUE(m_list.open());
        m_list.write("name,area,address,type,unit,min,max,access\n");
        for (int index = 0; index < 60; ++index)
            m_list.write(QStringLiteral("value %1,9,%2,uint16,ml,,1000,%3\n")
                             .arg(QString::number(index), QString::number(addressOf(index)), access(index))
                             .toUtf8());
        m_list.close();
    }

    static int addressOf(int index) { return index < 50 ? 100 + index : 2000 + index; }
    static QString access(int index) { return index == 7 ? QStringLiteral("r") : QString(); }

    static simulator::Settings settings()
    {
        simulator::Settings settings;
        settings.refused = {{2000, 2099}};
        return settings;
    }

    QStringList line(const char* options = "--interval 50") const
    {
        return QStringList{QString::fromUtf8(builtPlcpanel()),
                           QStringLiteral("watch"),
                           QStringLiteral("--vars"),
                           m_list.fileName(),
                           QStringLiteral("--driver"),
                           QString::fromUtf8(builtDriver()),
                           QStringLiteral("--controller"),
                           QStringLiteral("127.0.0.1:%1").arg(controller.port())} +
               QString::fromLatin1(options).split(QLatin1Char(' '));
    }

    void set(int index, int value)
    {
        controller.memory().setHoldingRegister(1, addressOf(index), static_cast<std::uint16_t>(value));
    }
    int get(int index) { return controller.memory().holdingRegister(1, addressOf(index)); }

    simulator::SimulatedController controller;

private:
    QTemporaryFile m_list;
};

TEST_F(WatchOnAScreen, ScrollsByKeysAndByTheWheel)
{
    ProgramInTerminal watch(line());
    EXPECT_TRUE(watch.shows(">   value 0 "));
    EXPECT_TRUE(watch.isTaken());
    EXPECT_TRUE(watch.shows("1-16 of 60"));
    watch.type("\x1bOB\x1bOB");
    EXPECT_TRUE(watch.shows(">   value 2 "));
    watch.type("\x1b[6~");
    EXPECT_TRUE(watch.shows(">   value 18 "));
    EXPECT_TRUE(watch.shows("17-32 of 60"));
    watch.type("\x1bOF");
    EXPECT_TRUE(watch.shows(">   value 59 "));
    EXPECT_TRUE(watch.shows("45-60 of 60"));
    watch.type("\x1b[<64;5;5M");
    EXPECT_TRUE(watch.shows("42-57 of 60"));
    watch.type("\x1bOH");
    EXPECT_TRUE(watch.shows(">   value 0 "));
    EXPECT_TRUE(watch.shows("1-16 of 60"));
    watch.type("\x1b[<0;5;6M");
    EXPECT_TRUE(watch.shows(">   value 3 "));
    watch.type("q");
    EXPECT_EQ(watch.end(), 0);
    EXPECT_EQ(watch.screen().unknown(), "");
}

TEST_F(WatchOnAScreen, FindsAndSorts)
{
    ProgramInTerminal watch(line());
    EXPECT_TRUE(watch.shows(">   value 0 "));
    watch.type("/UE 3\r");
    EXPECT_TRUE(watch.shows(">   value 3 "));
    watch.type("n");
    EXPECT_TRUE(watch.shows(">   value 30 "));
    watch.type("N");
    EXPECT_TRUE(watch.shows(">   value 3 "));
    watch.type("/none\r");
    EXPECT_TRUE(watch.shows("\"none\" is in no name and no address"));
    watch.type("ss");
    EXPECT_TRUE(watch.shows("trouble first"));
    EXPECT_TRUE(watch.shows(">   value 50 "));
    EXPECT_TRUE(watch.shows("10 not fresh"));
    watch.type("\r");
    EXPECT_TRUE(
        watch.shows("STATE     failed: the controller refused it: exception 2, illegal data address"));
    watch.type(" q");
    EXPECT_EQ(watch.end(), 0);
}

TEST_F(WatchOnAScreen, MarksWhatChangedAndWhatLiesOutsideAndShowsHowFarItWent)
{
    ProgramInTerminal watch(line());
    EXPECT_TRUE(watch.shows("    value 1   0 ml"));
    watch.type("m");
    EXPECT_TRUE(watch.shows("MIN "));
    set(1, 1200);
    EXPECT_TRUE(watch.shows(" *! value 1 "));
    EXPECT_TRUE(watch.shows("1 outside limits"));
    set(1, 30);
    EXPECT_TRUE(watch.shows(" *  value 1 "));
    EXPECT_TRUE(watch.shows("30 ml  "));
    EXPECT_TRUE(watch.shows("0 ml          1200 ml"));
    EXPECT_TRUE(watch.shows("    value 1 ")); // the change is some time ago
    watch.type("q");
    EXPECT_EQ(watch.end(), 0);
}

TEST_F(WatchOnAScreen, WritesTheSelectedVariableWhenAskedTwice)
{
    set(1, 20);
    ProgramInTerminal watch(line());
    EXPECT_TRUE(watch.shows("20 ml"));
    watch.type("jw");
    EXPECT_TRUE(watch.shows("value 1 is 20 ml; at most 1000 ml may be written"));
    watch.type("1001\r");
    EXPECT_TRUE(watch.shows("1001 lies outside its limits, at most 1000 ml"));
    watch.type("\x15"
               "345\r");
    EXPECT_TRUE(watch.shows("Write 345 ml to value 1, which is 20 ml?"));
    watch.type("n");
    EXPECT_TRUE(watch.shows("nothing is written"));
    EXPECT_EQ(get(1), 20);
    watch.type("w345\ry");
    EXPECT_TRUE(watch.shows("345 ml confirmed; fresh"));
    EXPECT_EQ(get(1), 345);
    watch.type("q");
    EXPECT_EQ(watch.end(), 0);
}

TEST_F(WatchOnAScreen, TellsWhyAWriteDidNotComeTrue)
{
    ProgramInTerminal watch(line());
    EXPECT_TRUE(watch.shows(">   value 0 "));
    watch.type("/value 7\rw");
    EXPECT_TRUE(watch.shows("value 7 is not written: the list says that it is only read (access r)"));
    watch.type("/value 55\rw5\ry");
    // Or given up with a read of the same address that was refused before it.
    EXPECT_TRUE(watch.shows("5 ml not confirmed: "));
    EXPECT_TRUE(watch.shows("exception 2, illegal data address"));
    controller.stop();
    EXPECT_TRUE(watch.shows("NOT CONNECTED"));
    watch.type("\x1bOHw5\ry");
    EXPECT_TRUE(watch.shows("5 ml not confirmed: "));
    EXPECT_TRUE(watch.shows("no connection to 127.0.0.1"));
    watch.type("q");
    EXPECT_EQ(watch.end(), 0);
    EXPECT_TRUE(watch.isAsBefore());
}

TEST_F(WatchOnAScreen, DrawsOnlyWhatChanged)
{
    ProgramInTerminal watch(line("--interval 100"), {100, 60});
    EXPECT_TRUE(watch.shows("    value 49 "));
    EXPECT_TRUE(watch.shows("    value 1   0 ml"));
    EXPECT_TRUE(watch.shows("10 not fresh"));
    const std::size_t whole = watch.bytes().size();
    EXPECT_GT(whole, 2500U);
    // The least of five: on a busy machine values grow old and fresh again between two looks, which is drawn too.
    std::size_t least = whole;
    for (int value = 101; value <= 105; ++value) {
        const std::size_t before = watch.bytes().size();
        set(20, value);
        EXPECT_TRUE(watch.shows(std::to_string(value) + " ml"));
        watch.bytesIn(300); // three looks more
        least = std::min(least, watch.bytes().size() - before);
    }
    EXPECT_LT(least, 300U); // the value, its mark and time, a second of the connection
    watch.type("q");
    EXPECT_EQ(watch.end(), 0);
}

TEST_F(WatchOnAScreen, PutsTheTerminalInOrderWhateverEndsIt)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        ProgramInTerminal watch(line());
        EXPECT_TRUE(watch.shows("value 1")) << signal;
        EXPECT_TRUE(watch.isTaken()) << signal;
        watch.send(signal);
        EXPECT_EQ(watch.end(), 0) << signal;
        EXPECT_TRUE(watch.isAsBefore()) << signal;
        EXPECT_THAT(watch.bytes(), HasSubstr("\x1b[?1049l")) << signal;
        EXPECT_THAT(watch.screen().text(), HasSubstr("do not fit, ")) << signal; // what it was in the end
    }
}

TEST_F(WatchOnAScreen, CtrlCEndsItWhileSomethingIsTyped)
{
    ProgramInTerminal watch(line());
    EXPECT_TRUE(watch.shows("q ends"));
    watch.type("w12\x03");
    EXPECT_EQ(watch.end(), 0);
    EXPECT_TRUE(watch.isAsBefore());
}

TEST_F(WatchOnAScreen, IsStoppedAndContinuedByAShell)
{
    ProgramInTerminal shell({QStringLiteral("bash"), QStringLiteral("--norc"), QStringLiteral("--noprofile"),
                             QStringLiteral("--noediting"), QStringLiteral("-i")},
                            {100, 20, {{"TERM", "xterm"}, {"PS1", "READY "}}});
    EXPECT_TRUE(shell.shows("READY"));
    shell.type(line().join(QLatin1Char(' ')).toStdString() + "\n");
    EXPECT_TRUE(shell.shows(">   value 0 "));
    EXPECT_TRUE(shell.isTaken());
    shell.type("j");
    EXPECT_TRUE(shell.shows(">   value 1 "));
    shell.type("\x1a");
    EXPECT_TRUE(shell.shows("Stopped"));
    EXPECT_TRUE(shell.isAsBefore());
    shell.type("fg\n");
    EXPECT_TRUE(shell.shows(">   value 1 "));
    EXPECT_TRUE(shell.shows("q ends"));
    EXPECT_TRUE(shell.isTaken());
    shell.type("q");
    EXPECT_TRUE(shell.shows("READY"));
    shell.type("exit\n");
    EXPECT_EQ(shell.end(), 0);
}

TEST_F(WatchOnAScreen, FollowsTheSizeOfTheWindow)
{
    ProgramInTerminal watch(line());
    EXPECT_TRUE(watch.shows("1-16 of 60"));
    watch.resize(60, 10);
    EXPECT_TRUE(watch.shows("1-6 of 60"));
    watch.resize(120, 30);
    EXPECT_TRUE(watch.shows("1-26 of 60"));
    for (const auto& size : {std::pair<int, int>{5, 3}, {1, 1}, {200, 2}, {80, 24}}) {
        watch.resize(size.first, size.second);
        watch.bytesIn(60);
    }
    EXPECT_TRUE(watch.shows("1-20 of 60"));
    watch.type("q");
    EXPECT_EQ(watch.end(), 0);
}

TEST_F(WatchOnAScreen, HasNoColoursWhereNoneAreWanted)
{
    for (const char* wish : {"", "1"}) {
        ProgramInTerminal watch(line(), {100, 20, {{"TERM", "xterm"}, {"NO_COLOR", wish}}});
        EXPECT_TRUE(watch.shows("connected for"));
        watch.type("q");
        EXPECT_EQ(watch.end(), 0);
        if (*wish == '\0')
            EXPECT_THAT(watch.bytes(), HasSubstr("\x1b[32m"));
        else
            EXPECT_THAT(watch.bytes(), Not(HasSubstr("\x1b[32m")));
    }
}

TEST_F(WatchOnAScreen, DrawsOnTerminalsOfManyKinds)
{
    for (const char* kind : {"vt100", "vt220", "linux", "screen", "xterm-256color", "ansi"}) {
        ProgramInTerminal watch(line(), {80, 24, {{"TERM", kind}}});
        EXPECT_TRUE(watch.shows("value 19")) << kind;
        watch.type("q");
        EXPECT_EQ(watch.end(), 0) << kind;
        EXPECT_TRUE(watch.isAsBefore()) << kind;
    }
}

TEST_F(WatchOnAScreen, ObeysLinesWhereItsInputIsNoTerminal)
{
    ProgramInTerminal watch(
        {QStringLiteral("sh"), QStringLiteral("-c"),
         QStringLiteral("(sleep 0.5; echo x1; sleep 0.5; echo q) | ") + line().join(QLatin1Char(' '))});
    EXPECT_TRUE(watch.shows("Ctrl-C ends."));
    EXPECT_TRUE(watch.shows("\"x1\" is no command"));
    EXPECT_EQ(watch.end(), 0);
    EXPECT_TRUE(watch.isAsBefore());
}

} // namespace
