// SPDX-License-Identifier: MIT
#include "runtime/cycle/value_changes.h"

namespace plc
{

bool ValueChanges::isNews(int index, const CyclicValue& value)
{
    const auto place = static_cast<std::size_t>(index);
    if (place >= m_told.size())
        m_told.resize(place + 1);
    Told& told = m_told[place];
    if (told.values.empty())
        told.values.assign(value.values.size(), 0); // as a value that was never read is shown
    if (told.state == value.state && told.values == value.values && told.failure == value.failure)
        return false;
    told.state = value.state;
    told.values = value.values;
    told.failure = value.failure;
    return true;
}

} // namespace plc
