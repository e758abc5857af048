// SPDX-License-Identifier: MIT
#include "runtime/host/hosted_driver.h"

#include "runtime/host/driver_settings.h"
#include "runtime/host/empty_driver.h"

#include <atomic>
#include <stdexcept>

namespace plc
{

namespace
{
std::atomic<bool> isClaimed{false};
} // namespace

HostedDriver::Claim::Claim()
{
    if (isClaimed.exchange(true))
        throw std::runtime_error("another runtime uses the driver in this process; destroy it first");
}

HostedDriver::Claim::~Claim()
{
    isClaimed = false;
}

HostedDriver* HostedDriver::s_hosted = nullptr;

HostedDriver::HostedDriver(const Settings& settings, OnceReadDone onceReadDone)
    : m_library(settings.driverPath), m_onceReadDone(std::move(onceReadDone)),
      m_retryLimit(settings.retryLimit), m_info(driverSettings(settings))
{
    s_hosted = this;
    calls().SetComInfo(&m_info);
    emptyDriver(calls(), &m_info);
    calls().RegistCallBackFuncIntf(noteOnceRead, ignoreList);
}

HostedDriver::~HostedDriver()
{
    calls().RegistCallBackFuncIntf(nullptr, nullptr);
    emptyDriver(calls(), &m_info);
    calls().SetComInfo(nullptr);
    s_hosted = nullptr;
}

void HostedDriver::renewTries()
{
    plc::renewTries(&m_info, m_retryLimit);
}

void HostedDriver::tryNoMore()
{
    m_info.retryLimit = 0; // the count is above it with the next failure
}

int HostedDriver::noteOnceRead(int, int, int hostSubKey, int status)
{
    s_hosted->m_onceReadDone(hostSubKey, status);
    return 0;
}

int HostedDriver::ignoreList(QList<RW_VAR>*, int, int)
{
    return 0;
}

} // namespace plc
