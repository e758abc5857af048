// SPDX-License-Identifier: MIT
#include "soak/pair.h"
#include "runtime/cycle/exchange_record.h"

#include "soak/memory_watch.h"
#include "soak/users.h"
#include "support/controller_values.h"

#include <QThread>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <numeric>
#include <random>
#include <thread>

namespace soak
{

namespace
{

const int retries = 3;
const int writers = 3;
const int stationsOfOnePair = 3;
const int rounds = 4;     // panels one after the other, each with the list in another order
const int calmMs = 30000; // what is not right so long after the last fault never will be
const unsigned long pollMs = 5;
const std::size_t samples = 200;
const long fewestRequestsForEachFault = 10000; // of a pair; the rarest comes about once in a thousand
const long fewestRequestsForMemory = 20000;    // fewer would hide a leak in the tolerance

simulator::FaultSettings faultsOf(const Options& options, int number)
{
    simulator::FaultSettings faults;
    const auto kinds = static_cast<double>(options.faults.size());
    for (const simulator::FaultKind* const kind : options.faults)
        faults.*kind->probability = options.percent / 100 / kinds;
    faults.lateMs = options.lateMs;
    faults.seed = options.seed * 1000 + static_cast<unsigned>(number);
    return faults;
}

std::vector<int> stationsOf(int number)
{
    std::vector<int> stations = {1};
    while (number % 2 != 0 && stations.size() < stationsOfOnePair)
        stations.push_back(static_cast<int>(stations.size()) + 1);
    return stations;
}

plc::Settings panelSettings(const Options& options, int number)
{
    plc::Settings settings;
    settings.driverPath = options.driverPath;
    settings.multiStation = stationsOf(number).size() > 1;
    settings.remoteMode = options.remote;
    settings.timeoutMs = options.timeoutMs;
    settings.retryLimit = retries;
    settings.pollMs = 1;
    settings.stationPauseMs = options.timeoutMs; // a long one would end many writes without a request
    return settings;
}

class Pair
{
public:
    Pair(const Options& options, int number, Figures& figures);
    void run();

private:
    simulator::Settings controllerSettings();
    void startController();
    void playRound(int round);
    void startPanel(int round);
    void startUsers(unsigned seed);
    std::vector<std::size_t> variablesOf(int writer) const;
    void work(long requests);
    void stopUsers();
    void calmDown();
    bool isRight(std::size_t index);
    void compareCounts();
    void checkThatMuchHappened();
    void compareCount(const char* what, long own, long ofPanel);
    void judgeMemory();
    void fillIn();
    QString state();

    const Options m_options;
    const int m_number;
    Figures& m_figures;
    Complaints m_complaints;
    const std::vector<SoakVariable> m_variables;
    Referee m_referee;
    simulator::SimulatedController m_controller;
    std::vector<int> m_cyclic;
    std::unique_ptr<plc::Runtime> m_runtime;
    std::unique_ptr<Rig> m_rig;
    Watchdog m_watchdog;
    Watchdog::Watch& m_watch;
    Watchdog::Watch& m_panelWatch;
    std::vector<Watchdog::Watch*> m_userWatches;
    std::vector<std::unique_ptr<Writer>> m_writers;
    std::vector<std::thread> m_threads;
    MemoryWatch m_memory{samples};
    long m_nextSample = 1;
};

Pair::Pair(const Options& options, int number, Figures& figures)
    : m_options(options), m_number(number), m_figures(figures),
      m_variables(soakVariables(stationsOf(number))),
      m_referee(m_variables, retries + 1, options.remote, m_complaints), m_controller(controllerSettings()),
      m_watchdog(options.hangMs, [this] { return state(); }),
      m_watch(m_watchdog.add(QStringLiteral("main thread"))),
      m_panelWatch(m_watchdog.add(QStringLiteral("communication thread")))
{
    for (int writer = 0; writer < writers; ++writer)
        m_userWatches.push_back(&m_watchdog.add(QStringLiteral("writer %1").arg(writer)));
    for (const char* const user : {"reader", "looker", "switcher"})
        m_userWatches.push_back(&m_watchdog.add(QLatin1String(user)));
}

simulator::Settings Pair::controllerSettings()
{
    simulator::Settings settings;
    settings.faults = faultsOf(m_options, m_number);
    settings.remote = m_options.remote;
    settings.trace = [this](const simulator::TraceEntry& entry) {
        m_referee.traced(entry);
        if (entry.isReply && !entry.bytes.empty())
            ++m_figures.replies;
    };
    return settings;
}

void Pair::run()
{
    m_watch.begin(QStringLiteral("starts"));
    startController();
    for (int round = 0; round < rounds; ++round)
        playRound(round);
    checkThatMuchHappened();
    m_watch.begin(QStringLiteral("stops the controller"));
    m_controller.stop();
    m_figures.requests = static_cast<long>(m_controller.requests());
    m_figures.wrong = m_complaints.count();
}

/// A panel's life, from its list to its end. The last one has to get everything right without faults.
void Pair::playRound(int round)
{
    const bool isLast = round == rounds - 1;
    startPanel(round);
    startUsers(m_options.seed * 100000 + static_cast<unsigned>(m_number * 100 + round * 10));
    work((m_options.requests / m_options.pairs + 1) * (round + 1) / rounds);
    if (isLast)
        judgeMemory();
    stopUsers();
    m_watch.begin(QStringLiteral("waits until all is right without faults"));
    if (isLast)
        calmDown();
    compareCounts();
    m_watch.begin(QStringLiteral("stops the panel"));
    m_runtime->stop();
    fillIn();
}

void Pair::startController()
{
    for (const SoakVariable& variable : m_variables) {
        const std::vector<quint32> values = valuesOf(variable, 0);
        const plc::Variable& where = variable.where;
        for (int index = 0; index < where.count; ++index)
            putIntoController(m_controller, where.area, where.element + index,
                              values[static_cast<std::size_t>(index)], where.station);
    }
    m_controller.start();
}

void Pair::startPanel(int round)
{
    plc::Settings settings = panelSettings(m_options, m_number);
    settings.port = m_controller.port();
    m_runtime.reset(); // there is one at a time
    m_runtime = std::make_unique<plc::Runtime>(settings);
    std::vector<std::size_t> order(m_variables.size());
    std::iota(order.begin(), order.end(), 0u);
    std::shuffle(order.begin(), order.end(), std::mt19937(m_options.seed + static_cast<unsigned>(round)));
    m_cyclic.assign(m_variables.size(), 0);
    for (const std::size_t index : order)
        m_cyclic[index] = m_runtime->addCyclic(m_variables[index].where);
    m_runtime->setObserver([this](const plc::ExchangeRecord& record) {
        m_panelWatch.end();
        m_referee.exchanged(record);
    });
    m_runtime->start();
}

std::vector<std::size_t> Pair::variablesOf(int writer) const
{
    std::vector<std::size_t> own;
    for (std::size_t index = static_cast<std::size_t>(writer); index < m_variables.size(); index += writers) {
        if (m_variables[index].isWritten)
            own.push_back(index);
    }
    return own;
}

void Pair::startUsers(unsigned seed)
{
    m_rig = std::make_unique<Rig>(*m_runtime, m_controller, m_referee, m_variables, m_cyclic);
    m_writers.clear();
    for (std::size_t number = 0; number < writers; ++number) {
        m_writers.push_back(std::make_unique<Writer>(*m_rig, *m_userWatches[number],
                                                     variablesOf(static_cast<int>(number)),
                                                     seed + static_cast<unsigned>(number)));
        m_threads.emplace_back([writer = m_writers.back().get()] { writer->run(); });
    }
    m_threads.emplace_back([this, seed] { readUntilOver(*m_rig, *m_userWatches[writers], seed + 5); });
    m_threads.emplace_back([this] { lookUntilOver(*m_rig, *m_userWatches[writers + 1]); });
    m_threads.emplace_back([this, seed] {
        switchUntilOver(*m_rig, *m_userWatches[writers + 2], stationsOf(m_number), seed + 6);
    });
}

void Pair::work(long requests)
{
    const long perSample = m_options.requests / m_options.pairs / static_cast<long>(samples) + 1;
    while (static_cast<long>(m_controller.requests()) < requests) {
        m_watch.end();
        QThread::msleep(pollMs);
        m_figures.requests = static_cast<long>(m_controller.requests());
        m_figures.wrong = m_complaints.count();
        for (; m_figures.requests >= m_nextSample; m_nextSample += perSample)
            m_memory.sample(memoryUse());
    }
}

void Pair::stopUsers()
{
    m_watch.begin(QStringLiteral("waits for the threads to end"));
    m_rig->over = true;
    for (std::thread& thread : m_threads)
        thread.join();
    m_threads.clear();
}

void Pair::calmDown()
{
    simulator::FaultSettings none;
    m_controller.setFaults(none);
    for (const auto& writer : m_writers) {
        if (!writer->confirmAll())
            m_complaints.add(QStringLiteral("writes still fail without faults"));
    }
    QElapsedTimer clock;
    clock.start();
    for (std::size_t index = 0; index < m_variables.size(); ++index) {
        while (!isRight(index) && !clock.hasExpired(calmMs))
            QThread::msleep(pollMs);
        if (!isRight(index))
            m_complaints.add(QStringLiteral("%1 never gets right again without faults, it is %2")
                                 .arg(plc::variableText(m_variables[index].where),
                                      plc::valueStateWord(m_runtime->value(m_cyclic[index]).state)));
    }
}

/// Nobody writes any more, so what is shown is what the controller holds and what was confirmed last.
bool Pair::isRight(std::size_t index)
{
    const std::vector<quint32> last = valuesOf(m_variables[index], m_referee.lastConfirmed(index));
    const plc::CyclicValue value = m_runtime->value(m_cyclic[index]);
    return value.state == plc::ValueState::Fresh && value.values == last &&
           valuesInController(m_controller, m_variables[index].where) == last;
}

/// Each outcome came once: a second one for a write would be counted by the panel alone.
void Pair::compareCounts()
{
    const plc::Statistics statistics = m_runtime->statistics();
    compareCount("writes confirmed", m_rig->writesConfirmed, statistics.writesConfirmed);
    compareCount("writes failed", m_rig->writesFailed, statistics.writesFailed);
    compareCount("writes waiting", 0, statistics.writesWaiting);
    compareCount("reads done", m_rig->readsDone, statistics.readsDone);
    compareCount("reads failed", m_rig->readsFailed, statistics.readsFailed);
}

void Pair::compareCount(const char* what, long own, long ofPanel)
{
    if (own != ofPanel)
        m_complaints.add(QStringLiteral("the panel counts %1 %2, but there were %3")
                             .arg(ofPanel)
                             .arg(QLatin1String(what))
                             .arg(own));
}

/// Otherwise nothing was shown by it. In a short run a fault that few replies can have may be missing by chance.
void Pair::checkThatMuchHappened()
{
    if (m_figures.writesConfirmed == 0 || m_figures.readsDone == 0 || m_figures.freshLooks == 0)
        m_complaints.add(QStringLiteral("nothing was written, read or fresh"));
    const bool expectsEach =
        m_options.percent > 0 && m_options.requests / m_options.pairs >= fewestRequestsForEachFault;
    for (const simulator::FaultKind* const kind : m_options.faults) {
        if (expectsEach && m_controller.injected(kind->fault) == 0)
            m_complaints.add(QStringLiteral("there was no fault '%1'").arg(QLatin1String(kind->name)));
    }
}

void Pair::judgeMemory()
{
    const bool enough = m_options.requests / m_options.pairs >= fewestRequestsForMemory &&
                        m_memory.hasSeenEnough() && memoryUse().heapBytes != 0;
    if (!enough)
        return;
    const QString complaint = m_memory.complaint();
    if (!complaint.isEmpty())
        m_complaints.add(complaint);
    m_figures.memoryJudged = 1;
    m_figures.heapAfterTenth = m_memory.afterFirstTenth().heapBytes;
    m_figures.heapAtEnd = m_memory.atEnd().heapBytes;
    m_figures.residentAfterTenth = m_memory.afterFirstTenth().residentBytes;
    m_figures.residentAtEnd = m_memory.atEnd().residentBytes;
}

/// After each round: what the panel and its users counted.
void Pair::fillIn()
{
    const plc::Statistics statistics = m_runtime->statistics();
    const plc::LinkState link = m_runtime->linkState();
    for (std::size_t kind = 0; kind < simulator::faultKinds; ++kind)
        m_figures.faults[kind] =
            static_cast<long>(m_controller.injected(static_cast<simulator::Fault>(kind)));
    ++m_figures.panels;
    m_figures.frames += statistics.exchanges;
    m_figures.good += statistics.good;
    m_figures.retried += statistics.retried;
    m_figures.givenUp += statistics.failed;
    m_figures.dropped += link.dropped.total();
    m_figures.connects += link.connects;
    m_figures.untrusted += link.untrusted;
    m_figures.writesConfirmed += statistics.writesConfirmed;
    m_figures.writesFailed += statistics.writesFailed;
    m_figures.readsDone += statistics.readsDone;
    m_figures.readsFailed += statistics.readsFailed;
    m_figures.looks += m_rig->looks.load();
    m_figures.freshLooks += m_rig->freshLooks.load();
    m_figures.switches += m_rig->switches.load();
}

/// For the watchdog: it takes the panel's lock, which may be what everybody waits for.
QString Pair::state()
{
    if (m_runtime == nullptr)
        return QStringLiteral("the panel was not made");
    const plc::LinkState link = m_runtime->linkState();
    QString words = QStringLiteral("%1 requests received, the link is %2, last error '%3'")
                        .arg(m_controller.requests())
                        .arg(QLatin1String(link.connected ? "up" : "down"), link.lastError);
    std::fprintf(stderr, "  %s\n", qPrintable(words));
    return QStringLiteral("%1 requests of writes wait in the panel")
        .arg(m_runtime->statistics().writesWaiting);
}

} // namespace

void runPair(const Options& options, int number, Figures& figures)
{
    Pair pair(options, number, figures);
    pair.run();
}

} // namespace soak
