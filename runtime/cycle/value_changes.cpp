// SPDX-License-Identifier: MIT
#include "runtime/cycle/value_changes.h"

namespace plc
{

bool ValueChanges::isNews(int index, const CyclicValue& value)
{
    Told& told = m_told[index];
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
