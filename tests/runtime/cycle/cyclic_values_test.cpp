// SPDX-License-Identifier: MIT
#include "runtime/cycle/cyclic_values.h"

#include "runtime/host/request_keys.h"

#include <gtest/gtest.h>

#include <chrono>

namespace
{

using namespace plc;
using std::chrono::seconds;

const int wordArea = 9;
const Failure why(FailureKind::NoReply);

Variable words(int element, int count)
{
    Variable variable;
    variable.area = wordArea;
    variable.element = element;
    variable.count = count;
    variable.station = 1;
    return variable;
}

/// As the driver builds a block.
RW_VAR block(int element, int count)
{
    RW_VAR request = {};
    request.hostKey = cyclicKey;
    request.area = wordArea;
    request.address = element;
    request.count = count;
    request.station = 1;
    return request;
}

unsigned int zeros(int, int, QString*, int, QByteArray* bytes, int count)
{
    *bytes = QByteArray(2 * count, '\0');
    return 1;
}

class CyclicValuesTest : public testing::Test
{
protected:
    CyclicValuesTest() : values(settings()) { calls.GetRegisterData = zeros; }

    static Settings settings()
    {
        Settings settings;
        settings.staleAfterMs = 60000;
        return settings;
    }

    ValueState state(int index) const { return values.value(index, calls).state; }
    qint64 age(int index) const { return values.value(index, calls).ageMs; }
    qint64 readAt(int index) const { return values.value(index, calls).readAtMs; }

    CyclicValues values;
    DriverCalls calls;
    const Clock::time_point now = Clock::now();
};

TEST_F(CyclicValuesTest, OfABlockAreAsOldAsItsLastReply)
{
    values.add(words(0, 1));
    values.add(words(5, 2));
    values.expect();
    EXPECT_EQ(ValueState::NeverRead, state(0));

    values.answered(block(0, 7), now - seconds(30));
    EXPECT_GE(age(0), 30000);
    values.answered(block(0, 7), now - seconds(10)); // nothing has gone wrong since
    EXPECT_LT(age(0), 30000);
    EXPECT_LT(age(1), 30000);
    EXPECT_GE(age(1), 10000);
}

TEST_F(CyclicValuesTest, OfSeveralBlocksAreAsOldAsTheOldestReply)
{
    values.add(words(0, 100)); // a block of 63 and one of 37
    values.expect();
    values.answered(block(0, 63), now - seconds(30));
    EXPECT_EQ(ValueState::NeverRead, state(0));
    values.answered(block(63, 37), now - seconds(10));
    EXPECT_GE(age(0), 30000);
    EXPECT_LT(age(0), 40000);
    values.answered(block(0, 63), now - seconds(1));
    EXPECT_GE(age(0), 10000);
    EXPECT_LT(age(0), 20000);
}

TEST_F(CyclicValuesTest, HaveNeitherAgeNorTimeBeforeTheFirstAnswer)
{
    values.add(words(0, 1));
    values.expect();
    EXPECT_EQ(age(0), -1);
    EXPECT_EQ(readAt(0), -1);
    values.answered(block(0, 1), now);
    EXPECT_GE(age(0), 0);
    EXPECT_GT(readAt(0), 0);
}

TEST_F(CyclicValuesTest, BecomeStaleWhenABlockIsNotAnsweredAnyMore)
{
    values.add(words(0, 1));
    values.expect();
    values.answered(block(0, 1), now - seconds(200));
    values.answered(block(0, 1), now - seconds(100));
    EXPECT_EQ(ValueState::Stale, state(0));
}

TEST_F(CyclicValuesTest, AreFreshAgainWithTheFirstReplyAfterAFailure)
{
    values.add(words(0, 1));
    values.expect();
    for (int n = 0; n < 3; ++n)
        values.answered(block(0, 1), now);
    values.givenUp(block(0, 1), why);
    EXPECT_EQ(ValueState::Failed, state(0));

    values.answered(block(0, 1), now);
    EXPECT_EQ(ValueState::Fresh, state(0));
}

TEST_F(CyclicValuesTest, OfALostStationAreFreshAgainBlockByBlock)
{
    values.add(words(0, 1));
    values.add(words(200, 1));
    values.expect();
    for (const int element : {0, 200, 0, 200})
        values.answered(block(element, 1), now);
    values.lost(1, why);

    values.answered(block(0, 1), now);
    EXPECT_EQ(ValueState::Fresh, state(0));
    EXPECT_EQ(ValueState::Failed, state(1));
    values.answered(block(200, 1), now);
    EXPECT_EQ(ValueState::Fresh, state(1));
}

TEST_F(CyclicValuesTest, AreNoLongerDoubtfulOnceTheyAreReadAgain)
{
    values.add(words(0, 1));
    values.add(words(5, 1));
    values.expect();
    for (int n = 0; n < 3; ++n)
        values.answered(block(0, 6), now);
    values.doubt(words(5, 1));
    EXPECT_EQ(ValueState::Fresh, state(0));
    EXPECT_EQ(ValueState::Unconfirmed, state(1));

    values.answered(block(0, 6), now);
    EXPECT_EQ(ValueState::Fresh, state(1));
}

TEST_F(CyclicValuesTest, ThatTwoBlocksReadAreAsFreshAsTheLaterReply)
{
    values.add(words(0, 1));
    values.add(words(1, 1));
    values.add(words(2, 1));
    values.expect();
    for (int n = 0; n < 2; ++n) {
        values.answered(block(0, 2), now - seconds(40));
        values.answered(block(1, 2), now - seconds(40));
    }
    values.answered(block(0, 2), now - seconds(10));
    EXPECT_LT(age(1), 40000);
    values.answered(block(1, 2), now - seconds(1));
    EXPECT_LT(age(1), 10000);
    EXPECT_GE(age(0), 10000);
}

TEST_F(CyclicValuesTest, AreKnownByTheirBlockInWhateverOrderItIsAnswered)
{
    values.add(words(0, 1));
    values.add(words(200, 1));
    values.add(words(400, 1));
    values.expect();
    for (const int element : {0, 200, 400, 0, 400, 200, 0, 200})
        values.answered(block(element, 1), now - seconds(30));
    values.answered(block(400, 1), now - seconds(1));
    EXPECT_GE(age(0), 30000);
    EXPECT_GE(age(1), 30000);
    EXPECT_LT(age(2), 30000);
}

TEST_F(CyclicValuesTest, ThatAreWatchedAreTouchedByEachReply)
{
    values.add(words(0, 1));
    values.expect();
    values.watch();
    for (int n = 0; n < 3; ++n) {
        values.answered(block(0, 1), now);
        TakenValues taken;
        values.takeTouched(10, calls, &taken);
        EXPECT_EQ(std::vector<int>{0}, taken.indexes);
        EXPECT_EQ(taken.values.at(0).state, ValueState::Fresh);
    }
}

TEST_F(CyclicValuesTest, ThatAreWatchedAreTouchedWithTheirElementsAndTheirStation)
{
    for (const int element : {0, 5, 6})
        values.add(words(element, 1));
    values.expect();
    values.watch();
    TakenValues taken;
    values.touch(words(5, 2));
    values.takeTouched(9, calls, &taken);
    EXPECT_EQ(taken.indexes, (std::vector<int>{1, 2}));
    values.touchStation(2);
    EXPECT_FALSE(values.hasTouched());
    values.touchStation(1);
    values.takeTouched(9, calls, &taken);
    EXPECT_EQ(taken.indexes, (std::vector<int>{0, 1, 2}));
}

Variable bits(int element, int count)
{
    Variable variable = words(element, count);
    variable.area = 2;
    return variable;
}

TEST_F(CyclicValuesTest, AreNotSpoiledByReadsOfBitsBeforeThem)
{
    values.add(bits(5, 1));
    values.add(words(5, 1));
    values.expect();
    EXPECT_EQ(values.wholeBits(words(4, 1)), 1) << "words have no padding";
    EXPECT_EQ(values.wholeBits(bits(0, 1)), 1) << "far away";
    EXPECT_EQ(values.wholeBits(bits(0, 3)), 3);
    EXPECT_EQ(values.wholeBits(bits(0, 4)), 6)
        << "behind it is a bit that is shown, and the one behind is not";
    EXPECT_EQ(values.wholeBits(bits(0, 8)), 8);
}

TEST_F(CyclicValuesTest, AreTakenAFewAtATime)
{
    for (int element = 0; element < 5; ++element)
        values.add(words(element, 1));
    values.expect();
    values.watch();
    values.answered(block(0, 5), now);
    TakenValues taken;
    std::vector<std::vector<int>> indexes;
    while (values.hasTouched()) {
        values.takeTouched(2, calls, &taken);
        indexes.push_back(taken.indexes);
    }
    EXPECT_EQ(indexes, (std::vector<std::vector<int>>{{0, 1}, {2, 3}, {4}}));
    values.takeTouched(2, calls, &taken);
    EXPECT_TRUE(taken.indexes.empty());
}

TEST_F(CyclicValuesTest, OfSeveralPartsAreAsGoodAsTheWorstOfThem)
{
    values.add(words(0, 150)); // 63, 63 and 24 words
    values.add(words(70, 1));
    values.expect();
    values.answered(block(0, 63), now);
    values.answered(block(126, 24), now);
    EXPECT_EQ(state(0), ValueState::NeverRead);
    values.answered(block(63, 63), now - seconds(20));
    EXPECT_EQ(state(0), ValueState::Fresh);
    EXPECT_GE(age(0), 20000);
    values.givenUp(block(126, 24), why);
    EXPECT_EQ(state(0), ValueState::Failed);
    EXPECT_EQ(values.value(0, calls).failure, why);
    EXPECT_EQ(state(1), ValueState::Fresh);
}

/// Each word is 1000 x station + 100 x area + element.
unsigned int ownNumbers(int, int area, QString* address, int station, QByteArray* bytes, int count)
{
    *bytes = QByteArray();
    for (int word = 0; word < count; ++word) {
        const int number = 1000 * station + 100 * area + address->toInt() + word;
        bytes->append(static_cast<char>(number & 0xFF)).append(static_cast<char>(number >> 8));
    }
    return 1;
}

TEST_F(CyclicValuesTest, OfOtherStationsAndAreasAreNoNeighbours)
{
    struct Place {
        int station;
        int area;
        int element;
    };
    const Place places[] = {{1, 9, 5}, {2, 9, 6}, {2, 10, 7}, {2, 10, 8}, {2, 10, 3}, {1, 10, 9}};
    calls.GetRegisterData = ownNumbers;
    for (const Place& place : places) {
        Variable word = words(place.element, 1);
        word.area = place.area;
        word.station = place.station;
        values.add(word);
    }
    values.expect();
    for (const Place& place : places) {
        RW_VAR request = block(place.element, 1);
        request.area = place.area;
        request.station = place.station;
        values.answered(request, now);
    }
    std::vector<CyclicValue> all(6);
    values.values(0, calls, &all);
    for (std::size_t index = 0; index < all.size(); ++index) {
        const Place& place = places[index];
        const int number = 1000 * place.station + 100 * place.area + place.element;
        EXPECT_EQ(all[index].values, std::vector<quint32>{static_cast<quint32>(number)}) << index;
    }
}

TEST_F(CyclicValuesTest, SideBySideAreThoseOfEachByItself)
{
    for (const int element : {7, 3, 100, 4000})
        values.add(words(element, 2));
    values.expect();
    values.answered(block(3, 6), now);
    values.givenUp(block(100, 2), why);
    std::vector<CyclicValue> some(3);
    some[0].failure = why; // of an earlier use
    values.values(1, calls, &some);
    for (int place = 0; place < 3; ++place) {
        const CyclicValue own = values.value(place + 1, calls);
        const CyclicValue& other = some.at(static_cast<std::size_t>(place));
        EXPECT_EQ(other.state, own.state);
        EXPECT_EQ(other.failure, own.failure);
        EXPECT_EQ(other.values, own.values);
        EXPECT_EQ(other.ageMs < 0, own.ageMs < 0);
    }
}

} // namespace
