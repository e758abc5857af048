/// \file
/// \brief The list of variables that a person writes as a CSV file.
///
/// The first line that counts names the columns: name,area,address,station,count,type. Then one variable a
/// line. Blank lines and lines that begin with # are skipped; a field in double quotes may hold commas. An
/// empty station is the panel's own, an empty count is 1. The count is in values of the type (text:
/// characters), whatever number of elements they take. The file is text in UTF-8: a line with a control character
/// other than a tab is wrong.
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

// A file may be a device or a pipe without an end, or anything but a list.
inline constexpr int longestListBytes = 16 * 1024 * 1024;
inline constexpr int longestLineBytes = 2000;
inline constexpr int longestNameCharacters = 200;
inline constexpr int mostListedVariables = 250000;
inline constexpr int mostListErrors = 20;    ///< that are told one by one
inline constexpr int mostWrongLines = 10000; ///< what is behind them is not looked at

struct ListedVariable {
    QString name;      ///< unique in its list, never empty
    Variable elements; ///< what the driver is asked for
    ValueType type = ValueType::Uint16;
    int count = 1; ///< values, of text characters: what the elements hold for a person
    int line = 0;  ///< where it stands in the file, from 1 on
};

struct VariableList {
    std::vector<ListedVariable> variables;
    /// One message per wrong line: its number, what was wrong and what is expected, and its text. After
    /// mostListErrors of them one that says how many more there are.
    QStringList errors;
};

/// Says what is against a variable that the list itself allows; an empty text when nothing is.
using VariableCheck = std::function<QString(const ListedVariable& variable)>;

/// Parses a whole file. Wrong lines are reported together; a list with errors is not to be used.
/// \param check may be empty
PLCRUNTIME_API VariableList parseVariableList(const QByteArray& csv, const VariableCheck& check = {});

/// Reads and parses a file. A file that cannot be read or is too long is an error of the list.
PLCRUNTIME_API VariableList readVariableList(const QString& path, const VariableCheck& check = {});

} // namespace plc

#endif
