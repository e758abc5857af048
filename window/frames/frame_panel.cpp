// SPDX-License-Identifier: MIT
#include "window/frames/frame_panel.h"

#include "runtime/modbus/request_pieces.h"
#include "window/frames/frame_model.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFontDatabase>
#include <QHeaderView>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QSplitter>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>

namespace plc
{

namespace
{

const std::size_t mostMatches = 50; // variables whose frames are looked for at once

} // namespace

FramePanel::FramePanel(QWidget* parent)
    : QWidget(parent), m_model(new FrameModel(this)), m_view(new QTableView), m_stations(new QComboBox),
      m_words(new QLineEdit), m_trouble(new QCheckBox(tr("Trouble o&nly"))),
      m_pause(new QCheckBox(tr("&Hold"))), m_details(new QPlainTextEdit)
{
    makeView();
    m_stations->addItem(tr("All stations"), -1);
    m_stations->setAccessibleName(tr("station whose frames are shown"));
    m_words->setPlaceholderText(tr("Frames of variables whose name has these words"));
    m_words->setAccessibleName(tr("variables whose frames are shown"));
    m_words->setClearButtonEnabled(true);
    m_pause->setToolTip(tr("What comes waits until this is switched off"));
    m_details->setReadOnly(true);
    m_details->setAccessibleName(tr("the chosen frame in words and bytes"));
    m_details->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    auto* bar = new QHBoxLayout;
    bar->addWidget(m_words, 1);
    bar->addWidget(m_stations);
    bar->addWidget(m_trouble);
    bar->addWidget(m_pause);
    auto* halves = new QSplitter(Qt::Vertical);
    halves->addWidget(m_view);
    halves->addWidget(m_details);
    halves->setStretchFactor(0, 3);
    halves->setStretchFactor(1, 1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addLayout(bar);
    layout->addWidget(halves, 1);
    connect(m_stations, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &FramePanel::filter);
    connect(m_words, &QLineEdit::textChanged, this, &FramePanel::filter);
    connect(m_trouble, &QCheckBox::toggled, this, &FramePanel::filter);
    connect(m_view->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &FramePanel::showDetails);
}

void FramePanel::makeView()
{
    m_view->setModel(m_model);
    m_view->setAccessibleName(tr("frames"));
    m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_view->setSelectionMode(QAbstractItemView::SingleSelection);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setTabKeyNavigation(false);
    m_view->setShowGrid(false);
    m_view->setAlternatingRowColors(true);
    m_view->setWordWrap(false);
    m_view->verticalHeader()->hide();
    m_view->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_view->verticalHeader()->setDefaultSectionSize(m_view->fontMetrics().height() + 6);
    QHeaderView* const header = m_view->horizontalHeader();
    header->setHighlightSections(false);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    const int letter = m_view->fontMetrics().averageCharWidth();
    const int letters[FrameModel::Columns] = {15, 9, 40, 40, 18, 9, 44, 44};
    for (int column = 0; column < FrameModel::Columns; ++column)
        header->resizeSection(column, letters[column] * letter);
}

void FramePanel::setSource(const Source* source)
{
    m_source = source;
    m_waiting.clear();
    m_model->clear();
    while (m_stations->count() > 1)
        m_stations->removeItem(1);
    m_words->clear();
    m_details->clear();
}

void FramePanel::apply(const Snapshot& news)
{
    if (news.frames.empty() && (m_waiting.empty() || m_pause->isChecked()))
        return;
    m_waiting.insert(m_waiting.end(), news.frames.begin(), news.frames.end());
    if (m_waiting.size() > FrameModel::mostFrames)
        m_waiting.erase(m_waiting.begin(), m_waiting.end() - FrameModel::mostFrames);
    if (m_pause->isChecked())
        return;
    addStations(m_waiting);
    QScrollBar* const bar = m_view->verticalScrollBar();
    const bool isAtEnd = bar->value() == bar->maximum();
    m_model->append(m_waiting);
    m_waiting.clear();
    if (isAtEnd)
        m_view->scrollToBottom();
}

void FramePanel::addStations(const std::vector<FrameEntry>& frames)
{
    for (const FrameEntry& frame : frames) {
        if (m_stations->findData(frame.station) < 0)
            m_stations->addItem(tr("Station %1").arg(frame.station), frame.station);
    }
}

void FramePanel::setTroubleOnly(bool only)
{
    m_trouble->setChecked(only);
}

void FramePanel::setVariableWords(const QString& words)
{
    m_words->setText(words);
}

void FramePanel::filter()
{
    FrameFilter filter;
    filter.station = m_stations->currentData().toInt();
    filter.troubleOnly = m_trouble->isChecked();
    filter.isVariable = !m_words->text().isEmpty();
    if (m_source && filter.isVariable) {
        for (const ListedVariable& variable : m_source->watched().variables) {
            if (variable.name.text().contains(m_words->text(), Qt::CaseInsensitive) &&
                filter.variables.size() < mostMatches)
                filter.variables.push_back(withStation(variable.elements, m_source->watched().settings));
        }
    }
    m_model->setFilter(filter);
    m_view->scrollToBottom();
    m_details->clear();
}

void FramePanel::find(int variable)
{
    if (!m_source || !isVisible())
        return;
    const Watched& watched = m_source->watched();
    const int row = m_model->rowOf(
        withStation(watched.variables[static_cast<std::size_t>(variable)].elements, watched.settings));
    if (row < 0)
        return;
    m_pause->setChecked(true);
    m_view->setCurrentIndex(m_model->index(row, 0));
    m_view->scrollTo(m_model->index(row, 0));
}

void FramePanel::showDetails()
{
    const QModelIndex current = m_view->currentIndex();
    m_details->setPlainText(current.isValid() ? m_model->details(current.row()) : QString());
}

} // namespace plc
