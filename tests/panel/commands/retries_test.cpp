// SPDX-License-Identifier: MIT
// How often a request is tried, against controllers that lose replies, hang up or have no time.

#include "panel/plcpanel_run.h"
#include "support/hostile_server.h"

#include <gmock/gmock.h>

using testing::HasSubstr;
using testing::Not;

namespace
{

using test::Answer;
using test::HostileServer;

QStringList manyWrites(int count)
{
    QStringList writes;
    for (int element = 0; element < count; ++element)
        writes << QStringLiteral("9:%1=%2").arg(element).arg(element + 1);
    return writes;
}

QStringList writeTo(const HostileServer& server, const QStringList& writes, const QStringList& options)
{
    return QStringList{QStringLiteral("write")} + writes + options +
           QStringList{QStringLiteral("--controller"), server.controller()};
}

} // namespace

TEST(Retries, EachWriteHasItsOwnWhenRepliesAreLost)
{
    // The first reply to every second write is lost, which is as many as one retry each can mend.
    HostileServer server([](const QByteArray& request, int index) {
        return Answer{index % 3 == 0 ? QByteArray() : test::rightReply(request), false};
    });
    const auto run = test::plcpanel(writeTo(server, manyWrites(20), {"--retries", "1", "--timeout", "150"}));
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_THAT(run.errors, Not(HasSubstr("not confirmed")));
    EXPECT_EQ(server.seen().size(), 30u);
}

TEST(Retries, WritesAreConfirmedByAControllerThatHangsUpAfterEachReply)
{
    HostileServer server([](const QByteArray& request, int) {
        return Answer{test::rightReply(request), true};
    });
    const auto run = test::plcpanel(writeTo(server, manyWrites(20), {"--retries", "3"}));
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_EQ(server.seen().size(), 20u);
}

TEST(Retries, AreNoMoreThanAskedForOfAWriteThatIsNeverAnswered)
{
    HostileServer server([](const QByteArray& request, int index) {
        return Answer{index == 0 || index > 2 ? QByteArray() : test::rightReply(request), false};
    });
    const auto run = test::plcpanel(writeTo(server, manyWrites(3), {"--retries", "2", "--timeout", "100"}));
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out, HasSubstr("9:0=1"));
    EXPECT_THAT(run.errors, HasSubstr("9:2=3: not confirmed"));
    EXPECT_EQ(server.seen().size(), 6u) << "one more for the first, three for the last";
}

namespace
{

HostileServer::Script refusing(int exception, int firstRequests)
{
    return [exception, firstRequests](const QByteArray& request, int index) {
        const bool refused = index < firstRequests;
        return Answer{refused ? test::exceptionReply(request, exception) : test::rightReply(request), false};
    };
}

/// \return ms between each request and the next
std::vector<long> distances(const HostileServer& server)
{
    const auto seen = server.seen();
    std::vector<long> distances;
    for (std::size_t index = 1; index < seen.size(); ++index)
        distances.push_back(static_cast<long>(
            std::chrono::duration_cast<std::chrono::milliseconds>(seen[index].at - seen[index - 1].at)
                .count()));
    return distances;
}

const int always = 1000000;

} // namespace

TEST(BusyController, IsTriedAgainAfterPausesThatGrow)
{
    HostileServer server(refusing(6, 3));
    const auto run = test::plcpanel(writeTo(server, {"9:0=1"}, {"--timeout", "400"}));
    EXPECT_EQ(run.status, 0) << run.errors;
    EXPECT_THAT(distances(server), testing::ElementsAre(testing::Ge(90), testing::Ge(190), testing::Ge(390)));
}

TEST(BusyController, IsGivenUpAfterTheTriesOfTheRequest)
{
    HostileServer server(refusing(6, always));
    const auto run = test::plcpanel(
        {"read", "9:0", "--timeout", "100", "--retries", "2", "--controller", server.controller()});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.errors, HasSubstr("busy"));
    EXPECT_EQ(server.seen().size(), 3u);
}

TEST(BusyController, IsLeftInPeaceByCheckToo)
{
    HostileServer server(refusing(6, 2));
    const auto run =
        test::plcpanel({"check", "9:0", "--timeout", "400", "--controller", server.controller()});
    EXPECT_EQ(run.status, 0) << run.out << run.errors;
    EXPECT_THAT(distances(server), testing::ElementsAre(testing::Ge(90), testing::Ge(190)));
}

TEST(AcknowledgingController, GetsTheWriteOnceAndItIsNotCalledConfirmed)
{
    HostileServer server(refusing(5, always));
    const auto run = test::plcpanel(writeTo(server, {"9:0=1"}, {}));
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.errors, HasSubstr("the controller took the write and is still at work on it"));
    EXPECT_THAT(run.errors, Not(HasSubstr("refused")));
    EXPECT_EQ(server.seen().size(), 1u);
}

TEST(AcknowledgingController, GetsTheNextWriteWithAllItsTries)
{
    HostileServer server([](const QByteArray& request, int index) {
        return index == 0 ? Answer{test::exceptionReply(request, 5), false}
                          : Answer{index == 3 ? test::rightReply(request) : QByteArray(), false};
    });
    const auto run =
        test::plcpanel(writeTo(server, {"9:0=1", "9:1=2"}, {"--timeout", "100", "--retries", "2"}));
    EXPECT_THAT(run.out, HasSubstr("9:1=2  confirmed"));
    EXPECT_EQ(server.seen().size(), 4u);
}

TEST(AcknowledgingController, HasNotTakenABitWhoseWordCouldNotBeRead)
{
    HostileServer server(refusing(5, always));
    const auto run = test::plcpanel(writeTo(server, {"8:10.3=1"}, {}));
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.errors, HasSubstr("only the read of the bit's word"));
    EXPECT_EQ(server.seen().size(), 1u);
}

TEST(AcknowledgingController, GetsAReadOnce)
{
    for (const char* command : {"read", "check"}) {
        HostileServer server(refusing(5, always));
        const auto run = test::plcpanel({command, "9:0", "--controller", server.controller()});
        EXPECT_EQ(run.status, 1);
        EXPECT_THAT(run.out + run.errors, HasSubstr("still at work")) << command;
        EXPECT_EQ(server.seen().size(), 1u) << command;
    }
}
