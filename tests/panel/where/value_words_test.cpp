// SPDX-License-Identifier: MIT
// How a value is put together, in words.

#include "panel/where/value_words.h"

#include <gmock/gmock.h>

namespace
{

plc::ListedVariable listed(const char* fields)
{
    const QByteArray csv = QByteArray("name,area,address,count,type,order,scale,offset,unit\n") + fields;
    const plc::VariableList list = plc::parseVariableList(csv);
    EXPECT_EQ(list.errors.join(QLatin1Char(' ')).toStdString(), "");
    return list.variables.empty() ? plc::ListedVariable() : list.variables.front();
}

std::string words(const char* fields)
{
    const plc::ListedVariable variable = listed(fields);
    return plc::valueWords(variable, plc::placeOf(variable.elements)).toStdString();
}

TEST(ValueWords, OfOneWordAreTheType)
{
    EXPECT_EQ(words("a,9,1,,int16,,,,"), "int16");
    EXPECT_EQ(words("a,9,1,3,uint16,,,,"), "3 values of uint16");
    EXPECT_EQ(words("a,2,1,,bit,,,,"), "bit");
    EXPECT_EQ(words("a,2,1,4,bit,,,,"), "4 bits");
}

TEST(ValueWords, TellTheOrderOfWordsAndBytes)
{
    EXPECT_EQ(words("a,9,1,,float32,ABCD,,,"), "float32, ABCD: high word first");
    EXPECT_EQ(words("a,9,1,,float32,CDAB,,,"), "float32, CDAB: low word first");
    EXPECT_EQ(words("a,9,1,,float32,BADC,,,"), "float32, BADC: high word first, low byte of each first");
    EXPECT_EQ(words("a,9,1,,float32,DCBA,,,"), "float32, DCBA: low word first, low byte of each first");
}

TEST(ValueWords, NameTheOrderThatAListLeavesOut)
{
    EXPECT_EQ(words("a,14,200,,int32,,,,"), "int32, CDAB: low word first");
    EXPECT_EQ(words("a,9,1,8,text,,,,"), "text of 8, BADC: low byte of each word first");
}

TEST(ValueWords, OfTextTellWhichCharacterIsFirst)
{
    EXPECT_EQ(words("a,9,1,8,text,ABCD,,,"), "text of 8, ABCD: high byte of each word first");
    EXPECT_EQ(words("a,9,1,8,text,DCBA,,,"),
              "text of 8, DCBA: low byte of each word first, the second word of two first");
}

TEST(ValueWords, TellScaleOffsetAndUnit)
{
    EXPECT_EQ(words("a,9,1,,int16,,0.1,,m/min"), "int16, x 0.1 m/min");
    EXPECT_EQ(words("a,9,1,,int16,,0.5,-40,K"), "int16, x 0.5 - 40 K");
    EXPECT_EQ(words("a,9,1,,int16,,,273.15,"), "int16, + 273.15");
    EXPECT_EQ(words("a,9,1,,uint16,,,,ml"), "uint16, ml");
}

TEST(ValueWords, NameTheBitsOfWords)
{
    EXPECT_EQ(words("a,8,10.3,,bit,,,,"), "bit 3");
    EXPECT_EQ(words("a,8,10.3,4,bit,,,,"), "bits 3 to 6");
    EXPECT_EQ(words("a,8,10.14,4,bit,,,,"), "bit 14 of the first to bit 1 of the last");
}

TEST(ValueWords, WithoutAListTellOnlyWhatTheAreaFixes)
{
    const auto elements = [](int area, int element, int count) {
        const plc::Variable variable{area, element, count, -1};
        return plc::elementsWords(variable, plc::placeOf(variable)).toStdString();
    };
    EXPECT_EQ(elements(9, 1, 2), "");
    EXPECT_EQ(elements(14, 0, 1), "low word first");
    EXPECT_EQ(elements(14, 0, 2), "2 of two registers, low word first");
    EXPECT_EQ(elements(8, 163, 1), "bit 3");
}

} // namespace
