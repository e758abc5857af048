// SPDX-License-Identifier: MIT
#include "window/table/table_filter.h"
#include "window/table/table_model.h"

#include "window/fake_source.h"

#include <QAbstractItemModelTester>
#include <QMimeData>

namespace
{

using plc::TableModel;
using plc::ValueState;
using test::answered;
using test::became;

const char* const lines = "speed,9,100,,int16,0.1,m/min,1,-30,30,\n"
                          "pump,1,17,,bit,,,,,,\n"
                          "recipe,13,0,9,text,,,,,,\n"
                          "meter,14,200,,uint32,,Wh,,,,r\n";
enum Row { Speed, Pump, Recipe, Meter };

class TableModelTest : public testing::Test
{
protected:
    TableModelTest() { model.setSource(&source); }

    std::string text(int row, int column) const
    {
        return model.index(row, column).data().toString().toStdString();
    }
    std::string mark(int row) const
    {
        return model.index(row, TableModel::Value).data(TableModel::MarkTextRole).toString().toStdString();
    }
    void ends(int row, quint64 number, const plc::WriteOutcome& outcome)
    {
        plc::Snapshot news;
        news.writes.push_back({row, number, outcome});
        model.apply(news);
    }

    test::FakeSource source{lines};
    TableModel model;
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(TableModelTest, ShowsValuesInTheirTypeScaleAndUnit)
{
    model.apply(answered(source, Speed, {0xFF6A}));
    model.apply(answered(source, Pump, {1}));
    model.apply(answered(source, Recipe, {0x454C, 0x4F4D, 0x204E, 0x4554, 0x41}));
    EXPECT_EQ("-15.0 m/min", text(Speed, TableModel::Value));
    EXPECT_EQ("on", text(Pump, TableModel::Value));
    EXPECT_EQ("\"LEMON TEA\"", text(Recipe, TableModel::Value));
}

TEST_F(TableModelTest, WhatWasNeverReadHasNoValue)
{
    EXPECT_EQ("\u2013", text(Meter, TableModel::Value));
    EXPECT_EQ("not read yet", text(Meter, TableModel::State));
    EXPECT_FALSE(model.index(Pump, TableModel::Value).data(TableModel::SwitchRole).isValid());
}

TEST_F(TableModelTest, PlacesANumberBetweenItsLimits)
{
    model.apply(answered(source, Speed, {150}));
    EXPECT_EQ(0.75, model.index(Speed, TableModel::Range).data(TableModel::FractionRole).toDouble());
    EXPECT_FALSE(model.index(Meter, TableModel::Range).data(TableModel::FractionRole).isValid());
}

TEST_F(TableModelTest, SaysThatAValueIsOutsideItsLimits)
{
    model.apply(answered(source, Speed, {301}));
    EXPECT_EQ(plc::Look::Outside, model.look(Speed));
    EXPECT_EQ("out of range: -30 to 30 m/min", text(Speed, TableModel::State));
}

TEST_F(TableModelTest, AgesGoByTheSourcesClock)
{
    model.apply(answered(source, Speed, {1}));
    source.now += 45000;
    EXPECT_EQ("45 s", text(Speed, TableModel::Age));
}

TEST_F(TableModelTest, SaysWhyAValueCouldNotBeRead)
{
    plc::Failure failure(plc::FailureKind::StationOff);
    failure.station = 3;
    model.apply(became(source, Speed, ValueState::Failed, failure));
    EXPECT_EQ(plc::Look::Failed, model.look(Speed));
    EXPECT_EQ("failed: station 3 is switched off", text(Speed, TableModel::State));
}

TEST_F(TableModelTest, AWriteOnItsWayShowsTheValueThatWasThere)
{
    model.apply(answered(source, Speed, {100}));
    model.setWriting(Speed, 1, QStringLiteral("20.0 m/min"));
    model.apply(became(source, Speed, ValueState::Unconfirmed));
    EXPECT_EQ("10.0 m/min", text(Speed, TableModel::Value));
    EXPECT_EQ("20.0 m/min", mark(Speed));
    EXPECT_EQ("waiting", text(Speed, TableModel::State));
}

TEST_F(TableModelTest, AConfirmedWriteSaysSoForAWhile)
{
    model.setWriting(Speed, 1, QStringLiteral("20.0 m/min"));
    plc::WriteOutcome outcome;
    outcome.confirmed = true;
    ends(Speed, 1, outcome);
    EXPECT_EQ("20.0 m/min confirmed", mark(Speed));
    source.now += TableModel::confirmedShownMs;
    model.apply({});
    EXPECT_EQ("", mark(Speed));
}

TEST_F(TableModelTest, AFailedWriteSaysWhyAndLeavesTheValue)
{
    model.apply(answered(source, Speed, {100}));
    model.setWriting(Speed, 1, QStringLiteral("20.0 m/min"));
    plc::WriteOutcome outcome;
    outcome.failure = plc::Failure(plc::FailureKind::StationOff);
    outcome.failure.station = 3;
    ends(Speed, 1, outcome);
    EXPECT_EQ("20.0 m/min not written: station 3 is switched off", mark(Speed));
    EXPECT_EQ("10.0 m/min", text(Speed, TableModel::Value));
}

TEST_F(TableModelTest, TheEndOfAnOlderWriteDoesNotTouchANewerOne)
{
    model.setWriting(Speed, 1, QStringLiteral("20.0 m/min"));
    model.setWriting(Speed, 2, QStringLiteral("25.0 m/min"));
    plc::WriteOutcome outcome;
    outcome.failure = plc::Failure(plc::FailureKind::Replaced);
    ends(Speed, 1, outcome);
    EXPECT_EQ("25.0 m/min", mark(Speed));
    EXPECT_EQ(plc::WriteMark::Waiting,
              static_cast<plc::WriteMark>(model.index(Speed, 0).data(TableModel::MarkRole).toInt()));
}

TEST_F(TableModelTest, DragsTheNamesOfVariables)
{
    const std::unique_ptr<QMimeData> data(
        model.mimeData({model.index(Speed, 0), model.index(Speed, 1), model.index(Meter, 0)}));
    EXPECT_EQ("speed\nmeter", data->data(QLatin1String(plc::variablesMimeType)).toStdString());
}

TEST_F(TableModelTest, AScreenReaderHearsHowAWriteEnded)
{
    model.apply(answered(source, Speed, {100}));
    model.setWriting(Speed, 1, QStringLiteral("20.0 m/min"));
    EXPECT_EQ("10.0 m/min, 20.0 m/min",
              model.index(Speed, TableModel::Value).data(Qt::AccessibleTextRole).toString().toStdString());
}

class TableFilterTest : public TableModelTest
{
protected:
    std::string shown() const
    {
        QStringList names;
        for (int row = 0; row < filter.rowCount(); ++row)
            names << filter.index(row, 0).data().toString();
        return names.join(QLatin1Char(' ')).toStdString();
    }

    plc::TableFilter filter{&model};
};

TEST_F(TableFilterTest, FindsWordsInNamesUnitsAndStates)
{
    filter.setWords(QStringLiteral("Wh"));
    EXPECT_EQ("meter", shown());
    filter.setWords(QStringLiteral("e not"));
    EXPECT_EQ("speed pump recipe meter", shown()) << "not read yet";
    filter.setWords(QStringLiteral("PE m"));
    EXPECT_EQ("speed", shown()) << "with its unit";
    filter.setWords(QString());
    EXPECT_EQ("speed pump recipe meter", shown());
}

TEST_F(TableFilterTest, PutsTroubleFirstAndTheWorstOnTop)
{
    model.apply(answered(source, Speed, {100}));
    model.apply(became(source, Recipe, ValueState::Stale));
    model.apply(became(source, Meter, ValueState::Failed, plc::Failure(plc::FailureKind::NoReply)));
    filter.setTroubleFirst(true);
    EXPECT_EQ("meter recipe pump speed", shown());
    filter.setTroubleFirst(false);
    EXPECT_EQ("speed pump recipe meter", shown());
}

TEST_F(TableFilterTest, ShowsTroubleAlone)
{
    model.apply(became(source, Recipe, ValueState::Stale));
    filter.setTroubleOnly(true);
    EXPECT_EQ("recipe", shown());
}

TEST_F(TableFilterTest, SortsValuesAsNumbersAndRowsMoveOnlyWhenToldTo)
{
    model.apply(answered(source, Speed, {100})); // 10.0
    model.apply(answered(source, Meter, {9}));
    filter.sort(TableModel::Value, Qt::DescendingOrder);
    EXPECT_EQ("speed meter", shown().substr(0, 11));
    model.apply(answered(source, Meter, {1000}));
    EXPECT_EQ("speed meter", shown().substr(0, 11));
    filter.resort();
    EXPECT_EQ("meter speed", shown().substr(0, 11));
}

} // namespace
