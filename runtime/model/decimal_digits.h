// SPDX-License-Identifier: MIT
/// \file
/// \brief Numbers as decimal digits in little time, character by character as QString has them.
#ifndef RUNTIME_MODEL_DECIMAL_DIGITS_H
#define RUNTIME_MODEL_DECIMAL_DIGITS_H

#include <QtGlobal>

#include <optional>

namespace plc
{

/// A number rounded to decimal digits: whole / 10^places.
struct DecimalDigits {
    quint64 whole = 0;
    int places = 0;
    bool isNegative = false;
};

inline constexpr int longestDecimal = 24; ///< characters of what writeDecimal() writes at most

/// \return \a number rounded to \a significant digits (1 to 17), without zeros at the end, as
///         QString::number(number, 'g', significant) writes it; nothing where that has an exponent, where the number
///         lies just between two others, and where it is none. Then QString is to be asked.
std::optional<DecimalDigits> digitsOfNumber(double number, int significant);

/// \return \a number (a float or a double) with as many digits as it takes to read it back, as floatText() in
///         value_type.cpp has it, so that most have 7 or 15; nothing where that has an exponent, or is no number or 0
std::optional<DecimalDigits> digitsOfFloat(float number);
std::optional<DecimalDigits> digitsOfFloat(double number);

/// \return \a digits rounded to \a places behind the point, and with as many; nothing where it lies just between two
///         others, where a zero would have a sign, and where there would be more than 15 digits
std::optional<DecimalDigits> withPlaces(DecimalDigits digits, int places);

/// \return the same without zeros at the end
DecimalDigits withoutZeros(DecimalDigits digits);

/// Writes \a digits, all of its places. \param text room for longestDecimal characters \return their end
char* writeDecimal(const DecimalDigits& digits, char* text);

} // namespace plc

#endif
