// SPDX-License-Identifier: MIT
#include "window/session/listed_number.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace plc
{

namespace
{

const double noNumber = std::numeric_limits<double>::quiet_NaN();
const int mostWords = 4; // of a value

// Scaling makes errors in the last digits, for which nothing is outside its limits.
const double scalingError = 1e-15;
const double scalingErrorOfFloat = 1e-7;

/// The elements of one value as a number of 64 bits, the first element lowest.
quint64 bitsOf(const ListedVariable& variable, const std::vector<quint32>& elements, int index)
{
    const int area = variable.elements.area;
    const int width = area == 14 ? 32 : area > 8 ? 16 : 1;
    const int bytes = bytesOfType(variable.type, area);
    const int each = width == 1 ? 1 : std::max(1, bytes * 8 / width);
    quint64 bits = 0;
    for (int part = 0; part < each && part < mostWords; ++part) {
        const auto at = static_cast<std::size_t>(index * each + part);
        if (at < elements.size())
            bits |= static_cast<quint64>(elements[at]) << (width * part);
    }
    if (variable.order == WordOrder::Usual || !hasWordOrder(variable.type, area))
        return bits;
    QByteArray ordered(bytes, '\0');
    std::memcpy(ordered.data(), &bits, static_cast<std::size_t>(bytes));
    ordered = numbersInOrder(ordered, variable.order, bytes);
    std::memcpy(&bits, ordered.constData(), static_cast<std::size_t>(bytes));
    return bits;
}

double bcdNumber(quint64 bits, int digits)
{
    double number = 0;
    for (int digit = digits - 1; digit >= 0; --digit) {
        const int value = static_cast<int>(bits >> (4 * digit) & 0xF);
        if (value > 9)
            return noNumber;
        number = number * 10 + value;
    }
    return number;
}

template <class Float, class Bits>
double floatNumber(quint64 bits)
{
    const auto narrow = static_cast<Bits>(bits);
    Float number = 0;
    std::memcpy(&number, &narrow, sizeof number);
    return static_cast<double>(number);
}

double rawNumber(ValueType type, quint64 bits)
{
    switch (type) {
    case ValueType::Int16:
        return static_cast<qint16>(bits);
    case ValueType::Int32:
        return static_cast<qint32>(bits);
    case ValueType::Int64:
        return static_cast<double>(static_cast<qint64>(bits));
    case ValueType::Float32:
        return floatNumber<float, quint32>(bits);
    case ValueType::Float64:
        return floatNumber<double, quint64>(bits);
    case ValueType::Bcd16:
        return bcdNumber(bits, 4);
    case ValueType::Bcd32:
        return bcdNumber(bits, 8);
    case ValueType::Text:
        return noNumber;
    case ValueType::Bit:
    case ValueType::Uint16:
    case ValueType::Uint32:
    case ValueType::Uint64:
    case ValueType::Hex:
        break;
    }
    return static_cast<double>(bits);
}

} // namespace

int numbersOf(const ListedVariable& variable)
{
    return variable.type == ValueType::Text ? 0 : variable.count;
}

double listedNumber(const ListedVariable& variable, const std::vector<quint32>& elements, int index)
{
    if (elements.empty() || index >= numbersOf(variable))
        return noNumber;
    return rawNumber(variable.type, bitsOf(variable, elements, index)) * variable.scale + variable.offset;
}

bool isOutsideLimits(const ListedVariable& variable, const std::vector<quint32>& elements)
{
    if (!variable.min && !variable.max)
        return false;
    const bool isScaled = variable.scale != 1 || variable.offset != 0;
    const double error = !isScaled                             ? 0
                         : variable.type == ValueType::Float32 ? scalingErrorOfFloat
                                                               : scalingError;
    for (int index = 0; index < numbersOf(variable); ++index) {
        const double number = listedNumber(variable, elements, index);
        const double slack = std::abs(number) * error;
        const bool inside = (!variable.min || number >= *variable.min - slack) &&
                            (!variable.max || number <= *variable.max + slack);
        if (!inside)
            return true;
    }
    return false;
}

} // namespace plc
