// SPDX-License-Identifier: MIT
#include "runtime/model/shown_number.h"

#include <gtest/gtest.h>

#include <cmath>

namespace plc
{

namespace
{

/// \return the first number of a variable of one value
double number(ValueType type, const std::vector<quint32>& elements, WordOrder order = WordOrder::Usual,
              int area = 9)
{
    ListedVariable variable;
    variable.type = type;
    variable.elements.area = area;
    variable.order = order;
    return shownNumber(variable, elements, 0);
}

} // namespace

TEST(ShownNumber, IsReadByType)
{
    EXPECT_EQ(number(ValueType::Int16, {0xFFFE}), -2);
    EXPECT_EQ(number(ValueType::Uint16, {0xFFFE}), 65534);
    EXPECT_EQ(number(ValueType::Uint16, {0x1234}, WordOrder::Badc), 0x1234) << "one word has no order";
    EXPECT_EQ(number(ValueType::Int32, {0xFFFE, 0xFFFF}), -2);
    EXPECT_EQ(number(ValueType::Uint32, {0, 1}), 65536);
    EXPECT_EQ(number(ValueType::Float32, {0x0000, 0x41AC}), 21.5);
    EXPECT_EQ(number(ValueType::Float64, {0, 0, 0, 0x4004}), 2.5);
    EXPECT_EQ(number(ValueType::Int64, {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF}), -1);
    EXPECT_EQ(number(ValueType::Bcd16, {0x1234}), 1234);
    EXPECT_EQ(number(ValueType::Bcd32, {0x5678, 0x1234}), 12345678);
    EXPECT_EQ(number(ValueType::Hex, {0x10}), 16);
    EXPECT_EQ(number(ValueType::Float64, {0, 0x3FE00000}, WordOrder::Usual, 14), 0.5);
    EXPECT_EQ(number(ValueType::Bit, {1}, WordOrder::Usual, 0), 1);
    EXPECT_EQ(number(ValueType::Int32, {0xFFFFFFFD}, WordOrder::Usual, 14), -3);
}

TEST(ShownNumber, IsReadInTheOrderOfTheList)
{
    EXPECT_EQ(number(ValueType::Uint32, {0x0A0B, 0x0C0D}, WordOrder::Abcd), 0x0A0B0C0D);
    EXPECT_EQ(number(ValueType::Uint32, {0x0C0D, 0x0A0B}, WordOrder::Cdab), 0x0A0B0C0D);
    EXPECT_EQ(number(ValueType::Uint32, {0x0B0A, 0x0D0C}, WordOrder::Badc), 0x0A0B0C0D);
    EXPECT_EQ(number(ValueType::Uint32, {0x0D0C, 0x0B0A}, WordOrder::Dcba), 0x0A0B0C0D);
}

TEST(ShownNumber, HasScaleAndOffset)
{
    ListedVariable variable;
    variable.type = ValueType::Int16;
    variable.scale = 0.5;
    variable.offset = -10;
    EXPECT_EQ(shownNumber(variable, {30}, 0), 5);
}

TEST(ShownNumber, OfSeveralValuesIsTheOneThatIsAskedFor)
{
    ListedVariable variable;
    variable.type = ValueType::Uint32;
    variable.count = 3;
    EXPECT_EQ(numbersOf(variable), 3);
    EXPECT_EQ(elementsOfValue(variable), 2);
    EXPECT_EQ(shownNumber(variable, {1, 0, 2, 0, 3, 0}, 2), 3);
    EXPECT_TRUE(std::isnan(shownNumber(variable, {1, 0, 2, 0, 3, 0}, 3)));
}

TEST(ShownNumber, IsNoneOfTextAndOfWhatIsNoBcd)
{
    ListedVariable text;
    text.type = ValueType::Text;
    EXPECT_EQ(numbersOf(text), 0);
    EXPECT_TRUE(std::isnan(number(ValueType::Text, {0x4241})));
    EXPECT_TRUE(std::isnan(number(ValueType::Bcd16, {0x12A4})));
}

} // namespace plc
