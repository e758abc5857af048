// SPDX-License-Identifier: MIT
#include "runtime/model/listed_value.h"

#include "runtime/model/counted.h"
#include "runtime/model/printable.h"
#include "runtime/model/shown_number.h"

#include <QJsonArray>

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace plc
{

namespace
{

// Scaling makes errors in the last digits, which nobody wants to see: 3 x 0.1 is 0.3.
const int digitsOfScaled = 15;
const int digitsOfScaledFloat = 7;
const double nearLimit = 1e-6; // part of it; wider than what those digits round

/// \return the bytes of whole values as the driver's own order has them, or the way back
QByteArray inOrder(const ListedVariable& variable, const QByteArray& bytes)
{
    if (variable.type == ValueType::Text)
        return textInOrder(bytes, variable.order);
    const int area = variable.elements.area;
    if (!hasWordOrder(variable.type, area))
        return bytes;
    return numbersInOrder(bytes, variable.order, bytesOfType(variable.type, area));
}

std::vector<quint32> elementsInOrder(const ListedVariable& variable, const std::vector<quint32>& elements)
{
    const int area = variable.elements.area;
    return valuesOfBytes(area, inOrder(variable, bytesOfValues(area, elements)));
}

bool isScaled(const ListedVariable& variable)
{
    return variable.scale != 1 || variable.offset != 0;
}

/// \return the number of a text as textsOfValues() has it; not finite where it is none
double numberOf(const QString& text)
{
    bool isReadable = false;
    const double number = text.toDouble(&isReadable);
    return isReadable ? number : std::numeric_limits<double>::quiet_NaN();
}

/// \return \a text, of an element's number, as the number that is shown, with all its digits
QString scaledText(const ListedVariable& variable, const QString& text)
{
    const double number = numberOf(text);
    if (!isScaled(variable) || !std::isfinite(number))
        return text;
    const int digits = variable.type == ValueType::Float32 ? digitsOfScaledFloat : digitsOfScaled;
    return QString::number(number * variable.scale + variable.offset, 'g', digits);
}

QStringList scaledTexts(const ListedVariable& variable, const std::vector<quint32>& elements)
{
    QStringList texts =
        textsOfValues(variable.type, variable.elements.area, elementsInOrder(variable, elements));
    for (QString& text : texts)
        text = scaledText(variable, text);
    return texts;
}

/// A whole number is not made a double of, which might not hold it.
bool isExact(const ListedVariable& variable)
{
    return isWholeNumber(variable.type) && !isScaled(variable);
}

QString withDigits(const ListedVariable& variable, const QString& text)
{
    const double number = numberOf(text);
    if (variable.digits < 0 || !std::isfinite(number))
        return text;
    if (!isExact(variable))
        return QString::number(number, 'f', variable.digits);
    return variable.digits == 0 ? text : text + QLatin1Char('.') + QString(variable.digits, QLatin1Char('0'));
}

QJsonValue jsonOf(const ListedVariable& variable, const QString& text)
{
    return isExact(variable) ? jsonOfText(variable.type, text)
                             : jsonOfText(ValueType::Float64, withDigits(variable, text));
}

QJsonValue listedJson(const ListedVariable& variable, const std::vector<quint32>& elements)
{
    if (!isNumber(variable.type))
        return valueJson(variable.type, variable.elements.area, elementsInOrder(variable, elements),
                         variable.count);
    QJsonArray values;
    for (const QString& text : scaledTexts(variable, elements))
        values.append(jsonOf(variable, text));
    return variable.count == 1 && values.size() == 1 ? values.first() : QJsonValue(values);
}

bool hasLimits(const ListedVariable& variable)
{
    return variable.min || variable.max;
}

QString limitText(double limit)
{
    return QString::number(limit, 'g', digitsOfScaled);
}

bool isInside(const ListedVariable& variable, double number)
{
    return (!variable.min || number >= *variable.min) && (!variable.max || number <= *variable.max);
}

/// So near to a limit only the digits that are shown tell on which side a number is: scaling and the type's own
/// digits make errors in the last ones. Elsewhere the number alone does, without the cost of a text.
bool isNear(double number, const std::optional<double>& limit)
{
    return limit && std::abs(number - *limit) < std::abs(*limit) * nearLimit;
}

bool isTextOutside(const ListedVariable& variable, const std::vector<quint32>& elements)
{
    for (const QString& text : scaledTexts(variable, elements)) {
        if (!isInside(variable, numberOf(text)))
            return true;
    }
    return false;
}

// The way back.

struct WholeRange {
    qint64 least;
    quint64 greatest;
};

WholeRange rangeOf(ValueType type)
{
    const auto range = [](auto number) {
        using Limits = std::numeric_limits<decltype(number)>;
        return WholeRange{static_cast<qint64>(Limits::min()), static_cast<quint64>(Limits::max())};
    };
    switch (type) {
    case ValueType::Int16:
        return range(qint16());
    case ValueType::Uint16:
        return range(quint16());
    case ValueType::Int32:
        return range(qint32());
    case ValueType::Int64:
        return range(qint64());
    case ValueType::Uint64:
        return range(quint64());
    case ValueType::Bcd16:
        return {0, 9999};
    case ValueType::Bcd32:
        return {0, 99999999};
    default:
        return range(quint32());
    }
}

std::nullopt_t refuse(QString* error, const QString& words)
{
    *error = words;
    return std::nullopt;
}

/// \return the bits of a number of \a type without a scale
std::optional<quint64> wholeBits(const QString& text, const WholeRange& range, QString* error)
{
    bool isWhole = false;
    quint64 bits = 0;
    if (text.startsWith(QLatin1Char('-'))) {
        const qint64 number = text.toLongLong(&isWhole, 10);
        isWhole = isWhole && number >= range.least;
        bits = static_cast<quint64>(number);
    } else {
        const bool hex = text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
        bits = text.toULongLong(&isWhole, hex ? 16 : 10);
        isWhole = isWhole && bits <= range.greatest;
    }
    if (!isWhole)
        return refuse(error,
                      QStringLiteral("\"%1\" does not fit; a whole number from %2 to %3 is expected")
                          .arg(excerpt(text), QString::number(range.least), QString::number(range.greatest)));
    return bits;
}

std::optional<quint64> roundedBits(const ListedVariable& variable, double number, QString* error)
{
    const WholeRange range = rangeOf(variable.type);
    const double rounded = std::round((number - variable.offset) / variable.scale);
    if (!(rounded >= static_cast<double>(range.least) && rounded < static_cast<double>(range.greatest) + 1)) {
        double ends[] = {static_cast<double>(range.least) * variable.scale + variable.offset,
                         static_cast<double>(range.greatest) * variable.scale + variable.offset};
        if (ends[0] > ends[1])
            std::swap(ends[0], ends[1]);
        return refuse(error, QStringLiteral("%1 does not fit; %2 to %3 does")
                                 .arg(limitText(number), limitText(ends[0]), limitText(ends[1])));
    }
    return rounded < 0 ? static_cast<quint64>(static_cast<qint64>(rounded)) : static_cast<quint64>(rounded);
}

template <class Float, class Bits>
std::optional<quint64> floatBits(Float number, const QString& text, QString* error)
{
    if (!std::isfinite(number))
        return refuse(error,
                      QStringLiteral("%1 does not fit; it is too large for its type").arg(excerpt(text)));
    Bits bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bits;
}

std::optional<quint64> floatBits(const ListedVariable& variable, double number, const QString& text,
                                 QString* error)
{
    const double raw = (number - variable.offset) / variable.scale;
    if (variable.type == ValueType::Float64)
        return floatBits<double, quint64>(raw, text, error);
    float rounded = 0;
    if (!isScaled(variable)) { // rounded once, not to a double before
        const QByteArray bytes = text.toLatin1();
        const char* const begin = bytes.begin() + (bytes.startsWith('+') ? 1 : 0);
        if (std::from_chars(begin, bytes.end(), rounded).ec == std::errc::result_out_of_range)
            rounded = std::fabs(number) > 1 ? std::numeric_limits<float>::infinity() : 0;
    } else {
        const bool isTooLarge = std::fabs(raw) > static_cast<double>(std::numeric_limits<float>::max());
        rounded = isTooLarge ? std::numeric_limits<float>::infinity() : static_cast<float>(raw);
    }
    return floatBits<float, quint32>(rounded, text, error);
}

/// \return the number that \a text begins with, before the unit where it is there
QString withoutUnit(const ListedVariable& variable, const QString& text)
{
    const bool hasUnit = !variable.unit.isEmpty() && text.endsWith(variable.unit);
    return (hasUnit ? text.left(text.size() - variable.unit.size()) : text).trimmed();
}

std::optional<quint64> numberBits(const ListedVariable& variable, const QString& text, QString* error)
{
    if (isExact(variable))
        return wholeBits(text, rangeOf(variable.type), error);
    const double number = numberOf(text);
    if (!std::isfinite(number))
        return refuse(error,
                      QStringLiteral("\"%1\" is no number; one such as 21.5 is expected").arg(excerpt(text)));
    return isWholeNumber(variable.type) ? roundedBits(variable, number, error)
                                        : floatBits(variable, number, text, error);
}

std::optional<quint64> bitOf(const QString& text, QString* error)
{
    for (const char* word : {"1", "true", "on"})
        if (text.compare(QLatin1String(word), Qt::CaseInsensitive) == 0)
            return 1;
    for (const char* word : {"0", "false", "off"})
        if (text.compare(QLatin1String(word), Qt::CaseInsensitive) == 0)
            return 0;
    return refuse(
        error,
        QStringLiteral("\"%1\" is no bit; 0, 1, true, false, on or off is expected").arg(excerpt(text)));
}

/// The digits of BCD are written like hexadecimal ones.
quint64 bcdBits(quint64 number)
{
    return QString::number(number).toULongLong(nullptr, 16);
}

std::optional<quint64> bitsOf(const ListedVariable& variable, const QString& part, QString* error)
{
    const QString text = withoutUnit(variable, part);
    if (variable.type == ValueType::Bit)
        return bitOf(text, error);
    if (variable.type == ValueType::Hex) {
        const bool isWord = bytesOfElement(variable.elements.area) == 2;
        return wholeBits(text, rangeOf(isWord ? ValueType::Uint16 : ValueType::Uint32), error);
    }
    const auto bits = numberBits(variable, text, error);
    const bool isBcd = variable.type == ValueType::Bcd16 || variable.type == ValueType::Bcd32;
    return bits && isBcd ? bcdBits(*bits) : bits;
}

/// \return the bytes of the values, in the driver's own order
std::optional<QByteArray> numberBytes(const ListedVariable& variable, const QString& text, QString* error)
{
    const QStringList parts = text.split(QLatin1Char(','));
    if (parts.size() != variable.count)
        return refuse(
            error,
            QStringLiteral("%1 given; it has %2").arg(counted(parts.size(), "value")).arg(variable.count));
    QByteArray bytes;
    for (const QString& part : parts) {
        const auto bits = bitsOf(variable, part, error);
        if (!bits)
            return std::nullopt;
        for (int byte = 0; byte < bytesOfType(variable.type, variable.elements.area); ++byte)
            bytes.append(static_cast<char>(*bits >> (8 * byte) & 0xFF));
    }
    return bytes;
}

QString withoutQuotes(const QString& text)
{
    const QLatin1Char quote('"');
    const bool isQuoted = text.size() >= 2 && text.startsWith(quote) && text.endsWith(quote);
    return isQuoted ? text.mid(1, text.size() - 2) : text;
}

/// \return the characters, and zeros for the rest of the elements
std::optional<QByteArray> textBytes(const ListedVariable& variable, const QString& given, QString* error)
{
    const QString text = withoutQuotes(given);
    if (text.size() > variable.count)
        return refuse(error,
                      QStringLiteral("\"%1\" has %2 characters; there is room for %3")
                          .arg(excerpt(text), QString::number(text.size()), QString::number(variable.count)));
    for (const QChar character : text) {
        if (character.unicode() > 0xFF || character.isNull())
            return refuse(error, QStringLiteral("\"%1\" has characters that are not Latin-1, which is what a "
                                                "controller's text is taken for")
                                     .arg(excerpt(text)));
    }
    const Variable& elements = variable.elements;
    return text.toLatin1().leftJustified(elements.count * bytesOfElement(elements.area), '\0');
}

/// What was rounded may have left the limits.
QString limitRefusal(const ListedVariable& variable, const QString& text,
                     const std::vector<quint32>& elements)
{
    bool isGivenInside = true;
    if (isNumber(variable.type) && hasLimits(variable)) {
        for (const QString& part : text.split(QLatin1Char(','))) {
            const double number = numberOf(withoutUnit(variable, part));
            isGivenInside = isGivenInside && (std::isnan(number) || isInside(variable, number));
        }
    }
    if (isGivenInside && !isOutside(variable, elements))
        return QString();
    return QStringLiteral("%1 lies outside its limits, %2").arg(excerpt(text), limitsText(variable));
}

} // namespace

QStringList listedTexts(const ListedVariable& variable, const std::vector<quint32>& elements)
{
    if (variable.type == ValueType::Text)
        return {valueText(ValueType::Text, variable.elements.area, elementsInOrder(variable, elements),
                          variable.count)};
    QStringList texts = scaledTexts(variable, elements);
    if (!isNumber(variable.type))
        return texts;
    for (QString& text : texts)
        text = withDigits(variable, text);
    return texts;
}

QString listedText(const ListedVariable& variable, const std::vector<quint32>& elements)
{
    return listedTexts(variable, elements).join(QLatin1Char(' '));
}

QString unitText(const ListedVariable& variable)
{
    return variable.unit.isEmpty() ? QString() : QLatin1Char(' ') + variable.unit;
}

QString limitsText(const ListedVariable& variable)
{
    if (variable.min && variable.max)
        return QStringLiteral("%1 to %2").arg(limitText(*variable.min), limitText(*variable.max)) +
               unitText(variable);
    if (variable.min)
        return QStringLiteral("at least %1").arg(limitText(*variable.min)) + unitText(variable);
    return variable.max ? QStringLiteral("at most %1").arg(limitText(*variable.max)) + unitText(variable)
                        : QString();
}

bool isOutside(const ListedVariable& variable, const std::vector<quint32>& elements)
{
    if (!isNumber(variable.type) || !hasLimits(variable))
        return false;
    const int size = elementsOfValue(variable);
    const int values = size > 0 ? static_cast<int>(elements.size()) / size : 0;
    for (int value = 0; value < values; ++value) {
        const double number = shownNumber(variable, elements, value);
        if (isNear(number, variable.min) || isNear(number, variable.max))
            return isTextOutside(variable, elements);
        if (!isInside(variable, number))
            return true;
    }
    return false;
}

void addListed(QJsonObject* object, const ListedVariable& variable)
{
    object->insert(QStringLiteral("name"), variable.name.text());
    object->insert(QStringLiteral("type"), valueTypeWord(variable.type));
    if (!variable.unit.isEmpty())
        object->insert(QStringLiteral("unit"), variable.unit);
    if (variable.min)
        object->insert(QStringLiteral("min"), *variable.min);
    if (variable.max)
        object->insert(QStringLiteral("max"), *variable.max);
}

void addListedValue(QJsonObject* object, const ListedVariable& variable, const std::vector<quint32>& elements)
{
    object->insert(QStringLiteral("text"), listedText(variable, elements));
    object->insert(QStringLiteral("value"), listedJson(variable, elements));
    if (hasLimits(variable))
        object->insert(QStringLiteral("outside"), isOutside(variable, elements));
}

std::optional<std::vector<quint32>> parseListed(const ListedVariable& variable, const QString& text,
                                                QString* error)
{
    if (variable.access == Access::ReadOnly)
        return refuse(error, QStringLiteral("the list says that it is only read (access r)"));
    const auto bytes = variable.type == ValueType::Text ? textBytes(variable, text, error)
                                                        : numberBytes(variable, text.trimmed(), error);
    if (!bytes)
        return std::nullopt;
    const std::vector<quint32> elements = valuesOfBytes(variable.elements.area, inOrder(variable, *bytes));
    const QString words = limitRefusal(variable, text.trimmed(), elements);
    if (!words.isEmpty())
        return refuse(error, words);
    return elements;
}

} // namespace plc
