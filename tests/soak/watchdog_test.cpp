// SPDX-License-Identifier: MIT
#include "soak/watchdog.h"

#include "support/built_files.h"

#include <gtest/gtest.h>

#include <QThread>

namespace
{

using soak::Watchdog;

const int limitMs = 200;

[[noreturn]] void hang()
{
    Watchdog watchdog(limitMs, [] { return QStringLiteral("more words"); });
    watchdog.add(QStringLiteral("writer")).begin(QStringLiteral("waits for write 7"));
    while (true)
        QThread::msleep(10);
}

TEST(WatchdogDeathTest, EndsAProcessThatHangsAndSaysWhatWaits)
{
    if (areProgramsEmulated())
        GTEST_SKIP() << "the test would have to start itself again, which is a program for another processor";
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(hang(), testing::ExitedWithCode(Watchdog::exitStatus), "writer: waits for write 7.*");
}

TEST(Watchdog, LetsThreadsLiveThatDoSomethingNew)
{
    Watchdog watchdog(limitMs, [] { return QString(); });
    Watchdog::Watch& watch = watchdog.add(QStringLiteral("writer"));
    QElapsedTimer clock;
    clock.start();
    while (!clock.hasExpired(2 * limitMs)) {
        watch.begin(QStringLiteral("works"));
        QThread::msleep(1);
    }
    SUCCEED();
}

} // namespace
