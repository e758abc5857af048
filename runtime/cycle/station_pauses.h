// SPDX-License-Identifier: MIT
/// \file
/// \brief Which stations are left alone for a while, because they do not answer.
#ifndef RUNTIME_CYCLE_STATION_PAUSES_H
#define RUNTIME_CYCLE_STATION_PAUSES_H

#include "runtime/model/settings.h"
#include "runtime/model/station_report.h"

#include <map>
#include <vector>

namespace plc
{

/// How one try of a request ended.
enum class TryEnd {
    Answered, ///< the station is there, whatever it answered
    NoAnswer, ///< it was sent, and no answer came
    NotSent   ///< there was no connection, which is no station's fault
};

/// A request that is not answered costs its time-out and that of every retry, and meanwhile no other station
/// is served. So a station that left a whole request's tries in a row unanswered gets a pause, and a longer
/// one each time that it does so again, until it answers.
///
/// A request that was given up after fewer of them, because there was no connection for the others, brings no
/// pause.
///
/// Times are milliseconds of any clock that does not go back. No locks; belongs to the caller's.
class StationPauses
{
public:
    /// \param firstPauseMs   doubles up to longestStationPauseMs; 0: there are no pauses, only reports
    /// \param triesOfRequest tries that a request has by right, the first included
    StationPauses(int firstPauseMs, int triesOfRequest);

    /// After each try of a request of \a station.
    void tried(int station, TryEnd end);

    /// After the last try of a request that was given up. \return true when a pause begins with it
    bool givenUp(int station, const Failure& why, qint64 now);

    /// \return the stations whose pause is over by now, each once
    std::vector<int> over(qint64 now);

    /// Ends a pause early, because somebody wants an answer; if there is none, the next pause is longer all
    /// the same. \return true when there was a pause
    bool end(int station);

    /// Ends a pause, and the next one is a first one again. The station has to fail anew to get it.
    void forget(int station);

    bool isPausing(int station) const;
    bool anyPausing() const;

    /// \return every station that was tried, in order, as it looks apart from switches
    std::vector<StationReport> reports(qint64 now) const;

private:
    struct Station {
        int unanswered = 0; // tries in a row
        TryEnd lastTry = TryEnd::Answered;
        bool lost = false; // the last request to end was given up without an answer
        bool pausing = false;
        qint64 until = 0; // when pausing
        int nextPauseMs = 0;
        long answers = 0;
        long failures = 0;
        Failure failure; // when lost

        void beginAnew(); // as forget() has it
    };

    StationReport reportOf(int number, const Station& station, qint64 now) const;

    const int m_firstPauseMs;
    const int m_triesOfRequest;
    std::map<int, Station> m_stations;
    bool m_hasPaused = false; // any of them, since the start
};

} // namespace plc

#endif
