// SPDX-License-Identifier: MIT
#include "simulator/simulated_controller.h"
#include "window/desk/main_window.h"
#include "window/desk/timed_application.h"
#include "window/frames/frame_panel.h"
#include "window/table/state_look.h"
#include "window/table/table_model.h"
#include "window/table/table_panel.h"
#include "window/trend/trend_panel.h"

#include "support/built_files.h"
#include "window/fake_source.h"
#include "window/until.h"

#include <QAction>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QLineEdit>
#include <QTableView>
#include <QtTest>

#include <malloc.h>

#include <ctime>
#include <limits>

// Of the address sanitizer, where there is one.
// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" std::size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak));

namespace
{

bool isSanitized()
{
    return __sanitizer_get_current_allocated_bytes != nullptr;
}

// Sanitizers make everything several times slower.
double longestAllowedMs()
{
    return isSanitized() ? 1000 : 50;
}

std::size_t allocatedBytes()
{
    return isSanitized() ? __sanitizer_get_current_allocated_bytes() : mallinfo2().uordblks;
}

plc::TimedApplication* application()
{
    return static_cast<plc::TimedApplication*>(QCoreApplication::instance());
}

/// So many words from 0 on, each of which changes all the time.
std::vector<plc::ListedVariable> movingWords(simulator::SimulatedController* controller, int count)
{
    std::vector<plc::ListedVariable> variables;
    for (int element = 0; element < count; ++element) {
        simulator::MovingPlace place{1, element, {}};
        place.value = {simulator::MovingValue::Random, simulator::MovingValue::Word, 0, 1000, 100};
        controller->memory().move(place);
        plc::ListedVariable variable;
        variable.name = QStringLiteral("value %1").arg(element);
        variable.elements.element = element;
        variable.min = 0;
        variable.max = element % 10 == 0 ? 900 : 1000; // some are outside now and then
        variables.push_back(variable);
    }
    return variables;
}

void press(QWidget* window, const QString& text)
{
    for (QAction* action : window->findChildren<QAction*>()) {
        if (action->text().remove(QLatin1Char('&')) == text)
            action->trigger();
    }
}

TEST(Speed, NoEventTakesLongWithTenThousandVariablesAtTenRefreshesASecond)
{
    simulator::SimulatedController controller;
    plc::Watched watched;
    watched.variables = movingWords(&controller, 10000);
    controller.start();
    watched.settings.driverPath = QString::fromUtf8(builtDriver());
    watched.settings.port = controller.port();
    watched.settings.maxBlockCount = 125;
    watched.settings.timeoutMs = 5000;
    plc::MainWindow window;
    window.show();
    window.open(watched);
    plc::TablePanel* const table = window.table();
    ASSERT_TRUE(test::until([table] { return table->model()->look(9999) != plc::Look::Waiting; }));
    long changes = 0;
    QObject::connect(table->model(), &QAbstractItemModel::dataChanged, [&changes] { ++changes; });
    application()->forget();
    const unsigned long requests = controller.requests();
    QElapsedTimer clock;
    clock.start();
    window.trend()->add({QStringLiteral("value 1"), QStringLiteral("value 2"), QStringLiteral("value 3")});
    const QString typed = QStringLiteral("value 12");
    for (int step = 0; step < 20; ++step) {
        if (step == 2)
            press(&window, QStringLiteral("Trouble first"));
        if (step == 6)
            table->view()->sortByColumn(plc::TableModel::Value, Qt::AscendingOrder);
        if (step > 8 && step < 9 + typed.size())
            table->findChild<QLineEdit*>()->setText(typed.left(step - 8));
        table->view()->scrollTo(
            table->view()->model()->index(step * 37 % std::max(1, table->view()->model()->rowCount()), 0));
        QTest::qWait(120);
    }
    const double refreshes = static_cast<double>(controller.requests() - requests) / 80 * 1000 /
                             static_cast<double>(clock.elapsed()); // of 125 words each
    EXPECT_GT(refreshes, isSanitized() ? 0.1 : 1) << "a second; a busy machine may not reach ten";
    EXPECT_GT(changes, isSanitized() ? 1 : 10);
    EXPECT_LT(application()->longestEventMs(), longestAllowedMs())
        << application()->longestEvent().toStdString();
    RecordProperty("longest_event_us", static_cast<int>(application()->longestEventMs() * 1000));
    std::printf("%.1f refreshes a second, longest of %ld events: %.1f ms (%s)\n", refreshes,
                application()->events(), application()->longestEventMs(),
                qPrintable(application()->longestEvent()));
}

/// What a beat brings of a source with so many variables.
plc::Snapshot beat(const test::FakeSource& source, int variables, int number)
{
    plc::Snapshot news;
    for (int index = 0; index < variables; ++index) {
        const auto value = static_cast<quint32>((number * 7 + index) % 1000);
        news.values.push_back(test::answered(source, index, {value}).values.front());
        for (int sample = 0; sample < 5; ++sample)
            news.samples.push_back(
                {index, source.now + sample * 100, {value + static_cast<quint32>(sample)}});
    }
    plc::FrameEntry frame;
    frame.frame = frame.exchange.reply = QByteArray(200, 'x');
    news.frames.assign(10, frame);
    return news;
}

TEST(Speed, MemoryIsFlatOverAnHour)
{
    QByteArray lines;
    for (int index = 0; index < 10; ++index)
        lines +=
            "value " + QByteArray::number(index) + ",9," + QByteArray::number(index) + ",,uint16,,,,,,\n";
    test::FakeSource source(lines.constData());
    plc::TableModel table;
    plc::TrendPanel trend;
    plc::FramePanel frames;
    table.setSource(&source);
    trend.setSource(&source);
    frames.setSource(&source);
    trend.add({QStringLiteral("value 1"), QStringLiteral("value 2")});
    const int beatMs = 500;
    std::size_t afterHalf = 0;
    for (int number = 0; number < 3 * 3600000 / 2 / beatMs; ++number) {
        source.now += beatMs;
        const plc::Snapshot news = beat(source, 10, number);
        table.apply(news);
        trend.apply(news);
        frames.apply(news);
        if (number % 100 == 0)
            trend.draw();
        if (number == 3600000 / 2 / beatMs)
            afterHalf = allocatedBytes();
    }
    const auto grown = static_cast<double>(allocatedBytes()) - static_cast<double>(afterHalf);
    EXPECT_LT(grown, 300000) << "from " << afterHalf << " bytes, in the hour behind the first half";
    std::printf("grown by %.0f bytes in an hour, from %zu\n", grown, afterHalf);
}

TEST(Speed, DrawingAnHourCostsAsDrawingAMinute)
{
    test::FakeSource source("value,9,1,,uint16,,,,,,\n");
    plc::TrendPanel trend;
    trend.setSource(&source);
    trend.resize(1000, 400);
    trend.show();
    plc::Snapshot news;
    for (qint64 ms = 0; ms < 3600000; ms += 100)
        news.samples.push_back({0, source.now + ms, {static_cast<quint32>(ms / 100 % 777)}});
    source.now += 3600000;
    trend.apply(news);
    trend.add({QStringLiteral("value")});
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&trend));
    const auto costOfDrawing = [&trend] { // in processor time, which others take nothing of
        std::clock_t best = std::numeric_limits<std::clock_t>::max();
        for (int run = 0; run < 5; ++run) {
            const std::clock_t begin = std::clock();
            trend.draw();
            trend.grab();
            best = std::min(best, std::clock() - begin);
        }
        return 1000.0 * static_cast<double>(best) / CLOCKS_PER_SEC;
    };
    const double minute = costOfDrawing();
    while (trend.view().spanMs() < 3600000)
        press(&trend, QStringLiteral("Zoom out"));
    const double hour = costOfDrawing();
    EXPECT_GT(trend.line(0).size(), 1000);
    EXPECT_LT(hour, 3 * minute + 10) << "ms, a minute costs " << minute;
    std::printf("a minute: %.2f ms, an hour: %.2f ms\n", minute, hour);
}

} // namespace
