// SPDX-License-Identifier: MIT
// Captured requests and replies through the driver.

#include "capture/capture_bytes.h"
#include "capture/replay.h"
#include "runtime/modbus/failure_words.h"
#include "support/built_files.h"
#include "support/hex.h"
#include "support/runtime_fixture.h"

#include <gmock/gmock.h>

namespace
{

using test::fromHex;

using namespace plc;
using testing::ElementsAre;
using testing::HasSubstr;

// Rebuilding requests

std::string rebuilt(const RequestRebuilder& rebuilder, const char* frame)
{
    const auto request = rebuilder.rebuild(fromHex(frame));
    if (!request)
        return "none";
    Variable elements = elementsOf({request->request, {}, 0});
    if (request->isWrite)
        elements.count = request->request.count;
    return (request->isWrite ? "write " : "read ") + variableText(elements).toStdString() + " " +
           request->request.data.toHex().toStdString();
}

TEST(RequestRebuilder, TakesTheAreaThatBeginsNearestInFront)
{
    const auto none = requestRebuilderFor(FrameFormat::ModbusTcp, {}, {});
    EXPECT_EQ(rebuilt(*none, "000100000006010300640002"), "read 9:100x2@1 ");
    EXPECT_EQ(rebuilt(*none, "000100000006010324000001"), "read 11:0@1 ");
    EXPECT_EQ(rebuilt(*none, "000100000006010330050001"), "read 10:5@1 ");
    EXPECT_EQ(rebuilt(*none, "0001000000060103F0000001"), "read 12:0@1 ");
    EXPECT_EQ(rebuilt(*none, "0001000000060103F4000001"), "read 13:0@1 ");
    EXPECT_EQ(rebuilt(*none, "0001000000060103F7020004"), "read 14:201x2@1 ");
    EXPECT_EQ(rebuilt(*none, "0001000000060103F7020003"), "read 13:770x3@1 ") << "no whole double words";
    EXPECT_EQ(rebuilt(*none, "0001000000060701F80F0001"), "read 0:17@7 ");
    EXPECT_EQ(rebuilt(*none, "00010000000607011F400001"), "read 7:8000@7 ");
}

TEST(RequestRebuilder, TakesTheAreaOfAVariableThatTheFrameTouches)
{
    const auto known = requestRebuilderFor(FrameFormat::ModbusTcp,
                                           {variable(9, 0x2400, 2, 1), variable(8, 0x3000 * 16, 1, 1)}, {});
    EXPECT_EQ(rebuilt(*known, "000100000006010324000004"), "read 9:9216x4@1 ");
    EXPECT_EQ(rebuilt(*known, "000100000006010330000001"), "read 9:12288@1 ")
        << "bits in words are read as words";
    EXPECT_EQ(rebuilt(*known, "000100000006020324000004"), "read 11:00x4@2 ") << "of another station";
}

TEST(RequestRebuilder, RebuildsWrites)
{
    const auto none = requestRebuilderFor(FrameFormat::ModbusTcp, {}, {});
    EXPECT_EQ(rebuilt(*none, "0001000000060106000A1234"), "write 9:10@1 3412");
    EXPECT_EQ(rebuilt(*none, "0001000000060105FC0FFF00"), "write 1:17@1 01");
    EXPECT_EQ(rebuilt(*none, "0001000000060105FC0F0000"), "write 1:17@1 00");
    EXPECT_EQ(rebuilt(*none, "00010000000B0110000A00020412345678"), "write 9:10x2@1 34127856");
    EXPECT_EQ(rebuilt(*none, "00010000000B0110F70000020412345678"), "write 14:200@1 34127856");
}

TEST(RequestRebuilder, RebuildsNothingOfOtherFunctionsAndOfRubbish)
{
    const auto none = requestRebuilderFor(FrameFormat::ModbusTcp, {}, {});
    EXPECT_EQ(rebuilt(*none, "000100000006010400640002"), "none");
    EXPECT_EQ(rebuilt(*none, "0001000000060103006400"), "none");
    EXPECT_EQ(rebuilt(*none, "000100000006010300640000"), "none");
    EXPECT_EQ(rebuilt(*none, ""), "none");
    const auto remote = requestRebuilderFor(FrameFormat::Remote, {}, {});
    EXPECT_FALSE(remote->rebuild(fromHex("16")));
    EXPECT_FALSE(remote->rebuild(fromHex("1600000001000F000000640002000000000000000086")));
}

// Playing

CaptureEntry entry(CaptureEntry::Kind kind, const char* bytes = "")
{
    CaptureEntry entry;
    entry.kind = kind;
    entry.bytes = fromHex(bytes);
    return entry;
}

class ReplayOf : public testing::Test
{
protected:
    ReplayOf()
    {
        settings.driverPath = QString::fromUtf8(builtDriver());
        settings.retryLimit = 0;
    }

    void start(const std::vector<Variable>& variables)
    {
        replay = std::make_unique<Replay>(settings, variables);
    }
    void sent(const char* frame) { replay->play(entry(CaptureEntry::Request, frame)); }
    void came(const char* frame) { replay->play(entry(CaptureEntry::Reply, frame)); }
    void happened(CaptureEntry::Kind kind) { replay->play(entry(kind)); }
    CyclicValue value(std::size_t index = 0) { return replay->value(index); }

    Settings settings;
    std::unique_ptr<Replay> replay;
};

const char* const read100 = "000100000006010300640002";
const char* const values100 = "0001000000070103040007FFFF";

TEST_F(ReplayOf, AGoodReplyGivesTheValue)
{
    start({variable(9, 100, 2, 1), variable(9, 200, 1, 1)});
    sent(read100);
    came(values100);
    EXPECT_THAT(value().values, ElementsAre(7u, 0xFFFFu));
    EXPECT_EQ(value().state, ValueState::Fresh);
    EXPECT_EQ(value(1).state, ValueState::NeverRead);
    EXPECT_EQ(replay->counts().good, 1);
}

TEST_F(ReplayOf, ARefusalFailsTheValueInTheSameWordsAsLive)
{
    start({variable(9, 100, 2, 1)});
    sent(read100);
    came(values100);
    sent("000200000006010300640002");
    came("000200000003018302");
    EXPECT_EQ(value().state, ValueState::Failed);
    EXPECT_EQ(value().failure.code, 71);
    EXPECT_EQ(failureWords(value().failure),
              QStringLiteral("the controller refused it: exception 2, illegal data address"));
    EXPECT_THAT(value().values, ElementsAre(7u, 0xFFFFu));
}

TEST_F(ReplayOf, ARequestFailsOnlyAfterTheRetriesThatTheDriverHas)
{
    settings.retryLimit = 1;
    start({variable(9, 100, 2, 1)});
    sent(read100);
    happened(CaptureEntry::TimedOut);
    EXPECT_EQ(value().failure.code, 0);
    sent("000200000006010300640002");
    happened(CaptureEntry::TimedOut);
    EXPECT_EQ(value().failure.code, 41);
    EXPECT_EQ(failureWords(value().failure), QStringLiteral("no reply within 300 ms"));
    EXPECT_EQ(replay->counts().retried, 1);
    EXPECT_EQ(replay->counts().failed, 1);
}

TEST_F(ReplayOf, ARequestForWhichThereWasNoConnectionFailsForThatReason)
{
    start({variable(9, 100, 2, 1)});
    CaptureEntry unsent = entry(CaptureEntry::NotSent, "000000000006010300640002");
    unsent.why = QStringLiteral("no connection to there");
    replay->play(unsent);
    EXPECT_EQ(value().failure.code, 41);
    EXPECT_EQ(failureWords(value().failure), QStringLiteral("no connection to there"));
}

TEST_F(ReplayOf, ALateReplyAnswersNothing)
{
    start({variable(9, 100, 2, 1)});
    sent(read100);
    happened(CaptureEntry::TimedOut);
    came(values100);
    sent("000200000006010300640002");
    came(values100);
    EXPECT_EQ(value().state, ValueState::NeverRead);
    EXPECT_EQ(replay->counts().dropped, 2);
}

TEST_F(ReplayOf, ARequestWithoutAReplyAtTheEndHasNotFailed)
{
    start({variable(9, 100, 2, 1)});
    sent(read100);
    EXPECT_EQ(value().failure.code, 0);
    EXPECT_EQ(replay->counts().failed, 0);
}

TEST_F(ReplayOf, AWriteChangesTheValueAsItDoesLive)
{
    start({variable(9, 100, 2, 1)});
    sent(read100);
    came(values100);
    sent("000200000006010600651234");
    came("000200000006010600651234");
    EXPECT_THAT(value().values, ElementsAre(7u, 0x1234u));
}

TEST_F(ReplayOf, StationsKeepTheirValuesApart)
{
    settings.multiStation = true;
    start({variable(9, 100, 2, 1), variable(9, 100, 2, 2)});
    sent(read100);
    came(values100);
    sent("000200000006020300640002");
    came("00020000000702030400090008");
    EXPECT_THAT(value(0).values, ElementsAre(7u, 0xFFFFu));
    EXPECT_THAT(value(1).values, ElementsAre(9u, 8u));
}

TEST_F(ReplayOf, OtherStationsAreLeftOutWhereOnlyOneIsServed)
{
    start({variable(9, 100, 2, 1)});
    sent("000100000006020300640002");
    came("00010000000702030400090008");
    EXPECT_EQ(value().state, ValueState::NeverRead);
    EXPECT_EQ(replay->counts().otherStations, 1);
}

TEST_F(ReplayOf, WhatTheDriverDoesNotBuildIsLeftOutAndHarmsNoValue)
{
    start({variable(9, 100, 2, 1)});
    sent(read100);
    came(values100);
    sent("000200000006010400640002");
    came("00020000000701040400010001");
    sent(
        "0003000000090110006400010299"); // one register, which the driver writes by another function; and cut
    EXPECT_EQ(replay->counts().notRebuilt, 2);
    EXPECT_EQ(value().state, ValueState::Fresh);
}

TEST_F(ReplayOf, EqualNumbersOfAnotherProgramDoNotMakeAReplyADoubledOne)
{
    start({variable(9, 100, 2, 1)});
    for (int time = 0; time < 3; ++time) {
        sent(read100);
        came(values100);
    }
    EXPECT_EQ(replay->counts().good, 3);
}

// Live and at the desk

class ReplayAndLive : public RuntimeFixture, public testing::WithParamInterface<bool>
{
};

TEST_P(ReplayAndLive, EndWithTheSameValuesAndStates)
{
    simulator::Settings spoilt;
    spoilt.remote = GetParam();
    spoilt.refused = {{500, 509}};
    spoilt.faults.late = 0.1;
    spoilt.faults.lateMs = 60;
    spoilt.faults.exception = 0.05;
    spoilt.faults.doubled = 0.05;
    useController(spoilt);
    settings.remoteMode = GetParam();
    settings.timeoutMs = 40;
    settings.retryLimit = 1;
    settings.pollMs = 250; // so that the runtime is stopped in a pause: a reply on its way would be
                                 // captured and not counted
    const std::vector<Variable> variables = {
        variable(0, 3, 20, 1), variable(3, 9, 40, 1),  variable(7, 0, 9, 1),   variable(8, 35, 4, 1),
        variable(9, 0, 70, 1), variable(9, 500, 1, 1), variable(12, 3, 10, 1), variable(14, 0, 9, 1)};
    for (const Variable& each : variables) {
        for (int index = 0; index < each.count; ++index)
            putIntoController(*controller, each.area, each.element + index, testValue(each.area, index));
    }
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("live.jsonl"));
    makeRuntime();
    for (const Variable& each : variables)
        runtime->addCyclic(each);
    runtime->setTap(std::make_shared<JsonCapture>(
        std::make_unique<CaptureFile>(path,
                                      [](const QString& words) { ADD_FAILURE() << words.toStdString(); }),
        settings, captureTime));
    runtime->start();
    EXPECT_TRUE(eventually([&] { return runtime->statistics().passes >= 3; }));
    runtime->stop();
    std::vector<CyclicValue> live;
    for (std::size_t index = 0; index < variables.size(); ++index)
        live.push_back(runtime->value(static_cast<int>(index)));
    const Statistics statistics = runtime->statistics();
    runtime.reset();

    Settings own = settings;
    own.staleAfterMs = 3600000;
    Replay replay(own, variables);
    const CaptureEnd end = CaptureReader(path).read({}, [&replay](const CaptureEntry& entry) {
        replay.play(entry);
        return true;
    });
    EXPECT_EQ(end.error, QString());
    for (std::size_t index = 0; index < variables.size(); ++index) {
        EXPECT_EQ(replay.value(index).values, live[index].values) << index;
        EXPECT_EQ(replay.value(index).failure.code, live[index].failure.code) << index;
        EXPECT_EQ(replay.value(index).failure, live[index].failure) << index;
    }
    EXPECT_EQ(replay.counts().good, statistics.good);
    EXPECT_EQ(replay.counts().notRebuilt, 0);
}

INSTANTIATE_TEST_SUITE_P(ModbusTcpAndRemoteFrames, ReplayAndLive, testing::Bool());

} // namespace
