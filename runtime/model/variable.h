// SPDX-License-Identifier: MIT
/// \file
/// \brief One controller variable as a person names it, its address text and its values.
#ifndef RUNTIME_MODEL_VARIABLE_H
#define RUNTIME_MODEL_VARIABLE_H

#include "runtime/export.h"
#include "runtime/model/area_table.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace plc
{

inline constexpr int lastStation = 255;

/// A run of elements of one area. Area codes: 0..7 bits, 8 bits inside the words of area 9, 9..13 words,
/// 14 double words.
struct Variable {
    int area = 9;
    int element = 0;  ///< first element; for area 8 word x 16 + bit
    int count = 1;    ///< elements, as a person counts them
    int station = -1; ///< -1: the station of the settings

    /// Words or double words that make one value of a wider type. A value is read, and written, by one request,
    /// and count is a multiple of it.
    int valueElements = 1;
};

/// \return the element behind the last one of \a variable
inline int endOf(const Variable& variable)
{
    return variable.element + variable.count;
}

/// \return the address text that the driver takes for \a element, e.g. "17" (octal) for element 15 of area 0
PLCRUNTIME_API QString addressText(int area, int element);

/// \return the element that \a text names; nothing when it names none, then \a error says what is expected
PLCRUNTIME_API std::optional<int> parseAddress(int area, const QString& text, QString* error);

/// Parses "AREA:ADDRESS[xCOUNT][@STATION]", e.g. "9:100x10", "0:17", "8:10.3", "14:200x2@3". An ADDRESS that
/// begins with 0x is refused, because it may be meant as hexadecimal: four elements from 0 on are "9:00x4".
/// \return nothing when \a text is wrong, then \a error says what was wrong and what is expected
PLCRUNTIME_API std::optional<Variable> parseVariable(const QString& text, QString* error);

/// \return the variable as parseVariable() takes it
PLCRUNTIME_API QString variableText(const Variable& variable);

/// Parses "VALUE[,VALUE...]" for \a area: decimal, negative decimal or 0x hexadecimal that fits an element.
/// \return nothing when one is wrong, then \a error names it and says what is expected
PLCRUNTIME_API std::optional<std::vector<quint32>> parseValues(int area, const QString& text, QString* error);

/// \return the value bytes that the driver takes: one per bit, words and double words little-endian
PLCRUNTIME_API QByteArray bytesOfValues(int area, const std::vector<quint32>& values);

/// The inverse of bytesOfValues(); bytes beyond the last whole element are ignored.
PLCRUNTIME_API std::vector<quint32> valuesOfBytes(int area, const QByteArray& bytes);

} // namespace plc

#endif
