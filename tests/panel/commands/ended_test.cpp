// SPDX-License-Identifier: MIT
// What plcpanel says when a signal ends it.

#include "panel/plcpanel_run.h"
#include "support/hostile_server.h"

#include <gmock/gmock.h>

#include <csignal>
#include <thread>

using testing::HasSubstr;
using testing::Not;

namespace
{

/// Ends \a arguments once the first frame has come to a server that answers none.
test::RunResult endedOnTheWay(const QStringList& arguments, int signal)
{
    test::HostileServer server([](const QByteArray&, int) { return test::Answer(); });
    test::Plcpanel panel(arguments + QStringList{"--timeout", "60000", "--controller", server.controller()});
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (server.seen().empty() && std::chrono::steady_clock::now() < until)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_FALSE(server.seen().empty());
    return panel.endBy(signal);
}

} // namespace

TEST(EndedWrite, SaysThatItMayHaveBeenCarriedOut)
{
    for (const int signal : {SIGINT, SIGTERM}) {
        const auto begin = std::chrono::steady_clock::now();
        const auto run = endedOnTheWay({"write", "9:0=1", "9:1=2"}, signal);
        EXPECT_EQ(run.status, 1);
        EXPECT_THAT(run.errors, HasSubstr("the write of 9:0=1 was on its way: it may have been carried out"));
        EXPECT_THAT(run.errors, HasSubstr("9:1=2: not written: ended before it was sent"));
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
    }
}

TEST(EndedRead, EndsAtOnce)
{
    const auto run = endedOnTheWay({"read", "9:0"}, SIGINT);
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.errors, HasSubstr("stopped"));
    EXPECT_THAT(run.errors, Not(HasSubstr("carried out")));
}
