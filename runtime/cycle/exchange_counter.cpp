// SPDX-License-Identifier: MIT
#include "runtime/cycle/exchange_counter.h"

#include "runtime/host/request_keys.h"
#include "runtime/modbus/request_pieces.h"
#include "runtime/modbus/return_codes.h"

namespace plc
{

namespace
{
const int nanosecondsOfMicrosecond = 1000;
} // namespace

void ExchangeCounter::exchanged(const RW_VAR& request, qint64 roundTripMicroseconds, int code)
{
    StationStatistics& station = m_statistics.stations[request.station];
    ++m_statistics.exchanges;
    if (request.hostKey == cyclicKey)
        m_passes.frame();
    if (roundTripMicroseconds >= 0)
        station.roundTrips.add(roundTripMicroseconds);
    if (isSuccess(code)) {
        ++m_statistics.good;
    } else if (code == PLC_RETRYING) {
        ++m_statistics.retried;
        ++station.retried;
    } else {
        ++m_statistics.failed;
        ++m_statistics.failuresByCode[code];
        ++station.failuresByCode[code];
    }
}

void ExchangeCounter::blockEnded(const RW_VAR& request, int unusedElements)
{
    m_passes.request(request.area, elementsRead(request.area, request.count), unusedElements);
}

bool ExchangeCounter::endPass()
{
    ++m_statistics.passes;
    m_passes.endPass(m_sinceBegin.nsecsElapsed() / nanosecondsOfMicrosecond);
    const bool exchangedAny = m_statistics.exchanges != m_exchangesBeforePass;
    m_exchangesBeforePass = m_statistics.exchanges;
    return exchangedAny;
}

Statistics ExchangeCounter::statistics() const
{
    Statistics statistics = m_statistics;
    statistics.lastPass = m_passes.last();
    statistics.passesPerSecond = m_passes.perSecond(
        m_sinceBegin.isValid() ? m_sinceBegin.nsecsElapsed() / nanosecondsOfMicrosecond : 0);
    return statistics;
}

} // namespace plc
