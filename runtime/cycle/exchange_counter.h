// SPDX-License-Identifier: MIT
/// \file
/// \brief Keeps the statistics of the exchanges and of the passes.
#ifndef RUNTIME_CYCLE_EXCHANGE_COUNTER_H
#define RUNTIME_CYCLE_EXCHANGE_COUNTER_H

#include "driver/plcdriver.h"
#include "runtime/cycle/pass_counter.h"
#include "runtime/cycle/statistics.h"

#include <QElapsedTimer>

namespace plc
{

/// Not thread-safe.
class ExchangeCounter
{
public:
    /// Before the first exchange: time counts from here.
    void begin() { m_sinceBegin.start(); }

    /// A frame of \a request went to the link, and the driver has judged what came of it.
    /// \param roundTripMicroseconds -1: no reply came
    void exchanged(const RW_VAR& request, qint64 roundTripMicroseconds, int code);

    /// The driver's cyclic read \a request has ended, answered or given up.
    /// \param unusedElements of it that no variable shows
    void blockEnded(const RW_VAR& request, int unusedElements);

    /// \return true when there was an exchange in the pass
    bool endPass();

    /// \return the statistics, but for those of whole writes and one-shot reads
    Statistics statistics() const;

private:
    Statistics m_statistics;
    PassCounter m_passes;
    QElapsedTimer m_sinceBegin;
    long m_exchangesBeforePass = 0;
};

} // namespace plc

#endif
