// SPDX-License-Identifier: MIT
/// \file
/// \brief The numbers of a listed variable, for curves, bars and sorting.
#ifndef WINDOW_SESSION_LISTED_NUMBER_H
#define WINDOW_SESSION_LISTED_NUMBER_H

#include "runtime/model/variable_list.h"

#include <vector>

namespace plc
{

/// \return the values of a variable that a curve can show: 0 for text
int numbersOf(const ListedVariable& variable);

/// \param elements one per element of the variable, as CyclicValue::values
/// \param index    below numbersOf()
/// \return the number that is shown, with all its digits; not finite where there is none. It costs no text:
///         thousands of values may be looked at many times a second
double listedNumber(const ListedVariable& variable, const std::vector<quint32>& elements, int index = 0);

/// \return true when one of the numbers lies outside the limits, as isOutside() has it
bool isOutsideLimits(const ListedVariable& variable, const std::vector<quint32>& elements);

} // namespace plc

#endif
