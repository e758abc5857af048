// SPDX-License-Identifier: MIT
#include "image/area_buffers.h"

#include "driver/driver_fixture.h"

#include <climits>

namespace
{

/// Three bytes that are followed by others in memory, without the terminating zero of an own copy.
QByteArray WithoutTerminator(const QByteArray& bytes, int length)
{
    return QByteArray::fromRawData(bytes.constData(), length);
}

} // namespace

TEST(Image, AreasLieBackToBackWith65535ElementsEach)
{
    EXPECT_EQ(8u * 65535, sizeof(Image::bitArea));
    EXPECT_EQ(5u * 65535 * 2, sizeof(Image::wordArea));
    EXPECT_EQ(65535u * 4, sizeof(Image::dwordArea));
}

TEST(GetBitFromUC, AppendsOneByteForEachCell)
{
    bool cells[5] = {false, true, false, true, true};
    QByteArray out = fromHex("AA");
    GetBitFromUC(out, cells, 1, 3);
    EXPECT_EQ("AA 01 00 01", toHex(out));
}

TEST(GetBitFromUC, DoesNothingForCountsBelow1)
{
    bool cells[1] = {true};
    QByteArray out = fromHex("AA");
    for (int count : {0, -1, INT_MIN})
        GetBitFromUC(out, cells, 0, count);
    EXPECT_EQ("AA", toHex(out));
}

TEST(GetBitFromUS, TakesBitsAcrossWords)
{
    unsigned short words[2] = {0x8000, 0x0001};
    QByteArray out;
    GetBitFromUS(out, words, 14, 4);
    EXPECT_EQ("00 01 01 00", toHex(out));
}

TEST(GetBitFromUS, WritesFromTheFirstByteAndKeepsTheOthers)
{
    unsigned short words[1] = {0x0003};
    QByteArray out = fromHex("AA BB CC");
    GetBitFromUS(out, words, 0, 2);
    EXPECT_EQ("01 01 CC", toHex(out));
}

TEST(GetBitFromUS, DoesNothingForCountsBelow1)
{
    unsigned short words[1] = {0xFFFF};
    QByteArray out = fromHex("AA");
    for (int count : {0, -1, INT_MIN})
        GetBitFromUS(out, words, 0, count);
    EXPECT_EQ("AA", toHex(out));
}

TEST(GetWordFromUS, GivesLowByteFirst)
{
    unsigned short words[3] = {0xFFFF, 0x1234, 0xABCD};
    QByteArray out;
    GetWordFromUS(out, words, 1, 2);
    EXPECT_EQ("34 12 CD AB", toHex(out));
}

TEST(GetWordFromUS, WritesFromTheFirstByteAndKeepsTheOthers)
{
    unsigned short words[1] = {0x1234};
    QByteArray out = fromHex("AA BB CC");
    GetWordFromUS(out, words, 0, 1);
    EXPECT_EQ("34 12 CC", toHex(out));
}

TEST(GetWordFromUS, DoesNothingForCountsBelow1)
{
    unsigned short words[1] = {0xFFFF};
    QByteArray out = fromHex("AA");
    for (int count : {0, -1, INT_MIN})
        GetWordFromUS(out, words, 0, count);
    EXPECT_EQ("AA", toHex(out));
}

TEST(GetDWordFromUS, Count1GivesTheLowHalfOfTheElementAfterTheStart)
{
    unsigned int doubleWords[2] = {0x11111111, 0x12345678};
    QByteArray out;
    GetDWordFromUS(out, doubleWords, 0, 1);
    EXPECT_EQ("78 56", toHex(out));
}

TEST(GetDWordFromUS, Count1KeepsTheOtherBytesOfTheOutput)
{
    unsigned int doubleWords[2] = {0x11111111, 0x12345678};
    QByteArray out = fromHex("AA BB CC");
    GetDWordFromUS(out, doubleWords, 0, 1);
    EXPECT_EQ("78 56 CC", toHex(out));
}

TEST(GetDWordFromUS, OtherCountsAppendOneElementLess)
{
    unsigned int doubleWords[3] = {0x11111111, 0x12345678, 0x9ABCDEF0};
    QByteArray out = fromHex("AA");
    GetDWordFromUS(out, doubleWords, 1, 2);
    EXPECT_EQ("AA 78 56 34 12", toHex(out));
    out.clear();
    GetDWordFromUS(out, doubleWords, 1, 3);
    EXPECT_EQ("78 56 34 12 F0 DE BC 9A", toHex(out));
}

TEST(GetDWordFromUS, CountsBelow1AppendOneElement)
{
    unsigned int doubleWords[2] = {0x12345678, 0x11111111};
    for (int count : {0, -1, INT_MIN}) {
        QByteArray out;
        GetDWordFromUS(out, doubleWords, 0, count);
        EXPECT_EQ("78 56 34 12", toHex(out)) << count;
    }
}

TEST(SetBitToUC, StoresTheLowestBitOfEachByte)
{
    bool cells[5] = {};
    QByteArray data = fromHex("03 02 01 FF");
    SetBitToUC(1, cells, &data, 4);
    const bool expected[5] = {false, true, false, true, true};
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(expected[i], cells[i]) << i;
}

TEST(SetBitToUC, StoresNoMoreThanItsCount)
{
    bool cells[3] = {};
    QByteArray data = fromHex("01 01 01");
    SetBitToUC(0, cells, &data, 2);
    EXPECT_TRUE(cells[1]);
    EXPECT_FALSE(cells[2]);
}

TEST(SetBitToUC, ClearsOneCellPastTheDataAndLeavesTheRest)
{
    for (int count : {4, INT_MAX}) {
        SCOPED_TRACE(count);
        bool cells[4] = {true, true, true, true};
        QByteArray data = fromHex("01 01");
        SetBitToUC(0, cells, &data, count);
        EXPECT_TRUE(cells[1]);
        EXPECT_FALSE(cells[2]);
        EXPECT_TRUE(cells[3]);
    }
}

TEST(SetBitToUC, TheByteBehindTheDataCountsAs0WhateverIsThere)
{
    bool cells[2] = {true, true};
    const QByteArray memory = fromHex("01 01");
    QByteArray data = WithoutTerminator(memory, 1);
    SetBitToUC(0, cells, &data, 2);
    EXPECT_TRUE(cells[0]);
    EXPECT_FALSE(cells[1]);
}

TEST(SetBitToUC, DoesNothingForCountsBelow1)
{
    bool cells[1] = {};
    QByteArray data = fromHex("01");
    for (int count : {0, -1, INT_MIN})
        SetBitToUC(0, cells, &data, count);
    EXPECT_FALSE(cells[0]);
}

TEST(SetBitToUS, Bit37IsBit5OfWord2)
{
    unsigned short words[3] = {};
    QByteArray data = fromHex("01");
    SetBitToUS(37, words, &data, 1);
    EXPECT_EQ(0, words[0]);
    EXPECT_EQ(0, words[1]);
    EXPECT_EQ(0x0020, words[2]);
}

TEST(SetBitToUS, OnlyAByteOf1SetsAndEveryOtherClears)
{
    unsigned short words[1] = {0xFFFE};
    QByteArray data = fromHex("01 02 00 FF 03");
    SetBitToUS(0, words, &data, 5);
    EXPECT_EQ(0xFFE1, words[0]);
}

TEST(SetBitToUS, RunsAcrossWords)
{
    unsigned short words[2] = {};
    QByteArray data = fromHex("01 01 01");
    SetBitToUS(14, words, &data, 3);
    EXPECT_EQ(0xC000, words[0]);
    EXPECT_EQ(0x0001, words[1]);
}

TEST(SetBitToUS, StopsAtTheEndOfTheData)
{
    for (int count : {3, INT_MAX}) {
        SCOPED_TRACE(count);
        unsigned short words[1] = {0x000F};
        QByteArray data = fromHex("00");
        SetBitToUS(0, words, &data, count);
        EXPECT_EQ(0x000E, words[0]);
    }
}

TEST(SetBitToUS, DoesNothingForCountsBelow1)
{
    unsigned short words[1] = {};
    QByteArray data = fromHex("01");
    for (int count : {0, -1, INT_MIN})
        SetBitToUS(0, words, &data, count);
    EXPECT_EQ(0, words[0]);
}

TEST(SetWordToUS, TakesLowByteFirst)
{
    unsigned short words[4] = {};
    QByteArray data = fromHex("34 12 CD AB");
    SetWordToUS(1, words, &data, 2);
    EXPECT_EQ(0, words[0]);
    EXPECT_EQ(0x1234, words[1]);
    EXPECT_EQ(0xABCD, words[2]);
    EXPECT_EQ(0, words[3]);
}

TEST(SetWordToUS, StoresNoMoreThanItsCount)
{
    unsigned short words[2] = {};
    QByteArray data = fromHex("01 00 02 00");
    SetWordToUS(0, words, &data, 1);
    EXPECT_EQ(1, words[0]);
    EXPECT_EQ(0, words[1]);
}

TEST(SetWordToUS, AMissingHighByteCountsAs0)
{
    unsigned short words[3] = {7, 7, 7};
    QByteArray data = fromHex("34 12 56");
    SetWordToUS(0, words, &data, 3);
    EXPECT_EQ(0x1234, words[0]);
    EXPECT_EQ(0x0056, words[1]);
    EXPECT_EQ(7, words[2]);
}

TEST(SetWordToUS, TheWordAtTheEndOfTheDataBecomes0AndTheRestStays)
{
    for (int count : {4, INT_MAX}) {
        SCOPED_TRACE(count);
        unsigned short words[4] = {7, 7, 7, 7};
        QByteArray data = fromHex("01 00 02 00");
        SetWordToUS(0, words, &data, count);
        EXPECT_EQ(1, words[0]);
        EXPECT_EQ(2, words[1]);
        EXPECT_EQ(0, words[2]);
        EXPECT_EQ(7, words[3]);
    }
}

TEST(SetWordToUS, EmptyDataStoresOne0)
{
    unsigned short words[2] = {7, 7};
    QByteArray data;
    SetWordToUS(0, words, &data, 2);
    EXPECT_EQ(0, words[0]);
    EXPECT_EQ(7, words[1]);
}

TEST(SetWordToUS, BytesBehindTheDataCountAs0WhateverIsThere)
{
    const QByteArray memory = fromHex("34 12 56 78 9A BC");
    unsigned short words[2] = {7, 7};
    QByteArray odd = WithoutTerminator(memory, 3);
    SetWordToUS(0, words, &odd, 2);
    EXPECT_EQ(0x0056, words[1]);
    QByteArray even = WithoutTerminator(memory, 2);
    SetWordToUS(0, words, &even, 2);
    EXPECT_EQ(0x0000, words[1]);
}

TEST(SetWordToUS, DoesNothingForCountsBelow1)
{
    unsigned short words[1] = {7};
    QByteArray data = fromHex("01 00");
    for (int count : {0, -1, INT_MIN})
        SetWordToUS(0, words, &data, count);
    EXPECT_EQ(7, words[0]);
}

TEST(SetDWordToUS, TakesLowByteFirst)
{
    unsigned int doubleWords[3] = {};
    QByteArray data = fromHex("78 56 34 12 F0 DE BC 9A");
    SetDWordToUS(1, doubleWords, &data, 2);
    EXPECT_EQ(0u, doubleWords[0]);
    EXPECT_EQ(0x12345678u, doubleWords[1]);
    EXPECT_EQ(0x9ABCDEF0u, doubleWords[2]);
}

TEST(SetDWordToUS, MissingBytesCountAs0)
{
    unsigned int doubleWords[3] = {7, 7, 7};
    QByteArray data = fromHex("01 00 00 00 34 12");
    SetDWordToUS(0, doubleWords, &data, 3);
    EXPECT_EQ(1u, doubleWords[0]);
    EXPECT_EQ(0x1234u, doubleWords[1]);
    EXPECT_EQ(7u, doubleWords[2]);
}

TEST(SetDWordToUS, TheElementAtTheEndOfTheDataBecomes0AndTheRestStays)
{
    for (int count : {3, INT_MAX}) {
        SCOPED_TRACE(count);
        unsigned int doubleWords[3] = {7, 7, 7};
        QByteArray data = fromHex("01 00 00 00");
        SetDWordToUS(0, doubleWords, &data, count);
        EXPECT_EQ(1u, doubleWords[0]);
        EXPECT_EQ(0u, doubleWords[1]);
        EXPECT_EQ(7u, doubleWords[2]);
    }
}

TEST(SetDWordToUS, BytesBehindTheDataCountAs0WhateverIsThere)
{
    const QByteArray memory = fromHex("01 02 03 04 05 06 07 08");
    unsigned int doubleWords[2] = {7, 7};
    QByteArray whole = WithoutTerminator(memory, 4);
    SetDWordToUS(0, doubleWords, &whole, 2);
    EXPECT_EQ(0u, doubleWords[1]);
    QByteArray part = WithoutTerminator(memory, 5);
    SetDWordToUS(0, doubleWords, &part, 2);
    EXPECT_EQ(5u, doubleWords[1]);
}

TEST(SetDWordToUS, DoesNothingForCountsBelow1)
{
    unsigned int doubleWords[1] = {7};
    QByteArray data = fromHex("01 00 00 00");
    for (int count : {0, -1, INT_MIN})
        SetDWordToUS(0, doubleWords, &data, count);
    EXPECT_EQ(7u, doubleWords[0]);
}

TEST(SetWordToUI, ExchangesTheWordsOfEachPair)
{
    unsigned short words[6] = {};
    QByteArray data = fromHex("01 00 02 00 03 00 04 00");
    SetWordToUI(1, words, &data, 4);
    const unsigned short expected[6] = {0, 2, 1, 4, 3, 0};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(expected[i], words[i]) << i;
}

TEST(SetWordToUI, LeavesAnOddWordAtTheEnd)
{
    unsigned short words[3] = {7, 7, 7};
    QByteArray data = fromHex("01 00 02 00 03 00 04 00");
    SetWordToUI(0, words, &data, 3);
    EXPECT_EQ(2, words[0]);
    EXPECT_EQ(1, words[1]);
    EXPECT_EQ(7, words[2]);
}

TEST(SetWordToUI, LeavesAPairThatIsNotWhollyThere)
{
    for (int count : {4, INT_MAX}) {
        SCOPED_TRACE(count);
        unsigned short words[4] = {7, 7, 7, 7};
        QByteArray data = fromHex("01 00 02 00 03 00 04");
        SetWordToUI(0, words, &data, count);
        EXPECT_EQ(2, words[0]);
        EXPECT_EQ(1, words[1]);
        EXPECT_EQ(7, words[2]);
        EXPECT_EQ(7, words[3]);
    }
}

TEST(SetWordToUI, DoesNothingForCountsBelow2)
{
    unsigned short words[2] = {7, 7};
    QByteArray data = fromHex("01 00 02 00");
    for (int count : {1, 0, -1, INT_MIN})
        SetWordToUI(0, words, &data, count);
    EXPECT_EQ(7, words[0]);
    EXPECT_EQ(7, words[1]);
}
