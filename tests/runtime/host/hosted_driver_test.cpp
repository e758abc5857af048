// SPDX-License-Identifier: MIT
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

class TriesOfRequests : public testing::Test
{
protected:
    void SetUp() override { queueRead(); }

    void queueRead()
    {
        RW_VAR read = {};
        read.area = 9;
        read.count = 1;
        read.station = 1;
        driver->calls().AddListOnceReadVar(&read, 1);
    }

    /// \return the driver's result
    int replyOf(int bytes)
    {
        EXPECT_NE(driver->calls().ComCommunication(), nullptr);
        QByteArray reply(bytes, '\0');
        return driver->calls().DataCom(&reply, bytes)->result;
    }

    const std::unique_ptr<HostedDriver> driver = host(); // with three retries
    const int good = 11;
};

TEST_F(TriesOfRequests, AreRenewedAfterASuccessThatNeededSome)
{
    EXPECT_EQ(replyOf(0), PLC_RETRYING);
    EXPECT_EQ(replyOf(0), PLC_RETRYING);
    EXPECT_EQ(replyOf(good), PLC_DONE);
    driver->renewTries();
    queueRead();
    for (int retry = 0; retry < 3; ++retry)
        EXPECT_EQ(replyOf(0), PLC_RETRYING) << retry;
    EXPECT_EQ(replyOf(0), PLC_LOCAL_NO_REPLY + 1);
}

TEST_F(TriesOfRequests, AreOverWhenNoMoreAreWanted)
{
    EXPECT_EQ(replyOf(0), PLC_RETRYING);
    driver->tryNoMore();
    EXPECT_EQ(replyOf(0), PLC_LOCAL_NO_REPLY + 1);
}

} // namespace
