// SPDX-License-Identifier: MIT
#include "window/table/state_look.h"

#include <QCoreApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

namespace plc
{

namespace
{

struct LookRow {
    const char* word;
    const char* onLight; ///< colour; dark enough for text on white
    const char* onDark;
};

// Blue, sky blue, grey, orange, purple and vermilion: kinds of colour blindness leave these apart.
const LookRow lookRows[] = {
    {QT_TRANSLATE_NOOP("plc::Look", "fresh"), "#0a6ab0", "#6db9ee"},
    {QT_TRANSLATE_NOOP("plc::Look", "waiting"), "#5a6f80", "#a5bccd"},
    {QT_TRANSLATE_NOOP("plc::Look", "stale"), "#7a7a7a", "#a0a0a0"},
    {QT_TRANSLATE_NOOP("plc::Look", "out of range"), "#a86500", "#f0ad3c"},
    {QT_TRANSLATE_NOOP("plc::Look", "switched off"), "#8a4f78", "#d8a0c6"},
    {QT_TRANSLATE_NOOP("plc::Look", "failed"), "#c04400", "#ff8a50"},
};

const LookRow& rowOf(Look look)
{
    return lookRows[static_cast<int>(look)];
}

QString translated(const char* text)
{
    return QCoreApplication::translate("plc::Look", text);
}

void drawCross(QPainter* painter, const QRectF& box)
{
    painter->drawLine(box.topLeft(), box.bottomRight());
    painter->drawLine(box.topRight(), box.bottomLeft());
}

void drawTriangle(QPainter* painter, const QRectF& box)
{
    QPainterPath path(QPointF(box.center().x(), box.top()));
    path.lineTo(box.bottomRight());
    path.lineTo(box.bottomLeft());
    path.closeSubpath();
    painter->fillPath(path, painter->pen().color());
}

} // namespace

Look lookOf(ValueState state, bool hasFailed, bool outside)
{
    if (hasFailed || state == ValueState::Failed)
        return Look::Failed;
    switch (state) {
    case ValueState::StationOff:
        return Look::Off;
    case ValueState::Stale:
        return Look::Stale;
    case ValueState::NeverRead:
    case ValueState::Unconfirmed:
        return outside ? Look::Outside : Look::Waiting;
    case ValueState::Failed:
    case ValueState::Fresh:
        break;
    }
    return outside ? Look::Outside : Look::Fresh;
}

QString lookWord(Look look)
{
    return translated(rowOf(look).word);
}

bool isDark(const QPalette& palette)
{
    return palette.color(QPalette::Base).lightness() < 128;
}

QColor lookColour(Look look, const QPalette& palette)
{
    return QColor(QLatin1String(isDark(palette) ? rowOf(look).onDark : rowOf(look).onLight));
}

void drawLook(QPainter* painter, const QRect& where, Look look, const QColor& colour)
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const qreal side = std::min(where.width(), where.height());
    QRectF box(0, 0, side * 0.7, side * 0.7);
    box.moveCenter(QRectF(where).center());
    painter->setPen(QPen(colour, side / 8.0));
    switch (look) {
    case Look::Fresh:
        painter->setBrush(colour);
        painter->drawEllipse(box);
        break;
    case Look::Waiting:
        painter->drawEllipse(box);
        break;
    case Look::Stale:
        painter->drawEllipse(box);
        painter->setBrush(colour);
        painter->drawPie(box, 90 * 16, 180 * 16);
        break;
    case Look::Outside:
        drawTriangle(painter, box);
        break;
    case Look::Off:
        painter->drawLine(QPointF(box.left(), box.center().y()), QPointF(box.right(), box.center().y()));
        break;
    case Look::Failed:
        drawCross(painter, box.adjusted(1, 1, -1, -1));
        break;
    }
    painter->restore();
}

QString ageWords(qint64 ms)
{
    if (ms < 0)
        return QString();
    const qint64 seconds = ms / 1000;
    if (seconds < 10)
        return translated(QT_TRANSLATE_NOOP("plc::Look", "%1.%2 s")).arg(seconds).arg(ms % 1000 / 100);
    if (seconds < 120)
        return translated(QT_TRANSLATE_NOOP("plc::Look", "%1 s")).arg(seconds);
    if (seconds < 7200)
        return translated(QT_TRANSLATE_NOOP("plc::Look", "%1 min")).arg(seconds / 60);
    return translated(QT_TRANSLATE_NOOP("plc::Look", "%1 h")).arg(seconds / 3600);
}

} // namespace plc
