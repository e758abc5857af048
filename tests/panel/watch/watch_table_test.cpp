// SPDX-License-Identifier: MIT
// The watched values as a person sees them.

#include "panel/watch/kept_line.h"
#include "panel/watch/watch_table.h"

#include "panel/watch/watch_words.h"
#include "runtime/modbus/reply_failure.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

WatchRow row(const char* variable, ValueState state, const std::vector<quint32>& values, qint64 ageMs)
{
    QString error;
    WatchRow row;
    row.variable = parseVariable(QLatin1String(variable), &error).value_or(Variable());
    row.value.state = state;
    row.value.values = values;
    row.value.ageMs = ageMs;
    return row;
}

WatchRow failedRow(const char* variable, const std::vector<quint32>& values, qint64 ageMs)
{
    WatchRow failed = row(variable, ageMs < 0 ? ValueState::NeverRead : ValueState::Failed, values, ageMs);
    failed.value.failure = replyFailure(42, FailureKind::None, QByteArray(), 300);
    return failed;
}

WatchRow listedRow(const char* name, ValueType type, int area, const std::vector<quint32>& values)
{
    WatchRow row;
    row.variable.area = area;
    row.variable.count = static_cast<int>(values.size());
    row.value.state = ValueState::Fresh;
    row.value.values = values;
    row.value.ageMs = 20;
    ListedVariable listed;
    listed.name = QString::fromUtf8(name);
    listed.type = type;
    listed.count = 99;
    listed.elements = row.variable;
    row.listed = test::kept(listed);
    return row;
}

WatchView view(const std::vector<WatchRow>& rows)
{
    WatchView view;
    view.controller = QStringLiteral("10.0.0.1:502");
    view.station = 7;
    view.link.connected = true;
    view.link.sinceMs = 12345;
    view.link.connects = 1;
    view.rows = rows;
    return view;
}

std::string table(const WatchView& view, const TableStyle& style = {})
{
    return '\n' + watchTable(view, style).join(QLatin1Char('\n')).toStdString() + '\n';
}

TEST(WatchTable, ShowsLinkValuesAgesAndStates)
{
    EXPECT_EQ(table(view({row("9:100x4", ValueState::Fresh, {1, 2, 3, 65535}, 120),
                          row("0:17", ValueState::Stale, {1}, 5200), failedRow("14:200", {70000}, 61000),
                          row("8:10.3", ValueState::NeverRead, {0}, -1), failedRow("9:500", {0}, -1)})),
              R"(
10.0.0.1:502, station 7: connected for 12 s

VARIABLE  VALUE        AGE      STATE
9:100x4   1 2 3 65535  0.1 s    fresh
0:17      (1)          5.2 s    stale
14:200    (70000)      61 s     failed: no reply within 300 ms (return code 42)
8:10.3    -            -        never read
9:500     -            -        failed: no reply within 300 ms (return code 42)
)");
}

TEST(WatchTable, ShowsHexadecimalValues)
{
    TableStyle style;
    style.format = ValueFormat::Hex;
    EXPECT_EQ(table(view({row("9:100x2", ValueState::Fresh, {1, 65535}, 0)}), style), R"(
10.0.0.1:502, station 7: connected for 12 s

VARIABLE  VALUE          AGE      STATE
9:100x2   0x0001 0xFFFF  0.0 s    fresh
)");
}

TEST(WatchTable, BreaksManyValuesAndLongReasonsInANarrowWindow)
{
    TableStyle style;
    style.columns = 50;
    EXPECT_EQ(table(view({row("9:100x8", ValueState::Fresh, {1, 2, 3, 4, 50000, 60000, 7, 8}, 0),
                          failedRow("9:500", {0}, 3000)}),
                    style),
              R"(
10.0.0.1:502, station 7: connected for 12 s

VARIABLE  VALUE          AGE      STATE
9:100x8   1 2 3 4 50000  0.0 s    fresh
          60000 7 8
9:500     (0)            3.0 s    failed: no reply
                                  within 300 ms
                                  (return code 42)
)");
}

TEST(WatchTable, CutsReasonsAndThenRowsInALowWindow)
{
    TableStyle style;
    style.columns = 50;
    style.lines = 6;
    const WatchView four =
        view({failedRow("9:1", {0}, 0), failedRow("9:2", {0}, 0), row("9:3", ValueState::Fresh, {3}, 0),
              row("9:4", ValueState::Fresh, {4}, 0)});
    EXPECT_EQ(table(four, style), R"(
10.0.0.1:502, station 7: connected for 12 s

VARIABLE  VALUE  AGE      STATE
9:1       (0)    0.0 s    failed: no reply within
9:2       (0)    0.0 s    failed: no reply within
(2 more do not fit, all fresh; --once prints all)
)");
}

TEST(WatchTable, TellsHowManyOfTheRowsThatDoNotFitAreOld)
{
    TableStyle style;
    style.lines = 5;
    const QStringList lines =
        watchTable(view({row("9:1", ValueState::Fresh, {1}, 0), row("9:2", ValueState::Stale, {2}, 3000),
                         row("9:3", ValueState::Fresh, {3}, 0), failedRow("9:4", {4}, 0)}),
                   style);
    EXPECT_EQ(lines.last(), QStringLiteral("(3 more do not fit, 2 not fresh; --once prints all)"));
}

TEST(WatchTable, NoLineIsWiderThanTheWindow)
{
    const WatchRow text = listedRow("the name of the recipe", ValueType::Text, 14, {0x44434241, 0x48474645});
    const WatchView rows = view({failedRow("14:200x3", {70000, 4294967295, 1}, 0), text});
    TableStyle style;
    for (style.columns = 1; style.columns < 120; ++style.columns) {
        for (const QString& line : watchTable(rows, style))
            ASSERT_LE(line.size(), style.columns);
    }
}

TEST(WatchTable, ShowsTheUnitBehindTheLastValueAndTheLimitsOfWhatLiesOutside)
{
    WatchRow hot = listedRow("oven", ValueType::Int16, 9, {215, 905});
    ListedVariable listed = *hot.listed;
    listed.scale = 0.1;
    listed.unit = QStringLiteral("C");
    listed.max = 90;
    hot.listed = &listed;
    WatchRow warm = hot;
    warm.value.values = {215, 900};
    const QString lines = watchTable(view({hot, warm}), TableStyle()).join(QLatin1Char('\n'));
    EXPECT_TRUE(
        lines.contains(QStringLiteral("oven      21.5 90.5 C  0.0 s    fresh, outside at most 90 C\n")))
        << lines.toStdString();
    EXPECT_TRUE(lines.endsWith(QStringLiteral("oven      21.5 90 C    0.0 s    fresh")))
        << lines.toStdString();
}

TEST(WatchTable, ShowsListedVariablesByTheirNamesAndTypes)
{
    WatchRow stale = listedRow("level", ValueType::Int16, 9, {0xFFFE, 3});
    stale.value.state = ValueState::Stale;
    stale.value.ageMs = 3000;
    EXPECT_EQ(table(view({row("9:100x2", ValueState::Fresh, {1, 2}, 0),
                          listedRow("oven temperature", ValueType::Float32, 9, {0, 0x3FC0}),
                          listedRow("label", ValueType::Text, 9, {0x4241, 0x2043, 0x0044}), stale})),
              R"(
10.0.0.1:502, station 7: connected for 12 s

VARIABLE          VALUE    AGE      STATE
9:100x2           1 2      0.0 s    fresh
oven temperature  1.5      0.0 s    fresh
label             "ABC D"  0.0 s    fresh
level             (-2 3)   3.0 s    stale
)");
}

TEST(WatchTable, BreaksALongTextAndCutsALongNameInANarrowWindow)
{
    TableStyle style;
    style.columns = 44;
    EXPECT_EQ(table(view({listedRow("the third recipe of the day", ValueType::Text, 9,
                                    {0x4241, 0x4443, 0x4645, 0x4847, 0x4A49, 0x4C4B})}),
                    style),
              R"(
10.0.0.1:502, station 7: connected for 12 s

VARIABLE      VALUE     AGE      STATE
the third ..  "ABCDEFG  0.0 s    fresh
              HIJKL"
)");
}

TEST(WatchTable, ColoursTellOldFromFailed)
{
    TableStyle style;
    style.colours = true;
    const QStringList lines =
        watchTable(view({row("9:1", ValueState::Fresh, {1}, 0), row("9:2", ValueState::Stale, {2}, 3000),
                         failedRow("9:3", {3}, 0)}),
                   style);
    EXPECT_TRUE(lines.at(0).startsWith(QStringLiteral("\x1b[32m")));
    EXPECT_EQ(lines.at(3), QStringLiteral("9:1       1      0.0 s    fresh"));
    EXPECT_EQ(lines.at(4), QStringLiteral("\x1b[33m9:2       (2)    3.0 s    stale\x1b[0m"));
    EXPECT_TRUE(lines.at(5).startsWith(QStringLiteral("\x1b[31m9:3")));
}

TEST(LinkText, TellsReconnectsAndDroppedReplies)
{
    LinkState link;
    link.connected = true;
    link.sinceMs = 2000;
    link.connects = 3;
    link.dropped.late = 1;
    link.dropped.doubled = 1;
    EXPECT_EQ(linkText(link), QStringLiteral("connected for 2.0 s, reconnects: 2, replies dropped: 2"));
}

TEST(LinkText, TellsWhyThereIsNoConnection)
{
    LinkState link;
    EXPECT_EQ(linkText(link), QStringLiteral("connecting"));
    link.lastError = QStringLiteral("Connection refused");
    link.sinceMs = 3100;
    EXPECT_EQ(linkText(link), QStringLiteral("NOT CONNECTED for 3.1 s, trying again (Connection refused)"));
}

TEST(AgeText, IsCoarserTheOlderItIs)
{
    EXPECT_EQ(ageText(-1), QStringLiteral("-"));
    EXPECT_EQ(ageText(0), QStringLiteral("0.0 s"));
    EXPECT_EQ(ageText(9999), QStringLiteral("9.9 s"));
    EXPECT_EQ(ageText(10000), QStringLiteral("10 s"));
    EXPECT_EQ(ageText(119999), QStringLiteral("119 s"));
    EXPECT_EQ(ageText(120000), QStringLiteral("2 min"));
    EXPECT_EQ(ageText(7200000), QStringLiteral("2 h"));
}

TEST(SameNews, AgesAreNoNews)
{
    EXPECT_TRUE(sameNews(view({row("9:1", ValueState::Fresh, {1}, 0)}),
                         view({row("9:1", ValueState::Fresh, {1}, 500)})));
}

TEST(SameNews, ValuesStatesAndTheLinkAreNews)
{
    const WatchView before = view({row("9:1", ValueState::Fresh, {1}, 0)});
    EXPECT_FALSE(sameNews(before, view({row("9:1", ValueState::Fresh, {2}, 0)})));
    EXPECT_FALSE(sameNews(before, view({row("9:1", ValueState::Stale, {1}, 0)})));
    WatchView lost = before;
    lost.link.connected = false;
    EXPECT_FALSE(sameNews(before, lost));
}

TEST(WatchTable, KeepsItsColumnsWithCharactersOfTwoColumnsAndOfNone)
{
    const std::vector<quint32> values = {7};
    const QStringList lines = watchTable(
        view({listedRow("\xE6\xB8\xA9\xE5\xBA\xA6", ValueType::Uint16, 9, values), // two wide ones
              listedRow("Cafe\xCC\x81", ValueType::Uint16, 9, values)}), // a mark above the letter before
        {});
    const QStringList rows = lines.mid(lines.size() - 2);
    EXPECT_EQ(rows[0].toStdString().find("7"), std::string("\xE6\xB8\xA9\xE5\xBA\xA6      ").size())
        << rows[0].toStdString();
    EXPECT_EQ(rows[1].toStdString().find("7"), std::string("Cafe\xCC\x81      ").size())
        << rows[1].toStdString();
}

} // namespace
