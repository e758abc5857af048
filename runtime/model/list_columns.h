// SPDX-License-Identifier: MIT
/// \file
/// \brief The columns of a list of variables: one table, a row each.
#ifndef RUNTIME_MODEL_LIST_COLUMNS_H
#define RUNTIME_MODEL_LIST_COLUMNS_H

#include "runtime/model/variable_list.h"

#include <QStringList>

#include <stdexcept>
#include <vector>

namespace plc
{

/// What is wrong with a line and what is expected instead.
class LineError : public std::runtime_error
{
public:
    explicit LineError(const QString& words) : std::runtime_error(words.toStdString()) {}
};

/// The columns that one list has, in the order of their fields.
class ListColumns
{
public:
    /// \param names fields of the list's first line
    /// \param decimalComma true: numbers may have a comma for a point
    /// \throws LineError when one is no column or there twice, or one that is needed is not there
    ListColumns(const QStringList& names, bool decimalComma);

    /// \return what one line says; its number is left to the caller
    /// \throws LineError
    ListedVariable variableOf(const QStringList& fields) const;

private:
    QStringList m_names;
    std::vector<int> m_fieldOf; // row = column of the table; -1: the list has it not
    bool m_decimalComma;
};

} // namespace plc

#endif
