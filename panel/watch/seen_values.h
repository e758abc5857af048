// SPDX-License-Identifier: MIT
/// \file
/// \brief What was seen of the watched values since the start: when each changed, and how far it went.
#ifndef PANEL_WATCH_SEEN_VALUES_H
#define PANEL_WATCH_SEEN_VALUES_H

#include "panel/watch/value_range.h"
#include "panel/watch/watched_variables.h"
#include "runtime/model/cyclic_value.h"

#include <mutex>
#include <vector>

namespace plc
{

/// What a table needs to know of a row besides its value.
struct SeenValue {
    ValueRange range;        ///< of what was read while nothing was in doubt
    qint64 changedAtMs = -1; ///< when other values than before were read, in ms since 1970; -1: never
};

/// By what rows are sorted. The worst trouble has the lowest number.
struct SeenState {
    int trouble = 0;
    qint64 changedAtMs = -1;
};

struct SeenCounts {
    int notFresh = 0;
    int outside = 0; ///< fresh, but outside the limits of the list
};

/// \return the place of a value among troubles: failed, never read, station off, stale, unconfirmed, outside
///         its limits, none
int troubleOf(const CyclicValue& value, bool isOutside);

/// Any thread. It is told of every change, not only of those that are there when somebody looks.
class SeenValues
{
public:
    explicit SeenValues(const WatchedVariables& variables);

    /// A ValueObserver of the runtime.
    void note(int row, const CyclicValue& value);

    SeenValue at(int row) const;
    std::vector<SeenState> states() const;
    SeenCounts counts() const;

    /// Minimum and maximum begin anew, with what is there now.
    void forgetRanges();

private:
    struct Record {
        std::vector<quint32> values; ///< that were fresh last
        ValueRange range;
        qint64 changedAtMs = -1;
        int trouble = 0;
    };

    void noteValues(Record* record, int row, const CyclicValue& value);
    void count(int trouble, int by);

    const WatchedVariables& m_variables;
    mutable std::mutex m_mutex;
    std::vector<Record> m_records;
    SeenCounts m_counts;
};

} // namespace plc

#endif
