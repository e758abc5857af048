// SPDX-License-Identifier: MIT
#include "runtime/model/value_text.h"

#include <gtest/gtest.h>

#include <memory>

namespace
{

using namespace plc;

QString text(int area, const std::vector<quint32>& values, ValueFormat format)
{
    return valueTexts(area, values, format).join(QLatin1Char(' '));
}

TEST(ValueTexts, AreDecimal)
{
    EXPECT_EQ(text(9, {0, 65535}, ValueFormat::Decimal), QStringLiteral("0 65535"));
    EXPECT_EQ(text(14, {4294967295}, ValueFormat::Decimal), QStringLiteral("4294967295"));
}

TEST(ValueTexts, HexadecimalHasTheDigitsOfTheElement)
{
    EXPECT_EQ(text(9, {0, 1234}, ValueFormat::Hex), QStringLiteral("0x0000 0x04D2"));
    EXPECT_EQ(text(14, {0xABCDE}, ValueFormat::Hex), QStringLiteral("0x000ABCDE"));
}

TEST(ValueTexts, BitsStayBitsInHexadecimal)
{
    EXPECT_EQ(text(1, {1, 0}, ValueFormat::Hex), QStringLiteral("1 0"));
    EXPECT_EQ(text(8, {1}, ValueFormat::Hex), QStringLiteral("1"));
}

TEST(Json, NamesTheVariableAsItIsTyped)
{
    const Variable variable = *parseVariable(QStringLiteral("0:17x2"), std::make_unique<QString>().get());
    QJsonObject object = jsonOfVariable(variable, 3);
    addValues(&object, {1, 0});
    EXPECT_EQ(jsonLine(object),
              QStringLiteral("{\"address\":\"17\",\"area\":0,\"count\":2,\"station\":3,\"values\":[1,0]}"));
}

TEST(Json, HoldsTheLargestDoubleWordExactly)
{
    QJsonObject object;
    addValues(&object, {4294967295});
    EXPECT_EQ(jsonLine(object), QStringLiteral("{\"values\":[4294967295]}"));
}

} // namespace
