/// \file
/// \brief The runtime: driver, link, communication thread, and what commands ask of them.
#ifndef RUNTIME_CYCLE_RUNTIME_H
#define RUNTIME_CYCLE_RUNTIME_H

#include "runtime/cycle/statistics.h"
#include "runtime/export.h"
#include "runtime/link/link_exchange.h"
#include "runtime/link/link_tap.h"
#include "runtime/model/cyclic_value.h"
#include "runtime/model/outcome.h"
#include "runtime/model/pending.h"
#include "runtime/model/settings.h"
#include "runtime/model/station_report.h"
#include "runtime/model/variable.h"

#include <functional>
#include <memory>
#include <vector>

namespace plc
{

struct ExchangeRecord;

/// Runs on the communication thread with no lock held; must not throw and must not stop the runtime.
/// What it is told is in exchange_record.h.
using ExchangeObserver = std::function<void(const ExchangeRecord&)>;

/// One runtime at a time in a process, because the driver's state is one per process.
///
/// Every write and every read ends: confirmed or done by the controller's answer, or failed with a reason,
/// at the latest when the runtime is stopped.
///
/// With several stations, one that leaves a request and its retries unanswered is left alone for a while, see
/// StationPauses, so that it does not hold up the others: its cyclic values have failed meanwhile, and
/// whatever waited for it fails with that request. A new write or read is tried at once and so ends the
/// pause.
///
/// write(), read(), value(), setStation() and the reports may be called from any thread, also at once,
/// between start() and stop().
class PLCRUNTIME_API Runtime
{
public:
    explicit Runtime(const Settings& settings);
    ~Runtime(); ///< stops
    Runtime(const Runtime&) = delete;
    Runtime& operator=(const Runtime&) = delete;

    /// Before start(): refreshes \a variable again and again.
    /// \return its index for value()
    /// \throws std::runtime_error for a variable that cannot be read, with the reason
    int addCyclic(const Variable& variable);

    /// Before start().
    void setObserver(const ExchangeObserver& observer);

    /// Before start(): \a tap sees every byte of the link. It may be null.
    void setTap(const std::shared_ptr<LinkTap>& tap);

    /// Loads the driver and starts the communication thread. A controller that is not there is no error.
    /// \throws std::runtime_error when a setting is wrong, the driver cannot be loaded or another runtime
    ///         is running; the message says what to do
    void start();

    /// Ends the communication thread; whatever is still waiting fails. Once stopped, stays stopped.
    void stop();

    /// Queues a write and returns at once. A later write to the same elements replaces one that waits.
    Pending<WriteOutcome> write(const Variable& variable, const std::vector<quint32>& values);

    /// Queues a one-shot read and returns at once.
    Pending<ReadOutcome> read(const Variable& variable);

    /// \param index as addCyclic() returned it
    /// \throws std::runtime_error for another one
    CyclicValue value(int index) const;

    /// Switches communication with a station (0..255) off or on. Off: its waiting writes and reads fail,
    /// new ones are refused, its cyclic variables keep their old values. On: it is tried at once.
    /// \throws std::runtime_error for another number, and before start()
    void setStation(int station, bool on);

    /// \return the cyclic variables' stations and every other one that was asked something or switched, by
    ///         number
    std::vector<StationReport> stations() const;

    LinkState linkState() const;
    Statistics statistics() const;

private:
    class PLCRUNTIME_INTERNAL Private;
    std::unique_ptr<Private> d;
};

} // namespace plc

#endif
