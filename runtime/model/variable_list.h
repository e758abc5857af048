// SPDX-License-Identifier: MIT
/// \file
/// \brief The list of variables that a person writes as a CSV file.
///
/// The first line that counts names the columns, in any order: name, area, address and type are needed, the
/// others of listColumns() may be left out. Then one variable a line. Blank lines and lines that begin with
/// # are skipped; a field in double quotes may hold commas. Where the first line has semicolons they stand
/// between the fields, and numbers may have a decimal comma. An empty station is the panel's own, an empty
/// count is 1. The count is in values of the type (text: characters), whatever number of elements they
/// take. The file is text in UTF-8: a line with a control character other than a tab, or with bytes that are no
/// UTF-8, is wrong.
#ifndef RUNTIME_MODEL_VARIABLE_LIST_H
#define RUNTIME_MODEL_VARIABLE_LIST_H

#include "runtime/export.h"
#include "runtime/model/small_members.h"
#include "runtime/model/value_type.h"
#include "runtime/model/variable.h"
#include "runtime/model/word_order.h"

#include <QByteArray>
#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

namespace plc
{

// A file may be a device or a pipe without an end, or anything but a list. What it may make a program keep is bounded
// by these: some hundred bytes for a variable, and its texts.
inline constexpr int longestListBytes = 64 * 1024 * 1024;
inline constexpr int longestLineBytes = 2000;
inline constexpr int longestNameCharacters = 200;
inline constexpr int longestUnitCharacters = 20;
inline constexpr int mostDigits = 15; ///< behind the decimal point
inline constexpr int mostListedVariables = 1000000;
inline constexpr int mostListErrors = 20;    ///< that are told one by one
inline constexpr int mostWrongLines = 10000; ///< what is behind them is not looked at

/// What a list says of writing; what it leaves unsaid is for the program to decide.
enum class Access : quint8 { Unsaid, ReadOnly, ReadWrite };

/// Scale, offset and limits belong to types of numbers. A shown number is that of the elements x scale +
/// offset. A program may have a million of these.
struct ListedVariable {
    SmallText name;    ///< unique in its list, never empty
    Variable elements; ///< what the driver is asked for
    int count = 1;     ///< values, of text characters: what the elements hold for a person
    int line = 0;      ///< where it stands in the file, from 1 on

    ValueType type = ValueType::Uint16;
    WordOrder order = WordOrder::Usual;
    Access access = Access::Unsaid;
    qint8 digits = -1;      ///< that are shown behind the decimal point; -1: as many as the number has
    NumberOrUsual<1> scale; ///< never 0
    NumberOrUsual<0> offset;
    QString unit;   ///< of what is shown
    RareNumber min; ///< of what is shown
    RareNumber max;
    NumberOrUsual<0>
        deadband; ///< at least 0, in the unit of what is shown: a change by no more may be left untold
    QString comment;
};

struct VariableList {
    std::vector<ListedVariable> variables;
    /// One message per wrong line: its number, what was wrong and what is expected, and its text. After
    /// mostListErrors of them one that says how many more there are.
    QStringList errors;
};

/// Says what is against a variable that the list itself allows; an empty text when nothing is.
using VariableCheck = std::function<QString(const ListedVariable& variable)>;

/// \return the names of all columns, in their usual order, for messages and help
PLCRUNTIME_API QStringList listColumns();

/// \return a line for each column, and what the orders mean, for help
PLCRUNTIME_API QString listGuide();

/// Parses a whole file. Wrong lines are reported together; a list with errors is not to be used.
/// \param check may be empty
PLCRUNTIME_API VariableList parseVariableList(const QByteArray& csv, const VariableCheck& check = {});

/// Reads and parses a file, piece by piece. A file that cannot be read or is too long is an error of the list.
PLCRUNTIME_API VariableList readVariableList(const QString& path, const VariableCheck& check = {});

} // namespace plc

#endif
