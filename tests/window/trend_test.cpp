// SPDX-License-Identifier: MIT
#include "history/sample_store.h"
#include "window/trend/time_view.h"
#include "window/trend/trend_csv.h"
#include "window/trend/trend_panel.h"
#include "window/trend/trend_series.h"

#include "window/fake_source.h"
#include "window/until.h"

#include <QBuffer>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>

#include <cmath>
#include <limits>

namespace
{

using plc::TimeView;
using plc::TrendSeries;
using plc::TrendStep;

const double gap = std::numeric_limits<double>::quiet_NaN();
const qint64 hourMs = 3600000;

/// \return "1,5 2,7 -" for points and interruptions
std::string text(const QVector<QPointF>& line)
{
    QStringList words;
    for (const QPointF& point : line)
        words << (std::isfinite(point.y()) ? QStringLiteral("%1,%2").arg(point.x(), 0, 'f', 0).arg(point.y())
                                           : QStringLiteral("-"));
    return words.join(QLatin1Char(' ')).toStdString();
}

std::string line(const TrendSeries& series, qint64 from, qint64 to, int pixels = 1000)
{
    return text(lineOf(series.steps(from, to), from, to, pixels));
}

TEST(TrendSeries, AValueHoldsUntilTheNext)
{
    TrendSeries series;
    series.add(1000, 5);
    series.add(3000, 7);
    EXPECT_EQ("1000,5 3000,5 3000,7 4000,7", line(series, 0, 4000));
}

TEST(TrendSeries, NoLineLeadsThroughAGap)
{
    TrendSeries series;
    series.add(1000, 5);
    series.add(2000, gap);
    series.add(3000, 6);
    EXPECT_EQ("1000,5 2000,5 - 3000,6 4000,6", line(series, 0, 4000));
    EXPECT_EQ(5, series.at(1500));
    EXPECT_FALSE(series.at(2500));
    EXPECT_FALSE(series.at(500));
}

TEST(TrendSeries, WhatWasBeforeTheRangeHoldsIntoIt)
{
    TrendSeries series;
    series.add(1000, 5);
    series.add(9000, 6);
    EXPECT_EQ("4000,5 8000,5", line(series, 4000, 8000));
}

TEST(TrendSeries, TheSameValueAgainIsNoPoint)
{
    TrendSeries series;
    for (int ms = 0; ms < 1000; ms += 100)
        series.add(ms, 5);
    EXPECT_EQ(1u, series.steps(0, 1000).size());
}

TEST(TrendSeries, AnHourKeepsItsPeaksInAsFewPointsAsAMinute)
{
    TrendSeries series;
    for (qint64 ms = 0; ms < hourMs; ms += 100)
        series.add(ms, ms == 1800000 ? 1000 : static_cast<double>(ms / 100 % 50));
    const auto hour = lineOf(series.steps(0, hourMs), 0, hourMs, 800);
    const auto minute = lineOf(series.steps(hourMs - 60000, hourMs), hourMs - 60000, hourMs, 800);
    EXPECT_LT(hour.size(), 4 * 800 + 2);
    EXPECT_LT(hour.size(), 3 * minute.size());
    EXPECT_EQ(1000, extentOf(series.steps(0, hourMs))->second)
        << "one value of a tenth of a second, half an hour ago";
}

TEST(TrendSeries, RemembersAnHourAndNoMore)
{
    TrendSeries series;
    for (qint64 ms = 0; ms < 3 * hourMs; ms += 100)
        series.add(ms, static_cast<double>(ms % 7));
    const qint64 known = 3 * hourMs - *series.oldestMs();
    EXPECT_GE(known, hourMs);
    EXPECT_LT(known, hourMs + 600000);
}

TEST(TrendSeries, TimeDoesNotGoBack)
{
    TrendSeries series;
    series.add(2000, 5);
    series.add(1000, 6);
    EXPECT_EQ("2000,5 2000,6 3000,6", line(series, 0, 3000));
}

TEST(TimeView, FollowsUntilItIsMoved)
{
    TimeView view;
    view.setNow(100000);
    EXPECT_EQ(40000, view.fromMs());
    view.pan(-10000);
    view.setNow(200000);
    EXPECT_EQ(90000, view.toMs());
    view.follow();
    EXPECT_EQ(200000, view.toMs());
}

TEST(TimeView, ZoomsAroundAPlace)
{
    TimeView view;
    view.setNow(100000);
    view.pause();
    view.zoom(0.5, 70000); // in the middle
    EXPECT_EQ(55000, view.fromMs());
    EXPECT_EQ(85000, view.toMs());
}

TEST(TimeView, DoesNotShowTheFuture)
{
    TimeView view;
    view.setNow(100000);
    view.pan(5000);
    EXPECT_EQ(100000, view.toMs());
}

TEST(TrendCsv, HasALineForEachStep)
{
    TrendSeries series;
    series.add(0, 5);
    series.add(1500, gap);
    QBuffer file;
    file.open(QIODevice::WriteOnly);
    EXPECT_TRUE(plc::writeTrendCsv(
        &file, {{QStringLiteral("a \"b\""), QStringLiteral("°C"), series.steps(0, 2000)}}, 0, 2000));
    EXPECT_EQ("time,name,unit,min,max\n"
              "1970-01-01T00:00:00.000Z,\"a \"\"b\"\"\",\"°C\",5,5\n"
              "1970-01-01T00:00:01.500Z,\"a \"\"b\"\"\",\"°C\",,\n",
              file.data().toStdString());
}

class TrendPanelTest : public testing::Test
{
protected:
    TrendPanelTest()
    {
        panel.setSource(&source);
        panel.resize(800, 400);
        panel.show();
    }

    void comes(int variable, qint64 atMs, std::vector<quint32> values)
    {
        plc::Snapshot news;
        news.samples.push_back({variable, atMs, std::move(values)});
        panel.apply(news);
    }

    test::FakeSource source{"speed,9,100,,int16,0.1,m/min,1,,,\n"
                            "pump,1,17,,bit,,,,,,\n"
                            "recipe,13,0,9,text,,,,,,\n"
                            "level,9,101,,uint16,,mm,,,,\n"
                            "pair,9,102,2,uint16,,bar,,,,\n"};
    plc::TrendPanel panel;
};

TEST_F(TrendPanelTest, BeginsWithWhatWasBeforeItWasAskedFor)
{
    comes(0, source.now - 5000, {100});
    comes(0, source.now - 3000, {200});
    panel.add({QStringLiteral("speed")});
    EXPECT_EQ("995000,10 997000,10 997000,20 1000000,20", text(panel.line(0)));
}

TEST_F(TrendPanelTest, TakesWhatIsDroppedOnIt)
{
    QMimeData data;
    data.setData(QLatin1String(plc::variablesMimeType), "speed\npump");
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&panel, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&panel, &drop);
    EXPECT_EQ("speed pump", panel.variables().join(QLatin1Char(' ')).toStdString());
}

TEST_F(TrendPanelTest, UnitsHaveAxesOfTheirOwnAndBitsAPlot)
{
    panel.add({QStringLiteral("speed"), QStringLiteral("level")});
    EXPECT_EQ(1, panel.lanes()) << "left and right";
    panel.add({QStringLiteral("pair"), QStringLiteral("pump"), QStringLiteral("recipe")});
    EXPECT_EQ(3, panel.lanes());
    EXPECT_EQ(5, panel.curves()) << "two of the pair, none of the text";
}

TEST_F(TrendPanelTest, TheCursorReadsAllCurvesAtATime)
{
    comes(0, source.now - 5000, {100});
    comes(0, source.now - 3000, {200});
    comes(1, source.now - 4000, {1});
    comes(1, source.now - 2000, {});
    panel.add({QStringLiteral("speed"), QStringLiteral("pump")});
    panel.setCursor(source.now - 3500);
    EXPECT_EQ("10.0 m/min", panel.reading(0).toStdString());
    EXPECT_EQ("on", panel.reading(1).toStdString());
    panel.setCursor(source.now - 1000);
    EXPECT_EQ("20.0 m/min", panel.reading(0).toStdString());
    EXPECT_EQ("\u2013", panel.reading(1).toStdString()) << "in a gap";
}

TEST_F(TrendPanelTest, KeysPanZoomAndFollow)
{
    panel.add({QStringLiteral("speed")});
    QTest::keyClick(&panel, Qt::Key_Left);
    EXPECT_FALSE(panel.view().isFollowing());
    EXPECT_EQ(source.now - 6000, panel.view().toMs());
    QTest::keyClick(&panel, Qt::Key_End);
    EXPECT_TRUE(panel.view().isFollowing());
    QTest::keyClick(&panel, Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_TRUE(panel.view().isFollowing()) << "only the cursor moves";
}

TEST_F(TrendPanelTest, RemovedCurvesLeaveTheOthers)
{
    panel.add({QStringLiteral("speed"), QStringLiteral("pump")});
    panel.findChild<QTreeWidget*>()->topLevelItem(0)->setSelected(true);
    panel.removeSelected();
    EXPECT_EQ("pump", panel.variables().join(QLatin1Char(' ')).toStdString());
    EXPECT_EQ(1, panel.lanes());
}

TEST_F(TrendPanelTest, ALogShowsWhatTheWindowDidNotSee)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("log.sqlite"));
    {
        const auto store = plc::makeSampleStore(path, {});
        store->open({{QStringLiteral("speed"), QStringLiteral("m/min"), QString(), 1}});
        store->write({{0, source.now - 20000, plc::SampleState::Fresh, QStringLiteral("7.5")},
                      {0, source.now - 10000, plc::SampleState::Stale, QString()}});
    }
    comes(0, source.now - 5000, {100});
    panel.add({QStringLiteral("speed")});
    panel.openHistory(path);
    const auto valueAt = [this](qint64 ms) {
        panel.setCursor(ms);
        return panel.reading(0).toStdString();
    };
    EXPECT_TRUE(test::until([&] { return valueAt(source.now - 15000) == "7.5 m/min"; }));
    EXPECT_EQ("\u2013", valueAt(source.now - 7000));
    EXPECT_EQ("10.0 m/min", valueAt(source.now - 1000));
}

TEST_F(TrendPanelTest, SavesAnImageAndATable)
{
    const QTemporaryDir folder;
    comes(0, source.now - 5000, {100});
    panel.add({QStringLiteral("speed")});
    EXPECT_TRUE(panel.saveImage(folder.filePath(QStringLiteral("trend.png"))));
    EXPECT_EQ(2 * panel.width(), QImage(folder.filePath(QStringLiteral("trend.png"))).width());
    QString told;
    QObject::connect(&panel, &plc::TrendPanel::told, [&told](const QString& words) { told = words; });
    panel.saveCsv(folder.filePath(QStringLiteral("trend.csv")));
    EXPECT_TRUE(test::until([&told] { return told.endsWith(QLatin1String("trend.csv is saved")); }));
}

} // namespace
