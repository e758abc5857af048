// SPDX-License-Identifier: MIT
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

/// Told of a cyclic variable, by its index, when its values, its state or the reason of its failure are others than
/// before; at first it was never read. CyclicValue::readAtMs says of when the values are. Runs like an
/// ExchangeObserver, and may call write(), read() and value().
using ValueObserver = std::function<void(int index, const CyclicValue& value)>;

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
/// write(), read(), value(), values(), setStation() and the reports may be called from any thread, also at once,
/// between start() and stop().
///
/// What is to be done when a write or read has ended runs on the communication thread with no lock held. Where the
/// request is refused at once, or ended by stop(), it runs on the thread that called write(), read() or stop(),
/// before that returns. It must not throw, wait for another request, or stop the runtime.
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

    /// Before start().
    void setValueObserver(const ValueObserver& observer);

    /// Before start(): \a tap sees every byte of the link. It may be null.
    void setTap(const std::shared_ptr<LinkTap>& tap);

    /// Loads the driver and starts the communication thread. A controller that is not there is no error.
    /// \throws std::runtime_error when a setting is wrong, the driver cannot be loaded or another runtime
    ///         is running; the message says what to do
    void start();

    /// Ends the communication thread; whatever is still waiting fails. Nothing is left in the driver, neither a
    /// request nor a list, and another runtime may be started at once. Once stopped, stays stopped: value() and the
    /// reports tell how it was in the end.
    void stop();

    /// Queues a write and returns at once. A later write to the same elements replaces one that waits.
    /// \param done called once, when the outcome is there
    Pending<WriteOutcome> write(const Variable& variable, const std::vector<quint32>& values,
                                const WriteDone& done = WriteDone());

    /// Queues a one-shot read and returns at once.
    /// \param done called once, when the outcome is there
    Pending<ReadOutcome> read(const Variable& variable, const ReadDone& done = ReadDone());

    /// \param index as addCyclic() returned it
    /// \throws std::runtime_error for another one
    CyclicValue value(int index) const;

    /// The same of the variables from \a first on, as many as there is room for in \a values, in less time than by
    /// value(), and least where its memory is used again. Communication waits meanwhile: of a long list take some
    /// hundred at a time.
    /// \throws std::runtime_error where there are not so many
    void values(int first, std::vector<CyclicValue>* values) const;

    /// Switches communication with a station (0..255) off or on. Off: its waiting writes and reads fail,
    /// new ones are refused, its cyclic variables keep their old values; a request that is already on its way ends as
    /// the controller answers. On: it is tried at once. What failed by switching it off does not go out then.
    /// \throws std::runtime_error for another number, and before start()
    void setStation(int station, bool on);

    /// \return the cyclic variables' stations and every other one that was asked something or switched, by
    ///         number
    std::vector<StationReport> stations() const;

    /// \return how often the communication thread went round: as long as it lives, the number moves on with each request
    ///         and, with a ValueObserver, 20 times a second without one (it begins anew at 2^32). Takes no lock.
    quint32 rounds() const;

    LinkState linkState() const;
    Statistics statistics() const;

private:
    class PLCRUNTIME_INTERNAL Private;
    std::unique_ptr<Private> d;
};

} // namespace plc

#endif
