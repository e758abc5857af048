// SPDX-License-Identifier: MIT
/// \file
/// \brief How a value is put together of what lies in the controller, in words.
#ifndef PANEL_WHERE_VALUE_WORDS_H
#define PANEL_WHERE_VALUE_WORDS_H

#include "panel/where/place.h"
#include "runtime/model/variable_list.h"

#include <QString>

namespace plc
{

/// \return of a variable without a list: "bit 3", "16 bits", "low word first"; empty where each element is a
///         coil or register by itself
QString elementsWords(const Variable& elements, const Place& place);

/// \return type, order and scale: "float32, ABCD: high word first, x 0.1 + 5 l/h"
QString valueWords(const ListedVariable& variable, const Place& place);

/// \return the order of its words and bytes, that of a list that says nothing included; empty where there is
///         none, because each value lies in one word
QString orderWord(const ListedVariable& variable);

} // namespace plc

#endif
