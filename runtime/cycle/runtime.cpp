// SPDX-License-Identifier: MIT
#include "runtime/cycle/runtime.h"

#include "runtime/cycle/cyclic_values.h"
#include "runtime/cycle/exchange_counter.h"
#include "runtime/cycle/exchange_record.h"
#include "runtime/cycle/once_reads.h"
#include "runtime/cycle/send_pause.h"
#include "runtime/cycle/stations.h"
#include "runtime/cycle/value_changes.h"
#include "runtime/cycle/write_queue.h"
#include "runtime/host/hosted_driver.h"
#include "runtime/host/request_keys.h"
#include "runtime/link/link.h"
#include "runtime/link/silence.h"
#include "runtime/modbus/dialect.h"
#include "runtime/modbus/failure_words.h"
#include "runtime/modbus/frame_fields.h"
#include "runtime/modbus/reply_failure.h"
#include "runtime/modbus/reply_fault.h"
#include "runtime/modbus/return_codes.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace plc
{

namespace
{

// How long the communication thread sleeps when there is nothing to do and nobody wakes it.
const int idleMs = 50;

// How long it sleeps when the driver has something but does not hand it out: it says so once after five
// writes in a row, and when all it had was for stations that are switched off.
const int retryPollMs = 1;

// How often values are looked through for those that have become stale.
const std::chrono::milliseconds ageingPeriod(20);

// So many values are taken out of the driver before others get their turn at it.
const std::size_t mostTakenAtOnce = 1000;

[[noreturn]] void fail(const QString& words)
{
    throw std::runtime_error(words.toStdString());
}

template <class Outcome>
Pending<Outcome> refused(const Failure& failure, const std::function<void(const Outcome&)>& done)
{
    Outcome outcome;
    outcome.failure = failure;
    Pending<Outcome> pending;
    pending.finish(outcome);
    if (done)
        done(outcome);
    return pending;
}

/// A gateway answers in place of a station that it cannot reach.
TryEnd endOf(const LinkExchange& exchange, bool isGood)
{
    if (isGood)
        return TryEnd::Answered;
    if (!exchange.sent)
        return TryEnd::NotSent;
    const int exception = exceptionCode(exchange.reply);
    return exchange.reply.isEmpty() || isFromGateway(exception) ? TryEnd::NoAnswer : TryEnd::Answered;
}

/// \return the Modbus exception that came; 0 when none did, and remote frames know none
int exceptionIn(const LinkExchange& exchange)
{
    return exchange.format == FrameFormat::ModbusTcp ? exceptionCode(exchange.reply) : 0;
}

/// \return what the reply has against it that its length need not show
FailureKind faultIn(const LinkExchange& exchange)
{
    return dialectOf(exchange.format).faultOf(exchange.sentFrame, exchange.reply);
}

/// \return true when no request would get as far as the controller
bool isLinkDown(const Failure& why)
{
    return why.kind == FailureKind::NotConnected || why.kind == FailureKind::ClosedAtOnce;
}

/// What the communication thread has to do next.
struct Turn {
    bool frameIsDue = false;
    int replySize = 0;          // what the driver expects
    ExchangeRecord record = {}; // of the frame's exchange, as far as it has got
};

/// \return what a controller takes that acknowledges the frame of \a record, for people
QString takenBy(const ExchangeRecord& record)
{
    if (record.request.hostKey != writeKey)
        return QStringLiteral("the read");
    return byteAt(record.frame, functionOffset) == ReadRegisters
               ? QStringLiteral("only the read of the bit's word, without which nothing is written,")
               : QStringLiteral("the write");
}

} // namespace

/// All calls to the driver are made under m_mutex, one at a time: how the driver's lists change shows only
/// in their sizes before and after a call. No call to the driver waits for the network.
class Runtime::Private
{
public:
    explicit Private(const Settings& settings);
    ~Private();

    int addCyclic(const Variable& variable);
    void start();
    void stop();
    Pending<WriteOutcome> write(const Variable& variable, const std::vector<quint32>& values,
                                const WriteDone& done);
    Pending<ReadOutcome> read(const Variable& variable, const ReadDone& done);
    CyclicValue value(int index);
    void values(int first, std::vector<CyclicValue>* values);
    void setStation(int station, bool on);
    std::vector<StationReport> stations();
    Statistics statistics();

    void setObserver(const ExchangeObserver& observer) { m_observer = observer; }
    void setValueObserver(const ValueObserver& observer) { m_valueObserver = observer; }
    Link& link() { return m_link; }
    quint32 rounds() const { return m_rounds.load(std::memory_order_relaxed); }

private:
    // Cold is what a request nearly never takes: it stays out of the way of the rest.
    bool isRunning() const { return m_started && !m_stopped; }
    void lower(int index, CyclicValue* value);
    void workHasCome();
    void writeEnded(const Variable& elements, bool doubtful);
    [[gnu::cold]] void endHolding();
    void feed();
    [[gnu::cold]] void tell();
    void collectChanges();
    void tellChanges();
    void communicate();
    Turn takeTurn();
    [[gnu::cold]] void endPass();
    void waitForPass();
    void wentRound() { m_rounds.store(rounds() + 1, std::memory_order_relaxed); }
    [[gnu::cold]] bool mayGoOn(int milliseconds);
    bool isWaited() const { return m_writes.waiting() + m_reads.waiting() > 0; }
    [[gnu::cold]] void waitForWork(int milliseconds);
    [[gnu::cold]] void waitUnlessStopped(int milliseconds);
    void exchange(Turn& turn);
    int judge(ExchangeRecord& record, int exception, LaterCalls::Calls* calls);
    void answered(const ExchangeRecord& record);
    [[gnu::cold]] void givenUp(const ExchangeRecord& record, const Failure& why);
    [[gnu::cold]] void lost(int station, const Failure& why);
    [[gnu::cold]] void failWaiting(int station, const Failure& why);
    [[gnu::cold]] Failure unsentFailure(int code) const;
    [[gnu::cold]] Failure whyGivenUp(const ExchangeRecord& record, int code) const;

    const Settings m_settings;
    ExchangeObserver m_observer;
    ValueObserver m_valueObserver;
    Link m_link;

    std::mutex m_mutex;
    std::condition_variable m_workCame;
    bool m_hasWork = false;
    bool m_passIsOver = false;  // and the next one has not begun; the communication thread's own
    bool m_passWasIdle = false; // nothing went out in it
    Clock::time_point m_passBegan = Clock::now();
    Clock::time_point m_passDue = Clock::now(); // the next one may begin then
    bool m_started = false;
    bool m_stopped = false;
    std::atomic<bool> m_stopping{false};
    std::atomic<quint32> m_rounds{0}; // written by the communication thread alone
    std::thread m_thread;

    std::unique_ptr<HostedDriver> m_driver;
    DriverCalls m_calls; // of m_driver
    LaterCalls m_later;
    CyclicValues m_cyclic;
    ValueChanges m_changes;
    // Of the communication thread alone: what collectChanges() found, and which of it is news.
    TakenValues m_taken;
    std::vector<std::size_t> m_news;
    bool m_hasMoreNews = false;
    Clock::time_point m_agedAt;
    WriteQueue m_writes;
    OnceReads m_reads;
    Stations m_stations;
    ExchangeCounter m_counter;
    SendPause m_pause;                              // of the communication thread alone
    QByteArray m_wrongReply = replyOfWrongLength(); // the same
};

Runtime::Private::Private(const Settings& settings)
    : m_settings(settings), m_link(settings.host, settings.port, settings.timeoutMs, frameFormatOf(settings)),
      m_cyclic(settings),
      m_writes(
          m_calls, settings,
          [this](const Variable& elements, bool doubtful) { writeEnded(elements, doubtful); }, m_later),
      m_reads(
          m_calls, settings, [this](const Variable& asked) { return m_cyclic.wholeBits(asked); }, m_later),
      m_stations(m_calls, settings), m_pause(settings)
{
}

Runtime::Private::~Private()
{
    stop();
}

int Runtime::Private::addCyclic(const Variable& variable)
{
    const Variable resolved = withStation(variable, m_settings);
    const QString words = cyclicRefusal(resolved, m_settings);
    if (!words.isEmpty())
        fail(words);
    return m_cyclic.add(resolved);
}

void Runtime::Private::start()
{
    const QString words = settingsError(m_settings);
    if (!words.isEmpty())
        fail(words);
    const QString tooLong = m_cyclic.blockRefusal();
    if (!tooLong.isEmpty())
        fail(tooLong);
    if (m_started)
        fail(QStringLiteral("a runtime is started once only; make a new one"));
    m_driver = std::make_unique<HostedDriver>(
        m_settings, [this](int key, int status) { m_reads.note(key, status); }); // under m_mutex
    m_calls = m_driver->calls();
    m_cyclic.queue(m_calls);
    if (m_valueObserver)
        m_cyclic.watch();
    std::lock_guard<std::mutex> lock(m_mutex);
    m_started = true;
    m_thread = std::thread([this] { communicate(); });
}

void Runtime::Private::stop()
{
    m_stopping = true;
    m_link.stop();
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_stopped = true;
        m_workCame.notify_all();
    }
    if (m_thread.joinable())
        m_thread.join();
    LaterCalls::Calls calls;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_writes.stop();
        m_reads.stop();
        if (m_driver)
            m_cyclic.freeze(m_calls);
        m_driver.reset();
        calls = m_later.take();
    }
    LaterCalls::make(calls);
}

void Runtime::Private::workHasCome()
{
    m_hasWork = true;
    m_workCame.notify_all();
}

void Runtime::Private::writeEnded(const Variable& elements, bool doubtful)
{
    if (doubtful)
        m_cyclic.doubt(elements);
    m_cyclic.touch(elements);
}

Pending<WriteOutcome> Runtime::Private::write(const Variable& variable, const std::vector<quint32>& values,
                                              const WriteDone& done)
{
    const Variable resolved = withStation(variable, m_settings);
    const QString words = writeRefusal(resolved, values, m_settings);
    if (!words.isEmpty())
        return refused(Failure(FailureKind::Invalid, words), done);
    std::unique_lock<std::mutex> lock(m_mutex);
    if (!isRunning()) {
        lock.unlock();
        return refused(Failure(FailureKind::NotRunning), done);
    }
    const Pending<WriteOutcome> pending = m_writes.add(resolved, values, done);
    m_stations.wake(resolved.station);
    m_writes.feed(m_stations.off(), m_stations.held());
    m_cyclic.touch(resolved);
    workHasCome();
    return pending;
}

Pending<ReadOutcome> Runtime::Private::read(const Variable& variable, const ReadDone& done)
{
    const Variable resolved = withStation(variable, m_settings);
    const QString words = readRefusal(resolved, m_settings);
    if (!words.isEmpty())
        return refused(Failure(FailureKind::Invalid, words), done);
    std::unique_lock<std::mutex> lock(m_mutex);
    if (!isRunning()) {
        lock.unlock();
        return refused(Failure(FailureKind::NotRunning), done);
    }
    const Pending<ReadOutcome> pending = m_reads.add(resolved, done);
    m_stations.wake(resolved.station);
    m_reads.feed(m_stations.off(), m_stations.held());
    workHasCome();
    return pending;
}

CyclicValue Runtime::Private::value(int index)
{
    if (!m_cyclic.contains(index))
        fail(QStringLiteral("%1 is no index of a cyclic variable").arg(index));
    std::lock_guard<std::mutex> lock(m_mutex);
    CyclicValue value = m_cyclic.value(index, m_calls);
    lower(index, &value);
    return value;
}

void Runtime::Private::values(int first, std::vector<CyclicValue>* values)
{
    const int end = first + static_cast<int>(values->size());
    if (values->empty())
        return;
    if (!m_cyclic.contains(first) || !m_cyclic.contains(end - 1))
        fail(QStringLiteral("%1 to %2 are no indexes of cyclic variables").arg(first).arg(end - 1));
    std::lock_guard<std::mutex> lock(m_mutex);
    m_cyclic.values(first, m_calls, values);
    for (int index = first; index < end; ++index)
        lower(index, &(*values)[static_cast<std::size_t>(index - first)]);
}

/// What is on its way, or switched off, is no better than that.
void Runtime::Private::lower(int index, CyclicValue* value)
{
    if (m_writes.waiting() > 0 && m_writes.isWriting(m_cyclic.variable(index)))
        value->state = std::min(value->state, ValueState::Unconfirmed);
    if (!m_stations.off().empty() && m_stations.off().count(m_cyclic.variable(index).station) != 0)
        value->state = std::min(value->state, ValueState::StationOff);
}

void Runtime::Private::setStation(int station, bool on)
{
    if (station < 0 || station > lastStation)
        fail(QStringLiteral("%1 is no station; stations are 0 to %2").arg(station).arg(lastStation));
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!isRunning())
        fail(QStringLiteral("the panel is not running"));
    m_stations.turn(station, on, m_writes.driverHas(station) || m_reads.driverHas(station));
    m_cyclic.touchStation(station);
    if (on)
        m_passDue = Clock::now();
    workHasCome();
}

std::vector<StationReport> Runtime::Private::stations()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    const std::map<int, int> writes = m_writes.waitingByStation();
    const std::map<int, int> reads = m_reads.waitingByStation();
    std::set<int> named = m_cyclic.stations();
    for (const auto& waiting : {writes, reads}) {
        for (const auto& station : waiting)
            named.insert(station.first);
    }
    std::vector<StationReport> reports = m_stations.reports(named);
    for (StationReport& report : reports) {
        report.writesWaiting = writes.count(report.station) != 0 ? writes.at(report.station) : 0;
        report.readsWaiting = reads.count(report.station) != 0 ? reads.at(report.station) : 0;
    }
    return reports;
}

Statistics Runtime::Private::statistics()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    Statistics statistics = m_counter.statistics();
    if (!m_link.state().connected)
        statistics.passesPerSecond = 0;
    statistics.writesConfirmed = m_writes.confirmedWrites();
    statistics.writesFailed = m_writes.failedWrites();
    statistics.writesWaiting = m_writes.waiting();
    statistics.readsDone = m_reads.doneReads();
    statistics.readsFailed = m_reads.failedReads();
    statistics.readsQueuedAgain = m_reads.queuedAgain();
    return statistics;
}

void Runtime::Private::communicate()
{
    m_counter.begin();
    while (!m_stopping) {
        waitForPass();
        Turn turn = takeTurn();
        if (turn.frameIsDue && !CyclicValues::isPacing(turn.record.request)) {
            exchange(turn);
            continue;
        }
        if (turn.frameIsDue)
            endPass();
        tell();
        if (!turn.frameIsDue)
            waitForWork(idleMs);
    }
    m_link.close();
}

/// What the last turn brought, to those who want to be told.
void Runtime::Private::tell()
{
    LaterCalls::Calls calls;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (m_valueObserver)
            collectChanges();
        calls = m_later.take();
    }
    LaterCalls::make(calls);
    tellChanges();
}

/// Finds the next changes. Their memory is used again and again: with each reply there are as many.
void Runtime::Private::collectChanges()
{
    const Clock::time_point now = Clock::now();
    if (now - m_agedAt >= ageingPeriod) {
        m_cyclic.touchAged();
        m_agedAt = now;
    }
    m_cyclic.takeTouched(mostTakenAtOnce, m_calls, &m_taken);
    for (std::size_t place = 0; place < m_taken.indexes.size(); ++place) {
        const int index = m_taken.indexes[place];
        CyclicValue& value = m_taken.values[place];
        lower(index, &value);
        if (m_changes.isNews(index, value))
            m_news.push_back(place);
    }
    m_hasMoreNews = m_cyclic.hasTouched();
}

/// With no lock held. What was found is told before more is taken.
void Runtime::Private::tellChanges()
{
    for (;;) {
        for (const std::size_t place : m_news)
            m_valueObserver(m_taken.indexes[place], m_taken.values[place]);
        m_news.clear();
        if (!m_hasMoreNews)
            return;
        std::lock_guard<std::mutex> lock(m_mutex);
        collectChanges();
    }
}

void Runtime::Private::feed()
{
    if (m_writes.hasBacklog())
        m_writes.feed(m_stations.off(), m_stations.held());
    if (m_reads.hasBacklog())
        m_reads.feed(m_stations.off(), m_stations.held());
}

/// Serves a station again when the driver has thrown away what was there before it was switched off.
void Runtime::Private::endHolding()
{
    const std::set<int> held = m_stations.held();
    for (const int station : held) {
        if (!m_writes.driverHas(station) && !m_reads.driverHas(station))
            m_stations.release(station);
    }
}

Turn Runtime::Private::takeTurn()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_hasWork = false;
    m_stations.endPauses();
    if (!m_stations.held().empty())
        endHolding();
    feed();
    const Protocol* protocol = m_calls.ComCommunication();
    m_writes.polled();
    m_reads.polled();
    if (protocol == nullptr)
        return Turn();
    const bool replyExpected = protocol->replyLength != 0;
    return {true, protocol->replyLength, {0, protocol->frame, {}, protocol->var, replyExpected, 0}};
}

void Runtime::Private::endPass()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    QByteArray reply = CyclicValues::pacingReply();
    m_calls.DataCom(&reply, reply.size());
    m_passIsOver = true;
    m_passDue = m_passBegan + std::chrono::milliseconds(m_settings.pollMs);
    // With every station off or pausing, nothing else would take time.
    m_passWasIdle = !m_counter.endPass();
    if (m_passWasIdle)
        m_passDue = std::max(m_passDue, Clock::now() + std::chrono::milliseconds(idleMs));
}

/// Between two passes the driver is asked for a frame only when somebody wants something else: it would hand out a
/// cyclic read. (After five writes in a row it does so all the same.) Meanwhile values become stale, and who wants to
/// know is told.
void Runtime::Private::waitForPass()
{
    const int longestMs = 3600000; // of a wait that somebody ends
    wentRound();
    while (m_passIsOver && !mayGoOn(m_valueObserver ? idleMs : longestMs)) {
        tell();
        wentRound();
    }
}

/// \return false when so much time went by, or something came that is no reason to go on
bool Runtime::Private::mayGoOn(int milliseconds)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    const auto hasCome = [this] { return m_hasWork || m_stopping; };
    if (m_passWasIdle && isWaited()) // for what the driver did not hand out
        m_workCame.wait_for(lock, std::chrono::milliseconds(retryPollMs), hasCome);
    if (!isWaited() && Clock::now() < m_passDue) // even a wait that is over at once gives the processor away
        m_workCame.wait_until(
            lock, std::min(m_passDue, Clock::now() + std::chrono::milliseconds(milliseconds)), hasCome);
    m_hasWork = false;
    if (Clock::now() < m_passDue)
        return isWaited() || m_stopping;
    m_passIsOver = false;
    m_passBegan = Clock::now();
    return true;
}

/// Returns early when something was queued since the last turn, or is still waiting from before it.
void Runtime::Private::waitForWork(int milliseconds)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_workCame.wait_for(lock, std::chrono::milliseconds(isWaited() ? retryPollMs : milliseconds),
                        [this] { return m_hasWork || m_stopping; });
}

void Runtime::Private::waitUnlessStopped(int milliseconds)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_workCame.wait_for(lock, std::chrono::milliseconds(milliseconds), [this] { return m_stopping.load(); });
}

void Runtime::Private::exchange(Turn& turn)
{
    ExchangeRecord& record = turn.record;
    m_link.exchange(record.frame, record.replyExpected, turn.replySize, &record.exchange);
    if (m_stopping)
        return;
    LaterCalls::Calls calls;
    const int exception = exceptionIn(record.exchange);
    record.result = judge(record, exception, &calls);
    const int pauseMs = m_pause.after(exception);
    record.durationMs = static_cast<int>(record.exchange.durationMs);
    if (m_observer)
        m_observer(record);
    LaterCalls::make(calls);
    if (m_valueObserver)
        tellChanges();
    m_link.takeBack(&record.exchange.reply);
    if (pauseMs > 0)
        waitUnlessStopped(pauseMs);
}

/// \param exception that the exchange of \a record brought
/// \param calls what it brought, to those who want to be told
/// \return the driver's code
int Runtime::Private::judge(ExchangeRecord& record, int exception, LaterCalls::Calls* calls)
{
    LinkExchange& exchange = record.exchange;
    // With nothing to judge the driver would take a broadcast that never went out for done.
    const bool isWrong = faultIn(exchange) != FailureKind::None || (!record.replyExpected && !exchange.sent);
    QByteArray* const reply = isWrong ? &m_wrongReply : &exchange.reply;
    std::lock_guard<std::mutex> lock(m_mutex);
    if (exception == Acknowledge)
        m_driver->tryNoMore();
    const int code = m_calls.DataCom(reply, reply->size())->result;
    if (code != PLC_RETRYING)
        m_driver->renewTries();
    const bool isGood = isSuccess(code);
    m_counter.exchanged(record.request, exchange.replyMicroseconds, code);
    if (record.replyExpected)
        m_stations.tried(record.request.station, endOf(exchange, isGood));
    if (isGood)
        answered(record);
    else if (code != PLC_RETRYING)
        givenUp(record, whyGivenUp(record, code));
    if (m_valueObserver)
        collectChanges();
    if (m_later.areThere())
        *calls = m_later.take();
    return code;
}

void Runtime::Private::answered(const ExchangeRecord& record)
{
    const RW_VAR& request = record.request;
    if (request.hostKey == writeKey)
        m_writes.answered();
    else if (request.hostKey == onceReadKey)
        m_reads.answered();
    else if (request.hostKey == cyclicKey)
        m_counter.blockEnded(request, m_cyclic.answered(request, record.exchange.repliedAt));
}

void Runtime::Private::givenUp(const ExchangeRecord& record, const Failure& why)
{
    const RW_VAR& request = record.request;
    const int key = request.hostKey;
    if (key == cyclicKey)
        m_counter.blockEnded(request, m_cyclic.givenUp(request, why));
    m_writes.givenUp(key == writeKey, request.station, why);
    m_reads.givenUp(key == onceReadKey, request.station, why);
    if (record.replyExpected && m_stations.givenUp(request.station, why))
        lost(request.station, why);
    else if (isLinkDown(why))
        failWaiting(request.station, why);
}

/// Nothing may wait for a station that pauses: the driver would throw it away without having tried.
void Runtime::Private::lost(int station, const Failure& why)
{
    failWaiting(station, why);
    m_cyclic.lost(station, why);
    m_stations.leaveAlone(station);
}

/// So that a write or read of many requests does not wait for the controller with each of them.
void Runtime::Private::failWaiting(int station, const Failure& why)
{
    m_writes.lost(station, why);
    m_reads.lost(station, why);
}

Failure Runtime::Private::whyGivenUp(const ExchangeRecord& record, int code) const
{
    const LinkExchange& exchange = record.exchange;
    if (!exchange.sent)
        return unsentFailure(code);
    if (exchange.reply.isEmpty())
        return silenceFailure(code, exchange, m_settings.timeoutMs);
    Failure failure = replyFailure(code, faultIn(exchange), exchange.reply, m_settings.timeoutMs);
    if (failure.kind == FailureKind::Acknowledged)
        failure.detail = takenBy(record);
    return failure;
}

Failure Runtime::Private::unsentFailure(int code) const
{
    const LinkState link = m_link.state();
    Failure failure =
        connectionFailure(code, noConnectionWords(m_settings.host, m_settings.port, link.lastError));
    if (link.closedAtOnce)
        failure.kind = FailureKind::ClosedAtOnce;
    return failure;
}

Runtime::Runtime(const Settings& settings) : d(new Private(settings)) {}

Runtime::~Runtime() = default;

int Runtime::addCyclic(const Variable& variable)
{
    return d->addCyclic(variable);
}

void Runtime::setObserver(const ExchangeObserver& observer)
{
    d->setObserver(observer);
}

void Runtime::setValueObserver(const ValueObserver& observer)
{
    d->setValueObserver(observer);
}

void Runtime::setTap(const std::shared_ptr<LinkTap>& tap)
{
    d->link().setTap(tap);
}

void Runtime::start()
{
    d->start();
}

void Runtime::stop()
{
    d->stop();
}

Pending<WriteOutcome> Runtime::write(const Variable& variable, const std::vector<quint32>& values,
                                     const WriteDone& done)
{
    return d->write(variable, values, done);
}

Pending<ReadOutcome> Runtime::read(const Variable& variable, const ReadDone& done)
{
    return d->read(variable, done);
}

CyclicValue Runtime::value(int index) const
{
    return d->value(index);
}

void Runtime::values(int first, std::vector<CyclicValue>* values) const
{
    d->values(first, values);
}

void Runtime::setStation(int station, bool on)
{
    d->setStation(station, on);
}

std::vector<StationReport> Runtime::stations() const
{
    return d->stations();
}

quint32 Runtime::rounds() const
{
    return d->rounds();
}

LinkState Runtime::linkState() const
{
    return d->link().state();
}

Statistics Runtime::statistics() const
{
    return d->statistics();
}

} // namespace plc
