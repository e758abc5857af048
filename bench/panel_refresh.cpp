// SPDX-License-Identifier: MIT
#include "bench/panel_refresh.h"

#include "runtime/cycle/cyclic_values.h"
#include "runtime/cycle/exchange_record.h"
#include "runtime/host/driver_library.h"
#include "runtime/host/request_keys.h"
#include "runtime/link/link.h"
#include "runtime/model/variable_list.h"

#include <QElapsedTimer>

#include <algorithm>
#include <condition_variable>
#include <ctime>
#include <future>
#include <limits>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace bench
{

namespace
{

const int warmUpPasses = 3;
const int longestWaitMs = 60000;

double threadMicroseconds()
{
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

/// Watches the communication thread: skips the first exchanges, then measures until the time is over.
class Stopwatch
{
public:
    Stopwatch(int requests, int milliseconds) : m_requests(requests), m_milliseconds(milliseconds) {}

    /// On the communication thread, after each exchange.
    void note(const plc::ExchangeRecord& record)
    {
        if (m_over)
            return;
        if (record.result != PLC_DONE)
            end(true);
        else if (--m_leftOfPass == 0) // no division, whose time would be taken for the panel's
            endPass();
    }

    LoopCost wait()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait_for(lock, std::chrono::milliseconds(longestWaitMs), [this] { return m_done; });
        if (!m_done || m_failed)
            throw std::runtime_error("a request of the panel failed");
        return {m_shortest, m_cpu / (m_passes - warmUpPasses) / m_requests};
    }

private:
    void endPass()
    {
        m_leftOfPass = m_requests;
        ++m_passes;
        if (m_passes == warmUpPasses)
            begin();
        else if (m_passes > warmUpPasses)
            endRefresh();
    }

    void begin()
    {
        m_cpu = threadMicroseconds();
        m_clock.start();
        m_refresh.start();
    }

    void endRefresh()
    {
        m_shortest = std::min(m_shortest, m_refresh.nsecsElapsed());
        m_refresh.start();
        if (m_clock.elapsed() >= m_milliseconds)
            end(false);
    }

    void end(bool failed)
    {
        m_cpu = threadMicroseconds() - m_cpu;
        m_over = true;
        std::lock_guard<std::mutex> lock(m_mutex);
        m_failed = failed;
        m_done = true;
        m_changed.notify_all();
    }

    const int m_requests;
    const int m_milliseconds;
    QElapsedTimer m_clock;
    QElapsedTimer m_refresh;
    qint64 m_shortest = std::numeric_limits<qint64>::max();
    double m_cpu = 0;
    int m_leftOfPass = m_requests;
    int m_passes = 0;
    bool m_over = false; // the communication thread's own

    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_failed = false;
    bool m_done = false;
};

/// Tells when the communication thread has made so many exchanges, and keeps it from making more for a while.
class Finish
{
public:
    explicit Finish(int exchanges) : m_left(exchanges) {}

    /// On the communication thread, after each exchange.
    void note(const plc::ExchangeRecord& record)
    {
        if (m_left == 0)
            return;
        m_failed = m_failed || record.result != PLC_DONE;
        if (--m_left > 0)
            return;
        m_reached.set_value();
        std::this_thread::sleep_for(std::chrono::milliseconds(100)); // the loop is stopped meanwhile
    }

    void wait()
    {
        m_reached.get_future().wait();
        if (m_failed)
            throw std::runtime_error("a request of the panel failed");
    }

private:
    int m_left;
    bool m_failed = false;
    std::promise<void> m_reached;
};

void addAll(plc::Runtime& runtime, const Variables& variables)
{
    for (const plc::Variable& variable : variables)
        runtime.addCyclic(variable);
}

} // namespace

Variables variablesOf(const QString& path)
{
    const plc::VariableList list = plc::readVariableList(path);
    if (!list.errors.isEmpty())
        throw std::runtime_error(list.errors.first().toStdString());
    Variables variables;
    for (const plc::ListedVariable& listed : list.variables)
        variables.push_back(listed.elements);
    return variables;
}

double microsecondsPerRequest(int requests, int milliseconds, const Refresh& refresh)
{
    refresh();
    int passes = 0;
    QElapsedTimer clock;
    clock.start();
    const double before = threadMicroseconds();
    for (; clock.elapsed() < milliseconds; ++passes)
        refresh();
    return (threadMicroseconds() - before) / passes / requests;
}

plc::Settings settingsFor(int port)
{
    plc::Settings settings;
    settings.driverPath = QStringLiteral(PLC_DRIVER_LIBRARY);
    settings.port = port;
    settings.timeoutMs = patienceMs;
    settings.pollMs = 0;
    return settings;
}

Pass recordPass(int port, const Variables& variables)
{
    Pass pass;
    std::mutex mutex;
    bool failed = false;
    plc::Settings settings = settingsFor(port);
    settings.pollMs = 1000; // so that there is exactly one pass to record
    plc::Runtime runtime(settings);
    addAll(runtime, variables);
    runtime.setObserver([&](const plc::ExchangeRecord& record) {
        std::lock_guard<std::mutex> lock(mutex);
        pass.frames.push_back(record.frame);
        pass.replies.push_back(record.exchange.reply);
        failed = failed || record.result != PLC_DONE;
    });
    runtime.start();
    QElapsedTimer clock;
    clock.start();
    while (runtime.statistics().passes == 0 && clock.elapsed() < longestWaitMs)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    runtime.stop();
    pass.cost = runtime.statistics().lastPass;
    if (failed || pass.frames.empty())
        throw std::runtime_error("the panel could not read the list");
    return pass;
}

LoopCost runLoop(int port, const Variables& variables, int requests, int milliseconds)
{
    Stopwatch stopwatch(requests, milliseconds);
    plc::Runtime runtime(settingsFor(port));
    addAll(runtime, variables);
    runtime.setObserver([&stopwatch](const plc::ExchangeRecord& record) { stopwatch.note(record); });
    runtime.start();
    const LoopCost cost = stopwatch.wait();
    runtime.stop();
    return cost;
}

void runLoopPasses(int port, const Variables& variables, int requests, int passes)
{
    Finish finish(requests * passes);
    plc::Runtime runtime(settingsFor(port));
    addAll(runtime, variables);
    runtime.setObserver([&finish](const plc::ExchangeRecord& record) { finish.note(record); });
    runtime.start();
    finish.wait();
    runtime.stop();
}

void withDriver(const Variables& variables, const Pass& pass, const std::function<void(const Refresh&)>& load)
{
    const plc::Settings settings = settingsFor(0);
    const plc::DriverLibrary library(settings.driverPath);
    const plc::DriverCalls& calls = library.calls();
    COMINFO info = COMINFO();
    info.maxBlockCount = settings.maxBlockCount;
    info.defaultStation = settings.station;
    calls.SetComInfo(&info);
    plc::CyclicValues cyclic(settings);
    for (const plc::Variable& variable : variables)
        cyclic.add(plc::withStation(variable, settings));
    cyclic.queue(calls);
    load([&calls, &pass] {
        for (std::size_t i = 0; i <= pass.replies.size(); ++i) {
            const Protocol* protocol = calls.ComCommunication();
            QByteArray reply = plc::CyclicValues::isPacing(protocol->var) ? plc::CyclicValues::pacingReply()
                                                                          : pass.replies[i];
            if (calls.DataCom(&reply, reply.size())->result != PLC_DONE)
                throw std::runtime_error("the driver does not take a reply");
        }
    });
    calls.SetComInfo(nullptr);
}

void withLink(int port, const Pass& pass, const std::function<void(const Refresh&)>& load)
{
    const plc::Settings settings = settingsFor(port);
    plc::Link link(settings.host, settings.port, settings.timeoutMs);
    load([&link, &pass] {
        for (const QByteArray& frame : pass.frames) {
            plc::LinkExchange made;
            link.exchange(frame, true, 0, &made);
            if (made.reply.isEmpty())
                throw std::runtime_error("the link gets no reply");
            link.takeBack(&made.reply);
        }
    });
    link.close();
}

} // namespace bench
