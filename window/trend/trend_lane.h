// SPDX-License-Identifier: MIT
/// \file
/// \brief One plot of a trend: curves of at most two units, an axis each.
#ifndef WINDOW_TREND_TREND_LANE_H
#define WINDOW_TREND_TREND_LANE_H

#include <QColor>
#include <QStringList>
#include <QVector>

#include <optional>
#include <vector>

#include <qwt_plot.h>

class QwtPlotCurve;
class QwtPlotGrid;
class QwtPlotMarker;

namespace plc
{

/// How one curve is drawn.
struct CurveLook {
    QColor colour;
    Qt::PenStyle style = Qt::SolidLine;
};

/// \return the look of the so-many-th curve; none of a trend is told from another by its colour alone
CurveLook curveLook(int number, bool onDark);

class TrendLane : public QwtPlot
{
    Q_OBJECT

public:
    explicit TrendLane(QWidget* parent = nullptr);

    /// \param onRight of the two axes
    QwtPlotCurve* addCurve(const QString& title, bool onRight);
    void removeCurve(QwtPlotCurve* curve);

    /// \param smooth with soft edges, which cost
    void setLook(QwtPlotCurve* curve, const CurveLook& look, bool smooth);
    void setUnit(bool onRight, const QString& unit);

    /// The left or right axis has these limits and round ticks.
    void setExtent(bool onRight, double least, double most);

    /// The left axis shows bits, one above the other, by their names.
    void setSwitches(const QStringList& names);
    static double switchLevel(int number, double value); ///< where a bit is drawn

    void setTimes(qint64 fromMs, qint64 toMs);
    void setTimesShown(bool shown);
    void setTimeCursor(std::optional<qint64> ms);
    void usePalette(); ///< after the desktop's colours have changed

    /// Canvases of lanes stand below each other when their axes are as wide.
    double axisWidth(bool onRight) const;
    void setAxisWidth(bool onRight, double width);

private:
    double titleRoom(int axis) const;
    bool isUsed(bool onRight) const;

    bool m_used[2] = {false, false}; // left, right
    QwtPlotGrid* m_grid;
    QwtPlotMarker* m_cursor;
};

} // namespace plc

#endif
