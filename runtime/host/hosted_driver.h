// SPDX-License-Identifier: MIT
/// \file
/// \brief The driver at work in this process: claimed, loaded and wired for as long as the object lives.
#ifndef RUNTIME_HOST_HOSTED_DRIVER_H
#define RUNTIME_HOST_HOSTED_DRIVER_H

#include "runtime/host/driver_library.h"
#include "runtime/model/settings.h"

#include <functional>

namespace plc
{

/// The driver's state is one per process, so there is one such object at a time. The driver holds no requests when
/// the object comes and when it goes, also where somebody else keeps the library loaded, see emptyDriver().
class HostedDriver
{
public:
    /// Told of a one-shot read that has ended, inside the call to the driver that ended it.
    /// \param key its hostSubKey \param status as the driver gave it
    using OnceReadDone = std::function<void(int key, int status)>;

    /// \throws std::runtime_error when there is another one, or the driver cannot be loaded
    HostedDriver(const Settings& settings, OnceReadDone onceReadDone);
    ~HostedDriver();
    HostedDriver(const HostedDriver&) = delete;
    HostedDriver& operator=(const HostedDriver&) = delete;

    const DriverCalls& calls() const { return m_library.calls(); }

    /// The request that ComCommunication() hands out next has all the tries of the settings, see plc::renewTries().
    void renewTries();

    /// The request in flight has had its last try: the next reply that is none ends it. Same thread.
    void tryNoMore();

private:
    /// Held before the library is loaded and until it is unloaded.
    class Claim
    {
    public:
        Claim();
        ~Claim();
        Claim(const Claim&) = delete;
        Claim& operator=(const Claim&) = delete;
    };

    static int noteOnceRead(int portId, int hostKey, int hostSubKey, int status);
    static int ignoreList(QList<RW_VAR>* list, int hostKey, int flag);

    static HostedDriver* s_hosted; // the driver's callbacks carry no pointer of their own

    const Claim m_claim;
    const DriverLibrary m_library;
    const OnceReadDone m_onceReadDone;
    const int m_retryLimit; // of a single request
    COMINFO m_info;
};

} // namespace plc

#endif
