// SPDX-License-Identifier: MIT
// A runtime for several stations on one link, on libplcruntime: each station's values with how good they are, a write
// to each again and again with an account of how every one ended, and a clean end.
//     station_runtime HOST PORT STATIONS SECONDS [DRIVER]
#include <runtime/cycle/runtime.h>
#include <runtime/host/driver_path.h>
#include <runtime/modbus/failure_words.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <mutex>
#include <set>
#include <thread>

namespace
{

volatile std::sig_atomic_t interrupted = 0;

plc::Variable word(int element, int station)
{
    return {9, element, 1, station}; // of area 9
}

const int level = 100;    // is watched
const int setPoint = 200; // is written

/// How every write ended. A write whose end is not known may have been carried out, so a station may hold its value.
struct Account {
    std::mutex mutex;
    long asked = 0, confirmed = 0, failed = 0;
    std::map<int, std::set<quint32>> possible; // values, by station

    void ended(int station, quint32 value, const plc::WriteOutcome& outcome)
    {
        std::lock_guard<std::mutex> lock(mutex);
        ++(outcome.confirmed ? confirmed : failed);
        if (outcome.confirmed)
            possible[station].clear();
        if (outcome.confirmed || !plc::isUnsent(outcome.failure.kind))
            possible[station].insert(value);
    }

    bool allows(int station, quint32 value)
    {
        std::lock_guard<std::mutex> lock(mutex);
        const std::set<quint32>& values = possible[station];
        return values.empty() || values.count(value) != 0;
    }
};

void show(int station, const plc::CyclicValue& value) // on the runtime's own thread
{
    std::printf("station %d: %u (%s) %s\n", station, value.values.front(),
                qPrintable(plc::valueStateWord(value.state)), qPrintable(plc::failureWords(value.failure)));
}

void writeToAll(plc::Runtime& runtime, Account& account, int stations, quint32 value)
{
    for (int station = 1; station <= stations; ++station) {
        ++account.asked; // on this thread only
        runtime.write(word(setPoint, station), {value}, [&account, station, value](const auto& outcome) {
            account.ended(station, value, outcome);
        });
    }
}

/// Reads every set point back. \return how many are none that the account allows
int wrongOnes(plc::Runtime& runtime, Account& account, int stations)
{
    int wrong = 0;
    for (int station = 1; station <= stations; ++station) {
        const plc::ReadOutcome outcome = runtime.read(word(setPoint, station)).get();
        const bool isWrong = outcome.done && !account.allows(station, outcome.values.front());
        wrong += isWrong ? 1 : 0;
        std::printf("set point of station %d: %s\n", station,
                    isWrong ? "wrong" : (outcome.done ? "right" : qPrintable(plc::failureWords(outcome))));
    }
    return wrong;
}

} // namespace

int main(int argc, char* argv[])
try {
    if (argc < 5)
        throw std::runtime_error("give HOST PORT STATIONS SECONDS");
    plc::Settings settings;
    settings.host = QString::fromLocal8Bit(argv[1]);
    settings.port = std::atoi(argv[2]);
    settings.multiStation = true;
    settings.driverPath = argc > 5 ? QString::fromLocal8Bit(argv[5]) : plc::findDriver();
    const int stations = std::atoi(argv[3]);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(std::atoi(argv[4]));
    std::signal(SIGINT, [](int) { interrupted = 1; });
    std::signal(SIGTERM, [](int) { interrupted = 1; });

    Account account; // outlives the runtime, whose end it is told of
    plc::Runtime runtime(settings);
    for (int station = 1; station <= stations; ++station)
        runtime.addCyclic(word(level, station)); // the index is one less
    runtime.setValueObserver([](int index, const plc::CyclicValue& value) { show(index + 1, value); });
    runtime.start();
    for (quint32 value = 1; interrupted == 0 && std::chrono::steady_clock::now() < end; ++value) {
        writeToAll(runtime, account, stations, value);
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    const int wrong = wrongOnes(runtime, account, stations);
    runtime.stop(); // what still waits fails; nothing is left in the driver
    std::printf("writes: %ld asked, %ld confirmed, %ld failed; wrong values: %d\n", account.asked,
                account.confirmed, account.failed, wrong);
    return account.asked == account.confirmed + account.failed && wrong == 0 ? 0 : 1;
} catch (const std::exception& error) {
    std::fprintf(stderr, "station_runtime: %s\n", error.what());
    return 2;
}
