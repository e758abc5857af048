// SPDX-License-Identifier: MIT
/// \file
/// \brief What was told last of each cyclic variable, so that only changes are told.
#ifndef RUNTIME_CYCLE_VALUE_CHANGES_H
#define RUNTIME_CYCLE_VALUE_CHANGES_H

#include "runtime/model/cyclic_value.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace plc
{

/// Small, for there may be a million variables.
class ValueChanges
{
public:
    /// Takes \a value for told. A variable always has as many values.
    /// \return true when its values, its state or what it failed of differ from what was told before; at first it
    ///         was never read. A growing age is no change.
    bool isNews(int index, const CyclicValue& value);

private:
    struct Told {
        quint32 values = 0; // where they begin in m_values
        ValueState state = ValueState::NeverRead;
        bool isKnown = false; // it has been looked at, and its values have their place
        bool hasFailed = false;
    };

    void place(std::size_t index, const CyclicValue& value);
    bool isFailureNews(std::size_t index, const Failure& failure);

    std::vector<Told> m_told;      // by index
    std::vector<quint32> m_values; // of all, as many of each as it always has
    // Of each that has failed; those that failed of the same share it. Empty as long as none has.
    std::vector<std::shared_ptr<const Failure>> m_failures;
    std::shared_ptr<const Failure> m_latest; // of m_failures
};

} // namespace plc

#endif
