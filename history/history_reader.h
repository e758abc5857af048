// SPDX-License-Identifier: MIT
/// \file
/// \brief Asks a log in SQLite: samples one by one, or as a trend that fits a picture.
#ifndef HISTORY_HISTORY_READER_H
#define HISTORY_HISTORY_READER_H

#include "history/history_file.h"
#include "history/sample.h"

#include <functional>
#include <optional>
#include <vector>

namespace plc
{

/// The end of the year 9999. Times of a file before 1970 or after this are passed over.
inline constexpr qint64 latestMs = 253402300799999;

/// One series of a file.
struct LoggedSeries {
    Series series;
    int id = 0;                    ///< its number in the file
    std::optional<qint64> firstMs; ///< time of the first sample; nothing where there is none
    std::optional<qint64> lastMs;
};

struct LoggedSample {
    qint64 timeMs = 0;
    SampleState state = SampleState::Fresh;
    std::optional<double> number; ///< of a Fresh one, where its value is a number
    QString text;                 ///< the value as a person reads it; empty where it is not Fresh
};

/// From fromMs on, before toMs.
struct TimeRange {
    qint64 fromMs = 0;
    qint64 toMs = 0;
};

/// What a series showed in one of the equal pieces of a range. A value holds until the next sample, so a piece without
/// samples has the value of the one before.
struct TrendPiece {
    std::optional<double> min; ///< of the values in it; nothing where there was none the whole time
    std::optional<double> max; ///< there when min is
    bool gap = false;          ///< at some time in it there was no fresh value
};

/// One thread, that which made it. A reader may be open for long, and sees what is written meanwhile. Every function
/// throws std::runtime_error, with words for people, when the file cannot be read.
class HistoryReader
{
public:
    explicit HistoryReader(const QString& path);

    /// \return all series, by name
    std::vector<LoggedSeries> series() const;

    /// \return until when somebody logged, as far as the file says; what was so then is not known for later
    qint64 aliveMs() const;

    /// Called for each sample of a range; returns false for no more.
    using SampleVisitor = std::function<bool(const LoggedSeries& series, const LoggedSample& sample)>;

    /// Visits the samples of \a series in \a range by time, those of one time in the order of \a series. Memory does not
    /// grow with the range.
    void visit(const std::vector<LoggedSeries>& series, TimeRange range, const SampleVisitor& visitor) const;

    /// \return the last sample before \a timeMs; nothing where there is none
    std::optional<LoggedSample> sampleBefore(const LoggedSeries& series, qint64 timeMs) const;

    /// \param pieces 1 or more; of a range shorter than that in ms, one for each ms
    /// \return so many, each of equal length, whatever number of samples there is: the smallest and the largest value
    ///         in each are the true ones
    std::vector<TrendPiece> trend(const LoggedSeries& series, TimeRange range, int pieces) const;

private:
    const HistoryFile m_file;
};

} // namespace plc

#endif
