// SPDX-License-Identifier: MIT
/// \file
/// \brief What was told last of each cyclic variable, so that only changes are told.
#ifndef RUNTIME_CYCLE_VALUE_CHANGES_H
#define RUNTIME_CYCLE_VALUE_CHANGES_H

#include "runtime/model/cyclic_value.h"

#include <vector>

namespace plc
{

class ValueChanges
{
public:
    /// Takes \a value for told. \return true when its values, its state or what it failed of differ from what was
    ///         told before; before that it was never read. A growing age is no change.
    bool isNews(int index, const CyclicValue& value);

private:
    struct Told {
        ValueState state = ValueState::NeverRead;
        std::vector<quint32> values;
        Failure failure;
    };

    std::vector<Told> m_told; // by index
};

} // namespace plc

#endif
