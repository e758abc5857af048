// SPDX-License-Identifier: MIT
/// \file
/// \brief What is watched: variables that were typed, and below them those of a list.
#ifndef PANEL_WATCH_WATCHED_VARIABLES_H
#define PANEL_WATCH_WATCHED_VARIABLES_H

#include "runtime/model/variable.h"
#include "runtime/model/variable_list.h"

#include <QString>

#include <vector>

namespace plc
{

/// Rows are counted from 0 on, as the runtime counts its cyclic variables. Both lists must outlive it.
class WatchedVariables
{
public:
    WatchedVariables(const std::vector<Variable>& typed, const std::vector<ListedVariable>& listed)
        : m_typed(typed), m_listed(listed)
    {
    }

    int size() const { return static_cast<int>(m_typed.size() + m_listed.size()); }

    const Variable& variable(int row) const
    {
        const ListedVariable* const line = listed(row);
        return line != nullptr ? line->elements : m_typed[static_cast<std::size_t>(row)];
    }

    /// \return null for a variable that was typed
    const ListedVariable* listed(int row) const
    {
        const auto index = static_cast<std::size_t>(row);
        return index < m_typed.size() ? nullptr : &m_listed[index - m_typed.size()];
    }

    /// \return what it is shown under
    QString name(int row) const
    {
        const ListedVariable* const line = listed(row);
        return line != nullptr ? line->name.text() : variableText(variable(row));
    }

private:
    const std::vector<Variable>& m_typed;
    const std::vector<ListedVariable>& m_listed;
};

} // namespace plc

#endif
