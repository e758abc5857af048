// SPDX-License-Identifier: MIT
/// \file
/// \brief The table with its filter, and writing from it.
#ifndef WINDOW_TABLE_TABLE_PANEL_H
#define WINDOW_TABLE_TABLE_PANEL_H

#include <QDialog>
#include <QPointer>
#include <QWidget>

#include <vector>

class QAction;
class QLineEdit;
class QTableView;

namespace plc
{

class LiveSession;
class Source;
class TableFilter;
class TableModel;
struct Snapshot;

class TablePanel : public QWidget
{
    Q_OBJECT

public:
    explicit TablePanel(QWidget* parent = nullptr);

    /// \param session for writing; null where nothing can be written
    void setSource(const Source* source, LiveSession* session);
    void apply(const Snapshot& news);

    /// \return the rows whose ages are to be known
    std::vector<int> looked() const;

    TableModel* model() const { return m_model; }
    QTableView* view() const { return m_view; }

    /// What can be done here, for menus: write, filter, trouble.
    std::vector<QAction*> tableActions() const;

    QByteArray saveColumns() const;
    void restoreColumns(const QByteArray& columns);

Q_SIGNALS:
    /// A person points at a variable.
    void chosen(int row);
    void told(const QString& words); ///< for the status line
    void trendWanted(const QStringList& names);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void makeActions();
    void makeView();
    void write();
    void write(const std::vector<int>& rows);
    std::vector<int> selectedRows() const;
    void resort();
    void choose(const QModelIndex& index);

    TableModel* m_model;
    TableFilter* m_filter;
    QLineEdit* m_words;
    QTableView* m_view;
    QAction* m_write = nullptr;
    QAction* m_trend = nullptr;
    QAction* m_frame = nullptr;
    QAction* m_find = nullptr;
    QAction* m_troubleFirst = nullptr;
    QAction* m_troubleOnly = nullptr;
    QAction* m_listOrder = nullptr;
    const Source* m_source = nullptr;
    LiveSession* m_session = nullptr;
    QPointer<QDialog> m_dialog; // one at a time
    qint64 m_sortedAtMs = 0;
    bool m_troubleMoved = false;
};

} // namespace plc

#endif
