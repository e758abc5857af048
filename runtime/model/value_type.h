/// \file
/// \brief What the elements of a listed variable mean to a person.
#ifndef RUNTIME_MODEL_VALUE_TYPE_H
#define RUNTIME_MODEL_VALUE_TYPE_H

#include "runtime/export.h"

#include <QJsonValue>
#include <QString>

#include <optional>
#include <vector>

namespace plc
{

/// 32-bit types take one double word of area 14 or two words, the low half first. Text holds two characters a
/// word (four a double word), the low byte first.
enum class ValueType { Bit, Int16, Uint16, Int32, Uint32, Float32, Hex, Text };

/// \return the type of a word such as "int16"; nothing for any other text
PLCRUNTIME_API std::optional<ValueType> parseValueType(const QString& text);

/// \return the word that parseValueType() takes
PLCRUNTIME_API QString valueTypeWord(ValueType type);

/// \return the words of all types, for help
PLCRUNTIME_API QString valueTypeWords();

/// \return the words of all types that \a area can hold, for messages
PLCRUNTIME_API QString valueTypesOfArea(int area);

/// \return elements of \a area that \a count values (for text: characters) take; 0 when the area cannot hold
///         the type
PLCRUNTIME_API int elementsOfType(ValueType type, int area, int count);

/// \param elements one per element of \a area, as CyclicValue::values
/// \param characters of text, the rest of whose last element is not shown; -1: all that the elements hold
/// \return the values as a person reads them, separated by spaces; text in quotes, without zero bytes at its
///         end. A float32 has as many digits as it takes to read the same value back.
PLCRUNTIME_API QString valueText(ValueType type, int area, const std::vector<quint32>& elements,
                                 int characters = -1);

/// \param count values, of text characters, that the elements hold for a person
/// \return the value as JSON has it: a number, the characters of text, "nan", "inf" or "-inf"; of several an array
PLCRUNTIME_API QJsonValue valueJson(ValueType type, int area, const std::vector<quint32>& elements,
                                    int count);

} // namespace plc

#endif
