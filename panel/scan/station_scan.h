// SPDX-License-Identifier: MIT
/// \file
/// \brief Which stations answer, and what.
#ifndef PANEL_SCAN_STATION_SCAN_H
#define PANEL_SCAN_STATION_SCAN_H

#include "panel/session/listeners.h"
#include "runtime/cycle/driver_blocks.h"
#include "runtime/link/link.h"
#include "runtime/modbus/identity.h"
#include "runtime/model/settings.h"

#include <QString>

#include <atomic>
#include <memory>
#include <mutex>

namespace plc
{

struct StationAnswer {
    enum Kind {
        Values,       ///< it gave what was read
        Refused,      ///< with an exception of its own
        Unusable,     ///< a reply that is no answer to the read
        Gateway,      ///< a gateway answered that it cannot reach it
        None,         ///< nothing of it came in time
        NotConnected, ///< it was not asked: there was no connection
        NotAsked      ///< the scan ended before
    };
    int station = 0;
    Kind kind = NotAsked;
    qint64 microseconds = -1; ///< that the reply took; -1: there was none
    int exception = 0;
    int tries = 0; ///< requests for the read that went out
    QString words; ///< what came in place of values
    Identity identity;
};

/// \return true for a station that is there, whatever it thinks of the request
bool isThere(const StationAnswer& answer);

/// Asks each station to read one element, as the driver does, and one that answers who it is, where the frames allow
/// that. Never writes. The driver is not loaded while it lives, so there may be a runtime before and behind it.
class StationScan
{
public:
    /// \param tries how often a station is asked that does not answer, at least once
    StationScan(const Settings& settings, int tries, Listeners listeners);
    ~StationScan();
    StationScan(const StationScan&) = delete;
    StationScan& operator=(const StationScan&) = delete;

    /// \param read of one element of a station, as BlockPlanner has it
    StationAnswer ask(const DriverBlock& read);

    /// Makes ask() end soon, now and later. Any thread.
    void stop();

    /// \return true when there never was a connection
    bool neverConnected() const { return !m_wasConnected; }

private:
    void connectAnew();
    void tryToRead(const DriverBlock& read, StationAnswer* answer);
    void judge(const DriverBlock& read, const LinkExchange& exchange, StationAnswer* answer) const;
    LinkExchange exchange(const DriverBlock& request);
    void observe(const DriverBlock& request, const LinkExchange& exchange) const;
    QByteArray askForIdentity(int station, const QByteArray& frame);
    void pause() const;

    const Settings m_settings;
    const int m_tries;
    const Listeners m_listeners;
    std::atomic<bool> m_isStopped{false};
    bool m_wasConnected = false;
    QString m_lastError;    // why there is no connection
    std::mutex m_linkMutex; // of the pointer
    std::unique_ptr<Link> m_link;
};

} // namespace plc

#endif
