// SPDX-License-Identifier: MIT
/// \file
/// \brief The last hour of one curve, in as much memory, and with as many points, as the last minute.
#ifndef WINDOW_TREND_TREND_SERIES_H
#define WINDOW_TREND_TREND_SERIES_H

#include <QPointF>
#include <QtGlobal>
#include <QVector>

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

namespace plc
{

/// The last so many of something, in memory that is taken once.
template <class Item, std::size_t capacity>
class Ring
{
public:
    Ring() { m_items.reserve(capacity); }

    void push(const Item& item)
    {
        if (m_items.size() < capacity) {
            m_items.push_back(item);
            return;
        }
        m_items[m_begin] = item;
        m_begin = (m_begin + 1) % capacity;
    }

    std::size_t size() const { return m_items.size(); }
    bool isFull() const { return m_items.size() == capacity; }
    const Item& operator[](std::size_t index) const { return m_items[(m_begin + index) % m_items.size()]; }
    Item& back() { return m_items[(m_begin + m_items.size() - 1) % m_items.size()]; }
    const Item& back() const { return (*this)[m_items.size() - 1]; }

private:
    std::size_t m_begin = 0;
    std::vector<Item> m_items;
};

/// What a curve showed in a piece of time. Numbers that are not finite stand for "no fresh value".
struct TrendStep {
    qint64 beginMs = 0;
    double before = 0; ///< the value that it began with
    double min = 0;    ///< of what was fresh in it; not finite where nothing was
    double max = 0;
    double last = 0;
    bool gap = false; ///< at some time in it there was no fresh value
};

/// A value holds until the next one. Times are ms since 1970 and do not go back. One thread.
class TrendSeries
{
public:
    static constexpr std::size_t keptPoints = 2048;
    static constexpr std::size_t keptSteps = 1300;
    static constexpr std::array<qint64, 2> stepsMs = {500, 3000}; ///< the longer ones last 65 minutes

    /// \param value that holds from now on; not finite: there is none that is fresh
    void add(qint64 atMs, double value);

    /// \return what was known at a time; nothing before the first value and in gaps
    std::optional<double> at(qint64 ms) const;

    /// \return since when something is known; nothing where nothing is
    std::optional<qint64> oldestMs() const;

    /// \return the steps of a range, by time: each value one where they are still there, else pieces of time.
    ///         The first one may begin before the range: its last value holds into it
    std::vector<TrendStep> steps(qint64 fromMs, qint64 toMs) const;

private:
    struct Point {
        qint64 atMs;
        double value;
    };

    using Steps = Ring<TrendStep, keptSteps>;

    static bool covers(const Steps& steps, qint64 fromMs);
    std::vector<TrendStep> points(qint64 fromMs, qint64 toMs) const;

    Ring<Point, keptPoints> m_points;
    std::array<Steps, stepsMs.size()> m_steps; // as long as stepsMs says
};

/// \return \a steps as a line with one point in each of \a pixels columns and its highest and lowest value;
///         points that are not finite interrupt it. The last value holds until \a toMs.
QVector<QPointF> lineOf(const std::vector<TrendStep>& steps, qint64 fromMs, qint64 toMs, int pixels);

/// \return the smallest and the largest value; nothing where there is none
std::optional<std::pair<double, double>> extentOf(const std::vector<TrendStep>& steps);

} // namespace plc

#endif
