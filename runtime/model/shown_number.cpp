// SPDX-License-Identifier: MIT
#include "runtime/model/shown_number.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace plc
{

namespace
{

const int wordBits = 16;
const int digitBits = 4;
const int wordsOfLongest = 4;

/// \return the words of a value, the one with the least significant bits first, and how many there are
int wordsOfValue(const ListedVariable& variable, const quint32* elements, int count, quint16* words)
{
    const bool isDouble = kindOf(variable.elements.area) == ElementKind::DoubleWord;
    int size = 0;
    for (int index = 0; index < count; ++index) {
        words[size++] = static_cast<quint16>(elements[index]);
        if (isDouble)
            words[size++] = static_cast<quint16>(elements[index] >> wordBits);
    }
    if (size < 2)
        return size; // a value in one word has no order
    const WordOrder order = variable.order;
    if (order == WordOrder::Badc || order == WordOrder::Dcba) {
        for (int index = 0; index < size; ++index)
            words[index] = static_cast<quint16>(words[index] << 8 | words[index] >> 8);
    }
    if (order == WordOrder::Abcd || order == WordOrder::Badc)
        std::reverse(words, words + size);
    return size;
}

quint64 bitsOf(const quint16* words, int size)
{
    quint64 bits = 0;
    for (int index = size - 1; index >= 0; --index)
        bits = bits << wordBits | words[index];
    return bits;
}

double noNumber()
{
    return std::numeric_limits<double>::quiet_NaN();
}

double bcdNumber(quint64 bits, int digits)
{
    double number = 0;
    for (int digit = digits - 1; digit >= 0; --digit) {
        const quint64 value = bits >> (digit * digitBits) & 0xF;
        if (value > 9)
            return noNumber();
        number = number * 10 + static_cast<double>(value);
    }
    return number;
}

template <class Number, class Bits>
double floatNumber(Bits bits)
{
    Number number = 0;
    std::memcpy(&number, &bits, sizeof number);
    return static_cast<double>(number);
}

double numberOf(ValueType type, quint64 bits)
{
    switch (type) {
    case ValueType::Int16:
        return static_cast<qint16>(bits);
    case ValueType::Int32:
        return static_cast<qint32>(bits);
    case ValueType::Int64:
        return static_cast<double>(static_cast<qint64>(bits));
    case ValueType::Float32:
        return floatNumber<float>(static_cast<quint32>(bits));
    case ValueType::Float64:
        return floatNumber<double>(bits);
    case ValueType::Bcd16:
        return bcdNumber(bits, wordBits / digitBits);
    case ValueType::Bcd32:
        return bcdNumber(bits, 2 * wordBits / digitBits);
    case ValueType::Text:
        return noNumber();
    default:
        return static_cast<double>(bits);
    }
}

} // namespace

int numbersOf(const ListedVariable& variable)
{
    return variable.type == ValueType::Text ? 0 : variable.count;
}

int elementsOfValue(const ListedVariable& variable)
{
    return elementsOfType(variable.type, variable.elements.area, 1);
}

double shownNumber(const ListedVariable& variable, const std::vector<quint32>& elements, int value)
{
    const int size = elementsOfValue(variable);
    const std::size_t begin = static_cast<std::size_t>(value) * static_cast<std::size_t>(size);
    if (begin + static_cast<std::size_t>(size) > elements.size())
        return noNumber();
    return shownNumber(variable, elements.data() + begin, size);
}

double shownNumber(const ListedVariable& variable, const quint32* elements, int size)
{
    if (variable.type == ValueType::Text)
        return noNumber();
    quint16 words[wordsOfLongest] = {};
    const int count = wordsOfValue(variable, elements, size, words);
    return numberOf(variable.type, bitsOf(words, count)) * variable.scale + variable.offset;
}

} // namespace plc
