// SPDX-License-Identifier: MIT
#include "window/table/value_delegate.h"

#include "window/table/table_model.h"

#include <QApplication>
#include <QPainter>

namespace plc
{

namespace
{

const int margin = 5; // beside a cell's text

/// What a cell is painted with.
struct Cell {
    QPainter* painter;
    const QStyleOptionViewItem& option;
    const QModelIndex& index;

    QRect inside() const { return option.rect.adjusted(margin, 0, -margin, 0); }
    Look look() const { return static_cast<Look>(index.data(TableModel::LookRole).toInt()); }
    bool isSelected() const { return option.state & QStyle::State_Selected; }
    QColor colourOf(Look look) const
    {
        return isSelected() ? option.palette.color(QPalette::HighlightedText)
                            : lookColour(look, option.palette);
    }
    QColor textColour() const
    {
        return option.palette.color(isSelected() ? QPalette::HighlightedText : QPalette::Text);
    }
};

/// What is not as the controller answered just now.
bool isOld(Look look)
{
    return look == Look::Stale || look == Look::Off || look == Look::Failed;
}

void drawText(const Cell& cell, const QRect& where, const QString& text, int alignment)
{
    const QString shown = cell.painter->fontMetrics().elidedText(text, Qt::ElideRight, where.width());
    cell.painter->drawText(where, alignment | Qt::AlignVCenter, shown);
}

/// What is old looks old without any colour, too: hatched, slanted, in parentheses.
void makeOld(const Cell& cell)
{
    QColor hatch = cell.textColour();
    hatch.setAlpha(28);
    cell.painter->fillRect(cell.option.rect, QBrush(hatch, Qt::BDiagPattern));
    QFont font = cell.option.font;
    font.setItalic(true);
    cell.painter->setFont(font);
    QColor colour = cell.textColour();
    colour.setAlpha(165);
    cell.painter->setPen(colour);
}

void drawSwitch(const Cell& cell, const QRect& where, bool on)
{
    const QColor colour =
        on && !isOld(cell.look()) ? cell.colourOf(Look::Fresh) : cell.painter->pen().color();
    QRectF track(where.left(), 0, where.height() * 0.95, where.height() * 0.5);
    track.moveCenter(QPointF(track.center().x(), where.center().y() + 0.5));
    const qreal radius = track.height() / 2;
    cell.painter->save();
    cell.painter->setRenderHint(QPainter::Antialiasing);
    cell.painter->setPen(QPen(colour, 1.2));
    cell.painter->setBrush(on ? QBrush(colour) : QBrush(Qt::NoBrush));
    cell.painter->drawRoundedRect(track, radius, radius);
    const bool isSelected = cell.isSelected();
    cell.painter->setBrush(!on          ? QBrush(colour)
                           : isSelected ? cell.option.palette.highlight()
                                        : cell.option.palette.base());
    const QPointF knob(on ? track.right() - radius : track.left() + radius, track.center().y());
    cell.painter->drawEllipse(knob, radius - 2.5, radius - 2.5);
    cell.painter->restore();
}

/// \return what is left of \a where
QRect drawMark(const Cell& cell, QRect where)
{
    const auto mark = static_cast<WriteMark>(cell.index.data(TableModel::MarkRole).toInt());
    if (mark == WriteMark::None)
        return where;
    const QString words = cell.index.data(TableModel::MarkTextRole).toString();
    const QString text = mark == WriteMark::Waiting     ? TableModel::tr("writing %1 \u2026").arg(words)
                         : mark == WriteMark::Confirmed ? QStringLiteral("\u2713 ") + words
                                                        : QStringLiteral("\u2717 ") + words;
    const Look look = mark == WriteMark::Failed      ? Look::Failed
                      : mark == WriteMark::Confirmed ? Look::Fresh
                                                     : Look::Waiting;
    const int needed =
        cell.painter->fontMetrics().horizontalAdvance(cell.index.data().toString()) + margin * 2;
    const QRect room = where.adjusted(0, 0, -std::min(needed, where.width() / 2), 0);
    cell.painter->save();
    cell.painter->setPen(cell.colourOf(look));
    drawText(cell, room, text, Qt::AlignLeft);
    cell.painter->restore();
    where.setLeft(room.right() + margin);
    return where;
}

void drawValue(const Cell& cell)
{
    QRect where = drawMark(cell, cell.inside());
    const QVariant on = cell.index.data(TableModel::SwitchRole);
    QString text = cell.index.data().toString();
    if (isOld(cell.look())) {
        makeOld(cell);
        text = QStringLiteral("(%1)").arg(text);
    }
    int alignment = cell.index.data(Qt::TextAlignmentRole).toInt() & Qt::AlignHorizontal_Mask;
    if (on.isValid()) {
        drawSwitch(cell, where, on.toBool());
        where.setLeft(where.left() + where.height() + margin);
        alignment = Qt::AlignLeft;
    }
    drawText(cell, where, text, alignment);
}

void drawBar(const Cell& cell)
{
    const QVariant fraction = cell.index.data(TableModel::FractionRole);
    if (!fraction.isValid()) {
        QColor dim = cell.textColour();
        dim.setAlpha(150);
        cell.painter->setPen(dim);
        drawText(cell, cell.inside(), cell.index.data().toString(), Qt::AlignLeft);
        return;
    }
    QRectF track = cell.inside();
    track.setHeight(std::min(10.0, track.height() * 0.4));
    track.moveCenter(QRectF(cell.inside()).center());
    QColor ground = cell.textColour();
    ground.setAlpha(35);
    cell.painter->setRenderHint(QPainter::Antialiasing);
    cell.painter->setPen(Qt::NoPen);
    cell.painter->setBrush(ground);
    cell.painter->drawRoundedRect(track, 2, 2);
    QRectF filled = track;
    filled.setWidth(std::max(2.0, track.width() * fraction.toDouble()));
    cell.painter->setBrush(
        isOld(cell.look())
            ? QBrush(cell.colourOf(Look::Stale), Qt::BDiagPattern)
            : QBrush(cell.colourOf(cell.look() == Look::Outside ? Look::Outside : Look::Fresh)));
    cell.painter->drawRoundedRect(filled, 2, 2);
}

void drawState(const Cell& cell)
{
    QRect where = cell.inside();
    const QRect shape(where.left(), where.top(), where.height() * 2 / 3, where.height());
    drawLook(cell.painter, shape, cell.look(), cell.colourOf(cell.look()));
    where.setLeft(shape.right() + margin);
    cell.painter->setPen(cell.colourOf(cell.look()));
    drawText(cell, where, cell.index.data().toString(), Qt::AlignLeft);
}

} // namespace

void ValueDelegate::paint(QPainter* painter, const QStyleOptionViewItem& given,
                          const QModelIndex& index) const
{
    QStyleOptionViewItem option = given;
    initStyleOption(&option, index);
    option.text.clear();
    const QStyle* style = option.widget ? option.widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &option, painter,
                       option.widget); // background, selection, focus
    painter->save();
    painter->setClipRect(option.rect);
    painter->setFont(option.font);
    const Cell cell{painter, option, index};
    painter->setPen(cell.textColour());
    switch (index.column()) {
    case TableModel::Value:
        drawValue(cell);
        break;
    case TableModel::Range:
        drawBar(cell);
        break;
    case TableModel::State:
        drawState(cell);
        break;
    default:
        drawText(cell, cell.inside(), index.data().toString(), Qt::AlignLeft);
    }
    painter->restore();
}

QSize ValueDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    size.setWidth(size.width() + 2 * margin);
    return size;
}

} // namespace plc
