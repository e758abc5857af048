// SPDX-License-Identifier: MIT
#include "runtime/model/decimal_digits.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace plc
{

namespace
{

const int digitsOfDouble = 15; // which each double keeps
const int usualOfFloat = 7;
const int bitsOfHalf = 32;
const int mantissaBits = 52; // that are written of a double; one before them is not
const int exponentOfOne = 1023;

// Below it QString writes an exponent, at the latest.
const double leastPlain = 1e-3;

const std::array<quint64, 20> powersOfTen = {1ULL,
                                             10ULL,
                                             100ULL,
                                             1000ULL,
                                             10000ULL,
                                             100000ULL,
                                             1000000ULL,
                                             10000000ULL,
                                             100000000ULL,
                                             1000000000ULL,
                                             10000000000ULL,
                                             100000000000ULL,
                                             1000000000000ULL,
                                             10000000000000ULL,
                                             100000000000000ULL,
                                             1000000000000000ULL,
                                             10000000000000000ULL,
                                             100000000000000000ULL,
                                             1000000000000000000ULL,
                                             10000000000000000000ULL};

quint64 powerOfTen(int exponent)
{
    return powersOfTen[static_cast<std::size_t>(exponent)];
}

/// A product of two numbers of 64 bits, which no type of 32-bit processors holds.
struct Wide {
    quint64 high;
    quint64 low;
};

Wide product(quint64 a, quint64 b)
{
    const quint64 mask = 0xFFFFFFFF;
    const quint64 low = (a & mask) * (b & mask);
    const quint64 left = (a >> bitsOfHalf) * (b & mask);
    const quint64 right = (a & mask) * (b >> bitsOfHalf);
    const quint64 middle = (low >> bitsOfHalf) + (left & mask) + (right & mask);
    return {(a >> bitsOfHalf) * (b >> bitsOfHalf) + (left >> bitsOfHalf) + (right >> bitsOfHalf) +
                (middle >> bitsOfHalf),
            (middle << bitsOfHalf) | (low & mask)};
}

/// \return \a number / 2^\a bits, 0 < bits < 64, to the nearest whole number; nothing when it lies between two
std::optional<quint64> shifted(const Wide& number, int bits)
{
    const quint64 rest = number.low & ((1ULL << bits) - 1);
    const quint64 half = 1ULL << (bits - 1);
    const quint64 whole = (number.high << (64 - bits)) | (number.low >> bits);
    if (rest == half)
        return std::nullopt;
    return whole + (rest > half ? 1 : 0);
}

/// \return digits before the point, less where a number below 1 has zeros behind it
int magnitudeOf(double number)
{
    if (number < 1)
        return number >= 0.1 ? 0 : number >= 0.01 ? -1 : -2;
    int magnitude = 1;
    while (number >= static_cast<double>(powerOfTen(magnitude)))
        ++magnitude;
    return magnitude;
}

/// \return \a number without the zeros at its end, and how many there were, \a most at most
int takeZeros(quint32* number, int most)
{
    int zeros = 0;
    for (; zeros < most && *number % 10 == 0; ++zeros)
        *number /= 10;
    return zeros;
}

/// \return how many digits tell a number from its neighbours
template <class Float>
int fewestDigits(Float number)
{
    char text[32];
    const char* const end =
        std::to_chars(text, text + sizeof text, std::fabs(number), std::chars_format::scientific).ptr;
    const char* const mark = std::find<const char*>(text, end, 'e');
    return static_cast<int>(std::count_if<const char*>(text, mark, [](char sign) { return sign != '.'; }));
}

/// Where fewer digits than the usual ones would do, the usual ones are written all the same.
template <class Float>
std::optional<DecimalDigits> floatDigits(Float number, int usual)
{
    const double size = std::fabs(static_cast<double>(number));
    if (!(size >= leastPlain && size < static_cast<double>(powerOfTen(usual) - 1)))
        return std::nullopt;
    return digitsOfNumber(static_cast<double>(number), std::max(usual, fewestDigits(number)));
}

} // namespace

// Divisions of 64 bits take long on processors of 32.
DecimalDigits withoutZeros(DecimalDigits digits)
{
    const int lowDigits = 9;
    auto low = static_cast<quint32>(digits.whole % powerOfTen(lowDigits));
    quint64 high = digits.whole / powerOfTen(lowDigits);
    if (low == 0 && high < powerOfTen(lowDigits) && digits.places >= lowDigits) {
        low = static_cast<quint32>(high);
        high = 0;
        digits.places -= lowDigits;
    }
    const int zeros = takeZeros(&low, std::min(digits.places, lowDigits));
    digits.places -= zeros;
    digits.whole = high * powerOfTen(lowDigits - zeros) + low;
    return digits;
}

std::optional<DecimalDigits> digitsOfNumber(double number, int significant)
{
    DecimalDigits digits;
    quint64 bits = 0;
    std::memcpy(&bits, &number,
                sizeof bits); // rounds what a processor holds with more bits than a double has
    digits.isNegative = bits >> 63 != 0;
    const double size = std::fabs(number);
    if (bits == 0)
        return digits;
    if (!(size >= leastPlain && size < static_cast<double>(powerOfTen(significant) - 1)))
        return std::nullopt;
    const int exponent = static_cast<int>(bits >> mantissaBits & 0x7FF) - exponentOfOne;
    const quint64 mantissa = (bits & ((1ULL << mantissaBits) - 1)) | 1ULL << mantissaBits;
    digits.places = significant - magnitudeOf(size);
    const Wide scaled = product(mantissa, powerOfTen(digits.places));
    const auto whole = shifted(scaled, mantissaBits - exponent); // by 3 to 62
    if (!whole)
        return std::nullopt;
    digits.whole = *whole;
    return withoutZeros(digits);
}

std::optional<DecimalDigits> digitsOfFloat(float number)
{
    return floatDigits(number, usualOfFloat);
}

std::optional<DecimalDigits> digitsOfFloat(double number)
{
    return floatDigits(number, digitsOfDouble);
}

std::optional<DecimalDigits> withPlaces(DecimalDigits digits, int places)
{
    if (digits.places > places) {
        const quint64 unit = powerOfTen(digits.places - places);
        const quint64 rest = digits.whole % unit;
        if (rest * 2 == unit)
            return std::nullopt;
        digits.whole = digits.whole / unit + (rest * 2 > unit ? 1 : 0);
        digits.places = places;
    }
    const int missing = places - digits.places;
    if (missing >= digitsOfDouble || digits.whole >= powerOfTen(digitsOfDouble - missing))
        return std::nullopt;
    digits.whole *= powerOfTen(missing);
    digits.places = places;
    if (digits.whole == 0 && digits.isNegative)
        return std::nullopt;
    return digits;
}

char* writeDecimal(const DecimalDigits& digits, char* text)
{
    if (digits.isNegative)
        *text++ = '-';
    char written[longestDecimal];
    const bool isShort = digits.whole <= std::numeric_limits<quint32>::max();
    const char* const end =
        isShort ? std::to_chars(written, written + sizeof written, static_cast<quint32>(digits.whole)).ptr
                : std::to_chars(written, written + sizeof written, digits.whole).ptr;
    const auto count = static_cast<int>(end - written);
    const int before = count - digits.places;
    if (before > 0) {
        text = std::copy(written, written + before, text);
    } else {
        *text++ = '0';
    }
    if (digits.places == 0)
        return text;
    *text++ = '.';
    for (int zero = before; zero < 0; ++zero)
        *text++ = '0';
    return std::copy<const char*>(written + std::max(before, 0), end, text);
}

} // namespace plc
