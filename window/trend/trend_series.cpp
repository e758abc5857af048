// SPDX-License-Identifier: MIT
#include "window/trend/trend_series.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace plc
{

namespace
{

const double nothing = std::numeric_limits<double>::quiet_NaN();

void take(TrendStep* step, double value)
{
    step->last = value;
    if (!std::isfinite(value)) {
        step->gap = true;
        return;
    }
    step->min = std::isfinite(step->min) ? std::min(step->min, value) : value;
    step->max = std::isfinite(step->max) ? std::max(step->max, value) : value;
}

TrendStep stepFrom(qint64 beginMs, double before)
{
    TrendStep step{beginMs, before, nothing, nothing, nothing, false};
    take(&step, before);
    return step;
}

/// \return the index of the last item that begins at \a ms or before; 0 where none does
template <class Items, class Begin>
std::size_t lastBefore(const Items& items, qint64 ms, const Begin& begin)
{
    std::size_t low = 0;
    std::size_t high = items.size();
    while (high - low > 1) {
        const std::size_t middle = (low + high) / 2;
        (begin(items[middle]) <= ms ? low : high) = middle;
    }
    return low;
}

} // namespace

void TrendSeries::add(qint64 atMs, double value)
{
    double before = nothing;
    if (m_points.size() > 0) {
        before = m_points.back().value;
        atMs = std::max(atMs, m_points.back().atMs);
        if (before == value || (!std::isfinite(before) && !std::isfinite(value)))
            return;
    } else if (!std::isfinite(value)) {
        return;
    }
    m_points.push({atMs, value});
    for (std::size_t level = 0; level < m_steps.size(); ++level) {
        Steps& steps = m_steps[level];
        const qint64 begin = atMs - atMs % stepsMs[level];
        if (steps.size() == 0 || steps.back().beginMs != begin)
            steps.push(stepFrom(begin, before));
        take(&steps.back(), value);
    }
}

std::optional<qint64> TrendSeries::oldestMs() const
{
    if (m_points.size() == 0)
        return std::nullopt;
    return m_points.isFull() ? std::min(m_points[0].atMs, m_steps.back()[0].beginMs) : m_points[0].atMs;
}

std::optional<double> TrendSeries::at(qint64 ms) const
{
    const std::vector<TrendStep> found = steps(ms, ms);
    if (found.empty() || found.back().beginMs > ms || !std::isfinite(found.back().last))
        return std::nullopt;
    return found.back().last;
}

bool TrendSeries::covers(const Steps& steps, qint64 fromMs)
{
    return steps.size() > 0 && (!steps.isFull() || steps[0].beginMs <= fromMs);
}

std::vector<TrendStep> TrendSeries::points(qint64 fromMs, qint64 toMs) const
{
    std::vector<TrendStep> found;
    std::size_t index = lastBefore(m_points, fromMs, [](const Point& point) { return point.atMs; });
    double before = index > 0 ? m_points[index - 1].value : nothing;
    for (; index < m_points.size() && m_points[index].atMs <= toMs; ++index) {
        const Point& point = m_points[index];
        const bool isGap = !std::isfinite(point.value);
        found.push_back({point.atMs, before, point.value, point.value, point.value, isGap});
        before = point.value;
    }
    return found;
}

std::vector<TrendStep> TrendSeries::steps(qint64 fromMs, qint64 toMs) const
{
    if (m_points.size() == 0)
        return {};
    if (!m_points.isFull() || m_points[0].atMs <= fromMs)
        return points(fromMs, toMs);
    std::size_t level = 0;
    while (level + 1 < m_steps.size() && !covers(m_steps[level], fromMs))
        ++level;
    const Steps& steps = m_steps[level];
    std::vector<TrendStep> found;
    std::size_t index = lastBefore(steps, fromMs, [](const TrendStep& step) { return step.beginMs; });
    for (; index < steps.size() && steps[index].beginMs <= toMs; ++index) {
        const TrendStep& step = steps[index];
        const bool isOver =
            step.beginMs + stepsMs[level] <= fromMs; // what it ended with holds into the range
        found.push_back(isOver ? stepFrom(step.beginMs, step.last) : step);
    }
    return found;
}

namespace
{

/// Gathers the steps of one column of pixels and writes what it shows.
class Column
{
public:
    Column(qint64 fromMs, qint64 toMs, int pixels)
        : m_fromMs(fromMs), m_width(std::max(1.0, static_cast<double>(toMs - fromMs) / std::max(1, pixels)))
    {
    }

    void add(const TrendStep& step)
    {
        const auto begin = std::max(step.beginMs, m_fromMs);
        const auto number = static_cast<qint64>(static_cast<double>(begin - m_fromMs) / m_width);
        if (number != m_number || !m_isOpen)
            open(number, step, begin);
        if (std::isfinite(step.min)) {
            m_min = std::isfinite(m_min) ? std::min(m_min, step.min) : step.min;
            m_max = std::isfinite(m_max) ? std::max(m_max, step.max) : step.max;
        }
        m_gap = m_gap || step.gap;
        m_last = step.last;
    }

    QVector<QPointF> close(qint64 toMs)
    {
        flush();
        if (std::isfinite(m_last))
            put(static_cast<double>(toMs), m_last);
        return m_line;
    }

private:
    void open(qint64 number, const TrendStep& step, qint64 begin)
    {
        flush();
        m_isOpen = true;
        m_number = number;
        m_at = static_cast<double>(begin);
        if (std::isfinite(step.before) && step.beginMs >= m_fromMs)
            put(m_at, step.before);
        m_min = m_max = m_last = nothing;
        m_gap = false;
    }

    void flush()
    {
        if (!m_isOpen)
            return;
        if (std::isfinite(m_min)) {
            const bool upFirst = std::abs(m_last - m_min) < std::abs(m_last - m_max);
            put(m_at, upFirst ? m_max : m_min);
            if (m_min < m_max)
                put(m_at, upFirst ? m_min : m_max);
        }
        if (m_gap)
            m_line.append({m_at, nothing});
        if (std::isfinite(m_last))
            put(m_at, m_last);
        m_isOpen = false;
    }

    void put(double at, double value)
    {
        const QPointF point(at, value);
        if (m_line.isEmpty() || m_line.last() != point)
            m_line.append(point);
    }

    const qint64 m_fromMs;
    const double m_width;
    QVector<QPointF> m_line;
    bool m_isOpen = false;
    qint64 m_number = 0;
    double m_at = 0;
    double m_min = nothing;
    double m_max = nothing;
    double m_last = nothing;
    bool m_gap = false;
};

} // namespace

QVector<QPointF> lineOf(const std::vector<TrendStep>& steps, qint64 fromMs, qint64 toMs, int pixels)
{
    Column column(fromMs, toMs, pixels);
    for (const TrendStep& step : steps)
        column.add(step);
    return column.close(toMs);
}

std::optional<std::pair<double, double>> extentOf(const std::vector<TrendStep>& steps)
{
    std::optional<std::pair<double, double>> extent;
    for (const TrendStep& step : steps) {
        if (!std::isfinite(step.min))
            continue;
        if (!extent)
            extent = {step.min, step.max};
        extent->first = std::min(extent->first, step.min);
        extent->second = std::max(extent->second, step.max);
    }
    return extent;
}

} // namespace plc
