// SPDX-License-Identifier: MIT
#include "runtime/model/value_text.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace plc
{

namespace
{

/// \return the digits of a hexadecimal value of \a area; 0 for bits
int hexDigits(int area)
{
    switch (kindOf(area)) {
    case ElementKind::Word:
        return 4;
    case ElementKind::DoubleWord:
        return 8;
    default:
        return 0;
    }
}

QString hexValue(quint32 value, int digits)
{
    return QStringLiteral("0x") + QStringLiteral("%1").arg(value, digits, 16, QLatin1Char('0')).toUpper();
}

} // namespace

QStringList valueTexts(int area, const std::vector<quint32>& values, ValueFormat format)
{
    const int digits = format == ValueFormat::Hex ? hexDigits(area) : 0;
    QStringList texts;
    for (const quint32 value : values)
        texts << (digits > 0 ? hexValue(value, digits) : QString::number(value));
    return texts;
}

QJsonObject jsonOfVariable(const Variable& variable, int station)
{
    return {{QStringLiteral("area"), variable.area},
            {QStringLiteral("address"), addressText(variable.area, variable.element)},
            {QStringLiteral("count"), variable.count},
            {QStringLiteral("station"), station}};
}

void addValues(QJsonObject* object, const std::vector<quint32>& values)
{
    QJsonArray array;
    for (const quint32 value : values)
        array.append(static_cast<qint64>(value));
    object->insert(QStringLiteral("values"), array);
}

QString jsonLine(const QJsonObject& object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

} // namespace plc
