// SPDX-License-Identifier: MIT
#include "window/desk/main_window.h"

#include "window/session/live_session.h"
#include "window/table/state_look.h"
#include "window/table/table_panel.h"
#include "window/trend/trend_panel.h"

#include <QDockWidget>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QStatusBar>

namespace plc
{

MainWindow::MainWindow()
    : m_table(new TablePanel), m_trend(new TrendPanel), m_link(new QLabel), m_rate(new QLabel)
{
    setWindowTitle(tr("plcwindow"));
    setCentralWidget(m_table);
    statusBar()->addWidget(m_link, 1);
    statusBar()->addPermanentWidget(m_rate);
    makeDocks();
    makeMenus();
    connect(&m_beat, &QTimer::timeout, this, &MainWindow::refresh);
    m_beat.start(beatMs);
    resize(1200, 800);
}

MainWindow::~MainWindow()
{
    close();
}

void MainWindow::makeDocks()
{
    auto* dock = new QDockWidget(tr("Trend"), this);
    dock->setObjectName(QStringLiteral("trend"));
    dock->setWidget(m_trend);
    addDockWidget(Qt::BottomDockWidgetArea, dock);
    resizeDocks({dock}, {420}, Qt::Vertical);
    connect(m_table, &TablePanel::trendWanted, m_trend, &TrendPanel::add);
    connect(m_trend, &TrendPanel::told, this,
            [this](const QString& words) { statusBar()->showMessage(words, 8000); });
}

void MainWindow::makeMenus()
{
    QMenu* file = menuBar()->addMenu(tr("&File"));
    file->addAction(tr("&Quit"), this, &QWidget::close, QKeySequence::Quit);
    QMenu* table = menuBar()->addMenu(tr("&Table"));
    for (QAction* action : m_table->tableActions())
        table->addAction(action);
    QMenu* trend = menuBar()->addMenu(tr("T&rend"));
    for (QAction* action : m_trend->trendActions())
        trend->addAction(action);
}

void MainWindow::close()
{
    m_table->setSource(nullptr, nullptr);
    m_trend->setSource(nullptr);
    m_session.reset();
}

void MainWindow::open(const Watched& watched)
{
    close();
    m_session = std::make_unique<LiveSession>(watched);
    connect(m_session.get(), &Source::failed, this, &MainWindow::complain);
    m_table->setSource(m_session.get(), m_session.get());
    m_trend->setSource(m_session.get());
    setWindowTitle(tr("%1:%2 - plcwindow").arg(watched.settings.host).arg(watched.settings.port));
    m_session->start();
}

void MainWindow::refresh()
{
    if (!m_session)
        return;
    const Snapshot news = m_session->take();
    m_table->apply(news);
    m_trend->apply(news);
    if (news.report)
        showReport(*news.report);
    std::vector<int> looked = m_table->looked();
    for (const int variable : m_trend->looked())
        looked.push_back(variable);
    m_session->look(looked);
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
}

void MainWindow::complain(const QString& words)
{
    auto* box = new QMessageBox(QMessageBox::Warning, tr("plcwindow"), words, QMessageBox::Ok, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

} // namespace plc
