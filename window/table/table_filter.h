// SPDX-License-Identifier: MIT
/// \file
/// \brief Which rows are shown, and in which order.
#ifndef WINDOW_TABLE_TABLE_FILTER_H
#define WINDOW_TABLE_TABLE_FILTER_H

#include <QSortFilterProxyModel>
#include <QStringList>

namespace plc
{

class TableModel;

/// Rows move only when resort() is called, not with every value: what is being read stays where it is.
class TableFilter : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    explicit TableFilter(TableModel* model);

    /// Rows that hold all words of \a text, in name, address, unit, comment or state, are shown.
    void setWords(const QString& text);

    void setTroubleOnly(bool only);
    bool troubleOnly() const { return m_troubleOnly; }

    /// What is worst stands on top, and is sorted in itself.
    void setTroubleFirst(bool first);
    bool troubleFirst() const { return m_troubleFirst; }

    void sort(int column, Qt::SortOrder order) override;

    /// Brings rows to where they belong by now.
    void resort();

    /// \return true when values decide the order
    bool movesWithValues() const;

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override;
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    bool columnLess(int left, int right) const;
    double number(int row) const;

    TableModel* const m_model;
    QStringList m_words;
    bool m_troubleOnly = false;
    bool m_troubleFirst = false;
    int m_column = -1;
    Qt::SortOrder m_order = Qt::AscendingOrder;
};

} // namespace plc

#endif
