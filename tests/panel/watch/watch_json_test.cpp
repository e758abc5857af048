// SPDX-License-Identifier: MIT
// The lines of JSON that plcpanel watch prints for variables.

#include "panel/watch/kept_line.h"
#include "panel/watch/watch_json.h"

#include <gtest/gtest.h>

namespace
{

using namespace plc;

const QDateTime someTime = QDateTime::fromMSecsSinceEpoch(0, Qt::UTC);

WatchRow freshRow(int area, int element, const std::vector<quint32>& values)
{
    WatchRow row;
    row.variable.area = area;
    row.variable.element = element;
    row.variable.count = static_cast<int>(values.size());
    row.value.state = ValueState::Fresh;
    row.value.ageMs = 5;
    row.value.values = values;
    return row;
}

WatchRow listedRow()
{
    WatchRow row = freshRow(9, 100, {0, 0x3FC0});
    ListedVariable listed;
    listed.name = QStringLiteral("oven");
    listed.type = ValueType::Float32;
    listed.elements = row.variable;
    row.listed = test::kept(listed);
    return row;
}

TEST(WatchJson, OfAListedVariableCarriesItsNameItsTypeAndItsValueAsTextAndNumber)
{
    EXPECT_EQ(watchJson(listedRow(), 7, someTime).toStdString(),
              R"({"address":"100","area":9,"count":2,"name":"oven","state":"fresh","station":7,"text":"1.5",)"
              R"("time":"1970-01-01T00:00:00.000Z","type":"float32","value":1.5,"values":[0,16320]})");
}

TEST(WatchJson, OfAListedVariableHasItsUnitItsLimitsAndWhetherItLiesOutside)
{
    WatchRow row = listedRow();
    ListedVariable listed = *row.listed;
    listed.unit = QStringLiteral("bar");
    listed.min = 2;
    listed.max = 2.5;
    row.listed = &listed;
    EXPECT_EQ(
        watchJson(row, 7, someTime).toStdString(),
        R"({"address":"100","area":9,"count":2,"max":2.5,"min":2,"name":"oven","outside":true,)"
        R"("state":"fresh","station":7,"text":"1.5","time":"1970-01-01T00:00:00.000Z","type":"float32",)"
        R"("unit":"bar","value":1.5,"values":[0,16320]})");
}

TEST(WatchJson, NamesTheStationOfTheList)
{
    WatchRow row = listedRow();
    row.variable.station = 3;
    EXPECT_NE(watchJson(row, 7, someTime).indexOf(QStringLiteral("\"station\":3")), -1);
}

TEST(WatchJson, HasNoValueBeforeTheFirstAnswer)
{
    WatchRow row = listedRow();
    row.value = CyclicValue();
    row.value.values = {0, 0};
    EXPECT_EQ(watchJson(row, 7, someTime).toStdString(),
              R"({"address":"100","area":9,"count":2,"name":"oven","state":"never read","station":7,)"
              R"("time":"1970-01-01T00:00:00.000Z","type":"float32"})");
}

TEST(WatchJson, OfATypedVariableIsAsBefore)
{
    EXPECT_EQ(watchJson(freshRow(9, 100, {42}), 1, someTime).toStdString(),
              R"({"address":"100","area":9,"count":1,"state":"fresh","station":1,)"
              R"("time":"1970-01-01T00:00:00.000Z","values":[42]})");
}

} // namespace
