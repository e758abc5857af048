// SPDX-License-Identifier: MIT
#include "runtime/cycle/list_part.h"

#include "runtime/cycle/driver_blocks.h"
#include "runtime/modbus/request_pieces.h"
#include "runtime/model/variable_list.h"
#include "support/built_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace plc
{

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

Variable words(int element, int count = 1, int station = -1)
{
    Variable variable;
    variable.element = element;
    variable.count = count;
    variable.station = station;
    return variable;
}

Settings withDriver()
{
    Settings settings;
    settings.driverPath = QString::fromUtf8(builtDriver());
    return settings;
}

std::vector<Variable> thousand()
{
    const QString path = QString::fromUtf8(testsDirectory()) + QStringLiteral("/../examples/thousand.csv");
    std::vector<Variable> variables;
    for (const ListedVariable& listed : readVariableList(path).variables)
        variables.push_back(listed.elements);
    return variables;
}

std::vector<std::string> framesOf(const std::vector<Variable>& variables, const Settings& settings)
{
    std::vector<Variable> resolved;
    for (const Variable& variable : variables)
        resolved.push_back(withStation(variable, settings));
    std::vector<std::string> frames;
    for (const DriverBlock& block : BlockPlanner(settings).blocks(resolved, settings.maxBlockCount))
        frames.push_back(block.frame.toHex().toStdString());
    return frames;
}

/// Each Nth frame of the whole list is what a part alone is refreshed by.
void expectEachNth(const std::vector<Variable>& variables, const Settings& settings, int parts)
{
    const std::vector<std::string> all = framesOf(variables, settings);
    ASSERT_FALSE(all.empty());
    std::set<std::size_t> chosen;
    for (int number = 1; number <= parts; ++number) {
        std::vector<Variable> ofPart;
        for (const std::size_t index : variablesOfPart({number, parts}, variables, settings)) {
            EXPECT_TRUE(chosen.insert(index).second) << "two parts have it: " << index;
            ofPart.push_back(variables[index]);
        }
        std::vector<std::string> expected;
        for (std::size_t place = std::size_t(number - 1); place < all.size(); place += std::size_t(parts))
            expected.push_back(all[place]);
        EXPECT_EQ(expected, framesOf(ofPart, settings)) << number << '/' << parts;
    }
    EXPECT_EQ(variables.size(), chosen.size()) << "nothing is left out";
}

} // namespace

TEST(ListPart, HasEachNthOfTheBlockReads)
{
    const std::vector<Variable> variables{words(0),    words(10),   words(500),
                                          words(1000), words(1001), words(2000)};
    const Settings settings = withDriver();
    EXPECT_THAT(variablesOfPart({1, 2}, variables, settings), ElementsAre(0, 1, 3, 4));
    EXPECT_THAT(variablesOfPart({2, 2}, variables, settings), ElementsAre(2, 5));
    expectEachNth(variables, settings, 2);
}

TEST(ListPart, IsTheWholeListWhereThereIsOnlyOne)
{
    EXPECT_THAT(variablesOfPart({1, 1}, {words(0), words(500)}, withDriver()), ElementsAre(0, 1));
}

TEST(ListPart, OfALongListIsDisjointAndNothingIsLeftOut)
{
    Settings settings = withDriver();
    expectEachNth(thousand(), settings, 4);
    expectEachNth(thousand(), settings, 7);
    // In remote frames double words are read one by one, and a variable of several has several requests.
    settings.remoteMode = true;
    std::vector<Variable> variables = thousand();
    variables.erase(
        std::remove_if(variables.begin(), variables.end(),
                       [](const Variable& variable) { return variable.area == 14 && variable.count > 1; }),
        variables.end());
    expectEachNth(variables, settings, 4);
}

TEST(ListPart, OfSeveralStationsIsDisjointAndNothingIsLeftOut)
{
    Settings settings = withDriver();
    settings.multiStation = true;
    std::vector<Variable> variables;
    for (int station = 1; station <= 5; ++station) {
        for (int element = 0; element < 400; element += 40)
            variables.push_back(words(element, 2, station));
    }
    expectEachNth(variables, settings, 3);
}

TEST(ListPart, MayBeEmptyWhereThereAreFewerBlocks)
{
    const std::vector<Variable> variables{words(0), words(500)};
    EXPECT_THAT(variablesOfPart({2, 5}, variables, withDriver()), ElementsAre(1));
    EXPECT_THAT(variablesOfPart({3, 5}, variables, withDriver()), IsEmpty());
    EXPECT_THAT(variablesOfPart({5, 5}, variables, withDriver()), IsEmpty());
}

TEST(ListPart, HasAVariableOfSeveralBlocksWhole)
{
    const std::vector<Variable> variables{words(0, 200), words(1000)};
    std::size_t found = 0;
    for (int number = 1; number <= 4; ++number)
        found += variablesOfPart({number, 4}, variables, withDriver()).size();
    EXPECT_EQ(2U, found);
}

TEST(BlockPlanner, KnowsOnlyWhatItWasAskedForLast)
{
    const Settings settings = withDriver();
    BlockPlanner planner(settings);
    const Variable asked = withStation(words(5), settings);
    EXPECT_EQ(planner.blocks({asked}, 63).size(), 1U);
    EXPECT_THAT(planner.blocks({}, 63), IsEmpty());
    const std::vector<DriverBlock> blocks = planner.blocks({asked, withStation(words(900, 3), settings)}, 63);
    ASSERT_EQ(blocks.size(), 2U);
    EXPECT_EQ(elementsOf(blocks[1]).area, 9);
    EXPECT_EQ(elementsOf(blocks[1]).element, 900);
    EXPECT_EQ(elementsOf(blocks[1]).count, 3);
    EXPECT_EQ(elementsOf(blocks[1]).station, 1);
    EXPECT_EQ(blocks[1].replyLength, 9 + 6);
}

TEST(ListPart, RefusesWhatCannotBeRefreshed)
{
    EXPECT_THROW(variablesOfPart({1, 2}, {words(70000)}, withDriver()), std::runtime_error);
}

TEST(ListPart, IsWrittenAsOneNumberOfAnother)
{
    QString error;
    const std::optional<ListPart> part = parseListPart(QStringLiteral("3/4"), &error);
    ASSERT_TRUE(part.has_value());
    EXPECT_EQ(3, part->number);
    EXPECT_EQ(4, part->parts);
    for (const char* right : {"1/1", "4/4", "100/100"})
        EXPECT_TRUE(parseListPart(QLatin1String(right), &error)) << right;
    for (const char* wrong :
         {"", "3", "0/4", "5/4", "1/0", "-1/4", "1/4/2", "a/4", "1/b", "1/101", "1.5/4"}) {
        EXPECT_FALSE(parseListPart(QLatin1String(wrong), &error)) << wrong;
        EXPECT_THAT(error.toStdString(), testing::HasSubstr("K/N is expected")) << wrong;
    }
}

} // namespace plc
