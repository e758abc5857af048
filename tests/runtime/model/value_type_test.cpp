#include "runtime/model/value_type.h"

#include <gtest/gtest.h>

#include <QJsonArray>

#include <cstdlib>
#include <cstring>

namespace plc
{

TEST(ValueType, IsNamedByItsWordInAnyCase)
{
    for (const char* word : {"bit", "int16", "uint16", "int32", "uint32", "float32", "hex", "text"}) {
        const auto type = parseValueType(QString::fromLatin1(word).toUpper());
        ASSERT_TRUE(type) << word;
        EXPECT_EQ(valueTypeWord(*type), QLatin1String(word));
    }
    EXPECT_FALSE(parseValueType(QStringLiteral("int64")));
    EXPECT_FALSE(parseValueType(QString()));
}

TEST(ValueType, TakesAsManyElementsAsItsBytesNeed)
{
    EXPECT_EQ(elementsOfType(ValueType::Bit, 0, 5), 5);
    EXPECT_EQ(elementsOfType(ValueType::Bit, 8, 5), 5);
    EXPECT_EQ(elementsOfType(ValueType::Int16, 9, 3), 3);
    EXPECT_EQ(elementsOfType(ValueType::Int32, 9, 3), 6);
    EXPECT_EQ(elementsOfType(ValueType::Float32, 14, 3), 3);
    EXPECT_EQ(elementsOfType(ValueType::Hex, 14, 3), 3);
    EXPECT_EQ(elementsOfType(ValueType::Text, 9, 5), 3);
    EXPECT_EQ(elementsOfType(ValueType::Text, 14, 5), 2);
}

TEST(ValueType, IsRefusedByAreasThatCannotHoldIt)
{
    EXPECT_EQ(elementsOfType(ValueType::Bit, 9, 1), 0);
    EXPECT_EQ(elementsOfType(ValueType::Uint16, 2, 1), 0);
    EXPECT_EQ(elementsOfType(ValueType::Uint16, 14, 1), 0);
    EXPECT_EQ(elementsOfType(ValueType::Text, 7, 1), 0);
}

TEST(ValueText, ShowsSignedAndUnsignedWords)
{
    EXPECT_EQ(valueText(ValueType::Int16, 9, {0xFFFE, 5}), QStringLiteral("-2 5"));
    EXPECT_EQ(valueText(ValueType::Uint16, 9, {0xFFFE, 5}), QStringLiteral("65534 5"));
}

TEST(ValueText, JoinsTwoWordsLowHalfFirst)
{
    EXPECT_EQ(valueText(ValueType::Uint32, 10, {0x5678, 0x1234}), QString::number(0x12345678));
    EXPECT_EQ(valueText(ValueType::Int32, 10, {0xFFFF, 0xFFFF}), QStringLiteral("-1"));
    EXPECT_EQ(valueText(ValueType::Float32, 10, {0x0000, 0x3FC0}), QStringLiteral("1.5"));
}

TEST(ValueText, ShowsDoubleWordsOfTheirOwnArea)
{
    EXPECT_EQ(valueText(ValueType::Int32, 14, {0xFFFFFFFE}), QStringLiteral("-2"));
    EXPECT_EQ(valueText(ValueType::Float32, 14, {0xC2F70000}), QStringLiteral("-123.5"));
    EXPECT_EQ(valueText(ValueType::Hex, 14, {0x12AB}), QStringLiteral("0x000012ab"));
}

TEST(ValueText, ShowsBitsAndHexWords)
{
    EXPECT_EQ(valueText(ValueType::Bit, 3, {1, 0, 1}), QStringLiteral("1 0 1"));
    EXPECT_EQ(valueText(ValueType::Hex, 9, {0x12, 0xBEEF}), QStringLiteral("0x0012 0xbeef"));
}

TEST(ValueText, ShowsTextLowByteFirstWithoutItsPadding)
{
    // "PUMP 1": two characters a word
    EXPECT_EQ(valueText(ValueType::Text, 9, {0x5550, 0x504D, 0x3120, 0x0000}), QStringLiteral("\"PUMP 1\""));
}

TEST(ValueText, ShowsNoCharacterBehindTheLastOne)
{
    EXPECT_EQ(valueText(ValueType::Text, 9, {0x4241, 0x4443}, 3), QStringLiteral("\"ABC\""));
    EXPECT_EQ(valueText(ValueType::Int16, 9, {1, 2, 3}, 2), QStringLiteral("1 2 3")); // no characters
}

TEST(ValueText, ShowsControlCharactersAsDots)
{
    EXPECT_EQ(valueText(ValueType::Text, 9, {0x1B41, 0x0042}), QStringLiteral("\"A.B\""));
}

TEST(ValueText, OfAFloatHasAsManyDigitsAsItTakesToReadItBack)
{
    EXPECT_EQ(valueText(ValueType::Float32, 14, {0x4B800000}), QStringLiteral("16777216"));
    EXPECT_EQ(valueText(ValueType::Float32, 14, {0x47F12065}), QStringLiteral("123456.79"));
    EXPECT_EQ(valueText(ValueType::Float32, 14, {0x3DCCCCCD}), QStringLiteral("0.1"));
    EXPECT_EQ(valueText(ValueType::Float32, 14, {0x7F7FFFFF}), QStringLiteral("3.4028235e+38"));
    EXPECT_EQ(valueText(ValueType::Float32, 14, {0x7F800000, 0xFF800000, 0x7FC00000}),
              QStringLiteral("inf -inf nan"));
}

TEST(ValueText, OfAFloatIsReadBackWhateverItsBitsAre)
{
    for (quint32 bits = 1; bits < 0x7F800000; bits += 104729) {
        const std::string text = valueText(ValueType::Float32, 14, {bits}).toStdString();
        const float value = std::strtof(text.c_str(), nullptr);
        quint32 again = 0;
        std::memcpy(&again, &value, sizeof again);
        ASSERT_EQ(again, bits) << text;
    }
}

TEST(ValueJson, IsANumberOrAnArrayOfThem)
{
    EXPECT_EQ(valueJson(ValueType::Int16, 9, {0xFFFE}, 1), QJsonValue(-2));
    EXPECT_EQ(valueJson(ValueType::Uint32, 9, {0xFFFF, 0xFFFF}, 1), QJsonValue(4294967295.0));
    EXPECT_EQ(valueJson(ValueType::Hex, 14, {0xFFFFFFFF}, 1), QJsonValue(4294967295.0));
    EXPECT_EQ(valueJson(ValueType::Bit, 0, {1, 0}, 2), QJsonValue(QJsonArray{1, 0}));
    EXPECT_EQ(valueJson(ValueType::Float32, 14, {0x47F12065}, 1), QJsonValue(123456.79));
}

TEST(ValueJson, IsATextWhereJsonHasNoNumber)
{
    EXPECT_EQ(valueJson(ValueType::Float32, 14, {0x7FC00000}, 1), QJsonValue(QStringLiteral("nan")));
    EXPECT_EQ(valueJson(ValueType::Float32, 14, {0x3FC00000, 0xFF800000}, 2),
              QJsonValue(QJsonArray{1.5, QStringLiteral("-inf")}));
    EXPECT_EQ(valueJson(ValueType::Text, 9, {0x4241, 0x0043}, 4), QJsonValue(QStringLiteral("ABC")));
}

} // namespace plc
