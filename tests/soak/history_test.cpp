// SPDX-License-Identifier: MIT
#include "soak/history.h"

#include <gtest/gtest.h>

namespace
{

using namespace soak;

const int tries = 2;

SoakVariable threeWords()
{
    SoakVariable variable;
    variable.where.count = 3;
    variable.where.station = 1;
    variable.tag = 7;
    variable.isWritten = true;
    return variable;
}

class HistoryTest : public testing::Test
{
protected:
    std::vector<quint32> valuesOfWrite(quint32 serial) const { return valuesOf(history.variable(), serial); }

    std::string receive(quint32 serial) { return history.received(valuesOfWrite(serial)).toStdString(); }

    void carryOut(quint32 serial)
    {
        EXPECT_EQ(receive(serial), "");
        history.carriedOut();
    }

    std::string end(quint32 serial, WriteEnd how) { return history.ended(serial, how).toStdString(); }

    void issueAndConfirm()
    {
        const quint32 serial = history.issue();
        carryOut(serial);
        EXPECT_EQ(end(serial, WriteEnd::Confirmed), "");
    }

    History history{threeWords(), tries};
};

TEST_F(HistoryTest, ValuesOfTheStartMayBeShownUntilAWriteIsConfirmed)
{
    EXPECT_TRUE(history.mayHaveHeld(0, valuesOfWrite(0)));
    issueAndConfirm();
    EXPECT_FALSE(history.mayHaveHeld(history.lastConfirmed(), valuesOfWrite(0)));
    EXPECT_TRUE(history.mayHaveHeld(history.lastConfirmed(), valuesOfWrite(1)));
}

TEST_F(HistoryTest, LookThatBeganBeforeTheConfirmationMayStillSeeTheOldValue)
{
    const quint32 before = history.lastConfirmed();
    issueAndConfirm();
    EXPECT_TRUE(history.mayHaveHeld(before, valuesOfWrite(0)));
}

TEST_F(HistoryTest, AFailedWriteMayBeShownOnlyIfItWasCarriedOut)
{
    history.issue();
    EXPECT_EQ(receive(1), "");
    EXPECT_EQ(end(1, WriteEnd::Failed), "");
    EXPECT_FALSE(history.mayHaveHeld(0, valuesOfWrite(1)));
    EXPECT_TRUE(history.mayHold(valuesOfWrite(1)));
    history.carriedOut();
    EXPECT_TRUE(history.mayHaveHeld(0, valuesOfWrite(1)));
}

TEST_F(HistoryTest, ValuesOfAnotherVariableAndTornOnesAreNeverRight)
{
    SoakVariable other = threeWords();
    other.tag = 8;
    issueAndConfirm();
    const std::vector<quint32> torn = {valuesOfWrite(0)[0], valuesOfWrite(1)[1], valuesOfWrite(1)[2]};
    EXPECT_FALSE(history.mayHaveHeld(0, valuesOf(other, 1)));
    EXPECT_FALSE(history.mayHaveHeld(0, torn));
    EXPECT_FALSE(history.wereIssued(torn));
    EXPECT_TRUE(history.wereIssuedOneByOne(torn));
    EXPECT_FALSE(history.wereIssuedOneByOne(valuesOf(other, 1)));
}

TEST_F(HistoryTest, AWriteMayArriveAsOftenAsItHasTries)
{
    history.issue();
    EXPECT_EQ(receive(1), "");
    EXPECT_EQ(receive(1), "");
    EXPECT_EQ(receive(1), "write 1 reached the controller 3 times");
}

TEST_F(HistoryTest, NoWriteArrivesAgainAfterItWasConfirmed)
{
    issueAndConfirm();
    EXPECT_EQ(receive(1), "write 1 reached the controller after write 1 had been confirmed");
}

TEST_F(HistoryTest, TheReplyThatThePanelTookConfirmsBeforeTheWriterKnows)
{
    history.issue();
    carryOut(1);
    history.replied(valuesOfWrite(1));
    EXPECT_EQ(receive(1), "write 1 reached the controller after write 1 had been confirmed");
}

TEST_F(HistoryTest, NoWriteArrivesAfterALaterOne)
{
    history.issue();
    history.issue();
    EXPECT_EQ(receive(2), "");
    EXPECT_EQ(receive(1), "write 1 reached the controller after write 2");
}

TEST_F(HistoryTest, NothingArrivesThatNobodyWrote)
{
    EXPECT_EQ(receive(1), "something that nobody wrote reached the controller");
}

TEST_F(HistoryTest, AWriteThatWasGivenUpUnsentHasNeverArrivedAndNeverDoes)
{
    history.issue();
    EXPECT_EQ(end(1, WriteEnd::Unsent), "");
    EXPECT_EQ(receive(1), "write 1 reached the controller although it was reported as given up unsent");
    history.issue();
    EXPECT_EQ(receive(2), "");
    EXPECT_EQ(end(2, WriteEnd::Unsent), "write 2 was reported as given up unsent, but it was sent");
}

TEST_F(HistoryTest, AConfirmedWriteWasCarriedOut)
{
    history.issue();
    EXPECT_EQ(receive(1), "");
    EXPECT_EQ(end(1, WriteEnd::Confirmed), "write 1 was confirmed, but never carried out");
}

TEST_F(HistoryTest, RemembersEnoughAfterManyWrites)
{
    for (int turn = 0; turn < 5000; ++turn)
        issueAndConfirm();
    EXPECT_TRUE(history.mayHold(valuesOfWrite(5000)));
    EXPECT_FALSE(history.mayHold(valuesOfWrite(4999)));
    EXPECT_TRUE(history.wereIssued(valuesOfWrite(4999)));
}

TEST_F(HistoryTest, WhatItNoLongerRemembersMayHaveArrived)
{
    for (int turn = 0; turn < 1500; ++turn)
        history.issue();
    EXPECT_TRUE(history.mayHold(valuesOfWrite(500)));
    EXPECT_FALSE(history.mayHold(valuesOfWrite(501)));
}

TEST(SoakVariables, NoTwoCarryTheSameValuesAtTheSameTime)
{
    const std::vector<SoakVariable> variables = soakVariables({1, 2, 3});
    for (std::size_t a = 0; a < variables.size(); ++a) {
        for (std::size_t b = 0; b < a; ++b) {
            if (variables[a].where.count > 1 || namesItsWrites(variables[a])) {
                EXPECT_NE(valuesOf(variables[a], 1), valuesOf(variables[b], 1)) << a << ' ' << b;
            }
        }
    }
}

} // namespace
