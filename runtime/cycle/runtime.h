/// \file
/// \brief The runtime: driver, link, communication thread, and what commands ask of them.
#ifndef RUNTIME_CYCLE_RUNTIME_H
#define RUNTIME_CYCLE_RUNTIME_H

#include "driver/plcdriver.h"
#include "runtime/cycle/pass_counter.h"
#include "runtime/cycle/round_trips.h"
#include "runtime/link/link.h"
#include "runtime/model/cyclic_value.h"
#include "runtime/model/outcome.h"
#include "runtime/model/pending.h"
#include "runtime/model/settings.h"
#include "runtime/model/station_report.h"
#include "runtime/model/variable.h"

#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace plc
{

/// One frame, what came back, and what the driver made of it.
struct ExchangeRecord {
    int durationMs = 0;    ///< until the reply or the time-out
    QByteArray frame;      ///< as the driver built it, number 0
    LinkExchange exchange; ///< as it went over the link
    RW_VAR request;        ///< the request that the frame was built for
    bool replyExpected = true;
    int result = 0; ///< the driver's code: 1 done, 0 to be retried, else failed for good
};

/// Runs on the communication thread with no lock held; must not throw and must not stop the runtime.
using ExchangeObserver = std::function<void(const ExchangeRecord&)>;

/// What the exchanges with one station came to, of writes and one-shot reads too.
struct StationStatistics {
    RoundTrips roundTrips;              ///< of every reply that came, refusals included
    long retried = 0;                   ///< failures that were retried
    std::map<int, long> failuresByCode; ///< requests given up, by the driver's result code
};

struct Statistics {
    long exchanges = 0;                        ///< frames handed to the link
    long good = 0;                             ///< replies that the driver took
    long retried = 0;                          ///< failures that were retried
    long failed = 0;                           ///< requests given up
    std::map<int, long> failuresByCode;        ///< the same by the driver's result code
    std::map<int, StationStatistics> stations; ///< of each that a frame was due for
    long passes = 0;                           ///< passes over the cyclic variables
    double passesPerSecond = 0;                ///< over the last ten passes, the pauses between them included
    PassCost lastPass;                         ///< of the last pass that is over
    long writesConfirmed = 0;                  ///< whole writes, as write() took them
    long writesFailed = 0;
    long readsDone = 0; ///< whole one-shot reads
    long readsFailed = 0;
    long readsQueuedAgain = 0; ///< requests of one-shot reads that fell to the failure of another request
    int writesWaiting = 0;     ///< requests of writes that have not ended
};

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
class Runtime
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
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace plc

#endif
