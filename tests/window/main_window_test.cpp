// SPDX-License-Identifier: MIT
#include "simulator/simulated_controller.h"
#include "window/captures/capture_bar.h"
#include "window/desk/main_window.h"
#include "window/desk/start_dialog.h"
#include "window/desk/start_line.h"
#include "window/stations/station_panel.h"
#include "window/table/table_model.h"
#include "window/table/table_panel.h"
#include "window/trend/trend_panel.h"

#include "support/built_files.h"
#include "support/controller_values.h"
#include "window/fake_source.h"
#include "window/until.h"

#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDockWidget>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QTableView>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>

namespace
{

using plc::TableModel;
using test::until;

/// What an earlier window kept is gone before one is made.
struct FreshSettings {
    FreshSettings() { QSettings().clear(); }
};

class MainWindowTest : public testing::Test, private FreshSettings
{
protected:
    MainWindowTest()
    {
        controller.start();
        watched.settings.driverPath = QString::fromUtf8(builtDriver());
        watched.settings.port = controller.port();
        watched.settings.pollMs = 5;
        watched.variables = test::listed("speed,9,100,,int16,0.1,m/min,1,-30,30,\n"
                                         "level,9,101,,uint16,,,,,,\n"
                                         "pump,1,17,,bit,,,,,,\n"
                                         "meter,14,200,,uint32,,Wh,,,,r\n");
        putIntoController(controller, 9, 100, 100);
    }

    void open()
    {
        window.open(watched);
        window.show();
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        ASSERT_TRUE(until([this] { return value("speed") == "10.0 m/min"; }));
    }

    QModelIndex cell(const char* name, int column) const
    {
        const QAbstractItemModel* shown = window.table()->view()->model();
        for (int row = 0; row < shown->rowCount(); ++row) {
            if (shown->index(row, 0).data() == QLatin1String(name))
                return shown->index(row, column);
        }
        return QModelIndex();
    }
    std::string value(const char* name) const
    {
        return cell(name, TableModel::Value).data().toString().toStdString();
    }
    std::string mark(const char* name) const
    {
        return cell(name, TableModel::Value).data(TableModel::MarkTextRole).toString().toStdString();
    }

    void click(const char* name, Qt::KeyboardModifiers keys = Qt::NoModifier)
    {
        QTableView* view = window.table()->view();
        QTest::mouseClick(view->viewport(), Qt::LeftButton, keys,
                          view->visualRect(cell(name, TableModel::Value)).center());
    }
    void doubleClick(const char* name)
    {
        click(name);
        QTableView* view = window.table()->view();
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, Qt::NoModifier,
                           view->visualRect(cell(name, TableModel::Value)).center());
    }

    QDialog* dialog() const { return window.findChild<QDialog*>(); }
    QLineEdit* field(int index = 0) const { return dialog()->findChildren<QLineEdit*>().at(index); }

    simulator::SimulatedController controller;
    plc::Watched watched;
    plc::MainWindow window{QString::fromUtf8(builtDriver())};
};

TEST_F(MainWindowTest, ADoubleClickAsksAndThenWrites)
{
    open();
    doubleClick("speed");
    ASSERT_TRUE(dialog());
    QTest::keyClicks(field(), QStringLiteral("20"));
    EXPECT_EQ(100u, inController(controller, 9, 100)) << "before it was agreed to";
    QTest::keyClick(field(), Qt::Key_Return);
    EXPECT_TRUE(until([this] { return mark("speed") == "20.0 m/min confirmed"; }));
    EXPECT_TRUE(until([this] { return value("speed") == "20.0 m/min"; }));
    EXPECT_EQ(200u, inController(controller, 9, 100));
}

TEST_F(MainWindowTest, EscapeWritesNothing)
{
    open();
    doubleClick("speed");
    QTest::keyClicks(field(), QStringLiteral("20"));
    QTest::keyClick(dialog(), Qt::Key_Escape);
    EXPECT_TRUE(until([this] { return !dialog(); }));
    EXPECT_EQ(100u, inController(controller, 9, 100));
}

TEST_F(MainWindowTest, AValueOutsideItsLimitsCannotBeWritten)
{
    open();
    doubleClick("speed");
    field()->setText(QStringLiteral("30.1"));
    const auto buttons = dialog()->findChildren<QPushButton*>();
    const auto write = std::find_if(buttons.begin(), buttons.end(),
                                    [](const QPushButton* button) { return button->isDefault(); });
    ASSERT_NE(buttons.end(), write);
    EXPECT_FALSE((*write)->isEnabled());
    field()->setText(QStringLiteral("30"));
    EXPECT_TRUE((*write)->isEnabled());
}

TEST_F(MainWindowTest, ABitIsOfferedAsWhatItIsNot)
{
    open();
    doubleClick("pump");
    ASSERT_TRUE(dialog());
    EXPECT_EQ("on", dialog()->findChild<QComboBox*>()->currentText().toStdString());
    QTest::keyClick(dialog(), Qt::Key_Return);
    EXPECT_TRUE(until([this] { return value("pump") == "on"; }));
}

TEST_F(MainWindowTest, WhatIsOnlyReadIsNotAskedFor)
{
    open();
    doubleClick("meter");
    EXPECT_FALSE(dialog());
}

TEST_F(MainWindowTest, WritesSeveralRowsAtOnceAndOnlyThoseThatWereChanged)
{
    open();
    click("speed");
    click("level", Qt::ControlModifier);
    click("pump", Qt::ControlModifier);
    QTest::keyClick(window.table()->view(), Qt::Key_Return);
    ASSERT_TRUE(dialog());
    field(0)->setText(QStringLiteral("-5"));
    field(1)->setText(QStringLiteral("321"));
    QTest::keyClick(field(1), Qt::Key_Return);
    EXPECT_TRUE(until([this] { return value("speed") == "-5.0 m/min" && value("level") == "321"; }));
    EXPECT_EQ("", mark("pump"));
}

TEST_F(MainWindowTest, AWriteThatFailsSaysSoAndIsNeverShownAsValue)
{
    watched.settings.timeoutMs = 30;
    watched.settings.retryLimit = 0;
    open();
    controller.setSilent(1, true);
    doubleClick("speed");
    QTest::keyClicks(field(), QStringLiteral("20"));
    QTest::keyClick(field(), Qt::Key_Return);
    bool wasShown = false;
    EXPECT_TRUE(until([&] {
        wasShown = wasShown || value("speed") == "20.0 m/min";
        return mark("speed").rfind("20.0 m/min not written: ", 0) == 0;
    }));
    EXPECT_NE(std::string::npos, mark("speed").find("no reply within 30 ms")) << mark("speed");
    EXPECT_FALSE(wasShown);
}

TEST_F(MainWindowTest, TypingFiltersTheTable)
{
    open();
    QTest::keyClick(&window, Qt::Key_F, Qt::ControlModifier);
    ASSERT_TRUE(qobject_cast<QLineEdit*>(QApplication::focusWidget()));
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("met"));
    EXPECT_EQ(1, window.table()->view()->model()->rowCount());
}

TEST_F(MainWindowTest, ASimulatedMachineIsOfferedAndItsValuesMove)
{
    window.setWindowTitle(QString());
    window.show();
    window.ask();
    auto* start = window.findChild<plc::StartDialog*>();
    ASSERT_TRUE(start);
    start->accept(); // where no controller was opened before it is what is offered
    EXPECT_TRUE(until([this] { return value("temperature").find(" \u00b0C") != std::string::npos; }));
    const std::string before = value("bottles today");
    EXPECT_TRUE(until([&] { return value("bottles today") != before; }));
}

TEST_F(MainWindowTest, TheDialogSaysWhatIsWrongAndRemembersWhatWasRight)
{
    window.show();
    const auto choose = [this](const char* place, const char* variables) {
        window.ask();
        auto* start = window.findChild<plc::StartDialog*>();
        start->findChildren<QRadioButton*>().first()->setChecked(true);
        start->findChild<QComboBox*>()->setCurrentText(QLatin1String(place));
        for (QLineEdit* edit : start->findChildren<QLineEdit*>()) {
            if (edit->placeholderText().startsWith(QLatin1String("9:100")))
                edit->setText(QLatin1String(variables));
        }
        start->accept();
        return start;
    };
    QPointer<plc::StartDialog> wrong = choose("127.0.0.1:99999", "9:100");
    EXPECT_EQ(0, wrong->result());
    QStringList words;
    for (const QLabel* label : wrong->findChildren<QLabel*>())
        words << label->text();
    EXPECT_TRUE(words.join(QLatin1Char(' ')).contains(QLatin1String("a port from 1 to 65535")));
    wrong->reject();
    ASSERT_TRUE(until([&wrong] { return wrong.isNull(); }));
    const QString right = QStringLiteral("127.0.0.1:%1").arg(controller.port());
    choose(right.toLatin1().constData(), "9:100");
    EXPECT_TRUE(until([this] { return value("9:100") == "100"; }));
    ASSERT_TRUE(until([this] { return !window.findChild<plc::StartDialog*>(); }));
    window.ask();
    EXPECT_EQ(right, window.findChild<plc::StartDialog*>()->findChild<QComboBox*>()->currentText());
}

TEST_F(MainWindowTest, KeepsTheLayoutAndTheCurves)
{
    open();
    window.trend()->add({QStringLiteral("speed")});
    window.findChild<QDockWidget*>(QStringLiteral("stations"))->hide();
    window.close();
    plc::MainWindow next;
    next.open(watched);
    next.show();
    EXPECT_TRUE(next.findChild<QDockWidget*>(QStringLiteral("stations"))->isHidden());
    EXPECT_TRUE(until([&next] { return next.trend()->curves() == 1; }));
}

TEST_F(MainWindowTest, ACaptureTakesThePlaceOfTheController)
{
    const QTemporaryDir folder;
    watched.captureTo = folder.filePath(QStringLiteral("report.jsonl"));
    open();
    window.openCapture(watched.captureTo);
    EXPECT_TRUE(until([this] { return window.source() && !window.source()->isLive(); }));
    EXPECT_TRUE(until([this] { return value("speed") == "10.0 m/min"; })) << value("speed");
    EXPECT_TRUE(window.captureBar()->isVisible());
    doubleClick("speed");
    EXPECT_FALSE(dialog()) << "nothing can be written";
    window.open(watched);
    EXPECT_TRUE(until([this] { return window.source() && window.source()->isLive(); }));
    EXPECT_FALSE(window.captureBar()->isVisible());
}

TEST_F(MainWindowTest, AStationIsSwitchedOffAndOn)
{
    open();
    Q_EMIT window.stations()->switched(1, false);
    EXPECT_TRUE(until([this] {
        return cell("speed", TableModel::State).data().toString() == QLatin1String("switched off");
    }));
    EXPECT_EQ("10.0 m/min", value("speed"));
    Q_EMIT window.stations()->switched(1, true);
    EXPECT_TRUE(until(
        [this] { return cell("speed", TableModel::State).data().toString() == QLatin1String("fresh"); }));
}

TEST_F(MainWindowTest, EveryPartThatKeysReachHasANameForScreenReaders)
{
    open();
    int parts = 0;
    for (QWidget* part : window.findChildren<QWidget*>()) {
        const bool isPart = qobject_cast<QLineEdit*>(part) || qobject_cast<QComboBox*>(part) ||
                            qobject_cast<QTableView*>(part) || qobject_cast<QTreeWidget*>(part) ||
                            qobject_cast<QAbstractSlider*>(part) || qobject_cast<QPlainTextEdit*>(part) ||
                            qobject_cast<QAbstractButton*>(part);
        if (!isPart || (part->focusPolicy() & Qt::TabFocus) == 0)
            continue;
        QAccessibleInterface* const words = QAccessible::queryAccessibleInterface(part);
        ASSERT_TRUE(words);
        EXPECT_NE("", words->text(QAccessible::Name).toStdString()) << part->metaObject()->className();
        ++parts;
    }
    EXPECT_GT(parts, 15);
}

TEST(Appearance, ChangesAllColoursAtOnce)
{
    plc::setAppearance(plc::Appearance::Dark);
    EXPECT_TRUE(plc::isDark(QApplication::palette()));
    plc::setAppearance(plc::Appearance::Light);
    EXPECT_FALSE(plc::isDark(QApplication::palette()));
}

TEST(StateLook, ColoursStandOutFromTheirBackground)
{
    for (const plc::Appearance appearance : {plc::Appearance::Light, plc::Appearance::Dark}) {
        plc::setAppearance(appearance);
        const QPalette palette = QApplication::palette();
        const double ground = palette.color(QPalette::Base).lightnessF();
        for (const plc::Look look : {plc::Look::Fresh, plc::Look::Waiting, plc::Look::Stale,
                                     plc::Look::Outside, plc::Look::Off, plc::Look::Failed})
            EXPECT_GT(std::abs(plc::lookColour(look, palette).lightnessF() - ground), 0.35)
                << lookWord(look).toStdString();
    }
}

TEST(StartLine, TakesTheOptionsOfWatch)
{
    const plc::StartLine line =
        plc::parseStartLine({QStringLiteral("plcwindow"), QStringLiteral("9:100x2"),
                             QStringLiteral("--controller"), QStringLiteral("127.0.0.1:1502")});
    ASSERT_TRUE(line.watched) << line.text.toStdString();
    EXPECT_EQ(1502, line.watched->settings.port);
    ASSERT_EQ(1u, line.watched->variables.size());
    EXPECT_EQ("9:100x2", line.watched->variables[0].name.text().toStdString());
}

TEST(StartLine, AsksForAControllerWhenNothingIsTyped)
{
    const plc::StartLine line = plc::parseStartLine({QStringLiteral("plcwindow")});
    EXPECT_EQ(plc::StartLine::Run, line.wish);
    EXPECT_FALSE(line.watched);
}

TEST(StartLine, RefusesWhatIsNotForAWindow)
{
    const plc::StartLine line =
        plc::parseStartLine({QStringLiteral("plcwindow"), QStringLiteral("9:100"), QStringLiteral("--json"),
                             QStringLiteral("--controller"), QStringLiteral("127.0.0.1")});
    EXPECT_EQ(plc::StartLine::Refuse, line.wish);
    EXPECT_EQ("plcwindow: --json is for plcpanel watch, not for the window\n"
              "plcwindow --help explains what it takes.",
              line.text.toStdString());
}

TEST(StartLine, NamesItselfWhereTheLineIsWrong)
{
    const plc::StartLine line =
        plc::parseStartLine({QStringLiteral("plcwindow"), QStringLiteral("--nonsense")});
    EXPECT_EQ(plc::StartLine::Refuse, line.wish);
    EXPECT_TRUE(line.text.startsWith(QStringLiteral("plcwindow: "))) << line.text.toStdString();
    EXPECT_TRUE(line.text.contains(QStringLiteral("nonsense"))) << line.text.toStdString();
    EXPECT_TRUE(line.text.endsWith(QStringLiteral("\nplcwindow --help explains what it takes.")));
    EXPECT_FALSE(line.text.contains(QStringLiteral("plcpanel"))) << line.text.toStdString();
}

TEST(StartLine, TellsHowACaptureIsOpened)
{
    const plc::StartLine line =
        plc::parseStartLine({QStringLiteral("plcwindow"), QStringLiteral("/tmp/a.pcapng")});
    EXPECT_EQ(plc::StartLine::Refuse, line.wish);
    EXPECT_TRUE(line.text.startsWith(QStringLiteral("plcwindow: /tmp/a.pcapng looks like a capture")));
    EXPECT_TRUE(line.text.contains(QStringLiteral("File, Open capture"))) << line.text.toStdString();
}

TEST(StartLine, KnowsThatThereIsNoDisplay)
{
    const char* const names[] = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};
    std::vector<std::pair<const char*, QByteArray>> before;
    for (const char* name : names) {
        if (qEnvironmentVariableIsSet(name))
            before.emplace_back(name, qgetenv(name));
        qunsetenv(name);
    }
    EXPECT_FALSE(plc::hasDisplay({QStringLiteral("plcwindow")}));
    EXPECT_TRUE(plc::hasDisplay({QStringLiteral("plcwindow"), QStringLiteral("-platform")}));
    for (const char* name : names) {
        qputenv(name, "some");
        EXPECT_TRUE(plc::hasDisplay({QStringLiteral("plcwindow")})) << name;
        qunsetenv(name);
    }
    for (const auto& each : before)
        qputenv(each.first, each.second);
}

} // namespace
