// SPDX-License-Identifier: MIT
// plcpanel watch --part: a list that several processes share.

#include "panel/plcpanel_run.h"
#include "simulator/simulated_controller.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using test::plcpanel;
using testing::HasSubstr;
using testing::Not;

class WatchPart : public testing::Test
{
protected:
    WatchPart() : m_controller(simulator::Settings()) { m_controller.start(); }

    test::RunResult watch(const char* part)
    {
        const QString controller = QStringLiteral("127.0.0.1:%1").arg(m_controller.port());
        return plcpanel({QStringLiteral("watch"), QStringLiteral("--once"), QStringLiteral("9:100"),
                         QStringLiteral("9:500"), QStringLiteral("--controller"), controller,
                         QStringLiteral("--part"), QLatin1String(part)});
    }

private:
    simulator::SimulatedController m_controller;
};

TEST_F(WatchPart, ShowsTheVariablesOfItsBlockReadsAlone)
{
    const test::RunResult first = watch("1/2");
    EXPECT_EQ(0, first.status) << first.errors;
    EXPECT_THAT(first.out, HasSubstr("9:100"));
    EXPECT_THAT(first.out, Not(HasSubstr("9:500")));
    const test::RunResult second = watch("2/2");
    EXPECT_EQ(0, second.status) << second.errors;
    EXPECT_THAT(second.out, HasSubstr("9:500"));
    EXPECT_THAT(second.out, Not(HasSubstr("9:100")));
}

TEST_F(WatchPart, SaysWhenNothingIsLeftForIt)
{
    const test::RunResult third = watch("3/3");
    EXPECT_NE(0, third.status);
    EXPECT_THAT(third.errors, HasSubstr("this part is empty"));
}

TEST_F(WatchPart, RefusesWhatIsNoPart)
{
    const test::RunResult wrong = watch("3/2");
    EXPECT_EQ(2, wrong.status);
    EXPECT_THAT(wrong.errors, HasSubstr("--part: \"3/2\" is no part of a list"));
}

} // namespace
