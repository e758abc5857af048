// SPDX-License-Identifier: MIT
#include "runtime/c/option_table.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

TEST(OptionTable, DefaultsAreThoseThatTheHeaderNames)
{
    const Settings settings = settingsOf(nullptr);
    EXPECT_EQ(settings.host, QStringLiteral("127.0.0.1"));
    EXPECT_EQ(settings.port, 502);
    EXPECT_EQ(settings.station, 1);
    EXPECT_FALSE(settings.multiStation);
    EXPECT_FALSE(settings.remoteMode);
    EXPECT_EQ(settings.timeoutMs, 300);
    EXPECT_EQ(settings.retryLimit, 3);
    EXPECT_EQ(settings.maxBlockCount, 63);
    EXPECT_EQ(settings.pollMs, 100);
    EXPECT_EQ(settings.gapMs, 0);
    EXPECT_EQ(settings.staleAfterMs, 2000);
    EXPECT_EQ(settings.stationPauseMs, 1000);
    EXPECT_TRUE(settings.driverPath.isEmpty());
}

TEST(OptionTable, EachOptionSetsItsOwn)
{
    const plcruntime_option options[] = {
        {"host", "plant"},          {"port", "5020"},      {"station", "7"},
        {"multi_station", "1"},     {"remote_mode", "1"},  {"timeout_ms", "50"},
        {"retries", "9"},           {"poll_ms", "11"},     {"gap_ms", "12"},
        {"stale_after_ms", "13"},   {"driver", "/a/b.so"}, {"max_block_words", "14"},
        {"station_pause_ms", "15"}, {nullptr, nullptr}};
    const Settings settings = settingsOf(options);
    EXPECT_EQ(settings.host, QStringLiteral("plant"));
    EXPECT_EQ(settings.port, 5020);
    EXPECT_EQ(settings.station, 7);
    EXPECT_TRUE(settings.multiStation);
    EXPECT_TRUE(settings.remoteMode);
    EXPECT_EQ(settings.timeoutMs, 50);
    EXPECT_EQ(settings.retryLimit, 9);
    EXPECT_EQ(settings.pollMs, 11);
    EXPECT_EQ(settings.gapMs, 12);
    EXPECT_EQ(settings.staleAfterMs, 13);
    EXPECT_EQ(settings.driverPath, QStringLiteral("/a/b.so"));
    EXPECT_EQ(settings.maxBlockCount, 14);
    EXPECT_EQ(settings.stationPauseMs, 15);
}

TEST(OptionTable, AFlagMayBeSwitchedOffAgain)
{
    const plcruntime_option options[] = {{"remote_mode", "1"}, {"remote_mode", "0"}, {nullptr, nullptr}};
    EXPECT_FALSE(settingsOf(options).remoteMode);
}

} // namespace
