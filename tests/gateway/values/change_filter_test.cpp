// SPDX-License-Identifier: MIT
#include "gateway/values/change_filter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace plc
{

namespace
{

const double nan = std::numeric_limits<double>::quiet_NaN();
const double inf = std::numeric_limits<double>::infinity();

Sample good(const SampleValue& value, qint64 at = 1000)
{
    return {0, at, value, SampleQuality::Good};
}

Sample stale(const SampleValue& value, qint64 at)
{
    return {0, at, value, SampleQuality::Stale};
}

/// A filter of one variable, and what it says of one sample after the other.
class ChangeFilterTest : public testing::Test
{
protected:
    void has(double deadband, qint64 republishMs = 0)
    {
        m_filter = ChangeFilterPointer(new ChangeFilter({deadband}, republishMs));
    }

    bool isNews(Sample sample, qint64 nowMs = 0) { return m_filter->isNews(&sample, nowMs); }

    using ChangeFilterPointer = std::unique_ptr<ChangeFilter>;
    ChangeFilterPointer m_filter{new ChangeFilter({0})};
};

TEST_F(ChangeFilterTest, TheFirstValuePasses)
{
    EXPECT_FALSE(m_filter->wasPublished(0));
    EXPECT_TRUE(isNews(good(5.0)));
    EXPECT_TRUE(m_filter->wasPublished(0));
    EXPECT_EQ(SampleValue(5.0), m_filter->last(0).value);
}

TEST_F(ChangeFilterTest, ThatNothingWasReadYetPassesOnce)
{
    EXPECT_TRUE(isNews({0, -1, {}, SampleQuality::Bad}));
    EXPECT_FALSE(isNews({0, -1, {}, SampleQuality::Bad}));
    EXPECT_TRUE(isNews(good(0.0)));
}

TEST_F(ChangeFilterTest, WithoutADeadBandEveryChangePassesAndNothingElse)
{
    isNews(good(5.0));
    EXPECT_FALSE(isNews(good(5.0, 2000)));
    EXPECT_TRUE(isNews(good(5.0000001)));
}

TEST_F(ChangeFilterTest, OnlyWhatIsFurtherAwayThanTheDeadBandPasses)
{
    has(0.5);
    isNews(good(10.0));
    EXPECT_FALSE(isNews(good(10.5)));
    EXPECT_FALSE(isNews(good(9.5)));
    EXPECT_TRUE(isNews(good(10.75)));
    EXPECT_FALSE(isNews(good(10.25)));
    EXPECT_TRUE(isNews(good(10.0)));
}

TEST_F(ChangeFilterTest, AValueThatCreepsAwayPassesWhenItHasLeftTheOneThatWasPublished)
{
    has(1);
    isNews(good(0.0));
    EXPECT_FALSE(isNews(good(0.6)));
    EXPECT_TRUE(isNews(good(1.2)));
    EXPECT_FALSE(isNews(good(1.8)));
    EXPECT_TRUE(isNews(good(2.4)));
}

TEST_F(ChangeFilterTest, WholeNumbersHaveADeadBandToo)
{
    has(2);
    isNews(good(qint64(-1)));
    EXPECT_FALSE(isNews(good(qint64(1))));
    EXPECT_TRUE(isNews(good(qint64(2))));
}

TEST_F(ChangeFilterTest, LargeWholeNumbersAreComparedExactly)
{
    isNews(good(quint64(9007199254740992)));
    EXPECT_TRUE(isNews(good(quint64(9007199254740993))));
    isNews(good(std::numeric_limits<qint64>::min()));
    EXPECT_TRUE(isNews(good(std::numeric_limits<qint64>::max())));
}

TEST_F(ChangeFilterTest, BitsAndTextsHaveNone)
{
    has(100);
    isNews(good(false));
    EXPECT_TRUE(isNews(good(true)));
    isNews(good(QStringLiteral("a")));
    EXPECT_FALSE(isNews(good(QStringLiteral("a"))));
    EXPECT_TRUE(isNews(good(QStringLiteral("b"))));
}

TEST_F(ChangeFilterTest, AnotherKindOfValueIsAChange)
{
    has(100);
    isNews(good(5.0));
    EXPECT_TRUE(isNews(good(QStringLiteral("not BCD"))));
    EXPECT_TRUE(isNews(good(std::monostate())));
    EXPECT_FALSE(isNews(good(std::monostate())));
}

TEST_F(ChangeFilterTest, WhatIsNoNumberIsNewsOnce)
{
    has(1);
    isNews(good(5.0));
    EXPECT_TRUE(isNews(good(nan)));
    EXPECT_FALSE(isNews(good(nan)));
    EXPECT_TRUE(isNews(good(5.0)));
    EXPECT_TRUE(isNews(good(inf)));
    EXPECT_FALSE(isNews(good(inf)));
    EXPECT_TRUE(isNews(good(-inf)));
}

TEST_F(ChangeFilterTest, AChangeOfQualityAlwaysPasses)
{
    has(1000);
    isNews(good(5.0));
    EXPECT_TRUE(isNews(stale(5.0, 1000)));
    EXPECT_FALSE(isNews(stale(5.0, 1000)));
    EXPECT_TRUE(isNews(good(5.0)));
}

TEST_F(ChangeFilterTest, WhatIsStaleKeepsTheTimeOfTheLastAnswer)
{
    has(10);
    isNews(good(5.0, 1000));
    EXPECT_FALSE(isNews(good(5.1, 3000)));
    Sample sample = stale(5.1, 9000);
    EXPECT_TRUE(m_filter->isNews(&sample, 0));
    EXPECT_EQ(3000, sample.at);
    EXPECT_EQ(3000, m_filter->last(0).at);
}

TEST_F(ChangeFilterTest, WhatIsStaleIsPublishedAgainWithItsOldTime)
{
    has(0, 60000);
    isNews(good(5.0, 1000), 0);
    isNews(stale(5.0, 1000), 10);
    Sample sample = stale(5.0, 70000);
    EXPECT_TRUE(m_filter->isNews(&sample, 60010));
    EXPECT_EQ(1000, sample.at);
}

TEST_F(ChangeFilterTest, WhatDoesNotChangeIsDueWhenTheIntervalIsOver)
{
    has(1, 60000);
    EXPECT_THAT(m_filter->due(99999), testing::IsEmpty()) << "nothing is known of it";
    isNews(good(5.0), 100);
    EXPECT_THAT(m_filter->due(60099), testing::IsEmpty());
    EXPECT_THAT(m_filter->due(60100), testing::ElementsAre(0U));
    EXPECT_TRUE(isNews(good(5.2, 61000), 60100));
    EXPECT_THAT(m_filter->due(60100), testing::IsEmpty());
    EXPECT_FALSE(isNews(good(5.2), 60200));
}

TEST_F(ChangeFilterTest, AChangeBeginsTheIntervalAnew)
{
    has(0, 1000);
    isNews(good(5.0), 0);
    isNews(good(6.0), 900);
    EXPECT_THAT(m_filter->due(1000), testing::IsEmpty());
    EXPECT_THAT(m_filter->due(1900), testing::ElementsAre(0U));
}

TEST_F(ChangeFilterTest, WithoutAnIntervalNothingIsEverDue)
{
    isNews(good(5.0), 0);
    EXPECT_THAT(m_filter->due(std::numeric_limits<qint64>::max()), testing::IsEmpty());
}

} // namespace

} // namespace plc
