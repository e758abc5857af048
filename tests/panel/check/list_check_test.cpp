// SPDX-License-Identifier: MIT
// Which variables are found at fault, by a controller of which only some addresses exist.

#include "panel/check/list_check.h"

#include "panel/commands/check_command.h"

#include <gmock/gmock.h>

namespace
{

using namespace plc;
using testing::ElementsAre;
using testing::SizeIs;

Variable words(int element, int count, int station = 1)
{
    Variable variable;
    variable.element = element;
    variable.count = count;
    variable.station = station;
    return variable;
}

/// Refuses what touches one of its holes, and more than it gives at once.
class PickyController
{
public:
    explicit PickyController(std::vector<int> holes, int most = 1000)
        : m_holes(std::move(holes)), m_most(most)
    {
    }

    ReadAnswer operator()(const Variable& elements)
    {
        ++reads;
        for (const int hole : m_holes) {
            if (hole >= elements.element && hole < endOf(elements))
                return {ReadAnswer::Refused, QStringLiteral("exception 2")};
        }
        return elements.count > m_most ? ReadAnswer{ReadAnswer::Refused, QStringLiteral("exception 3")}
                                       : ReadAnswer();
    }

    int reads = 0;

private:
    std::vector<int> m_holes;
    int m_most;
};

/// \return the findings for a block that spans \a variables
std::vector<Finding> findings(const ListCheck::Read& read, const std::vector<Variable>& variables)
{
    std::vector<CheckedPart> parts;
    Variable block = variables.front();
    for (const Variable& variable : variables) {
        parts.push_back({parts.size(), variable});
        block.count = std::max(endOf(block), endOf(variable)) - block.element;
    }
    ListCheck check(read);
    check.check(block, parts);
    return check.findings();
}

TEST(ListCheck, ReadsABlockThatIsGivenOnceOnly)
{
    PickyController controller({});
    EXPECT_THAT(findings(std::ref(controller), {words(10, 1), words(20, 1), words(30, 1)}), SizeIs(0));
    EXPECT_EQ(controller.reads, 1);
}

TEST(ListCheck, FindsTheOneVariableAtFaultAmongMany)
{
    std::vector<Variable> variables;
    for (int element = 100; element < 164; ++element)
        variables.push_back(words(element, 1));
    PickyController controller({137});
    const std::vector<Finding> found = findings(std::ref(controller), variables);
    ASSERT_THAT(found, SizeIs(1));
    EXPECT_EQ(found[0].kind, Finding::VariableRefused);
    EXPECT_THAT(found[0].variables, ElementsAre(37u));
    EXPECT_EQ(found[0].words, QStringLiteral("exception 2"));
    EXPECT_EQ(controller.reads, 1 + 2 * 6); // the block, and two halves on each of six levels
}

TEST(ListCheck, FindsEveryVariableAtFault)
{
    const std::vector<Finding> found =
        findings(PickyController({11, 13}), {words(10, 1), words(11, 1), words(12, 1), words(13, 1)});
    ASSERT_THAT(found, SizeIs(2));
    EXPECT_THAT(found[0].variables, ElementsAre(1u));
    EXPECT_THAT(found[1].variables, ElementsAre(3u));
}

TEST(ListCheck, BlamesEachOfTheVariablesThatShareARefusedElement)
{
    const std::vector<Finding> found =
        findings(PickyController({12}), {words(10, 1), words(11, 3), words(12, 1)});
    ASSERT_THAT(found, SizeIs(2));
    EXPECT_THAT(found[0].variables, ElementsAre(1u));
    EXPECT_THAT(found[1].variables, ElementsAre(2u));
}

TEST(ListCheck, TellsFromWhichElementOnALongVariableIsRefused)
{
    const std::vector<Finding> found = findings(PickyController({110, 111}), {words(100, 20)});
    ASSERT_THAT(found, SizeIs(1));
    EXPECT_EQ(found[0].culprit.element, 110);
    EXPECT_EQ(found[0].elements.element, 100);
}

TEST(ListCheck, BlamesAGapOnNoVariable)
{
    const std::vector<Finding> found =
        findings(PickyController({15}), {words(10, 2), words(20, 1), words(21, 1)});
    ASSERT_THAT(found, SizeIs(1));
    EXPECT_EQ(found[0].kind, Finding::GapRefused);
    EXPECT_EQ(found[0].culprit.element, 12);
    EXPECT_EQ(found[0].culprit.count, 8);
    EXPECT_EQ(found[0].before, 0u);
    EXPECT_EQ(found[0].behind, 1u);
}

TEST(ListCheck, FindsALengthThatTheControllerDoesNotGive)
{
    const std::vector<Finding> found = findings(PickyController({}, 50), {words(0, 40), words(40, 30)});
    ASSERT_THAT(found, SizeIs(1));
    EXPECT_EQ(found[0].kind, Finding::TooLong);
    EXPECT_EQ(found[0].given, 40);
}

TEST(ListCheck, BlamesATimeOutOnNoVariable)
{
    int reads = 0;
    const auto silent = [&reads](const Variable&) {
        ++reads;
        return ReadAnswer{ReadAnswer::Unanswered, QStringLiteral("no reply")};
    };
    const std::vector<Finding> found = findings(silent, {words(10, 1), words(11, 1)});
    ASSERT_THAT(found, SizeIs(1));
    EXPECT_EQ(found[0].kind, Finding::NotChecked);
    EXPECT_THAT(found[0].variables, ElementsAre(0u, 1u));
    EXPECT_EQ(reads, 1);
}

TEST(ListCheck, BlamesATimeOutWhileItHalvesOnNoVariable)
{
    const auto dying = [](const Variable& elements) {
        return elements.count > 1 ? ReadAnswer{ReadAnswer::Refused, QStringLiteral("exception 2")}
                                  : ReadAnswer{ReadAnswer::Unanswered, QStringLiteral("no reply")};
    };
    const std::vector<Finding> found = findings(dying, {words(10, 1), words(11, 1)});
    ASSERT_THAT(found, SizeIs(2));
    EXPECT_EQ(found[0].kind, Finding::NotChecked);
    EXPECT_EQ(found[1].kind, Finding::NotChecked);
}

TEST(ListCheck, AsksASilentStationNoFurtherButTheOthers)
{
    std::vector<int> asked;
    ListCheck check([&asked](const Variable& elements) {
        asked.push_back(elements.station);
        return elements.station == 7 ? ReadAnswer{ReadAnswer::Unanswered, QStringLiteral("no reply")}
                                     : ReadAnswer();
    });
    for (int block = 0; block < 4; ++block) {
        check.check(words(100 * block, 1, 7), {{0, words(100 * block, 1, 7)}});
        check.check(words(100 * block, 1, 2), {{1, words(100 * block, 1, 2)}});
    }
    EXPECT_THAT(asked, ElementsAre(7, 2, 7, 2, 2, 2));
    EXPECT_THAT(check.findings(), SizeIs(4));
}

TEST(ListCheck, AsksNothingMoreOnceTheLinkIsDown)
{
    int reads = 0;
    ListCheck check([&reads](const Variable&) {
        ++reads;
        return ReadAnswer{ReadAnswer::NotConnected, QStringLiteral("no connection")};
    });
    check.check(words(0, 1), {{0, words(0, 1)}});
    check.check(words(9, 1, 2), {{1, words(9, 1, 2)}});
    EXPECT_EQ(reads, 1);
    EXPECT_THAT(check.findings(), SizeIs(2));
}

TEST(ListCheck, ABlockRepeatsARefusalWhenItReadsTheGapWithBothItsEnds)
{
    const Finding gap = findings(PickyController({15}), {words(10, 2), words(20, 1)}).at(0);
    EXPECT_TRUE(repeats(gap, words(11, 10)));
    EXPECT_FALSE(repeats(gap, words(12, 9)));
    EXPECT_FALSE(repeats(gap, words(11, 9)));
    EXPECT_FALSE(repeats(gap, words(11, 10, 2)));
}

TEST(ListCheck, ABlockRepeatsARefusalWhenItIsLongerThanWhatWasGiven)
{
    const Finding length = findings(PickyController({}, 50), {words(0, 40), words(40, 30)}).at(0);
    EXPECT_TRUE(repeats(length, words(500, 41)));
    EXPECT_FALSE(repeats(length, words(500, 40)));
}

} // namespace
