// SPDX-License-Identifier: MIT
/// \file
/// \brief The window: table, docks, menus, and the beat at which they are brought up to date.
#ifndef WINDOW_DESK_MAIN_WINDOW_H
#define WINDOW_DESK_MAIN_WINDOW_H

#include "window/desk/appearance.h"
#include "window/session/source.h"

#include <QMainWindow>
#include <QTimer>

#include <atomic>
#include <functional>
#include <memory>

class QDockWidget;
class QLabel;

namespace simulator
{
class SimulatedController;
}

namespace plc
{

class CaptureBar;
class CapturePlayer;
class FramePanel;
class LiveSession;
class StationPanel;
class TablePanel;
class TrendPanel;
struct LoadedCapture;

class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    static constexpr int beatMs = 100;

    /// \param driverPath of sessions that name none
    explicit MainWindow(const QString& driverPath = QString());
    ~MainWindow() override;

    /// Ends what is shown, without waiting for it, and begins anew.
    void open(const Watched& watched);
    void openSimulated();
    void openCapture(const QString& path);

    /// Asks for a controller.
    void ask();

    TablePanel* table() const { return m_table; }
    TrendPanel* trend() const { return m_trend; }
    StationPanel* stations() const { return m_stations; }
    FramePanel* frames() const { return m_frames; }
    CaptureBar* captureBar() const { return m_captureBar; }
    const Source* source() const { return m_source; }

    /// Takes what came since the last time; the beat does so.
    void refresh();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void makeDocks();
    void makeMenus();
    void makeAppearanceMenu(QMenu* menu);
    QDockWidget* dock(const QString& title, const char* name, QWidget* content);
    void restoreLayout();
    void whenEnded(const std::function<void()>& next);
    void present(Source* source, const QString& title);
    void begin(Watched watched);
    void play(const QString& path, Watched wanted);
    void played(const QString& path, const std::shared_ptr<LoadedCapture>& capture);
    void complain(const QString& words);
    void tell(const QString& words);
    void showReport(const SessionReport& report);
    void chooseCapture();

    const QString m_driverPath;
    std::shared_ptr<simulator::SimulatedController> m_simulated;
    std::unique_ptr<LiveSession> m_session;
    std::unique_ptr<CapturePlayer> m_player;
    Source* m_source = nullptr; // one of both
    std::shared_ptr<std::atomic<bool>> m_stopLoading;
    std::vector<ListedVariable> m_listed; // of the last session, for captures
    TablePanel* m_table;
    TrendPanel* m_trend;
    StationPanel* m_stations;
    FramePanel* m_frames;
    CaptureBar* m_captureBar;
    std::vector<QDockWidget*> m_docks;
    QLabel* m_link;
    QLabel* m_rate;
    QTimer m_beat;
};

} // namespace plc

#endif
