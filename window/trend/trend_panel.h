// SPDX-License-Identifier: MIT
/// \file
/// \brief Curves of variables over time: dragged onto it, zoomed, panned, read by a cursor, saved.
#ifndef WINDOW_TREND_TREND_PANEL_H
#define WINDOW_TREND_TREND_PANEL_H

#include "window/trend/time_view.h"
#include "window/trend/trend_history.h"
#include "window/trend/trend_store.h"

#include <QWidget>

#include <optional>

class QAction;
class QComboBox;
class QLabel;
class QTreeWidget;
class QTreeWidgetItem;
class QVBoxLayout;
class QwtPlotCurve;

namespace plc
{

class TrendLane;

class TrendPanel : public QWidget
{
    Q_OBJECT

public:
    explicit TrendPanel(QWidget* parent = nullptr);
    ~TrendPanel() override;

    void setSource(Source* source);

    /// Takes what came; draws at most every so many beats, and only what can be seen.
    void apply(const Snapshot& news);

    /// Adds the curves of variables, by their names. What is no number is left out.
    void add(const QStringList& variables);
    void removeSelected();
    void clear();

    /// \return the variables whose ages are to be known
    std::vector<int> looked() const;

    QStringList variables() const;
    int curves() const { return static_cast<int>(m_curves.size()); }
    int lanes() const { return static_cast<int>(m_lanes.size()); }

    /// The line that a curve is drawn as; for tests.
    QVector<QPointF> line(int curve) const;
    const TimeView& view() const { return m_view; }

    /// Reads all curves at a time; nothing: at the end of what is shown.
    void setCursor(std::optional<qint64> ms);
    QString reading(int curve) const;

    void openHistory(const QString& path);
    bool saveImage(const QString& path);
    /// Writes on a thread of its own; told() says how it ended.
    void saveCsv(const QString& path);

    std::vector<QAction*> trendActions() const { return m_actions; }
    void draw();

Q_SIGNALS:
    /// Something for the status line.
    void told(const QString& words);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    struct Curve {
        CurveKey key;
        TrendLane* lane = nullptr;
        bool onRight = false;
        QwtPlotCurve* plotted = nullptr;
        QTreeWidgetItem* item = nullptr;
        int number = 0;      // of its look
        int switchPlace = 0; // among the bits of its axis
        std::vector<TrendStep> steps;
    };
    struct Axis {
        QString unit;
        TrendLane* lane = nullptr;
        bool onRight = false;
        bool isSwitches = false;
        bool isShared = false; // its plot has a right axis, too
        int curves = 0;
    };

    void makeLegend();
    void makeActions();
    QAction* action(const QString& text, const QKeySequence& keys);
    void addCurve(const CurveKey& key);
    Axis* axisFor(const CurveKey& key);
    void arrange();
    void drawCurve(Curve* curve);
    void drawAxes();
    QStringList switchNames() const;
    void showLegend();
    std::vector<TrendStep> stepsOf(const CurveKey& key) const;
    std::optional<double> valueAt(const Curve& curve, qint64 ms) const;
    QString words(const CurveKey& key, double number) const;
    void askHistory();
    void moved();
    bool mouseMoved(TrendLane* lane, QMouseEvent* event);
    void wheel(TrendLane* lane, int delta, int x);
    qint64 timeAt(TrendLane* lane, int x) const;
    void chooseImage();
    void chooseCsv();
    void chooseHistory();

    TrendStore m_store;
    Source* m_source = nullptr;
    TimeView m_view;
    std::vector<Axis> m_axes;
    std::vector<TrendLane*> m_lanes;
    std::vector<Curve> m_curves;
    TrendHistory m_history;
    std::shared_ptr<TrendHistory::Piece> m_past;
    std::optional<qint64> m_cursor;
    std::optional<int> m_draggedFrom; // x of the canvas
    QVBoxLayout* m_plots;
    QLabel* m_hint;
    QTreeWidget* m_legend;
    QComboBox* m_spans;
    QAction* m_pause = nullptr;
    std::vector<QAction*> m_actions;
    int m_beats = 0;
    int m_looks = 0; // given away so far
};

} // namespace plc

#endif
