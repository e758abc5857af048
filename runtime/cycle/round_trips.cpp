// SPDX-License-Identifier: MIT
#include "runtime/cycle/round_trips.h"

#include "runtime/model/clock.h"

#include <algorithm>

namespace plc
{

namespace
{

std::size_t binOf(qint64 microseconds)
{
    const auto limit =
        std::find_if(RoundTrips::limits.begin(), RoundTrips::limits.end(),
                     [microseconds](int each) { return microseconds < qint64(each) * microsecondsOfMs; });
    return static_cast<std::size_t>(limit - RoundTrips::limits.begin());
}

} // namespace

void RoundTrips::add(qint64 microseconds)
{
    m_shortest = m_count == 0 ? microseconds : std::min(m_shortest, microseconds);
    m_longest = std::max(m_longest, microseconds);
    m_sum += microseconds;
    ++m_count;
    ++m_bins[binOf(microseconds)];
}

void RoundTrips::add(const RoundTrips& others)
{
    if (others.m_count == 0)
        return;
    m_shortest = m_count == 0 ? others.m_shortest : std::min(m_shortest, others.m_shortest);
    m_longest = std::max(m_longest, others.m_longest);
    m_sum += others.m_sum;
    m_count += others.m_count;
    for (std::size_t bin = 0; bin < bins; ++bin)
        m_bins[bin] += others.m_bins[bin];
}

double RoundTrips::mean() const
{
    return m_count == 0 ? 0.0 : static_cast<double>(m_sum) / static_cast<double>(m_count);
}

} // namespace plc
