#include "runtime/host/hosted_driver.h"
#include "support/built_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

namespace
{

using namespace plc;
using testing::HasSubstr;

Settings settingsWith(const char* driver)
{
    Settings settings;
    settings.driverPath = QString::fromUtf8(driver);
    return settings;
}

std::unique_ptr<HostedDriver> host(const char* driver = builtDriver())
{
    return std::make_unique<HostedDriver>(settingsWith(driver), [](int, int) {});
}

std::string errorOfHosting(const char* driver = builtDriver())
{
    try {
        host(driver);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "no error";
}

TEST(HostedDriver, OneAtATimeIsInAProcess)
{
    const auto first = host();
    EXPECT_THAT(errorOfHosting(), HasSubstr("another runtime uses the driver"));
}

TEST(HostedDriver, AnotherMayFollow)
{
    host();
    EXPECT_EQ(errorOfHosting(), "no error");
}

TEST(HostedDriver, OneThatCannotBeLoadedStandsInNobodysWay)
{
    EXPECT_THAT(errorOfHosting("/nowhere/libplcdriver.so"), HasSubstr("cannot be loaded"));
    EXPECT_EQ(errorOfHosting(), "no error");
}

TEST(HostedDriver, WiresTheDriverForAsLongAsItLives)
{
    const DriverLibrary sameLibrary(QString::fromUtf8(builtDriver()));
    const DriverCalls& calls = sameLibrary.calls();
    RW_VAR read = {};
    read.area = 9;
    read.count = 1;
    const int queueAsItIs = 1;
    {
        const auto driver = host();
        calls.AddListOnceReadVar(&read, queueAsItIs);
        EXPECT_NE(calls.ComCommunication(), nullptr);
    }
    EXPECT_EQ(calls.ComCommunication(), nullptr);
}

} // namespace
