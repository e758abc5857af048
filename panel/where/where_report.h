// SPDX-License-Identifier: MIT
/// \file
/// \brief What plcpanel where tells, for people and for programs.
#ifndef PANEL_WHERE_WHERE_REPORT_H
#define PANEL_WHERE_WHERE_REPORT_H

#include "runtime/model/variable_list.h"

#include <QString>

#include <optional>
#include <vector>

namespace plc
{

/// A variable that was named or typed.
struct LocatedVariable {
    Variable elements;
    std::optional<ListedVariable> listed;
};

/// \param width of the terminal; 0: there is none, and lines may have any length
/// \return a table, or where it is too wide a paragraph for each; then what the numbers of the functions mean. Each
///         line ends with a line feed.
QString whereText(const std::vector<LocatedVariable>& variables, int width);

/// \return an object for each, on lines of their own
QString whereJson(const std::vector<LocatedVariable>& variables);

} // namespace plc

#endif
