// SPDX-License-Identifier: MIT
#include "panel/watch/seen_values.h"

#include <gmock/gmock.h>

namespace
{

using namespace plc;
using testing::ElementsAre;
using testing::IsEmpty;

ListedVariable listed(ValueType type)
{
    ListedVariable variable;
    variable.type = type;
    return variable;
}

CyclicValue fresh(std::vector<quint32> values, qint64 readAtMs = 1000)
{
    CyclicValue value;
    value.state = ValueState::Fresh;
    value.values = std::move(values);
    value.ageMs = 0;
    value.readAtMs = readAtMs;
    return value;
}

class Seen : public testing::Test
{
protected:
    Seen() { m_listed[1].max = 100; }

    const std::vector<Variable> m_typed = {Variable()};
    std::vector<ListedVariable> m_listed = {listed(ValueType::Int16), listed(ValueType::Int16)};
    const WatchedVariables variables{m_typed, m_listed};
};

TEST_F(Seen, HasTheTimeOfTheLastChange)
{
    SeenValues seen(variables);
    seen.note(0, fresh({1}, 1000));
    EXPECT_EQ(seen.at(0).changedAtMs, -1); // it was read, and nothing is known to have changed
    seen.note(0, fresh({1}, 2000));
    EXPECT_EQ(seen.at(0).changedAtMs, -1);
    seen.note(0, fresh({2}, 3000));
    seen.note(0, fresh({2}, 4000));
    EXPECT_EQ(seen.at(0).changedAtMs, 3000);
    EXPECT_EQ(seen.states()[0].changedAtMs, 3000);
}

TEST_F(Seen, HasMinimumAndMaximumBySign)
{
    SeenValues seen(variables);
    EXPECT_THAT(seen.at(1).range.least, IsEmpty());
    seen.note(1, fresh({5}));
    seen.note(1, fresh({0xFFFE}));
    seen.note(1, fresh({3}));
    EXPECT_THAT(seen.at(1).range.least, ElementsAre(0xFFFE));
    EXPECT_THAT(seen.at(1).range.greatest, ElementsAre(5));
    seen.forgetRanges();
    EXPECT_THAT(seen.at(1).range.least, ElementsAre(3));
    EXPECT_THAT(seen.at(1).range.greatest, ElementsAre(3));
}

TEST_F(Seen, MinimumAndMaximumTakeNothingThatIsInDoubt)
{
    SeenValues seen(variables);
    seen.note(1, fresh({5}));
    CyclicValue doubtful = fresh({9});
    doubtful.state = ValueState::Unconfirmed;
    seen.note(1, doubtful);
    CyclicValue never;
    never.values = {0};
    seen.note(1, never);
    EXPECT_THAT(seen.at(1).range.least, ElementsAre(5));
    EXPECT_THAT(seen.at(1).range.greatest, ElementsAre(5));
}

TEST_F(Seen, CountsWhatIsNotFreshAndWhatLiesOutside)
{
    SeenValues seen(variables);
    EXPECT_EQ(seen.counts().notFresh, 3);
    for (int row = 0; row < 3; ++row)
        seen.note(row, fresh({200}));
    EXPECT_EQ(seen.counts().notFresh, 0);
    EXPECT_EQ(seen.counts().outside, 1);
    CyclicValue stale = fresh({200});
    stale.state = ValueState::Stale;
    seen.note(2, stale);
    EXPECT_EQ(seen.counts().notFresh, 1);
    EXPECT_EQ(seen.counts().outside, 0);
}

/// A range with its room.
struct Range {
    std::vector<quint32> least;
    std::vector<quint32> greatest;

    void widen(const ListedVariable* listed, const std::vector<quint32>& elements)
    {
        const bool isKnown = !least.empty();
        least.resize(elements.size());
        greatest.resize(elements.size());
        if (!plc::widen({least.data(), greatest.data()}, isKnown, listed, elements))
            least.clear();
    }
};

TEST(ValueRange, IsThatOfEachOfSeveralValues)
{
    ListedVariable variable = listed(ValueType::Uint32);
    Range range;
    range.widen(&variable, {1, 0, 0, 5});
    range.widen(&variable, {0, 1, 9, 4});
    EXPECT_THAT(range.least, ElementsAre(1, 0, 9, 4));
    EXPECT_THAT(range.greatest, ElementsAre(0, 1, 0, 5));
}

TEST(ValueRange, OfANegativeScaleIsThatOfWhatIsShown)
{
    ListedVariable variable = listed(ValueType::Int16);
    variable.scale = -1;
    Range range;
    range.widen(&variable, {1});
    range.widen(&variable, {7});
    EXPECT_THAT(range.least, ElementsAre(7));
    EXPECT_THAT(range.greatest, ElementsAre(1));
}

TEST(ValueRange, PassesByWhatIsNoNumber)
{
    const ListedVariable number = listed(ValueType::Float32);
    const std::vector<quint32> nan = {0, 0x7FC0};
    Range range;
    range.widen(&number, nan);
    EXPECT_THAT(range.least, IsEmpty());
    range.widen(&number, {0, 0x3F80});
    range.widen(&number, nan);
    EXPECT_THAT(range.least, ElementsAre(0, 0x3F80));
    EXPECT_THAT(range.greatest, ElementsAre(0, 0x3F80));
    const ListedVariable text = listed(ValueType::Text);
    Range none;
    none.widen(&text, {0x4241});
    EXPECT_THAT(none.least, IsEmpty());
}

TEST(ValueRange, OfElementsWithoutATypeIsWithoutASign)
{
    Range range;
    range.widen(nullptr, {5, 0xFFFF});
    range.widen(nullptr, {6, 1});
    EXPECT_THAT(range.least, ElementsAre(5, 1));
    EXPECT_THAT(range.greatest, ElementsAre(6, 0xFFFF));
}

} // namespace
