// SPDX-License-Identifier: MIT
// What becomes of the panel where its output cannot be written.

#include "panel/plcpanel_run.h"
#include "simulator/simulated_controller.h"
#include "support/built_files.h"

#include <gmock/gmock.h>

#include <QTemporaryDir>

namespace
{

using test::plcpanelInShell;
using test::RunResult;
using testing::HasSubstr;
using testing::IsEmpty;

const int outputFailed = 6;

/// A controller, and arguments for it.
class PlcpanelOutput : public testing::Test
{
protected:
    PlcpanelOutput() : controller(simulator::Settings()) { controller.start(); }

    RunResult run(const char* script, const QString& text) const
    {
        QString line = text;
        line.replace(QStringLiteral("CONTROLLER"),
                     QStringLiteral("--controller 127.0.0.1:%1").arg(controller.port()));
        return plcpanelInShell(script, line.split(QLatin1Char(' ')));
    }

    simulator::SimulatedController controller;
};

TEST_F(PlcpanelOutput, OfEveryCommandOnAFullDiskIsAnErrorWithItsOwnStatus)
{
    const QTemporaryDir folder;
    const QString capture = folder.filePath(QStringLiteral("a.jsonl"));
    ASSERT_EQ(run("\"$@\" >/dev/null", QStringLiteral("read 9:1 CONTROLLER --capture ") + capture).status, 0);
    const QStringList lines = {
        QStringLiteral("read 9:100 CONTROLLER"),
        QStringLiteral("read 9:100 CONTROLLER --json"),
        QStringLiteral("write 9:100=1 CONTROLLER"),
        QStringLiteral("watch 9:100 CONTROLLER --once"),
        QStringLiteral("watch 9:100 CONTROLLER --json"),
        QStringLiteral("watch 9:100 CONTROLLER"),
        QStringLiteral("check 9:100 CONTROLLER"),
        QStringLiteral("replay ") + capture,
        QStringLiteral("replay --json ") + capture,
        QStringLiteral("demo"),
        QStringLiteral("--help"),
        QStringLiteral("watch --help"),
        QStringLiteral("--version"),
    };
    for (const QString& line : lines) {
        const RunResult ended = run("exec \"$@\" >/dev/full", line);
        EXPECT_EQ(ended.status, outputFailed) << line.toStdString();
        EXPECT_EQ(ended.errors, "plcpanel: cannot write the output: No space left on device\n")
            << line.toStdString();
    }
}

TEST_F(PlcpanelOutput, ThatIsClosedIsAnErrorAndGoesIntoNoFileOfTheProgram)
{
    const RunResult ended = run("exec \"$@\" >&-", QStringLiteral("read 9:100 CONTROLLER"));
    EXPECT_EQ(ended.status, outputFailed);
    EXPECT_THAT(ended.errors, HasSubstr("cannot write the output: Bad file descriptor"));
    EXPECT_EQ(controller.badFrames(), 0U);
}

TEST_F(PlcpanelOutput, WritesAllTheSameWhatWasToBeWritten)
{
    EXPECT_EQ(run("exec \"$@\" >/dev/full", QStringLiteral("write 9:1=11 9:2=22 CONTROLLER")).status,
              outputFailed);
    EXPECT_EQ(controller.memory().holdingRegister(1, 1), 11);
    EXPECT_EQ(controller.memory().holdingRegister(1, 2), 22);
}

TEST_F(PlcpanelOutput, EndsQuietlyWithAReaderThatHasEnough)
{
    const RunResult ended = run("\"$@\" | head -n 1 >/dev/null; echo ${PIPESTATUS[0]}",
                                QStringLiteral("watch 9:100 CONTROLLER --json --interval 10"));
    EXPECT_THAT(ended.out, testing::AnyOf("0\n", "141\n"));
    EXPECT_THAT(ended.errors, IsEmpty());
}

TEST_F(PlcpanelOutput, IntoAPipeThatNobodyReadsIsAnErrorWhereTheSignalIsIgnored)
{
    const RunResult ended =
        run("trap '' PIPE; { sleep 0.3; \"$@\"; echo status $? >&2; } | :", QStringLiteral("--version"));
    EXPECT_EQ(ended.errors, "plcpanel: cannot write the output: Broken pipe\nstatus 6\n");
}

TEST_F(PlcpanelOutput, KeepsTheMessagesApartFromTheLinkWhenStandardErrorIsClosed)
{
    const RunResult ended = run("exec \"$@\" 2>&-", QStringLiteral("read 9:100 CONTROLLER --trace"));
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.out, "9:100  0\n");
    EXPECT_EQ(controller.badFrames(), 0U);
}

TEST_F(PlcpanelOutput, ThatIsATraceWhichCannotBeWrittenMakesTheStatus)
{
    const RunResult ended = run("exec \"$@\" 2>/dev/full", QStringLiteral("read 9:100 CONTROLLER --trace"));
    EXPECT_EQ(ended.out, "9:100  0\n");
    EXPECT_EQ(ended.status, outputFailed);
}

TEST_F(PlcpanelOutput, NamesAreUtf8WhereTheLocaleIsUnset)
{
    const QTemporaryDir folder;
    const QString list = folder.filePath(QStringLiteral("list.csv"));
    const RunResult ended =
        run("printf 'name,area,address,station,count,type\\n\\303\\226l,9,100,,,uint16\\n' >\"${*: -1}\"; "
            "LC_ALL=C exec \"${@:1:$#}\"",
            QStringLiteral("watch CONTROLLER --once --json --driver %1 --vars %2")
                .arg(QString::fromUtf8(builtDriver()), list));
    EXPECT_THAT(ended.out, HasSubstr("\"name\":\"\xC3\x96l\"")) << ended.errors;
}

} // namespace
