// SPDX-License-Identifier: MIT
#include "runtime/model/variable.h"

#include "runtime/model/modbus_address.h"
#include "runtime/model/printable.h"

#include <QStringList>

namespace plc
{

namespace
{

/// \return a number of digits only, so that neither signs nor spaces slip through; -1 when it is none
int parseNumber(const QString& text, int base)
{
    for (const QChar character : text) {
        if (character < QLatin1Char('0') || character > QLatin1Char('9'))
            return -1;
    }
    bool ok = false;
    const int number = text.toInt(&ok, base);
    return ok ? number : -1;
}

/// \return element of "word.bit"; -1 when the text is none
int parseBitInWord(const QString& text)
{
    const QStringList parts = text.split(QLatin1Char('.'));
    if (parts.size() != 2)
        return -1;
    const int word = parseNumber(parts.at(0), 10);
    const int bit = parseNumber(parts.at(1), 10);
    if (word < 0 || word >= areaSize(wordArea) || bit < 0 || bit >= bitsOfWord)
        return -1;
    return word * bitsOfWord + bit;
}

// What a person typed goes into messages in one arg() with all the rest: a % of its own is then no place for
// more.
std::nullopt_t fail(QString* error, const QString& words)
{
    *error = words;
    return std::nullopt;
}

std::optional<int> parseArea(const QString& text, QString* error)
{
    const int area = parseNumber(text, 10);
    if (!isArea(area))
        return fail(error, QStringLiteral("\"%1\" is no area; areas are 0 to %2")
                               .arg(text, QString::number(areaCount() - 1)));
    return area;
}

/// "0x10" may be meant as sixteen, or as ten elements from 0 on.
bool looksHexadecimal(const QString& address)
{
    return address.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
}

std::nullopt_t failHexadecimal(int area, const QString& address, QString* error)
{
    QString words =
        QStringLiteral("\"%1\" looks like a hexadecimal address, and there are none; %2 is expected")
            .arg(excerpt(address), QLatin1String(areaOf(area).expected));
    if (addressText(area, 0) == QLatin1String("0"))
        words += QStringLiteral(" (several elements from 0 on: %1:00x10)").arg(area);
    return fail(error, words);
}

/// The count behind the last 'x' of an address, which is cut off; 1 when there is none.
std::optional<int> takeCount(QString* address, QString* error)
{
    const int cross = address->lastIndexOf(QLatin1Char('x'));
    if (cross < 0)
        return 1;
    const QString text = address->mid(cross + 1);
    const int count = parseNumber(text, 10);
    if (count < 1)
        return fail(error, QStringLiteral("\"%1\" is no number of elements; a number from 1 on is expected "
                                          "after the x")
                               .arg(text));
    address->truncate(cross);
    return count;
}

/// The station behind the '@' of an address, which is cut off; -1 when there is none.
std::optional<int> takeStation(QString* address, QString* error)
{
    const int sign = address->indexOf(QLatin1Char('@'));
    if (sign < 0)
        return -1;
    const QString text = address->mid(sign + 1);
    const int station = parseNumber(text, 10);
    if (station < 0 || station > lastStation)
        return fail(error,
                    QStringLiteral("\"%1\" is no station; a number from 0 to %2 is expected after the @")
                        .arg(text, QString::number(lastStation)));
    address->truncate(sign);
    return station;
}

/// Decimal, negative decimal (-1 is all bits set) or 0x hexadecimal; nothing when it does not fit \a bits.
std::optional<quint32> parseValue(const QString& text, int bits)
{
    bool ok = false;
    const bool hex = text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    const qlonglong value = hex ? text.mid(2).toLongLong(&ok, 16) : text.toLongLong(&ok, 10);
    const qlonglong limit = 1LL << bits;
    const qlonglong least = bits == 1 || hex ? 0 : -limit / 2;
    if (!ok || value < least || value >= limit)
        return std::nullopt;
    return static_cast<quint32>(value & (limit - 1));
}

QString expectedValue(int bits)
{
    if (bits == 1)
        return QStringLiteral("0 or 1");
    const qlonglong limit = 1LL << bits;
    return QStringLiteral("%1 to %2, or 0x0 to 0x%3").arg(-limit / 2).arg(limit - 1).arg(limit - 1, 0, 16);
}

/// Only remote frames reach as far as an area has elements, where that is farther than Modbus addresses do.
QString remoteEnd(int area)
{
    if (modbusElements(area) == areaSize(area))
        return QString();
    return QStringLiteral(" (with remote frames up to %1)").arg(addressText(area, areaSize(area) - 1));
}

} // namespace

QString addressText(int area, int element)
{
    if (kindOf(area) == ElementKind::BitInWord)
        return QStringLiteral("%1.%2").arg(element / bitsOfWord).arg(element % bitsOfWord);
    return QString::number(element + areaOf(area).origin, areaOf(area).numberBase);
}

std::optional<int> parseAddress(int area, const QString& text, QString* error)
{
    if (looksHexadecimal(text))
        return failHexadecimal(area, text, error);
    const Area& rule = areaOf(area);
    const bool bitInWord = rule.kind == ElementKind::BitInWord;
    const int element = bitInWord ? parseBitInWord(text) : parseNumber(text, rule.numberBase) - rule.origin;
    if (element < 0 || element >= areaSize(area)) {
        return fail(error, QStringLiteral("\"%1\" is no address of area %2; %3 is expected, up to %4%5")
                               .arg(excerpt(text), QString::number(area), QLatin1String(rule.expected),
                                    addressText(area, modbusElements(area) - 1), remoteEnd(area)));
    }
    return element;
}

std::optional<Variable> parseVariable(const QString& text, QString* error)
{
    const int colon = text.indexOf(QLatin1Char(':'));
    if (colon < 0)
        return fail(error, QStringLiteral("\"%1\" names no variable; AREA:ADDRESS[xCOUNT] is expected, "
                                          "e.g. 9:100x10")
                               .arg(text));
    QString address = text.mid(colon + 1);
    const auto area = parseArea(text.left(colon), error);
    if (area && looksHexadecimal(address))
        return failHexadecimal(*area, address, error);
    const auto station = area ? takeStation(&address, error) : std::nullopt;
    const auto count = station ? takeCount(&address, error) : std::nullopt;
    const auto element = count ? parseAddress(*area, address, error) : std::nullopt;
    if (!element)
        return std::nullopt;
    if (*count > areaSize(*area) - *element)
        return fail(error, QStringLiteral("%1 elements from %2 on run past the end of area %3; at most %4 "
                                          "are there")
                               .arg(*count)
                               .arg(address)
                               .arg(*area)
                               .arg(areaSize(*area) - *element));
    Variable variable;
    variable.area = *area;
    variable.element = *element;
    variable.count = *count;
    variable.station = *station;
    return variable;
}

QString variableText(const Variable& variable)
{
    const QString address = addressText(variable.area, variable.element);
    QString text = QStringLiteral("%1:%2").arg(QString::number(variable.area), address);
    if (variable.count != 1 && address == QLatin1String("0"))
        text += QLatin1Char('0'); // 0x4 would look like a hexadecimal number
    if (variable.count != 1)
        text += QStringLiteral("x%1").arg(variable.count);
    if (variable.station >= 0)
        text += QStringLiteral("@%1").arg(variable.station);
    return text;
}

std::optional<std::vector<quint32>> parseValues(int area, const QString& text, QString* error)
{
    const bool single = kindOf(area) == ElementKind::Bit || kindOf(area) == ElementKind::BitInWord;
    const int bits = single ? 1 : 8 * bytesOfElement(area);
    std::vector<quint32> values;
    for (const QString& part : text.split(QLatin1Char(','))) {
        const auto value = parseValue(part.trimmed(), bits);
        if (!value)
            return fail(error, QStringLiteral("\"%1\" is no value of area %2; %3 is expected")
                                   .arg(part, QString::number(area), expectedValue(bits)));
        values.push_back(*value);
    }
    return values;
}

QByteArray bytesOfValues(int area, const std::vector<quint32>& values)
{
    QByteArray bytes;
    for (const quint32 value : values) {
        for (int byte = 0; byte < bytesOfElement(area); ++byte)
            bytes.append(static_cast<char>((value >> (8 * byte)) & 0xFF));
    }
    return bytes;
}

std::vector<quint32> valuesOfBytes(int area, const QByteArray& bytes)
{
    const int size = bytesOfElement(area);
    std::vector<quint32> values;
    for (int at = 0; at + size <= bytes.size(); at += size) {
        quint32 value = 0;
        for (int byte = size - 1; byte >= 0; --byte)
            value = value << 8 | static_cast<unsigned char>(bytes.at(at + byte));
        values.push_back(value);
    }
    return values;
}

} // namespace plc
