// SPDX-License-Identifier: MIT
/// \file
/// \brief A variable with the type of its values: elements into numbers and texts, and back.
#ifndef RUNTIME_C_TYPED_VALUES_H
#define RUNTIME_C_TYPED_VALUES_H

#include "runtime/model/value_type.h"
#include "runtime/model/variable.h"

#include <string>
#include <vector>

namespace plc
{

struct TypedVariable {
    Variable variable; ///< its count is that of the elements
    ValueType type = ValueType::Uint16;
    int values = 1; ///< as many as were asked for; of a text its characters
};

/// \param type null: the plain one of the area. Then, as with every other, the count of the variable counts values
/// \throws Refusal when one of them is wrong, or the area cannot hold the type
TypedVariable typedVariable(const char* variable, const char* type);

/// A value as C takes it. What is no number, or does not fit, is 0 in that member.
struct NumberPair {
    double real = 0;
    qint64 whole = 0;
};

/// \return the values as numbers; none of a text
std::vector<NumberPair> numbersOf(const TypedVariable& what, const std::vector<quint32>& elements);

/// \return the values as a person reads them, without quotes, in UTF-8
std::string textOf(const TypedVariable& what, const std::vector<quint32>& elements);

/// \throws Refusal when \a what is a text or several values, or \a number does not fit
std::vector<quint32> elementsOfNumber(const TypedVariable& what, double number);

/// \throws Refusal when \a text has more characters, or others than Latin-1
std::vector<quint32> elementsOfText(const TypedVariable& what, const char* text);

} // namespace plc

#endif
