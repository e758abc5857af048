// SPDX-License-Identifier: MIT
// The demo must notice what is wrong: a demo that cannot fail shows nothing.

#include "panel/demo/demo_stage.h"

#include "panel/demo/demo_steps.h"
#include "support/built_files.h"

#include <gmock/gmock.h>

namespace
{

using namespace plc;
using testing::HasSubstr;

Variable variable(const char* text)
{
    QString error;
    Variable variable = parseVariable(QLatin1String(text), &error).value_or(Variable());
    variable.station = 1;
    return variable;
}

class DemoStageTest : public testing::Test
{
protected:
    DemoStageTest()
    {
        controller.start();
        settings.driverPath = QString::fromUtf8(builtDriver());
        settings.port = controller.port();
        settings.timeoutMs = 50;
        settings.retryLimit = 0;
    }

    /// What the steps print.
    template <class Steps>
    std::string printed(const Steps& steps)
    {
        testing::internal::CaptureStdout();
        {
            DemoStage stage(settings, {}, Listeners(), &controller, &report);
            steps(stage);
        }
        return testing::internal::GetCapturedStdout();
    }

    DemoController controller;
    Settings settings;
    DemoReport report{false};
};

TEST_F(DemoStageTest, AWriteThatReachesTheControllerIsRight)
{
    // Not for the values' sake: a busy machine may need more than one try.
    settings.timeoutMs = 5000;
    const std::string text = printed([](DemoStage& stage) { stage.write(variable("9:100x2"), {1, 2}); });
    EXPECT_EQ(report.wrong(), 0) << text;
    EXPECT_THAT(text, HasSubstr("write 9:100x2 = 1 2"));
    EXPECT_THAT(text, HasSubstr("registers 100..101: 1 2"));
}

TEST_F(DemoStageTest, AWriteThatDoesNotReachTheControllerIsWrong)
{
    controller.setSilent(1, true);
    const std::string text = printed([](DemoStage& stage) { stage.write(variable("9:100"), {1}); });
    EXPECT_EQ(report.wrong(), 2); // neither confirmed nor there
    EXPECT_THAT(text, HasSubstr("WRONG: the write is not confirmed"));
    EXPECT_THAT(text, HasSubstr("WRONG: controller's memory: value 1 of 1; is \"65534\", must be \"1\""));
}

TEST_F(DemoStageTest, AReadThatBringsNothingIsWrong)
{
    controller.setSilent(1, true);
    printed([](DemoStage& stage) { stage.read(variable("9:100"), {1}); });
    EXPECT_GT(report.wrong(), 0);
}

TEST_F(DemoStageTest, AWriteThatMustFailAndDoesNotIsWrong)
{
    settings.timeoutMs = 5000;
    printed([](DemoStage& stage) { stage.writeFails(variable("9:100"), {1}, FailureKind::NoReply); });
    EXPECT_EQ(report.wrong(), 2);
}

TEST_F(DemoStageTest, AWriteThatFailsForAnotherReasonIsWrong)
{
    const std::string text =
        printed([](DemoStage& stage) { stage.writeFails(variable("0:17"), {1}, FailureKind::NoReply); });
    EXPECT_EQ(report.wrong(), 1);
    EXPECT_THAT(text, HasSubstr("WRONG: the write must fail for another reason"));
}

TEST_F(DemoStageTest, TheSummaryCountsWhatIsWrong)
{
    DemoStep step;
    step.right = 3;
    step.wrong << QStringLiteral("something");
    testing::internal::CaptureStdout();
    report.add(step);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(report.summary(7, 1250),
              QStringLiteral("\nDemo: 1 steps, 7 requests in 1.2 s; 4 things compared, 1 WRONG\n"));
}

} // namespace
