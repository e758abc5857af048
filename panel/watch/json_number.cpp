// SPDX-License-Identifier: MIT
#include "panel/watch/json_number.h"

#include "runtime/model/shown_number.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

namespace plc
{

namespace
{

const double greatestExact = greatestExactWhole; // what lies beyond is a text

const int digitsOfScaled = 15; // as listedText() has them

bool isScaled(const ListedVariable& listed)
{
    return listed.scale != 1 || listed.offset != 0;
}

char* writeWhole(qint64 number, char* text)
{
    const bool isShort = number == static_cast<qint32>(number);
    return isShort ? std::to_chars(text, text + longestDecimal, static_cast<qint32>(number)).ptr
                   : std::to_chars(text, text + longestDecimal, number).ptr;
}

/// As many zeros behind the point as the list wants digits.
bool takeWhole(double shown, int digits, JsonNumber* number)
{
    const int mostZeros = 4;                                       // that there is room for
    if (!(std::fabs(shown) < greatestExact) || digits > mostZeros) // nor what is no number
        return false;
    char* const end = writeWhole(static_cast<qint64>(shown), number->value);
    char* text = std::copy(number->value, end, number->text);
    if (digits > 0)
        text = std::fill_n(std::fill_n(text, 1, '.'), digits, '0');
    number->valueSize = static_cast<std::size_t>(end - number->value);
    number->textSize = static_cast<std::size_t>(text - number->text);
    return true;
}

bool takeDigits(std::optional<DecimalDigits> shown, int digits, JsonNumber* number)
{
    if (shown && digits >= 0)
        shown = withPlaces(*shown, digits);
    if (!shown)
        return false;
    number->textSize = static_cast<std::size_t>(writeDecimal(*shown, number->text) - number->text);
    number->valueSize =
        static_cast<std::size_t>(writeDecimal(withoutZeros(*shown), number->value) - number->value);
    return true;
}

/// Hexadecimal digits for each four bits of an element.
bool takeHex(const ListedVariable& listed, quint32 element, JsonNumber* number)
{
    const int digits = 2 * bytesOfElement(listed.elements.area);
    char* text = number->text;
    *text++ = '0';
    *text++ = 'x';
    for (int digit = digits - 1; digit >= 0; --digit)
        *text++ = "0123456789abcdef"[element >> (4 * digit) & 0xF];
    number->textSize = static_cast<std::size_t>(text - number->text);
    number->valueSize = static_cast<std::size_t>(writeWhole(element, number->value) - number->value);
    return true;
}

} // namespace

bool takeNumber(const ListedVariable& listed, const std::vector<quint32>& elements, JsonNumber* number)
{
    if (listed.count != 1 || listed.type == ValueType::Text || elements.empty())
        return false;
    if (listed.type == ValueType::Hex)
        return listed.order == WordOrder::Usual && takeHex(listed, elements.front(), number);
    const double shown = shownNumber(listed, elements, 0);
    if (listed.type == ValueType::Bit)
        return takeWhole(shown, 0, number);
    if (isWholeNumber(listed.type))
        return isScaled(listed) ? takeDigits(digitsOfNumber(shown, digitsOfScaled), listed.digits, number)
                                : takeWhole(shown, listed.digits, number);
    if (isScaled(listed)) // of the digits of a text, not of the number
        return false;
    if (std::all_of(elements.begin(), elements.end(), [](quint32 element) { return element == 0; }))
        return takeDigits(DecimalDigits(), listed.digits, number); // one of a zero's two
    const bool isFloat = listed.type == ValueType::Float32;
    return takeDigits(isFloat ? digitsOfFloat(static_cast<float>(shown)) : digitsOfFloat(shown),
                      listed.digits, number);
}

} // namespace plc
