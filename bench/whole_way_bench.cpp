// SPDX-License-Identifier: MIT
// How fast a list is refreshed over loopback, by the panel and by others in the same run.
//
//     whole_way_bench [--rounds N] [LIST]    9 rounds; LIST is examples/thousand.csv
//
// A round gives each of them its turn. Of each the shortest refresh of all rounds counts, for the others were
// disturbed by something else on the machine; of processor times the median. Fields are separated by tabs.
//
// Each has a controller of its own, for one that serves several looks at all of them in turn. All share one
// processor: on two, a refresh lasts as long as it takes to wake an idle processor, which differs twofold
// from one moment to the next and hides what the programs do.

#include "bench/loopback_controller.h"
#include "bench/panel_refresh.h"
#include "bench/peers.h"
#include "bench/processors.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <limits>
#include <stdexcept>

namespace
{

const int turnMs = 150;

using Rounds = std::vector<double>;

double median(Rounds values)
{
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

/// \return nanoseconds
qint64 shortestOf(const std::function<void()>& refresh)
{
    qint64 shortest = std::numeric_limits<qint64>::max();
    QElapsedTimer turn;
    turn.start();
    while (turn.elapsed() < turnMs) {
        QElapsedTimer clock;
        clock.start();
        refresh();
        shortest = std::min(shortest, clock.nsecsElapsed());
    }
    return shortest;
}

struct Contender {
    const char* name;
    std::function<qint64()> turn; // the shortest refresh of it
    qint64 shortest = std::numeric_limits<qint64>::max();
};

void printShare(const plc::PassCost& cost)
{
    const auto percent = [](long unused, long read) {
        return read == 0 ? 0.0 : 100.0 * static_cast<double>(unused) / static_cast<double>(read);
    };
    std::printf("requests per refresh\t%d\n", cost.requests);
    std::printf("registers read\t%ld\n", cost.registers);
    std::printf("percent of registers nobody asked for\t%.1f\n",
                percent(cost.registersUnused, cost.registers));
    std::printf("bits read\t%ld\n", cost.bits);
    std::printf("percent of bits nobody asked for\t%.1f\n", percent(cost.bitsUnused, cost.bits));
}

/// \param panel beside which the line shows \a contender
void printRate(const Contender& contender, const Contender& panel)
{
    const double shortest = static_cast<double>(contender.shortest);
    std::printf("refreshes per second\t%s\t%.1f\t%.2f\n", contender.name, 1e9 / shortest,
                shortest / static_cast<double>(panel.shortest));
}

void run(const QString& path, int rounds)
{
    const bench::Variables variables = bench::variablesOf(path);
    const bench::LoopbackController panels;
    const bench::Pass pass = bench::recordPass(panels.port(), variables);
    const int requests = static_cast<int>(pass.frames.size());

    const bench::LoopbackController bares;
    const bench::LoopbackController singles;
    const bench::LoopbackController blockwise;
    const bench::LoopbackController serialBuses;
    const bench::LoopbackController pipelines;
    bench::BareSocket bare(bares.port(), pass.frames);
    bench::LibModbus single(singles.port(), bench::blocksOf(variables));
    bench::LibModbus blocks(blockwise.port(), bench::blocksOf(pass.frames));
    bench::SerialBus serialBus(serialBuses.port(), bench::blocksOf(pass.frames), 1);
    bench::SerialBus pipelined(pipelines.port(), bench::blocksOf(pass.frames), requests);
    Rounds wholeCost;
    Rounds driverCost;
    Rounds linkCost;
    Rounds bareCost;
    std::vector<Contender> contenders = {
        {"panel",
         [&] {
             const bench::LoopCost cost = bench::runLoop(panels.port(), variables, requests, turnMs);
             wholeCost.push_back(cost.microsecondsPerRequest);
             return cost.shortestRefresh;
         }},
        {"bare socket", [&] { return shortestOf([&] { bare.refresh(); }); }},
        {"libmodbus, each variable by itself", [&] { return shortestOf([&] { single.refresh(); }); }},
        {"libmodbus, the same blocks", [&] { return shortestOf([&] { blocks.refresh(); }); }},
        {"Qt SerialBus, the same blocks", [&] { return shortestOf([&] { serialBus.refresh(); }); }},
        {"Qt SerialBus, all blocks at once", [&] { return shortestOf([&] { pipelined.refresh(); }); }},
    };
    for (int round = 0; round < rounds; ++round) {
        for (Contender& contender : contenders)
            contender.shortest = std::min(contender.shortest, contender.turn());
        bench::withDriver(variables, pass, [&](const bench::Refresh& refresh) {
            driverCost.push_back(bench::microsecondsPerRequest(requests, turnMs / 3, refresh));
        });
        bench::withLink(panels.port(), pass, [&](const bench::Refresh& refresh) {
            linkCost.push_back(bench::microsecondsPerRequest(requests, turnMs, refresh));
        });
        bareCost.push_back(bench::microsecondsPerRequest(requests, turnMs, [&] { bare.refresh(); }));
    }

    for (const Contender& contender : contenders)
        printRate(contender, contenders.front());
    printShare(pass.cost);
    std::printf("processor us per request\twhole loop\t%.2f\n", median(wholeCost));
    std::printf("processor us per request\tdriver\t%.2f\n", median(driverCost));
    std::printf("processor us per request\tlink\t%.2f\n", median(linkCost));
    std::printf("processor us per request\tbare socket\t%.2f\n", median(bareCost));
}

} // namespace

int main(int argc, char* argv[])
try {
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOption({QStringLiteral("rounds"), QStringLiteral("How many rounds."), QStringLiteral("N"),
                      QStringLiteral("9")});
    parser.addPositionalArgument(QStringLiteral("list"), QStringLiteral("List of variables."));
    parser.process(application);
    const int rounds = parser.value(QStringLiteral("rounds")).toInt();
    if (rounds < 1)
        throw std::runtime_error("--rounds: give a number from 1 on");
    bench::stayOnOneProcessor();
    const QStringList lists = parser.positionalArguments();
    run(lists.isEmpty() ? QStringLiteral(PLC_EXAMPLES_DIR "/thousand.csv") : lists.first(), rounds);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "whole_way_bench: %s\n", error.what());
    return 1;
}
