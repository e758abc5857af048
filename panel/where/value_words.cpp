// SPDX-License-Identifier: MIT
#include "panel/where/value_words.h"

#include "runtime/model/listed_value.h"

#include <QStringList>

namespace plc
{

namespace
{

const char lowWordFirst[] = "low word first";
const char highWordFirst[] = "high word first";

QString bitsWords(const Variable& elements, const Place& place)
{
    if (elements.count == 1)
        return QStringLiteral("bit %1").arg(place.firstBit);
    if (place.first == place.last)
        return QStringLiteral("bits %1 to %2").arg(place.firstBit).arg(place.lastBit);
    return QStringLiteral("bit %1 of the first to bit %2 of the last").arg(place.firstBit).arg(place.lastBit);
}

WordOrder orderOf(const ListedVariable& variable)
{
    if (variable.order != WordOrder::Usual)
        return variable.order;
    return variable.type == ValueType::Text ? WordOrder::Badc : WordOrder::Cdab;
}

bool isHighWordFirst(WordOrder order)
{
    return order == WordOrder::Abcd || order == WordOrder::Badc;
}

bool areBytesExchanged(WordOrder order)
{
    return order == WordOrder::Badc || order == WordOrder::Dcba;
}

QString numberOrderWords(WordOrder order)
{
    const QString words = QLatin1String(isHighWordFirst(order) ? highWordFirst : lowWordFirst);
    return areBytesExchanged(order) ? words + QStringLiteral(", low byte of each first") : words;
}

/// The names are those of numbers; of text the first character is the highest byte.
QString textOrderWords(WordOrder order)
{
    const QString words = areBytesExchanged(order) ? QStringLiteral("low byte of each word first")
                                                   : QStringLiteral("high byte of each word first");
    return isHighWordFirst(order) ? words : words + QStringLiteral(", the second word of two first");
}

QString orderWords(const ListedVariable& variable)
{
    const QString word = orderWord(variable);
    if (word.isEmpty())
        return QString();
    const WordOrder order = orderOf(variable);
    return QStringLiteral(", %1: ").arg(word) +
           (variable.type == ValueType::Text ? textOrderWords(order) : numberOrderWords(order));
}

QString typeWords(const ListedVariable& variable, const Place& place)
{
    const QString type = valueTypeWord(variable.type);
    if (variable.type == ValueType::Text)
        return QStringLiteral("text of %1").arg(variable.count);
    if (place.firstBit >= 0)
        return bitsWords(variable.elements, place);
    if (variable.count == 1)
        return type;
    return variable.type == ValueType::Bit ? QStringLiteral("%1 bits").arg(variable.count)
                                           : QStringLiteral("%1 values of %2").arg(variable.count).arg(type);
}

QString numberText(double number)
{
    return QString::number(number, 'g', mostDigits);
}

/// What becomes of the number before it is shown.
QString scaleWords(const ListedVariable& variable)
{
    QString words;
    if (variable.scale != 1)
        words += QStringLiteral(" x ") + numberText(variable.scale);
    if (variable.offset != 0)
        words += QLatin1String(variable.offset < 0 ? " - " : " + ") + numberText(qAbs<double>(variable.offset));
    words += unitText(variable);
    return words.isEmpty() ? words : QLatin1Char(',') + words;
}

} // namespace

QString elementsWords(const Variable& elements, const Place& place)
{
    if (place.firstBit >= 0)
        return bitsWords(elements, place);
    if (kindOf(elements.area) != ElementKind::DoubleWord)
        return QString();
    return elements.count == 1 ? QLatin1String(lowWordFirst)
                               : QStringLiteral("%1 of two registers, %2")
                                     .arg(elements.count)
                                     .arg(QLatin1String(lowWordFirst));
}

QString valueWords(const ListedVariable& variable, const Place& place)
{
    return typeWords(variable, place) + orderWords(variable) + scaleWords(variable);
}

QString orderWord(const ListedVariable& variable)
{
    return hasWordOrder(variable.type, variable.elements.area) ? wordOrderWord(orderOf(variable)) : QString();
}

} // namespace plc
