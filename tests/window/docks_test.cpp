// SPDX-License-Identifier: MIT
#include "capture/capture.h"
#include "driver/plcdriver.h"
#include "runtime/cycle/runtime.h"
#include "simulator/simulated_controller.h"
#include "window/captures/capture_bar.h"
#include "window/captures/loaded_capture.h"
#include "window/frames/frame_model.h"
#include "window/frames/frame_panel.h"
#include "window/stations/round_trip_chart.h"
#include "window/stations/station_panel.h"

#include "support/built_files.h"
#include "support/controller_values.h"
#include "support/hex.h"
#include "window/fake_source.h"
#include "window/until.h"

#include <QAbstractItemModelTester>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSlider>
#include <QTableView>
#include <QTemporaryDir>
#include <QTranslator>
#include <QTreeWidget>
#include <QtTest>

namespace
{

using plc::FrameEntry;
using plc::FrameModel;
using plc::StationReport;

plc::Variable elements(int area, int element, int count, int station = 1)
{
    plc::Variable variable;
    variable.area = area;
    variable.element = element;
    variable.count = count;
    variable.station = station;
    return variable;
}

/// \return a read of words of area 9 that was answered
FrameEntry readOf(int element, int count, int station = 1)
{
    FrameEntry entry;
    entry.atMs = 1000;
    entry.station = station;
    entry.elements = elements(9, element, count, station);
    entry.frame = test::fromHex("00 00 00 00 00 06 01 03 00 64 00 02");
    entry.exchange.sent = true;
    entry.exchange.sentFrame = test::fromHex("00 07 00 00 00 06 01 03 00 64 00 02");
    entry.exchange.reply = test::fromHex("00 00 00 00 00 07 01 03 04 12 34 00 07");
    entry.durationMs = 3;
    entry.result = PLC_DONE;
    return entry;
}

FrameEntry unanswered(FrameEntry entry)
{
    entry.exchange.reply.clear();
    entry.result = PLC_LOCAL_NO_REPLY;
    return entry;
}

class FrameModelTest : public testing::Test
{
protected:
    std::string text(int row, int column) const
    {
        return model.index(row, column).data().toString().toStdString();
    }

    FrameModel model;
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(FrameModelTest, TellsFramesAndRepliesInWordsAndHex)
{
    model.append({readOf(100, 2)});
    EXPECT_EQ("unit 1: read 2 registers from 100", text(0, FrameModel::Request));
    EXPECT_EQ("unit 1: registers 4660 7", text(0, FrameModel::Reply));
    EXPECT_EQ("00 07 00 00 00 06 01 03 00 64 00 02", text(0, FrameModel::RequestBytes));
    EXPECT_EQ("00 00 00 00 00 07 01 03 04 12 34 00 07", text(0, FrameModel::ReplyBytes));
}

TEST_F(FrameModelTest, FiltersByStationVariableAndTrouble)
{
    model.append({readOf(100, 2), unanswered(readOf(200, 2)), readOf(100, 2, 2)});
    plc::FrameFilter filter;
    filter.station = 2;
    model.setFilter(filter);
    EXPECT_EQ(1, model.rowCount());
    filter = {};
    filter.troubleOnly = true;
    model.setFilter(filter);
    EXPECT_EQ(1, model.rowCount());
    EXPECT_TRUE(FrameModel::hasTrouble(model.frame(0)));
    filter = {};
    filter.isVariable = true;
    filter.variables = {elements(9, 101, 1, 1)};
    model.setFilter(filter);
    EXPECT_EQ(1, model.rowCount());
    model.append({readOf(300, 1), readOf(101, 1)});
    EXPECT_EQ(2, model.rowCount()) << "what comes later is filtered as well";
}

TEST_F(FrameModelTest, FindsTheLastFrameOfAVariable)
{
    model.append({readOf(100, 2), readOf(200, 2), readOf(100, 2), readOf(300, 2)});
    EXPECT_EQ(2, model.rowOf(elements(9, 101, 1)));
    EXPECT_EQ(-1, model.rowOf(elements(9, 102, 1)));
}

TEST_F(FrameModelTest, KeepsSoManyAndNoMore)
{
    const std::vector<FrameEntry> many(FrameModel::mostFrames / 2, readOf(100, 2));
    for (int times = 0; times < 3; ++times)
        model.append(many);
    model.append({readOf(200, 1)});
    EXPECT_EQ(static_cast<int>(FrameModel::mostFrames), model.rowCount());
    EXPECT_EQ(200, model.frame(model.rowCount() - 1).elements.element);
}

TEST(FramePanel, PointsAtTheFrameOfAVariableAndHolds)
{
    const test::FakeSource source("level,9,101,,uint16,,,,,,\n");
    plc::FramePanel panel;
    panel.setSource(&source);
    panel.show();
    plc::Snapshot news;
    news.frames = {readOf(100, 2), readOf(200, 2)};
    panel.apply(news);
    panel.find(0);
    EXPECT_EQ(0, panel.view()->currentIndex().row());
    EXPECT_TRUE(
        panel.findChild<QPlainTextEdit*>()->toPlainText().contains(QLatin1String("registers 4660 7")));
    panel.apply(news);
    EXPECT_EQ(2, panel.model()->rowCount()) << "what comes waits";
}

TEST(FramePanel, FiltersByTheNameOfAVariable)
{
    const test::FakeSource source("level,9,101,,uint16,,,,,,\nspeed,9,300,,int16,,,,,,\n");
    plc::FramePanel panel;
    panel.setSource(&source);
    plc::Snapshot news;
    news.frames = {readOf(100, 2), readOf(300, 2)};
    panel.apply(news);
    panel.setVariableWords(QStringLiteral("spe"));
    ASSERT_EQ(1, panel.model()->rowCount());
    EXPECT_EQ(300, panel.model()->frame(0).elements.element);
}

TEST(Stations, ConditionsHaveWords)
{
    StationReport report;
    EXPECT_EQ("not tried yet", conditionWords(report).toStdString());
    report.condition = plc::StationCondition::Pausing;
    report.nextTryMs = 2001;
    EXPECT_EQ("not answering, next try in 3 s", conditionWords(report).toStdString());
}

TEST(Stations, FailuresHaveReasonsInWords)
{
    plc::StationStatistics statistics;
    statistics.failuresByCode = {{41, 12}};
    EXPECT_EQ("12 \u00d7 no reply (code 41)", failureLines(statistics).join(QLatin1Char('\n')).toStdString());
}

TEST(Stations, AKeySwitchesTheChosenOneOffAndOn)
{
    plc::StationPanel panel;
    panel.begin(true);
    panel.show();
    plc::SessionReport report;
    report.stations.resize(2);
    report.stations[1].station = 3;
    panel.apply(report);
    std::vector<std::pair<int, bool>> switched;
    QObject::connect(&panel, &plc::StationPanel::switched,
                     [&switched](int station, bool on) { switched.emplace_back(station, on); });
    panel.list()->setCurrentItem(panel.list()->topLevelItem(1));
    QTest::keyClick(panel.list(), Qt::Key_Return);
    report.stations[1].condition = plc::StationCondition::SwitchedOff;
    panel.apply(report);
    QTest::keyClick(panel.list(), Qt::Key_Return);
    EXPECT_EQ((std::vector<std::pair<int, bool>>{{3, false}, {3, true}}), switched);
}

/// Words of another language, of which one begins like another.
class Translated : public QTranslator
{
public:
    Translated() { QCoreApplication::installTranslator(this); }

    bool isEmpty() const override { return false; }
    QString translate(const char*, const char* text, const char*, int) const override
    {
        const QLatin1String words(text);
        if (words == QLatin1String("switched off"))
            return QStringLiteral("aus");
        return words == QLatin1String("not answering") ? QStringLiteral("ausgefallen") : QString();
    }
};

TEST(Stations, WhetherOneIsOffDoesNotDependOnWords)
{
    const Translated words; // leaves the application with its end
    plc::StationPanel panel;
    panel.begin(true);
    plc::SessionReport report;
    report.stations.resize(1);
    report.stations[0].condition = plc::StationCondition::NotAnswering;
    panel.apply(report);
    bool isOn = true;
    QObject::connect(&panel, &plc::StationPanel::switched, [&isOn](int, bool on) { isOn = on; });
    QTest::keyClick(panel.list(), Qt::Key_Return);
    EXPECT_FALSE(isOn) << "one that does not answer was taken for one that is off";
    EXPECT_EQ("Switch &off", panel.findChild<QPushButton*>()->text().toStdString());
}

TEST(Stations, AScreenReaderHearsTheRoundTrips)
{
    plc::RoundTripChart chart;
    plc::RoundTrips trips;
    trips.add(500);
    trips.add(1500);
    chart.show(trips);
    EXPECT_EQ("2 replies in 0.50 to 1.50 ms, 1.00 ms on average, 1 below 1 ms, 1 1 to 2 ms",
              chart.accessibleName().toStdString());
}

/// A capture of a level that was 0, 10, 20, 30, and then failed.
class CaptureTest : public testing::Test
{
protected:
    void SetUp() override
    {
        controller.start();
        plc::Settings settings;
        settings.driverPath = QString::fromUtf8(builtDriver());
        settings.port = controller.port();
        settings.pollMs = 1;
        settings.timeoutMs = 100;
        settings.retryLimit = 0;
        path = folder.filePath(QStringLiteral("report.jsonl"));
        plc::Runtime runtime(settings);
        const int index = runtime.addCyclic(elements(9, 101, 1));
        runtime.setTap(plc::captureTo(path, settings, [](const QString&) {}));
        runtime.start();
        for (const quint32 value : {0u, 10u, 20u, 30u}) {
            QThread::msleep(3); // no two of them within the millisecond that a capture tells
            putIntoController(controller, 9, 101, value);
            ASSERT_TRUE(test::eventually([&] {
                return runtime.value(index).state == plc::ValueState::Fresh &&
                       runtime.value(index).values.front() == value;
            }));
        }
        controller.setSilent(1, true);
        ASSERT_TRUE(test::eventually([&] { return runtime.value(index).state == plc::ValueState::Failed; }));
        runtime.stop();
        wanted.settings.driverPath = settings.driverPath;
    }

    std::shared_ptr<plc::LoadedCapture> load()
    {
        const std::atomic<bool> stop{false};
        return std::make_shared<plc::LoadedCapture>(plc::loadCapture(path, wanted, stop));
    }

    QTemporaryDir folder;
    QString path;
    simulator::SimulatedController controller;
    plc::Watched wanted;
};

TEST_F(CaptureTest, ShowsAnyTimeOfIt)
{
    wanted.variables = test::listed("level,9,101,,uint16,,,,,,\n");
    const auto capture = load();
    ASSERT_EQ("", capture->error.toStdString());
    std::vector<quint32> levels;
    qint64 tenAtMs = 0;
    for (const auto& change : capture->changes[0]) { // a busy machine may have failed in between
        if (!change.news.answered || (!levels.empty() && levels.back() == change.news.values.front()))
            continue;
        levels.push_back(change.news.values.front());
        if (levels.back() == 10)
            tenAtMs = change.atMs;
    }
    EXPECT_EQ((std::vector<quint32>{0, 10, 20, 30}), levels);
    plc::CapturePlayer player(capture);
    player.seek(capture->lastMs);
    EXPECT_EQ(plc::ValueState::Failed, player.take().values.at(0).state);
    player.seek(tenAtMs);
    EXPECT_EQ(std::vector<quint32>{10}, player.take().values.at(0).values);
    EXPECT_TRUE(player.take().values.empty()) << "time stood still";
}

TEST_F(CaptureTest, WithoutAListItShowsWhatWasRead)
{
    const auto capture = load();
    ASSERT_EQ(1u, capture->watched.variables.size());
    EXPECT_EQ("9:101", capture->watched.variables[0].name.text().toStdString());
    EXPECT_FALSE(capture->frames.empty());
}

TEST_F(CaptureTest, HandsOutSamplesForCurvesWithAGapAtTheEnd)
{
    const auto capture = load();
    plc::CapturePlayer player(capture);
    const plc::Snapshot news = player.take();
    ASSERT_FALSE(news.samples.empty());
    EXPECT_TRUE(news.samples.back().values.empty());
}

TEST_F(CaptureTest, TheSliderSeeksAndPlayingStopsAtTheEnd)
{
    const auto capture = load();
    plc::CapturePlayer player(capture);
    plc::CaptureBar bar;
    bar.setPlayer(&player);
    bar.slider()->setValue(bar.slider()->maximum() / 2);
    EXPECT_NEAR(static_cast<double>(capture->firstMs + capture->lastMs) / 2,
                static_cast<double>(player.nowMs()), 2.0);
    bar.setPlaying(true);
    bar.advance(3600000);
    EXPECT_EQ(capture->lastMs, player.nowMs());
    EXPECT_EQ(bar.slider()->maximum(), bar.slider()->value());
}

TEST_F(CaptureTest, SaysWhatIsWrongWithAFile)
{
    path = folder.filePath(QStringLiteral("nothing.jsonl"));
    EXPECT_NE("", load()->error.toStdString());
}

} // namespace
