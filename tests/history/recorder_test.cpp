// SPDX-License-Identifier: MIT
// Which samples a recorder makes of what a runtime tells.

#include "history/recorder.h"

#include <gmock/gmock.h>

namespace
{

using plc::CyclicValue;
using plc::LogSample;
using plc::RecordedVariable;
using plc::Recorder;
using plc::SampleState;
using plc::ValueState;
using testing::ElementsAre;

class RecorderTest : public testing::Test
{
protected:
    /// A word, 9:100, and three bits of a list, lamps.
    static std::vector<RecordedVariable> variables()
    {
        plc::ListedVariable lamps;
        lamps.name = QStringLiteral("lamps");
        lamps.type = plc::ValueType::Bit;
        lamps.count = 3;
        lamps.elements.area = 2;
        lamps.elements.count = 3;
        plc::Variable word;
        word.element = 100;
        return {{word, std::nullopt, std::nullopt}, {lamps.elements, lamps, std::nullopt}};
    }

    std::unique_ptr<Recorder> recorder(Recorder::What what = Recorder::What::Changes)
    {
        return std::make_unique<Recorder>(
            variables(), what,
            [this](const LogSample& sample) {
                if (room == 0)
                    return false;
                --room;
                samples.push_back(QStringLiteral("%1 %2 %3 %4")
                                      .arg(sample.timeMs)
                                      .arg(sample.series)
                                      .arg(sample.text, sampleStateWord(sample.state))
                                      .toStdString());
                return true;
            },
            [this] { return nowMs; });
    }

    static CyclicValue value(std::vector<quint32> values, qint64 readAtMs,
                             ValueState state = ValueState::Fresh)
    {
        CyclicValue value;
        value.state = state;
        value.values = std::move(values);
        value.readAtMs = readAtMs;
        return value;
    }

    std::vector<std::string> samples;
    int room = 1000;
    qint64 nowMs = 500;
};

TEST_F(RecorderTest, HasASeriesForEachValue)
{
    std::vector<std::string> names;
    for (const plc::Series& series : plc::seriesOf(variables()))
        names.push_back(series.name.toStdString());
    EXPECT_THAT(names, ElementsAre("9:100", "lamps[0]", "lamps[1]", "lamps[2]"));
}

TEST_F(RecorderTest, WhatIsReadInPiecesKeepsItsNames)
{
    plc::Variable two = variables().at(1).elements;
    two.count = 2;
    plc::Variable one = two;
    one.element = 2;
    one.count = 1;
    std::vector<std::string> names;
    for (const plc::Series& series : plc::seriesOf(cutLike(variables().at(1), {two, one})))
        names.push_back(series.name.toStdString());
    EXPECT_THAT(names, ElementsAre("lamps[0]", "lamps[1]", "lamps[2]"));
    EXPECT_EQ(1u, cutLike(variables().at(0), {two}).size());
}

TEST_F(RecorderTest, GivesChangesWithTheTimeOfTheReply)
{
    const auto log = recorder();
    log->take(0, value({7}, 100));
    log->take(0, value({7}, 200));
    log->take(0, value({8}, 300));
    log->take(1, value({0, 1, 0}, 301));
    log->take(1, value({0, 1, 1}, 400));
    EXPECT_THAT(samples, ElementsAre("100 0 7 fresh", "300 0 8 fresh", "301 1 0 fresh", "301 2 1 fresh",
                                     "301 3 0 fresh", "400 3 1 fresh"));
}

TEST_F(RecorderTest, GivesEveryRefreshWhereThatIsWanted)
{
    const auto log = recorder(Recorder::What::Refreshes);
    log->take(0, value({7}, 100));
    log->take(0, value({7}, 100));
    log->take(0, value({7}, 200));
    EXPECT_THAT(samples, ElementsAre("100 0 7 fresh", "200 0 7 fresh"));
}

TEST_F(RecorderTest, SaysOnceThatAValueIsNotRead)
{
    const auto log = recorder();
    log->take(0, value({0}, -1, ValueState::NeverRead));
    log->take(0, value({7}, 100));
    log->take(0, value({7}, 100, ValueState::Stale));
    log->take(0, value({7}, 100, ValueState::Stale));
    log->take(0, value({7}, 100, ValueState::Failed));
    log->take(0, value({7}, 600));
    EXPECT_THAT(samples, ElementsAre("100 0 7 fresh", "500 0  stale", "500 0  failed", "600 0 7 fresh"));
}

TEST_F(RecorderTest, SaysThatAValueCouldNotBeReadFromTheBeginning)
{
    const auto log = recorder();
    CyclicValue unread = value({0}, -1, ValueState::NeverRead);
    log->take(0, unread);
    unread.failure = plc::Failure(plc::FailureKind::NotConnected);
    log->take(0, unread);
    EXPECT_THAT(samples, ElementsAre("500 0  failed"));
    EXPECT_EQ(1, log->failed());
    EXPECT_FALSE(log->hasAnswers());
}

TEST_F(RecorderTest, TakesAWrittenValueWhenTheControllerSaysIt)
{
    const auto log = recorder();
    log->take(0, value({7}, 100));
    log->take(0, value({9}, 100, ValueState::Unconfirmed));
    log->take(0, value({9}, 200));
    EXPECT_THAT(samples, ElementsAre("100 0 7 fresh", "200 0 9 fresh"));
}

TEST_F(RecorderTest, SaysWhereSamplesAreMissingAndGivesTheValueAgain)
{
    const auto log = recorder();
    log->take(0, value({7}, 100));
    room = 0;
    log->take(0, value({8}, 200));
    log->take(0, value({9}, 300));
    EXPECT_THAT(log->missed(), ElementsAre(0));
    room = 1000;
    log->take(0, value({9}, 300));
    EXPECT_THAT(samples, ElementsAre("100 0 7 fresh", "200 0  lost", "300 0 9 fresh"));
    EXPECT_THAT(log->missed(), ElementsAre());
}

TEST_F(RecorderTest, PassesOverAnAnswerFromBeforeTheLastOne)
{
    const auto log = recorder();
    log->take(0, value({8}, 200));
    log->take(0, value({7}, 100));
    EXPECT_THAT(samples, ElementsAre("200 0 8 fresh"));
}

TEST_F(RecorderTest, SaysAtItsEndThatNobodyLogsAnyMore)
{
    const auto log = recorder();
    log->take(0, value({7}, 100));
    log->end();
    EXPECT_THAT(samples, ElementsAre("100 0 7 fresh", "500 0  not logged"));
}

} // namespace
