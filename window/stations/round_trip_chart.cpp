// SPDX-License-Identifier: MIT
#include "window/stations/round_trip_chart.h"

#include <QPainter>

#include <algorithm>

namespace plc
{

namespace
{

const int gap = 6;

QString binLimits(std::size_t bin)
{
    if (bin == 0)
        return QStringLiteral("< %1").arg(RoundTrips::limits.front());
    if (bin == RoundTrips::limits.size())
        return QStringLiteral("\u2265 %1").arg(RoundTrips::limits.back());
    return QStringLiteral("%1\u2013%2").arg(RoundTrips::limits[bin - 1]).arg(RoundTrips::limits[bin]);
}

QString msText(double microseconds)
{
    return QString::number(microseconds / 1000, 'f', 2);
}

} // namespace

QString roundTripWords(const RoundTrips& trips)
{
    if (trips.count() == 0)
        return RoundTripChart::tr("no replies yet");
    return RoundTripChart::tr("%1 replies in %2 to %3 ms, %4 ms on average")
        .arg(QString::number(trips.count()), msText(static_cast<double>(trips.shortest())),
             msText(static_cast<double>(trips.longest())), msText(trips.mean()));
}

RoundTripChart::RoundTripChart(QWidget* parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::MinimumExpanding);
}

QString RoundTripChart::binWords(std::size_t bin)
{
    if (bin == 0)
        return tr("below %1 ms").arg(RoundTrips::limits.front());
    if (bin == RoundTrips::limits.size())
        return tr("%1 ms and more").arg(RoundTrips::limits.back());
    return tr("%1 to %2 ms").arg(RoundTrips::limits[bin - 1]).arg(RoundTrips::limits[bin]);
}

/// A screen reader gets in words what the bars show.
void RoundTripChart::show(const RoundTrips& trips)
{
    m_trips = trips;
    QStringList words = {roundTripWords(trips)};
    for (std::size_t bin = 0; bin < RoundTrips::bins; ++bin) {
        if (trips.inBin(bin) > 0)
            words << QStringLiteral("%1 %2").arg(trips.inBin(bin)).arg(binWords(bin));
    }
    setAccessibleName(words.join(QLatin1String(", ")));
    update();
}

QSize RoundTripChart::sizeHint() const
{
    return {fontMetrics().averageCharWidth() * 50, fontMetrics().height() * 9};
}

QSize RoundTripChart::minimumSizeHint() const
{
    return {fontMetrics().averageCharWidth() * 30, fontMetrics().height() * 5};
}

/// What is rare gets a mark as well.
void RoundTripChart::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const int bins = static_cast<int>(RoundTrips::bins);
    const int line = fontMetrics().height();
    const double width = static_cast<double>(this->width()) / bins;
    const int height = this->height() - 2 * line - gap;
    long most = 1;
    for (std::size_t bin = 0; bin < RoundTrips::bins; ++bin)
        most = std::max(most, m_trips.inBin(bin));
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * 0.85);
    painter.setFont(small);
    for (int bin = 0; bin < bins; ++bin) {
        const long count = m_trips.inBin(static_cast<std::size_t>(bin));
        const QRectF column(bin * width, 0, width, this->height());
        const double bar = count == 0
                               ? 0
                               : std::max(2.0, static_cast<double>(height) * static_cast<double>(count) /
                                                   static_cast<double>(most));
        const QRectF box(column.left() + gap / 2.0, line + height - bar, width - gap, bar);
        painter.fillRect(box, palette().color(QPalette::Highlight));
        painter.setPen(palette().color(QPalette::WindowText));
        if (count > 0)
            painter.drawText(QRectF(column.left(), box.top() - line, width, line), Qt::AlignCenter,
                             QString::number(count));
        painter.drawText(QRectF(column.left(), line + height + gap / 2.0, width, line), Qt::AlignCenter,
                         binLimits(static_cast<std::size_t>(bin)));
    }
    painter.drawLine(0, line + height, this->width(), line + height);
}

} // namespace plc
