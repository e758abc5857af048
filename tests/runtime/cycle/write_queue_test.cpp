// SPDX-License-Identifier: MIT
// Writes in the list of a driver that does what the test says.
#include "runtime/cycle/write_queue.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace
{

using namespace plc;

int queueSize = 0; // of the driver
bool takes = true; // the driver takes a write
quint32 held = 0;  // what it holds of each element

int takeIntoDriver(QString*, int, QString*, unsigned int, QByteArray*, int, int, unsigned int)
{
    return takes ? ++queueSize : 0;
}

int sizeInDriver(RW_VAR*, int)
{
    return queueSize;
}

unsigned int heldInDriver(int, int, QString*, int, QByteArray* bytes, int count)
{
    *bytes = QByteArray();
    for (int word = 0; word < count; ++word)
        bytes->append(static_cast<char>(held)).append('\0');
    return 1;
}

class WriteQueueTest : public testing::Test
{
protected:
    WriteQueueTest()
    {
        queueSize = 0;
        takes = true;
        held = 7;
        calls.SetRegisterData = takeIntoDriver;
        calls.AddListWriteVar = sizeInDriver;
        calls.GetRegisterData = heldInDriver;
    }

    Pending<WriteOutcome> write(int element, quint32 value, int station = 1, int count = 1)
    {
        Variable words;
        words.area = 9;
        words.element = element;
        words.count = count;
        words.station = station;
        const std::vector<quint32> values(static_cast<std::size_t>(count), value);
        const Pending<WriteOutcome> pending = writes.add(words, values, WriteDone());
        writes.feed({}, {});
        return pending;
    }

    void answerHead()
    {
        --queueSize;
        writes.answered();
    }

    DriverCalls calls;
    LaterCalls later;
    std::vector<std::pair<int, bool>> ended; // element, and whether it is doubtful
    WriteQueue writes{
        calls, Settings(),
        [this](const Variable& elements, bool doubtful) { ended.emplace_back(elements.element, doubtful); },
        later};
};

using Ended = std::vector<std::pair<int, bool>>;

TEST_F(WriteQueueTest, AreConfirmedWithTheAnswerAndCertainWhereTheDriverHoldsTheirValue)
{
    const auto same = write(0, 7);
    const auto other = write(1, 8);
    answerHead();
    EXPECT_TRUE(same.get().confirmed);
    EXPECT_FALSE(other.done());
    EXPECT_EQ(writes.waiting(), 1);
    answerHead();
    EXPECT_TRUE(other.get().confirmed);
    EXPECT_EQ(ended, (Ended{{0, false}, {1, true}}));
    EXPECT_EQ(writes.confirmedWrites(), 2);
    EXPECT_EQ(writes.failedWrites(), 0);
}

TEST_F(WriteQueueTest, ToAllStationsAreDoubtfulAlwaysAndBroadcast)
{
    const auto toAll = write(0, 7, 0);
    answerHead();
    EXPECT_TRUE(toAll.get().broadcast);
    EXPECT_EQ(ended, (Ended{{0, true}}));
    const auto toOne = write(0, 7);
    answerHead();
    EXPECT_FALSE(toOne.get().broadcast);
}

TEST_F(WriteQueueTest, ThatTheDriverDoesNotTakeFail)
{
    takes = false;
    const auto refused = write(5, 7);
    ASSERT_TRUE(refused.done());
    EXPECT_EQ(refused.get().failure.kind, FailureKind::NotTaken);
    EXPECT_EQ(refused.get().failure.detail, QStringLiteral("9:5@1"));
    EXPECT_EQ(writes.failedWrites(), 1);
    takes = true;
    const auto next = write(6, 7);
    answerHead();
    EXPECT_TRUE(next.get().confirmed);
}

TEST_F(WriteQueueTest, OfSeveralRequestsAreConfirmedWithTheLast)
{
    const auto pending = write(0, 7, 1, 100); // 63 words and 37
    EXPECT_EQ(queueSize, 2);
    answerHead();
    EXPECT_FALSE(pending.done());
    answerHead();
    EXPECT_TRUE(pending.get().confirmed);
    EXPECT_EQ(pending.get().requests, 2);
    EXPECT_EQ(pending.get().requestsConfirmed, 2);
}

TEST_F(WriteQueueTest, ThatFallWithAnotherArePurged)
{
    const auto first = write(0, 7);
    const auto second = write(1, 7);
    queueSize = 0;
    writes.givenUp(true, 1, Failure(FailureKind::NoReply));
    EXPECT_EQ(first.get().failure.kind, FailureKind::NoReply);
    EXPECT_EQ(second.get().failure.kind, FailureKind::Purged);
    EXPECT_EQ(ended, (Ended{{0, true}, {1, true}}));
}

TEST_F(WriteQueueTest, WaitWhileTheirStationIsHeldAndFailWhenItIsOff)
{
    Variable word;
    word.station = 4;
    const auto waiting = writes.add(word, {7}, WriteDone());
    writes.feed({}, {4});
    EXPECT_TRUE(writes.hasBacklog());
    EXPECT_EQ(queueSize, 0);
    writes.feed({4}, {});
    EXPECT_EQ(waiting.get().failure.kind, FailureKind::StationOff);
    EXPECT_FALSE(writes.hasBacklog());
}

TEST_F(WriteQueueTest, AreKnownWhileTheyLast)
{
    Variable word;
    word.element = 5;
    word.station = 1;
    EXPECT_FALSE(writes.isWriting(word));
    write(5, 7);
    EXPECT_TRUE(writes.isWriting(word));
    word.element = 6;
    EXPECT_FALSE(writes.isWriting(word));
    writes.stop();
    word.element = 5;
    EXPECT_FALSE(writes.isWriting(word));
}

} // namespace
