// SPDX-License-Identifier: MIT
#include "simulator/memory_text.h"

#include <gmock/gmock.h>

namespace
{

using simulator::formatMemoryText;
using simulator::MemoryText;
using simulator::MemoryValue;
using simulator::MovingValue;
using simulator::parseMemoryText;
using simulator::parseNumber;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

TEST(ParseMemoryText, ReadsCoilsAndRegisters)
{
    const MemoryText text = parseMemoryText("unit 1 coil 0x0010 1\nunit 255 register 8192 1234\n", "f");
    EXPECT_THAT(text.errors, IsEmpty());
    EXPECT_THAT(text.values, ElementsAre(MemoryValue{1, MemoryValue::Coil, 16, 1},
                                         MemoryValue{255, MemoryValue::Register, 8192, 1234}));
}

TEST(ParseMemoryText, SkipsCommentsAndBlankLines)
{
    const MemoryText text =
        parseMemoryText("# start\n\n   \t\nunit 1 coil 1 1 # lamp\n#unit 1 coil 2 1", "f");
    EXPECT_THAT(text.errors, IsEmpty());
    EXPECT_THAT(text.values, ElementsAre(MemoryValue{1, MemoryValue::Coil, 1, 1}));
}

TEST(ParseMemoryText, SkipsAByteOrderMark)
{
    const MemoryText text = parseMemoryText("\xEF\xBB\xBFunit 1 coil 1 1\n\xEF\xBB\xBFunit 1 coil 1 1", "f");
    EXPECT_EQ(text.values.size(), 1u);
    EXPECT_THAT(text.errors, ElementsAre(StartsWith("f:2: '???unit 1 coil 1 1'")));
}

TEST(ParseMemoryText, TellsTwentyWrongLinesAndCountsTheOthers)
{
    std::string lines;
    for (int line = 0; line < 1000; ++line)
        lines += "nonsense\n";
    const MemoryText text = parseMemoryText(lines, "f");
    ASSERT_EQ(text.errors.size(), 21u);
    EXPECT_THAT(text.errors[19], StartsWith("f:20: 'nonsense'"));
    EXPECT_EQ(text.errors[20], "f: and 980 more wrong lines");
}

TEST(ParseMemoryText, TakesLinesOfOtherSystemsAndALastLineWithoutEnd)
{
    const MemoryText text = parseMemoryText("unit 1 coil 1 1\r\n\tunit  2 coil 0X2 0x1", "f");
    EXPECT_THAT(text.errors, IsEmpty());
    EXPECT_EQ(text.values.size(), 2u);
}

TEST(ParseMemoryText, ReadsAMovingRegister)
{
    const MemoryText text = parseMemoryText("unit 2 register 100 ramp -5..1000 period 10000 # tank", "f");
    EXPECT_THAT(text.errors, IsEmpty());
    ASSERT_EQ(text.moving.size(), 1u);
    EXPECT_EQ(text.moving[0].unit, 2);
    EXPECT_EQ(text.moving[0].address, 100);
    const MovingValue& value = text.moving[0].value;
    EXPECT_EQ(value.motion, MovingValue::Ramp);
    EXPECT_EQ(value.width, MovingValue::Word);
    EXPECT_EQ(value.lowest, -5);
    EXPECT_EQ(value.highest, 1000);
    EXPECT_EQ(value.periodMs, 10000);
}

TEST(ParseMemoryText, ReadsAMovingDoubleWordWithTheWidestLimits)
{
    const MemoryText text =
        parseMemoryText("unit 1 register32 65534 sine -2147483648..4294967295 period 86400000\n"
                        "unit 1 register32 0 counter 0..0 period 1",
                        "f");
    EXPECT_THAT(text.errors, IsEmpty());
    ASSERT_EQ(text.moving.size(), 2u);
    const MovingValue& value = text.moving[0].value;
    EXPECT_EQ(value.motion, MovingValue::Sine);
    EXPECT_EQ(value.width, MovingValue::DoubleWord);
    EXPECT_EQ(value.lowest, -2147483648LL);
    EXPECT_EQ(value.highest, 4294967295LL);
    EXPECT_EQ(text.moving[1].value.motion, MovingValue::Counter);
}

TEST(ParseMemoryText, ReadsAMovingCoilWithoutLimits)
{
    const MemoryText text = parseMemoryText("unit 1 coil 16 random period 500", "f");
    EXPECT_THAT(text.errors, IsEmpty());
    ASSERT_EQ(text.moving.size(), 1u);
    const MovingValue& value = text.moving[0].value;
    EXPECT_EQ(value.motion, MovingValue::Random);
    EXPECT_EQ(value.width, MovingValue::Bit);
    EXPECT_EQ(value.lowest, 0);
    EXPECT_EQ(value.highest, 1);
}

TEST(ParseMemoryText, ReportsEveryWrongLineWithItsPlaceAndText)
{
    const MemoryText text = parseMemoryText("unit 1 coil 1 1\nfoo\nunit 1 coil 5 2\n", "start.txt");
    EXPECT_THAT(text.errors, ElementsAre(AllOf(StartsWith("start.txt:2: 'foo'"), HasSubstr("expected 'unit")),
                                         StartsWith("start.txt:3: 'unit 1 coil 5 2'")));
}

TEST(ParseMemoryText, DoesNotRepeatControlCharactersOrEndlessLines)
{
    const MemoryText text = parseMemoryText("bad\x1b[2J\n" + std::string(100000, 'x'), "f");
    ASSERT_EQ(text.errors.size(), 2u);
    EXPECT_THAT(text.errors[0], HasSubstr("'bad?[2J'"));
    EXPECT_LT(text.errors[1].size(), 300u);
}

class WrongLine : public testing::TestWithParam<const char*>
{
};

TEST_P(WrongLine, IsRefused)
{
    const MemoryText text = parseMemoryText(GetParam(), "f");
    EXPECT_THAT(text.values, IsEmpty());
    EXPECT_THAT(text.moving, IsEmpty());
    EXPECT_EQ(text.errors.size(), 1u);
}

INSTANTIATE_TEST_SUITE_P(
    ParseMemoryTextThatMoves, WrongLine,
    testing::Values("unit 1 register 1 ramp 0..1", "unit 1 register 1 ramp period 5",
                    "unit 1 register 1 ramp 5..4 period 5", "unit 1 register 1 ramp 0..65536 period 5",
                    "unit 1 register 1 ramp -32769..0 period 5", "unit 1 register 1 ramp 0-9 period 5",
                    "unit 1 register 1 ramp 0.. period 5", "unit 1 register 1 ramp ..9 period 5",
                    "unit 1 register 1 ramp 0..9 period 0", "unit 1 register 1 ramp 0..9 period 86400001",
                    "unit 1 register 1 ramp 0..9 every 5", "unit 1 register 1 ramp 0..9 period 5 5",
                    "unit 1 register 1 jump 0..9 period 5", "unit 0 register 1 ramp 0..9 period 5",
                    "unit 1 register 65536 ramp 0..9 period 5", "unit 1 register32 65535 ramp 0..9 period 5",
                    "unit 1 register32 1 ramp 0..4294967296 period 5",
                    "unit 1 register32 1 ramp -2147483649..0 period 5", "unit 1 coil 1 ramp 0..1 period 5",
                    "unit 1 coil 1 ramp", "units 1 coil 1 ramp period 5", "unit 1 register32 1 5"));

INSTANTIATE_TEST_SUITE_P(ParseMemoryText, WrongLine,
                         testing::Values("unit 0 coil 1 1", "unit 256 coil 1 1", "unit 1 coil 65536 1",
                                         "unit 1 coil -1 1", "unit 1 coil 1 2", "unit 1 register 1 65536",
                                         "unit 1 register 1 -1", "unit 1 register 1", "unit 1 register 1 1 1",
                                         "unit 1 input 1 1", "device 1 coil 1 1", "unit 1 coil 0x 1",
                                         "unit 1 coil 1a 1", "unit 1 coil 0x1g 1", "unit +1 coil 1 1",
                                         "unit 1 register 1 99999999999999999999999",
                                         "unit 1 register 1 1.5"));

TEST(FormatMemoryText, WritesALineForEachValue)
{
    EXPECT_EQ(formatMemoryText({{1, MemoryValue::Coil, 16, 1}, {12, MemoryValue::Register, 0xFFFF, 65535}}),
              "unit 1 coil 0x0010 1\nunit 12 register 0xFFFF 65535\n");
    EXPECT_EQ(formatMemoryText({}), "");
}

TEST(FormatMemoryText, IsReadBackToTheSameValues)
{
    const std::vector<MemoryValue> values = {{1, MemoryValue::Coil, 0, 1},
                                             {7, MemoryValue::Register, 65535, 1},
                                             {255, MemoryValue::Register, 0, 65535}};
    EXPECT_EQ(parseMemoryText(formatMemoryText(values), "f").values, values);
}

TEST(ParseNumber, KnowsItsMaximum)
{
    EXPECT_EQ(parseNumber("65535", 65535), 65535u);
    EXPECT_EQ(parseNumber("65536", 65535), std::nullopt);
    EXPECT_EQ(parseNumber("0xffffffff", 0xFFFFFFFF), 0xFFFFFFFFu);
    EXPECT_EQ(parseNumber("4294967296", 0xFFFFFFFF), std::nullopt);
    EXPECT_EQ(parseNumber("", 10), std::nullopt);
}

} // namespace
