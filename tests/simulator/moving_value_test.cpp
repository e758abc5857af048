// SPDX-License-Identifier: MIT
#include "simulator/moving_value.h"

#include <gmock/gmock.h>

#include <map>
#include <vector>

namespace
{

using simulator::MovingValue;
using simulator::MovingValues;
using simulator::valueAt;
using testing::ElementsAre;
using testing::IsEmpty;

using Values = std::vector<std::int64_t>;

MovingValue moving(MovingValue::Motion motion, std::int64_t lowest, std::int64_t highest,
                   std::int64_t periodMs)
{
    return {motion, MovingValue::Word, lowest, highest, periodMs};
}

Values valuesAt(const MovingValue& value, const Values& times, std::uint64_t seed = 1)
{
    Values values;
    for (const std::int64_t ms : times)
        values.push_back(valueAt(value, ms, seed));
    return values;
}

TEST(Ramp, RisesEvenlyAndBeginsAnew)
{
    const MovingValue ramp = moving(MovingValue::Ramp, 0, 9, 1000);
    EXPECT_THAT(valuesAt(ramp, {0, 99, 100, 550, 999, 1000, 1100}), ElementsAre(0, 0, 1, 5, 9, 0, 1));
}

TEST(Ramp, RisesFromBelowZero)
{
    EXPECT_THAT(valuesAt(moving(MovingValue::Ramp, -2, 1, 400), {0, 100, 200, 300, 399}),
                ElementsAre(-2, -1, 0, 1, 1));
}

TEST(Ramp, ReachesBothEndsOfTheWidestLimitsAndNothingBeyond)
{
    const MovingValue ramp = moving(MovingValue::Ramp, -2147483648LL, 4294967295LL, 86400000);
    EXPECT_EQ(valueAt(ramp, 0, 1), -2147483648LL);
    EXPECT_GT(valueAt(ramp, 86399999, 1), 4294967200LL);
    EXPECT_LE(valueAt(ramp, 86399999, 1), 4294967295LL);
}

TEST(Sine, SwingsFromTheMiddleToTheHighestToTheLowest)
{
    const MovingValue sine = moving(MovingValue::Sine, 100, 300, 4000);
    EXPECT_THAT(valuesAt(sine, {0, 1000, 2000, 3000, 4000, 5000}), ElementsAre(200, 300, 200, 100, 200, 300));
    EXPECT_EQ(valueAt(sine, 333, 1), 250); // a twelfth of the period: half way up
}

TEST(Counter, CountsOneEveryPeriodAndBeginsAnewBehindTheHighest)
{
    const MovingValue upAndOver = moving(MovingValue::Counter, 5, 7, 10);
    EXPECT_THAT(valuesAt(upAndOver, {0, 9, 10, 20, 29, 30}), ElementsAre(5, 5, 6, 7, 7, 5));
}

TEST(Counter, OfACoilSwitchesEveryPeriod)
{
    const MovingValue coil{MovingValue::Counter, MovingValue::Bit, 0, 1, 500};
    EXPECT_THAT(valuesAt(coil, {0, 499, 500, 999, 1000}), ElementsAre(0, 0, 1, 1, 0));
}

Values randoms(std::uint64_t seed)
{
    Values values;
    for (std::int64_t period = 0; period < 6000; ++period)
        values.push_back(valueAt(moving(MovingValue::Random, -2, 3, 10), 10 * period, seed));
    return values;
}

TEST(Random, TakesEveryValueAboutAsOften)
{
    std::map<std::int64_t, int> counts;
    for (const std::int64_t value : randoms(1))
        ++counts[value];
    EXPECT_EQ(counts.size(), 6u);
    for (std::int64_t value = -2; value <= 3; ++value)
        EXPECT_NEAR(counts[value], 1000, 150) << value; // five times the usual scatter
}

TEST(Random, StaysForAPeriod)
{
    const MovingValue random = moving(MovingValue::Random, 0, 65535, 10);
    EXPECT_EQ(valueAt(random, 30, 1), valueAt(random, 39, 1));
    EXPECT_NE(valueAt(random, 30, 1), valueAt(random, 40, 1));
}

TEST(Random, IsTheSameForTheSameSeedOnly)
{
    EXPECT_EQ(randoms(7), randoms(7));
    EXPECT_NE(randoms(7), randoms(8));
}

std::vector<int> addressesIn(const MovingValues& values, int first, int count)
{
    std::vector<int> addresses;
    values.visit(first, count, [&](int address, const MovingValue&) { addresses.push_back(address); });
    return addresses;
}

const MovingValue movingWord{MovingValue::Counter, MovingValue::Word, 0, 9, 10};
const MovingValue movingDoubleWord{MovingValue::Counter, MovingValue::DoubleWord, 0, 9, 10};

TEST(MovingValues, VisitsThoseInARange)
{
    MovingValues values;
    for (const int address : {9, 10, 19, 20})
        values.put(address, movingWord);
    EXPECT_THAT(addressesIn(values, 10, 10), ElementsAre(10, 19));
}

TEST(MovingValues, VisitsADoubleWordOfWhichHalfIsInTheRange)
{
    MovingValues values;
    values.put(9, movingDoubleWord);
    values.put(19, movingDoubleWord);
    EXPECT_THAT(addressesIn(values, 10, 10), ElementsAre(9, 19));
    EXPECT_THAT(addressesIn(values, 11, 8), IsEmpty());
}

TEST(MovingValues, ForgetsWhatIsHalfInTheRange)
{
    MovingValues values;
    values.put(9, movingDoubleWord);
    values.put(30, movingWord);
    values.remove(10, 1);
    EXPECT_THAT(addressesIn(values, 0, 65536), ElementsAre(30));
    values.remove(30, 1);
    EXPECT_TRUE(values.isEmpty());
}

TEST(MovingValues, KeepsTheLastOfThoseThatOverlap)
{
    MovingValues values;
    values.put(9, movingDoubleWord);
    values.put(10, movingWord);
    EXPECT_THAT(addressesIn(values, 0, 65536), ElementsAre(10));
    values.put(9, movingDoubleWord);
    EXPECT_THAT(addressesIn(values, 0, 65536), ElementsAre(9));
}

} // namespace
