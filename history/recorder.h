// SPDX-License-Identifier: MIT
/// \file
/// \brief Makes samples of what a runtime tells of its variables: changes, or every refresh.
#ifndef HISTORY_RECORDER_H
#define HISTORY_RECORDER_H

#include "history/sample.h"
#include "runtime/model/cyclic_value.h"
#include "runtime/model/variable_list.h"

#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace plc
{

/// One that is refreshed.
struct RecordedVariable {
    Variable elements;
    std::optional<ListedVariable> listed; ///< where it is one of a list
    std::optional<int> firstValue; ///< where it is a piece of a longer one: how many values go before it
};

/// What is read by several requests has several times. \return \a variable in pieces that have one each, a text whole
/// \param pieces its elements as they are asked for
std::vector<RecordedVariable> cutLike(const RecordedVariable& variable, const std::vector<Variable>& pieces);

/// \return the series of \a variables: one for each, and of several values one for each value, called NAME[0], NAME[1]
///         and so on, or as their addresses where they have no name
std::vector<Series> seriesOf(const std::vector<RecordedVariable>& variables);

/// Remembers what was recorded last. A value that is not fresh gives one sample without a text, with the time at which
/// that was told; the time of a value is that of the controller's reply. What a write has put on its way
/// (ValueState::Unconfirmed) gives none, because the controller has not said so.
///
/// Any thread.
class Recorder
{
public:
    enum class What {
        Changes,  ///< of values and of states
        Refreshes ///< all; within one millisecond those that change something
    };

    /// \return false when the sample found no room. Then the recorder says so in the series as soon as there is some
    ///         (SampleState::Lost), and gives the value again.
    using Sink = std::function<bool(const LogSample& sample)>;

    /// \return ms since 1970, UTC
    using WallClock = std::function<qint64()>;

    Recorder(std::vector<RecordedVariable> variables, What what, Sink sink, WallClock clock);

    /// \param index of the variable. A value that was answered before the last one is passed over.
    void take(int index, const CyclicValue& value);

    /// \return the variables of which a sample found no room; they are to be taken again
    std::vector<int> missed() const;

    /// \return series whose value is not fresh now
    int failed() const;

    /// \return true when the controller has answered with a value
    bool hasAnswers() const;

    /// Nobody records any more: each series gets a sample that says so, and what is taken later gives none.
    void end();

private:
    struct Track {
        SampleState state = SampleState::NeverRead; // of the last sample
        QString text;
        qint64 answeredMs = 0;        // of the last fresh one
        std::optional<qint64> lostMs; // since when samples are missing
    };
    struct Entry {
        RecordedVariable variable;
        int firstSeries = 0;
        int count = 0; // series
    };

    QStringList texts(const Entry& entry, const CyclicValue& value) const;
    bool isNews(const Track& track, const LogSample& sample) const;
    void record(const LogSample& sample);

    const What m_what;
    const Sink m_sink;
    const WallClock m_clock;
    std::vector<Entry> m_entries;
    mutable std::mutex m_mutex;
    std::vector<Track> m_tracks; // one for each series
    bool m_hasEnded = false;
};

} // namespace plc

#endif
