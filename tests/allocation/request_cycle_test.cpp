// SPDX-License-Identifier: MIT
#include "allocation_sweep.h"

#include <chrono>
#include <future>

namespace
{

// The value of a queued write is filled up before its frame is built.
const std::string ZEROS_AT_LINE_ENDS = "( 00)+(?=\\n)";

// The word of the read in front of it gets into the frame of a write before it is filed; once more does no
// harm.
const std::string PATCHED_WORD = ".. ..(?=, 12 bytes, reply 12)";

class RequestCycleSweep : public AllocationSweep
{
protected:
    static int pollAgain() { return ComCommunication() != nullptr; }

    /// Polls, with \a prepare having queued something.
    void sweepPoll(const std::function<void()>& prepare, Leaves leaves = Leaves::ALL_OR_NOTHING)
    {
        Situation situation = {prepare, pollAgain};
        situation.leaves = leaves;
        situation.ignored = ZEROS_AT_LINE_ENDS;
        sweep(situation);
    }

    /// Answers frame number \a frame of those that \a prepare makes the driver send.
    void sweepReply(Needs needs, const std::function<void()>& prepare, int frame = 1)
    {
        QByteArray reply;
        Situation situation = {[&, frame] {
                                   prepare();
                                   for (int earlier = 1; earlier < frame; ++earlier)
                                       cycle();
                                   ComCommunication();
                                   reply = QByteArray(PLC_driver.protocolList.at(0).replyLength, '\x5A');
                               },
                               [&reply] { return DataCom(&reply, reply.size())->result; }, PLC_RETRYING};
        situation.leaves = Leaves::FINISHED_ELEMENTS;
        situation.ignored = PATCHED_WORD;
        situation.needs = needs;
        sweep(situation);
    }

    /// As above, of a reply that never comes.
    void sweepTimeOut(const std::function<void()>& prepare)
    {
        Situation situation = {[&prepare] {
                                   prepare();
                                   ComCommunication();
                               },
                               [] { return DataCom(nullptr, 0)->result; }};
        situation.needs = Needs::NONE;
        sweep(situation);
    }

    void perStation() { info.multiStation = 1; }
};

} // namespace

TEST_F(RequestCycleSweep, PollingACyclicRead)
{
    sweepPoll([] { queueReadOf(1, 3); });
}

TEST_F(RequestCycleSweep, PollingAOneShotRead)
{
    sweepPoll([] { queueOnceOf(1, 3); });
}

TEST_F(RequestCycleSweep, PollingAWriteOfWords)
{
    sweepPoll([] { queueWrite(Write(9, 0, 3, "34 12")); });
}

TEST_F(RequestCycleSweep, PollingAWriteThatBeginsOutsideItsArea)
{
    sweepPoll([] { queueWrite(Write(9, -1, 3, "34 12 56 34 78 56")); });
}

TEST_F(RequestCycleSweep, PollingAWriteOfDoubleWords)
{
    sweepPoll([] { queueWrite(Write(14, 0, 2, "78 56 34 12")); });
}

TEST_F(RequestCycleSweep, PollingAWriteOfACoil)
{
    sweepPoll([] { queueWrite(Write(3, 0, 1, "01")); });
}

TEST_F(RequestCycleSweep, PollingAWriteOfABitInsideAWord)
{
    sweepPoll([] { queueWrite(Write(8, 5, 1, "01")); });
}

TEST_F(RequestCycleSweep, PollingARemoteRead)
{
    sweepPoll([this] {
        info.remoteMode = 1;
        queueRead(Variable(14, 0, 5)); // its count changes with each frame that is built, and with no other
    });
}

TEST_F(RequestCycleSweep, PollingARemoteWrite)
{
    sweepPoll([this] {
        info.remoteMode = 1;
        queueWrite(Write(9, 0, 2, "34 12 78 56"));
    });
}

TEST_F(RequestCycleSweep, PollingAWriteToAStation)
{
    for (int area : {1, 8, 9, 14})
        sweepPoll(
            [this, area] {
                perStation();
                queueWrite(Write(area, 0, 2, "01 01 01 01 01 01 01 01"));
            },
            Leaves::FINISHED_ELEMENTS);
}

TEST_F(RequestCycleSweep, PollingWithNothingToSend)
{
    Situation situation = {[] {}, pollAgain};
    situation.needs = Needs::NONE;
    sweep(situation);
}

TEST_F(RequestCycleSweep, AReplyForTheImage)
{
    for (int area : {1, 9, 14})
        sweepReply(Needs::NONE, [area] { queueRead(Variable(area, 0, 3)); });
}

TEST_F(RequestCycleSweep, BothRepliesOfABitInsideAWord)
{
    for (int frame : {1, 2})
        sweepReply(
            Needs::NONE, [] { queueWrite(Write(8, 5, 1, "01")); }, frame);
}

TEST_F(RequestCycleSweep, AReplyToARemoteRequest)
{
    sweepReply(Needs::NONE, [] {
        RW_VAR var = Remote(Variable(9, 0, 3));
        var.storeSelector = -1;
        queueRead(var);
    });
}

TEST_F(RequestCycleSweep, TheLastReplyOfAOneShotRead)
{
    sweepReply(Needs::NONE, [] { queueOnceOf(1, 3); });
}

TEST_F(RequestCycleSweep, AReplyForAStation)
{
    for (int area : {1, 9, 14})
        sweepReply(Needs::NODES, [this, area] {
            perStation();
            queueRead(Variable(area, 0, 3, 2));
        });
}

TEST_F(RequestCycleSweep, TheReadBeforeAWriteOfABitAtAStation)
{
    sweepReply(Needs::NODES, [this] {
        perStation();
        queueWrite(Write(8, 5, 1, "01", 2));
    });
}

TEST_F(RequestCycleSweep, AReplyThatNeverComes)
{
    sweepTimeOut([] { queueReadOf(1, 3); });
}

TEST_F(RequestCycleSweep, AFinalFailure)
{
    for (int multiStation : {0, 1})
        sweepTimeOut([this, multiStation] {
            info.multiStation = multiStation;
            info.retryLimit = 0;
            queueWriteOf(1, 3);
            queueWriteOf(2, 4);
            queueOnceOf(1, 5);
        });
}

// The result is written when memory ran out, too, and other threads read the lists' size and the result meanwhile.
TEST_F(RequestCycleSweep, AReplyForWhichThereIsNoMemoryWaitsForTheListsAsWell)
{
    perStation();
    queueRead(Variable(9, 0, 3));
    ComCommunication();
    PLC_driver.listMutex.lock();
    const std::future<int> result = std::async(std::launch::async, [] {
        QByteArray reply(PLC_driver.protocolList.at(0).replyLength, '\x5A');
        const AllocationWatch watch(1);
        return DataCom(&reply, reply.size())->result;
    });
    EXPECT_EQ(std::future_status::timeout, result.wait_for(std::chrono::milliseconds(20)));
    PLC_driver.listMutex.unlock();
    result.wait();
    EXPECT_EQ(PLC_RETRYING, PLC_driver.retVar.result);
}
