// SPDX-License-Identifier: MIT
// How often plcpanel watch asks the controller.

#include "panel/plcpanel_run.h"
#include "support/hostile_server.h"

#include <gmock/gmock.h>

#include <csignal>
#include <thread>

namespace
{

using test::Answer;
using test::HostileServer;

HostileServer::Script answering()
{
    return [](const QByteArray& request, int) { return Answer{test::rightReply(request), false}; };
}

bool sees(const HostileServer& server, std::size_t requests)
{
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (server.seen().size() < requests && std::chrono::steady_clock::now() < until)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return server.seen().size() >= requests;
}

/// \return ms from request \a first to the last of the first \a requests that a watch of two blocks sends
long timeOf(std::size_t requests, const QStringList& options, std::size_t first = 0)
{
    HostileServer server(answering());
    test::Plcpanel panel(
        QStringList{"watch", "9:0", "9:1000", "--json", "--controller", server.controller()} + options);
    EXPECT_TRUE(sees(server, requests));
    EXPECT_EQ(panel.endBy(SIGINT).status, 0);
    const auto seen = server.seen();
    return static_cast<long>(
        std::chrono::duration_cast<std::chrono::milliseconds>(seen.at(requests - 1).at - seen.at(first).at)
            .count());
}

} // namespace

// From the begin of the second refresh to that of the fifth: the first may be late, and the next is not for that.
TEST(PollRate, IsARefreshOfAllVariablesEverySoOften)
{
    EXPECT_GE(timeOf(9, {"--poll", "300"}, 2), 850);
}

TEST(PollRate, DoesNotDependOnHowOftenTheScreenLooks)
{
    EXPECT_GE(timeOf(9, {"--poll", "300", "--interval", "10"}, 2), 850);
}

TEST(PollRate, IsAsFastAsItGoesWhenZero)
{
    EXPECT_LT(timeOf(41, {"--poll", "0"}), 1900) << "twenty refreshes take 2000 ms at the usual rate";
}

TEST(Gap, KeepsRequestsApart)
{
    EXPECT_GE(timeOf(5, {"--poll", "0", "--gap", "200"}), 790);
}

TEST(Gap, KeepsWritesApartToo)
{
    HostileServer server(answering());
    EXPECT_EQ(test::plcpanel(
                  {"write", "9:0=1", "9:1=1", "9:2=1", "--gap", "200", "--controller", server.controller()})
                  .status,
              0);
    const auto seen = server.seen();
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_GE(seen.back().at - seen.front().at, std::chrono::milliseconds(390));
}
