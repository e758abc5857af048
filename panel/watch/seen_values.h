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

/// Any thread. It is told of every change, not only of those that are there when somebody looks. What is kept of a row
/// is small: there may be a million.
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
        qint64 changedAtMs = -1;
        quint32 elements = 0; ///< where they begin in m_latest, m_least and m_greatest
        quint8 trouble = 0;
        bool isRead = false;   ///< m_latest has what was fresh last
        bool hasRange = false; ///< m_least and m_greatest have theirs
    };

    void noteValues(Record* record, int row, const CyclicValue& value);
    void count(int trouble, int by);
    std::size_t elementsOf(std::size_t row) const;
    RangePlace placeOf(const Record& record);
    std::vector<quint32> some(const std::vector<quint32>& elements, std::size_t row) const;

    const WatchedVariables& m_variables;
    mutable std::mutex m_mutex;
    std::vector<Record> m_records;
    std::vector<quint32> m_latest; // elements of all rows, one behind the other; the same of the next two
    std::vector<quint32> m_least;
    std::vector<quint32> m_greatest;
    SeenCounts m_counts;
};

} // namespace plc

#endif
