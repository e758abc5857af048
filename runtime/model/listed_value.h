// SPDX-License-Identifier: MIT
/// \file
/// \brief The values of a listed variable in its order, scale and unit, and the way back.
#ifndef RUNTIME_MODEL_LISTED_VALUE_H
#define RUNTIME_MODEL_LISTED_VALUE_H

#include "runtime/export.h"
#include "runtime/model/variable_list.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace plc
{

/// \param elements one per element of the variable, as CyclicValue::values
/// \return a text for each value, scaled and with the list's digits; of text one, in quotes
PLCRUNTIME_API QStringList listedTexts(const ListedVariable& variable, const std::vector<quint32>& elements);

/// \return listedTexts() on one line, without the unit
PLCRUNTIME_API QString listedText(const ListedVariable& variable, const std::vector<quint32>& elements);

/// \return a space and the unit; an empty text where the list has none
PLCRUNTIME_API QString unitText(const ListedVariable& variable);

/// \return the limits for people, e.g. "0 to 90 °C" or "at most 5"; an empty text where there are none
PLCRUNTIME_API QString limitsText(const ListedVariable& variable);

/// \return true when one of the numbers is below or above the limits, or is none (nan, not BCD) where there
///         are limits. What counts is the number that is shown, before it is cut to the list's digits.
PLCRUNTIME_API bool isOutside(const ListedVariable& variable, const std::vector<quint32>& elements);

/// Adds the members that a list gives: "name" and "type"; "unit", "min" and "max" where it has them.
PLCRUNTIME_API void addListed(QJsonObject* object, const ListedVariable& variable);

/// Adds "text" and "value", the value as listedText() and as JSON has it, and "outside" where there are
/// limits.
PLCRUNTIME_API void addListedValue(QJsonObject* object, const ListedVariable& variable,
                                   const std::vector<quint32>& elements);

/// Parses what a person wants to be written: a number in the variable's unit (which may follow it), true,
/// false, on or off for a bit, or a text; several values with commas between them. A scaled number is
/// rounded to the nearest that the controller can hold.
/// \return the elements; nothing when \a text is no such value, does not fit or lies outside the limits, or
///         the list says that the variable is only read. Then \a error says why.
PLCRUNTIME_API std::optional<std::vector<quint32>> parseListed(const ListedVariable& variable,
                                                               const QString& text, QString* error);

} // namespace plc

#endif
