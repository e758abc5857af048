// SPDX-License-Identifier: MIT
#include "gateway/plant/sample_of.h"

#include "runtime/model/listed_value.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace plc
{

namespace
{

SampleValue wholeValue(const QString& text)
{
    const QString digits = text.section(QLatin1Char('.'), 0, 0); // the list may want some behind the point
    bool isNumber = false;
    if (digits.startsWith(QLatin1Char('-'))) {
        const qint64 number = digits.toLongLong(&isNumber);
        return isNumber ? SampleValue(number) : SampleValue();
    }
    const quint64 number = digits.toULongLong(&isNumber, digits.startsWith(QLatin1String("0x")) ? 16 : 10);
    if (!isNumber)
        return {};
    return number <= quint64(std::numeric_limits<qint64>::max()) ? SampleValue(static_cast<qint64>(number))
                                                                 : SampleValue(number);
}

SampleValue arrayValue(const ListedVariable& variable, const std::vector<quint32>& elements)
{
    QJsonObject object;
    addListedValue(&object, variable, elements);
    const QJsonArray values = object.value(QStringLiteral("value")).toArray();
    return QString::fromUtf8(QJsonDocument(values).toJson(QJsonDocument::Compact));
}

SampleValue textValue(const ListedVariable& variable, const std::vector<quint32>& elements)
{
    const QString quoted = listedText(variable, elements);
    return quoted.mid(1, quoted.size() - 2);
}

} // namespace

bool isWhole(const ListedVariable& variable)
{
    const bool isScaled = variable.scale != 1 || variable.offset != 0;
    return variable.type == ValueType::Hex || (isWholeNumber(variable.type) && !isScaled);
}

bool isArray(const ListedVariable& variable)
{
    return variable.type != ValueType::Text && variable.count > 1;
}

SampleValue sampleValue(const ListedVariable& variable, const std::vector<quint32>& elements)
{
    if (variable.type == ValueType::Text)
        return textValue(variable, elements);
    if (isArray(variable))
        return arrayValue(variable, elements);
    if (variable.type == ValueType::Bit)
        return !elements.empty() && elements.front() != 0;
    const QString text = listedTexts(variable, elements).value(0);
    if (isWhole(variable))
        return wholeValue(text);
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    return isNumber && std::isfinite(number) ? SampleValue(number) : SampleValue();
}

Sample sampleOf(quint32 index, const ListedVariable& variable, const CyclicValue& value)
{
    Sample sample;
    sample.variable = index;
    sample.quality = SampleQuality::Bad;
    if (value.state == ValueState::NeverRead)
        return sample;
    sample.at = value.readAtMs;
    sample.value = sampleValue(variable, value.values);
    if (!std::holds_alternative<std::monostate>(sample.value))
        sample.quality = value.state == ValueState::Fresh ? SampleQuality::Good : SampleQuality::Stale;
    return sample;
}

} // namespace plc
