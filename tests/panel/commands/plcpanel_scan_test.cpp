// SPDX-License-Identifier: MIT
// plcpanel scan as a process, against controllers of which stations and elements are missing.

#include "panel/plcpanel_run.h"
#include "simulator/simulated_controller.h"
#include "support/scripted_controller.h"

#include <gmock/gmock.h>

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <csignal>
#include <mutex>
#include <set>
#include <thread>

namespace
{

using test::plcpanel;
using test::Plcpanel;
using test::RunResult;
using testing::HasSubstr;
using testing::IsSubsetOf;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

QStringList words(const char* text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

class PlcpanelScan : public testing::Test
{
protected:
    void start(simulator::Settings settings = {})
    {
        settings.trace = [this](const simulator::TraceEntry& entry) {
            const std::lock_guard<std::mutex> lock(mutex);
            if (!entry.isReply)
                functions.insert(entry.bytes.at(7));
        };
        controller = std::make_unique<simulator::SimulatedController>(settings);
        controller->start();
    }

    /// All stations up to 20 but these are silent.
    void startWith(const std::set<int>& stations)
    {
        simulator::Settings settings;
        for (int station = 1; station <= 20; ++station)
            if (stations.count(station) == 0)
                settings.silentUnits.push_back(station);
        start(settings);
    }

    QStringList arguments(const char* text, int port) const
    {
        return words("scan --controller") + QStringList{QStringLiteral("127.0.0.1:%1").arg(port)} +
               words(text);
    }

    RunResult scan(const char* text) const { return plcpanel(arguments(text, controller->port())); }

    std::mutex mutex;
    std::set<int> functions; // that were asked for
    std::unique_ptr<simulator::SimulatedController> controller;
};

TEST_F(PlcpanelScan, TellsTheStationsThatAnswerAndTheOthersTogether)
{
    startWith({2, 3});
    const RunResult run = scan("--stations 1-4 --timeout 300 --tries 1");
    EXPECT_THAT(run.out, MatchesRegex("STATION         TIME  ANSWER\n"
                                      "      2 +[0-9.]+ ms  answers\n"
                                      "      3 +[0-9.]+ ms  answers\n"
                                      "1, 4: no answer within 300 ms\n"
                                      "4 stations in [0-9.]+ s: 2 answered, 2 gave no answer\n"));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 0);
}

TEST_F(PlcpanelScan, CountsARefusalAsAnAnswer)
{
    simulator::Settings settings;
    settings.refused = {{0, 10}};
    start(settings);
    const RunResult run = scan("--stations 5 --timeout 5000");
    EXPECT_THAT(run.out, HasSubstr("answers with exception 2, illegal data address\n"));
    EXPECT_THAT(run.out, HasSubstr(": 1 answered\n"));
    EXPECT_EQ(run.status, 0);
}

TEST_F(PlcpanelScan, AsksSilentStationsAgainAndSaysSo)
{
    startWith({});
    const RunResult run = scan("--stations 1-2 --timeout 20 --tries 3");
    EXPECT_EQ(controller->requests(), 6u);
    EXPECT_THAT(run.out, StartsWith("1-2: no answer within 20 ms (asked 3 times)\n"));
    EXPECT_EQ(run.status, 1);
}

TEST_F(PlcpanelScan, TellsAnotherStationThatAnswersInItsPlace)
{
    simulator::Settings settings;
    settings.faults.wrongUnit = 1;
    start(settings);
    const RunResult run = scan("--stations 4 --timeout 300 --tries 1");
    EXPECT_THAT(run.out, MatchesRegex("4: no answer within 300 ms; unit [0-9]+ answered in its place\n.*"));
    EXPECT_EQ(run.status, 1);
}

TEST_F(PlcpanelScan, TellsThatAStationAnsweredLater)
{
    simulator::Settings settings;
    settings.delayMs = 150;
    start(settings);
    const RunResult run = scan("--stations 4 --timeout 100");
    EXPECT_THAT(run.out, StartsWith("4: no answer within 100 ms; it answered later: try a longer --timeout "
                                    "(asked 2 times)\n"));
    EXPECT_EQ(run.status, 1);
}

TEST_F(PlcpanelScan, TellsStationsThatAGatewayDoesNotReach)
{
    ScriptedController gateway;
    std::thread script([&gateway] {
        gateway.acceptAndReceive();
        gateway.send("0001 0000 0003 05 83 0B");
        gateway.receive();
        gateway.send("0002 0000 0003 06 83 0B");
        gateway.isClosedByTheOtherSide();
    });
    const RunResult run = plcpanel(arguments("--stations 5-6 --timeout 5000", gateway.port()));
    script.join();
    EXPECT_THAT(run.out, StartsWith("5-6: exception 11, gateway target device failed to respond\n"));
    EXPECT_THAT(run.out, HasSubstr(": 0 answered, a gateway did not reach 2\n"));
    EXPECT_EQ(run.status, 1);
}

TEST_F(PlcpanelScan, TellsAReplyThatIsNoAnswer)
{
    ScriptedController odd;
    std::thread script([&odd] {
        odd.acceptAndReceive();
        odd.send("0001 0000 0007 05 03 04 0001 0002");
        odd.receive(11);
        odd.send("0002 0000 0003 05 AB 01");
        odd.receive(8);
        odd.send("0003 0000 0008 05 11 05 01 FF 41 42 43");
        odd.isClosedByTheOtherSide();
    });
    const RunResult run = plcpanel(arguments("--stations 5 --timeout 5000", odd.port()));
    script.join();
    EXPECT_THAT(run.out, HasSubstr("answers, but its reply has the wrong length; ..ABC (function 17)\n"));
    EXPECT_EQ(run.status, 0);
}

TEST_F(PlcpanelScan, ConnectsAnewWhereAStationCostsTheConnection)
{
    ScriptedController gateway;
    std::thread script([&gateway] {
        gateway.acceptAndReceive();
        gateway.close();
        gateway.acceptAndReceive();
        gateway.send("0001 0000 0005 06 03 02 0007");
        gateway.receive(11);
        gateway.close();
        gateway.acceptAndReceive(8);
        gateway.send("0001 0000 0003 06 91 01");
        gateway.isClosedByTheOtherSide();
    });
    const RunResult run = plcpanel(arguments("--stations 5-6 --tries 1 --timeout 5000", gateway.port()));
    script.join();
    EXPECT_THAT(run.out, MatchesRegex("STATION +TIME  ANSWER\n +6 +[0-9.]+ ms  answers\n5: the controller "
                                      "closed the connection .*"));
}

TEST_F(PlcpanelScan, EndsAtOnceWhereNothingListens)
{
    start();
    controller->stop();
    const RunResult run = scan("--stations 1-100 --timeout 50 --tries 1");
    EXPECT_THAT(run.errors, HasSubstr("cannot be reached"));
    EXPECT_THAT(run.out, HasSubstr("2-100: not asked\n"));
    EXPECT_THAT(run.out, HasSubstr(": 0 answered, 100 not asked\n"));
    EXPECT_EQ(run.status, 4);
    EXPECT_EQ(scan("9 --timeout 50 --retries 0").status, 4);
}

TEST_F(PlcpanelScan, EndsCleanlyOnCtrlC)
{
    startWith({1});
    Plcpanel running(arguments("--stations 1-20 --timeout 60000", controller->port()));
    ASSERT_TRUE(running.eventually([](const std::string& out) { return out.find("answers\n") != out.npos; }));
    QElapsedTimer clock;
    clock.start();
    const RunResult run = running.endBy(SIGINT);
    EXPECT_LT(clock.elapsed(), 20000);
    EXPECT_THAT(run.out, HasSubstr("2: the scan was ended before\n3-20: not asked\n20 stations in "));
    EXPECT_THAT(run.out, HasSubstr(": 1 answered, 19 not asked\n"));
    EXPECT_EQ(run.status, 1);
}

TEST_F(PlcpanelScan, FindsTheElementsThatCanBeRead)
{
    simulator::Settings settings;
    settings.refused = {{150, 159}};
    start(settings);
    const RunResult run = scan("9:100-199 --station 3");
    EXPECT_THAT(run.out,
                MatchesRegex("Station 3, 9:100 to 9:199:\n"
                             "  9:100 to 9:149   50  can be read\n"
                             "  9:150 to 9:159   10  refused: exception 2, illegal data address\n"
                             "  9:160 to 9:199   40  can be read\n"
                             "100 elements, [0-9]+ reads in [0-9.]+ s: 90 can be read, 10 refused\n"));
    EXPECT_EQ(run.status, 0);
}

TEST_F(PlcpanelScan, TakesAWholeAreaInTheAddressesOfThatArea)
{
    start();
    const RunResult run = scan("0");
    EXPECT_THAT(run.out, StartsWith("Station 1, 0:0 to 0:3777:\n  0:0 to 0:3777     2048  can be read\n"));
    EXPECT_EQ(run.status, 0);
}

TEST_F(PlcpanelScan, AsksTheStationsThatAnsweredForElements)
{
    startWith({2});
    const RunResult run = scan("9:00x10 --stations 1-2 --timeout 300 --tries 1");
    EXPECT_THAT(run.out, HasSubstr("1 answered"));
    EXPECT_THAT(run.out, HasSubstr("Station 2, 9:0 to 9:9:\n"));
    EXPECT_THAT(run.out, Not(HasSubstr("Station 1")));
    EXPECT_EQ(run.status, 0);
}

TEST_F(PlcpanelScan, TellsElementsThatNobodyAnswersForAsNotKnown)
{
    startWith({});
    const RunResult run = scan("9:0-999 --timeout 20 --retries 0");
    EXPECT_THAT(run.out, HasSubstr("no reply within 20 ms\n"));
    EXPECT_THAT(run.out, HasSubstr("not asked: the 2 requests before were not answered\n"));
    EXPECT_THAT(run.out, HasSubstr(": 0 can be read, 1000 not known\n"));
    EXPECT_EQ(run.status, 1);
}

TEST_F(PlcpanelScan, TellsTheElementsThatItKnowsOnCtrlC)
{
    simulator::Settings settings;
    settings.refused = {{100, 65535}};
    start(settings);
    Plcpanel running(arguments("9 2 --gap 5", controller->port()));
    ASSERT_TRUE(
        running.eventually([](const std::string& out) { return out.find("can be read\n") != out.npos; }));
    const RunResult run = running.endBy(SIGINT);
    EXPECT_THAT(run.out, HasSubstr("  9:0 to 9:99           100  can be read\n"));
    EXPECT_THAT(run.out, HasSubstr("not asked: it was ended before\n"));
    EXPECT_THAT(run.out, HasSubstr(": 100 can be read, "));
    EXPECT_THAT(run.out, Not(HasSubstr("2:0")));
    EXPECT_EQ(run.status, 1);
}

TEST_F(PlcpanelScan, NeverWrites)
{
    start();
    EXPECT_EQ(scan("9:0-99 2:0-99 8:1.0x16 14:200x4 --stations 1-3 --timeout 5000").status, 0);
    EXPECT_THAT(functions, IsSubsetOf({1, 3, 17, 43}));
}

TEST_F(PlcpanelScan, PrintsJson)
{
    startWith({2});
    const RunResult run = scan("2:0-9 --stations 1-2 --timeout 300 --tries 1 --json");
    std::vector<QJsonObject> objects;
    for (const QByteArray& line : QByteArray::fromStdString(run.out).split('\n'))
        if (!line.isEmpty())
            objects.push_back(QJsonDocument::fromJson(line).object());
    ASSERT_EQ(objects.size(), 5u) << run.out;
    EXPECT_EQ(objects[0].value(QLatin1String("answer")).toString(), QStringLiteral("none"));
    EXPECT_EQ(objects[1].value(QLatin1String("answer")).toString(), QStringLiteral("values"));
    EXPECT_EQ(objects[1].value(QLatin1String("station")).toInt(), 2);
    EXPECT_EQ(objects[2].value(QLatin1String("summary")).toObject().value(QLatin1String("answered")).toInt(),
              1);
    EXPECT_EQ(objects[3].value(QLatin1String("answer")).toString(), QStringLiteral("given"));
    EXPECT_EQ(objects[3].value(QLatin1String("to")).toString(), QStringLiteral("9"));
    EXPECT_EQ(objects[4].value(QLatin1String("summary")).toObject().value(QLatin1String("given")).toInt(),
              10);
}

TEST_F(PlcpanelScan, SpeaksRemoteFramesWithoutAskingWhoIsThere)
{
    simulator::Settings settings;
    settings.remote = true;
    settings.silentUnits = {2};
    controller = std::make_unique<simulator::SimulatedController>(settings);
    controller->start();
    const RunResult run = scan("9:0-9 --stations 1-2 --remote --timeout 300 --tries 1");
    EXPECT_THAT(run.out, HasSubstr("  answers\n2: no answer within 300 ms\n"));
    EXPECT_THAT(run.out, HasSubstr("  9:0 to 9:9  10  can be read\n"));
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(controller->requests(), 3u);
}

TEST_F(PlcpanelScan, IsTracedAndCapturedLikeOtherCommands)
{
    start();
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("scan.jsonl"));
    const RunResult run = plcpanel(arguments("--stations 1 --trace --timeout 5000", controller->port()) +
                                   QStringList{QStringLiteral("--capture"), file});
    EXPECT_THAT(run.errors, HasSubstr("unit 1: read 1 register from 0"));
    EXPECT_THAT(run.errors, HasSubstr("unit 1: read the device's identity"));
    EXPECT_THAT(run.errors, HasSubstr("unit 1: report the server's identity"));
    EXPECT_EQ(plcpanel({QStringLiteral("replay"), file}).status, 0);
}

} // namespace
