// SPDX-License-Identifier: MIT
/// \file
/// \brief The window: table, docks, menus, and the beat at which they are brought up to date.
#ifndef WINDOW_DESK_MAIN_WINDOW_H
#define WINDOW_DESK_MAIN_WINDOW_H

#include "window/session/source.h"

#include <QMainWindow>
#include <QTimer>

#include <memory>

class QLabel;

namespace plc
{

class LiveSession;
class TablePanel;
class TrendPanel;

class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    static constexpr int beatMs = 100;

    MainWindow();
    ~MainWindow() override;

    /// Ends what is shown and begins anew.
    void open(const Watched& watched);

    TablePanel* table() const { return m_table; }
    TrendPanel* trend() const { return m_trend; }

    /// Takes what came since the last time; the beat does so.
    void refresh();

private:
    void close();
    void makeMenus();
    void makeDocks();
    void complain(const QString& words);
    void showReport(const SessionReport& report);

    std::unique_ptr<LiveSession> m_session;
    TablePanel* m_table;
    TrendPanel* m_trend;
    QLabel* m_link;
    QLabel* m_rate;
    QTimer m_beat;
};

} // namespace plc

#endif
