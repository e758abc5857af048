// SPDX-License-Identifier: MIT
#include "window/table/table_panel.h"

#include "window/session/live_session.h"
#include "window/table/table_filter.h"
#include "window/table/table_model.h"
#include "window/table/value_delegate.h"
#include "window/table/write_dialog.h"

#include <QAction>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTableView>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <numeric>

namespace plc
{

namespace
{

const qint64 sortEveryMs = 1000;
const int rowPadding = 10;

} // namespace

TablePanel::TablePanel(QWidget* parent)
    : QWidget(parent), m_model(new TableModel(this)), m_filter(new TableFilter(m_model)),
      m_words(new QLineEdit), m_view(new QTableView)
{
    makeActions();
    makeView();
    m_words->setPlaceholderText(tr("Filter: words of name, address, unit, comment or state"));
    m_words->setAccessibleName(tr("filter of the table"));
    m_words->setClearButtonEnabled(true);
    connect(m_words, &QLineEdit::textChanged, m_filter, &TableFilter::setWords);
    connect(m_words, &QLineEdit::returnPressed, m_view, QOverload<>::of(&QWidget::setFocus));
    auto* bar = new QHBoxLayout;
    bar->addWidget(m_words);
    for (QAction* action : {m_troubleFirst, m_troubleOnly, m_write}) {
        auto* button = new QToolButton;
        button->setDefaultAction(action);
        bar->addWidget(button);
    }
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 0);
    layout->addLayout(bar);
    layout->addWidget(m_view);
}

void TablePanel::makeActions()
{
    const auto action = [this](const QString& text, const QKeySequence& keys) {
        auto* made = new QAction(text, this);
        made->setShortcut(keys);
        made->setShortcutContext(Qt::WindowShortcut);
        addAction(made);
        return made;
    };
    m_write = action(tr("&Write…"), QKeySequence(tr("Ctrl+W")));
    m_trend = action(tr("Show in &trend"), QKeySequence(tr("Ctrl+T")));
    m_frame = action(tr("Find its &frame"), QKeySequence(tr("Ctrl+G")));
    m_find = action(tr("&Filter"), QKeySequence::Find);
    m_troubleFirst = action(tr("Trouble &first"), QKeySequence(tr("Ctrl+1")));
    m_troubleOnly = action(tr("Trouble &only"), QKeySequence(tr("Ctrl+2")));
    m_listOrder = action(tr("&Order of the list"), QKeySequence(tr("Ctrl+0")));
    m_troubleFirst->setCheckable(true);
    m_troubleOnly->setCheckable(true);
    connect(m_write, &QAction::triggered, this, [this] { write(); });
    connect(m_find, &QAction::triggered, this, [this] {
        m_words->setFocus();
        m_words->selectAll();
    });
    connect(m_troubleFirst, &QAction::toggled, m_filter, &TableFilter::setTroubleFirst);
    connect(m_troubleOnly, &QAction::toggled, m_filter, &TableFilter::setTroubleOnly);
    connect(m_listOrder, &QAction::triggered, this, [this] {
        m_view->horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
        m_troubleFirst->setChecked(false);
        m_filter->sort(-1, Qt::AscendingOrder);
    });
    connect(m_frame, &QAction::triggered, this, [this] { choose(m_view->currentIndex()); });
    connect(m_trend, &QAction::triggered, this, [this] {
        QStringList names;
        for (const int row : selectedRows())
            names << m_model->variable(row).name;
        Q_EMIT trendWanted(names);
    });
}

void TablePanel::makeView()
{
    m_view->setModel(m_filter);
    m_view->setItemDelegate(new ValueDelegate(m_view));
    m_view->setAccessibleName(tr("variables"));
    m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setDragEnabled(true);
    m_view->setAlternatingRowColors(true);
    m_view->setShowGrid(false);
    m_view->setTabKeyNavigation(false); // Tab leads on to the next part of the window
    m_view->setWordWrap(false);
    m_view->setContextMenuPolicy(Qt::ActionsContextMenu);
    m_view->addActions({m_write, m_trend, m_frame});
    m_view->verticalHeader()->hide();
    m_view->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_view->verticalHeader()->setDefaultSectionSize(m_view->fontMetrics().height() + rowPadding);
    QHeaderView* header = m_view->horizontalHeader();
    header->setSortIndicator(-1, Qt::AscendingOrder);
    m_view->setSortingEnabled(true);
    header->setHighlightSections(false);
    header->setStretchLastSection(false);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    const int letter = m_view->fontMetrics().averageCharWidth();
    const int letters[TableModel::Columns] = {28, 44, 16, 10, 34, 16};
    for (int column = 0; column < TableModel::Columns; ++column)
        header->resizeSection(column, letters[column] * letter);
    header->setSectionResizeMode(TableModel::State, QHeaderView::Stretch);
    connect(m_view, &QTableView::doubleClicked, this, [this] { write(); });
    connect(m_view, &QTableView::clicked, this, &TablePanel::choose);
    m_view->installEventFilter(this);
}

/// Enter, as a double-click, writes. No shortcut, which other parts of the window would miss.
bool TablePanel::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != m_view || event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key != Qt::Key_Return && key != Qt::Key_Enter && key != Qt::Key_F2)
        return QWidget::eventFilter(watched, event);
    write();
    return true;
}

std::vector<QAction*> TablePanel::tableActions() const
{
    return {m_write, m_trend, m_frame, m_find, m_troubleFirst, m_troubleOnly, m_listOrder};
}

void TablePanel::setSource(const Source* source, LiveSession* session)
{
    m_source = source;
    m_session = session;
    m_model->setSource(source);
    m_write->setEnabled(session != nullptr);
    if (m_model->rowCount() > 0)
        m_view->setCurrentIndex(m_filter->index(0, 0));
}

void TablePanel::apply(const Snapshot& news)
{
    m_troubleMoved = m_model->apply(news) || m_troubleMoved;
    resort();
}

/// Rows that move all the time cannot be read, nor hit.
void TablePanel::resort()
{
    const qint64 now = m_source ? m_source->nowMs() : 0;
    if (!m_filter->movesWithValues() || std::abs(now - m_sortedAtMs) < sortEveryMs)
        return;
    const bool onlyTrouble = m_filter->troubleFirst() || m_filter->troubleOnly();
    if (onlyTrouble && !m_troubleMoved && m_view->horizontalHeader()->sortIndicatorSection() < 0)
        return;
    m_filter->resort();
    m_sortedAtMs = now;
    m_troubleMoved = false;
}

std::vector<int> TablePanel::looked() const
{
    std::vector<int> rows;
    if (m_view->horizontalHeader()->sortIndicatorSection() == TableModel::Age) {
        rows.resize(static_cast<std::size_t>(m_model->rowCount()));
        std::iota(rows.begin(), rows.end(), 0);
        return rows;
    }
    const int first = m_view->rowAt(0);
    const int below = m_view->rowAt(m_view->viewport()->height() - 1);
    const int last = below < 0 ? m_filter->rowCount() - 1 : below;
    for (int row = first; first >= 0 && row <= last; ++row)
        rows.push_back(m_filter->mapToSource(m_filter->index(row, 0)).row());
    return rows;
}

std::vector<int> TablePanel::selectedRows() const
{
    std::vector<int> rows;
    for (const QModelIndex& index : m_view->selectionModel()->selectedRows())
        rows.push_back(m_filter->mapToSource(index).row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

void TablePanel::choose(const QModelIndex& index)
{
    if (index.isValid())
        Q_EMIT chosen(m_filter->mapToSource(index).row());
}

void TablePanel::write()
{
    std::vector<int> rows = selectedRows();
    const auto isReadOnly = [this](int row) { return m_model->variable(row).access == Access::ReadOnly; };
    rows.erase(std::remove_if(rows.begin(), rows.end(), isReadOnly), rows.end());
    if (m_session && rows.empty())
        Q_EMIT told(tr("Nothing that can be written is chosen: the list says that it is only read."));
    if (m_session && !rows.empty() && !m_dialog)
        write(rows);
}

void TablePanel::write(const std::vector<int>& rows)
{
    const Settings& settings = m_source->watched().settings;
    const auto begin = [this](const std::vector<WantedWrite>& writes) {
        for (const WantedWrite& wanted : writes)
            m_model->setWriting(wanted.row, m_session->write(wanted.row, wanted.values), wanted.text);
    };
    m_dialog = new WriteDialog(m_model, rows, QStringLiteral("%1:%2").arg(settings.host).arg(settings.port),
                               settings, begin, window());
    m_dialog->setAttribute(Qt::WA_DeleteOnClose);
    m_dialog->open();
}

QByteArray TablePanel::saveColumns() const
{
    return m_view->horizontalHeader()->saveState();
}

void TablePanel::restoreColumns(const QByteArray& columns)
{
    m_view->horizontalHeader()->restoreState(columns);
}

} // namespace plc
