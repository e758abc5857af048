// SPDX-License-Identifier: MIT
/// \file
/// \brief The stations of a link: how they look, why they fail, and switching them off and on.
#ifndef WINDOW_STATIONS_STATION_PANEL_H
#define WINDOW_STATIONS_STATION_PANEL_H

#include "window/session/snapshot.h"

#include <QWidget>

class QLabel;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace plc
{

class RoundTripChart;

/// \return how a station looks, in words: "answering", "not answering, next try in 3 s"
QString conditionWords(const StationReport& report);

/// \return why requests were given up: "12 \u00d7 no reply", a line each
QStringList failureLines(const StationStatistics& statistics);

class StationPanel : public QWidget
{
    Q_OBJECT

public:
    explicit StationPanel(QWidget* parent = nullptr);

    /// \param live false: nothing can be switched
    void begin(bool live);
    void apply(const SessionReport& report);

    int stations() const;
    QTreeWidget* list() const { return m_list; }

Q_SIGNALS:
    void switched(int station, bool on);

private:
    QTreeWidgetItem* itemOf(int station);
    void showStation(const StationReport& report);
    void showDetails();
    void press();

    SessionReport m_report;
    bool m_isLive = false;
    QTreeWidget* m_list;
    QPushButton* m_switch;
    QLabel* m_words;
    RoundTripChart* m_chart;
    QLabel* m_failures;
};

} // namespace plc

#endif
