/// \file
/// \brief The list of variables that a person writes as a CSV file.
///
/// The first line that counts names the columns: name,area,address,station,count,type. Then one variable a
/// line. Blank lines and lines that begin with # are skipped; a field in double quotes may hold commas. An
/// empty station is the panel's own, an empty count is 1. The count is in values of the type (text:
/// characters), whatever number of elements they take.
#ifndef RUNTIME_MODEL_VARIABLE_LIST_H
#define RUNTIME_MODEL_VARIABLE_LIST_H

#include "runtime/export.h"
#include "runtime/model/value_type.h"
#include "runtime/model/variable.h"

#include <QByteArray>
#include <QStringList>

#include <functional>
#include <vector>

namespace plc
{

struct ListedVariable {
    QString name;      ///< unique in its list, never empty
    Variable elements; ///< what the driver is asked for
    ValueType type = ValueType::Uint16;
    int count = 1; ///< values, of text characters: what the elements hold for a person
    int line = 0;  ///< where it stands in the file, from 1 on
};

struct VariableList {
    std::vector<ListedVariable> variables;
    /// One message per wrong line: its number, what was wrong and what is expected, and its text.
    QStringList errors;
};

/// Says what is against a variable that the list itself allows; an empty text when nothing is.
using VariableCheck = std::function<QString(const ListedVariable& variable)>;

/// Parses a whole file. All wrong lines are reported at once; a list with errors is not to be used.
/// \param check may be empty
PLCRUNTIME_API VariableList parseVariableList(const QByteArray& csv, const VariableCheck& check = {});

/// Reads and parses a file. A file that cannot be read is an error of the list.
PLCRUNTIME_API VariableList readVariableList(const QString& path, const VariableCheck& check = {});

} // namespace plc

#endif
