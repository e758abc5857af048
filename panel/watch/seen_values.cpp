// SPDX-License-Identifier: MIT
#include "panel/watch/seen_values.h"

#include "runtime/model/listed_value.h"

namespace plc
{

namespace
{

enum Trouble { HasFailed, NeverRead, StationOff, Stale, Unconfirmed, Outside, NoTrouble };

} // namespace

int troubleOf(const CyclicValue& value, bool isOutside)
{
    if (hasFailed(value.failure))
        return HasFailed;
    switch (value.state) {
    case ValueState::Failed:
        return HasFailed;
    case ValueState::NeverRead:
        return NeverRead;
    case ValueState::StationOff:
        return StationOff;
    case ValueState::Stale:
        return Stale;
    case ValueState::Unconfirmed:
        return Unconfirmed;
    case ValueState::Fresh:
        break;
    }
    return isOutside ? Outside : NoTrouble;
}

SeenValues::SeenValues(const WatchedVariables& variables) : m_variables(variables)
{
    Record record;
    record.trouble = NeverRead;
    m_records.assign(static_cast<std::size_t>(variables.size()), record);
    m_counts.notFresh = variables.size();
}

void SeenValues::note(int row, const CyclicValue& value)
{
    const ListedVariable* const listed = m_variables.listed(row);
    const bool wasRead = value.readAtMs >= 0;
    const bool outside = wasRead && listed != nullptr && isOutside(*listed, value.values);
    const std::lock_guard<std::mutex> lock(m_mutex);
    Record& record = m_records[static_cast<std::size_t>(row)];
    if (value.state == ValueState::Fresh)
        noteValues(&record, row, value);
    count(record.trouble, -1);
    record.trouble = troubleOf(value, outside);
    count(record.trouble, 1);
}

/// What is not fresh may be what the driver holds for a write that never came to the controller.
void SeenValues::noteValues(Record* record, int row, const CyclicValue& value)
{
    const bool isFirst = record->values.empty();
    if (!isFirst && record->values == value.values)
        return;
    if (!isFirst)
        record->changedAtMs = value.readAtMs;
    record->values = value.values;
    widen(&record->range, m_variables.listed(row), value.values);
}

void SeenValues::count(int trouble, int by)
{
    if (trouble < Outside)
        m_counts.notFresh += by;
    else if (trouble == Outside)
        m_counts.outside += by;
}

SeenValue SeenValues::at(int row) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const Record& record = m_records[static_cast<std::size_t>(row)];
    return {record.range, record.changedAtMs};
}

std::vector<SeenState> SeenValues::states() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<SeenState> states;
    states.reserve(m_records.size());
    for (const Record& record : m_records)
        states.push_back({record.trouble, record.changedAtMs});
    return states;
}

SeenCounts SeenValues::counts() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_counts;
}

void SeenValues::forgetRanges()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (std::size_t row = 0; row < m_records.size(); ++row) {
        Record& record = m_records[row];
        record.range = ValueRange();
        if (!record.values.empty())
            widen(&record.range, m_variables.listed(static_cast<int>(row)), record.values);
    }
}

} // namespace plc
