// SPDX-License-Identifier: MIT
#include "window/table/table_filter.h"

#include "runtime/model/shown_number.h"
#include "window/table/table_model.h"

#include <cmath>

namespace plc
{

namespace
{

bool hasTrouble(Look look)
{
    return look > Look::Waiting;
}

} // namespace

TableFilter::TableFilter(TableModel* model) : QSortFilterProxyModel(model), m_model(model)
{
    setDynamicSortFilter(false);
    setSourceModel(model);
}

void TableFilter::setWords(const QString& text)
{
    m_words = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    invalidateFilter();
}

void TableFilter::setTroubleOnly(bool only)
{
    m_troubleOnly = only;
    invalidateFilter();
}

void TableFilter::setTroubleFirst(bool first)
{
    m_troubleFirst = first;
    resort();
}

void TableFilter::sort(int column, Qt::SortOrder order)
{
    m_column = column;
    m_order = order;
    resort();
}

/// Without a column rows stay in the list's order, below those with trouble. The base sorts by lessThan(),
/// whatever column it is told.
void TableFilter::resort()
{
    const bool sorts = m_troubleFirst || m_column >= 0;
    if (m_troubleOnly)
        invalidateFilter();
    QSortFilterProxyModel::sort(sorts ? 0 : -1, Qt::AscendingOrder);
}

bool TableFilter::movesWithValues() const
{
    return m_troubleOnly || m_troubleFirst || m_column == TableModel::Value ||
           m_column == TableModel::Range || m_column == TableModel::Age || m_column == TableModel::State;
}

bool TableFilter::filterAcceptsRow(int row, const QModelIndex&) const
{
    if (m_troubleOnly && !hasTrouble(m_model->look(row)))
        return false;
    if (m_words.isEmpty())
        return true;
    const ListedVariable& variable = m_model->variable(row);
    const QStringList texts = {variable.name, variable.unit, variable.comment,
                               variableText(variable.elements), m_model->stateWords(row)};
    return std::all_of(m_words.begin(), m_words.end(), [&texts](const QString& word) {
        return std::any_of(texts.begin(), texts.end(),
                           [&word](const QString& text) { return text.contains(word, Qt::CaseInsensitive); });
    });
}

bool TableFilter::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    const int a = left.row();
    const int b = right.row();
    if (m_troubleFirst && m_model->look(a) != m_model->look(b))
        return m_model->look(a) > m_model->look(b);
    return m_order == Qt::AscendingOrder ? columnLess(a, b) : columnLess(b, a);
}

double TableFilter::number(int row) const
{
    const double number = shownNumber(m_model->variable(row), m_model->values(row));
    return std::isfinite(number) ? number : -HUGE_VAL;
}

bool TableFilter::columnLess(int a, int b) const
{
    switch (m_column) {
    case TableModel::Name:
        return QString::compare(m_model->variable(a).name, m_model->variable(b).name, Qt::CaseInsensitive) <
               0;
    case TableModel::Value:
        return number(a) < number(b);
    case TableModel::Range:
        return m_model->index(a, 0).data(TableModel::FractionRole).toDouble() <
               m_model->index(b, 0).data(TableModel::FractionRole).toDouble();
    case TableModel::Age:
        return m_model->readAtMs(a) > m_model->readAtMs(b);
    case TableModel::State:
        return m_model->look(a) > m_model->look(b);
    case TableModel::Address: {
        const Variable& x = m_model->variable(a).elements;
        const Variable& y = m_model->variable(b).elements;
        return std::tie(x.station, x.area, x.element) < std::tie(y.station, y.area, y.element);
    }
    default:
        return a < b;
    }
}

} // namespace plc
