// SPDX-License-Identifier: MIT
#include "runtime/model/word_order.h"

#include <gtest/gtest.h>

namespace plc
{

namespace
{

struct WireCase {
    const char* order;
    const char* wire; ///< the bytes as they go over the wire
};

/// The words that go over the wire, with the low byte of each first.
QByteArray words(const char* wire)
{
    QByteArray bytes;
    for (const char* at = wire; *at != '\0'; at += 2)
        bytes.append(at[1]).append(at[0]);
    return bytes;
}

WordOrder order(const char* word)
{
    return parseWordOrder(QLatin1String(word)).value();
}

} // namespace

TEST(WordOrder, IsNamedByItsWordInAnyCaseOrNotAtAll)
{
    EXPECT_EQ(parseWordOrder(QStringLiteral("abcd")), WordOrder::Abcd);
    EXPECT_EQ(parseWordOrder(QString()), WordOrder::Usual);
    EXPECT_FALSE(parseWordOrder(QStringLiteral("ACBD")));
    EXPECT_EQ(wordOrderWord(WordOrder::Badc), QStringLiteral("BADC"));
    EXPECT_EQ(wordOrderWords(), QStringLiteral("ABCD, CDAB, BADC, DCBA"));
}

TEST(WordOrder, SaysWhichByteOfANumberGoesFirstOverTheWire)
{
    for (const WireCase& each : {WireCase{"ABCD", "ABCD"}, WireCase{"CDAB", "CDAB"}, WireCase{"BADC", "BADC"},
                                 WireCase{"DCBA", "DCBA"}, WireCase{"", "CDAB"}}) {
        EXPECT_EQ(numbersInOrder(words(each.wire), order(each.order), 4), "DCBA") << each.order;
        EXPECT_EQ(numbersInOrder("DCBA", order(each.order), 4), words(each.wire)) << each.order;
    }
}

TEST(WordOrder, SaysTheSameOfEightBytes)
{
    for (const WireCase& each :
         {WireCase{"ABCD", "ABCDEFGH"}, WireCase{"CDAB", "GHEFCDAB"}, WireCase{"BADC", "BADCFEHG"},
          WireCase{"DCBA", "HGFEDCBA"}, WireCase{"", "GHEFCDAB"}}) {
        EXPECT_EQ(numbersInOrder(words(each.wire), order(each.order), 8), "HGFEDCBA") << each.order;
    }
}

TEST(WordOrder, SaysWhichCharacterOfATextGoesFirstOverTheWire)
{
    for (const WireCase& each :
         {WireCase{"ABCD", "ABCDEF"}, WireCase{"CDAB", "CDABEF"}, WireCase{"BADC", "BADCFE"},
          WireCase{"DCBA", "DCBAFE"}, WireCase{"", "BADCFE"}}) {
        EXPECT_EQ(textInOrder(words(each.wire), order(each.order)), "ABCDEF") << each.order;
        EXPECT_EQ(textInOrder("ABCDEF", order(each.order)), words(each.wire)) << each.order;
    }
}

} // namespace plc
