// SPDX-License-Identifier: MIT
#include "runtime/cycle/request_ledger.h"

#include "driver/plcdriver.h"
#include "runtime/modbus/request_pieces.h"

#include <algorithm>

namespace plc
{

namespace
{

bool sameElements(const Variable& a, const Variable& b)
{
    return a.station == b.station && a.area == b.area && a.element == b.element && a.count == b.count;
}

} // namespace

bool RequestLedger::holds(int station) const
{
    return std::any_of(m_entries.begin(), m_entries.end(),
                       [station](const LedgerEntry& entry) { return entry.elements.station == station; });
}

bool RequestLedger::hasRoom() const
{
    return m_entries.size() < std::size_t{PLC_LIST_LIMIT}; // beyond that the driver drops without a word
}

/// \return the entry that the driver replaces: the first equal one behind the head, which it never touches
std::size_t RequestLedger::equalEntry(const Variable& elements) const
{
    for (std::size_t index = 1; index < m_entries.size(); ++index) {
        if (sameElements(m_entries[index].elements, elements))
            return index;
    }
    return m_entries.size();
}

bool RequestLedger::wouldOvertake(const Variable& elements) const
{
    for (std::size_t index = equalEntry(elements) + 1; index < m_entries.size(); ++index) {
        if (overlaps(m_entries[index].elements, elements))
            return true;
    }
    return false;
}

RequestLedger::Ended RequestLedger::queued(const LedgerEntry& entry, int listSize)
{
    Ended ended;
    const std::size_t equal = equalEntry(entry.elements);
    if (listSize == size() && equal < m_entries.size()) {
        ended.push_back({m_entries[equal].key, RequestEnd::Replaced});
        m_entries[equal] = entry;
    } else {
        m_entries.push_back(entry);
    }
    compare(listSize, &ended);
    return ended;
}

RequestLedger::Ended RequestLedger::polled(int listSize)
{
    Ended ended;
    while (size() > listSize)
        end(0, RequestEnd::Discarded, &ended);
    compare(listSize, &ended);
    return ended;
}

RequestLedger::Ended RequestLedger::answered(int listSize)
{
    Ended ended;
    if (!m_entries.empty() && listSize == size() - 1)
        end(0, RequestEnd::Done, &ended);
    compare(listSize, &ended);
    return ended;
}

RequestLedger::Ended RequestLedger::givenUp(bool head, int station, int listSize)
{
    Ended ended;
    if (head && !m_entries.empty())
        end(0, RequestEnd::Failed, &ended);
    for (std::size_t index = 0; index < m_entries.size();) {
        if (!m_multiStation || m_entries[index].elements.station == station)
            end(index, RequestEnd::Purged, &ended);
        else
            ++index;
    }
    compare(listSize, &ended);
    return ended;
}

void RequestLedger::end(std::size_t index, RequestEnd how, Ended* ended)
{
    ended->push_back({m_entries[index].key, how});
    m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(index));
}

/// A list that is not as long as this copy says would make requests end that have not, or never.
void RequestLedger::compare(int listSize, Ended* ended)
{
    if (size() == listSize)
        return;
    while (!m_entries.empty())
        end(0, RequestEnd::OutOfStep, ended);
}

} // namespace plc
