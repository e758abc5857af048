// SPDX-License-Identifier: MIT
#include "runtime/model/value_type.h"

#include <gtest/gtest.h>

#include <QJsonArray>

#include <cstdlib>
#include <cstring>

namespace plc
{

TEST(ValueType, IsNamedByItsWordInAnyCase)
{
    for (const char* word : {"bit", "int16", "uint16", "int32", "uint32", "float32", "hex", "text", "int64",
                             "uint64", "float64", "bcd16", "bcd32"}) {
        const auto type = parseValueType(QString::fromLatin1(word).toUpper());
        ASSERT_TRUE(type) << word;
        EXPECT_EQ(valueTypeWord(*type), QLatin1String(word));
    }
    EXPECT_FALSE(parseValueType(QStringLiteral("int128")));
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

TEST(ValueType, OfSixtyFourBitsTakesFourWordsOrTwoDoubleWords)
{
    for (const ValueType type : {ValueType::Int64, ValueType::Uint64, ValueType::Float64}) {
        EXPECT_EQ(elementsOfType(type, 9, 3), 12);
        EXPECT_EQ(elementsOfType(type, 14, 3), 6);
    }
    EXPECT_EQ(elementsOfType(ValueType::Bcd16, 9, 3), 3);
    EXPECT_EQ(elementsOfType(ValueType::Bcd16, 14, 3), 0);
    EXPECT_EQ(elementsOfType(ValueType::Bcd32, 9, 3), 6);
    EXPECT_EQ(elementsOfType(ValueType::Bcd32, 14, 3), 3);
}

TEST(ValueType, IsRefusedByAreasThatCannotHoldIt)
{
    EXPECT_EQ(elementsOfType(ValueType::Bit, 9, 1), 0);
    EXPECT_EQ(elementsOfType(ValueType::Uint16, 2, 1), 0);
    EXPECT_EQ(elementsOfType(ValueType::Uint16, 14, 1), 0);
    EXPECT_EQ(elementsOfType(ValueType::Text, 7, 1), 0);
}

TEST(ValueType, LiesInBitsWordsOrDoubleWords)
{
    struct Row {
        ValueType type;
        int inBits, inBitsOfWords, inWords,
            inDoubleWords; // elements of three values; 0: such areas have none
    };
    const Row rows[] = {
        {ValueType::Bit, 3, 3, 0, 0},     {ValueType::Int16, 0, 0, 3, 0},    {ValueType::Uint16, 0, 0, 3, 0},
        {ValueType::Int32, 0, 0, 6, 3},   {ValueType::Uint32, 0, 0, 6, 3},   {ValueType::Float32, 0, 0, 6, 3},
        {ValueType::Hex, 0, 0, 3, 3},     {ValueType::Text, 0, 0, 2, 1},     {ValueType::Int64, 0, 0, 12, 6},
        {ValueType::Uint64, 0, 0, 12, 6}, {ValueType::Float64, 0, 0, 12, 6}, {ValueType::Bcd16, 0, 0, 3, 0},
        {ValueType::Bcd32, 0, 0, 6, 3},
    };
    for (const Row& row : rows) {
        const std::string word = valueTypeWord(row.type).toStdString();
        EXPECT_EQ(elementsOfType(row.type, 1, 3), row.inBits) << word;
        EXPECT_EQ(elementsOfType(row.type, 8, 3), row.inBitsOfWords) << word;
        EXPECT_EQ(elementsOfType(row.type, 9, 3), row.inWords) << word;
        EXPECT_EQ(elementsOfType(row.type, 14, 3), row.inDoubleWords) << word;
    }
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

TEST(ValueText, OfSixtyFourBitsIsExactAndHasItsLowWordFirst)
{
    const std::vector<quint32> words = {0xDEF0, 0x9ABC, 0x5678, 0x1234}; // 0x123456789ABCDEF0
    EXPECT_EQ(valueText(ValueType::Int64, 9, words), QStringLiteral("1311768467463790320"));
    EXPECT_EQ(valueText(ValueType::Uint64, 14, {0xFFFFFFFF, 0xFFFFFFFF}),
              QStringLiteral("18446744073709551615"));
    EXPECT_EQ(valueText(ValueType::Int64, 14, {0xFFFFFFFE, 0xFFFFFFFF}), QStringLiteral("-2"));
    EXPECT_EQ(valueText(ValueType::Int64, 14, {0, 0x80000000}), QStringLiteral("-9223372036854775808"));
}

TEST(ValueText, OfADoubleHasAsManyDigitsAsItTakesToReadItBack)
{
    EXPECT_EQ(valueText(ValueType::Float64, 14, {0x66666666, 0x40226666}), QStringLiteral("9.2"));
    EXPECT_EQ(valueText(ValueType::Float64, 14, {0x33333334, 0x3FD33333}),
              QStringLiteral("0.30000000000000004"));
    EXPECT_EQ(valueText(ValueType::Float64, 9, {0, 0, 0, 0x7FF0, 0, 0, 0, 0x7FF8}),
              QStringLiteral("inf nan"));
}

TEST(ValueText, OfBcdIsItsDecimalDigits)
{
    EXPECT_EQ(valueText(ValueType::Bcd16, 9, {0x1234, 0x0007}), QStringLiteral("1234 7"));
    EXPECT_EQ(valueText(ValueType::Bcd32, 9, {0x5678, 0x1234}), QStringLiteral("12345678"));
    EXPECT_EQ(valueText(ValueType::Bcd32, 14, {0x99999999}), QStringLiteral("99999999"));
}

TEST(ValueText, OfDigitsThatAreNoneInBcdSaysSo)
{
    EXPECT_EQ(valueText(ValueType::Bcd16, 9, {0x12A4}), QStringLiteral("not BCD 0x12a4"));
    EXPECT_EQ(valueJson(ValueType::Bcd16, 9, {0x12A4}, 1), QJsonValue(QStringLiteral("not BCD 0x12a4")));
    EXPECT_EQ(valueText(ValueType::Bcd32, 9, {0x5678, 0xF234}), QStringLiteral("not BCD 0xf2345678"));
}

TEST(ValueJson, IsATextOfWholeNumbersThatADoubleWouldNotHold)
{
    EXPECT_EQ(valueJson(ValueType::Int64, 14, {0, 0x00200000}, 1), QJsonValue(9007199254740992.0));
    EXPECT_EQ(valueJson(ValueType::Int64, 14, {1, 0x00200000}, 1),
              QJsonValue(QStringLiteral("9007199254740993")));
    EXPECT_EQ(valueJson(ValueType::Uint64, 14, {0xFFFFFFFF, 0xFFFFFFFF}, 1),
              QJsonValue(QStringLiteral("18446744073709551615")));
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
