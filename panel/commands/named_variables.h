// SPDX-License-Identifier: MIT
/// \file
/// \brief Variables of a list as a person names them on the command line.
#ifndef PANEL_COMMANDS_NAMED_VARIABLES_H
#define PANEL_COMMANDS_NAMED_VARIABLES_H

#include "runtime/model/variable_list.h"

#include <QString>

#include <optional>
#include <vector>

namespace plc
{

/// \return true for what begins like AREA:ADDRESS, with numbers around a colon. It is an address with a list and
///         without one; a variable that is called so is reached by a pattern, 9?100
bool looksLikeAddress(const QString& text);

/// \return true when \a text has a * or ?, which stand for any characters and for any one
bool isPattern(const QString& text);

/// \return true when \a pattern has such characters and \a name fits it
bool fitsPattern(const QString& name, const QString& pattern);

/// \return the variable that is called \a text, or else those whose names fit the pattern, in the list's order
std::vector<ListedVariable> variablesNamed(const std::vector<ListedVariable>& list, const QString& text);

/// "NAME=VALUE", taken apart.
struct NamedValue {
    ListedVariable variable;
    QString value;
};

/// \return nothing when no variable of \a list is called what stands before a = of \a text
std::optional<NamedValue> namedValue(const std::vector<ListedVariable>& list, const QString& text);

} // namespace plc

#endif
