// SPDX-License-Identifier: MIT
#include "runtime/model/listed_value.h"

#include <gtest/gtest.h>

#include <QJsonArray>

namespace plc
{

namespace
{

using Elements = std::vector<quint32>;

/// The variable of a list with one line: name, area, address, type and the named columns.
ListedVariable listed(const char* type, const char* columns = "comment", const char* fields = "",
                      const char* area = "9")
{
    const QByteArray text =
        QByteArray("name,area,address,type,") + columns + "\nit," + area + ",200," + type + ',' + fields;
    const VariableList list = parseVariableList(text);
    EXPECT_EQ(list.errors, QStringList());
    return list.errors.isEmpty() ? list.variables.at(0) : ListedVariable();
}

ListedVariable several(int count, ListedVariable variable)
{
    variable.count = count;
    variable.elements.count = elementsOfType(variable.type, variable.elements.area, count);
    return variable;
}

QJsonObject json(const ListedVariable& variable, const Elements& elements)
{
    QJsonObject object;
    addListed(&object, variable);
    addListedValue(&object, variable, elements);
    return object;
}

Elements written(const ListedVariable& variable, const char* text)
{
    QString error;
    const auto elements = parseListed(variable, QString::fromUtf8(text), &error);
    EXPECT_TRUE(elements) << error.toStdString();
    return elements.value_or(Elements());
}

std::string refusal(const ListedVariable& variable, const char* text)
{
    QString error;
    EXPECT_FALSE(parseListed(variable, QString::fromUtf8(text), &error));
    return error.toStdString();
}

} // namespace

TEST(ListedValue, IsShownInTheOrderOfTheList)
{
    EXPECT_EQ(listedText(listed("uint32", "order", "ABCD"), {0x1234, 0x5678}), QString::number(0x12345678));
    EXPECT_EQ(listedText(listed("uint32", "order", "DCBA"), {0x7856, 0x3412}), QString::number(0x12345678));
    EXPECT_EQ(listedText(listed("uint32", "order", "ABCD", "14"), {0x56781234}), QString::number(0x12345678));
    EXPECT_EQ(listedText(several(4, listed("text", "order", "ABCD")), {0x4142, 0x4344}),
              QStringLiteral("\"ABCD\""));
}

TEST(ListedValue, IsScaledWithoutTheNoiseOfDoubles)
{
    EXPECT_EQ(listedText(listed("int16", "scale,offset", "0.1,0"), {3}), QStringLiteral("0.3"));
    EXPECT_EQ(listedText(listed("int16", "scale,offset", "0.1,-50"), {0xFFFF}), QStringLiteral("-50.1"));
    EXPECT_EQ(listedText(listed("float32", "scale", "10"), {0xCCCD, 0x3DCC}), QStringLiteral("1"));
    EXPECT_EQ(listedText(listed("float32", "scale", "10"), {0xE6AE, 0x4640}), QStringLiteral("123456.7"));
    EXPECT_EQ(listedText(listed("float64", "scale", "10"), {0x6666, 0x6666, 0x6666, 0x4022}),
              QStringLiteral("92"));
    EXPECT_EQ(listedText(listed("uint64", "scale", "0.1"), {0x24CD, 0x0FEF, 0, 0}),
              QStringLiteral("26733076.5"));
    EXPECT_EQ(listedText(several(2, listed("bcd16", "scale", "0.5")), {0x0011, 0x00A1}),
              QStringLiteral("5.5 not BCD 0x00a1"));
}

TEST(ListedValue, HasTheDigitsOfTheList)
{
    EXPECT_EQ(listedText(listed("int16", "scale,digits", "0.1,2"), {215}), QStringLiteral("21.50"));
    EXPECT_EQ(listedText(listed("int16", "scale,digits", "0.1,0"), {216}), QStringLiteral("22"));
    EXPECT_EQ(listedText(listed("float32", "digits", "1"), {0x0000, 0x41AC}), QStringLiteral("21.5"));
    EXPECT_EQ(listedText(listed("int64", "digits", "1"), {1, 0, 0, 0x0020}),
              QStringLiteral("9007199254740993.0"));
}

TEST(ListedValue, CarriesUnitLimitsAndNumberInJson)
{
    const ListedVariable oven = listed("int16", "scale,unit,min,max", "0.1,C,0,90");
    EXPECT_EQ(json(oven, {905}), (QJsonObject{{QStringLiteral("name"), "it"},
                                              {QStringLiteral("type"), "int16"},
                                              {QStringLiteral("unit"), "C"},
                                              {QStringLiteral("min"), 0},
                                              {QStringLiteral("max"), 90},
                                              {QStringLiteral("text"), "90.5"},
                                              {QStringLiteral("value"), 90.5},
                                              {QStringLiteral("outside"), true}}));
    EXPECT_EQ(json(oven, {900}).value("outside"), QJsonValue(false));
    const QJsonObject plain = json(listed("int16"), {1});
    EXPECT_EQ(plain.keys(), QStringList({"name", "text", "type", "value"}));
    EXPECT_EQ(json(listed("int64"), {1, 0, 0, 0x0020}).value("value"), QJsonValue("9007199254740993"));
    EXPECT_EQ(json(several(2, oven), {1, 2}).value("value"), QJsonValue(QJsonArray{0.1, 0.2}));
}

TEST(ListedValue, LiesOutsideByTheNumberThatIsShown)
{
    EXPECT_FALSE(isOutside(listed("int16", "scale,max", "0.1,0.3"), {3}));
    EXPECT_TRUE(isOutside(listed("int16", "scale,max", "0.1,0.3"), {4}));
    EXPECT_FALSE(isOutside(listed("float32", "max", "0.1"), {0xCCCD, 0x3DCC}));
    EXPECT_TRUE(isOutside(listed("int16", "min", "0"), {0xFFFF}));
    EXPECT_TRUE(isOutside(several(2, listed("int16", "max", "5")), {5, 6}));
    EXPECT_FALSE(isOutside(several(2, listed("int32", "min,max", "0,10")), {5, 0, 10, 0}));
    EXPECT_FALSE(isOutside(several(2, listed("int32", "min,max", "0,10")), {5, 0, 9, 0}));
    EXPECT_TRUE(isOutside(several(2, listed("int32", "min,max", "0,10")), {5, 0, 11, 0}));
}

TEST(ListedValue, IsInsideAtALimitThatScalingMissesByADigit)
{
    const auto scaled = listed("int16", "scale,min,max", "0.1,-30,30");
    EXPECT_FALSE(isOutside(scaled, {0}));
    EXPECT_FALSE(isOutside(scaled, {300}));
    EXPECT_TRUE(isOutside(scaled, {301}));
    EXPECT_FALSE(isOutside(scaled, {0xFED4}));
    EXPECT_TRUE(isOutside(scaled, {0xFED3}));
}

TEST(ListedValue, LiesOutsideItsLimitsByTheNextFloat)
{
    EXPECT_TRUE(isOutside(listed("float32", "max", "0.1"), {0xCCCE, 0x3DCC}));
    EXPECT_FALSE(isOutside(listed("float32", "min", "0.1"), {0xCCCE, 0x3DCC}));
}

TEST(ListedValue, LiesNowhereWithoutElements)
{
    EXPECT_FALSE(isOutside(listed("int16", "min", "5"), {}));
}

TEST(ListedValue, LiesOutsideItsLimitsWhenItIsNoNumber)
{
    EXPECT_TRUE(isOutside(listed("bcd16", "max", "9999"), {0xFFFF}));
    EXPECT_TRUE(isOutside(listed("float32", "min", "0"), {0, 0x7FC0}));
    EXPECT_FALSE(isOutside(listed("bcd16"), {0xFFFF}));
}

TEST(ListedValue, OfTextLiesNowhereOutside)
{
    ListedVariable name = several(2, listed("text"));
    name.max = 5; // which no list gives to a text, but a program may
    EXPECT_FALSE(isOutside(name, {0x4142}));
}

TEST(ListedValue, HasItsLimitsInWords)
{
    EXPECT_EQ(limitsText(listed("int16", "min,max,unit", "0,90.5,C")), QStringLiteral("0 to 90.5 C"));
    EXPECT_EQ(limitsText(listed("int16", "min", "-5")), QStringLiteral("at least -5"));
    EXPECT_EQ(limitsText(listed("int16", "max", "5")), QStringLiteral("at most 5"));
    EXPECT_EQ(limitsText(listed("int16")), QString());
}

TEST(ListedValueWritten, IsRoundedToWhatTheControllerCanHold)
{
    const ListedVariable oven = listed("int16", "scale,offset,unit", "0.1,-50,C");
    EXPECT_EQ(written(oven, "21.5"), Elements({715}));
    EXPECT_EQ(written(oven, "21.54"), Elements({715}));
    EXPECT_EQ(written(oven, "21.56 C"), Elements({716}));
    EXPECT_EQ(written(oven, "-3000"), Elements({0x10000 - 29500}));
}

TEST(ListedValueWritten, MayBeTheLeastAndTheGreatestThatFit)
{
    EXPECT_EQ(written(listed("int16", "scale", "0.1"), "3276.7"), Elements({0x7FFF}));
    EXPECT_EQ(written(listed("int16", "scale", "0.1"), "-3276.8"), Elements({0x8000}));
}

TEST(ListedValueWritten, IsRefusedWhenItDoesNotFit)
{
    EXPECT_EQ(refusal(listed("int16", "scale", "0.1"), "3276.8"),
              "3276.8 does not fit; -3276.8 to 3276.7 does");
    EXPECT_EQ(refusal(listed("int16", "scale", "-0.1"), "3277"), "3277 does not fit; -3276.7 to 3276.8 does");
    EXPECT_EQ(refusal(listed("int16"), "40000"),
              "\"40000\" does not fit; a whole number from -32768 to 32767 is expected");
    EXPECT_EQ(refusal(listed("uint16"), "-1"),
              "\"-1\" does not fit; a whole number from 0 to 65535 is expected");
    EXPECT_EQ(refusal(listed("bcd16"), "10000"),
              "\"10000\" does not fit; a whole number from 0 to 9999 is expected");
    EXPECT_EQ(refusal(listed("float32"), "1e39"), "1e39 does not fit; it is too large for its type");
    EXPECT_EQ(refusal(listed("uint64", "scale", "2"), "4e19"),
              "4e+19 does not fit; 0 to 3.68934881474191e+19 does");
}

TEST(ListedValueWritten, OfAScaledFloatIsTheControllersOwnNumber)
{
    const ListedVariable scaled = listed("float32", "scale,offset", "0.5,1");
    EXPECT_EQ(written(scaled, "11.75"), Elements({0x0000, 0x41AC})) << "21.5";
    EXPECT_EQ(written(scaled, "1.7e38"), Elements({0xC99E, 0x7F7F})) << "3.4e38";
    EXPECT_EQ(refusal(scaled, "1.8e38"), "1.8e38 does not fit; it is too large for its type");
    EXPECT_EQ(refusal(scaled, "-1.8e38"), "-1.8e38 does not fit; it is too large for its type");
    EXPECT_EQ(written(listed("float64", "scale", "0.5"), "10.75"), Elements({0, 0, 0x8000, 0x4035}));
}

TEST(ListedValueWritten, IsRefusedWhenItIsNoSuchValue)
{
    EXPECT_EQ(refusal(listed("int16"), "21.5"),
              "\"21.5\" does not fit; a whole number from -32768 to 32767 is expected");
    EXPECT_EQ(refusal(listed("float32"), "nan"), "\"nan\" is no number; one such as 21.5 is expected");
    EXPECT_EQ(refusal(listed("bit", "comment", "", "1"), "2"),
              "\"2\" is no bit; 0, 1, true, false, on or off is expected");
    EXPECT_EQ(refusal(several(2, listed("int16")), "1"), "1 value given; it has 2");
}

TEST(ListedValueWritten, TakesEachType)
{
    EXPECT_EQ(written(listed("bit", "comment", "", "1"), "TRUE"), Elements({1}));
    EXPECT_EQ(written(several(3, listed("bit", "comment", "", "1")), "on,0,false"), Elements({1, 0, 0}));
    EXPECT_EQ(written(listed("int16"), "-2"), Elements({0xFFFE}));
    EXPECT_EQ(written(listed("hex"), "0xbeef"), Elements({0xBEEF}));
    EXPECT_EQ(written(listed("int64"), "-2"), Elements({0xFFFE, 0xFFFF, 0xFFFF, 0xFFFF}));
    EXPECT_EQ(written(listed("uint64"), "18446744073709551615"), Elements(4, 0xFFFF));
    EXPECT_EQ(written(listed("float32"), "21.5"), Elements({0x0000, 0x41AC}));
    EXPECT_EQ(written(listed("float64"), "9.2"), Elements({0x6666, 0x6666, 0x6666, 0x4022}));
    EXPECT_EQ(written(listed("bcd16"), "1234"), Elements({0x1234}));
    EXPECT_EQ(written(listed("bcd32", "order", "ABCD"), "12345678"), Elements({0x1234, 0x5678}));
    EXPECT_EQ(written(listed("bcd16", "scale", "0.1"), "12.3"), Elements({0x0123}));
    EXPECT_EQ(written(listed("bcd16", "scale", "0.1"), "0"), Elements({0}));
    EXPECT_EQ(written(listed("bcd16", "scale", "0.1"), "999.9"), Elements({0x9999}));
    EXPECT_EQ(written(listed("bcd32", "scale", "0.1"), "0"), Elements({0, 0}));
    EXPECT_EQ(written(listed("bcd32"), "99999999"), Elements({0x9999, 0x9999}));
    EXPECT_EQ(refusal(listed("bcd32"), "-1"),
              "\"-1\" does not fit; a whole number from 0 to 99999999 is expected");
}

TEST(ListedValueWritten, TakesTextWithOrWithoutQuotesAndFillsItWithZeros)
{
    const ListedVariable recipe = several(5, listed("text"));
    EXPECT_EQ(written(recipe, "AB,C"), Elements({0x4241, 0x432C, 0}));
    EXPECT_EQ(written(recipe, "\"ABC\""), Elements({0x4241, 0x43, 0}));
    EXPECT_EQ(written(recipe, "\""), Elements({0x22, 0, 0}));
    EXPECT_EQ(written(recipe, "\"\""), Elements({0, 0, 0}));
    EXPECT_EQ(written(recipe, "\"A"), Elements({0x4122, 0, 0}));
    EXPECT_EQ(refusal(recipe, "LEMONS"), "\"LEMONS\" has 6 characters; there is room for 5");
    EXPECT_EQ(written(recipe, "\xC3\xB6"), Elements({0xF6, 0, 0}));
    EXPECT_EQ(written(recipe, "\xC3\xBF"), Elements({0xFF, 0, 0})) << "the last of Latin-1";
    EXPECT_NE(refusal(recipe, "\xC4\x80").find("not Latin-1"), std::string::npos);
    EXPECT_NE(refusal(recipe, "\xE2\x82\xAC").find("not Latin-1"), std::string::npos);
}

TEST(ListedValueWritten, IsRefusedOutsideItsLimitsAlsoWhenRoundingLeadsThere)
{
    const ListedVariable oven = listed("int16", "scale,unit,min,max", "0.1,C,0,0.36");
    EXPECT_EQ(written(oven, "0.3"), Elements({3}));
    EXPECT_EQ(refusal(oven, "0.37"), "0.37 lies outside its limits, 0 to 0.36 C");
    EXPECT_EQ(refusal(oven, "0.36"), "0.36 lies outside its limits, 0 to 0.36 C");
    EXPECT_EQ(refusal(oven, "-0.01"), "-0.01 lies outside its limits, 0 to 0.36 C");
}

TEST(ListedValueWritten, IsRefusedWhenTheListSaysThatItIsRead)
{
    EXPECT_EQ(refusal(listed("int16", "access", "r"), "1"), "the list says that it is only read (access r)");
    EXPECT_EQ(written(listed("int16", "access", "rw"), "1"), Elements({1}));
}

TEST(ListedValueWritten, ComesBackAsItWasWritten)
{
    for (const char* order : {"", "ABCD", "CDAB", "BADC", "DCBA"}) {
        EXPECT_EQ(
            listedText(listed("float64", "order", order), written(listed("float64", "order", order), "-0.7")),
            QStringLiteral("-0.7"));
        const ListedVariable text = listed("text", "count,order", (QByteArray("12,") + order).constData());
        EXPECT_EQ(listedText(text, written(text, "LEMON TEA")), QStringLiteral("\"LEMON TEA\""));
    }
}

} // namespace plc
