// SPDX-License-Identifier: MIT
#include "simulator/reply_queue.h"

#include "simulator/loopback_client.h"

#include <gmock/gmock.h>

namespace
{

using simulator::Fault;
using simulator::FaultDraw;
using simulator::ReplyQueue;
using test::fromHex;
using test::toHex;
using testing::ElementsAre;

ReplyQueue::Time at(int ms)
{
    return ReplyQueue::Time(std::chrono::milliseconds(ms));
}

FaultDraw drawn(Fault fault, int lateMs = 100)
{
    return {fault, 0, lateMs};
}

// Everything due at this time, a string for each send.
std::vector<std::string> sendsAt(ReplyQueue& queue, int ms)
{
    std::vector<std::string> sends;
    for (auto bytes = queue.takeDue(at(ms)); !bytes.empty(); bytes = queue.takeDue(at(ms)))
        sends.push_back(toHex(bytes));
    return sends;
}

TEST(ReplyQueue, GivesRepliesAtOnceInTheirOrder)
{
    ReplyQueue queue;
    queue.add(fromHex("01 02"), drawn(Fault::None), at(0));
    queue.add(fromHex("03"), drawn(Fault::Cut), at(0));
    EXPECT_EQ(queue.pendingBytes(), 3u);
    EXPECT_EQ(queue.nextDue(), at(0));
    EXPECT_THAT(sendsAt(queue, 0), ElementsAre("01 02", "03"));
    EXPECT_EQ(queue.nextDue(), std::nullopt);
    EXPECT_EQ(queue.pendingBytes(), 0u);
}

TEST(ReplyQueue, KeepsALateReplyUntilItsTime)
{
    ReplyQueue queue;
    queue.add(fromHex("01"), drawn(Fault::Late), at(10));
    EXPECT_EQ(queue.nextDue(), at(110));
    EXPECT_EQ(queue.pendingBytes(), 1u);
    EXPECT_THAT(sendsAt(queue, 109), ElementsAre());
    EXPECT_THAT(sendsAt(queue, 110), ElementsAre("01"));
    EXPECT_EQ(queue.nextDue(), std::nullopt);
}

TEST(ReplyQueue, AnswersLaterRequestsBeforeALateReply)
{
    ReplyQueue queue;
    queue.add(fromHex("01"), drawn(Fault::Late), at(0));
    queue.add(fromHex("02"), drawn(Fault::None), at(10));
    EXPECT_THAT(sendsAt(queue, 10), ElementsAre("02"));
    EXPECT_THAT(sendsAt(queue, 100), ElementsAre("01"));
}

TEST(ReplyQueue, GivesSeveralLateRepliesInTheOrderOfTheirTimes)
{
    ReplyQueue queue;
    queue.add(fromHex("01"), drawn(Fault::Late, 100), at(0));
    queue.add(fromHex("02"), drawn(Fault::Late, 50), at(10));
    queue.add(fromHex("03"), drawn(Fault::Late, 100), at(0));
    EXPECT_THAT(sendsAt(queue, 200), ElementsAre("02", "01", "03"));
}

TEST(ReplyQueue, SendsALateReplyThatIsDueBeforeANewOne)
{
    ReplyQueue queue;
    queue.add(fromHex("01"), drawn(Fault::Late), at(0));
    queue.add(fromHex("02"), drawn(Fault::None), at(150));
    EXPECT_THAT(sendsAt(queue, 150), ElementsAre("01", "02"));
}

TEST(ReplyQueue, SplitsAReplyIntoSendsOfOneByteWithPauses)
{
    ReplyQueue queue;
    queue.add(fromHex("01 02 03"), drawn(Fault::Split), at(0));
    EXPECT_THAT(sendsAt(queue, 0), ElementsAre("01"));
    EXPECT_GT(*queue.nextDue(), at(0));
    EXPECT_THAT(sendsAt(queue, 10), ElementsAre("02", "03"));
}

TEST(ReplyQueue, PutsNothingBetweenTheBytesOfASplitReply)
{
    ReplyQueue queue;
    queue.add(fromHex("01 02 03"), drawn(Fault::Split), at(0));
    queue.add(fromHex("04"), drawn(Fault::None), at(0));
    queue.add(fromHex("05 06"), drawn(Fault::Split), at(0));
    EXPECT_THAT(sendsAt(queue, 0), ElementsAre("01"));
    EXPECT_THAT(sendsAt(queue, 10), ElementsAre("02", "03", "04", "05", "06"));
}

TEST(ReplyQueue, GluesAReplyToTheNextInOneSend)
{
    ReplyQueue queue;
    queue.add(fromHex("01 02"), drawn(Fault::Glued), at(0));
    EXPECT_THAT(sendsAt(queue, 50), ElementsAre());
    queue.add(fromHex("03"), drawn(Fault::None), at(60));
    EXPECT_THAT(sendsAt(queue, 60), ElementsAre("01 02 03"));
}

TEST(ReplyQueue, SendsAGluedReplyAloneWhenNoOtherComes)
{
    ReplyQueue queue;
    queue.add(fromHex("01 02"), drawn(Fault::Glued), at(0));
    EXPECT_EQ(queue.nextDue(), at(100));
    EXPECT_EQ(queue.pendingBytes(), 2u);
    EXPECT_THAT(sendsAt(queue, 100), ElementsAre("01 02"));
    EXPECT_EQ(queue.nextDue(), std::nullopt);
}

TEST(ReplyQueue, GluesRepliesInPairsWhenAllAreToBeGlued)
{
    ReplyQueue queue;
    for (const char* reply : {"01", "02", "03", "04"})
        queue.add(fromHex(reply), drawn(Fault::Glued), at(0));
    EXPECT_THAT(sendsAt(queue, 0), ElementsAre("01 02", "03 04"));
}

TEST(ReplyQueue, GluesToALateReplyToo)
{
    ReplyQueue queue;
    queue.add(fromHex("01"), drawn(Fault::Late, 50), at(0));
    queue.add(fromHex("02"), drawn(Fault::Glued, 100), at(0));
    EXPECT_THAT(sendsAt(queue, 50), ElementsAre("02 01"));
}

TEST(ReplyQueue, DoesNotSplitWhatIsHeld)
{
    ReplyQueue queue;
    queue.add(fromHex("01 02"), drawn(Fault::Glued), at(0));
    queue.add(fromHex("03 04"), drawn(Fault::Split), at(0));
    EXPECT_THAT(sendsAt(queue, 10), ElementsAre("01 02", "03", "04"));
}

TEST(ReplyQueue, DelaysAReplyAndThoseBehindIt)
{
    ReplyQueue queue;
    queue.add(fromHex("01"), drawn(Fault::Delay, 100), at(0));
    queue.add(fromHex("02"), drawn(Fault::None), at(10));
    EXPECT_THAT(sendsAt(queue, 99), ElementsAre());
    EXPECT_THAT(sendsAt(queue, 100), ElementsAre("01", "02"));
}

TEST(ReplyQueue, DelaysEveryReplyWhenToldTo)
{
    ReplyQueue queue(std::chrono::milliseconds(20));
    queue.add(fromHex("01"), drawn(Fault::None), at(0));
    queue.add(fromHex("02"), drawn(Fault::Delay, 100), at(5));
    queue.add(fromHex("03"), drawn(Fault::Late, 200), at(5));
    EXPECT_THAT(sendsAt(queue, 19), ElementsAre());
    EXPECT_THAT(sendsAt(queue, 20), ElementsAre("01"));
    EXPECT_THAT(sendsAt(queue, 124), ElementsAre());
    EXPECT_THAT(sendsAt(queue, 125), ElementsAre("02"));
    EXPECT_THAT(sendsAt(queue, 224), ElementsAre());
    EXPECT_THAT(sendsAt(queue, 225), ElementsAre("03"));
    EXPECT_EQ(queue.pendingBytes(), 0u);
}

TEST(ReplyQueue, LetsPassWhatNothingDelaysWhileNothingWaits)
{
    ReplyQueue queue;
    for (const Fault fault : {Fault::None, Fault::Doubled, Fault::CloseAfterReply})
        EXPECT_TRUE(queue.passes(drawn(fault)));
    for (const Fault fault : {Fault::Late, Fault::Glued, Fault::Split, Fault::Delay})
        EXPECT_FALSE(queue.passes(drawn(fault)));
    EXPECT_FALSE(ReplyQueue(std::chrono::milliseconds(1)).passes(drawn(Fault::None)));
    queue.add(fromHex("01"), drawn(Fault::Late), at(0));
    EXPECT_FALSE(queue.passes(drawn(Fault::None)));
}

TEST(ReplyQueue, ForgetsLateRepliesOnly)
{
    ReplyQueue queue;
    queue.add(fromHex("01 02"), drawn(Fault::Late), at(0));
    queue.add(fromHex("03"), drawn(Fault::None), at(0));
    queue.forgetLate();
    EXPECT_EQ(queue.pendingBytes(), 1u);
    EXPECT_THAT(sendsAt(queue, 1000), ElementsAre("03"));
}

} // namespace
