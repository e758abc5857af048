// SPDX-License-Identifier: MIT
/// \file
/// \brief Paints the cells of the table: switches, bars, states, and how writes go.
#ifndef WINDOW_TABLE_VALUE_DELEGATE_H
#define WINDOW_TABLE_VALUE_DELEGATE_H

#include <QStyledItemDelegate>

namespace plc
{

class ValueDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

} // namespace plc

#endif
