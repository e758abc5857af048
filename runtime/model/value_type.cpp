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

// Of a 32-bit floating-point number: no more are ever needed to read it back.
const int usualDigits = 7;
const int mostDigits = std::numeric_limits<float>::max_digits10;

struct TypeRow {
    ValueType type;
    const char* word;
    bool ofBits;
    bool ofWords;
    bool ofDoubleWords;
    int bytes; ///< of one value; 0: of one element
};

// One row per type: the word for it and the areas that can hold it.
const TypeRow typeRows[] = {
    {ValueType::Bit, "bit", true, false, false, 0},
    {ValueType::Int16, "int16", false, true, false, 2},
    {ValueType::Uint16, "uint16", false, true, false, 2},
    {ValueType::Int32, "int32", false, true, true, 4},
    {ValueType::Uint32, "uint32", false, true, true, 4},
    {ValueType::Float32, "float32", false, true, true, 4},
    {ValueType::Hex, "hex", false, true, true, 0},
    {ValueType::Text, "text", false, true, true, 1},
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

quint32 littleEndian(const QByteArray& bytes, int at, int size)
{
    quint32 value = 0;
    for (int i = size - 1; i >= 0; --i)
        value = value << 8 | static_cast<unsigned char>(bytes.at(at + i));
    return value;
}

/// Rounded once; QString would round to 64 bits first, and refuses the greatest number with fewer digits.
float readBack(const QString& text)
{
    const QByteArray bytes = text.toLatin1();
    float value = 0;
    std::from_chars(bytes.begin(), bytes.end(), value);
    return value;
}

/// Seven digits are enough for most; some need eight or nine to be told from their neighbours.
QString floatText(quint32 bits)
{
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    QString text;
    for (int digits = usualDigits; digits <= mostDigits; ++digits) {
        text = QString::number(static_cast<double>(value), 'g', digits);
        if (readBack(text) == value)
            break;
    }
    return text;
}

QString hexText(quint32 value, int bytes)
{
    return QStringLiteral("0x%1").arg(value, 2 * bytes, 16, QLatin1Char('0'));
}

QString oneValue(ValueType type, quint32 value, int bytes)
{
    switch (type) {
    case ValueType::Int16:
        return QString::number(static_cast<qint16>(value));
    case ValueType::Int32:
        return QString::number(static_cast<qint32>(value));
    case ValueType::Float32:
        return floatText(value);
    case ValueType::Hex:
        return hexText(value, bytes);
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

/// \return a text for each whole value that \a elements hold
QStringList textsOfValues(ValueType type, int area, const std::vector<quint32>& elements)
{
    const QByteArray bytes = bytesOfValues(area, elements);
    const int size = rowOf(type).bytes == 0 ? bytesOfElement(area) : rowOf(type).bytes;
    QStringList values;
    for (int at = 0; at + size <= bytes.size(); at += size)
        values << oneValue(type, littleEndian(bytes, at, size), size);
    return values;
}

/// JSON has no such numbers as "nan".
QJsonValue numberOrText(ValueType type, const QString& text)
{
    if (type == ValueType::Hex)
        return static_cast<qint64>(text.toLongLong(nullptr, 0));
    const double number = text.toDouble();
    return std::isfinite(number) ? QJsonValue(number) : QJsonValue(text);
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

QJsonValue valueJson(ValueType type, int area, const std::vector<quint32>& elements, int count)
{
    if (type == ValueType::Text)
        return charactersOf(bytesOfValues(area, elements), count);
    QJsonArray values;
    for (const QString& text : textsOfValues(type, area, elements))
        values.append(numberOrText(type, text));
    return count == 1 && values.size() == 1 ? values.first() : QJsonValue(values);
}

} // namespace plc
