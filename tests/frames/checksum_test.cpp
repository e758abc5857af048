// SPDX-License-Identifier: MIT
#include "driver/plcdriver.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

namespace
{

std::vector<unsigned char> Repeated(std::size_t length, unsigned char byte)
{
    return std::vector<unsigned char>(length, byte);
}

const unsigned char oneAndTwo[] = {0x01, 0x02};

} // namespace

TEST(CalSUM, AddsTheBytes)
{
    EXPECT_EQ(3, CalSUM(oneAndTwo, 2));
}

TEST(CalSUM, ReadsNoMoreThanItsLength)
{
    EXPECT_EQ(1, CalSUM(oneAndTwo, 1));
}

TEST(CalSUM, WrapsAt16Bits)
{
    EXPECT_EQ(10964, CalSUM(Repeated(300, 0xFF).data(), 300)); // 76500 - 65536
}

TEST(CalSUM, TakesTheLongestBuffer)
{
    EXPECT_EQ(0xFF01, CalSUM(Repeated(65535, 0xFF).data(), 65535)); // 65535 x 255 = 0xFEFF01
}

TEST(CalSUM, OfNothingIs0)
{
    EXPECT_EQ(0, CalSUM(oneAndTwo, 0));
    EXPECT_EQ(0, CalSUM(nullptr, 0));
}

TEST(CalCRC, OfAReadRequestIsItsSerialLineCheck)
{
    const unsigned char request[] = {0x01, 0x03, 0x00, 0x00, 0x00, 0x01};
    EXPECT_EQ(0x0A84, CalCRC(request, 6));
}

TEST(CalCRC, OfTheNineDigitsIsThePublishedCheckValue)
{
    const unsigned char digits[] = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};
    EXPECT_EQ(0x4B37, CalCRC(digits, 9));
}

TEST(CalCRC, OverTheMessageAndItsOwnCheckIs0)
{
    const unsigned char checked[] = {0x01, 0x03, 0x00, 0x00, 0x00, 0x01, 0x84, 0x0A};
    EXPECT_EQ(0, CalCRC(checked, 8));
}

TEST(CalCRC, OfNothingIsItsStartValue)
{
    EXPECT_EQ(0xFFFF, CalCRC(oneAndTwo, 0));
    EXPECT_EQ(0xFFFF, CalCRC(nullptr, 0));
}

TEST(CalLRC, IsTheTwosComplementOfTheSum)
{
    EXPECT_EQ(0xFD, CalLRC(oneAndTwo, 2));
}

TEST(CalLRC, UsesTheLowByteOfALongSum)
{
    EXPECT_EQ(0x02, CalLRC(Repeated(2, 0xFF).data(), 2));         // sum 0x1FE
    EXPECT_EQ(0xFF, CalLRC(Repeated(65535, 0xFF).data(), 65535)); // sum 0xFEFF01
}

TEST(CalLRC, Is256WhereTheLowByteOfTheSumIs0)
{
    const unsigned char zero[] = {0x00};
    const unsigned char sumOf256[] = {0x01, 0xFF};
    EXPECT_EQ(256, CalLRC(zero, 1));
    EXPECT_EQ(256, CalLRC(sumOf256, 2));
}

TEST(CalLRC, OfNothingIs256)
{
    EXPECT_EQ(256, CalLRC(oneAndTwo, 0));
    EXPECT_EQ(256, CalLRC(nullptr, 0));
}

TEST(CalXOR, CombinesAllBytes)
{
    const unsigned char bytes[] = {0xF0, 0x0F, 0x01};
    EXPECT_EQ(0xFE, CalXOR(bytes, 3));
}

TEST(CalXOR, OfLength0Or1IsTheFirstByte)
{
    const unsigned char bytes[] = {0xA5, 0xFF};
    EXPECT_EQ(0xA5, CalXOR(bytes, 0));
    EXPECT_EQ(0xA5, CalXOR(bytes, 1));
}

TEST(BlockChecks, ANullBufferGives0)
{
    EXPECT_EQ(0, CalSUM(nullptr, 4));
    EXPECT_EQ(0, CalCRC(nullptr, 4));
    EXPECT_EQ(0, CalLRC(nullptr, 4));
    EXPECT_EQ(0, CalXOR(nullptr, 4));
    EXPECT_EQ(0, CalXOR(nullptr, 0));
}

TEST(DigitalToASCII, GivesCapitalHexadecimalDigits)
{
    const char digits[] = "0123456789ABCDEF";
    for (int value = 0; value < 16; ++value)
        EXPECT_EQ(digits[value], DigitalToASCII(value)) << value;
}

TEST(DigitalToASCII, DoesNotRefuseOtherValues)
{
    EXPECT_EQ(0x2F, DigitalToASCII(-1));
    EXPECT_EQ(0x47, DigitalToASCII(16));
    EXPECT_EQ(INT_MIN + 0x30, DigitalToASCII(INT_MIN));
}

TEST(DigitalToASCII, WrapsForTheLargestValue)
{
    EXPECT_EQ(INT_MIN + 0x36, DigitalToASCII(INT_MAX));
}

TEST(ASCIIToDigital, ReadsCapitalHexadecimalDigits)
{
    const char digits[] = "0123456789ABCDEF";
    for (int value = 0; value < 16; ++value)
        EXPECT_EQ(value, ASCIIToDigital(digits[value])) << value;
}

TEST(ASCIIToDigital, IsZeroBelowTheDigits)
{
    for (int character : {0x2F, 0x20, 0, -1, INT_MIN})
        EXPECT_EQ(0, ASCIIToDigital(character)) << character;
}

TEST(ASCIIToDigital, CountsOnBetweenDigitsAndLetters)
{
    EXPECT_EQ(10, ASCIIToDigital(':'));
    EXPECT_EQ(15, ASCIIToDigital('?'));
    EXPECT_EQ(0, ASCIIToDigital('@'));
}

TEST(ASCIIToDigital, DoesNotFoldLowerCase)
{
    EXPECT_EQ(42, ASCIIToDigital('a'));
    EXPECT_EQ(47, ASCIIToDigital('f'));
    EXPECT_EQ(16, ASCIIToDigital('G'));
}
