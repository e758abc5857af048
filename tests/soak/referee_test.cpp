// SPDX-License-Identifier: MIT
#include "soak/referee.h"

#include <gtest/gtest.h>

namespace
{

using namespace soak;

const int triesOfAll = 4;

SoakVariable word(int element, quint32 tag)
{
    SoakVariable variable;
    variable.where.element = element;
    variable.where.station = 1;
    variable.tag = tag;
    variable.isWritten = true;
    return variable;
}

class RefereeTest : public testing::Test
{
protected:
    /// A write of one register as it reaches the controller, with the answer that it gets.
    void arrive(int address, quint32 value, simulator::Fault fault = simulator::Fault::None)
    {
        simulator::Bytes frame(12);
        frame[6] = 1;
        frame[7] = 6;
        simulator::put16(frame, 8, static_cast<std::size_t>(address));
        simulator::put16(frame, 10, value);
        referee.traced({1, false, simulator::Fault::None, frame});
        referee.traced({1, true, fault, frame});
    }

    quint32 valueOfWrite(std::size_t index, quint32 serial) const
    {
        return valuesOf(variables[index], serial)[0];
    }

    plc::WriteOutcome confirmed() const
    {
        plc::WriteOutcome outcome;
        outcome.confirmed = true;
        outcome.requests = 1;
        outcome.requestsConfirmed = 1;
        return outcome;
    }

    plc::CyclicValue fresh(quint32 value) const
    {
        plc::CyclicValue shown;
        shown.state = plc::ValueState::Fresh;
        shown.values = {value};
        return shown;
    }

    const std::vector<SoakVariable> variables = {word(100, 1), word(200, 2)};
    Complaints complaints;
    Referee referee{variables, triesOfAll, false, complaints};
};

TEST_F(RefereeTest, HasNothingAgainstAWriteThatArrivesAndIsConfirmedAndShown)
{
    const quint32 serial = referee.issue(0);
    arrive(100, valueOfWrite(0, serial));
    referee.ended(0, serial, confirmed());
    referee.shown(0, referee.lastConfirmed(0), fresh(valueOfWrite(0, serial)));
    referee.inController(0, {valueOfWrite(0, serial)});
    EXPECT_EQ(complaints.count(), 0);
}

TEST_F(RefereeTest, ComplainsOfAValueThatFlipsBack)
{
    const quint32 serial = referee.issue(0);
    arrive(100, valueOfWrite(0, serial));
    referee.ended(0, serial, confirmed());
    referee.shown(0, referee.lastConfirmed(0), fresh(valueOfWrite(0, 0)));
    EXPECT_EQ(complaints.count(), 1);
}

TEST_F(RefereeTest, ComplainsOfTheValueOfAnotherVariable)
{
    referee.shown(0, 0, fresh(valueOfWrite(1, 0)));
    referee.read(0, 0, {valueOfWrite(1, 0)});
    referee.inController(0, {valueOfWrite(1, 0)});
    EXPECT_EQ(complaints.count(), 3);
}

TEST_F(RefereeTest, ComplainsOfAWriteToAPlaceThatNobodyWrites)
{
    arrive(300, 1);
    EXPECT_EQ(complaints.count(), 1);
}

TEST_F(RefereeTest, ComplainsOfAConfirmationOfWhatTheControllerRefused)
{
    const quint32 serial = referee.issue(0);
    arrive(100, valueOfWrite(0, serial), simulator::Fault::Exception);
    referee.ended(0, serial, confirmed());
    EXPECT_EQ(complaints.count(), 1);
}

TEST_F(RefereeTest, ComplainsOfAnEndThatContradictsItself)
{
    const quint32 serial = referee.issue(0);
    plc::WriteOutcome outcome = confirmed();
    outcome.confirmed = false;
    referee.ended(0, serial, outcome);
    EXPECT_EQ(complaints.count(), 1);
}

} // namespace
