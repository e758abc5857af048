// SPDX-License-Identifier: MIT
#include "window/trend/trend_panel.h"

#include "window/trend/trend_csv.h"
#include "window/trend/trend_lane.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDateTime>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QMimeData>
#include <QPainter>
#include <QPointer>
#include <QSaveFile>
#include <QSplitter>
#include <QThreadPool>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <utility>

#include <qwt_plot_curve.h>
#include <qwt_scale_map.h>

namespace plc
{

namespace
{

const int beatsBetweenDrawings = 2;
const int leastPixels = 100;
const std::size_t mostSmoothPoints =
    12000; // of all curves; more of them are drawn in no time without soft edges
const double zoomStep = 0.8;
const double panStep = 0.1;     // of what is shown
const double cursorStep = 0.01; // the same
const double roomAbove = 0.04;  // of an axis

struct SpanRow {
    const char* text;
    qint64 ms;
};
const SpanRow spans[] = {
    {QT_TRANSLATE_NOOP("plc::TrendPanel", "10 s"), 10000},
    {QT_TRANSLATE_NOOP("plc::TrendPanel", "1 min"), 60000},
    {QT_TRANSLATE_NOOP("plc::TrendPanel", "5 min"), 300000},
    {QT_TRANSLATE_NOOP("plc::TrendPanel", "15 min"), 900000},
    {QT_TRANSLATE_NOOP("plc::TrendPanel", "1 h"), 3600000},
    {QT_TRANSLATE_NOOP("plc::TrendPanel", "8 h"), 28800000},
    {QT_TRANSLATE_NOOP("plc::TrendPanel", "1 day"), 86400000},
};

enum LegendColumn { CurveColumn, ReadingColumn, LeastColumn, MostColumn };

QIcon swatch(const CurveLook& look)
{
    QPixmap picture(28, 12);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setPen(QPen(look.colour, 2.4, look.style));
    painter.drawLine(1, 6, 27, 6);
    return QIcon(picture);
}

bool isDarkCanvas(const QPalette& palette)
{
    return palette.color(QPalette::Base).lightness() < 128;
}

QString timeWords(qint64 ms)
{
    return QDateTime::fromMSecsSinceEpoch(ms).toString(QStringLiteral("HH:mm:ss.zzz"));
}

} // namespace

TrendPanel::TrendPanel(QWidget* parent)
    : QWidget(parent), m_plots(new QVBoxLayout),
      m_hint(new QLabel(tr("Drag variables from the table to here,\n"
                           "or choose them there and press Ctrl+T."))),
      m_legend(new QTreeWidget), m_spans(new QComboBox)
{
    setAcceptDrops(true);
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(tr("trend"));
    m_hint->setAlignment(Qt::AlignCenter);
    m_hint->setEnabled(false);
    makeActions();
    makeLegend();
    auto* bar = new QHBoxLayout;
    m_spans->setAccessibleName(tr("length of time shown"));
    for (const SpanRow& span : spans)
        m_spans->addItem(tr(span.text), span.ms);
    m_spans->setCurrentIndex(1);
    connect(m_spans, QOverload<int>::of(&QComboBox::activated), this, [this] {
        m_view.setSpan(m_spans->currentData().toLongLong());
        moved();
    });
    bar->addWidget(m_spans);
    for (QAction* action : m_actions) {
        if (action->isSeparator())
            continue;
        auto* button = new QToolButton;
        button->setDefaultAction(action);
        button->setFocusPolicy(Qt::TabFocus);
        bar->addWidget(button);
    }
    bar->addStretch(1);
    m_plots->setSpacing(2);
    m_plots->setContentsMargins(0, 0, 0, 0);
    m_plots->addWidget(m_hint, 1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addLayout(bar);
    auto* plots = new QWidget;
    plots->setLayout(m_plots);
    auto* halves = new QSplitter;
    halves->addWidget(plots);
    halves->addWidget(m_legend);
    halves->setStretchFactor(0, 1);
    halves->setSizes({700, 420});
    halves->setChildrenCollapsible(false);
    layout->addWidget(halves, 1);
    connect(&m_history, &TrendHistory::opened, this, [this](qint64 firstMs, qint64 lastMs) {
        Q_EMIT told(tr("history from %1 to %2")
                        .arg(QDateTime::fromMSecsSinceEpoch(firstMs).toString(Qt::ISODate),
                             QDateTime::fromMSecsSinceEpoch(lastMs).toString(Qt::ISODate)));
        moved();
    });
    connect(&m_history, &TrendHistory::failed, this, &TrendPanel::told);
    connect(&m_history, &TrendHistory::found, this,
            [this](const std::shared_ptr<TrendHistory::Piece>& piece) {
                m_past = piece;
                draw();
            });
}

TrendPanel::~TrendPanel()
{
    clear();
}

QAction* TrendPanel::action(const QString& text, const QKeySequence& keys)
{
    auto* made = new QAction(text, this);
    made->setShortcut(keys);
    addAction(made);
    m_actions.push_back(made);
    return made;
}

void TrendPanel::makeActions()
{
    m_pause = action(tr("&Pause"), QKeySequence(tr("Ctrl+P")));
    m_pause->setCheckable(true);
    connect(m_pause, &QAction::toggled, this, [this](bool paused) {
        paused ? m_view.pause() : m_view.follow();
        moved();
    });
    connect(action(tr("Zoom &in"), QKeySequence::ZoomIn), &QAction::triggered, this, [this] {
        m_view.zoom(zoomStep, m_cursor.value_or(m_view.toMs()));
        moved();
    });
    connect(action(tr("Zoom &out"), QKeySequence::ZoomOut), &QAction::triggered, this, [this] {
        m_view.zoom(1 / zoomStep, m_cursor.value_or(m_view.toMs()));
        moved();
    });
    connect(action(tr("&Remove"), QKeySequence()), &QAction::triggered, this, &TrendPanel::removeSelected);
    connect(action(tr("&History…"), QKeySequence(tr("Ctrl+H"))), &QAction::triggered, this,
            &TrendPanel::chooseHistory);
    connect(action(tr("&Image…"), QKeySequence(tr("Ctrl+I"))), &QAction::triggered, this,
            &TrendPanel::chooseImage);
    connect(action(tr("&CSV…"), QKeySequence(tr("Ctrl+E"))), &QAction::triggered, this,
            &TrendPanel::chooseCsv);
}

void TrendPanel::makeLegend()
{
    m_legend->setColumnCount(4);
    m_legend->setHeaderLabels({tr("Curve"), tr("Now"), tr("Least"), tr("Most")});
    m_legend->setAccessibleName(tr("curves"));
    m_legend->setRootIsDecorated(false);
    m_legend->setUniformRowHeights(true);
    m_legend->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_legend->setIconSize(QSize(28, 12));
    m_legend->header()->setStretchLastSection(false);
    m_legend->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_legend->header()->setMinimumSectionSize(fontMetrics().averageCharWidth() * 13);
    m_legend->header()->setSectionResizeMode(CurveColumn, QHeaderView::Stretch);
    m_legend->hide();
}

void TrendPanel::setSource(Source* source)
{
    clear();
    m_past.reset();
    m_source = source;
    m_store.setSource(source);
    if (source)
        m_view.setNow(source->nowMs());
    m_pause->setChecked(false);
    m_view.follow();
}

void TrendPanel::add(const QStringList& names)
{
    for (const QString& name : names) {
        const std::vector<CurveKey> keys = m_store.keysOf(name);
        if (keys.empty())
            Q_EMIT told(tr("%1 is no number, which a curve could show").arg(name));
        for (const CurveKey& key : keys) {
            const auto isThere = [&key](const Curve& curve) { return curve.key == key; };
            if (std::none_of(m_curves.begin(), m_curves.end(), isThere) && m_store.want(key))
                addCurve(key);
        }
    }
    arrange();
    moved();
}

/// Curves of one unit share an axis; each two axes have a plot, and bits have one of their own.
TrendPanel::Axis* TrendPanel::axisFor(const CurveKey& key)
{
    const bool isSwitch = m_store.isSwitch(key);
    const QString unit = m_store.variable(key).unit;
    for (Axis& axis : m_axes) {
        if (axis.isSwitches == isSwitch && axis.unit == unit)
            return &axis;
    }
    Axis axis;
    axis.unit = unit;
    axis.isSwitches = isSwitch;
    const auto isFree = [](const Axis& one) { return !one.isSwitches && !one.isShared && !one.onRight; };
    const auto beside = std::find_if(m_axes.begin(), m_axes.end(), isFree);
    if (!isSwitch && beside != m_axes.end()) {
        beside->isShared = true;
        axis.onRight = true;
        axis.lane = beside->lane;
    } else {
        auto* lane = new TrendLane;
        lane->canvas()->installEventFilter(this);
        m_lanes.push_back(lane);
        m_plots->addWidget(lane, 1);
        axis.lane = lane;
    }
    axis.lane->setUnit(axis.onRight, unit);
    m_axes.push_back(axis);
    return &m_axes.back();
}

void TrendPanel::addCurve(const CurveKey& key)
{
    Axis* const axis = axisFor(key);
    Curve curve;
    curve.key = key;
    curve.lane = axis->lane;
    curve.onRight = axis->onRight;
    curve.switchPlace = axis->curves++;
    curve.number = m_looks++;
    curve.plotted = axis->lane->addCurve(m_store.name(key), axis->onRight);
    curve.item = new QTreeWidgetItem(m_legend, {m_store.name(key)});
    for (const int column : {ReadingColumn, LeastColumn, MostColumn})
        curve.item->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
    curve.item->setIcon(CurveColumn, swatch(curveLook(curve.number, isDarkCanvas(palette()))));
    m_curves.push_back(std::move(curve));
}

void TrendPanel::removeSelected()
{
    QStringList kept;
    for (const Curve& curve : m_curves) {
        const QString name = m_store.variable(curve.key).name;
        if (!curve.item->isSelected() && !kept.contains(name))
            kept << name;
    }
    clear();
    add(kept);
}

void TrendPanel::clear()
{
    m_curves.clear();
    m_axes.clear();
    const auto lanes = std::exchange(m_lanes, {}); // in going they tell of the mouse, for which there is no lane
    qDeleteAll(lanes);
    m_legend->clear();
    m_cursor.reset();
    m_looks = 0;
    arrange();
}

void TrendPanel::arrange()
{
    m_hint->setVisible(m_curves.empty());
    m_legend->setVisible(!m_curves.empty());
    for (TrendLane* lane : m_lanes)
        lane->setTimesShown(lane == m_lanes.back());
}

std::vector<int> TrendPanel::looked() const
{
    std::vector<int> variables;
    for (const Curve& curve : m_curves)
        variables.push_back(curve.key.variable);
    return variables;
}

QStringList TrendPanel::variables() const
{
    QStringList names;
    for (const Curve& curve : m_curves) {
        if (!names.contains(m_store.variable(curve.key).name))
            names << m_store.variable(curve.key).name;
    }
    return names;
}

void TrendPanel::apply(const Snapshot& news)
{
    m_store.apply(news);
    if (m_source)
        m_view.setNow(m_source->nowMs());
    if (++m_beats % beatsBetweenDrawings == 0 && m_view.isFollowing() && isVisible())
        draw();
}

/// What the log knows of before is put in front of what the window knows.
std::vector<TrendStep> TrendPanel::stepsOf(const CurveKey& key) const
{
    const TrendSeries* const series = m_store.series(key);
    std::vector<TrendStep> known =
        series ? series->steps(m_view.fromMs(), m_view.toMs()) : std::vector<TrendStep>();
    if (!m_past)
        return known;
    const auto found = m_past->curves.find(m_store.name(key));
    if (found == m_past->curves.end())
        return known;
    const qint64 since = series ? series->oldestMs().value_or(m_view.toMs()) : m_view.toMs();
    std::vector<TrendStep> steps;
    for (const TrendStep& step : found->second) {
        if (step.beginMs < since && step.beginMs <= m_view.toMs())
            steps.push_back(step);
    }
    steps.insert(steps.end(), known.begin(), known.end());
    return steps;
}

void TrendPanel::draw()
{
    if (m_curves.empty())
        return;
    for (Curve& curve : m_curves)
        drawCurve(&curve);
    std::size_t points = 0;
    for (const Curve& curve : m_curves)
        points += curve.plotted->dataSize();
    for (const Curve& curve : m_curves)
        curve.lane->setLook(curve.plotted, curveLook(curve.number, isDarkCanvas(palette())),
                            points < mostSmoothPoints);
    drawAxes();
    for (TrendLane* lane : m_lanes) {
        lane->setTimes(m_view.fromMs(), m_view.toMs());
        lane->setTimeCursor(m_cursor);
        lane->replot();
    }
    showLegend();
}

void TrendPanel::drawCurve(Curve* curve)
{
    curve->steps = stepsOf(curve->key);
    const qint64 end = std::min(m_view.toMs(), m_source ? m_source->nowMs() : m_view.toMs());
    const int pixels = std::max(leastPixels, curve->lane->canvas()->width());
    QVector<QPointF> line = lineOf(curve->steps, m_view.fromMs(), end, pixels);
    if (m_store.isSwitch(curve->key)) {
        for (QPointF& point : line)
            point.setY(TrendLane::switchLevel(curve->switchPlace, point.y()));
    }
    curve->plotted->setSamples(line);
}

void TrendPanel::drawAxes()
{
    double left = 0;
    double right = 0;
    for (const Axis& axis : m_axes) {
        std::optional<std::pair<double, double>> extent;
        for (const Curve& curve : m_curves) {
            if (curve.lane != axis.lane || curve.onRight != axis.onRight)
                continue;
            const auto own = extentOf(curve.steps);
            if (own && extent)
                extent = {std::min(extent->first, own->first), std::max(extent->second, own->second)};
            else if (own)
                extent = own;
        }
        if (axis.isSwitches) {
            axis.lane->setSwitches(switchNames());
        } else if (extent) {
            const double room = (extent->second - extent->first) * roomAbove;
            axis.lane->setExtent(axis.onRight, extent->first - room, extent->second + room);
        }
        double& width = axis.onRight ? right : left;
        width = std::max(width, axis.lane->axisWidth(axis.onRight));
    }
    if (m_lanes.size() < 2)
        return;
    for (TrendLane* lane : m_lanes) {
        lane->setAxisWidth(false, left);
        lane->setAxisWidth(true, right);
    }
}

QStringList TrendPanel::switchNames() const
{
    QStringList names;
    for (const Curve& curve : m_curves) {
        if (m_store.isSwitch(curve.key))
            names << m_store.name(curve.key);
    }
    return names;
}

QString TrendPanel::words(const CurveKey& key, double number) const
{
    if (m_store.isSwitch(key))
        return number != 0 ? tr("on") : tr("off");
    const ListedVariable& variable = m_store.variable(key);
    const int enough = 7;
    const QString text = variable.digits >= 0 ? QString::number(number, 'f', variable.digits)
                                              : QString::number(number, 'g', enough);
    return variable.unit.isEmpty() ? text : text + QLatin1Char(' ') + variable.unit;
}

std::optional<double> TrendPanel::valueAt(const Curve& curve, qint64 ms) const
{
    std::optional<double> value;
    for (const TrendStep& step : curve.steps) {
        if (step.beginMs > ms)
            break;
        value = std::isfinite(step.last) ? std::optional<double>(step.last) : std::nullopt;
    }
    return value;
}

QString TrendPanel::reading(int index) const
{
    const Curve& curve = m_curves[static_cast<std::size_t>(index)];
    const auto value = valueAt(curve, m_cursor.value_or(m_view.toMs()));
    return value ? words(curve.key, *value) : QStringLiteral("\u2013");
}

void TrendPanel::showLegend()
{
    m_legend->headerItem()->setText(ReadingColumn, m_cursor ? tr("At %1").arg(timeWords(*m_cursor))
                                                   : m_view.isFollowing()
                                                       ? tr("Now")
                                                       : tr("At %1").arg(timeWords(m_view.toMs())));
    for (std::size_t index = 0; index < m_curves.size(); ++index) {
        const Curve& curve = m_curves[index];
        const auto extent = extentOf(curve.steps);
        curve.item->setText(ReadingColumn, reading(static_cast<int>(index)));
        curve.item->setText(LeastColumn, extent ? words(curve.key, extent->first) : QString());
        curve.item->setText(MostColumn, extent ? words(curve.key, extent->second) : QString());
    }
}

QVector<QPointF> TrendPanel::line(int index) const
{
    QVector<QPointF> line;
    const QwtPlotCurve* const curve = m_curves[static_cast<std::size_t>(index)].plotted;
    for (std::size_t point = 0; point < curve->dataSize(); ++point)
        line << curve->sample(static_cast<int>(point));
    return line;
}

void TrendPanel::setCursor(std::optional<qint64> ms)
{
    m_cursor = ms;
    for (TrendLane* lane : m_lanes) {
        lane->setTimeCursor(ms);
        lane->replot();
    }
    showLegend();
}

/// What is shown is another piece of time than before.
void TrendPanel::moved()
{
    {
        const QSignalBlocker quiet(m_pause);
        m_pause->setChecked(!m_view.isFollowing());
    }
    m_spans->setCurrentIndex(m_spans->findData(m_view.spanMs()));
    askHistory();
    draw();
}

void TrendPanel::askHistory()
{
    if (!m_history.isOpen() || m_curves.empty())
        return;
    QStringList names;
    for (const Curve& curve : m_curves)
        names << m_store.name(curve.key);
    m_history.ask(m_view.fromMs(), m_view.toMs(), std::max(leastPixels, m_lanes.front()->canvas()->width()),
                  names);
}

qint64 TrendPanel::timeAt(TrendLane* lane, int x) const
{
    return static_cast<qint64>(lane->canvasMap(QwtPlot::xBottom).invTransform(x));
}

bool TrendPanel::eventFilter(QObject* watched, QEvent* event)
{
    const auto isOf = [watched](TrendLane* lane) { return lane->canvas() == watched; };
    const auto lane = std::find_if(m_lanes.begin(), m_lanes.end(), isOf);
    if (lane == m_lanes.end())
        return QWidget::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::MouseMove:
        return mouseMoved(*lane, static_cast<QMouseEvent*>(event));
    case QEvent::MouseButtonPress:
        setFocus(Qt::MouseFocusReason);
        m_draggedFrom = static_cast<QMouseEvent*>(event)->x();
        return true;
    case QEvent::MouseButtonRelease:
        m_draggedFrom.reset();
        return true;
    case QEvent::MouseButtonDblClick:
        m_view.follow();
        moved();
        return true;
    case QEvent::Leave:
        setCursor(std::nullopt);
        return false;
    case QEvent::Wheel: {
        const auto* turned = static_cast<QWheelEvent*>(event);
        wheel(*lane, turned->angleDelta().y(), static_cast<int>(turned->position().x()));
        return true;
    }
    default:
        return QWidget::eventFilter(watched, event);
    }
}

bool TrendPanel::mouseMoved(TrendLane* lane, QMouseEvent* event)
{
    if (!m_draggedFrom || !(event->buttons() & Qt::LeftButton)) {
        setCursor(timeAt(lane, event->x()));
        return true;
    }
    m_view.pan(timeAt(lane, *m_draggedFrom) - timeAt(lane, event->x()));
    m_draggedFrom = event->x();
    moved();
    return true;
}

void TrendPanel::wheel(TrendLane* lane, int delta, int x)
{
    m_view.zoom(delta > 0 ? zoomStep : 1 / zoomStep, timeAt(lane, x));
    moved();
}

/// Arrows pan, with Shift they move the cursor; End follows again, Escape puts the cursor away.
void TrendPanel::keyPressEvent(QKeyEvent* event)
{
    const int way = event->key() == Qt::Key_Left ? -1 : event->key() == Qt::Key_Right ? 1 : 0;
    const auto span = static_cast<double>(m_view.spanMs());
    if (way != 0 && event->modifiers().testFlag(Qt::ShiftModifier)) {
        setCursor(m_cursor.value_or(m_view.toMs()) + way * static_cast<qint64>(span * cursorStep));
    } else if (way != 0) {
        m_view.pan(way * static_cast<qint64>(span * panStep));
        moved();
    } else if (event->key() == Qt::Key_End) {
        m_view.follow();
        moved();
    } else if (event->key() == Qt::Key_Escape) {
        setCursor(std::nullopt);
    } else if (event->key() == Qt::Key_Delete) {
        removeSelected();
    } else {
        QWidget::keyPressEvent(event);
    }
}

void TrendPanel::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() != QEvent::PaletteChange)
        return;
    for (TrendLane* lane : m_lanes)
        lane->usePalette();
    for (const Curve& curve : m_curves)
        curve.item->setIcon(CurveColumn, swatch(curveLook(curve.number, isDarkCanvas(palette()))));
    draw();
}

void TrendPanel::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->mimeData()->hasFormat(QLatin1String(variablesMimeType)))
        event->acceptProposedAction();
}

void TrendPanel::dropEvent(QDropEvent* event)
{
    const QByteArray names = event->mimeData()->data(QLatin1String(variablesMimeType));
    add(QString::fromUtf8(names).split(QLatin1Char('\n'), Qt::SkipEmptyParts));
    event->acceptProposedAction();
}

void TrendPanel::openHistory(const QString& path)
{
    m_history.open(path);
}

void TrendPanel::chooseHistory()
{
    const QString path = QFileDialog::getOpenFileName(this, tr("Open a log of values"), QString(),
                                                      tr("Logs (*.sqlite *.db *.sqlite3);;All files (*)"));
    if (!path.isEmpty())
        openHistory(path);
}

bool TrendPanel::saveImage(const QString& path)
{
    const int sharpness = 2;
    QPixmap picture(size() * sharpness);
    picture.setDevicePixelRatio(sharpness);
    picture.fill(palette().color(QPalette::Window));
    render(&picture);
    return picture.save(path);
}

void TrendPanel::chooseImage()
{
    const QString path = QFileDialog::getSaveFileName(this, tr("Save the trend as an image"), QString(),
                                                      tr("Images (*.png *.jpg)"));
    if (!path.isEmpty())
        Q_EMIT told(saveImage(path) ? tr("%1 is saved").arg(path) : tr("%1 could not be written").arg(path));
}

void TrendPanel::saveCsv(const QString& path)
{
    std::vector<CurveSteps> curves;
    for (const Curve& curve : m_curves)
        curves.push_back({m_store.name(curve.key), m_store.variable(curve.key).unit, curve.steps});
    const QPointer<TrendPanel> panel(this);
    const qint64 from = m_view.fromMs();
    const qint64 to = m_view.toMs();
    QThreadPool::globalInstance()->start([panel, path, from, to, curves = std::move(curves)] {
        QSaveFile file(path);
        const bool isWritten =
            file.open(QIODevice::WriteOnly) && writeTrendCsv(&file, curves, from, to) && file.commit();
        QMetaObject::invokeMethod(qApp, [panel, path, isWritten] {
            if (panel)
                Q_EMIT panel->told(isWritten ? tr("%1 is saved").arg(path)
                                             : tr("%1 could not be written").arg(path));
        });
    });
}

void TrendPanel::chooseCsv()
{
    const QString path =
        QFileDialog::getSaveFileName(this, tr("Save what is shown as CSV"), QString(), tr("Tables (*.csv)"));
    if (!path.isEmpty())
        saveCsv(path);
}

} // namespace plc
