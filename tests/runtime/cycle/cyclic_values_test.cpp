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
        EXPECT_EQ(std::vector<int>{0}, values.takeTouched());
    }
}

} // namespace
