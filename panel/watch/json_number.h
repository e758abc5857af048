// SPDX-License-Identifier: MIT
/// \file
/// \brief A listed number as text and as JSON has it, in little time.
#ifndef PANEL_WATCH_JSON_NUMBER_H
#define PANEL_WATCH_JSON_NUMBER_H

#include "runtime/model/decimal_digits.h"
#include "runtime/model/variable_list.h"

#include <cstddef>
#include <vector>

namespace plc
{

struct JsonNumber {
    char text[longestDecimal];
    char value[longestDecimal];
    std::size_t textSize;
    std::size_t valueSize;
};

/// What listedText() and addListedValue() make of a variable of one value, without either.
/// \return false where they are to be asked: texts, several values, and numbers that are written otherwise than with
///         digits and a point, or that digits are not told of for certain
bool takeNumber(const ListedVariable& listed, const std::vector<quint32>& elements, JsonNumber* number);

} // namespace plc

#endif
