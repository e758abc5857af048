// SPDX-License-Identifier: MIT
/// \file
/// \brief The values of a listed variable as numbers, for comparing, curves and sorting: no text is made.
#ifndef RUNTIME_MODEL_SHOWN_NUMBER_H
#define RUNTIME_MODEL_SHOWN_NUMBER_H

#include "runtime/model/variable_list.h"

#include <vector>

namespace plc
{

/// \return the values of a variable that are numbers: 0 for text
int numbersOf(const ListedVariable& variable);

/// \return elements of the variable's area that one value takes; of text one
int elementsOfValue(const ListedVariable& variable);

/// \param elements one per element of the variable, as CyclicValue::values
/// \param value which of the variable's values
/// \return the number that is shown, before it is rounded for people (whole ones beyond 2^53 to the nearest
///         double); nan of what is none, as of text
double shownNumber(const ListedVariable& variable, const std::vector<quint32>& elements, int value = 0);

/// The same of one value alone. \param size elementsOfValue() \param elements as many
double shownNumber(const ListedVariable& variable, const quint32* elements, int size);

} // namespace plc

#endif
