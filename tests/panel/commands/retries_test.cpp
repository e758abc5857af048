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
