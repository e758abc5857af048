// SPDX-License-Identifier: MIT
#include "panel/watch/kept_line.h"
#include "panel/watch/write_entry.h"

#include <gmock/gmock.h>

namespace
{

using namespace plc;
using testing::ElementsAre;
using testing::HasSubstr;

WatchRow speed()
{
    WatchRow row;
    ListedVariable variable;
    variable.name = QStringLiteral("speed");
    variable.type = ValueType::Int16;
    variable.elements.area = 9;
    variable.scale = 0.1;
    variable.unit = QStringLiteral("m/min");
    variable.min = -30;
    variable.max = 30;
    row.variable = variable.elements;
    row.listed = test::kept(variable);
    row.value.state = ValueState::Fresh;
    row.value.ageMs = 0;
    row.value.values = {100};
    return row;
}

WriteEntry::Result type(WriteEntry* entry, const char* text)
{
    auto result = WriteEntry::Going;
    for (const char* at = text; *at != '\0'; ++at) {
        Key key;
        key.kind = *at == '\n' ? Key::Enter : Key::Character;
        key.text = QLatin1Char(*at);
        result = entry->press(key);
    }
    return result;
}

TEST(WriteEntry, AsksBeforeItAgrees)
{
    WriteEntry entry(speed(), ValueFormat::Decimal, {});
    EXPECT_EQ(entry.headline(), QStringLiteral("speed is 10 m/min; -30 to 30 m/min may be written"));
    EXPECT_EQ(type(&entry, "12.5\n"), WriteEntry::Going);
    EXPECT_EQ(entry.headline(), QStringLiteral("Write 12.5 m/min to speed, which is 10 m/min?"));
    EXPECT_EQ(type(&entry, "y"), WriteEntry::Agreed);
    EXPECT_THAT(entry.values(), ElementsAre(125));
}

TEST(WriteEntry, AnyOtherKeyThanYesIsNo)
{
    for (const char* answer : {"n", "\n", "x"}) {
        WriteEntry entry(speed(), ValueFormat::Decimal, {});
        type(&entry, "12.5\n");
        EXPECT_EQ(type(&entry, answer), WriteEntry::Cancelled) << answer;
    }
}

TEST(WriteEntry, NothingTypedIsNothingWritten)
{
    WriteEntry entry(speed(), ValueFormat::Decimal, {});
    EXPECT_EQ(type(&entry, "\n"), WriteEntry::Cancelled);
}

TEST(WriteEntry, SaysWhatIsAgainstAValueAndLetsItBeMended)
{
    WriteEntry entry(speed(), ValueFormat::Decimal, {});
    type(&entry, "31\n");
    EXPECT_TRUE(entry.hasError());
    EXPECT_THAT(entry.headline().toStdString(), HasSubstr("31 lies outside its limits, -30 to 30 m/min"));
    Key key;
    key.kind = Key::Backspace;
    entry.press(key);
    EXPECT_FALSE(entry.hasError());
    EXPECT_EQ(type(&entry, "\ny"), WriteEntry::Agreed);
    EXPECT_THAT(entry.values(), ElementsAre(30));
}

TEST(WriteEntry, WantsAsManyValuesAsTheVariableHas)
{
    WatchRow row;
    row.variable.count = 2;
    row.value.values = {0, 0};
    WriteEntry entry(row, ValueFormat::Decimal, {});
    type(&entry, "5\n");
    EXPECT_THAT(entry.headline().toStdString(), HasSubstr("1 value is given; it has 2"));
    EXPECT_EQ(type(&entry, ",6\ny"), WriteEntry::Agreed);
    EXPECT_THAT(entry.values(), ElementsAre(5, 6));
}

TEST(WriteEntry, AsksTheRuntimeToo)
{
    WriteEntry entry(speed(), ValueFormat::Decimal,
                     [](const Variable&, const std::vector<quint32>&) { return QStringLiteral("not now"); });
    type(&entry, "1\n");
    EXPECT_EQ(entry.headline(), QStringLiteral("not now"));
}

TEST(WriteEntry, IsRefusedByTheListAndByTheArea)
{
    WatchRow row = speed();
    EXPECT_EQ(WriteEntry::refusal(row), QString());
    ListedVariable readOnly = *row.listed;
    readOnly.access = Access::ReadOnly;
    row.listed = &readOnly;
    EXPECT_EQ(WriteEntry::refusal(row),
              QStringLiteral("speed is not written: the list says that it is only read (access r)"));
}

} // namespace
