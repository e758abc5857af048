// SPDX-License-Identifier: MIT
#include "soak/pair.h"
#include "runtime/cycle/exchange_record.h"

#include "soak/memory_watch.h"
#include "soak/users.h"
#include "support/controller_values.h"

#include <QThread>

#include <cstdio>
#include <memory>
#include <thread>

namespace soak
{

namespace
{

const int retries = 3;
const int writers = 3;
const int stationsOfOnePair = 3;
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
    void startPanel();
    void startUsers();
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
    std::vector<std::unique_ptr<Writer>> m_writers;
    std::vector<std::thread> m_threads;
    MemoryWatch m_memory{samples};
};

Pair::Pair(const Options& options, int number, Figures& figures)
    : m_options(options), m_number(number), m_figures(figures),
      m_variables(soakVariables(stationsOf(number))),
      m_referee(m_variables, retries + 1, options.remote, m_complaints), m_controller(controllerSettings()),
      m_watchdog(options.hangMs, [this] { return state(); }),
      m_watch(m_watchdog.add(QStringLiteral("main thread"))),
      m_panelWatch(m_watchdog.add(QStringLiteral("communication thread")))
{
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
    startPanel();
    startUsers();
    work(m_options.requests / m_options.pairs + 1);
    judgeMemory();
    stopUsers();
    m_watch.begin(QStringLiteral("waits until all is right without faults"));
    calmDown();
    compareCounts();
    checkThatMuchHappened();
    m_watch.begin(QStringLiteral("stops the panel"));
    m_runtime->stop();
    m_watch.begin(QStringLiteral("stops the controller"));
    m_controller.stop();
    fillIn();
}

void Pair::startPanel()
{
    for (const SoakVariable& variable : m_variables) {
        const std::vector<quint32> values = valuesOf(variable, 0);
        const plc::Variable& where = variable.where;
        for (int index = 0; index < where.count; ++index)
            putIntoController(m_controller, where.area, where.element + index,
                              values[static_cast<std::size_t>(index)], where.station);
    }
    m_controller.start();
    plc::Settings settings = panelSettings(m_options, m_number);
    settings.port = m_controller.port();
    m_runtime = std::make_unique<plc::Runtime>(settings);
    for (const SoakVariable& variable : m_variables)
        m_cyclic.push_back(m_runtime->addCyclic(variable.where));
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

void Pair::startUsers()
{
    m_rig = std::make_unique<Rig>(*m_runtime, m_controller, m_referee, m_variables, m_cyclic);
    const auto seed = m_options.seed * 100000 + static_cast<unsigned>(m_number) * 100;
    for (int number = 0; number < writers; ++number) {
        Watchdog::Watch& watch = m_watchdog.add(QStringLiteral("writer %1").arg(number));
        m_writers.push_back(std::make_unique<Writer>(*m_rig, watch, variablesOf(number),
                                                     seed + static_cast<unsigned>(number)));
        m_threads.emplace_back([writer = m_writers.back().get()] { writer->run(); });
    }
    Watchdog::Watch& reading = m_watchdog.add(QStringLiteral("reader"));
    m_threads.emplace_back([this, &reading, seed] { readUntilOver(*m_rig, reading, seed + 50); });
    Watchdog::Watch& looking = m_watchdog.add(QStringLiteral("looker"));
    m_threads.emplace_back([this, &looking] { lookUntilOver(*m_rig, looking); });
}

void Pair::work(long requests)
{
    const long perSample = requests / static_cast<long>(samples) + 1;
    long nextSample = perSample;
    while (static_cast<long>(m_controller.requests()) < requests) {
        m_watch.end();
        QThread::msleep(pollMs);
        m_figures.requests = static_cast<long>(m_controller.requests());
        m_figures.wrong = m_complaints.count();
        for (; m_figures.requests >= nextSample; nextSample += perSample)
            m_memory.sample(memoryUse());
    }
}

void Pair::stopUsers()
{
    m_watch.begin(QStringLiteral("waits for the threads to end"));
    m_rig->over = true;
    for (std::thread& thread : m_threads)
        thread.join();
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
    if (m_rig->writesConfirmed == 0 || m_rig->readsDone == 0 || m_rig->freshLooks == 0)
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

void Pair::fillIn()
{
    const plc::Statistics statistics = m_runtime->statistics();
    const plc::LinkState link = m_runtime->linkState();
    for (std::size_t kind = 0; kind < simulator::faultKinds; ++kind)
        m_figures.faults[kind] =
            static_cast<long>(m_controller.injected(static_cast<simulator::Fault>(kind)));
    m_figures.requests = static_cast<long>(m_controller.requests());
    m_figures.frames = statistics.exchanges;
    m_figures.good = statistics.good;
    m_figures.retried = statistics.retried;
    m_figures.givenUp = statistics.failed;
    m_figures.dropped = link.dropped.total();
    m_figures.connects = link.connects;
    m_figures.untrusted = link.untrusted;
    m_figures.writesConfirmed = statistics.writesConfirmed;
    m_figures.writesFailed = statistics.writesFailed;
    m_figures.readsDone = statistics.readsDone;
    m_figures.readsFailed = statistics.readsFailed;
    m_figures.looks = m_rig->looks.load();
    m_figures.freshLooks = m_rig->freshLooks.load();
    m_figures.wrong = m_complaints.count();
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
