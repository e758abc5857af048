// SPDX-License-Identifier: MIT
// A name server that does not answer holds nobody up.

#include "panel/plcpanel_run.h"
#include "support/built_files.h"

#include <gmock/gmock.h>

#include <QElapsedTimer>

namespace
{

using test::plcpanelInShell;
using test::RunResult;
using testing::HasSubstr;

const int lessThanTheSilenceMs = 20000;

/// Runs plcpanel where names are not answered. \param by what starts it
RunResult runUnanswered(const std::string& by, const QString& text)
{
    const std::string script = by + " env LD_PRELOAD=" + builtSilentNameServer() +
                               " ASAN_OPTIONS=${ASAN_OPTIONS:+$ASAN_OPTIONS:}verify_asan_link_order=0 \"$@\"";
    return plcpanelInShell(script.c_str(), text.split(QLatin1Char(' ')) +
                                               QStringList{QStringLiteral("--controller"),
                                                           QStringLiteral("the.controller:1502"),
                                                           QStringLiteral("--timeout"), QStringLiteral("100"),
                                                           QStringLiteral("--retries"), QStringLiteral("1")});
}

TEST(SilentNameServer, IsWaitedForNoLongerThanTheTries)
{
    QElapsedTimer clock;
    clock.start();
    const RunResult ended = runUnanswered("", QStringLiteral("read 9:100x1000"));
    EXPECT_LT(clock.elapsed(), lessThanTheSilenceMs);
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.errors, HasSubstr("no name server has answered"));
}

TEST(SilentNameServer, DoesNotKeepCtrlCWaiting)
{
    QElapsedTimer clock;
    clock.start();
    runUnanswered("timeout --signal=INT 1", QStringLiteral("watch 9:100"));
    EXPECT_LT(clock.elapsed(), lessThanTheSilenceMs);
}

} // namespace
