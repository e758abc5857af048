// SPDX-License-Identifier: MIT
// plcpanel check as a process, against controllers that refuse addresses.

#include "panel/plcpanel_run.h"
#include "simulator/simulated_controller.h"

#include <gmock/gmock.h>

#include <QTemporaryFile>

namespace
{

using test::plcpanel;
using test::RunResult;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const char* const shortList = "name,area,address,station,count,type\n"
                              "lamp %3,9,480,,1,uint16\n"
                              "horn,9,495,,1,uint16\n"
                              "speed,9,600,,20,uint16\n"
                              "flag,0,17,,1,bit\n"
                              "counter,14,200,,2,uint32\n";

class PlcpanelCheck : public testing::Test
{
protected:
    void start(const std::vector<simulator::AddressRange>& refused)
    {
        simulator::Settings settings;
        settings.refused = refused;
        controller = std::make_unique<simulator::SimulatedController>(settings);
        controller->start();
    }

    RunResult check(const char* list, const QStringList& more = {})
    {
        QTemporaryFile file;
        EXPECT_TRUE(file.open());
        file.write(list);
        file.close();
        return plcpanel(QStringList{QStringLiteral("check"), QStringLiteral("--vars"), file.fileName(),
                                    QStringLiteral("--controller"),
                                    QStringLiteral("127.0.0.1:%1").arg(controller->port())} +
                        more);
    }

    std::unique_ptr<simulator::SimulatedController> controller;
};

TEST_F(PlcpanelCheck, OfAGoodListReadsEachBlockOnce)
{
    start({});
    const RunResult run = check(shortList);
    EXPECT_EQ(run.out, "5 variables in 4 blocks, checked with 4 reads: 5 can be read\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(controller->requests(), 4u);
}

TEST_F(PlcpanelCheck, NamesTheVariableAtFaultWithTheException)
{
    start({{610, 610}});
    const RunResult run = check(shortList);
    EXPECT_THAT(run.out, StartsWith("REFUSED    speed (9:600x20, line 4): exception 2, illegal data address, "
                                    "from 9:610 on\n"));
    EXPECT_THAT(run.out, HasSubstr(": 4 can be read, 1 refused\n"));
    EXPECT_EQ(run.status, 3);
}

TEST_F(PlcpanelCheck, TellsARefusedGapWithTheBlockSizeThatAvoidsIt)
{
    start({{485, 485}});
    const RunResult run = check(shortList);
    EXPECT_THAT(
        run.out,
        StartsWith("GAP        block 9:480x16: exception 2, illegal data address. Every variable of it is "
                   "given, but not all at once: the block spans addresses that the controller does not "
                   "have, among 9:481x14, between lamp %3 (9:480, line 2) and horn (9:495, line 3)\n"
                   "REMEDY     smaller blocks: --max-block 15 "));
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(check(shortList, {QStringLiteral("--max-block"), QStringLiteral("15")}).status, 0);
}

TEST_F(PlcpanelCheck, TellsThatNoBlockSizeKeepsBitsApartThatAreNear)
{
    start({{12, 12}});
    const RunResult run = check("name,area,address,station,count,type\na,2,10,,1,bit\nb,2,14,,1,bit\n");
    EXPECT_THAT(run.out, HasSubstr("GAP        block 2:10x5: "));
    EXPECT_THAT(run.out, HasSubstr("REMEDY     no --max-block keeps these variables apart"));
}

TEST_F(PlcpanelCheck, TellsAListWhoseBlocksBreakALimitAndAsksNothing)
{
    start({});
    const RunResult run = check("name,area,address,station,count,type\nlong,14,200,,90,uint32\n",
                                {QStringLiteral("--max-block"), QStringLiteral("100")});
    EXPECT_THAT(run.out,
                StartsWith("LIMIT      --max-block 100: blocks of 100 words would read more than the 125 "
                           "registers that Modbus allows at once"));
    EXPECT_THAT(run.out,
                HasSubstr("block 14:200x90 reads 180 at once, 125 are allowed: long (14:200x90, line 2)\n"));
    EXPECT_EQ(run.status, 5);
    EXPECT_EQ(controller->requests(), 0u);
}

TEST_F(PlcpanelCheck, BlamesASilentStationOnNoVariableAndChecksTheOthers)
{
    start({{600, 600}});
    controller->setSilent(7, true);
    const RunResult run =
        check("name,area,address,station,count,type\na,9,1,7,1,uint16\nb,9,600,2,1,uint16\n",
              {QStringLiteral("--multi-station"), QStringLiteral("--timeout"), QStringLiteral("50"),
               QStringLiteral("--retries"), QStringLiteral("1")});
    EXPECT_THAT(run.out, HasSubstr("UNCHECKED  block 9:1@7: no reply within 50 ms: a (9:1@7, line 2)\n"));
    EXPECT_THAT(run.out, HasSubstr("REFUSED    b (9:600@2, line 3): exception 2"));
    EXPECT_THAT(run.out, HasSubstr(": 0 can be read, 1 refused, 1 not checked\n"));
    EXPECT_EQ(run.status, 3);
}

TEST_F(PlcpanelCheck, OfASilentControllerIsIncomplete)
{
    start({});
    controller->setSilent(1, true);
    const RunResult run = check(shortList, {QStringLiteral("--timeout"), QStringLiteral("30"),
                                            QStringLiteral("--retries"), QStringLiteral("0")});
    EXPECT_THAT(run.out, Not(HasSubstr("REFUSED")));
    EXPECT_THAT(run.out,
                HasSubstr("station 1 gave no usable answer for the 2 blocks before and is asked no further"));
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(controller->requests(), 2u);
}

TEST_F(PlcpanelCheck, TellsThatTheControllerCannotBeReached)
{
    start({});
    controller->stop();
    const RunResult run = check(shortList, {QStringLiteral("--timeout"), QStringLiteral("50"),
                                            QStringLiteral("--retries"), QStringLiteral("0")});
    EXPECT_THAT(run.out, HasSubstr("UNCHECKED  and 1 block more\n"));
    EXPECT_THAT(run.errors, HasSubstr("cannot be reached"));
    EXPECT_EQ(run.status, 4);
}

TEST_F(PlcpanelCheck, PrintsJson)
{
    start({{610, 610}});
    const RunResult run = check(shortList, {QStringLiteral("--json")});
    const char* const expected =
        R"json({"elements":"9:600x20","finding":"refused","from":"9:610","variables":["speed (9:600x20, line 4)"],)json"
        R"json("words":"exception 2, illegal data address"}
{"summary":{"blocks":4,"blocksRefused":0,"maxBlock":63,"reads":8,"refused":1,"unchecked":0,"variables":5}}
)json";
    EXPECT_EQ(run.out, expected);
}

TEST_F(PlcpanelCheck, TakesVariablesFromTheCommandLineToo)
{
    start({{7, 7}});
    const RunResult run =
        plcpanel({QStringLiteral("check"), QStringLiteral("9:5"), QStringLiteral("9:6x3"),
                  QStringLiteral("--controller"), QStringLiteral("127.0.0.1:%1").arg(controller->port())});
    EXPECT_THAT(run.out, StartsWith("REFUSED    9:6x3: exception 2, illegal data address, from 9:7 on\n"));
    EXPECT_EQ(run.status, 3);
}

} // namespace
