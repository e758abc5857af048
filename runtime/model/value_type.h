// SPDX-License-Identifier: MIT
/// \file
/// \brief What the elements of a listed variable mean to a person.
#ifndef RUNTIME_MODEL_VALUE_TYPE_H
#define RUNTIME_MODEL_VALUE_TYPE_H

#include "runtime/export.h"

#include <QJsonValue>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace plc
{

/// 32-bit types take one double word of area 14 or two words, 64-bit types twice as many, the low word
/// first. Text holds two characters a word (four a double word), the low byte first. BCD has a decimal
/// digit in each four bits.
enum class ValueType : quint8 {
    Bit,
    Int16,
    Uint16,
    Int32,
    Uint32,
    Float32,
    Hex,
    Text,
    Int64,
    Uint64,
    Float64,
    Bcd16,
    Bcd32
};

/// \return the type of a word such as "int16"; nothing for any other text
PLCRUNTIME_API std::optional<ValueType> parseValueType(const QString& text);

/// \return the word that parseValueType() takes
PLCRUNTIME_API QString valueTypeWord(ValueType type);

/// \return the words of all types, for help
PLCRUNTIME_API QString valueTypeWords();

/// \return the words of all types that \a area can hold, for messages
PLCRUNTIME_API QString valueTypesOfArea(int area);

/// \return the type that the elements of \a area have where nothing else is said of them
PLCRUNTIME_API ValueType plainType(int area);

/// \return bytes of one value of \a type in \a area; of text and bits those of an element
PLCRUNTIME_API int bytesOfType(ValueType type, int area);

/// \return true for the types whose values are numbers that a unit, a scale and limits may belong to
PLCRUNTIME_API bool isNumber(ValueType type);

/// \return true for the types of numbers that have no fraction
PLCRUNTIME_API bool isWholeNumber(ValueType type);

/// \return true when values of \a type in \a area lie in more than one word, or are text
PLCRUNTIME_API bool hasWordOrder(ValueType type, int area);

/// \return elements of \a area that \a count values (for text: characters) take; 0 when the area cannot hold
///         the type
PLCRUNTIME_API int elementsOfType(ValueType type, int area, int count);

/// \param elements one per element of \a area, as CyclicValue::values
/// \param characters of text, the rest of whose last element is not shown; -1: all that the elements hold
/// \return the values as a person reads them, separated by spaces; text in quotes, without zero bytes at
///         its end. Floating-point numbers have as many digits as it takes to read the same value back. Of
///         what is no BCD the text is "not BCD" and the digits that are there, in hexadecimal.
PLCRUNTIME_API QString valueText(ValueType type, int area, const std::vector<quint32>& elements,
                                 int characters = -1);

/// \return a text for each whole value that \a elements hold, as valueText(); not for Text
PLCRUNTIME_API QStringList textsOfValues(ValueType type, int area, const std::vector<quint32>& elements);

/// 2^53: up to it a double has each whole number, and beyond it a reader of JSON may take one for another.
inline constexpr qint64 greatestExactWhole = 1LL << 53;

/// \param text one of textsOfValues()
/// \return the number as JSON has it; the text itself where JSON has none (nan, inf, not BCD) or a reader
///         would not keep it exactly: whole numbers beyond greatestExactWhole
PLCRUNTIME_API QJsonValue jsonOfText(ValueType type, const QString& text);

/// \param count values, of text characters, that the elements hold for a person
/// \return the value as JSON has it: jsonOfText(), the characters of text; of several an array
PLCRUNTIME_API QJsonValue valueJson(ValueType type, int area, const std::vector<quint32>& elements,
                                    int count);

} // namespace plc

#endif
