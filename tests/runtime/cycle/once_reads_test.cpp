// SPDX-License-Identifier: MIT
// One-shot reads in the list of a driver that does what the test says.
#include "runtime/cycle/once_reads.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

int listSize = 0; // of the driver
int taken = 0;    // requests that the driver was given

int queueInDriver(RW_VAR* request, int)
{
    if (request->count > 0) {
        ++listSize;
        ++taken;
    }
    return listSize;
}

unsigned int sevens(int, int, QString*, int, QByteArray* bytes, int count)
{
    *bytes = QByteArray();
    for (int word = 0; word < count; ++word)
        bytes->append('\7').append('\0');
    return 1;
}

class OnceReadsTest : public testing::Test
{
protected:
    OnceReadsTest()
    {
        listSize = 0;
        taken = 0;
        calls.AddListOnceReadVar = queueInDriver;
        calls.GetRegisterData = sevens;
    }

    Pending<ReadOutcome> read(int element, int count = 1)
    {
        Variable words;
        words.area = 9;
        words.element = element;
        words.count = count;
        words.station = 1;
        const Pending<ReadOutcome> pending = reads.add(words, ReadDone());
        reads.feed({}, {});
        return pending;
    }

    /// The driver has taken the answer to its head.
    void answerHead()
    {
        --listSize;
        reads.answered();
    }

    DriverCalls calls;
    LaterCalls later;
    OnceReads reads{calls, Settings(), [](const Variable& asked) { return asked.count; }, later};
};

TEST_F(OnceReadsTest, AreDoneWithTheAnswerThatTheDriverReports)
{
    const auto first = read(0);
    reads.note(1, 1);
    answerHead();
    ASSERT_TRUE(first.done());
    EXPECT_TRUE(first.get().done);
    EXPECT_EQ(first.get().values, std::vector<quint32>{7});
    EXPECT_EQ(reads.doneReads(), 1);
    EXPECT_EQ(reads.waiting(), 0);
}

TEST_F(OnceReadsTest, FailWhenTheDriverReportsNoneOrAnother)
{
    const auto first = read(0);
    const auto second = read(1);
    const auto third = read(2);
    answerHead();
    EXPECT_EQ(first.get().failure.kind, FailureKind::NotReported);
    reads.note(1, 1);
    answerHead();
    EXPECT_EQ(second.get().failure.kind, FailureKind::NotReported);
    reads.note(3, 2);
    answerHead();
    EXPECT_EQ(third.get().failure.kind, FailureKind::NotReported) << "it was not answered well";
    EXPECT_EQ(reads.failedReads(), 3);
}

TEST_F(OnceReadsTest, AreKnownByTheirKeysInTheirOrder)
{
    const auto first = read(0);
    const auto second = read(1);
    reads.note(2, 1);
    answerHead();
    EXPECT_EQ(first.get().failure.kind, FailureKind::NotReported);
    reads.note(2, 1);
    answerHead();
    EXPECT_TRUE(second.get().done);
}

TEST_F(OnceReadsTest, OfSeveralRequestsAreWholeWithTheLast)
{
    const auto pending = read(0, 100); // 63 words and 37
    EXPECT_EQ(taken, 2);
    EXPECT_EQ(reads.waiting(), 2);
    reads.note(1, 1);
    answerHead();
    EXPECT_FALSE(pending.done());
    reads.note(2, 1);
    answerHead();
    ASSERT_TRUE(pending.done());
    EXPECT_EQ(pending.get().values.size(), 100u);
}

TEST_F(OnceReadsTest, AreFewAtATimeInTheDriver)
{
    for (int element = 0; element < 20; ++element)
        read(element);
    EXPECT_LT(taken, 20);
    EXPECT_TRUE(reads.hasBacklog());
    EXPECT_EQ(reads.waiting(), 20);
    reads.stop();
    EXPECT_EQ(reads.waiting(), 0);
    EXPECT_EQ(reads.failedReads(), 20);
}

TEST_F(OnceReadsTest, AreOutOfStepWithAListOfAnotherLength)
{
    const auto first = read(0);
    listSize = 5;
    reads.answered();
    EXPECT_EQ(first.get().failure.kind, FailureKind::OutOfStep);
}

TEST_F(OnceReadsTest, ThatFallWithAnotherAreQueuedAgainInTheirOrder)
{
    const auto first = read(0);
    const auto second = read(1);
    const auto third = read(2);
    listSize = 0; // all of them have left the driver's list
    reads.givenUp(true, 1, Failure(FailureKind::NoReply));
    EXPECT_EQ(first.get().failure.kind, FailureKind::NoReply);
    EXPECT_FALSE(second.done() || third.done());
    EXPECT_EQ(reads.queuedAgain(), 2);
    reads.feed({}, {});
    reads.note(2, 1);
    answerHead();
    EXPECT_TRUE(second.get().done);
    reads.note(3, 1);
    answerHead();
    EXPECT_TRUE(third.get().done);
}

TEST_F(OnceReadsTest, WaitWhileTheirStationIsHeldAndFailWhenItIsOff)
{
    Variable word;
    word.station = 4;
    const auto held = reads.add(word, ReadDone());
    reads.feed({}, {4});
    EXPECT_EQ(taken, 0);
    EXPECT_FALSE(held.done());
    reads.feed({4}, {});
    EXPECT_EQ(held.get().failure.kind, FailureKind::StationOff);
}

} // namespace
