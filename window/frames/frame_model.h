// SPDX-License-Identifier: MIT
/// \file
/// \brief The frames that went over the link, and what came back.
#ifndef WINDOW_FRAMES_FRAME_MODEL_H
#define WINDOW_FRAMES_FRAME_MODEL_H

#include "window/session/snapshot.h"

#include <QAbstractTableModel>

#include <deque>

namespace plc
{

/// Which frames are shown; all must hold.
struct FrameFilter {
    int station = -1;                ///< -1: any
    bool isVariable = false;         ///< only frames that carry one of these
    std::vector<Variable> variables; ///< stations filled in
    bool troubleOnly = false;
};

/// The last so many are kept. Words are made when a row is looked at: frames that nobody sees cost little.
class FrameModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { Time, Station, Request, Reply, Result, Took, RequestBytes, ReplyBytes, Columns };

    static constexpr std::size_t mostFrames = 20000;

    using QAbstractTableModel::QAbstractTableModel;

    void clear();
    void append(const std::vector<FrameEntry>& frames);
    void setFilter(const FrameFilter& filter);

    /// \return the row of the last frame that carries elements of \a variable; -1: none is shown
    int rowOf(const Variable& variable) const;

    const FrameEntry& frame(int row) const;
    static bool hasTrouble(const FrameEntry& frame);
    static QString requestText(const FrameEntry& frame);
    static QString replyText(const FrameEntry& frame);

    /// \return everything about a frame, for people
    QString details(int row) const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    bool isShown(const FrameEntry& frame) const;
    void dropOldest(std::size_t count);

    std::deque<FrameEntry> m_frames;
    quint64 m_firstNumber = 0;   // of m_frames
    std::deque<quint64> m_shown; // numbers
    FrameFilter m_filter;
};

} // namespace plc

#endif
