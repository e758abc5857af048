// SPDX-License-Identifier: MIT
/// \file
/// \brief The variables as rows of a table, with what is being written to them.
#ifndef WINDOW_TABLE_TABLE_MODEL_H
#define WINDOW_TABLE_TABLE_MODEL_H

#include "window/session/source.h"
#include "window/table/state_look.h"

#include <QAbstractTableModel>

namespace plc
{

/// How the last write to a variable goes; its text says so in words.
enum class WriteMark { None, Waiting, Confirmed, Failed };

class TableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { Name, Value, Range, Age, State, Address, Columns };
    enum Role {
        LookRole = Qt::UserRole, ///< Look
        FractionRole,            ///< where a number lies between its limits, 0 to 1; nothing without limits
        SwitchRole,              ///< true or false for a single bit that was read; nothing for any other
        MarkRole,                ///< WriteMark
        MarkTextRole
    };

    static constexpr qint64 confirmedShownMs = 5000;
    static constexpr qint64 failedShownMs = 60000;

    using QAbstractTableModel::QAbstractTableModel;

    /// Begins anew. \param source outlives its use here; null: no rows
    void setSource(const Source* source);

    /// \return true when other rows have trouble than before
    bool apply(const Snapshot& news);

    /// A write of a row has begun. The row shows what was there before, until it is confirmed and read again.
    /// \param text what it is to be, for people
    void setWriting(int row, quint64 number, const QString& text);

    const ListedVariable& variable(int row) const { return m_variables[static_cast<std::size_t>(row)]; }
    int rowNamed(const QString& name) const; ///< -1: none

    Look look(int row) const;
    ValueState state(int row) const { return at(row).state; }
    qint64 readAtMs(int row) const { return at(row).readAtMs; }
    const std::vector<quint32>& values(int row) const { return at(row).values; } ///< empty: never read
    QString valueWords(int row) const;                                           ///< with its unit
    QString stateWords(int row) const; ///< with the reason of a failure

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;

private:
    struct Row {
        ValueState state = ValueState::NeverRead;
        Failure failure;
        qint64 readAtMs = -1;
        std::vector<quint32> values;
        bool outside = false;
        WriteMark mark = WriteMark::None;
        quint64 write = 0;
        qint64 markedAtMs = 0;
        QString markText;
    };

    const Row& at(int row) const { return m_rows[static_cast<std::size_t>(row)]; }
    void applyValue(const ValueNews& news);
    void applyWrite(const WriteNews& news);
    void fadeMarks();
    void tellChanged();
    void touch(int row);
    QVariant display(int row, int column) const;
    QVariant fraction(int row) const;
    QString toolTip(int row) const;

    const Source* m_source = nullptr;
    std::vector<ListedVariable> m_variables;
    std::vector<Row> m_rows;
    std::vector<int> m_marked; // rows with a mark that fades
    int m_firstTouched = -1;
    int m_lastTouched = -1;
    bool m_troubleMoved = false;
};

} // namespace plc

#endif
