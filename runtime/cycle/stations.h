// SPDX-License-Identifier: MIT
/// \file
/// \brief Which stations are served: the user's switches and the pauses of those that do not answer.
#ifndef RUNTIME_CYCLE_STATIONS_H
#define RUNTIME_CYCLE_STATIONS_H

#include "runtime/cycle/station_pauses.h"
#include "runtime/host/driver_library.h"

#include <QElapsedTimer>

#include <set>
#include <vector>

namespace plc
{

/// Tells the driver of every change. Every function expects the lock that keeps all calls to the driver apart
/// (see Runtime).
class Stations
{
public:
    /// \param calls of a driver that is loaded before any of the other functions is called
    Stations(const DriverCalls& calls, const Settings& settings);

    /// By the user. On: it is tried at once, and has to fail anew to be left alone.
    /// \param held with \a on: the driver still holds requests for it from before it was switched off. They are
    ///             booked as failed, or are about to be, and must not go out: so the driver is told only by release()
    void turn(int station, bool on, bool held = false);

    /// \return the stations that are switched on and that the driver takes for off, until release()
    const std::set<int>& held() const { return m_held; }

    /// The driver holds nothing any more for a station of held().
    void release(int station);

    /// \return the stations that the user has switched off
    const std::set<int>& off() const { return m_off; }

    /// Somebody wants an answer: without it the driver would throw the request away unsent.
    void wake(int station);

    /// Serves those again whose pause is over.
    void endPauses();

    /// After each try of a request that is to be answered.
    void tried(int station, TryEnd end) { m_pauses.tried(station, end); }

    /// After the last try of such a request. \return true when the station is to be left alone: nothing may
    /// wait for it then, and leaveAlone() is the next to be called
    bool givenUp(int station, const Failure& why);

    /// The driver throws away what waits for the station without having tried.
    void leaveAlone(int station) { tellDriver(station); }

    /// \param named to be reported even when they were neither tried nor switched
    /// \return by number
    std::vector<StationReport> reports(const std::set<int>& named) const;

private:
    void tellDriver(int station);

    const DriverCalls& m_calls;
    std::set<int> m_off;
    std::set<int> m_held;
    StationPauses m_pauses;
    QElapsedTimer m_clock; // of the pauses
};

} // namespace plc

#endif
