// SPDX-License-Identifier: MIT
#include "panel/commands/named_variables.h"

#include <gmock/gmock.h>

namespace plc
{

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<ListedVariable> listOf(const std::vector<const char*>& names)
{
    std::vector<ListedVariable> list;
    for (const char* name : names) {
        ListedVariable variable;
        variable.name = QString::fromUtf8(name);
        list.push_back(variable);
    }
    return list;
}

std::vector<std::string> named(const std::vector<const char*>& names, const char* text)
{
    std::vector<std::string> found;
    for (const ListedVariable& variable : variablesNamed(listOf(names), QString::fromUtf8(text)))
        found.push_back(variable.name.text().toStdString());
    return found;
}

} // namespace

TEST(NamedVariables, AreFoundByTheirWholeName)
{
    EXPECT_THAT(named({"drive", "drive speed"}, "drive"), ElementsAre("drive"));
    EXPECT_THAT(named({"drive"}, "Drive"), IsEmpty());
    EXPECT_THAT(named({"drive"}, "driv"), IsEmpty());
}

TEST(NamedVariables, FitAPatternInTheOrderOfTheList)
{
    EXPECT_THAT(named({"drive 2", "lamp", "drive 1", "overdrive 1"}, "drive *"),
                ElementsAre("drive 2", "drive 1"));
    EXPECT_THAT(named({"a1", "a12", "a\xC3\xB6"}, "a?"), ElementsAre("a1", "a\xC3\xB6"));
    EXPECT_THAT(named({"a/b", "a.b"}, "*/*"), ElementsAre("a/b"));
    EXPECT_THAT(named({"a[1]", "a1"}, "a[1]*"), ElementsAre("a[1]"));
}

TEST(NamedVariables, AreMeantThemselvesWhereTheirNameIsAPattern)
{
    EXPECT_THAT(named({"ready?", "ready!"}, "ready?"), ElementsAre("ready?"));
}

TEST(NamedVariables, AreTakenApartFromTheirValueAtTheSignBehindAName)
{
    const auto list = listOf({"a=b", "a = b", "text"});
    const auto odd = namedValue(list, QStringLiteral("a=b=5"));
    ASSERT_TRUE(odd);
    EXPECT_EQ(odd->variable.name, QStringLiteral("a=b"));
    EXPECT_EQ(odd->value, QStringLiteral("5"));
    EXPECT_EQ(namedValue(list, QStringLiteral("text=x=y"))->value, QStringLiteral("x=y"));
    EXPECT_FALSE(namedValue(list, QStringLiteral("other=5")));
    EXPECT_FALSE(namedValue(list, QStringLiteral("text")));
}

TEST(NamedVariables, AreNoAddresses)
{
    EXPECT_TRUE(looksLikeAddress(QStringLiteral("9:100")));
    EXPECT_TRUE(looksLikeAddress(QStringLiteral("99:1")));
    EXPECT_FALSE(looksLikeAddress(QStringLiteral("9: hall")));
    EXPECT_FALSE(looksLikeAddress(QStringLiteral("hall 9:1")));
}

} // namespace plc
