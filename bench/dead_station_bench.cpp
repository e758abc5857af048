// SPDX-License-Identifier: MIT
// What one dead station among eight costs the others: how often the living ones are refreshed, and their
// oldest value, with all alive, with one dead and tried in every pass, and with one dead that gets pauses.
//
//     dead_station_bench [SECONDS]    how long each of the three is measured; 60 by default

#include "runtime/cycle/exchange_record.h"
#include "runtime/cycle/refresh_plan.h"
#include "runtime/cycle/runtime.h"
#include "runtime/host/request_keys.h"
#include "simulator/simulated_controller.h"

#include <QElapsedTimer>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>

namespace
{

const int stations = 8;
const int deadStation = 4;
const int replyMs = 5; // of every station, as a small controller takes
const int settleMs = 500;

// Each station's list: three areas, so three requests a pass.
const plc::Variable list[] = {{9, 0, 60, -1}, {2, 0, 200, -1}, {14, 0, 20, -1}};
const int requestsOfStation = 3;

/// Counts good replies of the living stations, and the longest time that a value of theirs grew old.
class Refreshes
{
public:
    void note(const plc::ExchangeRecord& record)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (record.request.station == deadStation)
            ++m_framesToDead;
        else if (record.result == PLC_DONE && record.request.hostKey == plc::cyclicKey)
            noteReply({record.request.station, record.request.area});
    }

    void begin()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_replies = 0;
        m_framesToDead = 0;
        m_longestMs = 0;
        m_clock.start();
        m_last.clear(); // a block that was never read counts from here on
    }

    void print(const char* what)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        const double seconds = static_cast<double>(m_clock.elapsed()) / 1000;
        const double refreshes =
            static_cast<double>(m_replies) / requestsOfStation / (stations - 1) / seconds;
        std::printf("%-38s %12.2f %14lld %14ld\n", what, refreshes, static_cast<long long>(m_longestMs),
                    m_framesToDead);
        std::fflush(stdout);
    }

private:
    using Block = std::pair<int, int>; // station and area

    void noteReply(const Block& block)
    {
        const qint64 now = m_clock.elapsed();
        m_longestMs = std::max(m_longestMs, now - m_last[block]);
        m_last[block] = now;
        ++m_replies;
    }

    std::mutex m_mutex;
    QElapsedTimer m_clock;
    std::map<Block, qint64> m_last; // its last reply
    qint64 m_longestMs = 0;
    long m_replies = 0;
    long m_framesToDead = 0;
};

plc::Settings settingsFor(const simulator::SimulatedController& controller, int pauseMs)
{
    plc::Settings settings;
    settings.driverPath = QStringLiteral(PLC_DRIVER_LIBRARY);
    settings.port = controller.port();
    settings.multiStation = true;
    settings.stationPauseMs = pauseMs;
    return settings;
}

void measure(const char* what, bool dead, int pauseMs, int seconds)
{
    simulator::Settings slow;
    slow.faults.late = 1;
    slow.faults.lateMs = replyMs;
    simulator::SimulatedController controller(slow);
    controller.start();
    Refreshes refreshes;
    plc::Runtime runtime(settingsFor(controller, pauseMs));
    for (int station = 1; station <= stations; ++station) {
        for (plc::Variable variable : list) {
            variable.station = station;
            runtime.addCyclic(variable);
        }
    }
    runtime.setObserver([&refreshes](const plc::ExchangeRecord& record) { refreshes.note(record); });
    refreshes.begin();
    runtime.start();
    QThread::msleep(settleMs);
    controller.setSilent(deadStation, dead);
    refreshes.begin();
    QThread::sleep(static_cast<unsigned long>(seconds));
    refreshes.print(what);
    runtime.stop();
}

} // namespace

int main(int argc, char* argv[])
{
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 60;
    if (seconds < 1) {
        std::fprintf(stderr, "dead_station_bench [SECONDS]: give a number of seconds from 1 on\n");
        return 2;
    }
    const plc::Settings defaults;
    std::printf(
        "%d stations, %d requests each, replies after %d ms; time-out %d ms, %d retries, at least %d ms "
        "from refresh to refresh; %d s each\n\n",
        stations, requestsOfStation, replyMs, defaults.timeoutMs, defaults.retryLimit, defaults.pollMs,
        seconds);
    std::printf("%-38s %12s %14s %14s\n", "", "refreshes/s", "oldest value", "frames to");
    std::printf("%-38s %12s %14s %14s\n", "", "of a living", "of a living/ms", "station 4");
    measure("all alive", false, 0, seconds);
    measure("one dead, no pauses", true, 0, seconds);
    measure("one dead, with pauses", true, defaults.stationPauseMs, seconds);
    return 0;
}
