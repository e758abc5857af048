// SPDX-License-Identifier: MIT
#include "runtime/c/typed_values.h"

#include "runtime/c/refusal.h"
#include "runtime/model/listed_value.h"

#include <cmath>
#include <limits>

namespace plc
{

namespace
{

const double beyondInt64 = 9223372036854775808.0; // the first number that does not fit

[[noreturn]] void refuse(const QString& words)
{
    throw Refusal(PLCRUNTIME_INVALID, words);
}

ValueType typeOf(const char* type, int area)
{
    if (type == nullptr)
        return plainType(area);
    const std::optional<ValueType> known = parseValueType(QString::fromUtf8(type));
    if (!known)
        refuse(QStringLiteral("there is no type \"%1\"; types are %2")
                   .arg(QString::fromUtf8(type), valueTypeWords()));
    return *known;
}

/// \param text as textsOfValues() makes it
NumberPair numbersIn(const QString& text)
{
    NumberPair numbers;
    bool isWhole = false;
    numbers.whole =
        text.startsWith(QLatin1String("0x")) ? text.toLongLong(&isWhole, 0) : text.toLongLong(&isWhole);
    if (text.startsWith(QLatin1String("0x"))) {
        numbers.real = static_cast<double>(numbers.whole);
        return numbers;
    }
    numbers.real = text.toDouble();
    if (!isWhole && std::fabs(numbers.real) < beyondInt64)
        numbers.whole = static_cast<qint64>(numbers.real);
    return numbers;
}

} // namespace

TypedVariable typedVariable(const char* variable, const char* type)
{
    if (variable == nullptr)
        refuse(QStringLiteral("no variable is given"));
    QString error;
    const std::optional<Variable> parsed = parseVariable(QString::fromUtf8(variable), &error);
    if (!parsed)
        refuse(error);
    TypedVariable what;
    what.variable = *parsed;
    what.values = parsed->count;
    what.type = typeOf(type, parsed->area);
    what.variable.count = elementsOfType(what.type, parsed->area, parsed->count);
    if (what.variable.count == 0)
        refuse(QStringLiteral("area %1 holds no %2; it holds %3")
                   .arg(QString::number(parsed->area), valueTypeWord(what.type),
                        valueTypesOfArea(parsed->area)));
    what.variable.valueElements = elementsOfType(what.type, parsed->area, 1);
    return what;
}

std::vector<NumberPair> numbersOf(const TypedVariable& what, const std::vector<quint32>& elements)
{
    std::vector<NumberPair> numbers;
    if (what.type == ValueType::Text)
        return numbers;
    for (const QString& text : textsOfValues(what.type, what.variable.area, elements))
        numbers.push_back(numbersIn(text));
    return numbers;
}

std::string textOf(const TypedVariable& what, const std::vector<quint32>& elements)
{
    const int area = what.variable.area;
    const QString text = what.type == ValueType::Text
                             ? valueJson(what.type, area, elements, what.values).toString()
                             : valueText(what.type, area, elements);
    return text.toStdString();
}

std::vector<quint32> elementsOfNumber(const TypedVariable& what, double number)
{
    if (what.type == ValueType::Text || what.values != 1)
        refuse(QStringLiteral("a number is one value of a type that is no text"));
    ListedVariable listed;
    listed.elements = what.variable;
    listed.type = what.type;
    QString error;
    const std::optional<std::vector<quint32>> elements =
        parseListed(listed, QString::number(number, 'g', std::numeric_limits<double>::max_digits10), &error);
    if (!elements)
        refuse(error);
    return *elements;
}

std::vector<quint32> elementsOfText(const TypedVariable& what, const char* text)
{
    if (text == nullptr)
        refuse(QStringLiteral("no text is given"));
    const QString characters = QString::fromUtf8(text);
    QByteArray bytes = characters.toLatin1();
    if (QString::fromLatin1(bytes) != characters)
        refuse(
            QStringLiteral("the text has characters that are not of Latin-1, of which each takes one byte"));
    if (bytes.size() > what.values)
        refuse(
            QStringLiteral("the text has %1 characters, the variable %2").arg(bytes.size()).arg(what.values));
    bytes.append(QByteArray(what.variable.count * bytesOfElement(what.variable.area) - bytes.size(), '\0'));
    return valuesOfBytes(what.variable.area, bytes);
}

} // namespace plc
