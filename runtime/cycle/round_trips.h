// SPDX-License-Identifier: MIT
/// \file
/// \brief How long replies took: a small histogram.
#ifndef RUNTIME_CYCLE_ROUND_TRIPS_H
#define RUNTIME_CYCLE_ROUND_TRIPS_H

#include "runtime/export.h"

#include <QtGlobal>

#include <array>

namespace plc
{

/// Counts times in steps of 1, 2, 5, 10, ... 1000 ms. Not thread-safe.
class PLCRUNTIME_API RoundTrips
{
public:
    /// Milliseconds at which the bins end: bin i holds the times below limits[i] and not below the limit
    /// before it. One more bin holds the rest.
    static constexpr std::array<int, 10> limits = {1, 2, 5, 10, 20, 50, 100, 200, 500, 1000};
    static constexpr std::size_t bins = limits.size() + 1;

    void add(qint64 microseconds);
    void add(const RoundTrips& others);

    /// \param bin below bins
    long inBin(std::size_t bin) const { return m_bins[bin]; }

    long count() const { return m_count; }

    /// In microseconds; 0 before the first.
    qint64 shortest() const { return m_shortest; }
    qint64 longest() const { return m_longest; }
    double mean() const;

private:
    std::array<long, bins> m_bins = {};
    long m_count = 0;
    qint64 m_shortest = 0;
    qint64 m_longest = 0;
    qint64 m_sum = 0;
};

} // namespace plc

#endif
