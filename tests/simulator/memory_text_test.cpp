#include "simulator/memory_text.h"

#include <gmock/gmock.h>

namespace
{

using simulator::formatMemoryText;
using simulator::MemoryText;
using simulator::MemoryValue;
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
    EXPECT_EQ(text.errors.size(), 1u);
}

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
