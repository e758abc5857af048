// SPDX-License-Identifier: MIT
#include "simulator/simulated_controller.h"
#include "window/desk/main_window.h"
#include "window/desk/start_line.h"
#include "window/table/table_model.h"
#include "window/table/table_panel.h"

#include "support/built_files.h"
#include "support/controller_values.h"
#include "window/fake_source.h"
#include "window/until.h"

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QtTest>

namespace
{

using plc::TableModel;
using test::until;

class MainWindowTest : public testing::Test
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
    plc::MainWindow window;
};

TEST_F(MainWindowTest, ADoubleClickAsksAndThenWrites)
{
    open();
    doubleClick("speed");
    ASSERT_TRUE(dialog());
    QTest::keyClicks(field(), QStringLiteral("20"));
    EXPECT_EQ(100u, inController(controller, 9, 100)) << "before it was agreed to";
    QTest::keyClick(field(), Qt::Key_Return);
    EXPECT_TRUE(until([this] { return mark("speed") == "20.0 m/min written and confirmed"; }));
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

TEST(StartLine, TakesTheOptionsOfWatch)
{
    const plc::StartLine line =
        plc::parseStartLine({QStringLiteral("plcwindow"), QStringLiteral("9:100x2"),
                             QStringLiteral("--controller"), QStringLiteral("127.0.0.1:1502")});
    ASSERT_TRUE(line.watched) << line.text.toStdString();
    EXPECT_EQ(1502, line.watched->settings.port);
    ASSERT_EQ(1u, line.watched->variables.size());
    EXPECT_EQ("9:100x2", line.watched->variables[0].name.toStdString());
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
    EXPECT_EQ("--json is for plcpanel watch; the window shows it itself", line.text.toStdString());
}

} // namespace
