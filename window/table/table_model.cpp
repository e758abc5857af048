// SPDX-License-Identifier: MIT
#include "window/table/table_model.h"

#include "runtime/modbus/failure_words.h"
#include "runtime/model/listed_value.h"
#include "runtime/model/shown_number.h"

#include <QMimeData>

#include <algorithm>
#include <cmath>

namespace plc
{

void TableModel::setSource(const Source* source)
{
    beginResetModel();
    m_source = source;
    m_variables = source ? source->watched().variables : std::vector<ListedVariable>();
    m_rows.assign(m_variables.size(), Row());
    m_marked.clear();
    m_firstTouched = -1;
    endResetModel();
}

bool TableModel::apply(const Snapshot& news)
{
    m_troubleMoved = false;
    for (const ValueNews& value : news.values)
        applyValue(value);
    for (const WriteNews& write : news.writes)
        applyWrite(write);
    fadeMarks();
    tellChanged();
    return m_troubleMoved;
}

void TableModel::touch(int row)
{
    m_firstTouched = m_firstTouched < 0 ? row : std::min(m_firstTouched, row);
    m_lastTouched = std::max(m_lastTouched, row);
}

/// One word for all that changed: the view repaints only what it shows.
void TableModel::tellChanged()
{
    if (m_firstTouched < 0)
        return;
    Q_EMIT dataChanged(index(m_firstTouched, 0), index(m_lastTouched, Columns - 1));
    m_firstTouched = -1;
    m_lastTouched = -1;
}

void TableModel::applyValue(const ValueNews& news)
{
    Row& row = m_rows[static_cast<std::size_t>(news.index)];
    const Look before = look(news.index);
    row.state = news.state;
    row.failure = news.failure;
    row.readAtMs = news.readAtMs;
    if (news.answered) {
        row.values = news.values;
        row.outside = isOutside(variable(news.index), row.values);
    }
    m_troubleMoved = m_troubleMoved || before != look(news.index);
    touch(news.index);
}

/// A newer write has the mark; how an older one ended does not matter any more.
void TableModel::applyWrite(const WriteNews& news)
{
    Row& row = m_rows[static_cast<std::size_t>(news.index)];
    if (row.write != news.number)
        return;
    const WriteOutcome& outcome = news.outcome;
    if (outcome.confirmed) {
        row.mark = WriteMark::Confirmed;
        row.markText = tr("%1 confirmed").arg(row.markText);
    } else if (outcome.broadcast) {
        row.mark = WriteMark::Confirmed;
        row.markText = tr("%1 sent to all, which nobody confirms").arg(row.markText);
    } else {
        row.mark = WriteMark::Failed;
        row.markText = tr("%1 not written: %2").arg(row.markText, failureWords(outcome));
    }
    row.markedAtMs = m_source->nowMs();
    m_marked.push_back(news.index);
    touch(news.index);
}

void TableModel::fadeMarks()
{
    const qint64 now = m_source ? m_source->nowMs() : 0;
    const auto isOver = [this, now](int index) {
        Row& row = m_rows[static_cast<std::size_t>(index)];
        if (row.mark == WriteMark::Waiting || row.mark == WriteMark::None)
            return true; // a newer write took its place
        const qint64 shown = row.mark == WriteMark::Failed ? failedShownMs : confirmedShownMs;
        if (now - row.markedAtMs < shown)
            return false;
        row.mark = WriteMark::None;
        row.markText.clear();
        touch(index);
        return true;
    };
    m_marked.erase(std::remove_if(m_marked.begin(), m_marked.end(), isOver), m_marked.end());
}

void TableModel::setWriting(int index, quint64 number, const QString& text)
{
    Row& row = m_rows[static_cast<std::size_t>(index)];
    row.mark = WriteMark::Waiting;
    row.write = number;
    row.markText = text;
    touch(index);
    tellChanged();
}

int TableModel::rowNamed(const QString& name) const
{
    const auto found =
        std::find_if(m_variables.begin(), m_variables.end(),
                     [&name](const ListedVariable& variable) { return variable.name == name; });
    return found == m_variables.end() ? -1 : static_cast<int>(found - m_variables.begin());
}

Look TableModel::look(int row) const
{
    return lookOf(at(row).state, hasFailed(at(row).failure), at(row).outside);
}

QString TableModel::valueWords(int row) const
{
    const ListedVariable& listed = variable(row);
    if (at(row).values.empty())
        return QStringLiteral("\u2013");
    if (listed.type == ValueType::Bit && listed.count == 1)
        return at(row).values.front() != 0 ? tr("on") : tr("off");
    return listedText(listed, at(row).values) + unitText(listed);
}

QString TableModel::stateWords(int row) const
{
    const QString word = at(row).state == ValueState::NeverRead && !hasFailed(at(row).failure)
                             ? tr("not read yet")
                             : lookWord(look(row));
    QString more;
    if (hasFailed(at(row).failure))
        more = failureWords(at(row).failure);
    else if (look(row) == Look::Outside)
        more = limitsText(variable(row));
    return more.isEmpty() ? word : QStringLiteral("%1: %2").arg(word, more);
}

int TableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int TableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(Columns);
}

QVariant TableModel::fraction(int row) const
{
    const ListedVariable& listed = variable(row);
    const double number = shownNumber(listed, at(row).values);
    if (!listed.min || !listed.max || *listed.max <= *listed.min || !std::isfinite(number))
        return QVariant();
    return std::clamp((number - *listed.min) / (*listed.max - *listed.min), 0.0, 1.0);
}

QVariant TableModel::display(int row, int column) const
{
    switch (column) {
    case Name:
        return variable(row).name.text();
    case Value:
        return valueWords(row);
    case Range:
        return limitsText(variable(row));
    case Age:
        return at(row).readAtMs < 0 ? QString()
                                    : ageWords(std::max<qint64>(0, m_source->nowMs() - at(row).readAtMs));
    case State:
        return stateWords(row);
    case Address:
        return variableText(variable(row).elements);
    default:
        return QVariant();
    }
}

QString TableModel::toolTip(int row) const
{
    const ListedVariable& listed = variable(row);
    QStringList lines = {listed.name + QStringLiteral(": ") + valueWords(row), stateWords(row),
                         tr("%1, address %2").arg(valueTypeWord(listed.type), variableText(listed.elements))};
    if (!listed.comment.isEmpty())
        lines << listed.comment;
    if (listed.access == Access::ReadOnly)
        lines << tr("is only read");
    if (!at(row).markText.isEmpty())
        lines << at(row).markText;
    return lines.join(QLatin1Char('\n'));
}

QVariant TableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return QVariant();
    const int row = index.row();
    const ListedVariable& listed = variable(row);
    switch (role) {
    case Qt::DisplayRole:
        return display(row, index.column());
    case Qt::ToolTipRole:
        return toolTip(row);
    case Qt::AccessibleTextRole:
        return index.column() == Value && !at(row).markText.isEmpty()
                   ? valueWords(row) + QStringLiteral(", ") + at(row).markText
                   : display(row, index.column()).toString();
    case Qt::TextAlignmentRole:
        return index.column() == Value && listed.type != ValueType::Text && listed.type != ValueType::Bit
                   ? QVariant(Qt::AlignRight | Qt::AlignVCenter)
                   : QVariant(Qt::AlignLeft | Qt::AlignVCenter);
    case LookRole:
        return static_cast<int>(look(row));
    case FractionRole:
        return fraction(row);
    case SwitchRole:
        return listed.type == ValueType::Bit && listed.count == 1 && !at(row).values.empty()
                   ? QVariant(at(row).values.front() != 0)
                   : QVariant();
    case MarkRole:
        return static_cast<int>(at(row).mark);
    case MarkTextRole:
        return at(row).markText;
    default:
        return QVariant();
    }
}

QVariant TableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal)
        return QVariant();
    const QString names[] = {tr("Name"), tr("Value"), tr("Range"), tr("Age"), tr("State"), tr("Address")};
    return section >= 0 && section < Columns ? names[section] : QVariant();
}

Qt::ItemFlags TableModel::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    return index.isValid() ? flags | Qt::ItemIsDragEnabled : flags;
}

QStringList TableModel::mimeTypes() const
{
    return {QLatin1String(variablesMimeType)};
}

QMimeData* TableModel::mimeData(const QModelIndexList& indexes) const
{
    QStringList names;
    for (const QModelIndex& index : indexes) {
        if (!names.contains(variable(index.row()).name))
            names << variable(index.row()).name;
    }
    auto* data = new QMimeData;
    data->setData(QLatin1String(variablesMimeType), names.join(QLatin1Char('\n')).toUtf8());
    data->setText(names.join(QLatin1Char('\n')));
    return data;
}

} // namespace plc
