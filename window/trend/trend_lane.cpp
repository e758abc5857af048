// SPDX-License-Identifier: MIT
#include "window/trend/trend_lane.h"

#include <QPalette>

#include <cmath>
#include <iterator>

#include <qwt_date_scale_draw.h>
#include <qwt_date_scale_engine.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_layout.h>
#include <qwt_plot_marker.h>
#include <qwt_scale_draw.h>
#include <qwt_scale_widget.h>

namespace plc
{

namespace
{

const int mostTicks = 6;
const double switchStep = 1.5; // from one bit to the next above it
const int longestName = 18;
const double roomOfTime = 0.06;

// A set that any kind of colour blindness leaves apart.
const char* const coloursOnLight[] = {"#0072b2", "#d55e00", "#00805d", "#a8487f",
                                      "#7a6000", "#3b8fc4", "#333333"};
const char* const coloursOnDark[] = {"#56b4e9", "#ff9148", "#2fc79b", "#e39cc6",
                                     "#f0e442", "#9ad1f5", "#e0e0e0"};
const Qt::PenStyle styles[] = {Qt::SolidLine, Qt::DashLine, Qt::DotLine, Qt::DashDotLine};

int axisOf(bool onRight)
{
    return onRight ? QwtPlot::yRight : QwtPlot::yLeft;
}

/// A line with gaps: points that are not finite interrupt it.
class GappedCurve : public QwtPlotCurve
{
public:
    using QwtPlotCurve::QwtPlotCurve;

protected:
    void drawSeries(QPainter* painter, const QwtScaleMap& xMap, const QwtScaleMap& yMap, const QRectF& canvas,
                    int from, int to) const override
    {
        const int last = to < 0 ? static_cast<int>(dataSize()) - 1 : to;
        int begin = from;
        for (int index = from; index <= last + 1; ++index) {
            const bool isGap = index > last || !std::isfinite(sample(index).y());
            if (!isGap)
                continue;
            if (index - 1 >= begin)
                QwtPlotCurve::drawSeries(painter, xMap, yMap, canvas, begin, index - 1);
            begin = index + 1;
        }
    }
};

/// Names in place of numbers.
class SwitchScale : public QwtScaleDraw
{
public:
    explicit SwitchScale(const QStringList& names) : m_names(names)
    {
        enableComponent(QwtAbstractScaleDraw::Backbone, false);
        enableComponent(QwtAbstractScaleDraw::Ticks, false);
    }

    QwtText label(double value) const override
    {
        const QString name = m_names.value(static_cast<int>(value / switchStep));
        return name.size() <= longestName ? name : name.left(longestName - 1) + QChar(0x2026);
    }

    const QStringList& names() const { return m_names; }

private:
    const QStringList m_names;
};

/// Times of day. None stands so near an end that it needs room beside the canvas, which other plots have not.
class TimeScale : public QwtDateScaleDraw
{
public:
    using QwtDateScaleDraw::QwtDateScaleDraw;

    QwtText label(double value) const override
    {
        const double least = scaleDiv().lowerBound();
        const double most = scaleDiv().upperBound();
        const double room = (most - least) * roomOfTime;
        return value - least < room || most - value < room ? QwtText() : QwtDateScaleDraw::label(value);
    }
};

QwtDateScaleDraw* timeScale()
{
    auto* scale = new TimeScale(Qt::LocalTime);
    scale->setDateFormat(QwtDate::Millisecond, QStringLiteral("HH:mm:ss.zzz"));
    scale->setDateFormat(QwtDate::Second, QStringLiteral("HH:mm:ss"));
    scale->setDateFormat(QwtDate::Minute, QStringLiteral("HH:mm"));
    scale->setDateFormat(QwtDate::Hour, QStringLiteral("HH:mm"));
    scale->setDateFormat(QwtDate::Day, QStringLiteral("d MMM"));
    return scale;
}

} // namespace

CurveLook curveLook(int number, bool onDark)
{
    const int colours = static_cast<int>(std::size(coloursOnLight));
    const int colour = number % colours;
    const char* const name = onDark ? coloursOnDark[colour] : coloursOnLight[colour];
    return {QColor(QLatin1String(name)), styles[number / colours % static_cast<int>(std::size(styles))]};
}

TrendLane::TrendLane(QWidget* parent) : QwtPlot(parent), m_grid(new QwtPlotGrid), m_cursor(new QwtPlotMarker)
{
    setAutoReplot(false);
    auto* canvas = new QwtPlotCanvas(this);
    canvas->setFrameStyle(QFrame::NoFrame);
    canvas->setMouseTracking(true);
    setCanvas(canvas);
    plotLayout()->setAlignCanvasToScales(true);
    setAxisScaleDraw(xBottom, timeScale());
    setAxisScaleEngine(xBottom, new QwtDateScaleEngine(Qt::LocalTime));
    setAxisMaxMajor(xBottom, mostTicks);
    for (const int axis : {yLeft, yRight, xBottom}) {
        setAxisFont(axis, font());
        setAxisMaxMinor(axis, 0);
        if (axis == xBottom)
            continue;
        axisScaleDraw(axis)->enableComponent(QwtAbstractScaleDraw::Backbone, false);
        axisScaleDraw(axis)->enableComponent(QwtAbstractScaleDraw::Labels, false);
        axisScaleDraw(axis)->enableComponent(QwtAbstractScaleDraw::Ticks, false);
    }
    axisScaleDraw(xBottom)->enableComponent(QwtAbstractScaleDraw::Backbone, false);
    m_grid->enableXMin(false);
    m_grid->attach(this);
    m_cursor->setLineStyle(QwtPlotMarker::VLine);
    m_cursor->setVisible(false);
    m_cursor->attach(this);
    setMinimumHeight(fontMetrics().height() * 6);
    usePalette();
}

void TrendLane::usePalette()
{
    setCanvasBackground(palette().color(QPalette::Base));
    QColor line = palette().color(QPalette::Text);
    m_cursor->setLinePen(line, 1.0, Qt::SolidLine);
    line.setAlpha(40);
    m_grid->setPen(line, 0.0, Qt::SolidLine);
}

QwtPlotCurve* TrendLane::addCurve(const QString& title, bool onRight)
{
    auto* curve = new GappedCurve(title);
    curve->setYAxis(axisOf(onRight));
    curve->setPaintAttribute(QwtPlotCurve::ClipPolygons);
    curve->attach(this);
    enableAxis(axisOf(onRight));
    return curve;
}

void TrendLane::removeCurve(QwtPlotCurve* curve)
{
    curve->detach();
    delete curve;
}

void TrendLane::setLook(QwtPlotCurve* curve, const CurveLook& look, bool smooth)
{
    curve->setRenderHint(QwtPlotItem::RenderAntialiased, smooth);
    curve->setPen(look.colour, smooth ? 1.6 : 1.0, look.style);
}

void TrendLane::setUnit(bool onRight, const QString& unit)
{
    const int axis = axisOf(onRight);
    m_used[onRight ? 1 : 0] = true;
    axisScaleDraw(axis)->enableComponent(QwtAbstractScaleDraw::Labels);
    axisScaleDraw(axis)->enableComponent(QwtAbstractScaleDraw::Ticks);
    enableAxis(axis);
    QwtText title(unit);
    title.setFont(font());
    setAxisTitle(axis, title);
}

void TrendLane::setExtent(bool onRight, double least, double most)
{
    if (!(most > least)) { // a curve that does not move lies in the middle
        const double room = least == 0 ? 1 : std::abs(least) / 10;
        least -= room;
        most += room;
    }
    double step = 0;
    axisScaleEngine(axisOf(onRight))->autoScale(mostTicks, least, most, step);
    setAxisScale(axisOf(onRight), least, most, step);
}

double TrendLane::switchLevel(int number, double value)
{
    return number * switchStep + value;
}

void TrendLane::setSwitches(const QStringList& names)
{
    const auto* scale = dynamic_cast<const SwitchScale*>(axisScaleDraw(yLeft));
    if (!scale || scale->names() != names)
        setAxisScaleDraw(yLeft, new SwitchScale(names));
    QList<double> middles;
    for (int number = 0; number < names.size(); ++number)
        middles << switchLevel(number, 0.5);
    setAxisScaleDiv(yLeft, QwtScaleDiv(-0.3, switchLevel(names.size() - 1, 1.3), {}, {}, middles));
    m_grid->enableY(false);
}

void TrendLane::setTimes(qint64 fromMs, qint64 toMs)
{
    setAxisScale(xBottom, static_cast<double>(fromMs), static_cast<double>(toMs));
}

void TrendLane::setTimesShown(bool shown)
{
    enableAxis(xBottom, shown);
}

void TrendLane::setTimeCursor(std::optional<qint64> ms)
{
    m_cursor->setVisible(ms.has_value());
    if (ms)
        m_cursor->setXValue(static_cast<double>(*ms));
}

double TrendLane::titleRoom(int axis) const
{
    const QwtScaleWidget* const scale = axisWidget(axis);
    if (scale->title().isEmpty())
        return 0;
    return scale->titleHeightForWidth(canvas()->height()) + scale->spacing();
}

double TrendLane::axisWidth(bool onRight) const
{
    const int axis = axisOf(onRight);
    if (!isUsed(onRight))
        return 0;
    return axisScaleDraw(axis)->extent(axisFont(axis)) + titleRoom(axis);
}

void TrendLane::setAxisWidth(bool onRight, double width)
{
    const int axis = axisOf(onRight);
    if (axisEnabled(axis) != (width > 0))
        enableAxis(axis, width > 0);
    const double extent = width - titleRoom(axis);
    if (width <= 0 || axisScaleDraw(axis)->minimumExtent() == extent)
        return;
    axisScaleDraw(axis)->setMinimumExtent(extent);
    updateLayout();
}

/// An axis without curves keeps its room where another lane has one there, and shows nothing.
bool TrendLane::isUsed(bool onRight) const
{
    return m_used[onRight ? 1 : 0];
}

} // namespace plc
