// SPDX-License-Identifier: MIT
// What the runtime makes of answers that are no plain refusal: of a gateway, of a controller that is still at work, and
// of one that is busy.
#include "support/hostile_server.h"
#include "support/runtime_fixture.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>

#include <memory>

namespace
{

using namespace plc;
using test::Answer;
using test::HostileServer;

class ControllerAnswers : public RuntimeFixture
{
protected:
    ControllerAnswers()
    {
        settings.multiStation = true;
        settings.retryLimit = 0;
    }

    ~ControllerAnswers() override { runtime.reset(); }

    void startWith(const HostileServer::Script& script)
    {
        server = std::make_unique<HostileServer>(script);
        settings.port = server->port();
        startRuntime();
    }

    void startAgainWith(const HostileServer::Script& script)
    {
        runtime.reset();
        startWith(script);
    }

    void refuseEverything(int exception)
    {
        startWith([exception](const QByteArray& request, int) {
            return Answer{test::exceptionReply(request, exception)};
        });
    }

    StationCondition conditionAfterARead()
    {
        EXPECT_EQ(read(variable(9, 0, 1, 3)).failure.kind, FailureKind::Exception);
        return runtime->stations().front().condition;
    }

    std::unique_ptr<HostileServer> server;
};

TEST_F(ControllerAnswers, StationThatAGatewayHasNoPathToIsLeftAlone)
{
    refuseEverything(10);
    EXPECT_EQ(conditionAfterARead(), StationCondition::Pausing);
}

TEST_F(ControllerAnswers, StationThatDoesNotAnswerItsGatewayIsLeftAlone)
{
    refuseEverything(11);
    EXPECT_EQ(conditionAfterARead(), StationCondition::Pausing);
}

TEST_F(ControllerAnswers, StationThatRefusesIsThere)
{
    for (const int exception : {2, 9, 12}) {
        refuseEverything(exception);
        EXPECT_EQ(conditionAfterARead(), StationCondition::Answering) << exception;
        runtime.reset();
    }
}

TEST_F(ControllerAnswers, OfSeveralRequestsTheFirstThatFailsSaysWhy)
{
    refuseEverything(2);
    const WriteOutcome written = write(variable(9, 0, 200), std::vector<quint32>(200, 1));
    EXPECT_EQ(written.failure.kind, FailureKind::Exception);
    EXPECT_EQ(written.requests, 4);
    EXPECT_EQ(written.requestsConfirmed, 0);
    startAgainWith([](const QByteArray& request, int index) {
        return Answer{test::exceptionReply(request, index == 0 ? 3 : 4)};
    });
    EXPECT_EQ(read(variable(9, 0, 200)).failure.exception, 3);
}

TEST_F(ControllerAnswers, WhatIsAcknowledgedIsNotSentAgain)
{
    settings.retryLimit = 3;
    refuseEverything(5);
    const WriteOutcome written = write(variable(9, 0), {1});
    EXPECT_EQ(written.failure.kind, FailureKind::Acknowledged);
    EXPECT_EQ(reasonOf(written), "the controller took the write and is still at work on it (exception 5); "
                                 "nothing was sent again");
    EXPECT_EQ(server->seen().size(), 1u);
    EXPECT_EQ(read(variable(9, 0)).failure.detail, QStringLiteral("the read"));
    EXPECT_EQ(server->seen().size(), 2u);
}

TEST_F(ControllerAnswers, OfABitOnlyTheReadOfItsWordIsAcknowledged)
{
    refuseEverything(5);
    EXPECT_EQ(write(variable(8, 3), {1}).failure.detail,
              QStringLiteral("only the read of the bit's word, without which nothing is written,"));
}

TEST_F(ControllerAnswers, TheTriesOfTheNextRequestAreAllItsOwn)
{
    settings.retryLimit = 2;
    startWith([](const QByteArray& request, int index) {
        if (index == 0)
            return Answer{test::exceptionReply(request, 5)};
        return Answer{index < 3 ? test::exceptionReply(request, 4) : test::rightReply(request)};
    });
    EXPECT_EQ(write(variable(9, 0), {1}).failure.kind, FailureKind::Acknowledged);
    EXPECT_TRUE(write(variable(9, 1), {1}).confirmed) << "by its third try";
}

TEST_F(ControllerAnswers, ABusyControllerIsAskedAgainAfterAPause)
{
    settings.retryLimit = 1;
    settings.timeoutMs = 200;
    startWith([](const QByteArray& request, int index) {
        return Answer{index == 0 ? test::exceptionReply(request, 6) : test::rightReply(request)};
    });
    EXPECT_TRUE(read(variable(9, 0)).done);
    const auto seen = server->seen();
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_GE(seen[1].at - seen[0].at, std::chrono::milliseconds(50)) << "a quarter of the time-out";
}

TEST_F(ControllerAnswers, AControllerThatClosesEachConnectionIsToldFromOneThatIsNotThere)
{
    settings.timeoutMs = 50;
    startWith(nullptr);
    for (int request = 0; request < 3; ++request) // some find the connection closed, others find none
        EXPECT_EQ(read(variable(9, 0)).failure.kind, FailureKind::ClosedAtOnce) << request;
}

TEST_F(ControllerAnswers, AReadThatIsNotAnsweredFailsNoOther)
{
    settings.multiStation = false;
    settings.timeoutMs = 100;
    startWith([](const QByteArray& request, int index) {
        return Answer{index == 0 ? QByteArray() : test::rightReply(request)};
    });
    std::vector<Pending<ReadOutcome>> reads;
    for (int element = 0; element < 12; ++element)
        reads.push_back(runtime->read(variable(9, element)));
    for (const auto& pending : reads)
        ASSERT_TRUE(pending.wait(patienceMs));
    EXPECT_EQ(reads[0].get().failure.kind, FailureKind::NoReply);
    for (std::size_t index = 1; index < reads.size(); ++index)
        EXPECT_TRUE(reads[index].get().done) << index << ' ' << reasonOf(reads[index].get());
}

/// One station answers, the other does not.
class OneOfTwoAnswers : public ControllerAnswers
{
protected:
    OneOfTwoAnswers()
    {
        settings.timeoutMs = 50;
        startWith([](const QByteArray& request, int) {
            return Answer{request.at(6) == dead ? QByteArray() : test::rightReply(request)};
        });
    }

    /// \return the elements that the living station was asked for, in their order
    std::vector<int> asked() const
    {
        std::vector<int> elements;
        for (const test::SeenRequest& request : server->seen()) {
            if (request.bytes.at(6) == living)
                elements.push_back(request.bytes.at(9));
        }
        return elements;
    }

    static const int living = 3;
    static const int dead = 4;
};

TEST_F(OneOfTwoAnswers, ReadsOfTheOtherGoOutInTheirOrder)
{
    runtime->read(variable(9, 0, 1, dead));
    std::vector<Pending<ReadOutcome>> reads;
    std::vector<int> elements;
    for (int element = 0; element < 20; ++element) {
        reads.push_back(runtime->read(variable(9, element, 1, living)));
        elements.push_back(element);
    }
    for (const auto& pending : reads)
        ASSERT_TRUE(pending.wait(patienceMs) && pending.get().done);
    EXPECT_EQ(asked(), elements);
}

TEST_F(OneOfTwoAnswers, MoreWritesThanTheDriverQueuesGoOutInTheirOrderOrFailWithTheirStation)
{
    std::vector<Pending<WriteOutcome>> ofDead;
    std::vector<Pending<WriteOutcome>> ofLiving;
    std::vector<int> elements;
    for (int element = 0; element < 1030; ++element)
        ofDead.push_back(runtime->write(variable(9, element, 1, dead), {1}));
    for (int element = 0; element < 20; ++element) {
        ofLiving.push_back(runtime->write(variable(9, element, 1, living), {1}));
        elements.push_back(element);
    }
    for (const auto& pending : ofDead)
        ASSERT_TRUE(pending.wait(patienceMs));
    EXPECT_EQ(ofDead.front().get().failure.kind, FailureKind::NoReply);
    EXPECT_EQ(ofDead.back().get().failure.kind, FailureKind::Purged);
    for (const auto& pending : ofLiving)
        ASSERT_TRUE(pending.wait(patienceMs) && pending.get().confirmed);
    EXPECT_EQ(asked(), elements);
}

TEST_F(ControllerAnswers, BetweenRequestsIsTheGapOfTheSettings)
{
    settings.gapMs = 20;
    startWith([](const QByteArray& request, int) { return Answer{test::rightReply(request)}; });
    EXPECT_TRUE(read(variable(9, 0, 300)).done);
    const auto seen = server->seen();
    ASSERT_GT(seen.size(), 2u);
    for (std::size_t index = 1; index < seen.size(); ++index)
        EXPECT_GE(seen[index].at - seen[index - 1].at, std::chrono::milliseconds(20));
}

} // namespace
