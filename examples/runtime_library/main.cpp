// SPDX-License-Identifier: MIT
// A program on libplcruntime: it watches two variables, writes one of them, and says how that ended.
//     runtime_library HOST PORT [DRIVER]
#include <runtime/cycle/runtime.h>
#include <runtime/host/driver_path.h>
#include <runtime/modbus/failure_words.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <thread>

namespace
{

const plc::Variable level = {9, 100}; // area 9 (words), element 100
const plc::Variable pump = {2, 17};   // area 2 (bits), element 17

void print(const char* name, const plc::CyclicValue& value)
{
    std::printf("%s is %u (%s)\n", name, value.values.front(), qPrintable(plc::valueStateWord(value.state)));
}

/// \return true when both values are as the controller answered just now
bool show(const plc::Runtime& runtime, int levelIndex, int pumpIndex)
{
    const plc::CyclicValue levelValue = runtime.value(levelIndex), pumpValue = runtime.value(pumpIndex);
    print("level", levelValue);
    print("pump", pumpValue);
    return levelValue.state == plc::ValueState::Fresh && pumpValue.state == plc::ValueState::Fresh;
}

} // namespace

int main(int argc, char* argv[])
try {
    plc::Settings settings;
    settings.host = QString::fromLocal8Bit(argc > 1 ? argv[1] : "127.0.0.1");
    settings.port = argc > 2 ? std::atoi(argv[2]) : 502;
    settings.driverPath = argc > 3 ? QString::fromLocal8Bit(argv[3]) : plc::findDriver();

    plc::Runtime runtime(settings);
    const int levelIndex = runtime.addCyclic(level);
    const int pumpIndex = runtime.addCyclic(pump);
    runtime.start(); // a thread of its own connects, reads again and again, and reconnects

    const plc::WriteOutcome outcome = runtime.write(level, {1234}).get(); // comes in any case
    std::printf("write: %s\n",
                outcome.confirmed ? "confirmed by the controller" : qPrintable(plc::failureWords(outcome)));
    for (int looks = 0; looks < 20 && !show(runtime, levelIndex, pumpIndex); ++looks)
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    return outcome.confirmed ? 0 : 1;
} catch (const std::exception& error) { // says what is wrong and what to do
    std::fprintf(stderr, "runtime_library: %s\n", error.what());
    return 2;
}
