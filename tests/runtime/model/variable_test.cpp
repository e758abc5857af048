// SPDX-License-Identifier: MIT
#include "runtime/model/variable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using namespace plc;
using testing::ElementsAre;
using testing::HasSubstr;

std::string errorOf(const char* text)
{
    QString error;
    EXPECT_FALSE(parseVariable(QLatin1String(text), &error)) << text;
    return error.toStdString();
}

std::string valueErrorOf(int area, const char* text)
{
    QString error;
    EXPECT_FALSE(parseValues(area, QLatin1String(text), &error)) << text;
    return error.toStdString();
}

std::vector<quint32> values(int area, const char* text)
{
    QString error;
    return parseValues(area, QLatin1String(text), &error).value_or(std::vector<quint32>());
}

struct Row {
    const char* text;
    int area;
    int element;
    int count;
};

TEST(ParseVariable, UnderstandsEveryKindOfArea)
{
    const Row rows[] = {
        {"0:17", 0, 15, 1},
        {"1:777", 1, 511, 1},
        {"2:100x10", 2, 100, 10},
        {"7:8000", 7, 0, 1},
        {"7:8100x8", 7, 100, 8},
        {"8:10.3", 8, 163, 1},
        {"8:0.0x1048560", 8, 0, 1048560},
        {"9:100x10", 9, 100, 10},
        {"13:65534", 13, 65534, 1},
        {"14:200x2", 14, 0, 2},
        {"9:007", 9, 7, 1},
    };
    for (const Row& row : rows) {
        QString error;
        const auto variable = parseVariable(QLatin1String(row.text), &error);
        ASSERT_TRUE(variable) << row.text << ": " << error.toStdString();
        EXPECT_EQ(variable->area, row.area) << row.text;
        EXPECT_EQ(variable->element, row.element) << row.text;
        EXPECT_EQ(variable->count, row.count) << row.text;
        EXPECT_EQ(variable->station, -1) << row.text;
        EXPECT_EQ(variable->valueElements, 1) << row.text;
    }
}

TEST(ParseVariable, SaysWhatIsWrongAndWhatIsExpected)
{
    EXPECT_THAT(errorOf(""), HasSubstr("AREA:ADDRESS[xCOUNT] is expected"));
    EXPECT_THAT(errorOf("9"), HasSubstr("AREA:ADDRESS[xCOUNT] is expected"));
    EXPECT_THAT(errorOf("15:1"), HasSubstr("\"15\" is no area; areas are 0 to 14"));
    EXPECT_THAT(errorOf("-1:1"), HasSubstr("\"-1\" is no area"));
    EXPECT_THAT(errorOf(":1"), HasSubstr("\"\" is no area"));
    EXPECT_THAT(errorOf("0:8"), HasSubstr("octal digits"));
    EXPECT_THAT(errorOf("7:7999"), HasSubstr("from 8000 on"));
    EXPECT_THAT(errorOf("14:199"), HasSubstr("from 200 on"));
    EXPECT_THAT(errorOf("8:10"), HasSubstr("word.bit"));
    EXPECT_THAT(errorOf("8:10.16"), HasSubstr("word.bit"));
    EXPECT_THAT(errorOf("8:1.2.3"), HasSubstr("word.bit"));
    EXPECT_THAT(errorOf("8:65535.0"), HasSubstr("word.bit"));
    EXPECT_THAT(errorOf("8:268435456.0"), HasSubstr("word.bit")); // times 16 it leaves 32 bits
    EXPECT_THAT(errorOf("8:-1.3"), HasSubstr("word.bit"));
    EXPECT_THAT(errorOf("8:.3"), HasSubstr("word.bit"));
    EXPECT_THAT(errorOf("9:-5"), HasSubstr("a decimal number is expected"));
    EXPECT_THAT(errorOf("9: 5"), HasSubstr("a decimal number is expected"));
    EXPECT_THAT(errorOf("9:65535"), HasSubstr("up to 65534"));
    EXPECT_THAT(errorOf("9:99999999999"), HasSubstr("up to 65534"));
    EXPECT_THAT(errorOf("9:5x0"), HasSubstr("a number from 1 on is expected after the x"));
    EXPECT_THAT(errorOf("9:5x"), HasSubstr("a number from 1 on is expected after the x"));
    EXPECT_THAT(errorOf("9:65530x6"), HasSubstr("at most 5 are there"));
}

TEST(ParseVariable, TellsHowSeveralElementsFromZeroOnAreWritten)
{
    EXPECT_THAT(errorOf("9:0x10"), HasSubstr("\"0x10\" looks like a hexadecimal address"));
    EXPECT_THAT(errorOf("9:0x10"), HasSubstr("(several elements from 0 on: 9:00x10)"));
    EXPECT_THAT(errorOf("7:0x10"), HasSubstr("from 8000 on is expected"));
    EXPECT_EQ(errorOf("7:0x10").find("several elements"), std::string::npos) << "it has no element 0";
}

TEST(ParseVariable, QuotesPercentSignsAsTheyAre)
{
    EXPECT_THAT(errorOf("9:%2"), HasSubstr("\"%2\" is no address of area 9"));
    EXPECT_THAT(errorOf("9:1@%2"), HasSubstr("\"%2\" is no station"));
}

TEST(ParseVariable, TakesAStation)
{
    QString error;
    EXPECT_EQ(parseVariable(QStringLiteral("9:100x2@3"), &error)->station, 3);
    EXPECT_EQ(parseVariable(QStringLiteral("9:100x2@3"), &error)->count, 2);
    EXPECT_EQ(parseVariable(QStringLiteral("9:100@255"), &error)->station, 255);
    EXPECT_EQ(parseVariable(QStringLiteral("9:100"), &error)->station, -1);
}

TEST(ParseVariable, RefusesWhatIsNoStation)
{
    EXPECT_THAT(errorOf("9:100@256"), HasSubstr("\"256\" is no station; a number from 0 to 255 is expected"));
    EXPECT_THAT(errorOf("9:100@"), HasSubstr("is no station"));
    EXPECT_THAT(errorOf("9:100@-1"), HasSubstr("is no station"));
    EXPECT_THAT(errorOf("9:100@3@4"), HasSubstr("is no station"));
    EXPECT_THAT(errorOf("9:100@3x2"), HasSubstr("is no station"));
}

TEST(VariableText, IsWhatParseVariableTakes)
{
    for (const char* text :
         {"0:17", "1:777x9", "7:8100", "8:10.3x20", "9:100x10", "14:200x2", "9:100@0", "8:10.3x20@255"}) {
        QString error;
        const auto variable = parseVariable(QLatin1String(text), &error);
        ASSERT_TRUE(variable) << text;
        EXPECT_EQ(variableText(*variable).toStdString(), text);
    }
}

TEST(VariableText, HasACountThatIsNoneToo)
{
    Variable none;
    none.area = 9;
    none.element = 100;
    none.count = 0; // as a program may ask, and a refusal repeats
    EXPECT_EQ(variableText(none), QStringLiteral("9:100x0"));
    none.element = 0;
    EXPECT_EQ(variableText(none), QStringLiteral("9:00x0"));
}

TEST(ParseValues, TakesDecimalNegativeAndHexadecimal)
{
    EXPECT_THAT(values(9, "0,65535,-1,-32768,0xfFfF"), ElementsAre(0u, 65535u, 65535u, 32768u, 65535u));
    EXPECT_THAT(values(14, "4294967295,-1,0x12345678"), ElementsAre(0xFFFFFFFFu, 0xFFFFFFFFu, 0x12345678u));
    EXPECT_THAT(values(1, "0, 1"), ElementsAre(0u, 1u));
    EXPECT_THAT(values(8, "1"), ElementsAre(1u));
}

TEST(ParseValues, RefusesWhatDoesNotFitAndSaysWhatDoes)
{
    EXPECT_THAT(valueErrorOf(1, "2"), HasSubstr("\"2\" is no value of area 1; 0 or 1 is expected"));
    EXPECT_THAT(valueErrorOf(1, "-1"), HasSubstr("0 or 1 is expected"));
    EXPECT_THAT(valueErrorOf(9, "65536"), HasSubstr("-32768 to 65535, or 0x0 to 0xffff is expected"));
    EXPECT_THAT(valueErrorOf(9, "-32769"), HasSubstr("is expected"));
    EXPECT_THAT(valueErrorOf(9, "1,,2"), HasSubstr("\"\" is no value"));
    EXPECT_THAT(valueErrorOf(9, "0x"), HasSubstr("\"0x\" is no value"));
    EXPECT_THAT(valueErrorOf(9, "0x-1"), HasSubstr("is no value"));
    EXPECT_THAT(valueErrorOf(14, "4294967296"), HasSubstr("is no value"));
    EXPECT_THAT(valueErrorOf(14, "99999999999999999999"), HasSubstr("is no value"));
}

TEST(ParseValues, QuotesPercentSignsAsTheyAre)
{
    QString error;
    EXPECT_FALSE(parseValues(9, "%2", &error));
    EXPECT_THAT(error.toStdString(), HasSubstr("\"%2\" is no value of area 9"));
}

TEST(BytesOfValues, AreLittleEndianAndOneByteForABit)
{
    EXPECT_EQ(bytesOfValues(1, {1, 0}), QByteArray::fromHex("0100"));
    EXPECT_EQ(bytesOfValues(8, {1}), QByteArray::fromHex("01"));
    EXPECT_EQ(bytesOfValues(9, {0x1234, 0xFFFF}), QByteArray::fromHex("3412FFFF"));
    EXPECT_EQ(bytesOfValues(14, {0x12345678}), QByteArray::fromHex("78563412"));
}

TEST(ValuesOfBytes, AreTheInverse)
{
    EXPECT_THAT(valuesOfBytes(1, QByteArray::fromHex("0100")), ElementsAre(1u, 0u));
    EXPECT_THAT(valuesOfBytes(9, QByteArray::fromHex("3412FFFF")), ElementsAre(0x1234u, 0xFFFFu));
    EXPECT_THAT(valuesOfBytes(14, QByteArray::fromHex("785634F2")), ElementsAre(0xF2345678u));
}

TEST(ValuesOfBytes, IgnoreAnElementThatIsNotWhole)
{
    EXPECT_THAT(valuesOfBytes(9, QByteArray::fromHex("341256")), ElementsAre(0x1234u));
    EXPECT_THAT(valuesOfBytes(14, QByteArray::fromHex("785634")), ElementsAre());
}

TEST(ParseVariable, RefusesWhatLooksLikeAHexadecimalAddress)
{
    for (const char* text :
         {"9:0x1", "9:0x10", "9:0xA", "9:0X1", "0:0x7", "8:0x1.2", "14:0xC8", "9:0x1@3", "9:0x"}) {
        QString error;
        EXPECT_FALSE(parseVariable(QString::fromLatin1(text), &error)) << text;
        EXPECT_TRUE(error.contains(QStringLiteral("hexadecimal address"))) << error.toStdString();
    }
}

TEST(ParseVariable, TakesSeveralElementsFromZeroOnWithTwoZeros)
{
    QString error;
    const auto variable = parseVariable(QStringLiteral("9:00x4"), &error);
    ASSERT_TRUE(variable) << error.toStdString();
    EXPECT_EQ(variable->element, 0);
    EXPECT_EQ(variable->count, 4);
    EXPECT_EQ(variableText(*variable), QStringLiteral("9:00x4"));
    EXPECT_EQ(variableText(*parseVariable(QStringLiteral("9:0"), &error)), QStringLiteral("9:0"));
    EXPECT_EQ(variableText(*parseVariable(QStringLiteral("9:100x10"), &error)), QStringLiteral("9:100x10"));
    EXPECT_TRUE(parseVariable(QStringLiteral("8:0.0x4"), &error));
}

} // namespace
