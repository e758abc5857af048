// SPDX-License-Identifier: MIT
#include "window/frames/frame_model.h"

#include "driver/plcdriver.h"
#include "runtime/modbus/dialect.h"
#include "runtime/modbus/frame_words.h"
#include "runtime/modbus/request_pieces.h"
#include "runtime/modbus/return_code_words.h"
#include "runtime/modbus/return_codes.h"

#include <QDateTime>

#include <algorithm>

namespace plc
{

bool FrameModel::hasTrouble(const FrameEntry& frame)
{
    return !isSuccess(frame.result) || !frame.exchange.dropped.empty();
}

QString FrameModel::requestText(const FrameEntry& frame)
{
    const QString words = dialectOf(frame.exchange.format).requestWords(frame.frame);
    return frame.exchange.sent ? words : tr("%1 (not sent: no connection)").arg(words);
}

QString FrameModel::replyText(const FrameEntry& frame)
{
    if (!frame.replyExpected)
        return tr("no reply is expected");
    return dialectOf(frame.exchange.format).replyWords(frame.frame, frame.exchange.reply);
}

void FrameModel::clear()
{
    beginResetModel();
    m_frames.clear();
    m_shown.clear();
    m_firstNumber = 0;
    endResetModel();
}

bool FrameModel::isShown(const FrameEntry& frame) const
{
    if (m_filter.troubleOnly && !hasTrouble(frame))
        return false;
    if (m_filter.station >= 0 && m_filter.station != frame.station)
        return false;
    return !m_filter.isVariable ||
           std::any_of(m_filter.variables.begin(), m_filter.variables.end(),
                       [&frame](const Variable& variable) { return overlaps(variable, frame.elements); });
}

void FrameModel::dropOldest(std::size_t count)
{
    const quint64 first = m_firstNumber + count;
    const auto kept = std::lower_bound(m_shown.begin(), m_shown.end(), first);
    const auto rows = static_cast<int>(kept - m_shown.begin());
    if (rows > 0)
        beginRemoveRows(QModelIndex(), 0, rows - 1);
    m_shown.erase(m_shown.begin(), kept);
    m_frames.erase(m_frames.begin(), m_frames.begin() + static_cast<std::ptrdiff_t>(count));
    m_firstNumber = first;
    if (rows > 0)
        endRemoveRows();
}

void FrameModel::append(const std::vector<FrameEntry>& frames)
{
    if (frames.empty())
        return;
    std::vector<quint64> shown;
    quint64 number = m_firstNumber + m_frames.size();
    for (const FrameEntry& frame : frames) {
        if (isShown(frame))
            shown.push_back(number);
        ++number;
    }
    const int rows = rowCount();
    if (!shown.empty())
        beginInsertRows(QModelIndex(), rows, rows + static_cast<int>(shown.size()) - 1);
    m_frames.insert(m_frames.end(), frames.begin(), frames.end());
    m_shown.insert(m_shown.end(), shown.begin(), shown.end());
    if (!shown.empty())
        endInsertRows();
    if (m_frames.size() > mostFrames)
        dropOldest(m_frames.size() - mostFrames);
}

void FrameModel::setFilter(const FrameFilter& filter)
{
    beginResetModel();
    m_filter = filter;
    m_shown.clear();
    for (std::size_t index = 0; index < m_frames.size(); ++index) {
        if (isShown(m_frames[index]))
            m_shown.push_back(m_firstNumber + index);
    }
    endResetModel();
}

int FrameModel::rowOf(const Variable& variable) const
{
    for (int row = rowCount() - 1; row >= 0; --row) {
        if (overlaps(variable, frame(row).elements))
            return row;
    }
    return -1;
}

const FrameEntry& FrameModel::frame(int row) const
{
    return m_frames[static_cast<std::size_t>(m_shown[static_cast<std::size_t>(row)] - m_firstNumber)];
}

QString FrameModel::details(int row) const
{
    const FrameEntry& entry = frame(row);
    QStringList lines = {requestText(entry),
                         hexText(entry.exchange.sent ? entry.exchange.sentFrame : entry.frame), QString(),
                         replyText(entry)};
    if (!entry.exchange.reply.isEmpty())
        lines << hexText(entry.exchange.reply);
    for (const DroppedReply& dropped : entry.exchange.dropped)
        lines << QString() << tr("dropped: %1").arg(dropReasonWords(dropped.reason))
              << hexText(dropped.reply);
    lines << QString()
          << tr("%1 (code %2), %3 ms").arg(resultWords(entry.result)).arg(entry.result).arg(entry.durationMs);
    return lines.join(QLatin1Char('\n'));
}

int FrameModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_shown.size());
}

int FrameModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(Columns);
}

QVariant FrameModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount() || (role != Qt::DisplayRole && role != Qt::ToolTipRole))
        return QVariant();
    const FrameEntry& entry = frame(index.row());
    switch (index.column()) {
    case Time:
        return QDateTime::fromMSecsSinceEpoch(entry.atMs).toString(QStringLiteral("HH:mm:ss.zzz"));
    case Station:
        return entry.station;
    case Request:
        return requestText(entry);
    case Reply:
        return replyText(entry);
    case Result:
        return hasTrouble(entry) ? QStringLiteral("\u2717 ") + resultWords(entry.result)
                                 : resultWords(entry.result);
    case Took:
        return tr("%1 ms").arg(entry.durationMs);
    case RequestBytes:
        return hexText(entry.exchange.sent ? entry.exchange.sentFrame : entry.frame);
    case ReplyBytes:
        return hexText(entry.exchange.reply);
    default:
        return QVariant();
    }
}

QVariant FrameModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal)
        return QVariant();
    const QString names[] = {tr("Time"),   tr("Station"), tr("Request"),       tr("Reply"),
                             tr("Result"), tr("Took"),    tr("Request bytes"), tr("Reply bytes")};
    return section >= 0 && section < Columns ? names[section] : QVariant();
}

} // namespace plc
