// SPDX-License-Identifier: MIT
#include "panel/watch/seen_values.h"

#include "runtime/model/listed_value.h"

#include <algorithm>

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
    m_records.reserve(static_cast<std::size_t>(variables.size()));
    for (int row = 0; row < variables.size(); ++row) {
        m_records.push_back(record);
        record.elements += static_cast<quint32>(variables.variable(row).count);
    }
    for (std::vector<quint32>* elements : {&m_latest, &m_least, &m_greatest})
        elements->resize(record.elements);
    m_counts.notFresh = variables.size();
}

std::size_t SeenValues::elementsOf(std::size_t row) const
{
    const std::size_t end = row + 1 < m_records.size() ? m_records[row + 1].elements : m_latest.size();
    return end - m_records[row].elements;
}

RangePlace SeenValues::placeOf(const Record& record)
{
    return {m_least.data() + record.elements, m_greatest.data() + record.elements};
}

/// \return those of \a row
std::vector<quint32> SeenValues::some(const std::vector<quint32>& elements, std::size_t row) const
{
    const auto begin = elements.begin() + static_cast<std::ptrdiff_t>(m_records[row].elements);
    return {begin, begin + static_cast<std::ptrdiff_t>(elementsOf(row))};
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
    record.trouble = static_cast<quint8>(troubleOf(value, outside));
    count(record.trouble, 1);
}

/// What is not fresh may be what the driver holds for a write that never came to the controller.
void SeenValues::noteValues(Record* record, int row, const CyclicValue& value)
{
    const auto latest = m_latest.begin() + static_cast<std::ptrdiff_t>(record->elements);
    if (record->isRead && std::equal(value.values.begin(), value.values.end(), latest))
        return;
    if (record->isRead)
        record->changedAtMs = value.readAtMs;
    record->isRead = true;
    std::copy(value.values.begin(), value.values.end(), latest);
    record->hasRange = widen(placeOf(*record), record->hasRange, m_variables.listed(row), value.values);
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
    const auto index = static_cast<std::size_t>(row);
    const Record& record = m_records[index];
    SeenValue seen;
    seen.changedAtMs = record.changedAtMs;
    if (record.hasRange)
        seen.range = {some(m_least, index), some(m_greatest, index)};
    return seen;
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
        record.hasRange =
            record.isRead &&
            widen(placeOf(record), false, m_variables.listed(static_cast<int>(row)), some(m_latest, row));
    }
}

} // namespace plc
