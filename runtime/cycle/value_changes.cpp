// SPDX-License-Identifier: MIT
#include "runtime/cycle/value_changes.h"

#include <algorithm>

namespace plc
{

/// Before its first values it is shown with zeros, as a value that was never read.
void ValueChanges::place(std::size_t index, const CyclicValue& value)
{
    if (index >= m_told.size())
        m_told.resize(index + 1);
    Told& told = m_told[index];
    if (told.isKnown)
        return;
    told.isKnown = true;
    told.values = static_cast<quint32>(m_values.size());
    m_values.resize(m_values.size() + value.values.size());
}

bool ValueChanges::isFailureNews(std::size_t index, const Failure& failure)
{
    Told& told = m_told[index];
    const bool failed = plc::hasFailed(failure);
    if (!failed && !told.hasFailed)
        return false;
    if (m_failures.size() <= index)
        m_failures.resize(m_told.size());
    std::shared_ptr<const Failure>& known = m_failures[index];
    if (failed && told.hasFailed && *known == failure)
        return false;
    if (failed && !(m_latest && *m_latest == failure))
        m_latest = std::make_shared<const Failure>(failure);
    known = failed ? m_latest : nullptr;
    told.hasFailed = failed;
    return true;
}

bool ValueChanges::isNews(int index, const CyclicValue& value)
{
    const auto place = static_cast<std::size_t>(index);
    this->place(place, value);
    const bool isFailed = isFailureNews(place, value.failure);
    Told& told = m_told[place];
    const auto values = m_values.begin() + static_cast<std::ptrdiff_t>(told.values);
    if (!isFailed && told.state == value.state &&
        std::equal(value.values.begin(), value.values.end(), values))
        return false;
    told.state = value.state;
    std::copy(value.values.begin(), value.values.end(), values);
    return true;
}

} // namespace plc
