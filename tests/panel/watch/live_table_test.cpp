// SPDX-License-Identifier: MIT
// The table of a terminal without one: keys go in, pages come out.

#include "panel/watch/live_table.h"

#include <gmock/gmock.h>

#include <QDateTime>

namespace
{

using namespace plc;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

const qint64 nowMs = 100000;

class LiveTableTest : public testing::Test
{
protected:
    LiveTableTest() : m_listed(list()), variables(m_typed, m_listed), seen(variables), values(m_listed.size())
    {
        for (std::size_t row = 0; row < values.size(); ++row)
            read(static_cast<int>(row), 10 + static_cast<quint32>(row));
        report.view.controller = QStringLiteral("plc:502");
        report.view.link.connected = true;
        report.view.link.sinceMs = 12345;
        table.emplace(TableSource{variables,
                                  seen,
                                  [this](int row) { return values.at(static_cast<std::size_t>(row)); },
                                  {},
                                  ValueFormat::Decimal,
                                  true});
    }

    static std::vector<ListedVariable> list()
    {
        std::vector<ListedVariable> listed;
        for (const char* name : {"pump 10", "pump 9", "tank", "valve"}) {
            ListedVariable variable;
            variable.name = QString::fromLatin1(name);
            variable.type = ValueType::Uint16;
            variable.elements.area = 9;
            variable.elements.element = 100 + static_cast<int>(listed.size());
            listed.push_back(variable);
        }
        listed[2].max = 50;
        listed[2].unit = QStringLiteral("l");
        return listed;
    }

    void read(int row, quint32 number, qint64 readAtMs = 1000)
    {
        CyclicValue& value = values[static_cast<std::size_t>(row)];
        value = CyclicValue();
        value.state = ValueState::Fresh;
        value.values = {number};
        value.ageMs = 300;
        value.readAtMs = readAtMs;
        seen.note(row, value);
    }

    void fail(int row)
    {
        CyclicValue& value = values[static_cast<std::size_t>(row)];
        value.state = ValueState::Failed;
        value.failure = Failure(FailureKind::StationOff);
        value.failure.station = 1;
        seen.note(row, value);
    }

    TableWish press(Key::Kind kind, int line = -1)
    {
        Key key;
        key.kind = kind;
        key.line = line;
        return table->press(key);
    }

    TableWish type(const char* text)
    {
        TableWish wish;
        for (const char* at = text; *at != '\0'; ++at) {
            Key key;
            key.kind = *at == '\n' ? Key::Enter : Key::Character;
            key.text = QLatin1Char(*at);
            wish = table->press(key);
        }
        return wish;
    }

    /// \return the page as text, without spaces behind its lines
    std::string shown(int columns = 72, int lines = 10)
    {
        QString text;
        for (const PageLine& line : table->page(report, columns, lines, nowMs).lines) {
            QString shownLine;
            for (const Span& span : line)
                shownLine = shownLine.leftJustified(span.column) + span.text;
            while (shownLine.endsWith(QLatin1Char(' ')))
                shownLine.chop(1);
            text += shownLine + QLatin1Char('\n');
        }
        return '\n' + text.toStdString();
    }

private:
    const std::vector<Variable> m_typed;
    const std::vector<ListedVariable> m_listed;

protected:
    const WatchedVariables variables;
    SeenValues seen;
    std::vector<CyclicValue> values;
    WatchReport report;
    std::optional<LiveTable> table;
};

TEST_F(LiveTableTest, ShowsARowForEachVariable)
{
    fail(3);
    read(2, 60, nowMs - 500);
    EXPECT_EQ(shown(), R"(
plc:502, station 1: connected for 12 s
    VARIABLE  VALUE         AGE     STATE
>   pump 10   10            <1 s    fresh
    pump 9    11            <1 s    fresh
 *! tank      60 l          <1 s    fresh, outside at most 50 l
    valve     (13)          <1 s    failed: station 1 is switched off


1-4 of 4, list order; 1 not fresh, 1 outside limits
q ends   ? help   / find   s sort   m min/max   w write
)");
}

TEST_F(LiveTableTest, ShowsMinimumAndMaximumOnAKey)
{
    read(0, 3);
    read(0, 40);
    read(0, 20);
    type("m");
    EXPECT_THAT(shown(), HasSubstr("    VARIABLE  VALUE         MIN           MAX           STATE\n"
                                   ">   pump 10   20            3             40            fresh\n"));
    type("r");
    EXPECT_THAT(shown(), HasSubstr(">   pump 10   20            20            20            fresh\n"));
    type("m");
    EXPECT_THAT(shown(), Not(HasSubstr("MAX")));
}

TEST_F(LiveTableTest, SortsByNameByTroubleAndByChange)
{
    fail(3);
    read(1, 99, 50000);
    type("s");
    EXPECT_THAT(shown(), HasSubstr("fresh\n    pump 10"));
    EXPECT_THAT(shown(), HasSubstr("by name"));
    type("s");
    EXPECT_THAT(shown(), HasSubstr(">   valve "));
    type("s");
    EXPECT_THAT(shown(), HasSubstr(">   pump 9 "));
    type("s");
    EXPECT_THAT(shown(), HasSubstr(">   pump 10 "));
}

TEST_F(LiveTableTest, TheSelectionStaysWithItsVariableWhenOthersGoByIt)
{
    type("ss");
    shown();
    press(Key::Down);
    press(Key::Down);
    EXPECT_THAT(shown(), HasSubstr(">   tank "));
    fail(3);
    EXPECT_THAT(shown(), HasSubstr(">   tank "));
}

TEST_F(LiveTableTest, OnTopTroubleComesIntoSight)
{
    type("ss");
    EXPECT_THAT(shown(78, 6), HasSubstr(">   pump 10 "));
    fail(3);
    EXPECT_THAT(shown(78, 6), HasSubstr(">   valve "));
}

TEST_F(LiveTableTest, FindsForwardAndBackwardAndRoundTheEnds)
{
    type("/PUMP\n");
    EXPECT_THAT(shown(), HasSubstr(">   pump 9 "));
    type("n");
    EXPECT_THAT(shown(), HasSubstr(">   pump 10 "));
    EXPECT_THAT(shown(), HasSubstr("\"PUMP\": from the other end on"));
    type("N");
    EXPECT_THAT(shown(), HasSubstr(">   pump 9 "));
    type("/9:103\n");
    EXPECT_THAT(shown(), HasSubstr(">   valve ")); // by its address
    type("n");
    EXPECT_THAT(shown(), HasSubstr("\"9:103\": no other"));
    type("/nowhere\n");
    EXPECT_THAT(shown(), HasSubstr("\"nowhere\" is in no name and no address"));
}

TEST_F(LiveTableTest, EscapeLeavesASearchAsItWas)
{
    type("/tank");
    EXPECT_THAT(shown(), HasSubstr("\n/tank\n"));
    press(Key::Escape);
    EXPECT_THAT(shown(), HasSubstr(">   pump 10 "));
    EXPECT_THAT(shown(), HasSubstr("\nq ends"));
}

TEST_F(LiveTableTest, AClickSelectsARow)
{
    shown();
    press(Key::Click, 4);
    EXPECT_THAT(shown(), HasSubstr(">   tank "));
    press(Key::Click, 0);
    press(Key::Click, 7);
    EXPECT_THAT(shown(), HasSubstr(">   tank "));
}

TEST_F(LiveTableTest, ShowsAllOfOneVariable)
{
    press(Key::End);
    fail(3);
    press(Key::Enter);
    EXPECT_EQ(shown(78, 14), R"(
plc:502, station 1: connected for 12 s
VARIABLE  valve
ADDRESS   9:103
TYPE      uint16
ACCESS    read and written
VALUE     (13)
MIN       13
MAX       13
CHANGED   -
READ      )" + QDateTime::fromMSecsSinceEpoch(1000).toString(QStringLiteral("HH:mm:ss")).toStdString() +
                                 R"(
STATE     failed: station 1 is switched off


any other key: back to the table
)");
    press(Key::Escape);
    EXPECT_THAT(shown(), HasSubstr(">   valve "));
}

TEST_F(LiveTableTest, HelpScrollsInALowWindow)
{
    type("?");
    EXPECT_THAT(shown(78, 8), HasSubstr("up, down  select a row"));
    EXPECT_THAT(shown(78, 8), HasSubstr("up and down scroll"));
    press(Key::End);
    EXPECT_THAT(shown(78, 8), HasSubstr("its state says why"));
    type("x");
    EXPECT_THAT(shown(78, 8), HasSubstr("VARIABLE"));
}

TEST_F(LiveTableTest, AWriteThatIsAgreedToIsAskedFor)
{
    type("jjw7\n");
    EXPECT_THAT(shown(), HasSubstr("Write 7 l to tank, which is 12 l?\ny: yes, any other key: no"));
    const TableWish wish = type("y");
    EXPECT_EQ(wish.kind, TableWish::Write);
    EXPECT_EQ(wish.row, 2);
    EXPECT_EQ(wish.variable.element, 102);
    EXPECT_THAT(wish.values, ElementsAre(7));
    EXPECT_THAT(shown(), HasSubstr("writing 7 l; fresh"));
}

TEST_F(LiveTableTest, HowAWriteEndedStandsWhereTheValueDoes)
{
    type("w7\ny");
    WriteOutcome outcome;
    outcome.failure = Failure(FailureKind::StationOff);
    outcome.failure.station = 1;
    table->writeEnded(0, outcome, nowMs - 90000);
    EXPECT_THAT(shown(), HasSubstr("<1 s    7 not confirmed: ")); // and stays there
    outcome.confirmed = true;
    table->writeEnded(0, outcome, nowMs);
    EXPECT_THAT(shown(), HasSubstr("<1 s    7 confirmed; fresh"));
    table->writeEnded(0, outcome, nowMs - 10001);
    EXPECT_THAT(shown(), HasSubstr("<1 s    fresh"));
}

TEST_F(LiveTableTest, SwitchesStationsAndEnds)
{
    const TableWish off = type("o3\n");
    EXPECT_EQ(off.kind, TableWish::SwitchStation);
    EXPECT_EQ(off.station, 3);
    EXPECT_FALSE(off.on);
    EXPECT_TRUE(type("+3\n").on);
    EXPECT_EQ(type("q").kind, TableWish::End);
    EXPECT_EQ(press(Key::Redraw).kind, TableWish::Redraw);
    type("x");
    EXPECT_THAT(shown(), HasSubstr("\"x\" is no key here; ? shows those that are"));
}

TEST_F(LiveTableTest, ALowWindowKeepsARowAndGivesUpTheRest)
{
    EXPECT_EQ(shown(40, 1), "\n>   pump 10   10            <1 s    fr..\n");
    EXPECT_EQ(shown(40, 2),
              "\n>   pump 10   10            <1 s    fr..\nq ends   ? help   / find   s sort\n");
}

TEST_F(LiveTableTest, NoPageIsLargerThanItsWindow)
{
    fail(3);
    report.statistics = Statistics();
    report.view.stations.resize(3);
    for (const char* keys : {"", "m", "mss", "?", "\n\n", "o3"}) {
        type(keys);
        for (int columns = 1; columns < 90; columns += 3) {
            for (int lines = 1; lines < 30; lines += 4) {
                const Page page = table->page(report, columns, lines, nowMs);
                ASSERT_LE(static_cast<int>(page.lines.size()), lines) << keys;
                for (const PageLine& line : page.lines)
                    for (const Span& span : line)
                        ASSERT_LE(span.column + span.text.size(), columns) << keys << ' ' << lines;
            }
        }
    }
}

TEST_F(LiveTableTest, StationsAndStatisticsStandAroundTheRows)
{
    report.view.stations.resize(2);
    report.view.stations[0].station = 4;
    report.view.stations[1].station = 5;
    report.statistics = Statistics();
    const std::string page = shown(90, 20);
    EXPECT_THAT(page, HasSubstr("plc:502, 2 stations: connected for 12 s\nstation 4: not tried yet\n"));
    EXPECT_THAT(page, HasSubstr("\n\nREFRESHES  "));
    EXPECT_THAT(page, HasSubstr("o3 i3 station 3 off, on"));
}

} // namespace
