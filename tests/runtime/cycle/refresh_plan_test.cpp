// SPDX-License-Identifier: MIT
#include "runtime/cycle/refresh_plan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace plc
{

namespace
{

Variable variable(int area, int element, int count, int station = 1)
{
    Variable variable;
    variable.area = area;
    variable.element = element;
    variable.count = count;
    variable.station = station;
    return variable;
}

/// "station/area:element+count" of each.
std::vector<std::string> texts(const std::vector<Variable>& runs)
{
    std::vector<std::string> texts;
    for (const Variable& run : runs)
        texts.push_back(std::to_string(run.station) + "/" + std::to_string(run.area) + ":" +
                        std::to_string(run.element) + "+" + std::to_string(run.count));
    return texts;
}

/// \return what of \a variable its parts in \a plan show
std::vector<std::string> shownTexts(const RefreshPlan& plan, std::size_t index, const Variable& variable)
{
    std::vector<Variable> shown;
    for (const PlannedPart* part = plan.parts.begin(index); part != plan.parts.end(index); ++part)
        shown.push_back(pieceOf(variable, askedBy(*part, variable)).shown);
    return texts(shown);
}

} // namespace

using testing::ElementsAre;

namespace
{

Variable values(int elementsEach, int area, int element, int count)
{
    Variable run = variable(area, element, count);
    run.valueElements = elementsEach;
    return run;
}

} // namespace

TEST(RefreshPlan, CutsNoValueApart)
{
    EXPECT_THAT(texts(refreshPlan({values(2, 9, 0, 160)}, 125).runs), ElementsAre("1/9:0+124", "1/9:124+36"));
    EXPECT_THAT(texts(refreshPlan({variable(9, 0, 160, 1)}, 125).runs),
                ElementsAre("1/9:0+125", "1/9:125+35"));
}

TEST(RefreshPlan, EndsNoRunInsideAValueOfAnotherVariable)
{
    const RefreshPlan plan = refreshPlan({variable(9, 0, 10), values(2, 9, 9, 4)}, 10);
    EXPECT_THAT(texts(plan.runs), ElementsAre("1/9:0+9", "1/9:9+4"));
    EXPECT_THAT(shownTexts(plan, 0, variable(9, 0, 10)), ElementsAre("1/9:0+9", "1/9:9+1"));
    EXPECT_THAT(shownTexts(plan, 1, values(2, 9, 9, 4)), ElementsAre("1/9:9+4"));
}

TEST(RefreshPlan, KeepsValuesWholeThatBitsOfTheirWordsOverlap)
{
    const RefreshPlan plan = refreshPlan({variable(8, 0, 32), values(2, 9, 1, 2)}, 2);
    EXPECT_THAT(texts(plan.runs), ElementsAre("1/9:0+1", "1/9:1+2"));
    EXPECT_THAT(shownTexts(plan, 0, variable(8, 0, 32)), ElementsAre("1/8:0+16", "1/8:16+16"));
}

TEST(RefreshPlan, ReadsValuesByThemselvesThatOverlapEachOtherAllAlong)
{
    const RefreshPlan plan = refreshPlan({values(2, 9, 0, 8), values(2, 9, 1, 8)}, 4);
    EXPECT_THAT(texts(plan.runs), ElementsAre("1/9:0+4", "1/9:4+4", "1/9:1+4", "1/9:5+4"));
}

TEST(RemoteRefreshPlan, QueuesEachDoubleWordByItself)
{
    const RefreshPlan plan =
        remoteRefreshPlan({variable(9, 10, 2), variable(14, 5, 3), variable(2, 7, 4)}, 63);
    EXPECT_THAT(texts(plan.runs), ElementsAre("1/2:7+4", "1/9:10+2"));
    EXPECT_THAT(texts(plan.doubleWords), ElementsAre("1/14:5+1", "1/14:6+1", "1/14:7+1"));
    EXPECT_THAT(shownTexts(plan, 1, variable(14, 5, 3)), ElementsAre("1/14:5+1", "1/14:6+1", "1/14:7+1"));
    EXPECT_THAT(shownTexts(plan, 0, variable(9, 10, 2)), ElementsAre("1/9:10+2"));
}

TEST(RemoteRefreshPlan, QueuesADoubleWordOfSeveralVariablesOnce)
{
    const RefreshPlan plan =
        remoteRefreshPlan({variable(14, 5, 2), variable(14, 6, 2), variable(14, 6, 1, 2)}, 63);
    EXPECT_THAT(texts(plan.doubleWords), ElementsAre("1/14:5+1", "1/14:6+1", "1/14:7+1", "2/14:6+1"));
    EXPECT_THAT(shownTexts(plan, 1, variable(14, 6, 2)), ElementsAre("1/14:6+1", "1/14:7+1"));
}

TEST(RefreshPlan, HandsOverWordsAsTheyAre)
{
    const RefreshPlan plan = refreshPlan({variable(9, 10, 2), variable(9, 0, 1), variable(14, 5, 3)}, 63);
    EXPECT_THAT(texts(plan.runs), ElementsAre("1/9:10+2", "1/9:0+1", "1/14:5+3"));
    EXPECT_THAT(shownTexts(plan, 0, variable(9, 10, 2)), ElementsAre("1/9:10+2"));
}

TEST(RefreshPlan, AsksOnceForWhatSeveralVariablesShow)
{
    const Variable two = variable(9, 10, 2);
    const RefreshPlan plan =
        refreshPlan({two, variable(8, 165, 1), two, variable(8, 170, 1), variable(9, 10, 1)}, 63);
    EXPECT_THAT(texts(plan.runs), ElementsAre("1/9:10+2", "1/9:10+1"));
    EXPECT_THAT(shownTexts(plan, 2, two), ElementsAre("1/9:10+2"));
    EXPECT_THAT(shownTexts(plan, 3, variable(8, 170, 1)), ElementsAre("1/8:170+1"));
}

TEST(RefreshPlan, CutsWhatDoesNotFitIntoABlock)
{
    const RefreshPlan plan = refreshPlan({variable(9, 0, 25)}, 10);
    EXPECT_THAT(texts(plan.runs), ElementsAre("1/9:0+10", "1/9:10+10", "1/9:20+5"));
    EXPECT_EQ(plan.parts.end(0) - plan.parts.begin(0), 3);
}

TEST(RefreshPlan, LeavesRoomForTheCountOfDoubleWords)
{
    // A block of 10 reads 9 double words.
    EXPECT_THAT(texts(refreshPlan({variable(14, 0, 12)}, 10).runs), ElementsAre("1/14:0+9", "1/14:9+3"));
}

TEST(RefreshPlan, RefreshesBitsInWordsAsWords)
{
    const RefreshPlan plan = refreshPlan({variable(8, 30, 5)}, 63);
    EXPECT_THAT(texts(plan.runs), ElementsAre("1/9:1+2"));
    EXPECT_THAT(shownTexts(plan, 0, variable(8, 30, 5)), ElementsAre("1/8:30+5"));
}

TEST(RefreshPlan, JoinsBitsThatPaddingOfABlockCouldReach)
{
    const RefreshPlan plan =
        refreshPlan({variable(2, 10, 3), variable(2, 5, 5), variable(2, 14, 1), variable(2, 17, 1)}, 63);
    EXPECT_THAT(texts(plan.runs), ElementsAre("1/2:5+10", "1/2:17+1"));
    EXPECT_THAT(shownTexts(plan, 0, variable(2, 10, 3)), ElementsAre("1/2:10+3"));
    EXPECT_THAT(shownTexts(plan, 3, variable(2, 17, 1)), ElementsAre("1/2:17+1"));
}

TEST(RefreshPlan, CutsLongRunsOfBitsAtWholeBytes)
{
    const RefreshPlan plan = refreshPlan({variable(2, 3, 20), variable(2, 18, 30)}, 4);
    EXPECT_THAT(texts(plan.runs), ElementsAre("1/2:3+32", "1/2:35+13"));
    EXPECT_THAT(shownTexts(plan, 0, variable(2, 3, 20)), ElementsAre("1/2:3+20"));
    EXPECT_THAT(shownTexts(plan, 1, variable(2, 18, 30)), ElementsAre("1/2:18+17", "1/2:35+13"));
}

TEST(RefreshPlan, CutsLongRunsOfArea7WhereEveryBlockEndsAtAWholeByte)
{
    const RefreshPlan plan = refreshPlan({variable(7, 8000, 10), variable(7, 8020, 100)}, 63);
    EXPECT_THAT(texts(plan.runs), ElementsAre("1/7:8000+10", "1/7:8016+56", "1/7:8072+48"));
    EXPECT_THAT(shownTexts(plan, 1, variable(7, 8020, 100)), ElementsAre("1/7:8020+52", "1/7:8072+48"));
}

TEST(RefreshPlan, CutsLongRunsOfArea7IntoPartsOfAByteWhereABlockHasFewerWords)
{
    EXPECT_THAT(texts(refreshPlan({variable(7, 3, 10)}, 7).runs),
                ElementsAre("1/7:0+4", "1/7:4+4", "1/7:8+4", "1/7:12+1"));
    EXPECT_THAT(texts(refreshPlan({variable(7, 8, 3)}, 1).runs),
                ElementsAre("1/7:8+1", "1/7:9+1", "1/7:10+1"));
}

TEST(RefreshPlan, LeavesShortRunsOfArea7AsTheyAre)
{
    EXPECT_THAT(texts(refreshPlan({variable(7, 3, 10), variable(7, 21, 56)}, 63).runs),
                ElementsAre("1/7:3+10", "1/7:21+56"));
}

TEST(RefreshPlan, KeepsStationsAndAreasApart)
{
    const RefreshPlan plan =
        refreshPlan({variable(2, 0, 8, 1), variable(2, 8, 8, 2), variable(3, 8, 8, 1)}, 63);
    EXPECT_THAT(texts(plan.runs), ElementsAre("1/2:0+8", "1/3:8+8", "2/2:8+8"));
}

TEST(BlockCount, IsTheMostThatModbusAllowsForTheAreas)
{
    EXPECT_EQ(blockCountFor({}), 125);
    EXPECT_EQ(blockCountFor({variable(9, 0, 1), variable(2, 0, 1)}), 125);
    EXPECT_EQ(blockCountFor({variable(9, 0, 1), variable(14, 0, 1)}), 63); // 62 double words, 124 registers
}

TEST(BlockCount, ThatBreaksALimitIsRefusedWithTheLargestThatDoesNot)
{
    EXPECT_EQ(blockRefusal({variable(14, 0, 1)}, 63), QString());
    EXPECT_TRUE(blockRefusal({variable(14, 0, 1)}, 64).endsWith(QStringLiteral("at most 63 fit")));
    EXPECT_TRUE(blockRefusal({variable(9, 0, 1)}, 126).endsWith(QStringLiteral("at most 125 fit")));
}

} // namespace plc
