// SPDX-License-Identifier: MIT
#include "gateway/plant/plant.h"

#include "gateway/plant/sample_of.h"
#include "runtime/cycle/exchange_record.h"
#include "runtime/modbus/request_pieces.h"
#include "runtime/model/clock.h"

#include <QDateTime>

namespace plc
{

namespace
{

const qint64 neverHeld = -1;

/// \return true when the controller gave no answer, so that all of its station is in doubt. A refusal is one.
bool isUnanswered(FailureKind kind)
{
    return kind != FailureKind::None && kind != FailureKind::Exception && kind != FailureKind::Acknowledged;
}

std::vector<double> deadbandsOf(const std::vector<ListedVariable>& variables)
{
    std::vector<double> deadbands;
    deadbands.reserve(variables.size());
    for (const ListedVariable& variable : variables)
        deadbands.push_back(variable.deadband);
    return deadbands;
}

qint64 steadyMs()
{
    return msSince(Clock::time_point());
}

} // namespace

Plant::Plant(const GatewayOptions& options, SampleSink sink)
    : m_options(options), m_sink(std::move(sink)),
      m_filter(deadbandsOf(options.variables), qint64(options.republishSeconds) * 1000),
      m_goodAfter(options.variables.size(), neverHeld), m_untold(options.variables.size()),
      m_runtime(options.controller)
{
    for (const ListedVariable& listed : m_options.variables) {
        m_runtime.addCyclic(listed.elements);
        m_stations.push_back(withStation(listed.elements, m_options.controller).station);
    }
    m_runtime.setValueObserver(
        [this](int index, const CyclicValue& value) { observe(static_cast<std::size_t>(index), value); });
    m_runtime.setObserver([this](const ExchangeRecord& record) { note(record); });
}

/// On the thread that polls.
void Plant::note(const ExchangeRecord& record)
{
    if (record.result == PLC_DONE && record.exchange.sent)
        m_lastReplyAt = QDateTime::currentMSecsSinceEpoch();
}

void Plant::start()
{
    m_runtime.start();
}

void Plant::stop()
{
    m_runtime.stop();
}

void Plant::observe(std::size_t variable, const CyclicValue& value)
{
    if (value.failure.kind == FailureKind::Stopped)
        return; // by us: it says nothing of the controller
    std::lock_guard<std::mutex> lock(m_mutex);
    Batch batch;
    if (isUnanswered(value.failure.kind))
        hold(m_stations[variable], &batch);
    offer(variable, value, &batch);
    if (!batch.empty())
        m_sink(batch);
}

/// What was read of \a station until now is not good any more.
void Plant::hold(int station, Batch* batch)
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    m_up.erase(station);
    for (std::size_t variable = 0; variable < m_stations.size(); ++variable) {
        if (m_stations[variable] != station || m_goodAfter[variable] != neverHeld)
            continue;
        m_goodAfter[variable] = now;
        ++m_held;
        offer(variable, m_runtime.value(static_cast<int>(variable)), batch);
    }
}

void Plant::offer(std::size_t variable, const CyclicValue& value, Batch* batch)
{
    // It may hold what is about to be written: there is nothing to tell before the controller was read again.
    if (value.state == ValueState::Unconfirmed && m_goodAfter[variable] == neverHeld)
        return;
    Sample sample = sampleOf(static_cast<quint32>(variable), m_options.variables[variable], value);
    qint64& goodAfter = m_goodAfter[variable];
    if (goodAfter != neverHeld && value.state == ValueState::Fresh && value.readAtMs > goodAfter) {
        goodAfter = neverHeld;
        --m_held;
    }
    const bool isAnswered = value.failure.kind == FailureKind::Exception ||
                            (goodAfter == neverHeld && value.state == ValueState::Fresh);
    if (isAnswered)
        m_up.insert(m_stations[variable]);
    if (goodAfter != neverHeld && sample.quality == SampleQuality::Good)
        sample.quality = SampleQuality::Stale;
    // A write that was not confirmed may have left another value: what was read goes on to stand.
    const auto index = static_cast<quint32>(variable);
    if (sample.quality == SampleQuality::Stale && m_filter.wasPublished(index))
        sample.value = m_filter.last(index).value;
    const bool isFirst = !m_filter.wasPublished(index);
    if (!m_filter.isNews(&sample, steadyMs()))
        return;
    batch->push_back(sample);
    m_untold -= isFirst ? 1 : 0;
}

void Plant::look()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    Batch batch;
    for (std::size_t variable = 0; variable < m_stations.size() && m_held > 0; ++variable) {
        if (m_goodAfter[variable] != neverHeld)
            offer(variable, m_runtime.value(static_cast<int>(variable)), &batch);
    }
    for (const quint32 variable : m_filter.due(steadyMs()))
        offer(variable, m_runtime.value(static_cast<int>(variable)), &batch);
    if (!batch.empty())
        m_sink(batch);
}

Sample Plant::current(std::size_t variable)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto index = static_cast<quint32>(variable);
    const CyclicValue value = m_runtime.value(static_cast<int>(variable));
    if (value.state == ValueState::Fresh && m_goodAfter[variable] == neverHeld)
        return sampleOf(index, m_options.variables[variable], value);
    Sample last = m_filter.last(index);
    last.variable = index;
    if (!m_filter.wasPublished(index))
        last.quality = SampleQuality::Bad;
    else if (last.quality == SampleQuality::Good)
        last.quality = SampleQuality::Stale;
    return last;
}

bool Plant::isUp(int station)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_up.count(station) != 0;
}

bool Plant::isSettled()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_untold == 0;
}

void Plant::write(std::size_t variable, const std::vector<quint32>& elements, const WriteDone& done)
{
    m_runtime.write(m_options.variables[variable].elements, elements, done);
}

void Plant::addFigures(GatewayFigures* figures) const
{
    const double microsecondsOfMilli = 1000;
    const LinkState link = m_runtime.linkState();
    const Statistics statistics = m_runtime.statistics();
    RoundTrips trips;
    for (const auto& station : statistics.stations)
        trips.add(station.second.roundTrips);
    figures->controllerConnected = link.connected;
    figures->controllerError = link.connected ? QString() : link.lastError;
    figures->refreshesPerSecond = statistics.passesPerSecond;
    figures->lastReplyAt = m_lastReplyAt;
    figures->requests = statistics.exchanges;
    figures->retries = statistics.retried;
    figures->failures = statistics.failed;
    figures->roundTripMs = trips.mean() / microsecondsOfMilli;
}

} // namespace plc
