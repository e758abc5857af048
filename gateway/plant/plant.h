// SPDX-License-Identifier: MIT
/// \file
/// \brief The controller: its values as samples, and writes to it.
#ifndef GATEWAY_PLANT_PLANT_H
#define GATEWAY_PLANT_PLANT_H

#include "gateway/options/gateway_options.h"
#include "gateway/session/figures.h"
#include "gateway/session/publisher.h"
#include "gateway/values/change_filter.h"
#include "runtime/cycle/runtime.h"

#include <atomic>
#include <functional>
#include <mutex>
#include <set>
#include <vector>

namespace plc
{

/// Takes samples. On the thread that polls the controller, or the one that calls Plant::look(), never both at once:
/// it must not wait.
using SampleSink = std::function<void(const std::vector<Sample>& batch)>;

/// Polls the controller from start() to stop(), whatever becomes of the samples.
///
/// When a station leaves a request unanswered, all its variables are stale at once, and none is good again before
/// the controller was read again.
class Plant : public CurrentValues
{
public:
    /// \param options has to live longer than this
    Plant(const GatewayOptions& options, SampleSink sink);

    /// \throws std::runtime_error as Runtime::start() does
    void start();
    void stop();

    /// To be called now and then: what has become good again or is due to be told again goes to the sink.
    void look();

    void write(std::size_t variable, const std::vector<quint32>& elements, const WriteDone& done);

    /// \return Runtime::rounds()
    quint32 rounds() const { return m_runtime.rounds(); }

    Sample current(std::size_t variable) override;
    int stationOf(std::size_t variable) const override { return m_stations[variable]; }
    bool isUp(int station) override;
    bool isSettled() override;

    /// Fills in what is the controller's.
    void addFigures(GatewayFigures* figures) const;

private:
    using Batch = std::vector<Sample>;

    void note(const ExchangeRecord& record);
    void observe(std::size_t variable, const CyclicValue& value);
    void hold(int station, Batch* batch);
    void offer(std::size_t variable, const CyclicValue& value, Batch* batch);

    const GatewayOptions& m_options;
    const SampleSink m_sink;
    std::vector<int> m_stations; // by variable

    std::mutex m_mutex; // for all below
    ChangeFilter m_filter;
    std::vector<qint64>
        m_goodAfter;        // by variable: what was read before is not good any more (ms since 1970 UTC)
    std::set<int> m_up;     // stations that answered last
    std::size_t m_untold;   // variables that nothing was told of yet
    std::size_t m_held = 0; // variables that were read last before that

    std::atomic<qint64> m_lastReplyAt{-1};

    Runtime m_runtime; // last: its thread uses all of the above
};

} // namespace plc

#endif
