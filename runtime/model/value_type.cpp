#include "runtime/model/value_type.h"

#include "runtime/model/variable.h"

#include <QStringList>

#include <cstring>

namespace plc
{

namespace
{

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

QString floatText(quint32 bits)
{
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return QString::number(static_cast<double>(value), 'g', 7);
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

// Characters that a terminal would act on are shown as dots.
QString quotedText(QByteArray bytes)
{
    while (bytes.endsWith('\0'))
        bytes.chop(1);
    QString text = QString::fromLatin1(bytes);
    for (QChar& character : text)
        if (!character.isPrint())
            character = QLatin1Char('.');
    return QLatin1Char('"') + text + QLatin1Char('"');
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
    const QByteArray bytes = bytesOfValues(area, elements);
    if (type == ValueType::Text)
        return quotedText(characters < 0 ? bytes : bytes.left(characters));
    const int size = rowOf(type).bytes == 0 ? bytesOfElement(area) : rowOf(type).bytes;
    QStringList values;
    for (int at = 0; at + size <= bytes.size(); at += size)
        values << oneValue(type, littleEndian(bytes, at, size), size);
    return values.join(QLatin1Char(' '));
}

} // namespace plc
