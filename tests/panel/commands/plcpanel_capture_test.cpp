// SPDX-License-Identifier: MIT
// plcpanel --capture and replay as processes.

#include "capture/capture_bytes.h"
#include "panel/plcpanel_run.h"
#include "simulator/simulated_controller.h"
#include "support/built_files.h"
#include "support/waiting.h"

#include <gmock/gmock.h>

#include <QProcess>
#include <QStandardPaths>

#include <csignal>

namespace
{

using test::Plcpanel;
using test::plcpanel;
using test::RunResult;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class PlcpanelCapture : public testing::Test
{
protected:
    PlcpanelCapture()
    {
        controller.start();
        controller.memory().setHoldingRegister(1, 100, 1234);
        controller.memory().setHoldingRegister(1, 0xF700, 0x5678);
        controller.memory().setHoldingRegister(1, 0xF701, 0x1234);
        controller.memory().setCoil(1, 0xF800 + 15, true);
    }

    QString path(const char* name) const { return folder.filePath(QLatin1String(name)); }

    /// \return \a words with the controller, capturing to \a file
    QStringList line(const char* words, const QString& file) const
    {
        return QString::fromLatin1(words).split(QLatin1Char(' ')) +
               QStringList{QStringLiteral("--controller"),
                           QStringLiteral("127.0.0.1:%1").arg(controller.port()), QStringLiteral("--capture"),
                           file};
    }

    RunResult run(const char* words, const char* name) const { return plcpanel(line(words, path(name))); }

    RunResult replay(const char* name, const char* words = "") const
    {
        return plcpanel(QStringList{QStringLiteral("replay"), path(name)} +
                        QString::fromLatin1(words).split(QLatin1Char(' '), Qt::SkipEmptyParts));
    }

    QByteArray bytesOf(const char* name) const
    {
        QFile file(path(name));
        file.open(QIODevice::ReadOnly);
        return file.readAll();
    }

    const QTemporaryDir folder;
    simulator::SimulatedController controller;
};

/// \return the lines with values, without the age
std::string valuesIn(const std::string& table)
{
    QString text = QString::fromStdString(table);
    text = text.mid(text.indexOf(QLatin1String("VARIABLE")));
    return text.replace(QRegularExpression(QStringLiteral(" +[0-9.]+ s +")), QStringLiteral(" "))
        .toStdString();
}

TEST_F(PlcpanelCapture, ShowsTheSameValuesAtTheDesk)
{
    const char* const variables = "watch 9:100x4 0:17 14:200 8:100.1 9:600 --once --retries 1";
    for (const char* name : {"live.jsonl", "live.pcap"}) {
        const RunResult live = run(variables, name);
        const RunResult desk = replay(name, "9:100x4 0:17 14:200 8:100.1 9:600 --retries 1");
        EXPECT_THAT(live.out, HasSubstr("305419896"));
        EXPECT_EQ(valuesIn(desk.out), valuesIn(live.out)) << name;
        EXPECT_EQ(desk.errors, "") << name;
        EXPECT_EQ(desk.status, 0) << name;
    }
}

TEST_F(PlcpanelCapture, ShowsWhatWasReadWhereNoVariableIsNamed)
{
    run("read 9:100x2 14:200 0:17", "read.pcap");
    const RunResult desk = replay("read.pcap");
    EXPECT_EQ(valuesIn(desk.out), "VARIABLE  VALUE      AGE      STATE\n"
                                  "0:17      1 fresh\n"
                                  "9:100x2   1234 0 fresh\n"
                                  "14:200    305419896 fresh\n");
}

TEST_F(PlcpanelCapture, PrintsEachChangeWithTheTimeOfTheCapture)
{
    QFile file(path("two.jsonl"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(test::captured<plc::JsonCapture>([](plc::LinkTap* tap) {
        test::connect(tap);
        for (const char* reply :
             {"0001000000070103040007FFFF", "0001000000070103040007FFFF", "0001000000070103040008FFFF"}) {
            tap->sent(test::readTwo);
            tap->received(QByteArray::fromHex(reply));
        }
    }));
    file.close();
    EXPECT_EQ(
        replay("two.jsonl", "9:100 --json").out,
        R"({"address":"100","area":9,"count":1,"state":"fresh","station":1,"time":"2026-11-21T14:03:22.004Z",)"
        R"("values":[7]})"
        "\n"
        R"({"address":"100","area":9,"count":1,"state":"fresh","station":1,"time":"2026-11-21T14:03:22.008Z",)"
        R"("values":[8]})"
        "\n");
}

TEST_F(PlcpanelCapture, IsCompleteAfterCtrlC)
{
    Plcpanel watch(line("watch 9:100 --json", path("long.jsonl")));
    ASSERT_TRUE(watch.eventually([](const std::string& out) { return !out.empty(); }));
    EXPECT_EQ(watch.endBy(SIGINT).status, 0);
    const test::Read read = test::read(bytesOf("long.jsonl"));
    EXPECT_EQ(read.end.error, QString());
    EXPECT_THAT(read.end.notes, IsEmpty());
    EXPECT_EQ(read.entries.back(), "-");
    const auto requests = std::count_if(read.entries.begin(), read.entries.end(),
                                        [](const std::string& entry) { return entry[0] == '>'; });
    const auto captured = static_cast<unsigned long>(requests);
    // The last one may have been sent just before the end, and the controller comes to it later.
    EXPECT_TRUE(test::eventually([&] { return controller.requests() >= captured; }));
    EXPECT_EQ(captured, controller.requests());
}

TEST_F(PlcpanelCapture, HoldsTheNumbersThatWentOverTheLink)
{
    run("read 9:100 9:101", "numbers.jsonl");
    const std::string json = bytesOf("numbers.jsonl").toStdString();
    EXPECT_THAT(json, HasSubstr(R"("hex":"00 01 00 00 00 06 01 03 00 64 00 01")"));
    EXPECT_THAT(json, HasSubstr(R"("hex":"00 02 00 00 00 06 01 03 00 65 00 01")"));
    EXPECT_THAT(json, HasSubstr(R"("hex":"00 02 00 00 00 05 01 03 02 00 00")"));
}

TEST_F(PlcpanelCapture, IsThereForEveryCommandWithALink)
{
    EXPECT_EQ(run("write 9:7=5", "write.jsonl").status, 0);
    EXPECT_THAT(bytesOf("write.jsonl").toStdString(), HasSubstr("write register 7: 5"));
    EXPECT_EQ(run("check 9:7", "check.jsonl").status, 0);
    EXPECT_THAT(bytesOf("check.jsonl").toStdString(), HasSubstr("read 1 register from 7"));
    const RunResult demo =
        plcpanel({QStringLiteral("demo"), QStringLiteral("--capture"), path("demo.jsonl")});
    EXPECT_EQ(demo.status, 0);
    EXPECT_EQ(bytesOf("demo.jsonl").count("\"event\":\"connected\""), 2) << "both parts of the demo";
}

TEST_F(PlcpanelCapture, ThatCannotBeWrittenIsToldAndStopsNothing)
{
    const RunResult read = plcpanel(line("read 9:100", QStringLiteral("/nowhere/a.pcap")));
    EXPECT_EQ(read.out, "9:100  1234\n");
    EXPECT_EQ(read.status, 6);
    EXPECT_THAT(read.errors, HasSubstr("plcpanel: --capture /nowhere/a.pcap: No such file or directory; the "
                                       "exchange goes on without\n"));
}

TEST_F(PlcpanelCapture, ToAFullDiskIsToldAndStopsNothing)
{
    ASSERT_TRUE(QFile::link(QStringLiteral("/dev/full"), path("full.jsonl")));
    const RunResult read = run("read 9:100", "full.jsonl");
    EXPECT_EQ(read.out, "9:100  1234\n");
    EXPECT_EQ(read.status, 6);
    EXPECT_THAT(read.errors,
                HasSubstr("full.jsonl: No space left on device; the exchange goes on without\n"));
}

TEST_F(PlcpanelCapture, ThatGetsTooLongSaysSoAndStopsNothing)
{
    const RunResult read =
        test::plcpanelInShell("ulimit -f 1; \"$@\"", line("read 9:100x600", path("long.jsonl")));
    EXPECT_EQ(read.status, 6);
    EXPECT_THAT(read.errors, HasSubstr("long.jsonl: File too large; the exchange goes on without\n"));
}

TEST_F(PlcpanelCapture, ThatIsLostIsToldByTheStatusOfEveryCommandThatWouldBeGood)
{
    ASSERT_TRUE(QFile::link(QStringLiteral("/dev/full"), path("full.pcap")));
    for (const char* words : {"write 9:7=5", "check 9:7", "watch 9:7 --once"})
        EXPECT_EQ(run(words, "full.pcap").status, 6) << words;
    EXPECT_EQ(plcpanel({QStringLiteral("demo"), QStringLiteral("--capture"), path("full.pcap")}).status, 6);
    controller.stop();
    EXPECT_EQ(run("read 9:7 --timeout 50 --retries 0", "full.pcap").status, 1)
        << "what failed at the controller";
}

TEST_F(PlcpanelCapture, ToAFileOfAnotherKindIsRefused)
{
    const RunResult read = run("read 9:100", "capture.txt");
    EXPECT_EQ(read.status, 2);
    EXPECT_THAT(read.errors, HasSubstr("the file's ending says what is written: .pcap"));
    EXPECT_EQ(controller.requests(), 0u);
}

TEST_F(PlcpanelCapture, IsNothingThatReplayHas)
{
    const RunResult run = replay("none.jsonl", "--capture a.pcap");
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.errors, HasSubstr("--capture is no option of replay"));
}

TEST_F(PlcpanelCapture, ReplayTellsAFileThatItCannotUse)
{
    EXPECT_THAT(replay("none.jsonl").errors, HasSubstr("none.jsonl: cannot read it: No such file"));
    EXPECT_THAT(replay(".").errors, HasSubstr("cannot read it"));
    QFile file(path("wrong.jsonl"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("{\"capture\":\"plcpanel\",\"version\":1}\n\nhello\n");
    file.close();
    const RunResult wrong = replay("wrong.jsonl");
    EXPECT_THAT(wrong.errors, HasSubstr("wrong.jsonl: line 3: it is no JSON"));
    EXPECT_EQ(wrong.status, 2);
    EXPECT_THAT(plcpanel({QStringLiteral("replay")}).errors, HasSubstr("no capture is given"));
}

TEST_F(PlcpanelCapture, ReplayTakesPcapngOfOtherProgramsWithTheirPort)
{
    if (QStandardPaths::findExecutable(QStringLiteral("editcap")).isEmpty())
        GTEST_SKIP() << "editcap is not installed, so no other program makes a pcapng";
    run("read 9:100x2 14:200 0:17", "panel.pcap");
    const QString other = path("other.pcapng");
    ASSERT_EQ(
        QProcess::execute(QStringLiteral("editcap"), {QStringLiteral("-F"), QStringLiteral("pcapng"),
                                                      path("panel.pcap"), other, QStringLiteral("1-3")}),
        0); // without the packets by which a capture of the panel is known
    EXPECT_THAT(replay("other.pcapng").errors,
                HasSubstr("it holds no TCP to or from port 502 (but from ports "));
    const std::string port = "--port " + std::to_string(controller.port());
    EXPECT_EQ(valuesIn(replay("other.pcapng", port.c_str()).out), valuesIn(replay("panel.pcap").out));
}

TEST_F(PlcpanelCapture, ReplayTellsWhatToDoWithACompressedFile)
{
    QFile file(path("a.pcap.gz"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray::fromHex("1F8B0800"));
    file.close();
    const RunResult run = replay("a.pcap.gz");
    EXPECT_THAT(run.errors, HasSubstr("it is compressed; unpack it (gunzip), or give <(zcat FILE)"));
    EXPECT_EQ(run.status, 2);
}

/// \param words for the shell, with \a name's file as $1 and plcpanel as $0
RunResult shell(const char* words, const QString& file)
{
    QProcess bash;
    bash.start(QStringLiteral("bash"),
               {QStringLiteral("-c"), QString::fromLatin1(words), QString::fromUtf8(builtPlcpanel()), file});
    EXPECT_TRUE(bash.waitForFinished(60000));
    return {bash.exitCode(), bash.readAllStandardOutput().toStdString(),
            bash.readAllStandardError().toStdString()};
}

TEST_F(PlcpanelCapture, IsReplayedOutOfAPipe)
{
    for (const char* name : {"piped.pcap", "piped.jsonl"}) {
        run("read 9:100x2 14:200 0:17", name);
        const std::string fromFile = valuesIn(replay(name).out);
        EXPECT_THAT(fromFile, HasSubstr("305419896"));
        for (const char* words :
             {"cat \"$1\" | \"$0\" replay /dev/stdin", "\"$0\" replay <(gzip -c \"$1\" | zcat)",
              "cat \"$1\" | \"$0\" replay /dev/stdin 0:17 9:100x2 14:200"}) {
            const RunResult piped = shell(words, path(name));
            EXPECT_EQ(valuesIn(piped.out), fromFile) << words;
            EXPECT_EQ(piped.errors, "") << words;
            EXPECT_EQ(piped.status, 0) << words;
        }
    }
}

/// \return what tshark shows of the fields of each Modbus/TCP packet, told that port 1502 is Modbus
std::string dissected(const QString& path, const QStringList& fields)
{
    QStringList arguments = {QStringLiteral("-r"), path,
                             QStringLiteral("-Y"), QStringLiteral("mbtcp"),
                             QStringLiteral("-d"), QStringLiteral("tcp.port==1502,mbtcp"),
                             QStringLiteral("-o"), QStringLiteral("tcp.check_checksum:TRUE"),
                             QStringLiteral("-T"), QStringLiteral("fields")};
    for (const QString& field : fields)
        arguments << QStringLiteral("-e") << field;
    QProcess tshark;
    tshark.start(QStringLiteral("tshark"), arguments);
    EXPECT_TRUE(tshark.waitForFinished(60000));
    return tshark.readAllStandardOutput().toStdString();
}

TEST_F(PlcpanelCapture, OpensWhereNetworkTrafficIsShown)
{
    if (QStandardPaths::findExecutable(QStringLiteral("tshark")).isEmpty())
        GTEST_SKIP() << "tshark is not installed, so nothing shows that its format is right";
    QFile file(path("twice.pcap"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(test::captured<plc::PcapCapture>([](plc::LinkTap* tap) {
        for (int connection = 0; connection < 2; ++connection) {
            test::connect(tap);
            tap->sent(test::readTwo);
            tap->received(test::twoValues.left(9));
            tap->received(test::twoValues.mid(9));
            tap->sent(test::readTwo);
            tap->received(test::refusedTwo);
            tap->closed(QString());
        }
    }));
    file.close();
    // Stream, number, function, exception, state of the checksum (1 is good); and nothing that is out of
    // order.
    EXPECT_EQ(dissected(file.fileName(),
                        {QStringLiteral("tcp.stream"), QStringLiteral("mbtcp.trans_id"),
                         QStringLiteral("modbus.func_code"), QStringLiteral("modbus.exception_code"),
                         QStringLiteral("tcp.checksum.status"), QStringLiteral("tcp.analysis.flags")}),
              "0\t1\t3\t\t1\t\n"
              "0\t1\t3\t\t1\t\n"
              "0\t1\t3\t\t1\t\n"
              "0\t1\t3\t2\t1\t\n"
              "1\t1\t3\t\t1\t\n"
              "1\t1\t3\t\t1\t\n"
              "1\t1\t3\t\t1\t\n"
              "1\t1\t3\t2\t1\t\n");
}

TEST_F(PlcpanelCapture, ShowsAddressesAndPortsOfTheLinkWhereNetworkTrafficIsShown)
{
    if (QStandardPaths::findExecutable(QStringLiteral("tshark")).isEmpty())
        GTEST_SKIP() << "tshark is not installed, so nothing shows that its format is right";
    QFile file(path("six.pcap"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(test::captured<plc::PcapCapture>([](plc::LinkTap* tap) {
        tap->opened({QStringLiteral("2001:db8::1"), 40000}, {QStringLiteral("2001:db8::2"), 1502});
        tap->sent(test::readTwo);
        tap->received(test::twoValues);
    }));
    file.close();
    EXPECT_EQ(dissected(file.fileName(),
                        {QStringLiteral("ipv6.src"), QStringLiteral("tcp.srcport"),
                         QStringLiteral("ipv6.dst"), QStringLiteral("tcp.dstport"),
                         QStringLiteral("modbus.func_code"), QStringLiteral("tcp.checksum.status")}),
              "2001:db8::1\t40000\t2001:db8::2\t1502\t3\t1\n"
              "2001:db8::2\t1502\t2001:db8::1\t40000\t3\t1\n");
}

} // namespace
