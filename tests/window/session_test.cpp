// SPDX-License-Identifier: MIT
#include "runtime/cycle/exchange_record.h"
#include "simulator/simulated_controller.h"
#include "window/session/live_session.h"
#include "window/session/mailbox.h"

#include "support/built_files.h"
#include "support/controller_values.h"
#include "window/fake_source.h"
#include "window/until.h"

namespace
{

using plc::CyclicValue;
using plc::Mailbox;
using plc::ValueState;
using test::until;

CyclicValue valueIn(ValueState state, quint32 value)
{
    CyclicValue result;
    result.state = state;
    result.values = {value};
    result.readAtMs = 1000;
    return result;
}

TEST(AsListed, GivesAVariableThePlainTypeOfItsArea)
{
    const std::pair<int, plc::ValueType> rows[] = {
        {0, plc::ValueType::Bit},    {7, plc::ValueType::Bit},     {8, plc::ValueType::Bit},
        {9, plc::ValueType::Uint16}, {13, plc::ValueType::Uint16}, {14, plc::ValueType::Uint32},
    };
    for (const auto& [area, type] : rows) {
        plc::Variable variable;
        variable.area = area;
        EXPECT_EQ(type, plc::asListed(variable).type) << area;
    }
}

TEST(Mailbox, KeepsTheLastAnswerBesideALaterState)
{
    Mailbox mailbox(1);
    mailbox.putValue(0, valueIn(ValueState::Fresh, 7));
    mailbox.putValue(0, valueIn(ValueState::Unconfirmed, 99)); // what is being written
    const plc::Snapshot news = mailbox.take();
    ASSERT_EQ(1u, news.values.size());
    EXPECT_EQ(ValueState::Unconfirmed, news.values[0].state);
    EXPECT_TRUE(news.values[0].answered);
    EXPECT_EQ(std::vector<quint32>{7}, news.values[0].values);
    EXPECT_TRUE(mailbox.take().values.empty());
}

TEST(Mailbox, HandsOutSamplesOfWhatIsRecordedAlone)
{
    Mailbox mailbox(2);
    mailbox.setRecorded(1, true);
    for (const quint32 value : {1u, 2u, 3u}) {
        mailbox.putValue(0, valueIn(ValueState::Fresh, value));
        mailbox.putValue(1, valueIn(ValueState::Fresh, value));
    }
    mailbox.putValue(1, valueIn(ValueState::Unconfirmed, 9));
    mailbox.putValue(1, valueIn(ValueState::Stale, 9));
    const plc::Snapshot news = mailbox.take();
    EXPECT_EQ(2u, news.values.size());
    ASSERT_EQ(4u, news.samples.size());
    EXPECT_EQ(std::vector<quint32>{3}, news.samples[2].values);
    EXPECT_TRUE(news.samples[3].values.empty()) << "a gap";
}

TEST(Mailbox, DoesNotPileUpWhatNobodyTakes)
{
    Mailbox mailbox(1);
    mailbox.setRecorded(0, true);
    for (quint32 value = 0; value < Mailbox::mostSamples + 10; ++value)
        mailbox.putValue(0, valueIn(ValueState::Fresh, value));
    const plc::Snapshot news = mailbox.take();
    EXPECT_EQ(1u, news.values.size());
    EXPECT_EQ(Mailbox::mostSamples, news.samples.size());
}

class LiveSessionTest : public testing::Test
{
protected:
    LiveSessionTest()
    {
        controller.start();
        watched.settings.driverPath = QString::fromUtf8(builtDriver());
        watched.settings.port = controller.port();
        watched.settings.pollMs = 5;
        watched.variables = test::listed("word,9,100,,uint16,,,,,,\n");
    }

    void start()
    {
        session = std::make_unique<plc::LiveSession>(watched);
        session->start();
    }

    /// Takes snapshots until one of them fulfils \a condition.
    template <class Condition>
    bool comes(const Condition& condition)
    {
        return until([&] { return condition(session->take()); });
    }

    bool becomes(ValueState state)
    {
        return comes([state](const plc::Snapshot& news) {
            return !news.values.empty() && news.values.back().state == state;
        });
    }

    simulator::SimulatedController controller;
    plc::Watched watched;
    std::unique_ptr<plc::LiveSession> session;
};

TEST_F(LiveSessionTest, HandsOutWhatTheControllerAnswers)
{
    putIntoController(controller, 9, 100, 1234);
    start();
    EXPECT_TRUE(comes([](const plc::Snapshot& news) {
        return !news.values.empty() && news.values[0].values == std::vector<quint32>{1234};
    }));
    EXPECT_TRUE(comes([](const plc::Snapshot& news) { return !news.frames.empty(); }));
}

TEST_F(LiveSessionTest, TellsHowAWriteEnded)
{
    start();
    const quint64 number = session->write(0, {77});
    EXPECT_TRUE(comes([number](const plc::Snapshot& news) {
        return !news.writes.empty() && news.writes[0].number == number && news.writes[0].outcome.confirmed;
    }));
    EXPECT_EQ(77u, inController(controller, 9, 100));
}

TEST_F(LiveSessionTest, TellsOfAControllerThatFallsSilentAndComesBack)
{
    watched.settings.timeoutMs = 20;
    watched.settings.retryLimit = 0;
    start();
    EXPECT_TRUE(becomes(ValueState::Fresh));
    controller.setSilent(1, true);
    EXPECT_TRUE(becomes(ValueState::Failed));
    controller.setSilent(1, false);
    EXPECT_TRUE(becomes(ValueState::Fresh));
}

TEST_F(LiveSessionTest, ALookBringsAgesAndTheReport)
{
    start();
    EXPECT_TRUE(becomes(ValueState::Fresh));
    EXPECT_TRUE(until([this] {
        session->look({0});
        const plc::Snapshot news = session->take();
        return !news.values.empty() && news.report && news.report->link.connected;
    }));
}

TEST_F(LiveSessionTest, SaysWhyItCannotStart)
{
    watched.settings.driverPath = QStringLiteral("/nowhere/libplcdriver.so");
    session = std::make_unique<plc::LiveSession>(watched);
    QString words;
    QObject::connect(session.get(), &plc::Source::failed, [&words](const QString& why) { words = why; });
    session->start();
    EXPECT_TRUE(until([&words] { return words.contains(QLatin1String("/nowhere/libplcdriver.so")); }));
    session->write(0, {1});
    EXPECT_TRUE(comes([](const plc::Snapshot& news) {
        return !news.writes.empty() && news.writes[0].outcome.failure.kind == plc::FailureKind::NotRunning;
    }));
}

} // namespace
