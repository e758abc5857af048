// SPDX-License-Identifier: MIT
#include "runtime/model/settings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using namespace plc;
using testing::HasSubstr;

Settings goodSettings()
{
    Settings settings;
    settings.driverPath = QStringLiteral("libplcdriver.so");
    return settings;
}

TEST(SettingsError, IsEmptyForTheDefaultsWithADriver)
{
    EXPECT_TRUE(settingsError(goodSettings()).isEmpty());
}

TEST(SettingsError, SaysWhichPathOrNameIsMissing)
{
    EXPECT_THAT(settingsError(Settings()).toStdString(), HasSubstr("give the path of libplcdriver.so"));
    Settings settings = goodSettings();
    settings.host.clear();
    EXPECT_THAT(settingsError(settings).toStdString(), HasSubstr("no controller is given"));
}

TEST(SettingsError, NamesTheNumberAndItsRange)
{
    struct Row {
        int Settings::*number;
        int least;
        int most;
        const char* name;
    };
    const Row rows[] = {
        {&Settings::port, 1, 65535, "port"},
        {&Settings::station, 0, 255, "station"},
        {&Settings::timeoutMs, 1, 60000, "time-out"},
        {&Settings::retryLimit, 0, 1000, "retry limit"},
        {&Settings::maxBlockCount, 2, 125, "words of one request"},
        {&Settings::pollMs, 0, 3600000, "time between refreshes"},
        {&Settings::gapMs, 0, 60000, "pause between requests"},
        {&Settings::staleAfterMs, 1, 3600000, "stale value"},
        {&Settings::stationPauseMs, 0, 30000, "first pause of a station"},
    };
    for (const Row& row : rows) {
        Settings settings = goodSettings();
        for (const int good : {row.least, row.most}) {
            settings.*row.number = good;
            EXPECT_TRUE(settingsError(settings).isEmpty()) << row.name << ' ' << good;
        }
        for (const int bad : {row.least - 1, row.most + 1}) {
            settings.*row.number = bad;
            EXPECT_THAT(settingsError(settings).toStdString(), HasSubstr(row.name)) << bad;
            EXPECT_THAT(settingsError(settings).toStdString(), HasSubstr(std::to_string(row.most))) << bad;
        }
    }
}

} // namespace
