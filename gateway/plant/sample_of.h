// SPDX-License-Identifier: MIT
/// \file
/// \brief A listed variable's elements as the value that goes to the broker.
#ifndef GATEWAY_PLANT_SAMPLE_OF_H
#define GATEWAY_PLANT_SAMPLE_OF_H

#include "gateway/values/sample.h"
#include "runtime/model/cyclic_value.h"
#include "runtime/model/variable_list.h"

namespace plc
{

/// \return the value in the list's unit, with its digits: true or false of a bit, a whole number where type and scale
///         leave it one, a text of text. Of several values the text is a JSON array of them. No value where the
///         elements mean none (not BCD, not a number).
SampleValue sampleValue(const ListedVariable& variable, const std::vector<quint32>& elements);

/// \return true when the values of \a variable are whole numbers, scale and offset included
bool isWhole(const ListedVariable& variable);

/// \return true when \a variable has several values, which its samples hold as one text
bool isArray(const ListedVariable& variable);

/// \return the value, when the controller's reply came, and how good it is: good when it is fresh, bad when there is
///         none, otherwise stale
Sample sampleOf(quint32 index, const ListedVariable& variable, const CyclicValue& value);

} // namespace plc

#endif
