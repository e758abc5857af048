// SPDX-License-Identifier: MIT
#include "window/desk/main_window.h"

#include "simulator/simulated_controller.h"
#include "window/captures/capture_bar.h"
#include "window/captures/loaded_capture.h"
#include "window/desk/simulated.h"
#include "window/desk/start_dialog.h"
#include "window/desk/timed_application.h"
#include "window/frames/frame_panel.h"
#include "window/session/live_session.h"
#include "window/stations/station_panel.h"
#include "window/table/state_look.h"
#include "window/table/table_panel.h"
#include "window/trend/trend_panel.h"

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QFileDialog>
#include <QFileInfo>
#include <QIcon>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QPointer>
#include <QSettings>
#include <QSlider>
#include <QStatusBar>
#include <QThreadPool>

#include <stdexcept>

void initialiseResources()
{
    Q_INIT_RESOURCE(window); // of a static library
}

namespace plc
{

namespace
{

const int toldMs = 8000;
const int layoutVersion = 1; // another one: what was kept does not fit

} // namespace

MainWindow::MainWindow(const QString& driverPath)
    : m_driverPath(driverPath), m_table(new TablePanel), m_trend(new TrendPanel),
      m_stations(new StationPanel), m_frames(new FramePanel), m_captureBar(new CaptureBar),
      m_link(new QLabel), m_rate(new QLabel)
{
    initialiseResources();
    setWindowIcon(QIcon(QStringLiteral(":/plcwindow/plcwindow.svg")));
    setWindowTitle(tr("plcwindow"));
    setCentralWidget(m_table);
    addToolBar(Qt::BottomToolBarArea, m_captureBar);
    statusBar()->addWidget(m_link, 1);
    statusBar()->addPermanentWidget(m_rate);
    m_link->setAccessibleName(tr("connection"));
    makeDocks();
    makeMenus();
    resize(1240, 860);
    resizeDocks({m_docks.front()}, {430}, Qt::Vertical);
    restoreLayout();
    connect(&m_beat, &QTimer::timeout, this, &MainWindow::refresh);
    m_beat.start(beatMs);
}

MainWindow::~MainWindow()
{
    if (m_stopLoading)
        *m_stopLoading = true;
    present(nullptr, QString());
}

QDockWidget* MainWindow::dock(const QString& title, const char* name, QWidget* content)
{
    auto* made = new QDockWidget(title, this);
    made->setObjectName(QLatin1String(name));
    made->setWidget(content);
    addDockWidget(Qt::BottomDockWidgetArea, made);
    if (!m_docks.empty())
        tabifyDockWidget(m_docks.front(), made);
    m_docks.push_back(made);
    return made;
}

void MainWindow::makeDocks()
{
    setDockNestingEnabled(true);
    dock(tr("Trend"), "trend", m_trend)->raise();
    dock(tr("Frames"), "frames", m_frames);
    dock(tr("Stations"), "stations", m_stations);
    m_docks.front()->raise();
    connect(m_table, &TablePanel::trendWanted, m_trend, &TrendPanel::add);
    connect(m_table, &TablePanel::chosen, m_frames, &FramePanel::find);
    connect(m_table, &TablePanel::told, this, &MainWindow::tell);
    connect(m_trend, &TrendPanel::told, this, &MainWindow::tell);
    connect(m_stations, &StationPanel::switched, this, [this](int station, bool on) {
        if (m_session)
            m_session->setStation(station, on);
    });
}

void MainWindow::makeMenus()
{
    QMenu* file = menuBar()->addMenu(tr("&File"));
    file->addAction(tr("Open &controller…"), this, &MainWindow::ask, QKeySequence::New);
    file->addAction(tr("Open c&apture…"), this, &MainWindow::chooseCapture, QKeySequence::Open);
    file->addSeparator();
    file->addAction(tr("&Quit"), this, &QWidget::close, QKeySequence::Quit);
    QMenu* table = menuBar()->addMenu(tr("&Table"));
    for (QAction* action : m_table->tableActions())
        table->addAction(action);
    QMenu* trend = menuBar()->addMenu(tr("T&rend"));
    for (QAction* action : m_trend->trendActions())
        trend->addAction(action);
    QMenu* view = menuBar()->addMenu(tr("&View"));
    int number = 1;
    for (QDockWidget* dock : m_docks) {
        auto* go = view->addAction(tr("Go to %1").arg(dock->windowTitle()), dock, [dock] {
            dock->show();
            dock->raise();
            dock->widget()->setFocus();
        });
        go->setShortcut(QKeySequence(QStringLiteral("Alt+%1").arg(++number)));
    }
    auto* toTable = view->addAction(tr("Go to the table"), m_table, [this] { m_table->setFocus(); });
    toTable->setShortcut(QKeySequence(QStringLiteral("Alt+1")));
    view->addSeparator();
    for (QDockWidget* dock : m_docks)
        view->addAction(dock->toggleViewAction());
    view->addAction(m_captureBar->toggleViewAction());
    makeAppearanceMenu(view->addMenu(tr("&Appearance")));
}

void MainWindow::makeAppearanceMenu(QMenu* menu)
{
    const QString names[] = {tr("As the &desktop"), tr("&Light"), tr("D&ark")};
    const int chosen = QSettings().value(QStringLiteral("window/appearance")).toInt();
    auto* group = new QActionGroup(this);
    for (int number = 0; number < 3; ++number) {
        QAction* const action = menu->addAction(names[number]);
        action->setCheckable(true);
        action->setChecked(number == chosen);
        group->addAction(action);
        connect(action, &QAction::triggered, this, [number] {
            setAppearance(static_cast<Appearance>(number));
            QSettings().setValue(QStringLiteral("window/appearance"), number);
        });
    }
}

void MainWindow::restoreLayout()
{
    const QSettings settings;
    restoreGeometry(settings.value(QStringLiteral("window/geometry")).toByteArray());
    restoreState(settings.value(QStringLiteral("window/state")).toByteArray(), layoutVersion);
    m_table->restoreColumns(settings.value(QStringLiteral("table/columns")).toByteArray());
    m_captureBar->setPlayer(nullptr);
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    QSettings settings;
    settings.setValue(QStringLiteral("window/geometry"), saveGeometry());
    settings.setValue(QStringLiteral("window/state"), saveState(layoutVersion));
    settings.setValue(QStringLiteral("table/columns"), m_table->saveColumns());
    settings.setValue(QStringLiteral("trend/variables"), m_trend->variables());
    QMainWindow::closeEvent(event);
}

void MainWindow::present(Source* source, const QString& title)
{
    m_source = source;
    LiveSession* const session = source && source == m_session.get() ? m_session.get() : nullptr;
    m_table->setSource(source, session);
    m_trend->setSource(source);
    m_frames->setSource(source);
    m_stations->begin(session != nullptr);
    m_captureBar->setPlayer(source && source == m_player.get() ? m_player.get() : nullptr);
    m_link->clear();
    m_rate->clear();
    if (!source)
        return;
    setWindowTitle(tr("%1 – plcwindow").arg(title));
    m_trend->add(QSettings().value(QStringLiteral("trend/variables")).toStringList());
}

/// There is one driver in a process: what uses it has to be over before the next begins. Nobody waits for it.
void MainWindow::whenEnded(const std::function<void()>& next)
{
    if (m_stopLoading)
        *m_stopLoading = true;
    m_stopLoading.reset();
    if (m_source)
        QSettings().setValue(QStringLiteral("trend/variables"), m_trend->variables());
    present(nullptr, QString());
    m_player.reset();
    if (!m_session)
        return next();
    connect(m_session.get(), &LiveSession::ended, this, [this, next, session = m_session.get()] {
        if (session != m_session.get())
            return;
        m_session.release()->deleteLater();
        next();
    });
    m_session->end();
}

void MainWindow::open(const Watched& watched)
{
    whenEnded([this, watched] {
        m_simulated.reset();
        begin(watched);
    });
}

void MainWindow::openSimulated()
{
    whenEnded([this] {
        try {
            m_simulated = startSimulatedMachine();
        } catch (const std::runtime_error& error) {
            return complain(QString::fromStdString(error.what()));
        }
        Watched watched;
        watched.settings.port = m_simulated->port();
        watched.variables = simulatedVariables();
        begin(watched);
    });
}

void MainWindow::begin(Watched watched)
{
    if (watched.settings.driverPath.isEmpty())
        watched.settings.driverPath = m_driverPath;
    m_listed = watched.variables;
    m_session = std::make_unique<LiveSession>(watched);
    connect(m_session.get(), &Source::failed, this, &MainWindow::complain);
    present(m_session.get(),
            m_simulated ? tr("simulated bottle filler")
                        : QStringLiteral("%1:%2").arg(watched.settings.host).arg(watched.settings.port));
    m_session->start();
}

void MainWindow::ask()
{
    auto* dialog = new StartDialog(
        [this](const std::optional<Watched>& watched) { watched ? open(*watched) : openSimulated(); }, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
}

void MainWindow::chooseCapture()
{
    const QString captures = QStringLiteral("*.") + captureEndings().join(QStringLiteral(" *."));
    const QString path = QFileDialog::getOpenFileName(this, tr("Open a capture"), QString(),
                                                      tr("Captures (%1);;All files (*)").arg(captures));
    if (!path.isEmpty())
        openCapture(path);
}

/// The list of the last session names what is captured; without one, what was read is shown by its addresses.
void MainWindow::openCapture(const QString& path)
{
    Watched wanted;
    wanted.variables = m_listed;
    wanted.settings.driverPath = m_session ? m_session->watched().settings.driverPath : m_driverPath;
    if (wanted.settings.driverPath.isEmpty())
        wanted.settings.driverPath = m_driverPath;
    whenEnded([this, path, wanted] { play(path, wanted); });
}

void MainWindow::play(const QString& path, Watched wanted)
{
    m_link->setText(tr("reading %1 …").arg(path));
    m_stopLoading = std::make_shared<std::atomic<bool>>(false);
    const QPointer<MainWindow> window(this);
    QThreadPool::globalInstance()->start([window, path, wanted = std::move(wanted), stop = m_stopLoading] {
        const auto capture = std::make_shared<LoadedCapture>(loadCapture(path, wanted, *stop));
        QMetaObject::invokeMethod(qApp, [window, path, capture, stop] {
            if (window && !*stop)
                window->played(path, capture);
        });
    });
}

void MainWindow::played(const QString& path, const std::shared_ptr<LoadedCapture>& capture)
{
    m_stopLoading.reset();
    m_link->clear();
    if (!capture->error.isEmpty())
        return complain(tr("%1: %2").arg(path, capture->error));
    m_player = std::make_unique<CapturePlayer>(capture);
    m_player->seek(capture->lastMs);
    present(m_player.get(), QFileInfo(path).fileName());
    m_captureBar->slider()->setFocus();
    m_link->setText(capture->notes.isEmpty() ? tr("capture") : capture->notes.join(QLatin1String("; ")));
}

void MainWindow::refresh()
{
    if (!m_source)
        return;
    m_captureBar->advance(beatMs);
    const Snapshot news = m_source->take();
    m_table->apply(news);
    m_trend->apply(news);
    m_frames->apply(news);
    if (news.report) {
        m_stations->apply(*news.report);
        showReport(*news.report);
    }
    std::vector<int> looked = m_table->looked();
    for (const int variable : m_trend->looked())
        looked.push_back(variable);
    m_source->look(looked);
}

void MainWindow::showReport(const SessionReport& report)
{
    if (report.link.connected)
        m_link->setText(tr("connected for %1").arg(ageWords(report.link.sinceMs)));
    else if (report.link.lastError.isEmpty())
        m_link->setText(tr("connecting"));
    else
        m_link->setText(tr("NOT CONNECTED for %1, trying again (%2)")
                            .arg(ageWords(report.link.sinceMs), report.link.lastError));
    m_rate->setText(tr("%1 refreshes a second").arg(report.statistics.passesPerSecond, 0, 'f', 1));
    if (const auto* application = qobject_cast<TimedApplication*>(qApp))
        m_rate->setToolTip(
            tr("The window's longest event took %1 ms").arg(application->longestEventMs(), 0, 'f', 1));
}

void MainWindow::tell(const QString& words)
{
    statusBar()->showMessage(words, toldMs);
}

void MainWindow::complain(const QString& words)
{
    auto* box = new QMessageBox(QMessageBox::Warning, tr("plcwindow"), words, QMessageBox::Ok, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

} // namespace plc
