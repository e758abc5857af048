// SPDX-License-Identifier: MIT
#include "varlist/address_text.h"

#include "driver/plcdriver.h"

#include <gtest/gtest.h>

#include <climits>

namespace
{

struct TextRow {
    int area;
    const char* text;
    int element;
};

template <std::size_t Size>
void ExpectElements(const TextRow (&rows)[Size])
{
    for (const TextRow& row : rows) {
        SCOPED_TRACE("area " + std::to_string(row.area) + " \"" + row.text + "\"");
        EXPECT_EQ(row.element, StringAddressToInt(row.area, row.text));
        EXPECT_EQ(row.element, PLCAddressChangeIntef(row.area, row.text));
    }
}

} // namespace

TEST(AddressText, Areas0And1AreOctal)
{
    ExpectElements({{0, "17", 15}, {0, "0", 0}, {0, "8", -1}, {0, "19", -1}, {1, "777", 511}, {1, "9", -1}});
}

TEST(AddressText, Areas2To6And9To13AreDecimal)
{
    for (int area : {2, 3, 4, 5, 6, 9, 10, 11, 12, 13})
        ExpectElements(
            {{area, "0", 0}, {area, "17", 17}, {area, "65535", 65535}, {area, "8", 8}, {area, "010", 10}});
}

TEST(AddressText, Area7BeginsAt8000)
{
    ExpectElements({{7, "8000", 0}, {7, "7999", -1}, {7, "8100", 100}, {7, "0", -1}, {7, "-8000", -1}});
    ExpectElements({{7, "2147483647", 2147475647}, {7, "-2147483648", -1}});
}

TEST(AddressText, Area14BeginsAt200)
{
    ExpectElements({{14, "200", 0}, {14, "199", -1}, {14, "300", 100}, {14, "0", -1}, {14, "-200", -1}});
    ExpectElements({{14, "2147483647", 2147483447}, {14, "-2147483648", -1}});
}

TEST(AddressText, Area8IsWordDotBit)
{
    ExpectElements({{8, "3.14", 62}, {8, "0.0", 0}, {8, "0.15", 15}, {8, "2.3", 35}, {8, "010.010", 170}});
}

TEST(AddressText, Area8BitNumbersHaveNoUpperBound)
{
    ExpectElements({{8, "10.20", 180}, {8, "11.4", 180}, {8, "0.1000", 1000}});
}

TEST(AddressText, Area8NeedsExactlyTwoNumbers)
{
    ExpectElements({{8, "3", -1},
                    {8, "3.", -1},
                    {8, ".3", -1},
                    {8, ".", -1},
                    {8, "", -1},
                    {8, "3.1.2", -1},
                    {8, "3..1", -1},
                    {8, "3.1.", -1},
                    {8, "3,1", -1},
                    {8, "a.1", -1},
                    {8, "1.a", -1}});
}

TEST(AddressText, TextThatIsNoNumberIsRefused)
{
    for (int area : {0, 1, 2, 6, 7, 9, 13, 14}) {
        ExpectElements({{area, "", -1},
                        {area, " ", -1},
                        {area, "x", -1},
                        {area, "8200x", -1},
                        {area, "x8200", -1},
                        {area, "0x2100", -1},
                        {area, "8200.0", -1},
                        {area, "8e3", -1},
                        {area, "82 00", -1},
                        {area, "8,200", -1},
                        {area, "--7", -1},
                        {area, "- 7", -1},
                        {area, "-", -1},
                        {area, "+", -1}});
    }
}

TEST(AddressText, ANullTextIsRefused)
{
    for (int area : {0, 2, 7, 8, 9, 14})
        EXPECT_EQ(-1, StringAddressToInt(area, QString())) << area;
}

TEST(AddressText, ASignIsAccepted)
{
    ExpectElements({{2, "-5", -5},
                    {9, "-5", -5},
                    {9, "+5", 5},
                    {9, "-0", 0},
                    {0, "-17", -15},
                    {0, "+17", 15},
                    {7, "+8001", 1},
                    {14, "+201", 1},
                    {8, "+3.+14", 62}});
}

TEST(AddressText, Area8TakesASignInEachNumber)
{
    ExpectElements({{8, "-1.0", -16}, {8, "-1.1", -15}, {8, "3.-1", 47}, {8, "0.-1", -1}});
}

TEST(AddressText, SpacesAroundANumberAreIgnored)
{
    ExpectElements({{9, " 5", 5}, {9, "5 ", 5}, {0, " 17 ", 15}, {7, " 8001 ", 1}, {8, " 3 . 14 ", 62}});
}

TEST(AddressText, NumbersUpTo31BitsAreTaken)
{
    ExpectElements({{9, "2147483647", INT_MAX}, {9, "-2147483648", INT_MIN}, {0, "17777777777", INT_MAX}});
}

TEST(AddressText, NumbersBeyondThatAreRefused)
{
    ExpectElements({{9, "2147483648", -1},
                    {9, "-2147483649", -1},
                    {9, "4294967296", -1},
                    {9, "4294967301", -1},
                    {9, "99999999999999999999999999", -1},
                    {0, "20000000000", -1},
                    {7, "2147483648", -1},
                    {14, "4294967496", -1},
                    {8, "2147483648.0", -1},
                    {8, "0.2147483648", -1}});
}

TEST(AddressText, Area8IsRefusedWhereWordTimes16PlusBitLeaves32Bits)
{
    ExpectElements({{8, "134217727.15", INT_MAX},
                    {8, "134217727.16", -1},
                    {8, "134217728.0", -1},
                    {8, "268435456.5", -1},
                    {8, "2147483647.15", -1},
                    {8, "1.2147483647", -1},
                    {8, "2147483647.2147483647", -1},
                    {8, "-134217728.0", INT_MIN},
                    {8, "-134217728.-1", -1},
                    {8, "-134217729.0", -1},
                    {8, "-2147483648.-2147483648", -1}});
}

TEST(AddressText, CodesThatAreNoAreaGive0ForAnyText)
{
    for (int area : {15, 16, 255, INT_MAX, -1, -8, INT_MIN})
        ExpectElements({{area, "5", 0}, {area, "", 0}, {area, "x", 0}, {area, "-5", 0}, {area, "3.1", 0}});
}
