// SPDX-License-Identifier: MIT
// What clocks do to the link: machines that are up for weeks, so that milliseconds leave 31 or 32 bits, and machines
// that are suspended while a request is on its way.
#include "runtime/link/scripted_link.h"

#include <gmock/gmock.h>

namespace
{

using namespace plc;
using testing::ElementsAre;

const int timeoutMs = 100;
const qint64 hourMs = 3600 * 1000;

const QByteArray readRegister5 = QByteArray::fromHex("000000000006010300050001");
const QByteArray register5Is1234 = QByteArray::fromHex("0000000000050103021234");
const char* const firstReply = "0001 0000 0005 01 03 02 1234";
const char* const secondReply = "0002 0000 0005 01 03 02 1234";

class ClockLeaps : public testing::Test
{
protected:
    LinkExchange askWhile(const Script& script)
    {
        controller.onFrame(script);
        return link.exchange(readRegister5, true);
    }

    ScriptedLink scripted{timeoutMs};
    Link& link = scripted.link;
    VirtualTime& time = scripted.time;
    ScriptedTransport& controller = scripted.controller();
};

/// The parameter is where milliseconds leave their bits.
class ClockWraps : public ClockLeaps, public testing::WithParamInterface<qint64>
{
};

TEST_P(ClockWraps, WhileAReplyIsOnItsWayAndItIsTakenInTime)
{
    time.leapTo(GetParam() - 3);
    const LinkExchange exchange = askWhile(Script().after(7).send(firstReply));
    EXPECT_EQ(exchange.reply, register5Is1234);
    EXPECT_EQ(exchange.replyMicroseconds, 7000);
    EXPECT_EQ(exchange.durationMs, 7);
}

TEST_P(ClockWraps, DuringSilenceThatLastsTheTimeOutAllTheSame)
{
    time.leapTo(GetParam() - 40);
    const qint64 begin = time.elapsedMs();
    const LinkExchange exchange = askWhile(Script());
    EXPECT_TRUE(exchange.reply.isEmpty());
    EXPECT_EQ(exchange.durationMs, timeoutMs);
    EXPECT_EQ(time.elapsedMs() - begin, timeoutMs);
    EXPECT_EQ(askWhile(Script().send(secondReply)).reply, register5Is1234);
}

TEST_P(ClockWraps, BetweenAttemptsToConnectThatKeepTheirPauses)
{
    time.leapTo(GetParam() - 150);
    const qint64 begin = time.elapsedMs();
    controller.refuseConnections(true);
    for (int i = 0; i < 10; ++i)
        link.exchange(readRegister5, true);
    std::vector<qint64> attempts;
    for (const qint64 attempt : controller.attempts())
        attempts.push_back(attempt - begin);
    EXPECT_THAT(attempts, ElementsAre(0, 100, 300, 700));
}

TEST_P(ClockWraps, WithoutTellingAWrongAgeOfTheConnection)
{
    time.leapTo(GetParam() - 30);
    askWhile(Script().send(firstReply));
    time.leap(50);
    EXPECT_EQ(link.state().sinceMs, 50);
    time.leap(50 * 24 * hourMs); // longer than 32 bits of milliseconds
    EXPECT_EQ(link.state().sinceMs, 50 + 50 * 24 * hourMs);
}

INSTANTIATE_TEST_SUITE_P(Milliseconds, ClockWraps,
                         testing::Values(qint64(1) << 31, qint64(1) << 32, (qint64(1) << 53) / 1000000),
                         [](const auto& wrap) { return "At" + std::to_string(wrap.param); });

TEST_F(ClockLeaps, OfAnHourEndTheWaitForAReplyAndTheNextRequestIsServed)
{
    const LinkExchange lost = askWhile(Script().after(10).act([this] { time.leap(hourMs); }));
    EXPECT_TRUE(lost.sent);
    EXPECT_TRUE(lost.reply.isEmpty());
    EXPECT_EQ(askWhile(Script().after(5).send(secondReply)).reply, register5Is1234);
}

TEST_F(ClockLeaps, OfAnHourDoNotLoseAReplyThatCameMeanwhile)
{
    const LinkExchange exchange =
        askWhile(Script().after(10).act([this] { time.leap(hourMs); }).send(firstReply));
    EXPECT_EQ(exchange.reply, register5Is1234);
    EXPECT_EQ(exchange.durationMs, 10 + hourMs);
}

TEST_F(ClockLeaps, OfAnHourWhileNothingIsConnectedAllowTheNextAttemptAtOnce)
{
    controller.refuseConnections(true);
    for (int i = 0; i < 20; ++i)
        link.exchange(readRegister5, true);
    const std::size_t attempts = controller.attempts().size();
    time.leap(hourMs);
    controller.refuseConnections(false);
    EXPECT_EQ(askWhile(Script().send(firstReply)).reply, register5Is1234);
    EXPECT_EQ(controller.attempts().size(), attempts + 1);
}

TEST_F(ClockLeaps, OfTheTimeToAReplyThatIsLateAfterwardsAnswerNoOtherRequest)
{
    askWhile(Script().after(10).act([this] { time.leap(hourMs); }).after(50).send(firstReply));
    const LinkExchange next = askWhile(Script().after(60).send(secondReply));
    EXPECT_EQ(next.reply, register5Is1234);
    EXPECT_EQ(next.sentFrame.left(2), QByteArray::fromHex("0002"));
}

} // namespace
