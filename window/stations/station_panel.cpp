// SPDX-License-Identifier: MIT
#include "window/stations/station_panel.h"

#include "runtime/modbus/failure_words.h"
#include "runtime/modbus/return_code_words.h"
#include "window/stations/round_trip_chart.h"

#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace plc
{

namespace
{

enum StationColumn { Number, Condition, Answers, GivenUp, Retried, Waiting, StationColumns };

const int isOffRole = Qt::UserRole; // of Condition

QString stationTr(const char* text)
{
    return StationPanel::tr(text);
}

bool isOff(const QTreeWidgetItem& item)
{
    return item.data(Condition, isOffRole).toBool();
}

} // namespace

QString conditionWords(const StationReport& report)
{
    const qint64 msOfSecond = 1000;
    switch (report.condition) {
    case StationCondition::NotTried:
        return stationTr(QT_TRANSLATE_NOOP("plc::StationPanel", "not tried yet"));
    case StationCondition::Answering:
        return stationTr(QT_TRANSLATE_NOOP("plc::StationPanel", "answering"));
    case StationCondition::NotAnswering:
        return stationTr(QT_TRANSLATE_NOOP("plc::StationPanel", "not answering"));
    case StationCondition::Pausing:
        return stationTr(QT_TRANSLATE_NOOP("plc::StationPanel", "not answering, next try in %1 s"))
            .arg((report.nextTryMs + msOfSecond - 1) / msOfSecond);
    case StationCondition::SwitchedOff:
        return stationTr(QT_TRANSLATE_NOOP("plc::StationPanel", "switched off"));
    }
    return QString();
}

QStringList failureLines(const StationStatistics& statistics)
{
    QStringList lines;
    for (const auto& [code, count] : statistics.failuresByCode)
        lines << stationTr(QT_TRANSLATE_NOOP("plc::StationPanel", "%1 \u00d7 %2 (code %3)"))
                     .arg(QString::number(count), resultWords(code), QString::number(code));
    return lines;
}

StationPanel::StationPanel(QWidget* parent)
    : QWidget(parent), m_list(new QTreeWidget), m_switch(new QPushButton(tr("Switch &off"))),
      m_words(new QLabel), m_chart(new RoundTripChart), m_failures(new QLabel)
{
    m_list->setColumnCount(StationColumns);
    m_list->setHeaderLabels(
        {tr("Station"), tr("Condition"), tr("Answers"), tr("Given up"), tr("Retried"), tr("Waiting")});
    m_list->setAccessibleName(tr("stations"));
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->header()->setStretchLastSection(false);
    m_list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_list->header()->setSectionResizeMode(Condition, QHeaderView::Stretch);
    m_failures->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_failures->setWordWrap(true);
    m_words->setWordWrap(true);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addWidget(m_list, 1);
    layout->addWidget(m_switch, 0, Qt::AlignLeft);
    layout->addWidget(m_words);
    layout->addWidget(m_chart);
    layout->addWidget(m_failures);
    connect(m_list, &QTreeWidget::currentItemChanged, this, &StationPanel::showDetails);
    connect(m_list, &QTreeWidget::itemActivated, this, &StationPanel::press);
    connect(m_switch, &QPushButton::clicked, this, &StationPanel::press);
    begin(false);
}

void StationPanel::begin(bool live)
{
    m_isLive = live;
    m_report = {};
    m_list->clear();
    showDetails();
}

int StationPanel::stations() const
{
    return m_list->topLevelItemCount();
}

void StationPanel::apply(const SessionReport& report)
{
    m_report = report;
    for (const StationReport& station : report.stations)
        showStation(station);
    if (!m_list->currentItem() && stations() > 0)
        m_list->setCurrentItem(m_list->topLevelItem(0));
    showDetails();
}

QTreeWidgetItem* StationPanel::itemOf(int station)
{
    const auto number = QString::number(station);
    const QList<QTreeWidgetItem*> found = m_list->findItems(number, Qt::MatchExactly, Number);
    if (!found.isEmpty())
        return found.first();
    auto* item = new QTreeWidgetItem(m_list, {number});
    for (const int column : {Answers, GivenUp, Retried, Waiting})
        item->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
    return item;
}

void StationPanel::showStation(const StationReport& report)
{
    QTreeWidgetItem* const item = itemOf(report.station);
    QString words = conditionWords(report);
    if (report.condition != StationCondition::Answering && hasFailed(report.failure))
        words += QStringLiteral(" (%1)").arg(failureWords(report.failure));
    const auto found = m_report.statistics.stations.find(report.station);
    const bool isCounted = found != m_report.statistics.stations.end();
    item->setText(Condition, words);
    item->setData(Condition, isOffRole, report.condition == StationCondition::SwitchedOff);
    item->setToolTip(Condition, words);
    item->setText(Answers, QString::number(report.answers));
    item->setText(GivenUp, QString::number(report.failures));
    item->setText(Retried, isCounted ? QString::number(found->second.retried) : QString());
    item->setText(Waiting, QString::number(report.writesWaiting + report.readsWaiting));
}

void StationPanel::showDetails()
{
    const QTreeWidgetItem* const item = m_list->currentItem();
    const int station = item ? item->text(Number).toInt() : -1;
    const auto found = m_report.statistics.stations.find(station);
    const bool isCounted = item && found != m_report.statistics.stations.end();
    m_words->setText(isCounted ? roundTripWords(found->second.roundTrips) : tr("no replies yet"));
    m_chart->show(isCounted ? found->second.roundTrips : RoundTrips());
    const QStringList failures = isCounted ? failureLines(found->second) : QStringList();
    m_failures->setText(failures.isEmpty() ? tr("Nothing was given up.") : failures.join(QLatin1Char('\n')));
    m_switch->setText(item && isOff(*item) ? tr("Switch &on") : tr("Switch &off"));
    m_switch->setEnabled(item && m_isLive);
}

void StationPanel::press()
{
    const QTreeWidgetItem* const item = m_list->currentItem();
    if (!item || !m_isLive)
        return;
    Q_EMIT switched(item->text(Number).toInt(), isOff(*item));
}

} // namespace plc
