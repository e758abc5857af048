// SPDX-License-Identifier: MIT
/// \file
/// \brief What a log is made of: series, each the values of one variable over time, and their samples.
#ifndef HISTORY_SAMPLE_H
#define HISTORY_SAMPLE_H

#include <QString>

namespace plc
{

/// Of one sample. The numbers stand in files and keep their meaning.
enum class SampleState {
    Fresh = 0,      ///< the controller answered with this value at this time
    NeverRead = 1,  ///< the controller has not answered yet
    Stale = 2,      ///< from this time on the value was not refreshed in time
    Failed = 3,     ///< from this time on it could not be read
    StationOff = 4, ///< from this time on its station was switched off
    NotLogged = 5,  ///< from this time on nobody logged
    Lost = 6        ///< from this time on samples are missing: they came faster than they could be written
};

/// \return "fresh", "stale", ...; an empty text for a number that is no state
QString sampleStateWord(SampleState state);

/// A variable of several values has a series for each.
struct Series {
    QString name;    ///< unique in its log, never empty
    QString unit;    ///< may be empty
    QString type;    ///< word of the ValueType; empty: a number without a list
    int digits = -1; ///< that are shown behind the decimal point; -1: as many as the number has
};

/// A value holds until the next sample of its series. Only Fresh ones have a text.
struct LogSample {
    int series = 0;    ///< index into the log's series
    qint64 timeMs = 0; ///< since 1970, UTC, by the system's clock
    SampleState state = SampleState::Fresh;
    QString text; ///< the value as a person reads it, without its unit, texts without quotes
};

} // namespace plc

#endif
