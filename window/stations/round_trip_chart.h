// SPDX-License-Identifier: MIT
/// \file
/// \brief How long replies took, as bars.
#ifndef WINDOW_STATIONS_ROUND_TRIP_CHART_H
#define WINDOW_STATIONS_ROUND_TRIP_CHART_H

#include "runtime/cycle/round_trips.h"

#include <QWidget>

namespace plc
{

class RoundTripChart : public QWidget
{
    Q_OBJECT

public:
    explicit RoundTripChart(QWidget* parent = nullptr);

    void show(const RoundTrips& trips);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    /// \return "below 1 ms", "2 to 5 ms", "1000 ms and more"
    static QString binWords(std::size_t bin);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    RoundTrips m_trips;
};

/// \return "1200 replies in 0.21 to 4.52 ms, 0.60 ms on average"
QString roundTripWords(const RoundTrips& trips);

} // namespace plc

#endif
