// SPDX-License-Identifier: MIT
#include "runtime/model/decimal_digits.h"

#include "runtime/model/value_type.h"

#include <QByteArray>
#include <QString>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace
{

using namespace plc;

QByteArray written(const DecimalDigits& digits)
{
    char text[longestDecimal];
    return QByteArray(text, static_cast<int>(writeDecimal(digits, text) - text));
}

QByteArray general(double number, int significant)
{
    return QString::number(number, 'g', significant).toLatin1();
}

TEST(DecimalDigits, AreThoseOfQStringWhereThereAreAny)
{
    EXPECT_EQ(written(digitsOfNumber(0.1 * 3, 15).value()), "0.3");
    EXPECT_EQ(written(digitsOfNumber(-1234.5, 15).value()), "-1234.5");
    EXPECT_EQ(written(digitsOfNumber(0, 15).value()), "0");
    EXPECT_EQ(written(digitsOfNumber(9999999.9999999999, 15).value()), "10000000");
    EXPECT_EQ(written(digitsOfNumber(0.0999999999999999999, 7).value()), "0.1");
    EXPECT_EQ(written(digitsOfNumber(123456.78, 7).value()), "123456.8");
    EXPECT_EQ(written(digitsOfNumber(1000000000, 15).value()), "1000000000");
}

TEST(DecimalDigits, AreNotThereWhereQStringWritesAnExponentOrRoundsByARuleOfItsOwn)
{
    const double inf = std::numeric_limits<double>::infinity();
    for (const double number : {1e-5, 1e15, 1e300, -0.0, inf, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_FALSE(digitsOfNumber(number, 15)) << number;
    EXPECT_FALSE(digitsOfNumber(1000000000000.125, 15));
    EXPECT_FALSE(digitsOfNumber(9999999.5, 7));
}

TEST(DecimalDigits, WithPlacesAreThoseOfTheTextRead)
{
    const auto digits = [](double number, int places) {
        return written(withPlaces(digitsOfNumber(number, 15).value(), places).value());
    };
    EXPECT_EQ(digits(21.5, 2), "21.50");
    EXPECT_EQ(digits(0.046, 2), "0.05");
    EXPECT_EQ(digits(-7, 1), "-7.0");
    EXPECT_EQ(digits(99.96, 1), "100.0");
    EXPECT_EQ(digits(0, 3), "0.000");
    EXPECT_FALSE(withPlaces(digitsOfNumber(0.25, 15).value(), 1));   // half
    EXPECT_FALSE(withPlaces(digitsOfNumber(-0.001, 15).value(), 1)); // -0.0
    EXPECT_FALSE(withPlaces(digitsOfNumber(123456, 15).value(), 10));
}

/// Numbers of every size, many of them with few digits.
double someNumber(std::mt19937& random)
{
    const double size = std::pow(10.0, static_cast<int>(random() % 22) - 5);
    const double number = static_cast<double>(random()) / 4294967296.0 * size;
    const double rounded = std::round(number * 1000) / 1000;
    return (random() % 2 == 0 ? number : rounded) * (random() % 2 == 0 ? 1 : -1);
}

TEST(DecimalDigits, AreThoseOfQStringForAnyNumber)
{
    std::mt19937 random(1);
    int there = 0;
    for (int round = 0; round < 20000; ++round) {
        const double number = someNumber(random);
        for (const int significant : {7, 15}) {
            const auto digits = digitsOfNumber(number, significant);
            if (!digits)
                continue;
            ++there;
            ASSERT_EQ(written(*digits), general(number, significant)) << number;
            const int places = static_cast<int>(random() % 6);
            const double read = general(number, significant).toDouble();
            const auto cut = withPlaces(*digits, places);
            ASSERT_EQ(cut ? written(*cut) : QString::number(read, 'f', places).toLatin1(),
                      QString::number(read, 'f', places).toLatin1());
        }
    }
    EXPECT_GT(there, 20000);
}

TEST(DecimalDigits, OfAFloatAreThoseThatAreShown)
{
    std::mt19937 random(1);
    int there = 0;
    for (int round = 0; round < 20000; ++round) {
        const auto number = static_cast<float>(someNumber(random));
        quint32 bits = 0;
        std::memcpy(&bits, &number, sizeof bits);
        const auto digits = digitsOfFloat(number);
        there += digits ? 1 : 0;
        ASSERT_EQ(digits ? written(*digits) : valueText(ValueType::Float32, 14, {bits}).toLatin1(),
                  valueText(ValueType::Float32, 14, {bits}).toLatin1());
        const double longer = someNumber(random);
        quint64 longBits = 0;
        std::memcpy(&longBits, &longer, sizeof longBits);
        const QByteArray shown =
            valueText(ValueType::Float64, 14,
                      {static_cast<quint32>(longBits), static_cast<quint32>(longBits >> 32)})
                .toLatin1();
        const auto longDigits = digitsOfFloat(longer);
        ASSERT_EQ(longDigits ? written(*longDigits) : shown, shown);
    }
    EXPECT_GT(there, 8000);
}

} // namespace
