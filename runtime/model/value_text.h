// SPDX-License-Identifier: MIT
/// \file
/// \brief Values as text: decimal, hexadecimal and JSON.
#ifndef RUNTIME_MODEL_VALUE_TEXT_H
#define RUNTIME_MODEL_VALUE_TEXT_H

#include "runtime/export.h"
#include "runtime/model/variable.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <vector>

namespace plc
{

enum class ValueFormat {
    Decimal, ///< 1234
    Hex,     ///< 0x04D2, as many digits as the element has; bits stay 0 and 1
    Json     ///< one object per line, values as decimal numbers
};

/// \return one text per value of \a area; Json is written like Decimal
PLCRUNTIME_API QStringList valueTexts(int area, const std::vector<quint32>& values, ValueFormat format);

/// \return the members "area", "address" (a text, as it is typed), "count" and "station"
PLCRUNTIME_API QJsonObject jsonOfVariable(const Variable& variable, int station);

/// Adds the member "values", an array of numbers.
PLCRUNTIME_API void addValues(QJsonObject* object, const std::vector<quint32>& values);

/// \return \a object on one line, without the line's end
PLCRUNTIME_API QString jsonLine(const QJsonObject& object);

} // namespace plc

#endif
