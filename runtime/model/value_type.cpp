// SPDX-License-Identifier: MIT
#include "runtime/model/value_type.h"

#include "runtime/model/printable.h"
#include "runtime/model/variable.h"

#include <QJsonArray>
#include <QStringList>

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace plc
{

namespace
{

const int usualFloatDigits = 7;
const int usualDoubleDigits = 15;

enum class Reads { Signed, Unsigned, Float, Bcd, Hex, Characters };

struct TypeRow {
    ValueType type;
    const char* word;
    bool ofBits;
    bool ofWords;
    bool ofDoubleWords;
    int bytes; ///< of one value; 0: of one element
    Reads reads;
};

// One row per type: the word for it and the areas that can hold it.
const TypeRow typeRows[] = {
    {ValueType::Bit, "bit", true, false, false, 0, Reads::Unsigned},
    {ValueType::Int16, "int16", false, true, false, 2, Reads::Signed},
    {ValueType::Uint16, "uint16", false, true, false, 2, Reads::Unsigned},
    {ValueType::Int32, "int32", false, true, true, 4, Reads::Signed},
    {ValueType::Uint32, "uint32", false, true, true, 4, Reads::Unsigned},
    {ValueType::Float32, "float32", false, true, true, 4, Reads::Float},
    {ValueType::Hex, "hex", false, true, true, 0, Reads::Hex},
    {ValueType::Text, "text", false, true, true, 1, Reads::Characters},
    {ValueType::Int64, "int64", false, true, true, 8, Reads::Signed},
    {ValueType::Uint64, "uint64", false, true, true, 8, Reads::Unsigned},
    {ValueType::Float64, "float64", false, true, true, 8, Reads::Float},
    {ValueType::Bcd16, "bcd16", false, true, false, 2, Reads::Bcd},
    {ValueType::Bcd32, "bcd32", false, true, true, 4, Reads::Bcd},
};

const TypeRow& rowOf(ValueType type)
{
    return typeRows[static_cast<int>(type)];
}

bool fits(const TypeRow& row, int area)
{
    switch (kindOf(area)) {
    case ElementKind::Word:
        return row.ofWords;
    case ElementKind::DoubleWord:
        return row.ofDoubleWords;
    default:
        return row.ofBits;
    }
}

quint64 littleEndian(const QByteArray& bytes, int at, int size)
{
    quint64 value = 0;
    for (int i = size - 1; i >= 0; --i)
        value = value << 8 | static_cast<unsigned char>(bytes.at(at + i));
    return value;
}

/// Rounded once; QString would round to 64 bits first, and refuses the greatest number with fewer digits.
template <class Float>
Float readBack(const QString& text)
{
    const QByteArray bytes = text.toLatin1();
    Float value = 0;
    std::from_chars(bytes.begin(), bytes.end(), value);
    return value;
}

/// Most numbers need no more than \a usualDigits; some need one or two more to be told from their neighbours.
template <class Float, class Bits>
QString floatText(Bits bits, int usualDigits)
{
    static_assert(sizeof(Float) == sizeof(Bits), "the bits are those of the number");
    Float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    QString text;
    for (int digits = usualDigits; digits <= std::numeric_limits<Float>::max_digits10; ++digits) {
        text = QString::number(static_cast<double>(value), 'g', digits);
        if (readBack<Float>(text) == value)
            break;
    }
    return text;
}

QString hexDigits(quint64 value, int bytes)
{
    return QStringLiteral("0x%1").arg(value, 2 * bytes, 16, QLatin1Char('0'));
}

/// The digits of a BCD number are those of its hexadecimal text, where none is above 9.
QString bcdText(quint64 value, int bytes)
{
    bool isDecimal = false;
    const quint64 number = QString::number(value, 16).toULongLong(&isDecimal, 10);
    return isDecimal ? QString::number(number) : QStringLiteral("not BCD ") + hexDigits(value, bytes);
}

qint64 signExtended(quint64 value, int bytes)
{
    const int unused = 64 - 8 * bytes;
    return static_cast<qint64>(value << unused) >> unused;
}

QString oneValue(Reads reads, quint64 value, int bytes)
{
    switch (reads) {
    case Reads::Signed:
        return QString::number(signExtended(value, bytes));
    case Reads::Float:
        return bytes == 4 ? floatText<float>(static_cast<quint32>(value), usualFloatDigits)
                          : floatText<double>(value, usualDoubleDigits);
    case Reads::Hex:
        return hexDigits(value, bytes);
    case Reads::Bcd:
        return bcdText(value, bytes);
    default:
        return QString::number(value);
    }
}

QString charactersOf(QByteArray bytes, int most)
{
    if (most >= 0)
        bytes.truncate(most);
    while (bytes.endsWith('\0'))
        bytes.chop(1);
    return QString::fromLatin1(bytes);
}

} // namespace

std::optional<ValueType> parseValueType(const QString& text)
{
    for (const TypeRow& row : typeRows)
        if (text.compare(QLatin1String(row.word), Qt::CaseInsensitive) == 0)
            return row.type;
    return std::nullopt;
}

QString valueTypeWord(ValueType type)
{
    return QLatin1String(rowOf(type).word);
}

QString valueTypeWords()
{
    QStringList words;
    for (const TypeRow& row : typeRows)
        words << QLatin1String(row.word);
    return words.join(QStringLiteral(", "));
}

QString valueTypesOfArea(int area)
{
    QStringList words;
    for (const TypeRow& row : typeRows)
        if (fits(row, area))
            words << QLatin1String(row.word);
    return words.join(QStringLiteral(", "));
}

ValueType plainType(int area)
{
    switch (kindOf(area)) {
    case ElementKind::Word:
        return ValueType::Uint16;
    case ElementKind::DoubleWord:
        return ValueType::Uint32;
    case ElementKind::Bit:
    case ElementKind::BitInWord:
        break;
    }
    return ValueType::Bit;
}

int bytesOfType(ValueType type, int area)
{
    const TypeRow& row = rowOf(type);
    return row.bytes == 0 || row.reads == Reads::Characters ? bytesOfElement(area) : row.bytes;
}

bool isNumber(ValueType type)
{
    const Reads reads = rowOf(type).reads;
    return type != ValueType::Bit && reads != Reads::Hex && reads != Reads::Characters;
}

bool isWholeNumber(ValueType type)
{
    return isNumber(type) && rowOf(type).reads != Reads::Float;
}

bool hasWordOrder(ValueType type, int area)
{
    const int bytesOfWord = 2;
    return type == ValueType::Text || bytesOfType(type, area) > bytesOfWord;
}

int elementsOfType(ValueType type, int area, int count)
{
    const TypeRow& row = rowOf(type);
    if (!fits(row, area))
        return 0;
    if (row.bytes == 0)
        return count;
    const int elementBytes = bytesOfElement(area);
    const qint64 elements = (static_cast<qint64>(count) * row.bytes + elementBytes - 1) / elementBytes;
    return static_cast<int>(qMin<qint64>(elements, areaSize(area) + 1LL)); // too many stays too many
}

QString valueText(ValueType type, int area, const std::vector<quint32>& elements, int characters)
{
    if (type == ValueType::Text)
        return QLatin1Char('"') + printable(charactersOf(bytesOfValues(area, elements), characters)) +
               QLatin1Char('"');
    return textsOfValues(type, area, elements).join(QLatin1Char(' '));
}

QStringList textsOfValues(ValueType type, int area, const std::vector<quint32>& elements)
{
    const QByteArray bytes = bytesOfValues(area, elements);
    const int size = bytesOfType(type, area);
    QStringList values;
    for (int at = 0; at + size <= bytes.size(); at += size)
        values << oneValue(rowOf(type).reads, littleEndian(bytes, at, size), size);
    return values;
}

QJsonValue jsonOfText(ValueType type, const QString& text)
{
    if (type != ValueType::Float32 && type != ValueType::Float64) {
        bool isWhole = false;
        const qint64 whole = text.toLongLong(&isWhole, 0);
        const bool isExact = isWhole && whole >= -greatestExactWhole && whole <= greatestExactWhole;
        return isExact ? QJsonValue(whole) : QJsonValue(text);
    }
    const double number = text.toDouble();
    return std::isfinite(number) ? QJsonValue(number) : QJsonValue(text);
}

QJsonValue valueJson(ValueType type, int area, const std::vector<quint32>& elements, int count)
{
    if (type == ValueType::Text)
        return charactersOf(bytesOfValues(area, elements), count);
    QJsonArray values;
    for (const QString& text : textsOfValues(type, area, elements))
        values.append(jsonOfText(type, text));
    return count == 1 && values.size() == 1 ? values.first() : QJsonValue(values);
}

} // namespace plc
